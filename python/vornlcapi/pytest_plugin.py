# SPDX-License-Identifier: Apache-2.0
"""Fixtures for pytest: a fresh card for each test, in virtual time, and its clock.

An installed copy is found by pytest itself; else ask for it with -p vornlcapi.pytest_plugin. The
card is the one that the marker of a test, a class or a module describes, or the fixture
card_description where it is overridden:

    @pytest.mark.card("ports 8 speed 1000")
    def test_flood(card, clock): ...
"""

from typing import Any, Iterator, List, Optional

import pytest

from vornlcapi._values import Frame
from vornlcapi.card import Card, Clock


def pytest_configure(config: "pytest.Config") -> None:
    config.addinivalue_line(
        "markers", "card(description): the description of the card, or the name of its file")


@pytest.fixture
def card_description(request: "pytest.FixtureRequest") -> Any:
    """The description of the card; None for the default one."""
    marker = request.node.get_closest_marker("card")
    if marker is None:
        return None
    if len(marker.args) != 1 or marker.kwargs:
        raise pytest.UsageError("pytest.mark.card wants one argument, the card's description")
    return marker.args[0]


@pytest.fixture
def card(card_description: Any) -> Iterator[Card]:
    """A fresh card whose time stands still."""
    with Card(card_description) as fresh:
        yield fresh


@pytest.fixture
def clock(card: Card) -> Clock:
    """The card's clock: now, in seconds, and warp(seconds)."""
    return Clock(card)


def _shown(value: Any) -> Optional[List[str]]:
    """A frame, or a list of frames, as lines of text; None for anything else."""
    values = value if isinstance(value, (list, tuple)) else [value]
    if not all(isinstance(item, (bytes, bytearray)) or hasattr(item, "__bytes__")
               for item in values):
        return None
    return [Frame(item).text for item in values]


def pytest_assertrepr_compare(op: str, left: Any, right: Any) -> Optional[List[str]]:
    """Shows frames as text where an assertion compares them."""
    sides = [*left, *right] if isinstance(left, list) and isinstance(right, list) else [left, right]
    if op not in ("==", "!=") or not any(isinstance(side, Frame) for side in sides):
        return None
    shown, wanted = _shown(left), _shown(right)
    if shown is None or wanted is None:
        return None
    return [f"these frames {op} those", *(f"  {line}" for line in shown or ["none"]), op,
            *(f"  {line}" for line in wanted or ["none"])]
