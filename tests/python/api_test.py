# SPDX-License-Identifier: Apache-2.0
"""The entry points as Python calls them: names, arguments, values and refusals."""

import ast
import enum
import gc
import inspect
import ipaddress
import os
import pathlib
import pickle
import re
import weakref

import pytest

import vornlcapi as v

MAC = "00:00:5e:00:53:01"
BROADCAST = "eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff arp tpa=192.0.2.2"


def exported():
    """The C++ entry points among the library's symbols: `vorn_create_vlan(unsigned int) T ...`."""
    symbols = pathlib.Path(os.environ["VORN_EXPORTED"]).read_text()
    return set(re.findall(r"^(vorn_\w+)(?:\[abi:cxx11\])?\(", symbols, re.MULTILINE))


def entry_points():
    return {name: function for name, function in vars(v).items() if name.startswith("vorn_")}


def test_functions_are_the_exported_entry_points():
    assert len(exported()) > 150
    assert set(entry_points()) == exported()
    assert set(entry_points()) <= set(v.__all__)


def stubs():
    return ast.parse(pathlib.Path(v.__file__).with_name("_native.pyi").read_text()).body


def test_every_function_has_hints_and_help():
    typed = {made.name: made for made in stubs() if isinstance(made, ast.FunctionDef)}
    for name, function in entry_points().items():
        arguments = typed[name].args
        assert typed[name].returns and all(argument.annotation for argument in arguments.args), name
        signature = inspect.signature(function).parameters
        assert [argument.arg for argument in arguments.args] == list(signature), name
        optional = [one for one in signature.values() if one.default is None]
        assert len(arguments.defaults) == len(optional), name
        assert inspect.getdoc(function).splitlines()[-1], name


def test_what_the_stubs_name_is_there():
    for made in stubs():
        if isinstance(made, (ast.ClassDef, ast.FunctionDef)):
            there = getattr(v._native, made.name)
            members = [line.target.id for line in made.body if isinstance(line, ast.AnnAssign)]
            assert members == list(getattr(there, "_fields", ())), made.name
            assert (made.name in v.__all__) == hasattr(v, made.name), made.name
    assert sorted(v.__all__) == sorted(set(v.__all__))
    assert all(hasattr(v, name) for name in v.__all__)


# ---- Values: what is set is what is got ----------------------------------------------------------

# Setter, getter and values, in every form that Python has for them.
ROUND_TRIPS = [
    (v.vorn_set_port_pvid, v.vorn_get_port_pvid, [(1, 1)]),
    (v.vorn_set_port_autoneg, v.vorn_get_port_autoneg, [(False, False), (True, True)]),
    (v.vorn_set_port_stp_state, v.vorn_get_port_stp_state,
     [(v.StpState.LEARNING, v.StpState.LEARNING), (0, v.StpState.BLOCKING)]),
    (v.vorn_set_port_speed, v.vorn_get_port_speed, [(100, 100)]),
    (v.vorn_set_port_mac_limit, v.vorn_get_port_mac_limit, [(-1, -1), (17, 17)]),
    (v.vorn_set_port_flood_blocking_cpu, v.vorn_get_port_flood_blocking_cpu,
     [(v.FloodBlock.MULTICAST | v.FloodBlock.BROADCAST, v.FloodBlock(6))]),
    (v.vorn_set_port_advertising_ability, v.vorn_get_port_advertising_ability,
     [(0x28, v.PortAbility.MBPS_100_FULL | v.PortAbility.MBPS_1000_FULL)]),
]


@pytest.mark.parametrize("setter, getter, values", ROUND_TRIPS,
                         ids=[row[0].__name__ for row in ROUND_TRIPS])
def test_round_trip(card, setter, getter, values):
    for given, expected in values:
        assert setter("1/1/3", given) is None
        got = getter(v.Port(1, 1, 3))
        assert (got, type(got)) == (expected, type(expected))


def test_the_forward_mode_of_the_switch(card):
    v.vorn_set_switch_forward_mode(v.ForwardMode.FLOW)
    assert v.vorn_get_switch_forward_mode() is v.ForwardMode.FLOW


