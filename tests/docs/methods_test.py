#!/usr/bin/env python3
"""What is told of the methods elsewhere agrees with their list, include/pictavo/pictavo_methods.inl.
  methods_test.py SOURCE_FOLDER
Names each slot that was forgotten, or told of twice, and what its comment lacks in the API reference."""
import re
import subprocess
import sys
from itertools import zip_longest
from pathlib import Path

ROOT = Path(sys.argv[1])
failures = 0


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def check(what, found, expected):
    """Both are collections of things that can be sorted; those found may repeat where they must not."""
    global failures
    found, expected = list(found), list(expected)
    for text, items in (("lacks", set(expected) - set(found)), ("has too many", set(found) - set(expected)),
                        ("repeats", {item for item in found if found.count(item) > 1})):
        if items:
            failures += 1
            print(f"{what} {text}: {', '.join(map(str, sorted(items)))}")


def numbers(text):
    """Of "2 – 4, 11" or "slots 2 to 4 and 11"."""
    for first, last in re.findall(r"(\d+)(?: (?:–|to) (\d+))?", text):
        yield from range(int(first), int(last or first) + 1)


methods, reserved, written = {}, set(), []  # methods: slot to (name, where)
for slot, name, where, arguments in re.findall(
        r"^PICTAVO_(?:METHOD\((\d+), (\w+), (\w+),|RESERVED\((?=\d))\s*((?:\d+, )?\([^()]*\))\)",
        read("include/pictavo/pictavo_methods.inl"), re.M):
    if not name:
        slot = arguments.split(",")[0]
        name, arguments = f"Reserved{slot}", arguments.partition(", ")[2]
        reserved.add(int(slot))
    else:
        methods[int(slot)] = name, where
    written.append(f"{slot} {name}{' '.join(arguments.split())}")
on_processor = {slot for slot in methods if methods[slot][1] in ("CPU", "MODULE")}

header = read("include/pictavo/pictavo.h")
declared, interfaces = [], []
for part in re.split(r"(?=^struct IPictavo\d?\b)", header, flags=re.M)[1:]:
    told = re.findall(r"///<? Slot (\d+)\.", part)
    code = re.sub(r"//.*", "", part)
    found = re.findall(r"virtual\s[^;(]*?(\w+)\(([^)]*)\)", code)
    names = [", ".join(re.sub(r"\[\d*\]", "", a).split()[-1].lstrip("*") for a in arguments.split(",") if a.strip())
             for _, arguments in found]
    interfaces.append((re.match(r"struct (\w+)", part)[1], f"{len(declared)} – {len(declared) + len(found) - 1}"))
    declared += [f"{slot} {name}({names})" for slot, (name, _), names in zip_longest(told, found, names, fillvalue=("?", 0))]
check("The list", written, declared)

shown = subprocess.run([sys.executable, ROOT / "scripts/docs_filter.py", ROOT / "include/pictavo/pictavo.h"],
                       capture_output=True, check=True, encoding="utf-8").stdout
wanted, given = [], []
for comment, result, name, arguments in re.findall(
        r"((?:^/// .*\n|^///\n)+) *virtual (\w+)[^;(]*?(\w+)\(([^)]*)\) noexcept", shown.partition("struct IPictavo {")[2],
        re.M):
    names = re.findall(r"(\w+)(?:\[\d\])?(?:,|$)", arguments)
    told = ",".join(re.findall(r"@param +(\S+) +\S", comment)).split(",") if names else []
    parts = [["an example"] * ("@code" in comment), ["a result"] * ("@return " in comment), told]
    wanted += [f"{name}: {part}" for part in ["an example"] + ["a result"] * (result != "void") + names]
    given += [f"{name}: {part}" for part in sum(parts, [])]
check("What the header and its examples tell", given, wanted)

table = re.search(r"^\| slots \| operation .*?\n\n", read("README.md"), re.M | re.S)[0]
rows = re.findall(r"^\| ([\d –,]+) \|", table, re.M)
check("README's table", (slot for row in rows for slot in numbers(row)), methods)
told = re.findall(r"^\| `(IPictavo\d?)` \| (\d+ – \d+) \|", read("docs/versioning.md"), re.M)
check("docs/versioning.md", told, interfaces)
changes = re.sub(r"\s+", " ", read("CHANGELOG.md"))
phrases = re.findall(r"slots? ((?:\d+|, | and | to )+)", changes)
check("CHANGELOG.md", {slot for phrase in phrases for slot in numbers(phrase)} & set(methods),
      (slot for slot in methods if methods[slot][1] != "OBJECT"))

tested = read("tests/kernels/operations.cpp")
check("tests/kernels/operations.cpp",
      [slot for slot in on_processor if re.search(rf'"{slot} {methods[slot][0]}"|::{methods[slot][0]}\b', tested)],
      on_processor)
timed = {int(slot) for path in (ROOT / "bench").glob("*.cpp") if path.name != "d3d11_bench.cpp"  # by code
         for slot in re.findall(r'"(\d+) (?!bits)[a-zA-Z]', path.read_text(encoding="utf-8"))}
untimed = re.search(r"Not timed: slots ([^.]*)", read("docs/performance.md"))[1]
untimed = list(numbers(re.sub(r"\([^)]*\)", "", untimed)))
check("bench, with those that docs/performance.md says are not timed,", list(timed) + untimed, on_processor)

told = re.findall(r"`(\w+)` \((\d+)\)", read("docs/tasks.md"))
check("docs/tasks.md", {f"{slot} {name}" for name, slot in told}, (f"{slot} {methods[slot][0]}" for slot in methods))

print(f"{len(methods)} methods and {len(reserved)} reserved slots, {failures} faults")
sys.exit(1 if failures or len(methods) + len(reserved) != 111 else 0)
