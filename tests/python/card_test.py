# SPDX-License-Identifier: Apache-2.0
"""The card as Python drives it."""

import contextlib
import os
import subprocess
import sys

import pytest
from scapy.layers.inet import IP, UDP
from scapy.layers.l2 import ARP, Dot1Q, Dot3, Ether, LLC

import vornlcapi as v
from vornlcapi import Card

MAC = "00:00:5e:00:53:01"
BROADCAST = f"eth src={MAC} dst=ff:ff:ff:ff:ff:ff arp tpa=192.0.2.2"


@pytest.mark.card("ports 4 speed 1000")
def test_frames_in_every_form(card):
    assert card.ports == ["1/1/0", "1/1/1", "1/1/2", "1/1/3"]
    packet = Ether(src=MAC, dst="ff:ff:ff:ff:ff:ff") / ARP(pdst="192.0.2.2")
    for frame in (packet, bytes(packet), memoryview(bytes(packet)), v.Frame(packet).text):
        card.inject("1/1/0", frame)
    frames = card.frames("1/1/1")
    assert frames == [bytes(packet)] * 4 and frames == [packet] * 4 and card.frames("1/1/1") == []
    assert not frames[0] != packet
    assert frames[0] != packet / b"more" and frames[0] != str(frames[0]) and frames[0] != 5
    assert {frames[0], bytes(packet)} == {bytes(packet)}
    assert bytes(frames[0].packet) == bytes(packet) and frames[0].packet[ARP].pdst == "192.0.2.2"
    assert str(frames[0]).startswith(f"eth src={MAC} dst=ff:ff:ff:ff:ff:ff")
    assert frames[0].matches("eth untagged arp") and not frames[0].matches("eth vlan=10")
    with pytest.raises(ValueError, match="pattern"):
        frames[0].matches("ethernet")


def test_tagged_frames_as_scapy_builds_them(card):
    v.vorn_create_vlan(10)
    v.vorn_add_ports_to_vlan(10, ["1/1/1"], ["1/1/0"])
    v.vorn_set_port_pvid("1/1/0", 10)
    sent = Ether(src=MAC, dst="ff:ff:ff:ff:ff:ff") / IP(dst="192.0.2.255") / UDP(dport=520)
    card.inject("1/1/0", sent)
    frame, = card.frames("1/1/1")
    assert frame.packet[Dot1Q].vlan == 10 and frame.packet[UDP].dport == 520
    card.expect_nothing()


def test_a_length_makes_an_802_3_packet(card):
    assert v.Frame(Dot3(src=MAC, dst=MAC) / LLC(dsap=0x42, ssap=0x42)).packet[LLC].dsap == 0x42


def test_expect_shows_what_came(card):
    card.inject("1/1/0", BROADCAST)
    frame, = card.expect("1/1/1", "eth arp tpa=192.0.2.2")
    assert isinstance(frame, v.Frame)
    with pytest.raises(AssertionError, match="(?s)1/1/2: expected\n    eth vlan=7.*came"
                                             "\n    eth src=.*arp.*PVID"):
        card.expect("1/1/2", "eth vlan=7")
    with pytest.raises(AssertionError, match="came nothing"):
        card.expect("1/1/2", "eth")
    with pytest.raises(AssertionError, match="(?s)expected nothing.*arp"):
        card.expect("1/1/3")
    with pytest.raises(AssertionError, match="(?s)1/1/4: expected nothing.*arp"):
        card.expect_nothing()
    for pattern, error in [("ethe", ValueError), (b"eth", TypeError)]:  # though nothing came
        with pytest.raises(error, match="pattern: "):
            card.expect("1/1/2", pattern)


def test_time_is_the_test_s(card, clock):
    v.vorn_set_fdb_aging_time(300)
    card.inject("1/1/0", BROADCAST)
    began = clock.now
    clock.warp(299.5)
    assert len(v.vorn_traverse_mac_table()) == 1
    clock.warp(301)
    assert v.vorn_traverse_mac_table() == []
    assert clock.now - began == pytest.approx(600.5) and card.now == clock.now
    for seconds, error in [(-1, ValueError), (float("nan"), ValueError), (10**12, ValueError),
                           ("1", TypeError), (True, TypeError)]:
        with pytest.raises(error, match=f"seconds: {seconds!r} is "):
            card.warp(seconds)
    assert clock.now - began == pytest.approx(600.5)


