"""Hand.slots and quil_linear.readings() say what the C catalogue says, and what the hands do."""
import ctypes
import math

import pytest

import quil_linear


class SlotInfoC(ctypes.Structure):
    _fields_ = [
        ("role", ctypes.c_char_p), ("meaning", ctypes.c_char_p), ("kind", ctypes.c_int),
        ("follows", ctypes.c_int * 2), ("relation", ctypes.c_char_p), ("departs", ctypes.c_char_p),
        ("value", ctypes.c_double), ("sign", ctypes.c_int), ("range_min", ctypes.c_double),
        ("range_max", ctypes.c_double), ("moved_by", ctypes.c_uint), ("negative_zero", ctypes.c_int),
    ]


KINDS = ("joint", "follower", "fixed", "unused", "terminator", "gesture_code")


@pytest.fixture(scope="module")
def c_slots(c_library_path):
    lib = ctypes.CDLL(str(c_library_path))
    lib.quil_hand_find.restype = ctypes.c_void_p
    lib.quil_hand_find.argtypes = [ctypes.c_char_p]
    lib.quil_hand_slot.restype = ctypes.POINTER(SlotInfoC)
    lib.quil_hand_slot.argtypes = [ctypes.c_void_p, ctypes.c_size_t]
    return lambda name, s: lib.quil_hand_slot(lib.quil_hand_find(name.encode()), s).contents


def test_every_slot_says_what_the_c_catalogue_says(c_slots):
    for info in quil_linear.hands():
        slots = quil_linear.Hand(info.name).slots
        assert [s.role for s in slots] == list(info.slot_roles)
        for s in slots:
            c = c_slots(info.name, s.index)
            assert (s.role, s.kind, s.relation, s.departs, s.sign) == (
                c.role.decode(), KINDS[c.kind], c.relation.decode(), c.departs.decode(), c.sign), (info.name, s)
            assert s.follows == tuple(f for f in c.follows if f >= 0)
            assert s.moved_by == tuple(r for r in range(12) if c.moved_by >> r & 1)
            assert s.range == (c.range_min, c.range_max)
            assert (math.isnan(s.value) and math.isnan(c.value)) or s.value == c.value


def test_readings_name_the_twelve_channels_in_order():
    readings = quil_linear.readings()
    assert [r.index for r in readings] == list(range(12))
    assert len({r.name for r in readings}) == 12
    assert all(r.unit == "degrees" and r.motion in ("bend", "spread") for r in readings)
    all_hands = {h.name for h in quil_linear.hands()}
    for r in readings:
        assert set(r.hands) <= all_hands
        for name in r.hands:  # a hand said to use a reading has a slot it moves
            assert any(r.index in s.moved_by for s in quil_linear.slots(name)), (r.name, name)