def test_several_outputs_are_a_named_tuple(card):
    v.vorn_create_vlan(10)
    v.vorn_add_ports_to_vlan(vlan=10, untagged=("1/1/1", v.Port("1/1/2")), tagged="1/1/0")
    info = v.vorn_get_vlan_info(10)
    assert info == (["1/1/0"], ["1/1/1", "1/1/2"])
    assert info.tagged[0].port == 0 and info._fields == ("tagged", "untagged")
    assert isinstance(info.untagged[1], v.Port) and isinstance(info, v.VlanInfo)
    assert pickle.loads(pickle.dumps(info)) == info
    v.vorn_set_port_flow_control_8023x("1/1/0", receive=True, transmit=False)
    assert v.vorn_get_port_flow_control_8023x("1/1/0")._asdict() == {
        "receive": True, "transmit": False}


def test_ports():
    assert v.Port("1/2/5") == "lag/5" == v.Port.lag(5)
    assert v.Port.vlan(10) == v.Port(1, 3, 10) and hash(v.Port(1, 1, 3)) == hash("1/1/3")
    assert (v.Port("vlan/10").unit, v.Port("vlan/10").slot, v.Port("vlan/10").port) == (1, 3, 10)
    with pytest.raises(ValueError, match="eth0"):
        v.Port("eth0")
    for numbers, error in [(("1/1/1", 2), TypeError), ((5,), TypeError), ((1, 1), TypeError),
                           ((1, 1, -1), ValueError), ((1, None, 1), TypeError)]:
        with pytest.raises(error):
            v.Port(*numbers)


def test_lag_ports_come_back_as_objects(card):
    v.vorn_add_ports_to_lag("lag/2", ["1/1/4", "1/1/5"])
    number = v.vorn_lag_usp_to_lag_id("lag/2")
    assert v.vorn_lag_id_to_lag_usp(number) == "lag/2"
    assert isinstance(v.vorn_lag_id_to_lag_usp(number), v.Port)


@pytest.mark.parametrize("mac", [MAC, bytes.fromhex("00005e005301"),
                                 bytearray.fromhex("00005e005301")])
@pytest.mark.parametrize("ip", ["192.0.2.1", bytes([192, 0, 2, 1]), 0xC0000201,
                                ipaddress.ip_address("192.0.2.1")])
def test_addresses(card, mac, ip):
    v.vorn_create_vlan(10)
    interface = v.vorn_create_l3_interface("00:00:5e:00:53:aa", 10)
    assert v.vorn_get_l3_interface(interface) == (10, "00:00:5e:00:53:aa")
    v.vorn_add_l3_host_ip4("1/1/0", ip, mac, interface)
    assert v.vorn_get_l3_host_ip4("192.0.2.1", "1/1/0") == (MAC, interface)


@pytest.mark.parametrize("address, mask", [
    ("2001:db8::", "/32"), (ipaddress.ip_address("2001:db8::"), "ffff:ffff::"),
    (ipaddress.ip_address("2001:db8::").packed, bytes([255] * 4 + [0] * 12))])
def test_ip6(card, address, mask):
    v.vorn_create_vlan(10)
    interface = v.vorn_create_l3_interface("00:00:5e:00:53:aa", 10)
    v.vorn_add_l3_route_ip6("1/1/0", address, mask, MAC, interface)
    assert v.vorn_get_l3_route_by_subnet_ip6("2001:db8::", "/32", "1/1/0") == (interface, MAC)


@pytest.mark.parametrize("mask", ["/24", "255.255.255.0", 0xFFFFFF00, bytes([255, 255, 255, 0])])
def test_ip4_masks(card, mask):
    v.vorn_create_vlan(10)
    interface = v.vorn_create_l3_interface("00:00:5e:00:53:aa", 10)
    v.vorn_add_l3_route_ip4("1/1/0", "192.0.2.0", mask, MAC, interface, metric=5)
    route = v.vorn_get_l3_route_by_subnet_ip4("192.0.2.0", "/24", "1/1/0")
    assert route == (MAC, interface, 5)


def test_vlan_bitmap_and_mac_table(card):
    for vlan in range(10, 13):
        v.vorn_create_vlan(vlan)
    v.vorn_add_system_mac_vlan_bitmap(MAC, {10, 12})
    v.vorn_add_mac_to_port("1/1/3", "00:00:5e:00:53:02", 11)
    entries = sorted(v.vorn_traverse_mac_table(), key=lambda entry: entry.vlan)
    assert [(entry.mac, entry.vlan, entry.flags) for entry in entries] == [
        (MAC, 10, v.L2AddrFlag.SYSTEM), ("00:00:5e:00:53:02", 11, v.L2AddrFlag.STATIC),
        (MAC, 12, v.L2AddrFlag.SYSTEM)]
    assert entries[1].port == "1/1/3"
    v.vorn_delete_mac_vlan_bitmap(MAC, bytes([0, 4 + 16]) + bytes(510))
    assert len(v.vorn_traverse_mac_table()) == 1


