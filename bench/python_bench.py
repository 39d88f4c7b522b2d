#!/usr/bin/env python3
"""Samples per second of the Python package's batch map next to the C batch on a million samples.

  python bench/python_bench.py [--lib build/libquil_linear.so] [--model RUIYAN_RY_H15 | --all]
                               [--samples 1000000] [--repeat 5]

Both sides start from a fresh hand for every repetition and map the same readings: C as one
quil_hand_map_n call of build/libquil_linear.so (through ctypes; one call, so its cost is nil)
into a buffer allocated once; Python as `quil_linear.Hand(model).map(readings)`, which returns
a new (N, 24) array each time (the kernel's first touch of those 192 MB is part of its cost),
and as `.map(readings, out=buffer)` into a buffer allocated once, like C. The best of --repeat runs is reported, wall time and CPU
time of the process (what counts on a busy machine), with the ratio of Python to C; the aim
is a ratio of at most 1.3. A few thousand samples one at a time through Hand.map give the
per-call cost of the Python layer for live use.

Run it with the venv that scripts/test_python.sh makes: build/python-venv/bin/python.
"""
import argparse
import ctypes
import os
import sys
import time

import numpy as np

import quil_linear

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def session(samples, seed=1):
    """Twelve channels sweeping between open and bent at different slow rates, with noise, so
    the hands' pinch and fist rules all take their turns."""
    rng = np.random.default_rng(seed)
    t = np.arange(samples)[:, None] / 100.0
    sweep = 50.0 + 55.0 * np.sin(2 * np.pi * rng.uniform(0.05, 0.5, 12) * t + rng.uniform(0, 2 * np.pi, 12))
    return sweep + rng.normal(0.0, 2.0, (samples, 12))


def best_of(repeat, run):
    """Best wall and best CPU seconds of `repeat` calls of run(), which returns its own timing."""
    wall, cpu = [], []
    for _ in range(repeat):
        w, c = run()
        wall.append(w)
        cpu.append(c)
    return min(wall), min(cpu)


def timed(call):
    w0, c0 = time.perf_counter(), time.process_time()
    call()
    return time.perf_counter() - w0, time.process_time() - c0


def bench(lib, model, readings, repeat):
    n = len(readings)
    c_out = np.empty((n, 24))
    name = model.encode()

    def c_run():
        hand = lib.quil_hand_open(name)
        try:
            return timed(lambda: lib.quil_hand_map_n(hand, n, readings.ctypes.data, c_out.ctypes.data))
        finally:
            lib.quil_hand_close(hand)

    py_out = np.empty((n, 24))

    def py_run():
        hand = quil_linear.Hand(model)
        return timed(lambda: hand.map(readings))

    def py_into_run():
        hand = quil_linear.Hand(model)
        return timed(lambda: hand.map(readings, out=py_out))

    c_wall, c_cpu = best_of(repeat, c_run)
    py_wall, py_cpu = best_of(repeat, py_run)
    into_wall, _ = best_of(repeat, py_into_run)
    if not np.array_equal(py_out.view(np.uint64), c_out.view(np.uint64)):
        sys.exit("%s: Python and C results differ" % model)

    few = readings[:20000]
    hand = quil_linear.Hand(model)
    single, _ = timed(lambda: [hand.map(x) for x in few])
    print("%-25s C %5.2f M/s | Python %5.2f M/s, ratio %.2f (CPU %.2f) | out= %5.2f M/s, ratio %.2f | "
          "one at a time %.2f us" % (model, n / c_wall / 1e6, n / py_wall / 1e6, py_wall / c_wall, py_cpu / c_cpu,
                                     n / into_wall / 1e6, into_wall / c_wall, single / len(few) * 1e6))
    return py_wall / c_wall, into_wall / c_wall


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--lib", default=os.path.join(ROOT, "build", "libquil_linear.so"))
    ap.add_argument("--model", default="RUIYAN_RY_H15")
    ap.add_argument("--all", action="store_true", help="every hand of the catalogue")
    ap.add_argument("--samples", type=int, default=1_000_000)
    ap.add_argument("--repeat", type=int, default=5)
    args = ap.parse_args()

    lib = ctypes.CDLL(args.lib)
    lib.quil_hand_open.restype = ctypes.c_void_p
    lib.quil_hand_open.argtypes = [ctypes.c_char_p]
    lib.quil_hand_close.argtypes = [ctypes.c_void_p]
    lib.quil_hand_map_n.argtypes = [ctypes.c_void_p, ctypes.c_size_t, ctypes.c_void_p, ctypes.c_void_p]

    readings = session(args.samples)
    models = [h.name for h in quil_linear.hands()] if args.all else [args.model]
    print("quil_linear %s, %d samples, best of %d" % (quil_linear.__version__, args.samples, args.repeat))
    ratios = [bench(lib, m, readings, args.repeat) for m in models]
    if len(ratios) > 1:
        fresh, into = np.array(ratios).T
        print("Python / C wall time: new array median %.2f, worst %.2f; out= median %.2f, worst %.2f"
              % (np.median(fresh), fresh.max(), np.median(into), into.max()))


if __name__ == "__main__":
    main()
