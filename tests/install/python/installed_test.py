# SPDX-License-Identifier: Apache-2.0
"""The installed package: it finds the installed libraries, and pytest finds its plugin."""

import pathlib
import sys

import vornlcapi as v


def test_the_copy_is_the_installed_one(card):
    package = pathlib.Path(v.__file__).parent
    assert str(package.parent) in sys.path and package.parent.name == "dist-packages"
    mapped = pathlib.Path("/proc/self/maps").read_text()
    for library in ("libvornlcapi.so", "libvornsoftcard.so"):
        paths = {line.split()[-1] for line in mapped.splitlines() if library in line}
        assert paths and all(path.startswith(str(package.parents[3])) for path in paths)
    assert {"_native.pyi", "py.typed"} <= {file.name for file in package.iterdir()}
    v.vorn_set_port_pvid("1/1/3", 1)
    card.inject("1/1/3", "eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff")
    card.expect("1/1/0", "eth untagged")
