#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Runs what pages show: in their listings of the kind ```console, each line that begins with "$ " is
# a command of the shell sh, what stands below it is all that it prints. A listing ```vorn is a
# script, whose first line names its file. The commands of a page run one after another in a folder
# of their own. With VORN_UPDATE_TRANSCRIPTS in the environment the pages are written anew.
#
#   listings.py <vornsh> <page>...

import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def run(command, folder, environment):
    result = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, text=True,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, timeout=60)
    return "".join(line.rstrip() + "\n" for line in result.stdout.splitlines())


def with_outputs(text, vornsh):
    """The page with what its commands print, and how many commands it has."""
    count = 0
    with tempfile.TemporaryDirectory() as folder:
        programs = pathlib.Path(folder, "programs")
        programs.mkdir()
        program = programs / "vornsh"
        program.write_text(f'#!/bin/sh\nexec {vornsh} "$@"\n')
        program.chmod(0o755)
        work = pathlib.Path(folder, "work")
        work.mkdir()
        environment = dict(os.environ, PATH=f"{programs}:{os.environ['PATH']}", HOME=folder)

        def listing(match):
            nonlocal count
            kind, body = match.groups()
            if kind == "vorn":
                (work / re.match(r"# (\S+)", body)[1]).write_text(body)
                return match[0]
            commands = re.findall(r"^\$ ((?:.*\\\n)*.*)\n", body, re.M)
            count += len(commands)
            printed = "".join(f"$ {command}\n{run(command, work, environment)}"
                              for command in commands)
            return f"```{kind}\n{printed}```"

        return re.sub(r"^```(console|vorn)\n(.*?)^```", listing, text, flags=re.M | re.S), count


troubles = []
for name in sys.argv[2:]:
    page = pathlib.Path(name)
    before = page.read_text()
    after, commands = with_outputs(before, sys.argv[1])
    if commands == 0:
        troubles.append(f"{name}: shows no command")
    if "VORN_UPDATE_TRANSCRIPTS" in os.environ:
        page.write_text(after)
    elif after != before:
        troubles += difflib.unified_diff(before.splitlines(), after.splitlines(), name,
                                         "what its commands print", lineterm="")
sys.exit("\n".join(troubles) or None)
