#!/usr/bin/env python3
"""02: two gloves, left and right, each driving its own hand of the same model on its own
thread. Each quil_linear.Hand keeps its own memory (here: the pinch latches of RUIYAN_RY_H15),
so the two never disturb each other, and a dropped glove channel is held, not read as a fist.

  python examples/02_two_gloves.py
"""
import math
import threading

import numpy as np

import quil_linear

SAMPLES = 1000  # 10 s at 100 Hz
HAND = "RUIYAN_RY_H15"


def glove_session(left):
    """One glove's session: the thumb meets the index (left) or the middle finger (right) and
    lets go, every two seconds; the left glove's index channel drops out for a moment."""
    session = np.empty((SAMPLES, 12))
    for k in range(SAMPLES):
        closing = 0.5 - 0.5 * math.cos(k * 3.14159265358979 / 100.0)
        x = [60 * closing, 40 * closing, 10 * closing, 5, 0, 0, 5, 0, 0, 5, 0, 5]
        x[3 if left else 6] = 62 * closing
        if left and 300 <= k < 310:
            x[3] = math.nan
        session[k] = x
    return session


class Glove:
    def __init__(self, side):
        self.side = side
        self.session = glove_session(side == "left")
        self.targets = []


def drive(glove):
    # In a real host this loop runs at the glove's rate and sends each result to the robot.
    hand = quil_linear.Hand(HAND, dropout="hold")
    for readings in glove.session:
        glove.targets.append(hand.map(readings))


def main():
    left, right = Glove("left"), Glove("right")
    threads = [threading.Thread(target=drive, args=(g,)) for g in (left, right)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()

    roles = quil_linear.Hand(HAND).slot_roles
    for g in (left, right):
        print("%s glove, %d samples; at the deepest pinch (sample 100):" % (g.side, len(g.targets)))
        for slot in (1, 2, 6, 10):
            print("  %2d %-20s %8.2f" % (slot, roles[slot], g.targets[100][slot]))
    # During the dropout the held index reading keeps the left hand in its pinch; passed on as
    # it is, the NaN would act as a fully bent index.
    passed = quil_linear.Hand(HAND, dropout="pass").map(left.session)  # the whole session in one call
    print("left index at sample 305, channel dropped: held %.2f, passed %.2f" % (left.targets[305][6], passed[305][6]))


if __name__ == "__main__":
    main()