def test_counters_are_dictionaries(card):
    card.inject("1/1/0", BROADCAST)
    for counters in (v.vorn_get_port_stat_counter_all64("1/1/0"),
                     v.vorn_get_port_stat_counter_all32_ext("1/1/0")):
        assert set(counters) == set(v.StatType)
        assert counters[v.StatType.IN_BROADCAST_PACKETS] == 1
        assert counters[v.StatType.OUT_BROADCAST_PACKETS] == 0
    assert v.vorn_get_port_brief_stat_counter64("1/1/0", v.BriefStatType.IN_PACKETS) == 1
    assert v.vorn_get_port_brief_stat_counter_all64("1/1/0") is None


def test_flows(card):
    flow = v.Flow(in_port="1/1/0", src_ip="192.0.2.0/24", ip_protocol=17, dst_l4_port=53,
                  dst_ip=ipaddress.ip_network("198.51.100.0/25"))
    number = v.vorn_add_of_flow(flow)
    v.vorn_add_of_flow_action(number, v.FlowAction.SET_DST_MAC, "00:00:5e:00:53:07")
    v.vorn_add_of_flow_action(number, v.FlowAction.SET_DST_IP, "203.0.113.7")
    v.vorn_add_of_flow_action(number, v.FlowAction.OUTPUT, "1/1/9")
    udp = (f"eth src={MAC} dst=00:00:5e:00:53:02 ipv4 src=192.0.2.9 dst=198.51.100.{{}} "
           "udp sport=9 dport=53")
    card.inject("1/1/0", udp.format(127))
    card.expect("1/1/9", "eth dst=00:00:5e:00:53:07 ipv4 dst=203.0.113.7")
    card.inject("1/1/0", udp.format(128))
    card.inject("1/1/1", udp.format(127))
    assert v.vorn_get_of_flow_stat_counter64(number) == 1
    v.vorn_clear_of_flow_table()
    # An address alone is that address and no other.
    number = v.vorn_add_of_flow(v.Flow(src_ip="192.0.2.9", src_l4_port=9))
    v.vorn_add_of_flow_action(number, v.FlowAction.OUTPUT, v.FlowPort.DROP)
    for frame in (udp, udp.replace("192.0.2.9", "192.0.2.8"), udp.replace("sport=9", "sport=8")):
        card.inject("1/1/0", frame.format(1))
    assert v.vorn_get_of_flow_stat_counter64(number) == 1
    v.vorn_clear_of_flow_table()
    # Byte 14 of the frame on: 4 bytes of the payload.
    number = v.vorn_add_of_flow({"ether_type": 0x88B5}, udf=v.Udf(v.UdfBase.FRAME, 14, 0x01020304))
    v.vorn_add_of_flow_action(number, v.FlowAction.OUTPUT, v.FlowPort.DROP)
    for payload in ("01020304", "01020305"):
        card.inject("1/1/0", f"eth src={MAC} dst=00:00:5e:00:53:02 payload={payload}")
    assert v.vorn_get_of_flow_stat_counter32(id=number) == 1
    # What strips the tag has no parameter.
    v.vorn_add_of_flow_action(number, v.FlowAction.STRIP_VLAN)


# A frame, and for each field of a flow what it is there and what it is not.
FLOW_FRAME = (f"eth src={MAC} dst=00:00:5e:00:53:02 vlan=1 prio=3 ipv4 src=192.0.2.9 "
              "dst=198.51.100.7 tos=40 udp sport=9 dport=53")
FLOW_FIELDS = [
    ("in_port", v.Port("1/1/0"), "1/1/1"), ("src_mac", MAC, "00:00:5e:00:53:02"),
    ("dst_mac", bytes.fromhex("00005e005302"), MAC), ("vlan_id", 1, 3), ("vlan_priority", 3, 1),
    ("ether_type", 0x0800, 0x0806), ("src_ip", "192.0.2.9", "198.51.100.7"),
    ("src_ip", "192.0.2.8/255.255.255.254", "192.0.2.10/31"), ("dst_ip", 0xC6336407, "192.0.2.9"),
    ("src_l4_port", 9, 53), ("dst_l4_port", 53, 9), ("ip_protocol", 17, 40), ("tos", 40, 17)]


