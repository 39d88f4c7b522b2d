"""verify(): a dataset read back the way its training tool reads it, every action recomputed.

A float64 dataset holds all it takes: its readings (and, with the `next` convention, each
episode's last reading as an attribute) go through a fresh Hand again and must give the same
bits. A float32 dataset, or one made with a wiring profile, cannot be recomputed from its own
rounded readings or without the sample times, so its source sessions are read again (they must
still be where the dataset says) and must give what it holds.
"""
import glob
import json
import os
import re

import numpy as np

from . import DatasetError, episode_arrays, load_episode, map_episode


def _fail(path, message):
    raise DatasetError("%s: %s" % (path, message))


def _text(v):
    return v.decode() if isinstance(v, bytes) else str(v)


def _meta_h5(path, attrs):
    def get(k, default=None):
        return attrs[k] if k in attrs else default

    for k in ("hand", "dropout", "action_convention", "dtype", "action_names", "sources"):
        if k not in attrs:
            _fail(path, "attribute %r is missing" % k)
    fps = get("fps")
    return {
        "hand": _text(attrs["hand"]), "dropout": _text(attrs["dropout"]), "action": _text(attrs["action_convention"]),
        "dtype": _text(attrs["dtype"]), "fps": None if fps is None else float(fps),
        "profile": None if get("profile") is None else _text(get("profile")),
        "profile_json": None if get("profile_json") is None else _text(get("profile_json")),
        "action_names": [_text(x) for x in attrs["action_names"]],
        "sources": [_text(x) for x in attrs["sources"]],
        "time_units": [_text(x) or None for x in get("time_units", [])],
    }


def _check(path, cond, message):
    if not cond:
        _fail(path, message)


def _array(path, name, a, shape, dtype):
    a = np.asarray(a)
    _check(path, a.shape == shape, "%s has shape %s, expected %s" % (name, a.shape, shape))
    _check(path, a.dtype == np.dtype(dtype), "%s is %s, expected %s" % (name, a.dtype, dtype))
    return a


def _episode(meta, i, actions, targets, readings, final_reading=None, final_time=None, times=None):
    return {"index": i, "actions": actions, "targets": targets, "readings": readings,
            "final_reading": final_reading, "final_time": final_time, "times": times}


def _read_robomimic(path):
    import h5py

    with h5py.File(path, "r") as f:
        _check(path, "data" in f, "no group 'data': not a robomimic dataset")
        data = f["data"]
        meta = _meta_h5(path, data.attrs)
        env = json.loads(_text(data.attrs["env_args"]))
        _check(path, env.get("env_name") == meta["hand"] and "type" in env and "env_kwargs" in env,
               "env_args does not name the hand %s with type and env_kwargs" % meta["hand"])
        demos = sorted(data.keys(), key=lambda k: int(k[5:]) if re.fullmatch(r"demo_\d+", k) else -1)
        _check(path, demos == ["demo_%d" % i for i in range(len(demos))], "demos are not demo_0..demo_%d: %s"
               % (len(demos) - 1, demos))
        mask = [_text(x) for x in f["mask/train"][:]]
        _check(path, mask == demos, "mask/train lists %s, not every demo" % mask)
        a, dt = len(meta["action_names"]), meta["dtype"]
        episodes, total = [], 0
        for i, k in enumerate(demos):
            d = data[k]
            n = int(d.attrs["num_samples"])
            total += n
            where = "%s/data/%s" % (path, k)
            dones = _array(where, "dones", d["dones"][:], (n,), d["dones"].dtype)
            _check(where, np.array_equal(dones, (np.arange(n) == n - 1).astype(dones.dtype)), "dones is not 1 on the last step only")
            rewards = _array(where, "rewards", d["rewards"][:], (n,), d["rewards"].dtype)
            _check(where, not np.any(rewards), "rewards are not all zero")
            _array(where, "states", d["states"][:], (n, 0), d["states"].dtype)
            episodes.append(_episode(meta, i, _array(where, "actions", d["actions"][:], (n, a), dt),
                                     _array(where, "obs/hand_targets", d["obs/hand_targets"][:], (n, a), dt),
                                     _array(where, "obs/glove_readings", d["obs/glove_readings"][:], (n, 12), dt),
                                     d.attrs.get("final_reading"), d.attrs.get("final_time")))
        _check(path, int(data.attrs["total"]) == total, "data.attrs['total'] is %d, the demos hold %d steps"
               % (int(data.attrs["total"]), total))
    return meta, episodes


def _read_act(path):
    import h5py

    files = glob.glob(os.path.join(path, "episode_*.hdf5"))
    _check(path, files, "no episode_<i>.hdf5 files: not an ACT dataset")
    names = sorted(os.path.basename(p) for p in files)
    want = sorted("episode_%d.hdf5" % i for i in range(len(files)))
    _check(path, names == want, "the episodes are not episode_0..episode_%d.hdf5" % (len(files) - 1))
    meta, episodes = None, []
    for i in range(len(files)):
        where = os.path.join(path, "episode_%d.hdf5" % i)
        with h5py.File(where, "r") as f:
            m = _meta_h5(where, f.attrs)
            if meta is None:
                meta = m
            _check(where, m == meta, "its attributes differ from episode_0.hdf5's")
            _check(where, bool(f.attrs["sim"]) is False and bool(f.attrs["compress"]) is False,
                   "sim and compress must both be False")
            t = f["action"].shape[0]
            a, dt = len(meta["action_names"]), meta["dtype"]
            qvel = _array(where, "observations/qvel", f["observations/qvel"][:], (t, a), dt)
            _check(where, not np.any(qvel), "observations/qvel is not all zero")
            episodes.append(_episode(meta, i, _array(where, "action", f["action"][:], (t, a), dt),
                                     _array(where, "observations/qpos", f["observations/qpos"][:], (t, a), dt),
                                     _array(where, "observations/glove_readings", f["observations/glove_readings"][:],
                                            (t, 12), dt),
                                     f.attrs.get("final_reading"), f.attrs.get("final_time")))
    return meta, episodes


