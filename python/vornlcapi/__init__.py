# SPDX-License-Identifier: Apache-2.0
"""The line card's entry points and the software line card, for Python.

    import vornlcapi
    from vornlcapi import Card

    with Card("ports 8 speed 1000") as card:
        vornlcapi.vorn_create_vlan(10)
        vornlcapi.vorn_add_ports_to_vlan(10, tagged=[], untagged=["1/1/0", "1/1/1"])
        card.inject("1/1/0", "eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff vlan=10")
        print(card.frames("1/1/1"), card.trace)

Every function whose name begins with vorn_ is an entry point. What it gives is returned: nothing,
one value, or a named tuple. What it refuses raises Refused, whose text has the reason.
"""

from vornlcapi._values import (
    Flow, Frame, L2Addr, L2AddrFlag, LinkStatus, Packet, Port, Refused, RxPacket, Udf)
from vornlcapi import _native
from vornlcapi._native import *  # noqa: F401,F403
from vornlcapi.card import Card, Clock, Timer

__all__ = ["Card", "Clock", "Flow", "Frame", "L2Addr", "L2AddrFlag", "LinkStatus", "Packet",
           "Port", "Refused", "RxPacket", "Timer", "Udf"]
__all__ += _native.__all__