@pytest.mark.parametrize("field, is_there, is_not", FLOW_FIELDS)
def test_fields_of_flows(card, field, is_there, is_not):
    for value, hits in ((is_not, 0), (is_there, 1)):
        number = v.vorn_add_of_flow({field: value})
        v.vorn_add_of_flow_action(number, v.FlowAction.OUTPUT, v.FlowPort.DROP)
        card.inject("1/1/0", FLOW_FRAME)
        assert v.vorn_get_of_flow_stat_counter64(number) == hits


def test_packets_from_the_cpu(card):
    v.vorn_set_port_stp_state("1/1/1", v.StpState.BLOCKING)
    frame = v.Frame(BROADCAST)
    v.vorn_send_packet_by_port([], ["1/1/0", "1/1/1"], frame)
    v.vorn_send_packet_by_port(tagged=[], untagged=["1/1/1"],
                               packet=v.Packet(BROADCAST, v.PacketType.CONTROL))
    assert card.frames("1/1/0") == [frame] == card.frames("1/1/1")
    card.expect_nothing()


# ---- What is no value ----------------------------------------------------------------------------

@pytest.mark.parametrize("call, error, words", [
    (lambda: v.vorn_create_vlan("ten"), TypeError, "vlan: 'ten' is no number"),
    (lambda: v.vorn_create_vlan(True), TypeError, "vlan: True"),
    (lambda: v.vorn_create_vlan(-1), ValueError, "vlan: -1 is not within 0 and 4294967295"),
    (lambda: v.vorn_create_vlan(2**70), ValueError, "vlan: 1180591620717411303424"),
    (lambda: v.vorn_create_vlan(None), TypeError, "vlan: None is no number"),
    (lambda: v.vorn_set_port_mac_limit("1/1/0", 2**70), ValueError, "1180591620717411303424"),
    (lambda: v.vorn_create_vlan(), TypeError, "vorn_create_vlan.. is missing .*'vlan'"),
    (lambda: v.vorn_create_vlan(1, 2), TypeError, "takes 1 arguments but 2"),
    (lambda: v.vorn_create_vlan(1, vlan=2), TypeError, "multiple values for argument 'vlan'"),
    (lambda: v.vorn_create_vlan(lan=2), TypeError, "unexpected keyword argument 'lan'"),
    (lambda: v.vorn_set_port_pvid("1/1", 1), ValueError, "port: .*1/1"),
    (lambda: v.vorn_set_port_pvid(("1", "1", "3"), 1), TypeError, "port: .* is no port"),
    (lambda: v.vorn_set_ports_pvid(7, 1), TypeError, "ports: 7 is no list of ports"),
    (lambda: v.vorn_set_port_autoneg("1/1/0", 1), TypeError, "on: 1 is neither True nor False"),
    (lambda: v.vorn_set_port_stp_state("1/1/0", v.PhyState.UP), TypeError, "neither of StpState"),
    (lambda: v.vorn_delete_mac_by_mac("00:00:5e"), ValueError, "mac: '00:00:5e' is no MAC address"),
    (lambda: v.vorn_delete_mac_by_mac(b"12345"), ValueError, "no MAC address"),
    (lambda: v.vorn_delete_mac_by_mac(b"1234567"), ValueError, "no MAC address"),
    (lambda: v.vorn_delete_mac_by_mac(5), TypeError, "mac: 5 is no MAC address"),
    (lambda: v.vorn_add_arp_filter("192.0.2.256", "/24"), ValueError, "ip: .*no IPv4 address"),
    (lambda: v.vorn_add_arp_filter("192.0.2.0", "/33"), ValueError, "mask: '/33' is no IPv4 mask"),
    (lambda: v.vorn_delete_l3_host_by_network_ip6("192.0.2.1"), ValueError, "no IPv6 address"),
    (lambda: v.vorn_delete_mac_vlan_bitmap(MAC, [4096]), ValueError, "bitmap: 4096"),
    (lambda: v.vorn_delete_mac_vlan_bitmap(MAC, b"12"), ValueError, "512 bytes"),
    (lambda: v.vorn_delete_mac_vlan_bitmap(MAC, "10"), TypeError, "no set of VLANs"),
    (lambda: v.vorn_send_packet_from_cpu("eth src=1"), ValueError, "packet: "),
    (lambda: v.vorn_send_packet_from_cpu(60), TypeError, "packet: 60 is no frame"),
    (lambda: v.vorn_add_of_flow(v.Flow(tos=65536)), ValueError, "tos: 65536"),
    (lambda: v.vorn_add_of_flow({"colour": 1}), TypeError, "colour"),
    (lambda: v.vorn_add_of_flow(5), TypeError, "neither a Flow nor a dictionary"),
    (lambda: v.vorn_add_of_flow(v.Flow(), 5), TypeError, "udf: 5 is no Udf"),
    (lambda: v.vorn_add_of_flow_action(1, v.FlowAction.SET_TOS), TypeError, "needs one"),
    (lambda: v.vorn_add_of_flow_action(1, 0, "lag/1"), ValueError, "no port with a flow port"),
    (lambda: v.vorn_register_link_change_callback(5), TypeError, "callback: 5 cannot be called"),
    (lambda: v.vorn_set_lcmgr_trace(5, True), TypeError, "target: 5 is no text"),
])
def test_mistakes_name_the_argument(card, call, error, words):
    refusal = card.last_refusal
    with pytest.raises(error, match=words):
        call()
    assert card.last_refusal == refusal  # the card never saw it


