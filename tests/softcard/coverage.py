#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes docs/coverage.md: for each operation of the SDK how it is read back, what it does to frames,
and the test that proves it.

    coverage.py           writes the file
    coverage.py --check   fails when the file is not current

The operations come from platform/vorn_sdk_base.h, the rest from the tests in tests/softcard. A test
says what it proves in a comment right above it:

    // effect: set_port_pvid - untagged frames go into it
    TEST_F(VlanTest, PvidTakesUntaggedFrames) {

Such a test must call the operation, itself or through its fixture, and look at frames, packets for the CPU or counters. A setter is
read back by a test that calls both it and its getter. An operation for which nothing is found makes the
script fail, so that none is forgotten.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SDK = ROOT / "platform" / "vorn_sdk_base.h"
TESTS = ROOT / "tests" / "softcard"
OUT = ROOT / "docs" / "coverage.md"

# What reads back an operation whose getter does not follow from its name.
READERS = {
    "create_vlan": "get_vlan_info",
    "delete_vlan": "get_vlan_info",
    "add_ports_to_vlan": "get_vlan_info",
    "delete_ports_from_vlan": "get_vlan_info",
    "create_lag": "get_lag_balancing_strategy",
    "delete_lag": "get_lag_balancing_strategy",
    "add_mac_to_port": "traverse_mac_table",
    "add_system_mac": "traverse_mac_table",
    "create_l3_interface": "get_l3_interface",
    "create_l3_interface_with_id": "get_l3_interface",
    "add_l3_host_ip4": "get_l3_host_ip4",
    "add_l3_host_ip6": "get_l3_host_ip6",
    "add_l3_route_ip4": "get_l3_route_by_subnet_ip4",
    "add_l3_route_ip6": "get_l3_route_by_subnet_ip6",
    "add_of_flow": "get_of_flow_priority",
    "add_of_flow_with_id": "get_of_flow_priority",
    "delete_mac": "traverse_mac_table",
    "clear_fdb_table": "traverse_mac_table",
    "delete_of_flow": "get_of_flow_priority",
    "delete_l3_host_by_addr_ip4": "get_l3_host_ip4",
    "clear_l3_host_table": "get_l3_host_ip4",
    "delete_l3_route_by_subnet_ip4": "get_l3_route_by_subnet_ip4",
    "clear_l3_route_table": "get_l3_route_by_subnet_ip4",
    "delete_l3_interface": "get_l3_interface",
    "set_port_stat_enable": "get_port_stat_enabled",
}

# Operations that no frame can show, and why.
FRAMELESS = {
    "get_line_card_usp": "names the card",
    "set_lcmgr_trace": "shows calls, not frames",
}

# What a test looks at.
LOOKS = re.compile(r"\b(out|skip|cpu|none|stat|drops|counted|passed|passes|way|flooded|packets|expect)\(|"
                   r"get_port_(brief_)?stat_counter|waiting\(\)|take\(|hear\(")
TEST = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.M)
HELPER = re.compile(r"^  (?:[\w:<>&*]+ )*(\w+)\([^;]*?\)(?: const)?(?: override)? \{$", re.M)
EFFECT = re.compile(r"^// effect: (\w+) - (.+)$")


def helpers(text):
    """The functions defined in `text`, constructors included, with their bodies."""
    found = {}
    for match in HELPER.finditer(text):
        end = match.end()
        depth = 1
        while depth > 0 and end < len(text):
            depth += {"{": 1, "}": -1}.get(text[end], 0)
            end += 1
        found[match.group(1)] = found.get(match.group(1), "") + text[match.end() : end]
    return found


class Test:
    def __init__(self, name, comment, body, file):
        self.name = name
        self.body = body
        self.file = file
        self.effects = {}
        for line in comment:
            found = EFFECT.match(line)
            if found:
                self.effects[found.group(1)] = found.group(2)

    def calls(self, operation):
        return re.search(r"(?:\.|->|::|\bvorn_)" + operation + r"\b", self.body) is not None


