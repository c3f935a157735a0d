#!/usr/bin/env bash
# Every C++ snippet of the documentation is part of a sample that the tests compile.
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
print(f"{len(snippets)} snippets, {len(strangers)} of them in no sample")
sys.exit(1 if strangers or len(snippets) < 6 else 0)
PYTHON
