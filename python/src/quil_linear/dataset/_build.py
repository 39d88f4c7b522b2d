"""build(): sessions in, one dataset per hand out, mapped on Dask.

Everything that can be wrong with the input (a hand, a profile, a session, an existing output)
is found before the first byte is written. Each dataset is then written under a hidden
".<name>.partial-<pid>" name in the output folder and renamed into place only once every hand's
dataset is whole, so an interrupted run leaves nothing a training tool would take for a dataset.
"""
import os
import sys
import time

import numpy as np

import quil_linear

from . import (ACTIONS, DTYPES, LAYOUTS, DatasetError, dataset_paths, load_episode, map_episode, remove,
               write_dataset)


class Progress:
    """A one-line bar on stderr over the hands' episodes and datasets."""

    def __init__(self, total, stream=None, enabled=True):
        self.total, self.done, self.stream, self.enabled = total, 0, stream or sys.stderr, enabled
        self.last = 0.0

    def step(self, what):
        self.done += 1
        now = time.monotonic()
        if not self.enabled or (now - self.last < 0.1 and self.done < self.total):
            return
        self.last = now
        width = 30
        filled = width * self.done // max(self.total, 1)
        line = "\r[%s%s] %d/%d %s" % ("#" * filled, "." * (width - filled), self.done, self.total, what)
        self.stream.write(line[:100].ljust(100))
        if self.done >= self.total:
            self.stream.write("\n")
        self.stream.flush()


def resolve_hands(names):
    """Canonical hand names, in the order asked, each once."""
    out = []
    for name in names:
        try:
            canonical = quil_linear.Hand(name).name
        except ValueError as e:
            raise DatasetError(str(e), status=2)
        if canonical in out:
            raise DatasetError("hand %s is asked for twice" % canonical, status=2)
        out.append(canonical)
    return out


def resolve_profiles(profiles, hands):
    """{hand: profile file} for hands of this run; each file is loaded once here so a bad one
    stops the run before anything is written."""
    if not profiles:
        return {}
    if not hasattr(quil_linear, "Profile"):
        raise DatasetError("this quil_linear has no wiring profiles; run without --profile", status=2)
    out = {}
    for name, path in profiles.items():
        canonical = resolve_hands([name])[0]
        if canonical not in hands:
            raise DatasetError("--profile %s=%s: %s is not one of the hands of this run" % (name, path, canonical),
                               status=2)
        try:
            quil_linear.Profile.load(path)
        except OSError as e:
            raise DatasetError("%s: cannot read: %s" % (path, e), status=3)
        except ValueError as e:
            raise DatasetError(str(e) if str(path) in str(e) else "%s: %s" % (path, e), status=1)
        out[canonical] = os.fspath(path)
    return out


def action_names_of(hand, profile):
    if profile is None:
        return tuple(quil_linear.Hand(hand).slot_roles)
    try:
        return tuple(quil_linear.Hand(hand, profile=quil_linear.Profile.load(profile)).output_names)
    except ValueError as e:  # a profile wired for another hand
        raise DatasetError(str(e) if profile in str(e) else "%s: %s" % (profile, e), status=1)


def _map_source(hand, dropout, profile, source):
    return map_episode(hand, dropout, profile, source[2], source[3])


def _client(scheduler, workers):
    from dask.distributed import Client, LocalCluster

    if scheduler:
        return Client(scheduler, timeout="30s"), None
    # Threads of this process (the hands map without the GIL), reachable on no network.
    cluster = LocalCluster(n_workers=workers, threads_per_worker=1, processes=False, dashboard_address=None)
    return Client(cluster), cluster


