#!/usr/bin/env python3
"""Makes the C header, include/pictavo/pictavo_c.h, of the C++ one.
  c_header.py            writes it
  c_header.py --check    says whether it is what it would be
  c_header.py --fields   lists the records and fields of the C header as it lies there, for the compiler
                         to compare with the C++ one (tests/abi/c_header_test.cpp)"""
import re
import subprocess
import sys
from pathlib import Path

FOLDER = Path(__file__).resolve().parent.parent / "include/pictavo"
HEADER = FOLDER / "pictavo_c.h"
PLAIN = {"u8": "uint8_t", "u16": "uint16_t", "i32": "int32_t", "u32": "uint32_t", "i64": "int64_t",
         "f32": "float", "IPictavoSurface": "PictavoSurface", "IHostPicture": "PictavoHostPicture"}

HEAD = """\
// Pictavo for C11, and for languages that bind to C: the object as a pointer to its table of methods,
// the records and the exports. What they mean, their units, codes and threads are in pictavo.h, under
// the same names: this header is made of it, by scripts/c_header.py.
//
//   Pictavo* object = GetPictavo6();  // or by GetProcAddress: PictavoCreate and PictavoRelease
//   object->methods->BlendOverPitched(object, frame, title, width, height, pitch);
//   ReleasePictavo6(object);
//
// A method takes its object first and is called as any C function of the platform. A host implements
// PictavoSurface by an object of its own that begins with a pointer to its methods.
#ifndef PICTAVO_PICTAVO_C_H_
#define PICTAVO_PICTAVO_C_H_

#include <stdint.h>

struct ID3D11Device;
struct ID3D11DeviceContext;
struct ID3D11Texture2D;

#ifdef __cplusplus
extern "C" {
#endif

"""

TAIL = """\

// A program that also includes pictavo.h, before this header, has these from there.
#ifndef PICTAVO_PICTAVO_H_
{constants}
#if defined(_WIN32)
__declspec(dllimport) Pictavo* GetPictavo6(void);
__declspec(dllimport) int32_t ReleasePictavo6(Pictavo* object);
#endif
#endif

// The types of these two, for programs that load the DLL at run time.
typedef Pictavo* PictavoCreate(void);
typedef int32_t PictavoRelease(Pictavo* object);

#ifdef __cplusplus
}}
#endif

#endif  // PICTAVO_PICTAVO_C_H_
"""

CONSTRUCT = re.compile(
    r"inline constexpr (?P<type>\w+) (?P<constant>\w+) =\s*(?P<value>[^;]+);"
    r"|constexpr (?P<result>\w+) (?P<function>\w+)(?P<code>\([^)]*\) \{.*?^\})"
    r"|^struct (?P<record>\w+)(?: : \w+)? \{(?P<body>.*?)^\};", re.M | re.S)
METHOD = re.compile(r"virtual ([^;(]*?)(\w+)\(([^)]*)\)")


def in_c(text, records):
    """Types by their names in C."""
    text = re.sub(r"alignas\(\d+\) ", "", text)
    text = re.sub(r"\b(ID3D11\w+)", r"struct \1", text)
    return re.sub(r"\b\w+\b", lambda m: PLAIN.get(m[0], f"Pictavo{m[0]}" if m[0] in records else m[0]), text)


def table(cpp, name, methods, numbered):
    """An object of C++ as one of C."""
    lines = [f"/// See pictavo::{cpp} in pictavo.h.", f"typedef struct {name} {name};", f"typedef struct {name}Methods {{"]
    for slot, (result, method, arguments) in enumerate(methods):
        comment = f"  // slot {slot}" if numbered else ""
        lines.append(f"  {result.strip()} (*{method})({', '.join(filter(None, [f'{name}* self', arguments]))});{comment}")
    return "\n".join(lines + [f"}} {name}Methods;", f"struct {name} {{", f"  const {name}Methods* methods;", "};", ""])


def make():
    text = re.sub(r"//.*", "", (FOLDER / "pictavo.h").read_text(encoding="utf-8"))
    records, constants, parts, methods = set(), [], [], []
    for found in CONSTRUCT.finditer(text):
        name = found["record"]
        if found["constant"]:
            constants.append(f"#define {found['constant']} (({PLAIN[found['type']]}){found['value'].rstrip('u')})")
        elif found["function"]:
            code = in_c(found["code"], records)
            constants.append(f"static inline {PLAIN[found['result']]} Pictavo{found['function']}{code}")
        elif "virtual" in found["body"]:
            own = [tuple(in_c(" ".join(part.split()), records) for part in m) for m in METHOD.findall(found["body"])]
            if re.fullmatch(r"IPictavo\d?", name):
                methods += own
            else:
                parts.append(table(name, PLAIN[name], own, False))
        else:
            records.add(name)
            body = in_c(re.sub(r"\n\s*\n", "\n", found["body"]), records)
            parts.append(f"/// See pictavo::{name} in pictavo.h.\ntypedef struct Pictavo{name} {{{body}}} Pictavo{name};\n")
    parts.append(table("IPictavo6", "Pictavo", methods, True))
    whole = HEAD + "\n".join(parts) + TAIL.format(constants="\n".join(constants))
    return subprocess.run(["clang-format", f"--assume-filename={HEADER}"], input=whole, capture_output=True, text=True,
                          check=True).stdout


def fields():
    """Of lines such as `  uint32_t reserved[2];` between `typedef struct` and `}`."""
    for record, body in re.findall(r"typedef struct Pictavo(\w+) \{(.*?)^\}", HEADER.read_text(), re.M | re.S):
        if record.endswith("Methods") or record == "Methods":
            continue
        print(f"RECORD({record})")
        for field in re.findall(r"(\w+)(?:\[\d+\])?;", body):
            print(f"FIELD({record}, {field})")


if sys.argv[1:] == ["--fields"]:
    fields()
elif sys.argv[1:] == ["--check"]:
    if HEADER.read_text() != make():
        sys.exit("pictavo_c.h is older than pictavo.h: run scripts/c_header.py")
else:
    HEADER.write_text(make())