# ---- Refusals ------------------------------------------------------------------------------------

def test_refusals_have_their_reason(card):
    v.vorn_create_vlan(10)
    for call, words in [(lambda: v.vorn_create_vlan(10), "10"),
                        (lambda: v.vorn_create_vlan(5000), "5000.*4094"),
                        (lambda: v.vorn_get_port_pvid("1/1/99"), "1/1/99")]:
        with pytest.raises(v.Refused, match=words) as caught:
            call()
        assert caught.value.reason == card.last_refusal
        assert str(caught.value).startswith(caught.value.function + ": ")
    card.fail("create_vlan", 2)
    v.vorn_create_vlan(11)
    with pytest.raises(v.Refused, match="vorn_create_vlan: .*on purpose"):
        v.vorn_create_vlan(12)
    v.vorn_create_vlan(12)


def test_what_a_refused_call_gave_all_the_same(card):
    v.vorn_set_system_mac_limit(77)
    with pytest.raises(v.Refused) as caught:
        v.vorn_get_system_mac_limit()
    assert caught.value.outputs == 77


# ---- Callbacks -----------------------------------------------------------------------------------

REGISTER = {
    "rx": (v.vorn_register_rx_packet_callback, v.ReportEvent.RX_PACKET),
    "rx_c": (v.vorn_register_rx_packet_callback_c, v.ReportEvent.RX_PACKET),
    "link": (v.vorn_register_link_change_callback, v.ReportEvent.LINK_CHANGE),
    "link_c": (v.vorn_register_link_change_callback_c, v.ReportEvent.LINK_CHANGE),
    "mac": (v.vorn_register_mac_update_callback, v.ReportEvent.MAC_UPDATE),
    "mac_c": (v.vorn_register_mac_update_callback_c, v.ReportEvent.MAC_UPDATE),
}
BPDU = "eth src=00:00:5e:00:53:01 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 payload=0000"


def cause(card, name):
    """Makes one event of a kind."""
    if name.startswith("rx"):
        card.inject("1/1/3", BPDU)
    elif name.startswith("link"):
        card.cut("1/1/3")
    else:
        v.vorn_clear_fdb_table(True)
        card.run()
        card.inject("1/1/3", BROADCAST)


def shown(name, arguments):
    if name.startswith("rx"):
        packet, = arguments
        return (packet.frame.matches(BPDU.split(" payload")[0]), packet.reason, packet.port,
                packet.vlan)
    if name.startswith("link"):
        return arguments
    entry, update = arguments
    return entry.mac, entry.vlan, entry.port, update


EXPECTED = {
    "rx": (True, v.RxReason.RESERVED, "1/1/3", 1),
    "link": (v.LinkStatus(v.PhyState.DOWN, 0, v.DuplexType.FULL), "1/1/3"),
    "mac": (MAC, 1, "1/1/3", v.MacUpdate.LEARNED),
}


@pytest.mark.parametrize("name", REGISTER)
def test_callbacks(card, name):
    register, event = REGISTER[name]
    v.vorn_set_port_bpdu_processing("1/1/3", True)
    seen = []
    register(lambda *arguments: seen.append(arguments))  # nobody else keeps it
    gc.collect()
    cause(card, name)
    assert seen == []  # events come when the card runs
    card.run()
    got, expected = shown(name, seen[0]), EXPECTED[name.partition("_")[0]]
    if name.startswith("link"):
        got, expected = (got[0].state, got[1]), (expected[0].state, expected[1])
    assert len(seen) == 1 and got == expected


