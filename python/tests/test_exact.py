"""The Python hands give what the C library gives, bit for bit."""
import ctypes
import pathlib
import subprocess
import sys

import numpy as np
import pytest

import quil_linear
from conftest import SOME_HANDS, STATEFUL, pinch_walk, random_readings, same_bits

RUNNER = pathlib.Path(__file__).with_name("c_export.py")
SEQUENCES = {"random": lambda: random_readings(2000, seed=11), "pinch": lambda: pinch_walk(3000, seed=12)}


@pytest.mark.parametrize("kind", sorted(SEQUENCES))
@pytest.mark.parametrize("name", SOME_HANDS)
def test_fresh_hand_matches_fresh_c_export(name, kind, c_library_path, c_catalogue, tmp_path):
    readings = SEQUENCES[kind]()
    readings.tofile(tmp_path / "in.f64")
    persistent = next(h.persistent_buffer for h in c_catalogue if h.name == name)
    subprocess.run([sys.executable, str(RUNNER), str(c_library_path), name, str(int(persistent)),
                    str(tmp_path / "in.f64"), str(tmp_path / "out.f64")], check=True)
    expected = np.fromfile(tmp_path / "out.f64").reshape(-1, 24)
    assert same_bits(quil_linear.Hand(name).map(readings), expected)


def test_catalogue_is_the_c_librarys(c_library_path, c_catalogue):
    assert quil_linear.hands() == c_catalogue
    lib = ctypes.CDLL(str(c_library_path))
    lib.quil_linear_version.restype = ctypes.c_char_p
    assert quil_linear.__version__ == lib.quil_linear_version().decode()


@pytest.mark.parametrize("name", [n for n in SOME_HANDS if n in STATEFUL])
def test_pinch_walk_sets_and_releases_latches(name):
    hand = quil_linear.Hand(name)
    seen = []
    for sample in pinch_walk(3000, seed=12):
        hand.map(sample)
        seen.append([int(on) for on in hand.memory["pinch_latches"]])
    steps = np.diff(np.array(seen), axis=0)
    assert (steps == 1).any() and (steps == -1).any()
