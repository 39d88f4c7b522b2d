#!/usr/bin/env python3
"""04: a session recorded in two parts: map the first part, save the hand's state, close the
hand (or end the process), then reopen it, load the state and carry on. The second part comes
out exactly as if the session had never stopped.

  python examples/04_resume.py [STATE_FILE]      STATE_FILE defaults to hand.state in the current directory

Hand.state is the same bytes quil_hand_save_state writes, so a state saved here resumes in C
and the other way round; pickle and copy.copy carry it too.
"""
import math
import sys

import numpy as np

import quil_linear

HAND = "RUIYAN_RY_H15"  # a hand that remembers a closed pinch
SAMPLES = 400


def glove_sample(k):
    """A glove closing a thumb-to-index pinch and opening again, twice."""
    closing = 0.5 - 0.5 * math.cos(k * 3.14159265358979 / 100.0)
    return [p * closing for p in (60, 40, 10, 62, 0, 0, 5, 0, 0, 5, 0, 5)]


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "hand.state"
    session = np.array([glove_sample(k) for k in range(SAMPLES)])
    half = SAMPLES // 2

    # The whole session in one go, for comparison.
    uninterrupted = quil_linear.Hand(HAND).map(session)

    # First part, then save and close.
    hand = quil_linear.Hand(HAND)
    first = hand.map(session[:half])
    try:
        with open(path, "wb") as f:
            f.write(hand.state)
    except OSError:
        print("cannot write %s" % path, file=sys.stderr)
        return 1
    del hand

    # Later: reopen, load, carry on.
    hand = quil_linear.Hand(HAND)
    try:
        with open(path, "rb") as f:
            hand.restore(f.read())
    except (OSError, ValueError) as e:  # a missing file, or a state of another hand or damaged
        print("%s: %s" % (path, e), file=sys.stderr)
        return 1
    second = hand.map(session[half:])

    same = np.concatenate([first, second]).tobytes() == uninterrupted.tobytes()
    print("%s: saved after sample %d to %s, resumed: %s" % (
        HAND, half, path, "identical to the uninterrupted session" if same else "DIFFERENT"))
    return 0 if same else 1


if __name__ == "__main__":
    sys.exit(main())
