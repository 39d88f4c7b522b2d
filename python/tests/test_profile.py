"""Wiring profiles from Python: the commands against a computation of their own, the faults a
profile file is refused for, and the safety stage's memory across states, copies and pickles."""
import copy
import json
import math
import pickle

import numpy as np
import pytest

import quil_linear
from conftest import REPO, pinch_walk, same_bits

HAND = "RUIYAN_RY_H15"
PROFILES = sorted((REPO / "profiles").glob("*.json"))


def good_profile():
    return {
        "hand": HAND,
        "comment": "test",
        "hold_after": 0.02,
        "safe_after": 0.1,
        "outputs": [
            {"name": "index", "slot": 6, "scale": -0.5, "offset": 3.0, "min": 0.0, "max": 40.0,
             "smoothing": {"kind": "ema", "alpha": 0.25}, "max_rate": 300.0},
            {"name": "thumb", "slot": 1, "scale": 1.0, "offset": 0.0, "min": -50.0, "max": 0.0, "safe": -1.0,
             "smoothing": {"kind": "one_euro", "min_cutoff": 1.0, "beta": 0.1, "d_cutoff": 1.0},
             "reject_above": 4.0},
        ],
    }


def session(n=1500, seed=4):
    readings = pinch_walk(n, seed)
    times = 5.0 + np.cumsum(np.full(n, 0.004))
    times[n // 2:] += 0.3  # the glove stalls for 0.3 s
    return readings, times


def reference(targets, times, out, hold_after, safe_after):
    """The first output's stage written out from the formulas: ema, rate limit, clip, stall."""
    a, rate = out["smoothing"]["alpha"], out["max_rate"]
    safe = min(max(out["offset"], out["min"]), out["max"])
    last, prev, t0, commands = safe, None, None, []
    for target, t in zip(targets, times):
        c = last
        if t0 is not None and t >= t0 + safe_after:
            step = rate * (t - t0 - safe_after)
            c = min(last + step, safe) if last < safe else max(last - step, safe)
        x = out["scale"] * target[out["slot"]] + out["offset"]
        y = x if prev is None else a * x + (1 - a) * prev
        prev = y
        dt = 0.0 if t0 is None else t - t0
        y = min(max(y, c - rate * dt), c + rate * dt)
        last = min(max(y, out["min"]), out["max"])
        commands.append(last)
        t0 = t
    return np.array(commands)


def test_commands_follow_the_formulas(tmp_path):
    data = good_profile()
    path = tmp_path / "p.json"
    path.write_text(json.dumps(data))
    profile = quil_linear.Profile.load(path)
    readings, times = session()
    hand = quil_linear.Hand(HAND, profile=profile)
    commands = hand.map(readings, times=times)
    assert commands.shape == (len(readings), 2)
    assert hand.output_names == ("index", "thumb")
    targets = quil_linear.Hand(HAND).map(readings)
    assert same_bits(commands[:, 0], reference(targets, times, data["outputs"][0], 0.02, 0.1))
    assert np.isfinite(commands).all()
    assert hand.counters["samples"] == len(readings) and hand.counters["limited"] > 0
    # The watchdog: held first, then toward safe, never past it; it changes nothing.
    before = hand.state
    held, stale = hand.tick(times[-1] + 0.05)
    assert stale and same_bits(held, commands[-1])
    far, _ = hand.tick(times[-1] + 100.0)
    assert far[0] == 3.0 and far[1] == -1.0
    assert hand.state == before


def test_without_a_profile_nothing_changes():
    readings, times = session(300)
    assert same_bits(quil_linear.Hand(HAND).map(readings, times=times), quil_linear.Hand(HAND).map(readings))
    hand = quil_linear.Hand(HAND)
    assert hand.output_names == hand.slot_roles and hand.profile is None
    with pytest.raises(ValueError, match="profile"):
        hand.tick(1.0)


def test_memory_carries_across_states_copies_and_pickles():
    readings, times = session(800)
    profile = quil_linear.Profile.from_dict(good_profile())
    whole = quil_linear.Hand(HAND, profile=profile).map(readings, times=times)
    hand = quil_linear.Hand(HAND, profile=profile)
    hand.map(readings[:333], times=times[:333])
    resumed = quil_linear.Hand(HAND, profile=profile)
    resumed.restore(hand.state)
    for twin in (resumed, copy.copy(hand), pickle.loads(pickle.dumps(hand))):
        assert same_bits(twin.map(readings[333:], times=times[333:]), whole[333:])
    single = quil_linear.Hand(HAND, profile=profile)  # one sample at a time gives the batch's rows
    assert same_bits(np.array([single.map(r, times=t) for r, t in zip(readings, times)]), whole)
    with pytest.raises(ValueError, match="profile"):
        quil_linear.Hand(HAND).restore(hand.state)


def spoil(edit):
    data = good_profile()
    edit(data)
    return data


FAULTS = [
    ("missing hand", lambda d: d.pop("hand"), "hand is missing"),
    ("unknown field", lambda d: d.update(colour="red"), "colour"),
    ("unknown output field", lambda d: d["outputs"][0].update(gain=2), r"outputs\[0\]\.gain"),
    ("missing slot", lambda d: d["outputs"][1].pop("slot"), r"outputs\[1\]\.slot is missing"),
    ("unknown slot", lambda d: d["outputs"][1].update(slot=24), r"outputs\[1\]\.slot"),
    ("slot not a number", lambda d: d["outputs"][0].update(slot="index"), r"outputs\[0\]\.slot"),
    ("min > max", lambda d: d["outputs"][0].update(min=50.0), r"outputs\[0\]\.min"),
    ("safe outside", lambda d: d["outputs"][1].update(safe=5.0), r"outputs\[1\]\.safe"),
    ("a string for a number", lambda d: d["outputs"][0].update(scale="2"), r"outputs\[0\]\.scale"),
    ("unknown smoothing", lambda d: d["outputs"][0].update(smoothing={"kind": "kalman"}), r"smoothing\.kind"),
    ("ema without alpha", lambda d: d["outputs"][0].update(smoothing={"kind": "ema"}), r"smoothing\.alpha is missing"),
    ("alpha above 1", lambda d: d["outputs"][0]["smoothing"].update(alpha=1.5), r"smoothing\.alpha"),
    ("negative rate", lambda d: d["outputs"][0].update(max_rate=-1), r"outputs\[0\]\.max_rate"),
    ("negative hold", lambda d: d.update(hold_after=-0.1), "hold_after"),
    ("unknown hand", lambda d: d.update(hand="NO_SUCH_HAND"), "hand is not a hand"),
    ("duplicate name", lambda d: d["outputs"][1].update(name="index"), r"outputs\[1\]\.name"),
    # JSON that is not a profile, given as the file's text.
    ("NaN", '{"hand": "RUIYAN_RY_H15", "hold_after": NaN, "outputs": []}', "NaN"),
    ("overflow", '{"hand": "RUIYAN_RY_H15", "hold_after": 1e999, "outputs": []}', "hold_after"),
    ("twice", '{"hand": "RUIYAN_RY_H15", "hand": "CHOHO_Hand", "outputs": []}', "twice"),
    ("not JSON", '{"hand": "RUIYAN_RY_H15", "outputs": [}', "not JSON"),
]


@pytest.mark.parametrize("what, edit, message", FAULTS, ids=[f[0] for f in FAULTS])
def test_each_fault_is_refused_naming_file_and_field(tmp_path, what, edit, message):
    path = tmp_path / "bad.json"
    path.write_text(edit if isinstance(edit, str) else json.dumps(spoil(edit)))
    with pytest.raises(ValueError, match=message) as e:
        quil_linear.Profile.load(path)
    assert str(path) in str(e.value)


def test_a_slot_may_be_named_by_its_role():
    roles = quil_linear.Hand(HAND).slot_roles
    unique = next(i for i, r in enumerate(roles) if roles.count(r) == 1)
    shared = next(r for r in roles if roles.count(r) > 1)
    by_role = good_profile()
    by_role["outputs"][0]["slot"] = roles[unique]
    by_number = good_profile()
    by_number["outputs"][0]["slot"] = unique
    readings, times = session(200)
    a = quil_linear.Hand(HAND, profile=quil_linear.Profile.from_dict(by_role)).map(readings, times=times)
    b = quil_linear.Hand(HAND, profile=quil_linear.Profile.from_dict(by_number)).map(readings, times=times)
    assert same_bits(a, b)
    by_role["outputs"][0]["slot"] = shared
    with pytest.raises(ValueError, match=r"outputs\[0\]\.slot .* names \d slots"):
        quil_linear.Profile.from_dict(by_role)


@pytest.mark.parametrize("call, message", [
    (lambda p: quil_linear.Hand("CHOHO_Hand", profile=p), "another hand"),
    (lambda p: quil_linear.Hand(HAND, profile=p).map(np.zeros((3, 12))), "times"),
    (lambda p: quil_linear.Hand(HAND, profile=p).map(np.zeros((3, 12)), times=[0.0, 1.0]), "times"),
])
def test_a_profile_is_refused_where_it_cannot_work(call, message):
    with pytest.raises(ValueError, match=message):
        call(quil_linear.Profile.from_dict(good_profile()))


@pytest.mark.parametrize("path", PROFILES, ids=[p.stem for p in PROFILES])
def test_the_example_profiles_load_and_stay_in_range(path):
    profile = quil_linear.Profile.load(path)
    assert profile.comment
    readings, times = session(600)
    commands = quil_linear.Hand(profile.hand, profile=profile).map(readings, times=times)
    lo = np.array([o["min"] for o in profile.outputs])
    hi = np.array([o["max"] for o in profile.outputs])
    assert ((commands >= lo) & (commands <= hi)).all()
    assert not math.isnan(commands.sum())
