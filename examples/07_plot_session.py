#!/usr/bin/env python3
"""Map a recorded glove session onto a robot hand and plot what each finger of the hand does.

  python examples/07_plot_session.py [--hand RUIYAN_RY_H15] [--session data/sample_session.csv]
                                   [--time-unit s|ms|us]
                                   [--out out/sample_session.RUIYAN_RY_H15.python.png]

The session is any file quil-retarget reads, read by quil_linear.read_session with the tool's
rules (data/sample_session.csv: time_s,x0..x11; open hand, slow fist, index pinch, middle
pinch, open); its time column is drawn in seconds from the first sample. The plot has one panel for the glove and one per finger of the
robot hand; each line is one output slot, named by the role the hand's catalogue gives it.
Slots that only hold a constant (roles "unused" and "terminator") are left out.
"""
import argparse
import os

import matplotlib

matplotlib.use("Agg")  # files only, no display needed
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

import quil_linear  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FINGERS = ("thumb", "index", "middle", "ring", "little")
CONSTANT_ROLES = ("unused", "terminator")


def slots_by_finger(roles):
    """{group: [slot, ...]} in thumb-to-little order: a role "<finger>_<motion>" goes to its
    finger, any other role (a gesture code, or one not yet named) to "other"."""
    groups = {}
    for slot, role in enumerate(roles):
        if role in CONSTANT_ROLES:
            continue
        finger = role.split("_", 1)[0]
        groups.setdefault(finger if finger in FINGERS else "other", []).append(slot)
    order = FINGERS + ("other",)
    return {g: groups[g] for g in order if g in groups}


def plot(time_s, readings, targets, hand, title, path):
    groups = slots_by_finger(hand.slot_roles)
    fig, axes = plt.subplots(len(groups) + 1, 1, sharex=True, figsize=(12, 1.2 + 2.0 * (len(groups) + 1)),
                             constrained_layout=True, squeeze=False)
    axes = axes[:, 0]
    # Twelve readings need twelve colours: the default cycle has ten.
    axes[0].set_prop_cycle(color=[plt.get_cmap("tab20")(i) for i in range(0, 20, 2)] + ["black", "0.55"])
    axes[0].plot(time_s, readings, linewidth=0.9)
    axes[0].set_ylabel("glove (deg)")
    axes[0].legend(["x%d %s" % (r.index, r.name) for r in quil_linear.readings()], ncol=2, fontsize=7,
                   loc="upper left", bbox_to_anchor=(1.01, 1.0))
    for ax, (group, slots) in zip(axes[1:], groups.items()):
        for slot in slots:
            ax.plot(time_s, targets[:, slot], linewidth=1.0, label="%d %s" % (slot, hand.slot_roles[slot]))
        ax.set_ylabel(group)
        ax.legend(fontsize=7, loc="upper left", bbox_to_anchor=(1.01, 1.0), ncol=1 + len(slots) // 9)
    axes[-1].set_xlabel("time (s)")
    fig.suptitle(title)
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    fig.savefig(path, dpi=90)
    plt.close(fig)


if __name__ == "__main__":
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--hand", default="RUIYAN_RY_H15")
    ap.add_argument("--session", default=os.path.join(ROOT, "data", "sample_session.csv"))
    ap.add_argument("--time-unit", choices=["s", "ms", "us"],
                    help="what the session's time column is in (default: as its name says, else detected)")
    ap.add_argument("--out", help="PNG to write (default out/<session>.<hand>.python.png)")
    args = ap.parse_args()

    try:
        session = quil_linear.read_session(args.session, time_unit=args.time_unit)
    except (quil_linear.SessionError, OSError) as e:  # the place of the fault: file:line:column
        raise SystemExit(str(e))
    for note in session.notes:
        print("note:", note)
    readings = session.readings
    # Without a time column the samples are drawn 10 ms apart.
    time_s = session.times - session.times[0] if session.times is not None else np.arange(len(readings)) / 100.0
    try:
        hand = quil_linear.Hand(args.hand)
    except ValueError as e:  # an unknown name, answered with the closest ones
        raise SystemExit(str(e))
    targets = hand.map(readings)  # every sample in order, through the hand's pinch memory

    stem = os.path.splitext(os.path.basename(args.session))[0]
    out = args.out or os.path.join(ROOT, "out", "%s.%s.python.png" % (stem, hand.name))
    title = "%s (%s) driven by %s" % (hand.name, hand.version, os.path.basename(args.session))
    plot(time_s, readings, targets, hand, title, out)
    print("%d samples through %s -> %s" % (len(readings), hand.name, out))
