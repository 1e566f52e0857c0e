# SPDX-License-Identifier: Apache-2.0
"""The values that entry points take and return, as far as they are not Python's own."""

import collections
import dataclasses
import enum
import ipaddress
import typing
from typing import Any, Iterable, NamedTuple, Optional, SupportsBytes, Union

PortLike = str
MacLike = Union[str, bytes]
Ip4Like = Union[str, bytes, int, ipaddress.IPv4Address]
Ip6Like = Union[str, bytes, ipaddress.IPv6Address]
FrameLike = Union[str, bytes, SupportsBytes]


class Refused(Exception):
    """An entry point, or the card, refused something.

    function   what refused: "vorn_create_vlan"
    reason     why: "VLAN 5000: above 4094"; empty where the library itself refused
    outputs    what was given all the same, which few entry points do; else None
    """

    def __init__(self, function: str, reason: str, outputs: Any = None):
        super().__init__(function, reason, outputs)
        self.function = function
        self.reason = reason
        self.outputs = outputs

    def __str__(self) -> str:
        return f"{self.function}: {self.reason or 'no reason was given'}"


class Port(str):
    """A logical port: its text, so that Port("1/1/3") == "1/1/3", with the numbers at hand."""

    __slots__ = ()

    def __new__(cls, text: Union[str, int], slot: Optional[int] = None,
                port: Optional[int] = None) -> "Port":
        """Port("1/1/3"), Port("lag/2"), Port("vlan/10"), or Port(1, 1, 3)."""
        if isinstance(text, str) and slot is None and port is None:
            unit, slot, port = _native.port_numbers(text)
        elif not isinstance(text, str) and slot is not None and port is not None:
            unit = text
        else:
            raise TypeError(f"Port{text, slot, port}: either a text or three numbers")
        return super().__new__(cls, _native.port_text(unit, slot, port))

    @classmethod
    def lag(cls, number: int) -> "Port":
        return cls(f"lag/{number}")

    @classmethod
    def vlan(cls, number: int) -> "Port":
        return cls(f"vlan/{number}")

    @property
    def unit(self) -> int:
        return _native.port_numbers(self)[0]

    @property
    def slot(self) -> int:
        return _native.port_numbers(self)[1]

    @property
    def port(self) -> int:
        return _native.port_numbers(self)[2]

    def __repr__(self) -> str:
        return f"Port('{self}')"


class Frame(bytes):
    """The bytes of a frame, which are shown as text: eth src=... dst=... vlan=10 ipv4 ... It equals
    bytes, and packets that have these bytes, such as Scapy's."""

    def __new__(cls, frame: FrameLike) -> "Frame":
        return super().__new__(cls, _native.frame_bytes(frame))

    @property
    def text(self) -> str:
        return _native.frame_text(self)

    def matches(self, pattern: str) -> bool:
        """Whether it shows what a pattern asks for: a frame's text; what is left out may be
        anything."""
        return _native.frame_matches(self, pattern)

    @property
    def packet(self) -> Any:
        """The frame as a Scapy packet; ImportError where there is no Scapy."""
        from scapy.layers.l2 import Dot3, Ether  # type: ignore[import]
        length_or_type = int.from_bytes(self[12:14], "big")
        return (Dot3 if length_or_type < 1536 else Ether)(bytes(self))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, (bytes, bytearray, memoryview)) and hasattr(other, "__bytes__"):
            other = bytes(other)
        return bytes.__eq__(self, other)

    def __ne__(self, other: object) -> bool:
        return not self == other

    __hash__ = bytes.__hash__

    def __str__(self) -> str:
        return self.text

    def __repr__(self) -> str:
        return f"Frame('{self.text}')"


class RxPacket(NamedTuple):
    """A packet for the CPU, as callbacks are given it."""

    frame: Frame
    reason: int  # RxReason
    port: Port
    vlan: int
    priority: int


class LinkStatus(NamedTuple):
    """The new state of a link."""

    state: int  # PhyState
    speed: int  # Mbit/s
    duplex: int  # DuplexType


class L2AddrFlag(enum.IntFlag):
    """What an entry of the MAC table is; none of them for a learned one."""

    STATIC = 1
    SYSTEM = 2


class L2Addr(NamedTuple):
    """An entry of the MAC table."""

    mac: str
    vlan: int
    port: Port
    flags: L2AddrFlag


class Packet(NamedTuple):
    """A frame to send from the CPU; PacketType.CONTROL passes the spanning tree."""

    frame: FrameLike
    type: int = 0


@dataclasses.dataclass(frozen=True)
class Flow:
    """The match of a flow: the fields that are not None. Addresses may have a mask:
    dst_ip="192.0.2.0/24"."""

    in_port: Optional[PortLike] = None
    src_mac: Optional[MacLike] = None
    dst_mac: Optional[MacLike] = None
    vlan_id: Optional[int] = None
    vlan_priority: Optional[int] = None
    ether_type: Optional[int] = None
    src_ip: Union[Ip4Like, ipaddress.IPv4Network, None] = None
    dst_ip: Union[Ip4Like, ipaddress.IPv4Network, None] = None
    src_l4_port: Optional[int] = None
    dst_l4_port: Optional[int] = None
    ip_protocol: Optional[int] = None
    tos: Optional[int] = None


class Udf(NamedTuple):
    """A user-defined qualifier of a flow: 32 bits at an offset in bytes from a base."""

    base: int  # UdfBase
    offset: int
    value: int
    mask: int = 0xFFFFFFFF


def result_class(name: str, fields: Iterable[typing.Tuple[str, str]]) -> type:
    """Makes the class of what an entry point with several outputs returns."""
    made = collections.namedtuple(  # type: ignore[misc]
        name, [field for field, _ in fields], module="vornlcapi")
    made.__annotations__ = dict(fields)
    return made


# The extension module takes the classes above from here, and so comes behind them.
from vornlcapi import _native  # noqa: E402
