#!/usr/bin/env bash
# Every C++ snippet of the documentation is part of a sample that the tests compile, and every link
# leads to a file.
#   snippets_test.sh SOURCE_FOLDER
set -euo pipefail
cd "$1"
python3 - <<'PYTHON'
import pathlib, re, sys

samples = [p.read_text() for p in pathlib.Path("samples").rglob("*.cpp")]
pages = [pathlib.Path("README.md"), *pathlib.Path("docs").rglob("*.md")]
snippets = [(p, s) for p in pages for s in re.findall(r"^```cpp\n(.*?)^```", p.read_text(), re.S | re.M)]
strangers = [(p, s) for p, s in snippets if not any(s in sample for sample in samples)]
for page, snippet in strangers:
    print(f"{page}: no sample has this snippet:\n{snippet}")
links = [(p, l) for p in [*pathlib.Path(".").glob("*.md"), *pages[1:]]
         for l in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", p.read_text())]
dead = [(p, l) for p, l in links
        if not (p.parent / l).exists()
        and not (p.name == "effects.md" and l.endswith(".png"))]  # scripts/docs.sh makes these
for page, link in dead:
    print(f"{page}: {link} is not there")
print(f"{len(links)} links, {len(dead)} of them dead")
print(f"{len(snippets)} snippets, {len(strangers)} of them in no sample")
sys.exit(1 if strangers or dead or len(links) < 20 or len(snippets) < 6 else 0)
PYTHON
