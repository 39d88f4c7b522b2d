#!/usr/bin/env python3
"""01: open a hand by name, map a few glove samples, and print the targets with the role of each
slot.

  python examples/01_one_hand.py [HAND]          HAND defaults to INSPIRE_ROBOTS_RH56DFX
"""
import sys

import quil_linear

# Glove readings x0..x11, as the glove sends them.
SAMPLES = [
    ("open hand", [0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]),
    ("fist", [40, 30, 20, 90, 5, 0, 90, 0, 0, 90, 0, 90]),
    ("index pinch", [35, 40, 30, 55, 0, 0, 5, 0, 0, 5, 0, 5]),
]


def main():
    name = sys.argv[1] if len(sys.argv) > 1 else "INSPIRE_ROBOTS_RH56DFX"
    try:
        hand = quil_linear.Hand(name)
    except ValueError:
        print("unknown hand %s; closest: %s" % (name, " ".join(quil_linear.suggest(name, 3))), file=sys.stderr)
        return 1
    print("%s %s (library %s)" % (hand.name, hand.version, quil_linear.__version__))

    for pose, readings in SAMPLES:
        targets = hand.map(readings)  # one sample: 12 readings in, 24 targets out
        print("\n%s:" % pose)
        for slot, role in enumerate(hand.slot_roles):
            if role != "unused":
                print("  %2d %-22s %8.2f" % (slot, role, targets[slot]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
