"""Calls Pictavo.dll from Python, by the names and types of pictavo_c.h.

    python python_host.py [PATH_OF_DLL]

Needs a 64-bit Python on Windows. Run it in the DLL's folder, where the DLL finds its modules: the
program's own folder is Python's.
"""

import ctypes
import re
import sys
from pathlib import Path

HEADER = Path(__file__).resolve().parents[2] / "include/pictavo/pictavo_c.h"
TYPES = {"void": None, "uint8_t": ctypes.c_uint8, "uint16_t": ctypes.c_uint16, "int32_t": ctypes.c_int32,
         "uint32_t": ctypes.c_uint32, "int64_t": ctypes.c_int64, "float": ctypes.c_float, "double": ctypes.c_double}


def type_of(declaration):
    """Of "const uint8_t* src" or "float"; what points somewhere is an address."""
    if re.search(r"[*\[]", declaration):
        return ctypes.c_void_p
    return TYPES[declaration.split()[0]]


def read_header(text):
    """Makes classes of the records. Returns the methods: names to slots and types."""
    for name, body in re.findall(r"typedef struct Pictavo(\w+) \{(.*?)\n\}", text, re.S):
        if name.endswith("Methods"):
            continue
        fields = []
        for kind, field, count in re.findall(r"([\w *]+[ *])(\w+)(?:\[(\d+)\])?;", body):
            one = type_of(kind)
            fields.append((field, one * int(count) if count else one))
        TYPES[f"Pictavo{name}"] = type(name, (ctypes.Structure,), {"_fields_": fields})
    table = re.search(r"typedef struct PictavoMethods \{(.*?)\n\}", text, re.S)[1]
    methods = re.findall(r"(\w+) \(\*(\w+)\)\(([^)]*)\)", table)
    return {name: (slot, ctypes.CFUNCTYPE(type_of(result), *map(type_of, arguments.split(","))))
            for slot, (result, name, arguments) in enumerate(methods)}


METHODS = read_header(HEADER.read_text(encoding="utf-8"))


class Pictavo:
    """One object of the library; its methods are those of pictavo.h, without the object."""

    def __init__(self, path="./Pictavo.dll"):
        self._library = ctypes.CDLL(path)
        create, self._release = self._library.GetPictavo6, self._library.ReleasePictavo6
        create.argtypes, create.restype = [], ctypes.c_void_p
        self._release.argtypes, self._release.restype = [ctypes.c_void_p], ctypes.c_int32
        self._object = create()
        if not self._object:
            raise MemoryError("Pictavo.dll could not create its object")
        self._table = ctypes.cast(self._object, ctypes.POINTER(ctypes.POINTER(ctypes.c_void_p))).contents

    def __getattr__(self, name):
        if name not in METHODS:
            raise AttributeError(name)
        slot, kind = METHODS[name]
        method = kind(self._table[slot])
        return lambda *arguments: method(self._object, *arguments)

    def close(self):
        self._release(self._object)
        self._object = None


def main():
    library = Pictavo(*sys.argv[1:2])

    below = (ctypes.c_uint8 * 4)(200, 100, 0, 255)
    above = (ctypes.c_uint8 * 4)(0, 0, 255, 128)  # half clear red
    library.BlendOverPitched(below, above, 1, 1, 4)
    print(f"level {library.GetCPULevel()}: over gives {list(below)[:3]}")

    src, dst = TYPES["PictavoImageDesc"](width=60, height=40), TYPES["PictavoImageDesc"]()
    motion = TYPES["PictavoMotionBlurParam"](strength=1, maxSamples=30, dirX=15, zoom=1)
    x, y = ctypes.c_int32(), ctypes.c_int32()
    library.GetMotionBlurDstSize(*map(ctypes.byref, (src, dst, motion, x, y)))
    print(f"a motion blur of 60 x 40 needs {dst.width} x {dst.height}, from {x.value}, {y.value}")
    library.close()


if __name__ == "__main__":
    main()