def _read_zarr(path):
    import zarr

    root = zarr.open_group(zarr.DirectoryStore(path), mode="r")
    at = root.attrs.asdict()
    for k in ("hand", "dropout", "action_convention", "dtype", "action_names", "sources"):
        _check(path, k in at, "attribute %r is missing" % k)
    meta = {k: at.get(k) for k in ("hand", "dropout", "dtype", "fps", "profile", "profile_json", "action_names",
                                   "sources", "time_units")}
    meta["action"] = at["action_convention"]
    ends = root["meta/episode_ends"][:]
    _check(path, ends.dtype == np.int64 and ends.ndim == 1, "meta/episode_ends is not a 1-D int64 array")
    total = root["data/action"].shape[0]
    _check(path, len(ends) and ends[-1] == total and np.all(np.diff(ends) > 0) and ends[0] > 0,
           "meta/episode_ends %s does not end each episode up to the %d steps of data/action" % (ends, total))
    a, dt = len(meta["action_names"]), meta["dtype"]
    action = _array(path, "data/action", root["data/action"][:], (total, a), dt)
    targets = _array(path, "data/hand_targets", root["data/hand_targets"][:], (total, a), dt)
    readings = _array(path, "data/glove_readings", root["data/glove_readings"][:], (total, 12), dt)
    stamps = _array(path, "data/timestamp", root["data/timestamp"][:], (total,), np.float64)
    finals = at.get("final_readings") or [None] * len(ends)
    final_times = at.get("final_times") or [None] * len(ends)
    episodes, start = [], 0
    for i, end in enumerate(ends):
        s = slice(start, int(end))
        episodes.append(_episode(meta, i, action[s], targets[s], readings[s],
                                 None if finals[i] is None else np.array(finals[i], np.float64), final_times[i],
                                 stamps[s]))
        start = int(end)
    return meta, episodes


def _same(a, b):
    a, b = np.ascontiguousarray(a), np.ascontiguousarray(b)
    return a.dtype == b.dtype and a.shape == b.shape and a.tobytes() == b.tobytes()


def detect(path):
    """The layout of the dataset at path: "robomimic", "act" or "zarr"."""
    if os.path.isdir(path):
        if os.path.exists(os.path.join(path, ".zgroup")):
            return "zarr"
        return "act"
    if os.path.isfile(path):
        return "robomimic"
    raise DatasetError("%s: no such dataset" % path, status=3)


def verify(path):
    """Checks the dataset at `path` (OUT/<HAND>.hdf5, OUT/<HAND>/ or OUT/<HAND>.zarr) against its
    layout and recomputes every action and hand target. Returns a summary dict; raises
    DatasetError naming the dataset, episode and array at the first difference."""
    layout = detect(path)
    try:
        meta, episodes = {"robomimic": _read_robomimic, "act": _read_act, "zarr": _read_zarr}[layout](path)
    except (OSError, KeyError) as e:
        raise DatasetError("%s: not a readable %s dataset: %s" % (path, layout, e))
    _check(path, len(meta["sources"]) == len(episodes), "%d sources recorded for %d episodes"
           % (len(meta["sources"]), len(episodes)))
    from_sources = meta["dtype"] != "float64" or meta["profile"] is not None
    units = meta.get("time_units") or [None] * len(episodes)
    steps = 0
    for ep, source, unit in zip(episodes, meta["sources"], units):
        where = "%s: episode %d (%s)" % (path, ep["index"], source)
        nxt = meta["action"] == "next"
        if from_sources:
            src = load_episode(source, fps=meta["fps"], time_unit=unit)
            readings, times = src.readings, src.times
        else:
            readings = ep["readings"]
            times = None
            if nxt:
                if ep["final_reading"] is None:
                    _fail(where, "the last sample's reading is not recorded")
                readings = np.vstack([readings, np.asarray(ep["final_reading"], np.float64).reshape(1, 12)])
            if ep["times"] is not None and not np.all(np.isnan(ep["times"])):
                times = ep["times"] if not nxt else np.append(ep["times"], ep["final_time"])
        profile = json.loads(meta["profile_json"]) if meta.get("profile_json") else meta["profile"]
        outputs = map_episode(meta["hand"], meta["dropout"], profile, readings, times)
        actions, targets, rd, tm = episode_arrays(outputs, readings, times, meta["action"], meta["dtype"])
        for name, mine, theirs in (("readings", ep["readings"], rd), ("actions", ep["actions"], actions),
                                   ("hand targets", ep["targets"], targets)):
            if not _same(mine, theirs):
                bad = np.flatnonzero(np.any(np.asarray(mine).reshape(len(mine), -1).view(np.uint8)
                                            != np.asarray(theirs).reshape(len(theirs), -1).view(np.uint8), axis=1)) \
                    if np.shape(mine) == np.shape(theirs) and np.asarray(mine).dtype == np.asarray(theirs).dtype else []
                _fail(where, "the %s differ from what the hand gives%s" % (
                    name, " first at step %d" % bad[0] if len(bad) else " (shape or dtype)"))
        if ep["times"] is not None and tm is not None and from_sources and not _same(ep["times"], tm):
            _fail(where, "the timestamps differ from the session's")
        steps += len(ep["actions"])
    return {"path": path, "layout": layout, "hand": meta["hand"], "episodes": len(episodes), "steps": steps,
            "recomputed_from": "sources" if from_sources else "readings"}
