# SPDX-License-Identifier: Apache-2.0
"""The pytest plugin, under pytest."""

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
    """)
    result.assert_outcomes(passed=3, xfailed=1)


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