def operations():
    """The (slot, name) pairs that the library calls, in their order."""
    text = SDK.read_text()
    found = []
    slot = -1
    for match in re.finditer(r"^  virtual [\w ]+?(\w+)\(", text, re.M):
        slot += 1
        if not match.group(1).startswith("reserved_"):
            found.append((slot, match.group(1)))
    return found


def tests():
    shared = helpers((TESTS / "switch_fixture.h").read_text())
    for path in sorted(TESTS.glob("*_test.cpp")):
        if path.name == "refusal_test.cpp":  # calls that do nothing prove no effect
            continue
        text = path.read_text()
        starts = list(TEST.finditer(text))
        own = dict(shared, **helpers(text))
        for number, start in enumerate(starts):
            end = starts[number + 1].start() if number + 1 < len(starts) else len(text)
            comment = []
            for line in reversed(text[: start.start()].splitlines()):
                if not line.startswith("//"):
                    break
                comment.append(line)
            # What the fixture's functions do for a test, the test does.
            body = text[start.end() : end] + own.get(start.group(1), "")
            for _ in range(2):
                body += "".join(own[name] for name in own if re.search(rf"\b{name}\(", body))
            yield Test(f"{start.group(1)}.{start.group(2)}", comment, body, path.name)


def cell(text):
    return text.replace("|", "\\|")


def matrix():
    """The file's text, and what is wrong."""
    slots = operations()
    names = {name for _, name in slots}
    all_tests = list(tests())
    wrong = []
    proof = {}
    for test in all_tests:
        for operation, effect in test.effects.items():
            if operation not in names:
                wrong.append(f"{test.file}: {test.name} names {operation}, which is no operation")
            elif not test.calls(operation):
                wrong.append(f"{test.file}: {test.name} does not call {operation}")
            elif not LOOKS.search(test.body):
                wrong.append(f"{test.file}: {test.name} looks at nothing")
            proof.setdefault(operation, (effect, test))

    lines = [
        "# Coverage",
        "",
        "Every operation of the SDK that the library calls: the test that sets it and reads it back,",
        "what it does to frames, and the test that proves that with frames. Made by",
        "`tests/softcard/coverage.py` out of the tests; `--check` tells whether it is current.",
        "",
        f"{len(slots)} operations.",
        "",
        "| slot | operation | read back by | effect on frames | proved by |",
        "|---:|---|---|---|---|",
    ]
    for slot, name in slots:
        reader = READERS.get(name, "get_" + name[4:] if name.startswith("set_") else None)
        back = "no getter"
        if name.startswith("get_"):
            users = [test for test in all_tests if test.calls(name)]
            if users:
                back = f"itself: {users[0].name}"
            else:
                wrong.append(f"no test calls {name}")
        elif reader in names:
            users = [test for test in all_tests if test.calls(name) and test.calls(reader)]
            if users:
                back = f"`{reader}`: {users[0].name}"
            elif name.startswith("set_"):
                wrong.append(f"no test calls both {name} and {reader}")
        if name in proof:
            effect, test = proof[name]
            by = test.name
        elif name in FRAMELESS:
            effect, by = "none: " + FRAMELESS[name], "—"
            if not any(test.calls(name) for test in all_tests):
                wrong.append(f"no test calls {name}")
        elif name.startswith("get_"):
            effect, by = "reads only", "—"
        else:
            effect, by = "?", "?"
            wrong.append(f"no test shows what {name} does to frames")
        lines.append(f"| {slot} | `{name}` | {cell(back)} | {cell(effect)} | {by} |")
    return "\n".join(lines) + "\n", wrong


def main():
    text, wrong = matrix()
    for line in wrong:
        print(line, file=sys.stderr)
    if sys.argv[1:] == ["--check"]:
        current = OUT.exists() and OUT.read_text() == text
        if not current:
            print(f"{OUT.relative_to(ROOT)} is not current: run tests/softcard/coverage.py",
                  file=sys.stderr)
        return 0 if current and not wrong else 1
    if sys.argv[1:]:
        print(__doc__, file=sys.stderr)
        return 2
    OUT.write_text(text)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
