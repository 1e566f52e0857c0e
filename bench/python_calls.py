# SPDX-License-Identifier: Apache-2.0
"""How fast Python calls entry points: PYTHONPATH=build/release/python python3 bench/python_calls.py

Each row is one call in a loop, measured in processor time, which other programs on the machine do
not add to: the fastest of many rounds, and how many times longer than a call of an empty function.
The second row is what pybind11 itself needs for a function that does next to nothing.
"""

import time

import vornlcapi as v

ROUNDS = 15
CALLS = 20_000


def empty(port):
    pass


def measure(function, *arguments):
    """Nanoseconds a call."""
    fastest = None
    for _ in range(ROUNDS):
        began = time.process_time_ns()
        for _ in range(CALLS):
            function(*arguments)
        took = time.process_time_ns() - began
        fastest = took if fastest is None else min(fastest, took)
    return fastest / CALLS


def main():
    with v.Card():
        v.vorn_create_vlan(10)
        v.vorn_add_ports_to_vlan(10, [], ["1/1/0", "1/1/1"])
        rows = [
            ("an empty function", empty, "1/1/3"),
            ("pybind11: port_count", v._native.port_count),
            ("set_port_pvid", v.vorn_set_port_pvid, "1/1/3", 1),
            ("get_port_pvid", v.vorn_get_port_pvid, "1/1/3"),
            ("set_port_stp_state", v.vorn_set_port_stp_state, "1/1/3", v.StpState.FORWARDING),
            ("get_port_stp_state", v.vorn_get_port_stp_state, "1/1/3"),
            ("get_vlan_info, 2 ports", v.vorn_get_vlan_info, 10),
            ("add_mac_to_port", v.vorn_add_mac_to_port, "1/1/3", "00:00:5e:00:53:01", 1),
        ]
        reference = None
        for name, function, *arguments in rows:
            nanoseconds = measure(function, *arguments)
            reference = reference or nanoseconds
            print(f"{name:24} {nanoseconds:8.0f} ns {1e9 / nanoseconds:12,.0f} a second "
                  f"{nanoseconds / reference:6.1f} times")


if __name__ == "__main__":
    main()
