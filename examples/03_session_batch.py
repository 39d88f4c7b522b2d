#!/usr/bin/env python3
"""03: a whole recorded session through one batch call: read a glove recording (CSV with a time
column and x0..x11), map every sample in order with one call, and write the targets as CSV.

  python examples/03_session_batch.py SESSION.csv [HAND] > targets.csv

quil_linear.read_session reads the file with quil-retarget's own rules (any separator, a
heading or none, .npy and .f64 too) and names the place of a fault as file:line:column.
"""
import sys
import time

import quil_linear


def main():
    if len(sys.argv) < 2:
        print("usage: %s SESSION.csv [HAND]" % sys.argv[0], file=sys.stderr)
        return 2
    hand_name = sys.argv[2] if len(sys.argv) > 2 else "LINKERBOT_LinkerHand_O6"
    try:
        session = quil_linear.read_session(sys.argv[1])
    except (quil_linear.SessionError, OSError) as e:
        print(e, file=sys.stderr)
        return 1
    try:
        hand = quil_linear.Hand(hand_name)
    except ValueError as e:  # an unknown name, answered with the closest ones
        print(e, file=sys.stderr)
        return 2

    start = time.perf_counter()
    targets = hand.map(session.readings)  # the whole session, (N, 12) -> (N, 24)
    took = time.perf_counter() - start

    out = sys.stdout
    out.write("time" + "".join("," + role for role in hand.slot_roles) + "\n")
    times = session.times if session.times is not None else [k / 100.0 for k in range(len(targets))]
    for t, row in zip(times, targets):
        out.write("%g" % t + "".join(",%.17g" % v for v in row) + "\n")
    print("%d samples through %s in one call, %.0f ns per sample"
          % (len(targets), hand_name, took * 1e9 / len(targets) if len(targets) else 0.0), file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main())
