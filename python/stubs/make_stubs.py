# SPDX-License-Identifier: Apache-2.0
"""Writes the type hints of the extension module: make_stubs.py FILE.

They come from the module itself, whose functions say their types in their help."""

import enum
import inspect
import pathlib
import sys

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
def use_description_file(path: bytes) -> None: ...
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


def named_tuple(made):
    fields = [f"    {field}: {hint}" for field, hint in made.__annotations__.items()]
    return [f"class {made.__name__}(NamedTuple):", *fields, ""]


def function(made):
    typed, _, text = inspect.getdoc(made).partition("\n\n")
    return [f"def {typed}:", f'    """{text}"""', ""]


def main():
    values = vars(_native)
    lines = [HEAD, "__all__ = [", *(f'    "{name}",' for name in _native.__all__), "]", ""]
    for name in _native.__all__:
        value = values[name]
        if not isinstance(value, type):
            lines += function(value)
        elif issubclass(value, enum.Enum):
            lines += enumeration(value)
        else:
            lines += named_tuple(value)
    lines.append(CARD)
    missing = [name for name in values if not name.startswith("_")
               and name not in _native.__all__ and f"{name}(" not in CARD]
    if missing:
        sys.exit(f"make_stubs.py: no hints for {missing}")
    pathlib.Path(sys.argv[1]).write_text("\n".join(lines))


if __name__ == "__main__":
    main()