def test_calls_come_in_their_order_and_at_their_time(card, clock):
    seen = []

    def note(what, *again):
        seen.append((what, clock.now, len(v.vorn_traverse_mac_table())))
        for seconds in again:
            clock.call_later(seconds, note, what)

    v.vorn_set_fdb_aging_time(10)
    card.inject("1/1/0", BROADCAST)
    clock.call_later(30, note, "last")
    clock.call_later(2, note, "again", 3, 0, 100)
    clock.call_later(2, note, "second")
    cancelled = clock.call_later(2.5, note, "cancelled")
    clock.call_later(1, cancelled.cancel)
    clock.warp(1.5)
    assert seen == []
    clock.warp(29)
    assert seen == [("again", 2, 1), ("second", 2, 1), ("again", 2, 1), ("again", 5, 1),
                    ("last", 30, 0)]
    assert clock.now == 30.5
    cancelled.cancel()
    clock.call_later(0, note, "at once")
    card.run()
    assert seen[-1] == ("at once", 30.5, 0)
    with pytest.raises(TypeError, match="function: 5 cannot be called"):
        card.call_later(1, 5)
    with pytest.raises(ValueError, match="seconds: -1"):
        card.call_later(-1, note)


def test_a_call_that_raises_leaves_the_rest_for_later(card, clock):
    seen = []
    clock.call_later(1, lambda: 1 / 0)
    clock.call_later(1, seen.append, "same moment")
    clock.call_later(2, seen.append, "later")
    clock.call_later(3, clock.warp, 1)
    with pytest.raises(ZeroDivisionError):
        clock.warp(10)
    assert (clock.now, seen) == (1, [])
    clock.warp(1)
    assert seen == ["same moment", "later"]
    with pytest.raises(v.Refused, match="it is being moved on already"):
        clock.warp(1)


def test_calls_end_with_their_card():
    seen = []
    card = Card()
    with card:
        card.call_later(1, seen.append, "never")
    with card:
        card.call_later(1, v.vorn_lcmgr_api_terminate)
        card.call_later(2, seen.append, "never")
        card.warp(5)
    with card:
        card.warp(5)
    assert seen == []


def test_real_time_cannot_be_warped():
    with Card(real_time=True) as card:
        with pytest.raises(v.Refused):
            card.warp(1)
        seen = []
        card.call_later(0, seen.append, 1)
        card.run()
        assert seen == [1]


def test_links_and_cables(card):
    card.cut("1/1/0")
    assert v.vorn_get_port_link_state("1/1/0") is v.PhyState.DOWN
    card.restore("1/1/0")
    assert v.vorn_get_port_link_state("1/1/0") is v.PhyState.UP
    card.patch("1/1/1", "1/1/2")
    with pytest.raises(v.Refused, match="frames: 1/1/1 is not plugged into memory"):
        card.frames("1/1/1")
    card.cut("1/1/1")
    assert v.vorn_get_port_link_state("1/1/2") is v.PhyState.DOWN
    card.unpatch("1/1/1")
    card.restore("1/1/1")
    card.inject("1/1/0", BROADCAST)
    card.expect("1/1/1", "eth arp")


def test_why_a_frame_was_dropped(card):
    v.vorn_set_port_ingress_discarding("1/1/0", v.IngressDiscard.UNTAGGED)
    card.inject("1/1/0", BROADCAST)
    reason, = [name for name in card.drop_reasons if card.drops("1/1/0", name)]
    assert card.drops("1/1/0", reason) == 1
    assert card.trace.splitlines()
    for refused in (lambda: card.drops("1/1/0", "boredom"), lambda: card.drops("1/1/99", reason),
                    lambda: card.fail("make_coffee"), lambda: card.inject("1/1/99", BROADCAST),
                    lambda: card.inject("1/1/0", b""), lambda: card.cut("lag/1"),
                    lambda: card.patch("1/1/0", "1/1/0")):
        with pytest.raises(v.Refused) as caught:
            refused()
        assert caught.value.reason == card.last_refusal != ""
    for mistake, error, words in [(lambda: card.drops("1/1/0", 5), TypeError, "reason: 5"),
                                  (lambda: card.fail(5), TypeError, "operation: 5"),
                                  (lambda: card.fail("\0"), ValueError, "operation: .*zero"),
                                  (lambda: card.fail("create_vlan", -1), ValueError, "nth: -1"),
                                  (lambda: card.cut(1), TypeError, "port: 1 is no port")]:
        with pytest.raises(error, match=words):
            mistake()


