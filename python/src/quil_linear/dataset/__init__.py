"""Robot-learning datasets from recorded glove sessions, for many hands at once.

Each session is one episode; each hand gets its own dataset in the layout a training tool reads:

    robomimic   OUT/<HAND>.hdf5               data/demo_<i>/{actions, obs/..., rewards, dones, states}
    act         OUT/<HAND>/episode_<i>.hdf5   observations/{qpos, qvel, glove_readings}, action
    zarr        OUT/<HAND>.zarr               data/{action, glove_readings, hand_targets, timestamp},
                                              meta/episode_ends (a replay buffer, zarr format 2)

build() makes them (the command `python -m quil_linear.dataset` calls it), verify() reads one
back and recomputes every action from its readings. Every array is what a fresh Hand gives for
the episode's samples in order, bit for bit in float64, or rounded once to float32.
"""
import json
import math
import os
import shutil

import numpy as np

import quil_linear

__all__ = ["LAYOUTS", "DatasetError", "Episode", "load_episode", "resample", "episode_arrays", "build",
           "verify", "reading_names", "dataset_paths"]

LAYOUTS = ("robomimic", "act", "zarr")
ACTIONS = ("same", "next")
DTYPES = ("float64", "float32")


class DatasetError(ValueError):
    """Input a dataset cannot be built from (a bad session, an unknown hand, an existing output),
    or a dataset that fails verification. The message names the file, and the line or row where
    there is one. `status` is the command's exit status for it."""

    def __init__(self, message, status=1):
        super().__init__(message)
        self.status = status


def reading_names():
    """The names of the twelve glove readings, as datasets record them: the library's own."""
    return tuple(r.name for r in quil_linear.readings())


# ---------------------------------------------------------------------------------------------
# Episodes: a session read, checked and (with fps) resampled, before any hand sees it.

class Episode:
    """One session as the hands see it: readings (N, 12) float64, times (N,) seconds or None."""

    __slots__ = ("path", "readings", "times", "time_unit", "recorded_rows", "notes")

    def __init__(self, path, readings, times, time_unit, recorded_rows, notes=()):
        self.path, self.readings, self.times = path, readings, times
        self.time_unit, self.recorded_rows, self.notes = time_unit, recorded_rows, list(notes)

    def __len__(self):
        return len(self.readings)


def resample(readings, times, fps, path="session"):
    """The readings at a fixed rate: tick k is at times[0] + k / fps seconds, up to the last
    recorded time, and carries the last reading recorded at or before it. Returns
    (readings, ticks). Needs times that never go back."""
    if times is None:
        raise DatasetError("%s: --fps needs the session's times, and this session has no time column" % path)
    if not (fps > 0 and math.isfinite(fps)):
        raise DatasetError("--fps must be a positive number of samples per second; got %r" % fps, status=2)
    bad = np.flatnonzero(~np.isfinite(times))
    if bad.size:
        raise DatasetError("%s: row %d: the time %r is not a number, so the session cannot be resampled"
                           % (path, bad[0] + 1, float(times[bad[0]])))
    back = np.flatnonzero(np.diff(times) < 0)
    if back.size:
        r = back[0] + 1
        raise DatasetError("%s: row %d: the time %.17g s is earlier than the row before (%.17g s), so the "
                           "session cannot be resampled" % (path, r + 1, times[r], times[r - 1]))
    t0, last = times[0], times[-1]
    count = int(math.floor((last - t0) * fps)) + 1
    # The floor above may be one off either way in binary; the ticks themselves decide.
    while t0 + count / fps <= last:
        count += 1
    while count > 1 and t0 + (count - 1) / fps > last:
        count -= 1
    ticks = t0 + np.arange(count, dtype=np.float64) / fps
    rows = np.searchsorted(times, ticks, side="right") - 1
    return np.ascontiguousarray(readings[rows]), ticks


def load_episode(path, fps=None, time_unit=None):
    """Reads one session with quil-retarget's rules (CSV with or without a time column, npy,
    f64) and resamples it when fps is given. Raises DatasetError naming the file and place."""
    try:
        s = quil_linear.read_session(path, time_unit=time_unit)
    except quil_linear.SessionError as e:
        raise DatasetError(str(e), status=1)
    except OSError as e:
        raise DatasetError(str(e) if str(path) in str(e) else "%s: cannot read: %s" % (path, e), status=3)
    readings, times = s.readings, s.times
    if fps is not None:
        readings, times = resample(readings, times, fps, s.path)
    return Episode(str(path), readings, times, s.time_unit, len(s.readings), s.notes)


def map_episode(hand_name, dropout, profile, readings, times):
    """What a fresh Hand gives for one episode, sample by sample in order (float64)."""
    if profile is None:
        return quil_linear.Hand(hand_name, dropout=dropout).map(readings)
    hand = quil_linear.Hand(hand_name, dropout=dropout, profile=load_profile(profile))
    return hand.map(readings, times=times)