def build(layout, hands, sessions, out_dir, profiles=None, dropout="pass", action="same", dtype="float64",
          fps=None, time_unit=None, scheduler=None, workers=None, overwrite=False, progress=False, say=None):
    """Builds one `layout` dataset per hand in `out_dir` from the sessions, one episode each,
    in the order given. Returns one summary dict per hand (hand, path, episodes, steps, width).

    profiles: {hand: wiring profile file}; that hand's actions are then its commands.
    workers:  local Dask workers (threads of this process) when no `scheduler` address is given.
    say:      called with each note about the input (a time unit the reader guessed).
    Raises DatasetError (with .status) for bad input, before anything is written; removes
    what it wrote when interrupted or failing part way.
    """
    if layout not in LAYOUTS:
        raise DatasetError("the layout must be one of %s; got %r" % (", ".join(LAYOUTS), layout), status=2)
    if action not in ACTIONS:
        raise DatasetError("the action convention must be same or next; got %r" % action, status=2)
    if dtype not in DTYPES:
        raise DatasetError("the dtype must be float64 or float32; got %r" % dtype, status=2)
    if dropout not in quil_linear.DROPOUTS:
        raise DatasetError("the dropout policy must be %s; got %r" % (" or ".join(quil_linear.DROPOUTS), dropout), status=2)
    if fps is not None:
        fps = float(fps)
        if not (fps > 0 and np.isfinite(fps)):
            raise DatasetError("--fps must be a positive number of samples per second; got %r" % fps, status=2)
    if not sessions:
        raise DatasetError("no sessions given", status=2)
    hands = resolve_hands(hands)
    if not hands:
        raise DatasetError("no hands given", status=2)
    profiles = resolve_profiles(profiles or {}, hands)

    finals = [dataset_paths(out_dir, layout, h) for h in hands]
    existing = [p for p in finals if os.path.lexists(p)]
    if existing and not overwrite:
        raise DatasetError("%s already exists; pass --overwrite to replace it" % existing[0], status=2)

    episodes = []
    for path in sessions:
        ep = load_episode(path, fps=fps, time_unit=time_unit)
        if len(ep) == 0:
            raise DatasetError("%s: the session has no samples" % path)
        if action == "next" and len(ep) < 2:
            raise DatasetError("%s: one sample gives no step with --action next (its action would be the next "
                               "sample's)" % path)
        if profiles and ep.times is None:
            raise DatasetError("%s: a wiring profile (--profile %s) needs the sample times, and this session has "
                               "no time column" % (path, next(iter(profiles))))
        for note in ep.notes if say else ():
            say("note: %s" % note)
        episodes.append(ep)

    options = {"layout": layout, "dropout": dropout, "action": action, "dtype": dtype, "fps": fps,
               "profiles": profiles}
    infos = {h.name: {"version": h.version} for h in quil_linear.hands()}
    names = {h: action_names_of(h, profiles.get(h)) for h in hands}

    os.makedirs(out_dir, exist_ok=True)
    temps = {h: os.path.join(out_dir, ".%s.partial-%d" % (os.path.basename(p), os.getpid()))
             for h, p in zip(hands, finals)}
    bar = Progress(len(hands) * (len(episodes) + 1), enabled=progress)
    client = cluster = None
    futures, failed = [], False
    try:
        for t in temps.values():
            remove(t)
        client, cluster = _client(scheduler, workers or min(4, os.cpu_count() or 1))
        from dask.distributed import as_completed

        sources = client.scatter([(e.path, e.time_unit, e.readings, e.times) for e in episodes])
        what = {}
        for h in hands:
            mapped = []
            for e, src in zip(episodes, sources):
                f = client.submit(_map_source, h, dropout, profiles.get(h), src, pure=False)
                what[f.key] = "%s %s" % (h, os.path.basename(e.path))
                mapped.append(f)
            w = client.submit(write_dataset, temps[h], h, infos[h], names[h], options, sources, *mapped, pure=False)
            what[w.key] = "%s written" % h
            futures += mapped + [w]
        summaries = {}
        for f in as_completed(futures):
            result = f.result()  # a task's error is raised here, and the run stops
            if isinstance(result, dict):
                summaries[result["hand"]] = result
            bar.step(what[f.key])
            f.release()
        # Every dataset is whole: only now do they take their names.
        out = []
        for h, final in zip(hands, finals):
            remove(final)
            os.replace(temps[h], final)
            summary = dict(summaries[h])
            summary["path"] = final
            out.append(summary)
        return out
    except BaseException:
        failed = True
        raise
    finally:
        if client is not None:
            if failed:
                client.cancel(futures)
            client.close()
        if cluster is not None:
            cluster.close()  # waits for the tasks still running on its threads
        if failed:
            # Hidden, never a dataset's name; still, leave nothing behind.
            for t in temps.values():
                remove(t)
