"""A Hand's memory across calls, copies, pickles, threads, and what it refuses."""
import copy
import pickle
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import quil_linear
from conftest import HANDS, SOME_HANDS, STATEFUL, memory_matters_at, pinch_walk, random_readings, same_bits

SESSION = pinch_walk(600, seed=3)


@pytest.mark.parametrize("name", SOME_HANDS)
def test_batch_chunks_and_single_samples_agree(name):
    whole = quil_linear.Hand(name).map(SESSION)
    singles = quil_linear.Hand(name)
    assert same_bits(np.array([singles.map(s) for s in SESSION]), whole)
    chunked = quil_linear.Hand(name)
    parts = [chunked.map(SESSION[a:b]) for a, b in [(0, 1), (1, 250), (250, 250), (250, 600)]]
    assert same_bits(np.concatenate(parts), whole)


@pytest.mark.parametrize("name", STATEFUL)
def test_memory_travels_with_state_copy_and_pickle(name):
    split = memory_matters_at(name, SESSION)
    whole = quil_linear.Hand(name).map(SESSION)
    hand = quil_linear.Hand(name)
    hand.map(SESSION[:split])
    restored = quil_linear.Hand(name)
    restored.restore(bytearray(hand.state))
    carried = [copy.copy(hand), copy.deepcopy(hand), pickle.loads(pickle.dumps(hand)), restored]
    assert same_bits(hand.map(SESSION[split:]), whole[split:])  # the original goes on unaffected
    for twin in carried:
        assert same_bits(twin.map(SESSION[split:]), whole[split:])
    for twin in carried:
        assert twin.memory == hand.memory
    hand.reset()
    assert hand.memory == quil_linear.Hand(name).memory
    assert same_bits(hand.map(SESSION), whole)


def test_memory_shows_what_the_state_carries():
    hand = quil_linear.Hand("RUIYAN_RY_H15", dropout="hold")
    assert hand.memory == {"pinch_latches": (False,) * 4, "thumb_references": (0.0, 0.0),
                           "held_readings": (0.0,) * 12, "dropout": "hold"}
    latched = None
    for sample in pinch_walk(3000, seed=12):
        hand.map(sample)
        if any(hand.memory["pinch_latches"]):
            latched = hand.memory
            break
    assert latched is not None and not any(latched["pinch_latches"][2:])
    resumed = quil_linear.Hand("RUIYAN_RY_H15")
    resumed.restore(hand.state)
    assert resumed.memory == latched and latched["held_readings"] == tuple(sample)


def test_suggest_names_the_closest_hands():
    assert quil_linear.suggest("RY_H15", 1) == ["RUIYAN_RY_H15"]
    with pytest.warns(DeprecationWarning):
        assert quil_linear.closest_hands("RY_H15", 1) == ["RUIYAN_RY_H15"]


def test_pickled_hand_carries_on_in_another_process(tmp_path):
    name = STATEFUL[0]
    split = memory_matters_at(name, SESSION)
    whole = quil_linear.Hand(name, dropout="hold").map(SESSION)
    hand = quil_linear.Hand(name, dropout="hold")
    hand.map(SESSION[:split])
    (tmp_path / "hand.pickle").write_bytes(pickle.dumps((hand, SESSION[split:])))
    code = ("import pickle, sys, numpy as np; hand, rest = pickle.load(open(sys.argv[1], 'rb'));"
            "assert hand.dropout == 'hold'; np.save(sys.argv[2], hand.map(rest))")
    subprocess.run([sys.executable, "-c", code, str(tmp_path / "hand.pickle"), str(tmp_path / "rest.npy")], check=True)
    assert same_bits(np.load(tmp_path / "rest.npy"), whole[split:])


