#!/usr/bin/env python3
"""06: wire a hand to its driver: two outputs in the driver's units, smoothed and rate-limited,
fed at 100 Hz, then a glove that goes silent: the watchdog holds, then eases to safe.

  python examples/06_wired_hand.py

The profile here is a dict; a JSON file of the same shape loads with Profile.load(path), and
names the file and the field of every fault.
"""
import quil_linear

HAND = "LINKERBOT_LinkerHand_O6"

# The driver takes radians, flexion positive; the targets are degrees, flexion negative.
INDEX = {
    "name": "index", "slot": 6, "scale": -0.017453292519943295, "offset": 0.0, "min": 0.0, "max": 1.6,
    "smoothing": {"kind": "one_euro", "min_cutoff": 1.5, "beta": 0.3, "d_cutoff": 1.0},
    "max_rate": 4.0,  # rad/s: a re-engage never slams the finger
}
PROFILE = {
    "hand": HAND,
    "hold_after": 0.05,  # stale after 50 ms without a sample
    "safe_after": 0.2,  # back to safe (open) from 200 ms
    "outputs": [INDEX, dict(INDEX, name="middle", slot=10)],
}


def main():
    try:
        hand = quil_linear.Hand(HAND, profile=quil_linear.Profile.from_dict(PROFILE))
    except ValueError as e:  # the field at fault and what is wrong with it
        raise SystemExit(str(e))

    print("%8s %8s %8s" % ("t", *hand.output_names))
    for i in range(51):  # half a second closing into a fist
        t, bend = 0.01 * i, 90.0 * i / 50
        commands = hand.map([0, 0, 0, bend, 0, bend, bend, 0, bend, bend, 0, bend], times=t)
        if i % 10 == 0:
            print("%8.2f %8.4f %8.4f" % (t, *commands))
    t = 0.55
    while t < 1.2:  # the glove goes silent
        commands, stale = hand.tick(t)
        print("%8.2f %8.4f %8.4f%s" % (t, *commands, "  (watchdog: stale)" if stale else ""))
        t += 0.1
    c = hand.counters
    print("samples %d, rate-limited %d, stale ticks %d" % (c["samples"], c["limited"], c["stale"]))


if __name__ == "__main__":
    main()