def load_profile(profile):
    """A wiring profile from its file, or from the dict a dataset recorded of it."""
    if isinstance(profile, dict):
        return quil_linear.Profile.from_dict(profile)
    return quil_linear.Profile.load(profile)


def episode_arrays(outputs, readings, times, action, dtype):
    """The steps of one episode: (actions, hand_targets, readings, times) in the dataset's
    dtype (times stay float64). `same`: step t acts with sample t's outputs. `next`: step t acts
    with sample t+1's outputs while its state is sample t's, so the last sample gives no step."""
    if action == "next":
        actions, targets = outputs[1:], outputs[:-1]
        readings = readings[:-1]
        times = None if times is None else times[:-1]
    else:
        actions, targets = outputs, outputs
    cast = np.dtype(dtype)
    return (np.ascontiguousarray(actions, cast), np.ascontiguousarray(targets, cast),
            np.ascontiguousarray(readings, cast), times)


# ---------------------------------------------------------------------------------------------
# Statistics for normalising: per feature column, over every step of the dataset.

def feature_stats(values):
    """min, max, mean, std, q01, q99 of each column of `values` (steps, n), NaN readings left
    out; None where a column has no finite answer (JSON has no NaN or infinity)."""
    import warnings

    v = np.asarray(values, np.float64)
    with warnings.catch_warnings(), np.errstate(all="ignore"):
        warnings.simplefilter("ignore", RuntimeWarning)  # a column that is NaN throughout
        q01, q99 = np.nanquantile(v, [0.01, 0.99], axis=0)
        cols = {"min": np.nanmin(v, axis=0), "max": np.nanmax(v, axis=0), "mean": np.nanmean(v, axis=0),
                "std": np.nanstd(v, axis=0), "q01": q01, "q99": q99}
    out = {k: [float(x) if math.isfinite(x) else None for x in c] for k, c in cols.items()}
    out["count"] = int(len(v))
    return out


# ---------------------------------------------------------------------------------------------
# Writers: one hand's dataset from its episodes' outputs, into a path nobody reads yet.

def _profile_json(path):
    if path is None:
        return None
    return json.dumps(load_profile(path).to_dict(), sort_keys=True)


def _meta(hand_name, info, action_names, episodes, options):
    return {
        "hand": hand_name,
        "hand_version": info["version"],
        "library_version": quil_linear.__version__,
        "action_names": list(action_names),
        "reading_names": list(reading_names()),
        "sources": [e["path"] for e in episodes],
        "time_units": [e["time_unit"] for e in episodes],
        "dropout": options["dropout"],
        "action_convention": options["action"],
        "dtype": options["dtype"],
        "fps": options["fps"],
        "profile": options["profiles"].get(hand_name),
        # The wiring itself, so the dataset can be checked after the file has changed or gone.
        "profile_json": _profile_json(options["profiles"].get(hand_name)),
        "layout": options["layout"],
    }


def _h5_attrs(node, meta):
    import h5py

    for k, v in meta.items():
        if v is None:
            continue  # an absent attribute: no fps, no profile
        if isinstance(v, (list, tuple)):
            node.attrs[k] = np.array(["" if x is None else str(x) for x in v], dtype=h5py.string_dtype())
        else:
            node.attrs[k] = v


def _final_attrs(node, ep, action):
    # With --action next the last sample only gives the last action; keep its reading so the
    # dataset alone is enough to recompute every action.
    if action == "next":
        node.attrs["final_reading"] = ep["final_reading"]
        if ep["final_time"] is not None:
            node.attrs["final_time"] = ep["final_time"]


def write_robomimic(path, meta, episodes, stats):
    import h5py

    with h5py.File(path, "w") as f:
        data = f.create_group("data")
        total = sum(len(e["actions"]) for e in episodes)
        data.attrs["total"] = np.int64(total)
        data.attrs["env_args"] = json.dumps({
            "env_name": meta["hand"],
            # No simulator stands behind a glove recording: train with rollouts off.
            "type": 2,
            "env_kwargs": {k: meta[k] for k in ("hand", "hand_version", "library_version", "dropout", "action_convention",
                                                "fps", "profile")},
        })
        _h5_attrs(data, meta)
        data.attrs["stats"] = json.dumps(stats)
        for i, e in enumerate(episodes):
            demo = data.create_group("demo_%d" % i)
            n = len(e["actions"])
            demo.attrs["num_samples"] = np.int64(n)
            demo.attrs["source"] = e["path"]
            _final_attrs(demo, e, meta["action_convention"])
            demo.create_dataset("actions", data=e["actions"])
            demo.create_dataset("obs/glove_readings", data=e["readings"])
            demo.create_dataset("obs/hand_targets", data=e["targets"])
            demo.create_dataset("rewards", data=np.zeros(n, np.float64))
            dones = np.zeros(n, np.int64)
            dones[-1:] = 1
            demo.create_dataset("dones", data=dones)
            demo.create_dataset("states", data=np.zeros((n, 0), np.float64))
        f.create_dataset("mask/train", data=np.array([b"demo_%d" % i for i in range(len(episodes))], dtype="S"))