@pytest.mark.parametrize("name", REGISTER)
def test_callbacks_are_withdrawn_and_released(card, name):
    register, event = REGISTER[name]
    seen = []

    class Listener:
        def heard(self, *arguments):
            seen.append(arguments)

    listener, kept = Listener(), Listener()
    gone = weakref.ref(listener)
    register(listener.heard)
    register(kept.heard)
    with pytest.raises(v.Refused):
        register(listener.heard)  # it is registered already
    card.fail("deregister_event_callback")
    with pytest.raises(v.Refused, match="on purpose"):
        v.vorn_deregister_event_callback(event, kept.heard)  # it still hears
    v.vorn_deregister_event_callback(event, listener.heard)
    with pytest.raises(v.Refused):
        v.vorn_deregister_event_callback(event, listener.heard)
    cause(card, name)
    card.run()
    assert len(seen) == 1
    del listener
    gc.collect()
    assert gone() is None


@pytest.mark.parametrize("name", REGISTER)
def test_callbacks_are_released_with_their_card(name):
    register, event = REGISTER[name]
    listener = lambda *arguments: None  # noqa: E731
    gone = weakref.ref(listener)
    with v.Card():
        register(listener)
        del listener
        gc.collect()
        assert gone() is not None
    gc.collect()
    assert gone() is None


def test_user_data_is_handed_on_and_tells_registrations_apart(card):
    seen = []
    data = object()
    note = lambda *arguments: seen.append(arguments)  # noqa: E731
    v.vorn_register_mac_update_callback(note, user_data=data)
    v.vorn_register_mac_update_callback(note)
    card.inject("1/1/3", BROADCAST)
    card.run()
    assert [arguments[2:] for arguments in seen] == [(data,), ()]
    v.vorn_deregister_event_callback(v.ReportEvent.MAC_UPDATE, note, data)
    with pytest.raises(v.Refused):
        v.vorn_deregister_event_callback(v.ReportEvent.MAC_UPDATE, note, data)
    v.vorn_deregister_event_callback(v.ReportEvent.MAC_UPDATE, note)


@pytest.mark.parametrize("deliver", [lambda card: card.run(), lambda card: card.warp(1),
                                     lambda card: card.frames("1/1/0")])
def test_an_exception_comes_out_where_events_were_delivered(card, deliver):
    seen = []

    def fails_at_first(status, port):
        seen.append(port)
        if len(seen) == 1:
            raise ZeroDivisionError("in the callback")

    v.vorn_register_link_change_callback(fails_at_first)
    card.cut("1/1/1")
    card.cut("1/1/2")
    with pytest.raises(ZeroDivisionError, match="in the callback"):
        deliver(card)
    deliver(card)
    assert seen == ["1/1/1", "1/1/2"]
    card.warp(1)  # the clock still goes


def test_a_callback_may_call_and_withdraw_itself(card):
    def once(entry, update):
        v.vorn_deregister_event_callback(v.ReportEvent.MAC_UPDATE, once)
        v.vorn_set_port_pvid(entry.port, 1)
        seen.append(entry.mac)

    seen = []
    v.vorn_register_mac_update_callback(once)
    for host in range(3):
        card.inject("1/1/3", BROADCAST.replace("53:01", f"53:0{host}"))
        card.run()
    assert seen == ["00:00:5e:00:53:00"]


def test_many_callbacks_come_and_go(card):
    listeners = [lambda status, port: None for _ in range(64)]
    for _ in range(2):
        for listener in listeners:
            v.vorn_register_link_change_callback(listener)
        with pytest.raises(RuntimeError, match="64 callbacks"):
            v.vorn_register_link_change_callback(lambda status, port: None)
        for listener in listeners:
            v.vorn_deregister_event_callback(v.ReportEvent.LINK_CHANGE, listener)


# ---- Enumerations --------------------------------------------------------------------------------

def test_bits_that_no_member_has_together(card):
    v.vorn_set_port_advertising_ability("1/1/3", 0x2B)
    got = v.vorn_get_port_advertising_ability("1/1/3")
    assert (got, type(got)) == (0x2B, v.PortAbility)


def test_enumerations():
    made = [value for value in vars(v).values()
            if isinstance(value, type) and issubclass(value, (enum.IntEnum, enum.IntFlag))]
    assert len(made) >= 21
    assert v.StpState.FORWARDING == 3 and v.StatType.OUT_QUEUE_7 == 35
    assert v.RxReason.MTU == 14 and v.ForwardMode.NORMAL == 2
    assert v.PortAbility.MBPS_1000_FULL | v.PortAbility.PAUSE_RX == 0x1020
    assert not any(name[0].isdigit() for one in made for name in one.__members__)
