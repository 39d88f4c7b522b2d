#!/usr/bin/env python3
"""Build a small training dataset for three robot hands from glove sessions, and plot one
episode's actions by name.

  python examples/09_dataset.py [--to robomimic|act|zarr] [--out out/dataset_demo]
                                [--hands RUIYAN_RY_H15,CHOHO_Hand,robotera_xhand1]

Four sessions are generated from data/sample_session.csv (the same gestures by gloves with
their own offsets, speeds and noise) into OUT/sessions; `python -m quil_linear.dataset` turns
them into one dataset per hand in OUT/<layout>, each session one episode, and `verify` reads
every dataset back and recomputes its actions. The plot, OUT/episode_0.png, reads episode 0 of
each hand's dataset as the training tool would and draws its actions, each line named by the
dataset's own action_names (slot and role); the glove readings of the episode are on top.
"""
import argparse
import json
import os
import subprocess
import sys

import matplotlib

matplotlib.use("Agg")  # files only, no display needed
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import quil_linear  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CONSTANT_ROLES = ("unused", "terminator")


def make_sessions(folder, count=4):
    """The sample session replayed by `count` gloves: time_s,x0..x11 CSVs."""
    os.makedirs(folder, exist_ok=True)
    base = np.loadtxt(os.path.join(ROOT, "data", "sample_session.csv"), delimiter=",", skiprows=1)
    rng = np.random.default_rng(3)
    paths = []
    for k in range(count):
        speed = rng.uniform(0.8, 1.25)
        t = np.arange(0.0, base[-1, 0] / speed, 0.01)
        readings = np.column_stack([np.interp(t * speed, base[:, 0], base[:, 1 + i]) for i in range(12)])
        readings += rng.uniform(-3, 3, 12) + rng.normal(0, 0.4, readings.shape)
        path = os.path.join(folder, "glove_%02d.csv" % k)
        np.savetxt(path, np.column_stack([t, readings]), delimiter=",", fmt="%.3f",
                   header="time_s," + ",".join("x%d" % i for i in range(12)), comments="")
        paths.append(path)
    return paths


def episode_0(layout, path):
    """(readings, actions, action_names, hand) of the first episode, read as the tool reads it."""
    if layout == "zarr":
        import zarr

        root = zarr.open(path, mode="r")
        end = root["meta/episode_ends"][0]
        return (root["data/glove_readings"][:end], root["data/action"][:end], root.attrs["action_names"],
                root.attrs["hand"])
    import h5py

    if layout == "act":
        with h5py.File(os.path.join(path, "episode_0.hdf5"), "r") as f:
            return (f["observations/glove_readings"][()], f["action"][()], [str(n) for n in f.attrs["action_names"]],
                    str(f.attrs["hand"]))
    with h5py.File(path, "r") as f:
        data = f["data"]
        demo = data["demo_0"]
        return (demo["obs/glove_readings"][()], demo["actions"][()], [str(n) for n in data.attrs["action_names"]],
                json.loads(data.attrs["env_args"])["env_name"])


def plot(episodes, path, fps):
    fig, axes = plt.subplots(len(episodes) + 1, 1, sharex=True, figsize=(12, 2.6 * (len(episodes) + 1)),
                             constrained_layout=True)
    readings = episodes[0][0]
    t = np.arange(len(readings)) / fps
    axes[0].set_prop_cycle(color=[plt.get_cmap("tab20")(i) for i in range(0, 20, 2)] + ["black", "0.55"])
    axes[0].plot(t, readings, linewidth=0.9)
    axes[0].set_ylabel("glove (deg)")
    axes[0].legend(["x%d %s" % (r.index, r.name) for r in quil_linear.readings()], ncol=2, fontsize=7,
                   loc="upper left", bbox_to_anchor=(1.01, 1.0))
    for ax, (_, actions, names, hand) in zip(axes[1:], episodes):
        # Slots that only hold a constant carry no motion worth a line.
        shown = [s for s, n in enumerate(names) if n not in CONSTANT_ROLES and np.ptp(actions[:, s]) > 0]
        ax.set_prop_cycle(color=[plt.get_cmap("tab20")(i) for i in range(20)])
        for s in shown:
            ax.plot(t, actions[:, s], linewidth=1.0, label="%d %s" % (s, names[s]))
        ax.set_ylabel("%s\naction" % hand, fontsize=8)
        ax.legend(fontsize=6, loc="upper left", bbox_to_anchor=(1.01, 1.0), ncol=1 + len(shown) // 12)
    axes[-1].set_xlabel("time (s), %g steps per second" % fps)
    fig.suptitle("Episode 0 of each hand's dataset: the actions by name")
    fig.savefig(path, dpi=80)
    plt.close(fig)


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--to", default="robomimic", choices=("robomimic", "act", "zarr"))
    ap.add_argument("--out", default=os.path.join(ROOT, "out", "dataset_demo"))
    ap.add_argument("--hands", default="RUIYAN_RY_H15,CHOHO_Hand,robotera_xhand1")
    args = ap.parse_args()

    sessions = make_sessions(os.path.join(args.out, "sessions"))
    datasets = os.path.join(args.out, args.to)
    fps = 50.0
    cmd = [sys.executable, "-m", "quil_linear.dataset", "--to", args.to, "--hands", args.hands, "--fps", str(fps),
           "--action", "next", "--workers", "2", "--overwrite", *sessions, "-o", datasets]
    subprocess.run(cmd, check=True)
    paths = sorted(os.path.join(datasets, n) for n in os.listdir(datasets))
    subprocess.run([sys.executable, "-m", "quil_linear.dataset", "verify", *paths], check=True)

    by_hand = {os.path.splitext(os.path.basename(p))[0]: p for p in paths}
    episodes = [episode_0(args.to, by_hand[h]) for h in sorted(by_hand)]
    png = os.path.join(args.out, "episode_0.png")
    plot(episodes, png, fps)
    print("plot: %s" % png)


if __name__ == "__main__":
    main()
