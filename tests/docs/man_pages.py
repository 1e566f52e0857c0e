#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Manual pages and programs name the same things: the options of each program, the commands of the
# shell with the words that they know, the statements and tables of card descriptions. The examples
# of the pages about the language and about descriptions are run.
#
#   man_pages.py <source tree> vornsh=<command> [vornd=<command>] [vorn-agent=<command>]

import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

SOURCE = pathlib.Path(sys.argv[1])
PROGRAMS = {name: shlex.split(command)
            for name, command in (argument.split("=", 1) for argument in sys.argv[2:])}
PAGES = {path.stem: path.read_text() for path in (SOURCE / "docs/man").glob("*.[1-9]")}
troubles = []


def run(*command, **keywords):
    return subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          **keywords)


def printed(program, *arguments):
    result = run(*PROGRAMS[program], *arguments)
    if result.returncode != 0 or not result.stdout:
        sys.exit(f"{program} {' '.join(arguments)}: status {result.returncode}\n{result.stdout}")
    return result.stdout


def compare(what, page, in_page, in_program):
    if not in_program:
        troubles.append(f"{what}: none were found in the program")
    for name in sorted(in_page - in_program):
        troubles.append(f"{page}: there is no {what} {name}")
    for name in sorted(in_program - in_page):
        troubles.append(f"{page}: says nothing about the {what} {name}")


def item_words(page, macro):
    """The words behind a macro in the heads of a page's lists."""
    heads = re.findall(r"^\.It (.*)", PAGES[page], re.M)
    return {word.replace(r"\&", "") for head in heads
            for word in re.findall(rf"\b{macro} (\S+)", head)}


def options(program):
    lines = re.findall(r"^  (-.*?)(?:  .*)?$", printed(program, "--help"), re.M)
    named = {option for line in lines for option in re.findall(r"(?<!\S)--?[a-z][a-z-]*", line)}
    compare("option", program, {"-" + name for name in item_words(program, "Fl")}, named)


def commands():
    names = [line.split()[0] for line in printed("vornsh", "-c", "help shell; help card").splitlines()]
    helps = printed("vornsh", "-c", "; ".join("help " + name for name in names))
    usages = dict(zip(names, re.findall(r"^\S.*", helps, re.M)))
    compare("command", "vornsh-script", item_words("vornsh-script", "Ic"), set(names))
    items = re.split(r"^\.It Ic ", PAGES["vornsh-script"].replace(r"\&", ""), flags=re.M)[1:]
    for name, usage in usages.items():
        about = " ".join(item for item in items if item.split()[0] == name)
        told = set(re.findall(r"[a-z_0-9]+", about)) | {name}
        for word in re.findall(r"\b[a-z][a-z0-9_]*\b", usage):
            if word not in told and word != "nothing":
                troubles.append(f"vornsh-script: says nothing about {word} of {name}")


def statements():
    text = (SOURCE / "softcard/card_description.cpp").read_text()
    names = set(re.findall(r'words_\[0\] == "([a-z-]+)"', text))
    tables = set(re.findall(r'\{"([a-z0-9-]+)", &CardCapacity::', text))
    words = {head.split()[1] for head in re.findall(r"^\.It (Cm .*)", PAGES["vorn-card"], re.M)}
    compare("statement or table", "vorn-card", words, names | tables)


def example(page):
    return re.findall(r"^\.Sh EXAMPLES$.*?^\.Bd.*?\n(.*?)^\.Ed", PAGES[page], re.M | re.S)[0]


def examples():
    with tempfile.TemporaryDirectory() as folder:
        card = pathlib.Path(folder, "card")
        card.write_text(example("vorn-card"))
        script = pathlib.Path(folder, "script")
        script.write_text(example("vornsh-script"))
        for page, arguments in ("vorn-card", ("--card", card, "-c", "show card")), \
                               ("vornsh-script", ("-e", script)):
            result = run(*PROGRAMS["vornsh"], *map(str, arguments))
            if result.returncode != 0:
                troubles.append(f"{page}: the example fails:\n{result.stdout}")


for name in PROGRAMS:
    options(name)
commands()
statements()
examples()
sys.exit("\n".join(troubles) or None)
