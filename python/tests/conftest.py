"""Shared pieces of the Python tests: glove sequences, and the built C library through ctypes.

The C library is build/libquil_linear.so of the repository (QUIL_LINEAR_LIB overrides it);
scripts/test_python.sh builds it before running these tests.
"""
import ctypes
import os
import pathlib

import numpy as np
import pytest

import quil_linear

REPO = pathlib.Path(__file__).resolve().parents[2]
HANDS = quil_linear.hands()
STATEFUL = [h.name for h in HANDS if h.keeps_state]
# A few hands of each kind: the package passes values through, the golden record (C++) pins
# every hand's bits, so these only have to show that nothing is lost on the way.
SOME_HANDS = list(dict.fromkeys([STATEFUL[0], STATEFUL[-1], next(h.name for h in HANDS if not h.keeps_state),
                                 next(h.name for h in HANDS if h.persistent_buffer)]))


def random_readings(n, seed):
    """Uniform readings past both clamps, with a few dropped channels (NaN, +-inf)."""
    rng = np.random.default_rng(seed)
    x = rng.uniform(-40.0, 140.0, (n, 12))
    drop = rng.random((n, 12)) < 0.01
    x[drop] = rng.choice([np.nan, np.inf, -np.inf], drop.sum())
    return x


def pinch_walk(n, seed):
    """A random walk that keeps pinching: every few dozen samples the hand opens, or the thumb
    (x0..x2) bends together with the index (x3), the middle (x6) or both, so that the pinch
    latches of the hands that keep them close and open again."""
    rng = np.random.default_rng(seed)
    x = np.full(12, 5.0)
    out = np.empty((n, 12))
    left = 0
    for k in range(n):
        if left == 0:
            left = int(rng.integers(15, 70))
            target = rng.uniform(-5.0, 15.0, 12)
            fingers = rng.integers(0, 4)  # 0 open, 1 index, 2 middle, 3 both
            if fingers:
                target[0:3] = rng.uniform(30.0, 110.0, 3)
                if fingers & 1:
                    target[3] = rng.uniform(30.0, 110.0)
                if fingers & 2:
                    target[6] = rng.uniform(30.0, 110.0)
        left -= 1
        x += 0.2 * (target - x) + rng.normal(0.0, 2.0, 12)
        out[k] = x
    return out


def memory_matters_at(name, readings):
    """The first sample k where the hand's memory matters: a fresh hand given readings[k:] maps
    them differently from one that has seen readings[:k] first. A session split there (say, in
    the middle of a pinch) carries on correctly only if the memory goes along."""
    whole = quil_linear.Hand(name).map(readings)
    for k in range(1, len(readings)):
        if not same_bits(quil_linear.Hand(name).map(readings[k:]), whole[k:]):
            return k
    raise AssertionError("%s: no sample of this session depends on the ones before it" % name)


def same_bits(a, b):
    """Equal bit for bit: signs of zeros and NaNs included."""
    a, b = np.ascontiguousarray(a, np.float64), np.ascontiguousarray(b, np.float64)
    return a.shape == b.shape and np.array_equal(a.view(np.uint64), b.view(np.uint64))


class HandInfoC(ctypes.Structure):
    _fields_ = [
        ("name", ctypes.c_char_p),
        ("version", ctypes.c_char_p),
        ("keeps_state", ctypes.c_int),
        ("persistent_buffer", ctypes.c_int),
        ("slot_roles", ctypes.c_char_p * 24),
    ]


@pytest.fixture(scope="session")
def c_library_path():
    path = pathlib.Path(os.environ.get("QUIL_LINEAR_LIB", REPO / "build" / "libquil_linear.so"))
    if not path.exists():
        pytest.fail("%s is missing: build the library first (bash scripts/test.sh does)" % path)
    return path


@pytest.fixture(scope="session")
def c_catalogue(c_library_path):
    """The C library's own catalogue, as quil_linear.hands() tuples."""
    lib = ctypes.CDLL(str(c_library_path))
    lib.quil_hand_count.restype = ctypes.c_size_t
    lib.quil_hand_at.restype = ctypes.POINTER(HandInfoC)
    lib.quil_hand_at.argtypes = [ctypes.c_size_t]
    entries = []
    for i in range(lib.quil_hand_count()):
        h = lib.quil_hand_at(i).contents
        entries.append(quil_linear.HandInfo(
            h.name.decode(), h.version.decode(), bool(h.keeps_state), bool(h.persistent_buffer),
            tuple(r.decode() for r in h.slot_roles)))
    return entries
