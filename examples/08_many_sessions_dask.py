#!/usr/bin/env python3
"""Convert a folder of recorded glove sessions into robot hand targets in parallel with Dask.

  python examples/08_many_sessions_dask.py [SESSIONS_DIR] [OUT_DIR] [--hand RUIYAN_RY_H15]
                                          [--time-unit s|ms|us] [--workers 2]
                                          [--scheduler tcp://HOST:8786]

Every session file in SESSIONS_DIR (.csv, .tsv, .txt, .npy, .f64: whatever quil-retarget reads)
is one session, read by quil_linear.read_session with the tool's own rules. Each session is one
task: a worker opens its own Hand, maps the whole session in order through it (hands that keep
state carry their pinch memory from sample to sample), and writes OUT_DIR/<session>.npy with
the (N, 24) targets and OUT_DIR/<session>.json with what was done. Sessions are independent,
so they spread over as many workers as there are.

A session that cannot be read is reported by name with the reader's message (file:line:column)
and the others go on; its .json says it failed and no .npy of an earlier run is left beside it.
Other files in the folder are listed as skipped. The exit status is 1 when any session failed.

Without --scheduler a LocalCluster of --workers processes runs on this machine, on the loopback
address only. To scale out, start a scheduler and workers on your machines (`dask scheduler`,
`dask worker tcp://HOST:8786`, each with quil_linear installed and the folders on a shared
file system) and pass --scheduler tcp://HOST:8786.

Without SESSIONS_DIR the example makes a few demo sessions from data/sample_session.csv in
out/dask_demo/sessions and converts them into out/dask_demo/targets.
"""
import argparse
import json
import os
import sys
import time

import numpy as np

import quil_linear

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


SESSION_EXTENSIONS = (".csv", ".tsv", ".txt", ".npy", ".f64")


def convert_session(path, out_dir, stem, hand_name, dropout, time_unit):
    """One session on one worker: its own Hand, every sample in order, targets and a record.

    Never raises for a bad session: the record says what was wrong, so one bad file cannot stop
    the others."""
    start = time.perf_counter()
    targets_path = os.path.join(out_dir, stem + ".npy")
    record_path = os.path.join(out_dir, stem + ".json")
    record = {"session": os.path.abspath(path), "targets": os.path.abspath(targets_path), "worker_pid": os.getpid()}
    try:
        session = quil_linear.read_session(path, time_unit=time_unit)
    except (quil_linear.SessionError, OSError) as e:
        # No targets of an earlier run may stay beside a record of this one.
        if os.path.exists(targets_path):
            os.remove(targets_path)
        record.update(complete=False, error=str(e), targets=None)
        with open(record_path, "w") as f:
            json.dump(record, f, indent=1)
        return record
    readings = session.readings
    hand = quil_linear.Hand(hand_name, dropout=dropout)
    # Straight into the .npy file: a long session never needs a second copy in memory.
    targets = np.lib.format.open_memmap(targets_path, mode="w+", dtype=np.float64, shape=(len(readings), 24))
    hand.map(readings, out=targets)
    targets.flush()
    del targets
    times = session.times
    record.update({
        "complete": True,
        "error": None,
        "samples": len(readings),
        "format": session.format,
        "time_column": session.time_name,
        "time_unit": session.time_unit,
        "notes": session.notes,
        "seconds_recorded": float(times[-1] - times[0]) if times is not None else None,
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
    })
    with open(record_path, "w") as f:
        json.dump(record, f, indent=1)
    return record


def output_stems(files):
    """Each session's name for its outputs: its stem, or its whole name when two share a stem
    (walk.csv and walk.txt), so no session's targets replace another's."""
    stems = [os.path.splitext(os.path.basename(f))[0] for f in files]
    return [s if stems.count(s) == 1 else os.path.basename(f).replace(".", "_") for s, f in zip(stems, files)]


def make_demo_sessions(folder, count=6):
    """The sample session, replayed by `count` gloves with their own offsets, speeds and noise."""
    os.makedirs(folder, exist_ok=True)
    base = quil_linear.read_session(os.path.join(ROOT, "data", "sample_session.csv"))
    rng = np.random.default_rng(7)
    for k in range(count):
        speed = rng.uniform(0.7, 1.3)
        t = np.arange(0.0, base.times[-1] / speed, 0.01)
        readings = np.column_stack([np.interp(t * speed, base.times, base.readings[:, i]) for i in range(12)])
        readings += rng.uniform(-4, 4, 12) + rng.normal(0, 0.5, readings.shape)
        np.savetxt(os.path.join(folder, "glove_%02d.csv" % k), np.column_stack([t, readings]), delimiter=",",
                   fmt="%.2f", header="time_s," + ",".join("x%d" % i for i in range(12)), comments="")


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("sessions", nargs="?", help="folder of session CSVs (default: demo sessions)")
    ap.add_argument("out", nargs="?", help="folder for the .npy targets and .json records")
    ap.add_argument("--hand", default="RUIYAN_RY_H15")
    ap.add_argument("--dropout", default=quil_linear.DROPOUTS[0], choices=quil_linear.DROPOUTS,
                    help="what a hand does with a dropped reading (NaN): pass it on or hold the last one")
    ap.add_argument("--time-unit", choices=["s", "ms", "us"],
                    help="what the sessions' time columns are in (default: as each column's name says, "
                         "else detected from its steps, with a note)")
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
    if not os.path.isdir(sessions_dir):
        raise SystemExit("no such folder: %s" % sessions_dir)
    names = sorted(os.listdir(sessions_dir))
    files = [os.path.join(sessions_dir, n) for n in names
             if n.lower().endswith(SESSION_EXTENSIONS) and os.path.isfile(os.path.join(sessions_dir, n))]
    skipped = [n for n in names if os.path.join(sessions_dir, n) not in files]
    for n in skipped:
        print("skipped %s: not a session file (%s)" % (n, " ".join(SESSION_EXTENSIONS)), file=sys.stderr)
    if not files:
        raise SystemExit("no session files (%s) in %s" % (" ".join(SESSION_EXTENSIONS), sessions_dir))
    os.makedirs(out_dir, exist_ok=True)

    from dask.distributed import Client, LocalCluster

    if args.scheduler:
        cluster, client = None, Client(args.scheduler)
    else:
        cluster = LocalCluster(n_workers=args.workers, threads_per_worker=1, host="127.0.0.1",
                               dashboard_address=None)
        client = Client(cluster)
    try:
        futures = client.map(convert_session, files, [out_dir] * len(files), output_stems(files),
                             hand_name=args.hand, dropout=args.dropout, time_unit=args.time_unit, pure=False)
        records = client.gather(futures)
    finally:
        client.close()
        if cluster is not None:
            cluster.close()

    failed = [r for r in records if not r["complete"]]
    for r in records:
        name = os.path.basename(r["session"])
        if not r["complete"]:
            print("FAILED  %s: %s" % (name, r["error"]), file=sys.stderr)
            continue
        for note in r["notes"]:
            print("note    %s: %s" % (name, note), file=sys.stderr)
        print("%-40s %7d samples -> %s (worker %d, %.3f s)"
              % (name, r["samples"], r["targets"], r["worker_pid"], r["convert_seconds"]))
    print("%d of %d sessions through %s into %s%s" % (len(records) - len(failed), len(records), args.hand, out_dir,
                                                       "; %d file%s skipped" % (len(skipped), "" if len(skipped) == 1 else "s") if skipped else ""))
    if failed:
        print("%d sessions failed: %s" % (len(failed), ", ".join(os.path.basename(r["session"]) for r in failed)),
              file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
