#!/usr/bin/env python3
"""Every C++ snippet of the documents is part of a sample that the tests compile.
  snippets_test.py SOURCE_FOLDER"""
import re
import sys
from pathlib import Path

ROOT = Path(sys.argv[1])


def read(path):
    return path.read_text(encoding="utf-8")


samples = [read(path) for path in ROOT.glob("samples/**/*.cpp")]
pages = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]
snippets = [(page, code) for page in pages for code in re.findall(r"^```cpp\n(.*?)^```", read(page), re.S | re.M)]
strangers = [(page, code) for page, code in snippets if not any(code in sample for sample in samples)]
for page, code in strangers:
    print(f"{page}: no sample has this snippet:\n{code}")
print(f"{len(snippets)} snippets, {len(strangers)} of them in no sample")
sys.exit(1 if strangers or len(snippets) < 6 else 0)
