"""Calls Pictavo.dll from Python by slot number.

    python slots.py [PATH_OF_DLL]

Needs a 64-bit Python on Windows. Run it in the DLL's folder, where the DLL finds its modules: the
program's own folder is Python's. The object's first word points at its table of methods, and every
method takes the object first; pictavo.h numbers the slots and states their arguments.
"""

import ctypes
import sys
from ctypes import POINTER, c_float, c_int32, c_uint8, c_uint32, c_void_p


class Pictavo:
    """One object of the library."""

    def __init__(self, path="./Pictavo.dll"):
        self._library = ctypes.CDLL(path)
        create, self._release = self._library.GetPictavo6, self._library.ReleasePictavo6
        create.argtypes, create.restype = [], c_void_p
        self._release.argtypes, self._release.restype = [c_void_p], c_int32
        self._object = create()
        if not self._object:
            raise MemoryError("Pictavo.dll could not create its object")
        table = ctypes.cast(self._object, POINTER(POINTER(c_void_p)))
        self._table = table.contents

    def close(self):
        self._release(self._object)
        self._object = None

    def call(self, slot, result, *arguments):
        """Calls a slot. `arguments` are (type, value) pairs."""
        method = ctypes.CFUNCTYPE(result, c_void_p, *(kind for kind, _ in arguments))
        return method(self._table[slot])(self._object, *(value for _, value in arguments))


class MotionBlurParam(ctypes.Structure):
    _fields_ = [("strength", c_float), ("maxSamples", c_int32), ("dirX", c_float),
                ("dirY", c_float), ("zoom", c_float), ("reserved", c_float), ("angle", c_float)]


class ImageDesc(ctypes.Structure):
    _fields_ = [("reserved", c_uint32 * 2), ("bufferWidth", c_int32), ("bufferHeight", c_int32),
                ("memoryKind", c_uint32), ("data", c_void_p), ("width", c_int32),
                ("height", c_int32), ("pitch", c_int32), ("bytesPerPixel", c_int32)]


def main():
    library = Pictavo(*sys.argv[1:2])
    level = library.call(1, c_int32)

    below = (c_uint8 * 4)(200, 100, 0, 255)
    above = (c_uint8 * 4)(0, 0, 255, 128)  # half clear red
    library.call(4, c_uint32, (c_void_p, ctypes.addressof(below)),
                 (c_void_p, ctypes.addressof(above)), (c_int32, 1), (c_int32, 1), (c_int32, 4))
    print(f"level {level}: over gives {list(below)[:3]}")

    src, dst = ImageDesc(width=60, height=40), ImageDesc()
    motion = MotionBlurParam(strength=1, maxSamples=30, dirX=15, zoom=1)
    x, y = c_int32(), c_int32()
    library.call(64, c_uint32, (c_void_p, ctypes.addressof(src)),
                 (c_void_p, ctypes.addressof(dst)), (c_void_p, ctypes.addressof(motion)),
                 (c_void_p, ctypes.addressof(x)), (c_void_p, ctypes.addressof(y)))
    print(f"a motion blur of 60 x 40 needs {dst.width} x {dst.height}, from {x.value}, {y.value}")
    library.close()


if __name__ == "__main__":
    main()