def test_failures_are_forgotten(card):
    card.fail("create_vlan")
    card.fail_none()
    v.vorn_create_vlan(10)
    card.fail("create_vlan")  # its card ends first
    card.__exit__()
    with Card():
        v.vorn_create_vlan(10)
    card.__enter__()


# ---- Cards come and go ---------------------------------------------------------------------------

def test_descriptions(tmp_path):
    described = tmp_path / "small.card"
    described.write_text("ports 8 speed 1000\n")
    blank = tmp_path / "a small.card"
    blank.write_text("ports 9 speed 1000\n")
    for description, ports in [(str(described), 8), (described, 8), (blank, 9),
                               (os.fsencode(described), 8),
                               ("ports 3 speed 1000\n# no more\n", 3), (None, 52)]:
        with Card(description) as card:
            assert card.port_count == ports, description
        assert card.port_count == 0
    for description, words in [("ports many", "description:1: "),
                               (tmp_path / "none", "none: cannot be opened"),
                               ("smal.card", "smal.card: cannot be opened")]:
        with pytest.raises(v.Refused, match=words):
            with Card(description):
                pass
    for description, error in [("ports 3 speed 1000\0", ValueError), ("small\0", ValueError),
                               (5, TypeError)]:
        with pytest.raises(error):
            with Card(description):
                pass
    with Card():
        pass


def test_one_card_a_process(card):
    with pytest.raises(RuntimeError, match="there is a card already"):
        with Card():
            pass
    assert card.port_count == 52


def test_without_a_card():
    ended = Card()
    with ended:
        pass
    for closed in (Card(), ended):
        for use in (lambda: closed.inject("1/1/0", BROADCAST), lambda: closed.frames("1/1/0"),
                    lambda: closed.expect("1/1/0"), closed.expect_nothing, closed.run,
                    lambda: closed.warp(1), lambda: closed.call_later(1, print),
                    lambda: closed.now, lambda: closed.trace, closed.fail_none,
                    lambda: closed.fail("create_vlan"), lambda: closed.cut("1/1/0"),
                    lambda: closed.restore("1/1/0"), lambda: closed.patch("1/1/0", "1/1/1"),
                    lambda: closed.unpatch("1/1/0"), lambda: closed.drops("1/1/0", "mtu")):
            # Another one is no help.
            for other in (contextlib.nullcontext(), Card()):
                with other, pytest.raises(RuntimeError, match="this card is not there"):
                    use()
        with Card() as card:
            closed.__exit__()
            assert (card.port_count, closed.port_count) == (52, 0)
    with pytest.raises(v.Refused, match="there is no card"):
        v.vorn_create_vlan(10)


def test_a_card_that_was_ended_by_hand_and_its_callbacks():
    seen = []

    def end(status, port):
        seen.append(port)
        v.vorn_lcmgr_api_terminate()

    with Card() as card:
        v.vorn_register_link_change_callback(end)
        card.cut("1/1/0")
        card.run()
        assert card.port_count == 0
    with Card() as card:
        card.cut("1/1/0")
        card.run()
    assert seen == ["1/1/0"]


def test_a_program_that_ends_in_the_middle_ends_well():
    program = """
import vornlcapi
card = vornlcapi.Card().__enter__()
vornlcapi.vorn_register_link_change_callback(lambda status, port: print(port))
card.cut("1/1/5")
card.run()
"""
    run = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True)
    assert (run.returncode, run.stdout, run.stderr) == (0, "1/1/5\n", "")
