"""python -m quil_linear.dataset: glove sessions to robot-learning datasets for many hands.

  python -m quil_linear.dataset --to robomimic|act|zarr (--hands NAME[,NAME...] | --all-hands)
        [--profile HAND=FILE ...] [--dropout pass|hold] [--action same|next]
        [--dtype float64|float32] [--fps F] [--time-unit s|ms|us] [--scheduler tcp://HOST:PORT]
        [--workers N] [--overwrite] [--quiet] SESSION... -o OUT_DIR
  python -m quil_linear.dataset verify DATASET...

Exit status: 0 done; 1 bad data (a malformed session, a dataset that fails verification);
2 bad command line, unknown hand, existing output without --overwrite; 3 a file that cannot be
read or written; 130 interrupted (nothing that looks complete is left behind).
"""
import argparse
import os
import signal
import sys

import quil_linear

from . import ACTIONS, DTYPES, LAYOUTS, DatasetError, build, verify


def build_parser():
    ap = argparse.ArgumentParser(
        prog="python -m quil_linear.dataset",
        description="Turn recorded glove sessions into robomimic, ACT or Diffusion Policy (zarr) datasets, one "
                    "per robot hand. Each session is one episode. `python -m quil_linear.dataset verify DATASET` "
                    "checks a dataset.")
    ap.add_argument("sessions", nargs="+", metavar="SESSION",
                    help="recorded sessions as quil-retarget reads them (CSV with or without a time column, npy, "
                         "f64), one episode each, in this order")
    ap.add_argument("-o", "--out", required=True, metavar="OUT_DIR", help="folder for the datasets")
    ap.add_argument("--to", required=True, choices=LAYOUTS, help="the dataset layout")
    which = ap.add_mutually_exclusive_group(required=True)
    which.add_argument("--hands", metavar="NAME[,NAME...]", help="the hands, comma separated")
    which.add_argument("--all-hands", action="store_true", help="every hand of the library")
    ap.add_argument("--profile", action="append", default=[], metavar="HAND=FILE",
                    help="a wiring profile for a hand: its actions are then the driver's commands")
    ap.add_argument("--dropout", choices=quil_linear.DROPOUTS, default=quil_linear.DROPOUTS[0],
                    help="a NaN or infinite reading goes to the hand as it is (pass), or the channel keeps its "
                         "last finite reading (hold)")
    ap.add_argument("--action", choices=ACTIONS, default="same",
                    help="the action of step t: sample t's targets (same) or sample t+1's (next: the episode "
                         "loses its last step)")
    ap.add_argument("--dtype", choices=DTYPES, default="float64", help="of the arrays written")
    ap.add_argument("--fps", type=float, help="resample each session to this rate first (needs its time column)")
    ap.add_argument("--time-unit", choices=("s", "ms", "us"),
                    help="what the sessions' time columns are in (default: as named, else guessed)")
    ap.add_argument("--scheduler", metavar="tcp://HOST:PORT", help="a running Dask scheduler (default: a local one)")
    ap.add_argument("--workers", type=int, metavar="N", help="local Dask workers (default: cores, at most 4)")
    ap.add_argument("--overwrite", action="store_true", help="replace datasets that already exist")
    ap.add_argument("--quiet", action="store_true", help="no progress bar")
    return ap


def verify_parser():
    ap = argparse.ArgumentParser(prog="python -m quil_linear.dataset verify",
                                 description="Read datasets back, check their layout and recompute every action.")
    ap.add_argument("datasets", nargs="+", metavar="DATASET", help="OUT/<HAND>.hdf5, OUT/<HAND>/ or OUT/<HAND>.zarr")
    return ap


def parse_profiles(ap, items):
    profiles = {}
    for item in items:
        hand, sep, path = item.partition("=")
        if not sep or not hand or not path:
            ap.error("--profile takes HAND=FILE; got %r" % item)
        if hand in profiles:
            ap.error("--profile given twice for %s" % hand)
        profiles[hand] = path
    return profiles


def run_verify(argv):
    args = verify_parser().parse_args(argv)
    status = 0
    for path in args.datasets:
        try:
            r = verify(path)
        except DatasetError as e:
            print("FAILED %s" % e, file=sys.stderr)
            status = max(status, e.status)
            continue
        print("ok %s: %s dataset of %s, %d episodes, %d steps, every action recomputed from its %s"
              % (r["path"], r["layout"], r["hand"], r["episodes"], r["steps"], r["recomputed_from"]))
    return status


def run_build(argv):
    ap = build_parser()
    args = ap.parse_args(argv)
    if args.workers is not None and args.workers < 1:
        ap.error("--workers must be at least 1")
    hands = [h.name for h in quil_linear.hands()] if args.all_hands else [h.strip() for h in args.hands.split(",")]
    if any(not h for h in hands):
        ap.error("--hands has an empty name: %r" % args.hands)
    summaries = build(args.to, hands, args.sessions, args.out, profiles=parse_profiles(ap, args.profile),
                      dropout=args.dropout, action=args.action, dtype=args.dtype, fps=args.fps,
                      time_unit=args.time_unit, scheduler=args.scheduler, workers=args.workers,
                      overwrite=args.overwrite, progress=not args.quiet,
                      say=None if args.quiet else lambda text: print(text, file=sys.stderr))
    for s in summaries:
        print("%-28s %3d episodes %9d steps  %2d actions  -> %s"
              % (s["hand"], s["episodes"], s["steps"], s["width"], s["path"]))
    print("%d %s datasets from %d sessions (dropout %s, action %s, %s%s)"
          % (len(summaries), args.to, len(args.sessions), args.dropout, args.action, args.dtype,
             ", %g fps" % args.fps if args.fps else ""))
    return 0


def _terminate(signum, frame):
    raise KeyboardInterrupt


def main(argv=None):
    argv = sys.argv[1:] if argv is None else argv
    # A run stopped by its scheduler (SIGTERM) cleans up as one stopped by Ctrl-C.
    signal.signal(signal.SIGTERM, _terminate)
    try:
        return run_verify(argv[1:]) if argv[:1] == ["verify"] else run_build(argv)
    except DatasetError as e:
        print("quil_linear.dataset: %s" % e, file=sys.stderr)
        return e.status
    except OSError as e:
        print("quil_linear.dataset: %s" % e, file=sys.stderr)
        return 3
    except KeyboardInterrupt:
        print("\nquil_linear.dataset: interrupted; no dataset of this run was left half written", file=sys.stderr)
        return 130


if __name__ == "__main__":
    sys.exit(main())
