#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Every relative link of the Markdown pages leads to a file that git has, and to a heading that is
# there; every page in docs/ is linked from docs/index.md; README.md names the options of CMake that
# there are, and no others.
#
#   pages.py [<source tree>]

import os
import pathlib
import re
import subprocess
import sys

SOURCE = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
FILES = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"],
                       cwd=SOURCE, check=True, text=True, stdout=subprocess.PIPE).stdout.split("\n")
PLACES = {path for file in FILES for path in (file, *map(str, pathlib.PurePath(file).parents))}
troubles = []


def text_of(page):
    """The page without its listings, where nothing is a link or a heading."""
    text = (SOURCE / page).read_text()
    return re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)


def anchors(page):
    """The anchors of a page's headings, as Git forges make them."""
    seen = {}
    for heading in re.findall(r"^#+ (.*)", text_of(page), re.M):
        words = re.sub(r"[^\w\- ]", "", re.sub(r"\[(.*?)\]\(.*?\)", r"\1", heading).lower())
        anchor = words.strip().replace(" ", "-")
        count = seen.get(anchor, 0)
        seen[anchor] = count + 1
        yield f"{anchor}-{count}" if count else anchor


def links(page):
    without_code = re.sub(r"`[^`\n]*`", "", text_of(page))
    return re.findall(r"\]\(<?([^)>\s]+)", without_code)


pages = [file for file in FILES if file.endswith(".md")]
linked = {}
for page in pages:
    for link in links(page):
        if re.match(r"[a-z]+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = os.path.normpath(os.path.join(os.path.dirname(page), path)) if path else page
        linked.setdefault(page, set()).add(target)
        if target not in PLACES:
            troubles.append(f"{page}: the link {link} leads nowhere")
        elif anchor and target.endswith(".md") and anchor not in anchors(target):
            troubles.append(f"{page}: the link {link} names no heading of {target}")
if not linked:
    troubles.append("no page has a link")

for page in pages:
    if page.startswith("docs/") and page != "docs/index.md":
        if page not in linked.get("docs/index.md", ()):
            troubles.append(f"docs/index.md: does not say whom {page} is for")

option = r"^ *(?:option|cmake_dependent_option)\((VORN_\w+)|^ *set\((VORN_\w+)[^()]*? CACHE (?:STRING|PATH)"
lists = [file for file in FILES if file.endswith(("CMakeLists.txt", ".cmake"))
         and not file.startswith(("tests/", "examples/"))]
options = {name for file in lists for match in re.findall(option, (SOURCE / file).read_text(), re.M)
           for name in match if name}
told = set(re.findall(r"^\| `(VORN_\w+)`", (SOURCE / "README.md").read_text(), re.M))
for name in sorted(options - told):
    troubles.append(f"README.md: says nothing about the option {name}")
for name in sorted(told - options):
    troubles.append(f"README.md: there is no option {name}")

if troubles:
    sys.exit("\n".join(troubles))
print(f"{len(pages)} pages, {sum(map(len, linked.values()))} links, {len(options)} options")
