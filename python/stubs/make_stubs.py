# SPDX-License-Identifier: Apache-2.0
"""Writes the type hints of the extension module: make_stubs.py FILE.

They come from the module itself, whose functions say their types in their help."""

import enum
import inspect
import pathlib
import sys

import vornlcapi
from vornlcapi import _native

HEAD = '''\
# Made by make_stubs.py.
from enum import IntEnum, IntFlag
from typing import Any, Callable, Iterable, List, Mapping, NamedTuple, Tuple

from vornlcapi._values import (
    Flow, FrameLike, Frame, Ip4Like, Ip6Like, L2Addr, MacLike, Packet, Port, PortLike, Udf)
'''

CARD = '''
def use_description(text: str) -> None: ...
def use_description_file(path: str) -> None: ...
def use_time(real: bool) -> None: ...
def port_count() -> int: ...
def last_refusal() -> str: ...
def run() -> int: ...
def warp(ns: int) -> None: ...
def now() -> int: ...
def inject(port: PortLike, frame: FrameLike) -> None: ...
def take(port: PortLike) -> List[Frame]: ...
def cut(port: PortLike) -> None: ...
def restore(port: PortLike) -> None: ...
def patch(port: PortLike, other: PortLike) -> None: ...
def unpatch(port: PortLike) -> None: ...
def last_trace() -> str: ...
def drops(port: PortLike, reason: str) -> int: ...
def drop_reasons() -> List[str]: ...
def fail(operation: str, nth: int) -> None: ...
def fail_none() -> None: ...
def port_text(unit: int, slot: int, port: int) -> str: ...
def port_numbers(port: PortLike) -> Tuple[int, int, int]: ...
def frame_bytes(frame: FrameLike) -> bytes: ...
def frame_text(frame: FrameLike) -> str: ...
def frame_matches(frame: FrameLike, pattern: str) -> bool: ...
'''


def enumeration(made):
    base = "IntFlag" if issubclass(made, enum.IntFlag) else "IntEnum"
    members = [f"    {name} = {member.value}" for name, member in made.__members__.items()]
    return [f"class {made.__name__}({base}):", *members, ""]


def main():
    values = vars(_native)
    lines = [HEAD]
    for name in sorted(values):
        if isinstance(values[name], type) and issubclass(values[name], enum.IntEnum | enum.IntFlag):
            lines += enumeration(values[name])
    functions = [name for name in values if name.startswith("vorn_")]
    for name in functions:
        typed, _, text = inspect.getdoc(values[name]).partition("\n\n")
        result = vornlcapi._values.result_classes.get(name)
        if result:
            lines += [f"class {result.__name__}(NamedTuple):",
                      *(f"    {field}: {hint}" for field, hint in result.__annotations__.items()),
                      ""]
        lines += [f"def {typed}:", f'    """{text}"""', ""]
    lines.append(CARD)
    missing = [name for name in values if not name.startswith(("_", "vorn_"))
               and callable(values[name]) and f"{name}(" not in CARD
               and not isinstance(values[name], type)]
    if missing:
        sys.exit(f"make_stubs.py: no hints for {missing}")
    pathlib.Path(sys.argv[1]).write_text("\n".join(lines))


if __name__ == "__main__":
    main()
