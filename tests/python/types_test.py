# SPDX-License-Identifier: Apache-2.0
"""The type hints, as mypy reads them."""

import os
import re

import mypy.api

# Good lines pass; a line with a mistake ends in what mypy says of it.
PROGRAM = '''
import vornlcapi as v
from scapy.layers.l2 import Ether  # type: ignore[import]
from typing_extensions import assert_type
from vornlcapi import Card, StpState

with Card("ports 4 speed 1000") as card:
    v.vorn_add_ports_to_vlan(10, tagged=[v.Port("1/1/2")], untagged=["1/1/0", "lag/1"])
    v.vorn_add_ports_to_vlan(10, [2], [])  #! "int"; expected "str"
    v.vorn_create_vlan("10")  #! expected "int"
    v.vorn_create_vlan(lan=10)  #! Unexpected keyword argument "lan"
    v.vorn_create_vlan()  #! Missing positional argument "vlan"
    v.vorn_create_vlans(10)  #! has no attribute "vorn_create_vlans"
    info: v.VlanInfo = v.vorn_get_vlan_info(10)
    assert_type(info.tagged[0].slot, int)
    assert_type(v.vorn_get_port_pvid("1/1/0"), int)
    v.vorn_set_port_stp_state("1/1/0", StpState.FORWARDING)
    v.vorn_set_port_stp_state("1/1/0", "forwarding")  #! expected "Union[StpState, int]"
    v.vorn_set_port_autoneg("1/1/0", "yes")  #! expected "bool"
    v.vorn_add_mac_to_port("1/1/0", b"123456", 10)
    v.vorn_add_of_flow(v.Flow(src_ip="192.0.2.0/24"), v.Udf(v.UdfBase.L3, 0, 1))
    v.vorn_register_link_change_callback(lambda status, port: None)
    v.vorn_register_link_change_callback(5)  #! expected "Callable
    v.vorn_send_packet_from_cpu(Ether() / b"")
    assert_type(v.vorn_traverse_mac_table(), list[v.L2Addr])
    assert_type(card.frames("1/1/0")[0].text, str)
    card.warp("1")  #! expected "float"
    card.call_later(1, print).cancel()
    try:
        card.inject("1/1/0", v.Frame(b""))
    except v.Refused as refused:
        assert_type(refused.reason, str)
'''


def test_hints(tmp_path, monkeypatch):
    program = tmp_path / "program.py"
    program.write_text(PROGRAM)
    monkeypatch.setenv("MYPYPATH", os.environ["PYTHONPATH"])
    printed, errors, _ = mypy.api.run(
        ["--strict", "--no-error-summary", f"--cache-dir={tmp_path}/cache", str(program)])
    assert errors == ""
    said = {int(number): text for number, text in re.findall(
        rf"^{re.escape(str(program))}:(\d+): error: (.*)$", printed, re.MULTILINE)}
    wanted = {number: line.partition("#! ")[2]
              for number, line in enumerate(PROGRAM.splitlines(), 1) if "#! " in line}
    assert len(said) == printed.count(" error: "), printed  # nothing of the package itself
    assert said.keys() == wanted.keys(), printed
    for number, text in wanted.items():
        assert text in said[number], printed
