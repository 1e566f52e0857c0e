# SPDX-License-Identifier: Apache-2.0
"""The software line card, as a test of a control plane drives it."""

import heapq
import os
from numbers import Real
from typing import Any, Callable, List, Optional, Union

from vornlcapi import _native
from vornlcapi._values import Frame, FrameLike, Port, PortLike, Refused

_NS_PER_SECOND = 1_000_000_000
_ANY_FRAME = bytes(60)


class Timer:
    """A call that is due at a moment of the card's time."""

    def __init__(self, due_ns: int, number: int, function: Callable[..., Any], arguments: Any):
        self._key = (due_ns, number)
        self._due_ns = due_ns
        self._call: Optional[Callable[[], Any]] = lambda: function(*arguments)

    def __lt__(self, other: "Timer") -> bool:
        return self._key < other._key

    def cancel(self) -> None:
        """It will not come; nothing happens when it came already."""
        self._call = None

    def _fire(self) -> None:
        if self._call is not None:
            self._call()


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
        self._timers: List[Timer] = []
        self._timers_made = 0
        self._warping = False

    def _check(self) -> None:
        if Card._there is not self:
            raise RuntimeError("this card is not there: it lives in its with block")

    def __enter__(self) -> "Card":
        if Card._there is not None:
            raise RuntimeError("there is a card already, and a process has one")
        description = self._description
        if description is None:
            _native.use_description("")
        elif isinstance(description, str) and any(mark in description for mark in " \n"):
            _native.use_description(description)
        else:
            _native.use_description_file(os.fsencode(description))
        _native.use_time(self._real_time)
        _native.vorn_lcmgr_api_init()
        Card._there = self
        return self

    def __exit__(self, *_: Any) -> None:
        if Card._there is not self:
            return
        Card._there = None
        self._timers.clear()
        _native.fail_none()
        # Somebody may have ended it before.
        if _native.port_count():
            _native.vorn_lcmgr_api_terminate()

    @property
    def port_count(self) -> int:
        """How many physical ports the card has: 1/1/0 and on. 0 outside of its block."""
        return _native.port_count() if Card._there is self else 0

    @property
    def ports(self) -> List[Port]:
        return [Port(1, 1, number) for number in range(self.port_count)]

    # ---- Time

    @property
    def now(self) -> float:
        """The card's time in seconds."""
        self._check()
        return _native.now() / _NS_PER_SECOND

    def run(self) -> int:
        """Lets the card do all that waits, callbacks and calls that are due included; returns how
        many frames and events that were."""
        self._check()
        done = _native.run()
        self._fire_due()
        return done

    def warp(self, seconds: float) -> None:
        """Moves the virtual clock on and lets the card do what becomes due, in order."""
        self._check()
        end_ns = _native.now() + _nanoseconds(seconds)
        if self._warping:
            raise Refused("warp", "time: it is being moved on already")
        self._warping = True
        try:
            # Whatever is called may end the card.
            while self.port_count and self._timers and self._timers[0]._due_ns <= end_ns:
                _native.warp(max(0, self._timers[0]._due_ns - _native.now()))
                self._fire_due()
            if self.port_count:
                _native.warp(end_ns - _native.now())
        finally:
            self._warping = False

    def call_later(self, seconds: float, function: Callable[..., Any], *arguments: Any) -> Timer:
        """Has a function called when so many seconds of the card's time have passed, by warp() or
        run(). At the same moment the card comes first, then calls in the order they were asked
        for."""
        self._check()
        if not callable(function):
            raise TypeError(f"function: {function!r} cannot be called")
        self._timers_made += 1
        timer = Timer(_native.now() + _nanoseconds(seconds), self._timers_made, function,
                      arguments)
        heapq.heappush(self._timers, timer)
        return timer

    def _fire_due(self) -> None:
        while self._timers and self._timers[0]._due_ns <= _native.now():
            heapq.heappop(self._timers)._fire()

    # ---- Frames

    def inject(self, port: PortLike, frame: FrameLike) -> None:
        """Sends a frame into a port; `trace` tells its way."""
        self._check()
        _native.inject(port, frame)

    def frames(self, port: PortLike) -> List[Frame]:
        """Lets the card run, and takes the frames that came out of a port."""
        self.run()
        return _native.take(port)

    def expect(self, port: PortLike, *patterns: str) -> List[Frame]:
        """Takes the frames that came out of a port, which must be as many as there are patterns
        and show, in order, what these ask for. AssertionError shows what came instead."""
        for pattern in patterns:
            _native.frame_matches(_ANY_FRAME, pattern)  # what is no pattern raises ValueError
        frames = self.frames(port)
        if len(frames) == len(patterns) and all(map(Frame.matches, frames, patterns)):
            return frames
        raise AssertionError("\n".join([
            f"{port}: expected{_listed(patterns)}", f"{port}: came{_listed(frames)}",
            *(["the last frame that was injected:", self.trace] if self.trace else [])]))

    def expect_nothing(self) -> None:
        """No frame came out of any port that has memory behind it."""
        self.run()
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
        self._check()
        return _native.last_trace()

    def drops(self, port: PortLike, reason: str) -> int:
        """How many frames were dropped at a port for one of the `drop_reasons`."""
        self._check()
        return _native.drops(port, reason)

    @property
    def drop_reasons(self) -> List[str]:
        return _native.drop_reasons()

    # ---- Links

    def cut(self, port: PortLike) -> None:
        """Pulls the plug of a port: its link and that of its link partner go down."""
        self._check()
        _native.cut(port)

    def restore(self, port: PortLike) -> None:
        """Puts the plug back."""
        self._check()
        _native.restore(port)

    def patch(self, port: PortLike, other: PortLike) -> None:
        """Joins two ports by a cable."""
        self._check()
        _native.patch(port, other)

    def unpatch(self, port: PortLike) -> None:
        """Plugs a port into memory again."""
        self._check()
        _native.unpatch(port)

    # ---- Refusals

    @property
    def last_refusal(self) -> str:
        return _native.last_refusal()

    def fail(self, operation: str, nth: int = 1) -> None:
        """Has the nth call from now of an SDK operation refused: "create_vlan"."""
        self._check()
        _native.fail(operation, nth)

    def fail_none(self) -> None:
        """Forgets the failures that have not come yet."""
        self._check()
        _native.fail_none()


class Clock:
    """The card's time alone: `now` in seconds, warp() and call_later()."""

    def __init__(self, card: Card):
        self._card = card

    @property
    def now(self) -> float:
        return self._card.now

    def warp(self, seconds: float) -> None:
        self._card.warp(seconds)

    def call_later(self, seconds: float, function: Callable[..., Any], *arguments: Any) -> Timer:
        return self._card.call_later(seconds, function, *arguments)


def _nanoseconds(seconds: float) -> int:
    if isinstance(seconds, bool) or not isinstance(seconds, Real):
        raise TypeError(f"seconds: {seconds!r} is no number")
    ns = seconds * _NS_PER_SECOND
    if not 0 <= ns < 2**63:
        raise ValueError(f"seconds: {seconds!r} is not within 0 and {2**63 // _NS_PER_SECOND}")
    return round(ns)


def _listed(texts: Any) -> str:
    lines = [f"\n    {text}" for text in texts]
    return "".join(lines) or " nothing"
