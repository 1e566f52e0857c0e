# SPDX-License-Identifier: Apache-2.0
"""The software line card, as a test of a control plane drives it."""

import os
from typing import Any, List, Optional, Union

from vornlcapi import _native
from vornlcapi._values import Frame, FrameLike, Port, PortLike, Refused

_NS_PER_SECOND = 1_000_000_000


class Card:
    """The line card of this process, from entering the block to leaving it.

    description   the name of a description file, or the description itself: a text with a blank or
                  a line break in it. Without one the card is the default one. A path-like object
                  always names a file.
    real_time     whether the card follows the machine's clock. Else its time stands still until
                  warp() moves it on.

    Ports are texts, "1/1/3", or Port objects. Frames are texts, bytes, or anything that has
    __bytes__, such as Scapy packets; those that come out are Frame objects, which are bytes. What
    the card refuses raises Refused.
    """

    _there: Optional["Card"] = None

    def __init__(self, description: Union[str, "os.PathLike[str]", None] = None, *,
                 real_time: bool = False):
        self._description = description
        self._real_time = real_time

    def __enter__(self) -> "Card":
        if Card._there is not None:
            raise RuntimeError("there is a card already, and a process has one")
        description = self._description
        if description is None:
            _native.use_description("")
        elif isinstance(description, str) and any(mark in description for mark in " \n"):
            _native.use_description(description)
        else:
            _native.use_description_file(os.fspath(description))
        _native.use_time(self._real_time)
        _native.vorn_lcmgr_api_init()
        Card._there = self
        return self

    def __exit__(self, *_: Any) -> None:
        Card._there = None
        _native.fail_none()
        # Somebody may have ended it before.
        if self.port_count:
            _native.vorn_lcmgr_api_terminate()

    @property
    def port_count(self) -> int:
        """How many physical ports the card has: 1/1/0 and on."""
        return _native.port_count()

    @property
    def ports(self) -> List[Port]:
        return [Port(1, 1, number) for number in range(self.port_count)]

    # ---- Time

    @property
    def now(self) -> float:
        """The card's time in seconds."""
        return _native.now() / _NS_PER_SECOND

    def run(self) -> int:
        """Lets the card do all that waits, callbacks included; returns how much that was."""
        return _native.run()

    def warp(self, seconds: float) -> None:
        """Moves the virtual clock on and lets the card do what becomes due."""
        if seconds < 0:
            raise ValueError(f"warp({seconds}): time goes forward")
        _native.warp(round(seconds * _NS_PER_SECOND))

    # ---- Frames

    def inject(self, port: PortLike, frame: FrameLike) -> None:
        """Sends a frame into a port; `trace` tells its way."""
        _native.inject(port, frame)

    def frames(self, port: PortLike) -> List[Frame]:
        """Lets the card run, and takes the frames that came out of a port."""
        _native.run()
        return _native.take(port)

    def expect(self, port: PortLike, *patterns: str) -> List[Frame]:
        """Takes the frames that came out of a port, which must be as many as there are patterns
        and show, in order, what these ask for. AssertionError shows what came instead."""
        frames = self.frames(port)
        if len(frames) == len(patterns) and all(map(Frame.matches, frames, patterns)):
            return frames
        raise AssertionError("\n".join([
            f"{port}: expected{_listed(patterns)}", f"{port}: came{_listed(frames)}",
            *(["the last frame that was injected:", self.trace] if self.trace else [])]))

    def expect_nothing(self) -> None:
        """No frame came out of any port that has memory behind it."""
        _native.run()
        for port in self.ports:
            try:
                frames = _native.take(port)
            except Refused:
                continue
            if frames:
                raise AssertionError(f"{port}: expected nothing\n{port}: came{_listed(frames)}")

    @property
    def trace(self) -> str:
        """The way of the last frame that was injected, table by table."""
        return _native.last_trace()

    def drops(self, port: PortLike, reason: str) -> int:
        """How many frames were dropped at a port for one of the `drop_reasons`."""
        return _native.drops(port, reason)

    @property
    def drop_reasons(self) -> List[str]:
        return _native.drop_reasons()

    # ---- Links

    def cut(self, port: PortLike) -> None:
        """Pulls the plug of a port: its link and that of its link partner go down."""
        _native.cut(port)

    def restore(self, port: PortLike) -> None:
        """Puts the plug back."""
        _native.restore(port)

    def patch(self, port: PortLike, other: PortLike) -> None:
        """Joins two ports by a cable."""
        _native.patch(port, other)

    def unpatch(self, port: PortLike) -> None:
        """Plugs a port into memory again."""
        _native.unpatch(port)

    # ---- Refusals

    @property
    def last_refusal(self) -> str:
        return _native.last_refusal()

    def fail(self, operation: str, nth: int = 1) -> None:
        """Has the nth call from now of an SDK operation refused: "create_vlan"."""
        _native.fail(operation, nth)

    def fail_none(self) -> None:
        """Forgets the failures that have not come yet."""
        _native.fail_none()


class Clock:
    """The card's time alone: `now` in seconds, and warp()."""

    def __init__(self, card: Card):
        self._card = card

    @property
    def now(self) -> float:
        return self._card.now

    def warp(self, seconds: float) -> None:
        self._card.warp(seconds)


def _listed(texts: Any) -> str:
    lines = [f"\n    {text}" for text in texts]
    return "".join(lines) or " nothing"
