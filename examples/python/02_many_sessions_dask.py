#!/usr/bin/env python3
"""Convert a folder of recorded glove sessions into robot hand targets in parallel with Dask.

  python examples/python/02_many_sessions_dask.py [SESSIONS_DIR] [OUT_DIR] [--hand RUIYAN_RY_H15]
                                                 [--workers 2] [--scheduler tcp://HOST:8786]

Every *.csv in SESSIONS_DIR (time_s,x0..x11, as data/sample_session.csv) is one session. Each
session is one task: a worker opens its own Hand, maps the whole session in order through it
(hands that keep state carry their pinch memory from sample to sample), and writes
OUT_DIR/<session>.npy with the (N, 24) targets and OUT_DIR/<session>.json with what was done.
Sessions are independent, so they spread over as many workers as there are.

Without --scheduler a LocalCluster of --workers processes runs on this machine, on the loopback
address only. To scale out, start a scheduler and workers on your machines (`dask scheduler`,
`dask worker tcp://HOST:8786`, each with quil_linear installed and the folders on a shared
file system) and pass --scheduler tcp://HOST:8786.

Without SESSIONS_DIR the example makes a few demo sessions from data/sample_session.csv in
out/dask_demo/sessions and converts them into out/dask_demo/targets.
"""
import argparse
import glob
import json
import os
import time
import warnings

import numpy as np

import quil_linear

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def convert_session(csv_path, out_dir, hand_name, dropout):
    """One session on one worker: its own Hand, every sample in order, targets and a record."""
    start = time.perf_counter()
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", UserWarning)  # a recording stopped before its first sample
        data = np.loadtxt(csv_path, delimiter=",", skiprows=1, ndmin=2).reshape(-1, 13)
    readings = data[:, 1:13]
    hand = quil_linear.Hand(hand_name, dropout=dropout)
    stem = os.path.splitext(os.path.basename(csv_path))[0]
    targets_path = os.path.join(out_dir, stem + ".npy")
    if len(readings):
        # Straight into the .npy file: a long session never needs a second copy in memory.
        targets = np.lib.format.open_memmap(targets_path, mode="w+", dtype=np.float64, shape=(len(readings), 24))
        hand.map(readings, out=targets)
        targets.flush()
        del targets
    else:
        np.save(targets_path, np.empty((0, 24)))
    record = {
        "session": os.path.abspath(csv_path),
        "targets": os.path.abspath(targets_path),
        "samples": len(readings),
        "seconds_recorded": float(data[-1, 0] - data[0, 0]) if len(data) else 0.0,
        "dropped_readings": int(np.count_nonzero(~np.isfinite(readings))),
        "hand": hand.name,
        "hand_version": hand.version,
        "slot_roles": list(hand.slot_roles),
        "dropout": hand.dropout,
        "library_version": quil_linear.__version__,
        # The hand's memory after the last sample: Hand.restore(bytes.fromhex(...)) carries on
        # from here if the session continues in another file.
        "final_state": hand.state.hex(),
        "convert_seconds": round(time.perf_counter() - start, 4),
        "worker_pid": os.getpid(),
    }
    with open(os.path.join(out_dir, stem + ".json"), "w") as f:
        json.dump(record, f, indent=1)
    return record


def make_demo_sessions(folder, count=6):
    """The sample session, replayed by `count` gloves with their own offsets, speeds and noise."""
    os.makedirs(folder, exist_ok=True)
    base = np.loadtxt(os.path.join(ROOT, "data", "sample_session.csv"), delimiter=",", skiprows=1)
    rng = np.random.default_rng(7)
    for k in range(count):
        speed = rng.uniform(0.7, 1.3)
        t = np.arange(0.0, base[-1, 0] / speed, 0.01)
        readings = np.column_stack([np.interp(t * speed, base[:, 0], base[:, 1 + i]) for i in range(12)])
        readings += rng.uniform(-4, 4, 12) + rng.normal(0, 0.5, readings.shape)
        np.savetxt(os.path.join(folder, "glove_%02d.csv" % k), np.column_stack([t, readings]), delimiter=",",
                   fmt="%.2f", header="time_s," + ",".join("x%d" % i for i in range(12)), comments="")


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("sessions", nargs="?", help="folder of session CSVs (default: demo sessions)")
    ap.add_argument("out", nargs="?", help="folder for the .npy targets and .json records")
    ap.add_argument("--hand", default="RUIYAN_RY_H15")
    ap.add_argument("--dropout", default="pass", choices=["pass", "hold"])
    ap.add_argument("--workers", type=int, default=2, help="local worker processes (without --scheduler)")
    ap.add_argument("--scheduler", help="address of a running Dask scheduler, e.g. tcp://10.0.0.5:8786")
    args = ap.parse_args()

    try:
        quil_linear.Hand(args.hand)  # an unknown name fails here, with suggestions, not on a worker
    except ValueError as e:
        raise SystemExit(str(e))
    sessions_dir = args.sessions or os.path.join(ROOT, "out", "dask_demo", "sessions")
    out_dir = args.out or os.path.join(os.path.dirname(os.path.abspath(sessions_dir)), "targets")
    if not args.sessions:
        make_demo_sessions(sessions_dir)
    files = sorted(glob.glob(os.path.join(sessions_dir, "*.csv")))
    if not files:
        raise SystemExit("no *.csv sessions in %s" % sessions_dir)
    os.makedirs(out_dir, exist_ok=True)

    from dask.distributed import Client, LocalCluster

    if args.scheduler:
        cluster, client = None, Client(args.scheduler)
    else:
        cluster = LocalCluster(n_workers=args.workers, threads_per_worker=1, host="127.0.0.1",
                               dashboard_address=None)
        client = Client(cluster)
    try:
        futures = client.map(convert_session, files, out_dir=out_dir, hand_name=args.hand, dropout=args.dropout,
                             pure=False)
        records = client.gather(futures)
    finally:
        client.close()
        if cluster is not None:
            cluster.close()

    for r in records:
        print("%-40s %7d samples -> %s (worker %d, %.3f s)"
              % (os.path.basename(r["session"]), r["samples"], r["targets"], r["worker_pid"], r["convert_seconds"]))
    print("%d sessions through %s into %s" % (len(records), args.hand, out_dir))


if __name__ == "__main__":
    main()