def test_threads_with_own_hands_match_one_thread():
    jobs = [(h.name, seed) for h in HANDS for seed in (1, 2)]
    sessions = {job: pinch_walk(2000, seed=job[1]) for job in jobs}
    expected = {job: quil_linear.Hand(job[0]).map(sessions[job]) for job in jobs}
    got = {}

    def run(job_list, one_at_a_time):
        for job in job_list:
            hand = quil_linear.Hand(job[0])
            s = sessions[job]
            got[job] = np.array([hand.map(x) for x in s]) if one_at_a_time else hand.map(s)

    threads = [threading.Thread(target=run, args=(jobs[i::4], i % 2 == 0)) for i in range(4)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert all(same_bits(got[job], expected[job]) for job in jobs)


def test_batch_lets_other_threads_run():
    # While one thread maps a long batch, this one must keep running: with the GIL held it
    # would stand still for the whole batch.
    readings = random_readings(1_500_000, seed=8)
    span = {}

    def batch():
        span["start"] = time.perf_counter()
        quil_linear.Hand("QUIL_linear_AA").map(readings)
        span["end"] = time.perf_counter()

    t = threading.Thread(target=batch)
    ticks = []
    t.start()
    while t.is_alive():
        ticks.append(time.perf_counter())
    t.join()
    inside = [span["start"]] + [x for x in ticks if span["start"] < x < span["end"]] + [span["end"]]
    assert max(np.diff(inside)) < 0.5 * (span["end"] - span["start"])


def test_threads_sharing_one_hand_are_serialised():
    hand = quil_linear.Hand("QUIL_linear_AD")  # stateless: any order gives the same rows
    expected = quil_linear.Hand("QUIL_linear_AD").map(SESSION)
    results = []
    threads = [threading.Thread(target=lambda: results.extend([hand.map(SESSION) for _ in range(20)] + [
        np.array([hand.map(x) for x in SESSION])])) for _ in range(4)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert len(results) == 84 and all(same_bits(r, expected) for r in results)


# Readings in any real dtype and layout; integers, so that every dtype holds them exactly.
INTS = np.random.default_rng(4).integers(-20, 121, (50, 12))
LAYOUTS = {
    "float32": lambda: INTS.astype(np.float32),
    "int16": lambda: INTS.astype(np.int16),
    "uint8": lambda: (INTS + 20).astype(np.uint8),
    "float16": lambda: INTS.astype(np.float16),
    "big-endian": lambda: INTS.astype(">f8"),
    "longdouble": lambda: INTS.astype(np.longdouble),
    "Fortran order": lambda: np.asfortranarray(INTS, dtype=np.float64),
    "every other column": lambda: np.repeat(INTS.astype(np.float64), 2, axis=1)[:, ::2],
    "unaligned": lambda: np.frombuffer(b"\0" + INTS.astype(np.float64).tobytes(), np.float64, offset=1).reshape(50, 12),
    "list of lists": lambda: INTS.tolist(),
}


@pytest.mark.parametrize("layout", sorted(LAYOUTS))
def test_any_real_dtype_and_layout(layout):
    readings = LAYOUTS[layout]()
    expected = quil_linear.Hand("PICO_PXRHand").map(np.array(readings, dtype=np.float64))
    assert same_bits(quil_linear.Hand("PICO_PXRHand").map(readings), expected)
    # PICO_PXRHand keeps no state, so one sample alone gives its row of the batch.
    assert same_bits(quil_linear.Hand("PICO_PXRHand").map(np.asarray(readings)[7]), expected[7])


@pytest.mark.parametrize("readings, error", [
    (np.zeros(11), ValueError),
    (np.zeros(13), ValueError),
    (np.zeros((4, 11)), ValueError),
    (np.zeros((12, 1)), ValueError),
    (np.zeros((2, 3, 12)), ValueError),
    (np.float64(3.0), ValueError),
    ([], ValueError),
    ([[1.0] * 12, [1.0] * 11], ValueError),
    (np.zeros(12, dtype=complex), TypeError),
    (np.zeros(12, dtype=bool), TypeError),
    (["1"] * 12, TypeError),
    ([None] * 12, TypeError),
    (np.zeros(12, dtype="datetime64[s]"), TypeError),
])
def test_bad_readings_are_refused(readings, error):
    with pytest.raises(error, match="readings|shape|sequence"):
        quil_linear.Hand("CHOHO_Hand").map(readings)


@pytest.mark.parametrize("name, error, match", [
    ("RY_H15", ValueError, "closest: RUIYAN_RY_H15"),
    ("no such hand", ValueError, 'unknown hand "no such hand"'),
    ("", ValueError, "unknown hand"),
    ("CHOHO_Hand\0junk", ValueError, "NUL"),
    (15, TypeError, ""),
])
def test_bad_names_are_refused(name, error, match):
    with pytest.raises(error, match=match):
        quil_linear.Hand(name)


def test_properties_and_repr_follow_the_catalogue():
    for info in HANDS:
        hand = quil_linear.Hand(info.name.lower())
        assert (hand.name, hand.version, hand.keeps_state, hand.slot_roles) == (
            info.name, info.version, info.keeps_state, info.slot_roles)
        assert all(s in repr(hand) for s in (info.name, info.version, "dropout='pass'"))


def test_dropout_policy():
    dropped = SESSION.copy()
    dropped[100:120, 3] = np.nan
    held = dropped.copy()
    held[100:120, 3] = SESSION[99, 3]
    assert quil_linear.DROPOUTS == ("pass", "hold")
    hand = quil_linear.Hand(STATEFUL[0], dropout="hold")
    assert same_bits(hand.map(dropped), quil_linear.Hand(STATEFUL[0]).map(held))
    assert hand.memory["held_readings"][3] == SESSION[-1, 3] and hand.memory["dropout"] == "hold"
    hand.dropout = "pass"
    assert hand.dropout == "pass" and "dropout='pass'" in repr(hand)
    with pytest.raises(ValueError, match="hold"):
        hand.dropout = "drop"
    with pytest.raises(ValueError, match="hold"):
        quil_linear.Hand("CHOHO_Hand", dropout="HOLD")


@pytest.mark.parametrize("state, error, match", [
    (quil_linear.Hand("RUIYAN_RY_H15").state, ValueError, "it is of RUIYAN_RY_H15, this hand is CHOHO_Hand"),
    (quil_linear.Hand("CHOHO_Hand").state[:-1], ValueError, "truncated"),
    (quil_linear.Hand("CHOHO_Hand").state[:100] + b"\xff" + quil_linear.Hand("CHOHO_Hand").state[101:],
     ValueError, "damaged"),
    (b"not a state", ValueError, "not a saved hand state"),
    ("a string", TypeError, "bytes"),
])
def test_bad_states_are_refused_and_leave_the_hand_alone(state, error, match):
    hand = quil_linear.Hand("CHOHO_Hand", dropout="hold")
    hand.map(SESSION[:200])
    before = hand.state
    with pytest.raises(error, match=match):
        hand.restore(state)
    assert hand.state == before


def test_targets_into_callers_array():
    expected = quil_linear.Hand("CHOHO_Hand").map(SESSION)
    out = np.full((600, 24), np.nan)
    hand = quil_linear.Hand("CHOHO_Hand")
    hand.map(SESSION[:1], out=out[:1])
    hand.map(SESSION[1:], out=out[1:])
    assert same_bits(out, expected)
    # Readings that live in the target array itself are read before they are overwritten.
    shared = np.zeros((600, 24))
    shared.reshape(-1)[:600 * 12] = SESSION.reshape(-1)
    readings = shared.reshape(-1)[:600 * 12].reshape(600, 12)
    assert quil_linear.Hand("CHOHO_Hand").map(readings, out=shared) is shared
    assert same_bits(shared, expected)


@pytest.mark.parametrize("out, error", [
    (np.zeros((600, 24), np.float32), TypeError),
    (np.zeros((600, 24), ">f8"), TypeError),
    ([[0.0] * 24] * 600, TypeError),
    (np.zeros((599, 24)), ValueError),
    (np.zeros(24), ValueError),
    (np.zeros((600, 48))[:, ::2], ValueError),
    (np.broadcast_to(np.zeros(24), (600, 24)), ValueError),
])
def test_bad_target_arrays_are_refused(out, error):
    with pytest.raises(error, match="out must"):
        quil_linear.Hand("CHOHO_Hand").map(SESSION, out=out)
