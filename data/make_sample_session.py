#!/usr/bin/env python3
"""Writes data/sample_session.csv: a short synthetic glove session for trying quil-retarget.

Twenty seconds at 100 Hz (2000 samples): open hand, a slow fist, open, a pinch of thumb and
index finger, open, a pinch of thumb and middle finger, open. Columns: time_s, then the
twelve glove readings x0..x11 in degrees, two decimals, as a glove recorder writes them.

The readings are in the order and unit every hand expects them: see the readings table in the
README, quil_linear.readings() or quil-retarget --help (x0 thumb_base ... x11 little_bend).

Poses change with a smooth (cosine) ease; on top come a slow drift, a faint physiological
tremor and sensor noise, all from a fixed seed, so the file is the same on every run.

  python3 data/make_sample_session.py [--out data/sample_session.csv] [--seconds 20] [--rate 100]

Standard library only.
"""
import argparse
import math
import random

#          x0    x1    x2    x3    x4    x5    x6    x7    x8    x9   x10   x11
OPEN = [   8.0,  6.0,  5.0,  4.0, 14.0,  5.0,  3.0, 10.0,  4.0,  4.0, 12.0,  5.0]
FIST = [  48.0, 52.0, 62.0, 86.0,  3.0, 96.0, 88.0,  2.0, 98.0, 92.0,  3.0, 90.0]
INDEX_PINCH = [
          42.0, 36.0, 30.0, 46.0,  6.0, 52.0, 12.0,  8.0, 14.0, 10.0, 10.0, 10.0]
MIDDLE_PINCH = [
          56.0, 42.0, 36.0, 16.0,  4.0, 18.0, 50.0,  5.0, 56.0, 18.0,  9.0, 14.0]

# (start, end, pose at the end): between start and end the hand eases from the pose it has
# to the new one; after end it holds that pose until the next step starts.
SCRIPT = [
    (2.0, 6.0, FIST),           # slow fist
    (7.0, 8.5, OPEN),
    (9.5, 10.5, INDEX_PINCH),
    (12.0, 13.0, OPEN),
    (13.5, 14.5, MIDDLE_PINCH),
    (16.0, 17.0, OPEN),
]


def ease(u):
    """0 at u <= 0, 1 at u >= 1, smooth in between."""
    u = min(1.0, max(0.0, u))
    return 0.5 - 0.5 * math.cos(math.pi * u)


def pose_at(t):
    pose = OPEN
    for start, end, target in SCRIPT:
        if t < start:
            break
        w = ease((t - start) / (end - start))
        pose = [a + (b - a) * w for a, b in zip(pose, target)]
    return pose


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--out", default="data/sample_session.csv")
    ap.add_argument("--seconds", type=float, default=20.0)
    ap.add_argument("--rate", type=float, default=100.0, help="samples per second")
    ap.add_argument("--seed", type=int, default=7)
    args = ap.parse_args()

    rng = random.Random(args.seed)
    # Per reading: drift phase and rate, tremor phase.
    drift = [(rng.uniform(0, 2 * math.pi), rng.uniform(0.05, 0.2)) for _ in range(12)]
    tremor_phase = [rng.uniform(0, 2 * math.pi) for _ in range(12)]
    n = int(round(args.seconds * args.rate))
    with open(args.out, "w", newline="\n") as f:
        f.write("time_s," + ",".join("x%d" % i for i in range(12)) + "\n")
        for k in range(n):
            t = k / args.rate
            row = []
            for i, v in enumerate(pose_at(t)):
                phase, hz = drift[i]
                v += 0.6 * math.sin(2 * math.pi * hz * t + phase)           # slow drift
                v += 0.15 * math.sin(2 * math.pi * 9.0 * t + tremor_phase[i])  # tremor
                v += rng.gauss(0.0, 0.2)                                    # sensor noise
                row.append("%.2f" % v)
            f.write("%.2f," % t + ",".join(row) + "\n")


if __name__ == "__main__":
    main()