def write_act(path, meta, episodes, stats):
    import h5py

    os.mkdir(path)
    for i, e in enumerate(episodes):
        with h5py.File(os.path.join(path, "episode_%d.hdf5" % i), "w") as f:
            f.attrs["sim"] = False
            f.attrs["compress"] = False
            _h5_attrs(f, meta)
            f.attrs["stats"] = json.dumps(stats)
            f.attrs["episode_index"] = np.int64(i)
            f.attrs["source"] = e["path"]
            _final_attrs(f, e, meta["action_convention"])
            f.create_dataset("observations/qpos", data=e["targets"])
            f.create_dataset("observations/qvel", data=np.zeros_like(e["targets"]))
            f.create_dataset("observations/glove_readings", data=e["readings"])
            f.create_dataset("action", data=e["actions"])


def write_zarr(path, meta, episodes, stats):
    import zarr

    root = zarr.open_group(zarr.DirectoryStore(path), mode="w")
    data, m = root.create_group("data"), root.create_group("meta")

    def column(name, parts, dtype, width=None):
        total = sum(len(p) for p in parts)
        shape = (total,) if width is None else (total, width)
        chunks = (max(1, min(total, 65536)),) + shape[1:]
        a = data.create_dataset(name, shape=shape, chunks=chunks, dtype=dtype)
        if total:
            a[...] = np.concatenate(parts)

    width = len(meta["action_names"])
    dtype = np.dtype(meta["dtype"])
    column("action", [e["actions"] for e in episodes], dtype, width)
    column("glove_readings", [e["readings"] for e in episodes], dtype, 12)
    column("hand_targets", [e["targets"] for e in episodes], dtype, width)
    # Seconds as recorded (or the resampling ticks); NaN for a session without a time column.
    column("timestamp", [e["times"] if e["times"] is not None else np.full(len(e["actions"]), np.nan)
                         for e in episodes], np.float64)
    ends = np.cumsum([len(e["actions"]) for e in episodes], dtype=np.int64)
    m.create_dataset("episode_ends", data=ends, shape=ends.shape, chunks=(max(1, len(ends)),), dtype=np.int64)
    attrs = dict(meta)
    attrs["stats"] = stats
    attrs["final_readings"] = [None if e["final_reading"] is None else [float(x) for x in e["final_reading"]]
                               for e in episodes] if meta["action_convention"] == "next" else None
    attrs["final_times"] = [e["final_time"] for e in episodes] if meta["action_convention"] == "next" else None
    root.attrs.update({k: v for k, v in attrs.items() if v is not None})


WRITERS = {"robomimic": write_robomimic, "act": write_act, "zarr": write_zarr}
# The keys each layout's features are stored under, for its statistics.
FEATURE_KEYS = {
    "robomimic": ("actions", "obs/glove_readings", "obs/hand_targets"),
    "act": ("action", "observations/glove_readings", "observations/qpos"),
    "zarr": ("data/action", "data/glove_readings", "data/hand_targets"),
}


def dataset_paths(out_dir, layout, hand_name):
    return os.path.join(out_dir, hand_name + {"robomimic": ".hdf5", "act": "", "zarr": ".zarr"}[layout])


def write_dataset(tmp_path, hand_name, info, action_names, options, sources, *outputs):
    """Worker task: one hand's whole dataset at tmp_path from the outputs of its episodes.
    `sources` holds, per episode, (path, time_unit, readings, times)."""
    episodes = []
    for (path, time_unit, readings, times), out in zip(sources, outputs):
        actions, targets, rd, tm = episode_arrays(out, readings, times, options["action"], options["dtype"])
        episodes.append({
            "path": path, "time_unit": time_unit, "actions": actions, "targets": targets, "readings": rd,
            "times": tm,
            "final_reading": np.array(readings[-1], np.float64) if options["action"] == "next" else None,
            "final_time": float(times[-1]) if options["action"] == "next" and times is not None else None,
        })
    keys = FEATURE_KEYS[options["layout"]]
    stats = {
        keys[0]: feature_stats(np.concatenate([e["actions"] for e in episodes])),
        keys[1]: feature_stats(np.concatenate([e["readings"] for e in episodes])),
        keys[2]: feature_stats(np.concatenate([e["targets"] for e in episodes])),
    }
    meta = _meta(hand_name, info, action_names, episodes, options)
    WRITERS[options["layout"]](tmp_path, meta, episodes, stats)
    return {"hand": hand_name, "episodes": len(episodes), "steps": sum(len(e["actions"]) for e in episodes),
            "width": len(action_names)}


def remove(path):
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path, ignore_errors=True)
    elif os.path.lexists(path):
        try:
            os.remove(path)
        except OSError:
            pass


from ._build import build  # noqa: E402  (needs the pieces above)
from ._verify import verify  # noqa: E402
