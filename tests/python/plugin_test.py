# SPDX-License-Identifier: Apache-2.0
"""The pytest plugin, under pytest, and the listings of the documentation."""

import pathlib
import re
import sys

pytest_plugins = ["pytester"]


def run(pytester, text, *options):
    pytester.makepyfile(text)
    return pytester.runpytest_subprocess("-p", "vornlcapi.pytest_plugin", "--strict-markers",
                                         *options)


def test_each_test_has_a_fresh_card(pytester):
    result = run(pytester, """
        import pytest, vornlcapi as v

        def test_default(card, clock):
            v.vorn_create_vlan(10)
            clock.warp(5)
            assert card.port_count == 52

        @pytest.mark.card("ports 8 speed 1000")
        def test_described(card):
            v.vorn_create_vlan(10)
            assert card.port_count == 8

        @pytest.mark.xfail(strict=True)
        def test_fails(card):
            v.vorn_create_vlan(10)
            assert False

        class TestOverridden:
            @pytest.fixture
            def card_description(self):
                return "ports 2 speed 1000\\n"

            def test_overridden(self, card, clock):
                v.vorn_create_vlan(10)
                assert (card.port_count, clock.now) == (2, 0)

        @pytest.mark.card
        def test_described_by_nothing(card):
            pass
    """)
    result.assert_outcomes(passed=3, xfailed=1, errors=1)
    result.stdout.fnmatch_lines(["*pytest.mark.card wants one argument*"])


def test_assertions_show_frames_as_text(pytester):
    result = run(pytester, """
        ARP = "eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff arp tpa=192.0.2."

        def test_list(card):
            card.inject("1/1/0", ARP + "2")
            other = card.frames("1/1/1")
            card.inject("1/1/0", ARP + "3")
            assert card.frames("1/1/1") == other

        def test_one_and_scapy(card):
            from scapy.layers.l2 import Ether, ARP as Arp
            card.inject("1/1/0", ARP + "4")
            frame, = card.frames("1/1/1")
            assert frame == bytes(Ether(dst="00:00:5e:00:53:09") / Arp(pdst="192.0.2.9"))

        def test_other_values(card):
            assert [1] == [2]
    """)
    result.assert_outcomes(failed=3)
    result.stdout.fnmatch_lines([
        "E*these frames == those", "E*arp*tpa=192.0.2.3*", "E*arp*tpa=192.0.2.2*",
        "E*these frames == those", "E*arp*tpa=192.0.2.4*", "E*dst=00:00:5e:00:53:09*192.0.2.9*",
        "E*assert [[]1[]] == [[]2[]]"])


def test_the_listings_of_the_documentation(pytester):
    """In docs/python.md a program prints what stands below it, and files of tests pass."""
    page = pathlib.Path(__file__).resolve().parents[2].joinpath("docs/python.md").read_text()
    fences = re.findall(r"^```(\w*)\n(.*?)^```$", page, re.DOTALL | re.MULTILINE)
    listings = [text for language, text in fences if language == "python"]
    files = {text.splitlines()[0][2:]: text for text in listings if text.startswith("# ")}
    program, = set(listings) - set(files.values())
    printed, = [text for language, text in fences if not language]
    ran = pytester.run(sys.executable, "-c", program)
    assert (ran.errlines, ran.outlines) == ([], printed.splitlines())
    pytester.makepyfile(**{name.removesuffix(".py"): text for name, text in files.items()})
    result = pytester.runpytest_subprocess("-p", "vornlcapi.pytest_plugin", "--strict-markers")
    tests = sum(text.count("\ndef test_") for text in files.values())
    assert tests >= 4
    result.assert_outcomes(passed=tests)
