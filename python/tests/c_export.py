"""Runs one hand's C export over a sequence, in a process of its own: the export keeps its
pinch memory in the library's statics, so only its first sequence after loading starts from
an open hand.

  python c_export.py LIBRARY HAND PERSISTENT(0|1) READINGS.f64 TARGETS.f64

Readings are native float64, 12 per sample; targets are written 24 per sample.
"""
import ctypes
import sys
from array import array

library, hand, persistent, readings_path, targets_path = sys.argv[1:]
lib = ctypes.CDLL(library)
export = getattr(lib, hand + "_GetDataValue")
export.restype = ctypes.POINTER(ctypes.c_double)
export.argtypes = [ctypes.c_double] * 12
lib.FreeMemory.argtypes = [ctypes.POINTER(ctypes.c_double)]

readings = array("d", open(readings_path, "rb").read())
targets = array("d")
for k in range(0, len(readings), 12):
    result = export(*readings[k:k + 12])
    targets.extend(result[:24])
    if persistent == "0":
        lib.FreeMemory(result)
with open(targets_path, "wb") as f:
    targets.tofile(f)
