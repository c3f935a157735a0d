#!/usr/bin/env python3
"""Prints a file as Doxygen shall read it.
  docs_filter.py FILE
In pictavo.h, each method gets the parameters that its comment leaves to the table at the top of the header,
and its example, the paragraph of samples/recipes/examples.cpp that calls it. Slots and methods that
are named become links."""
import re
import sys
from pathlib import Path
from textwrap import dedent

ROOT = Path(__file__).resolve().parent.parent
HEADER = ROOT / "include/pictavo/pictavo.h"
METHOD = re.compile(r"((?:^ *///.*\n)+)( *virtual\s[^;(]*?(\w+)\(([^)]*)\))", re.M)
TABLE = re.compile(r"^/// \| (`.*?`) \| (.*) \|$", re.M)


def read(path):
    return path.read_text(encoding="utf-8")


def methods():
    """Each method's place, by slot and by name."""
    places = {}
    for part in re.split(r"(?=^struct IPictavo\d?\b)", read(HEADER), flags=re.M)[1:]:
        interface = re.match(r"struct (\w+)", part)[1]
        for slot, name in re.findall(r"/// Slot (\d+)\.(?:.*\n *///)*.*\n *virtual\s[^;(]*?(\w+)\(", part):
            places[slot] = places[name] = f"pictavo::{interface}::{name}"
    return places


def examples():
    """The paragraphs that call a method, by its name, without the functions' beginnings and ends."""
    text = re.sub(r"^\S.*\n", "", read(ROOT / "samples/recipes/examples.cpp"), flags=re.M)
    return {name: dedent(part.strip("\n")) for part in re.split(r"\n\s*\n", text)
            for name in re.findall(r"->(\w+)\(", part)}


def parameters(arguments):
    """Type and name of each, an array being a pointer."""
    for argument in filter(None, map(str.strip, arguments.split(","))):
        kind, name = re.fullmatch(r"(.*?)(\w+(?:\[\d+\])?)", " ".join(argument.split())).groups()
        yield (kind.strip() + "*", name.partition("[")[0]) if "[" in name else (kind.strip(), name)


def complete(comment, arguments, shared, example):
    """A method's comment with all of its parameters."""
    text = re.sub(r"^ */// ?", "", comment, flags=re.M)
    body, *tags = re.split(r"@(?=param\b|return\b)", text)
    own = {name: f"@{tag.strip()}" for tag in tags if tag.startswith("param")
           for name in tag.split()[1].split(",")}
    told = [body.rstrip(), ""]
    for kind, name in parameters(arguments):
        text = shared.get(f"{kind} {name}") or shared.get(name)
        told.append(own.get(name) or text and f"@param {name} {text}" or "")
    told += [f"@{tag.strip()}" for tag in tags if tag.startswith("return")]
    told = list(dict.fromkeys(told))  # one tag may tell of several
    if example:
        told += ["@par Example", "@code{.cpp}", example, "@endcode"]
    return "".join(f"/// {line}".rstrip() + "\n" for line in "\n".join(told).split("\n"))


def filtered_header(text, places):
    shared = {key: told for keys, told in TABLE.findall(text) for key in re.findall(r"`(.*?)`", keys)}
    calls = examples()
    named = re.compile(r"(?<![\w:])(" + "|".join(name for name in places if not name.isdigit()) + r")\b(?!\()")
    text = re.sub(r"///(?! @name).*", lambda line: named.sub(lambda m: link(places, m[1], m[1]), line[0]), text)
    text = METHOD.sub(lambda m: complete(m[1], m[4], shared, calls.get(m[3])) + m[2], text)
    return filtered(text, places)


def filtered(text, places):
    """A summary is the first sentence, and a slot's number shall not be all of it."""
    text = re.sub(r"(Slot \d+)\. ", r"\1: ", text)
    return re.sub(r"\bslot (\d+)\b|\bSlot (\d+)\b(?!:)", lambda m: link(places, m[1] or m[2], m[0]), text)


def link(places, method, shown):
    return f'@ref {places[method]} "{shown}"' if method in places else shown


def filtered_page(text, places):
    """Of what the pages link to, the samples are not among the pages of the reference. Code that goes on
    in the next line would become a block."""
    text = re.sub(r"\[`?([^]`]*)`?\]\((\.\./)?include/pictavo/pictavo\.h\)", r'@ref pictavo.h "\1"', text)
    text = re.sub(r"\[([^]]*)\]\((\.\./)?samples[^)]*\)", r"\1", text)
    blocks = re.split(r"(^```(?:.*\n)*?```$|^#.*$)", text, flags=re.M)
    return "".join(block if block[:1] == "#" or block[:3] == "```" else filtered_text(block, places)
                   for block in blocks)


def filtered_text(text, places):
    text = re.sub(r"`[^`]+`", lambda code: code[0].replace("\n", " "), text)
    return re.sub(r"`(\w+)`", lambda m: link(places, m[1], m[1]) if m[1] in places else m[0], text)


file = Path(sys.argv[1])
change = filtered_page if file.suffix == ".md" else filtered_header if file.name == HEADER.name else filtered
sys.stdout.buffer.write(change(read(file), methods()).encode())
