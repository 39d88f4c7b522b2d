"""Datasets for training tools, read back as those tools index them, against a reference built
here from the session files with numpy and fresh Hands, bit for bit."""
import os
import pathlib
import signal
import subprocess
import sys
import time

import numpy as np
import pytest

import quil_linear
from conftest import STATEFUL, pinch_walk, same_bits

h5py = pytest.importorskip("h5py")
zarr = pytest.importorskip("zarr")
pytest.importorskip("distributed")
from quil_linear import dataset  # noqa: E402

HANDS = [STATEFUL[0], "RUIYAN_RY_H15", "QUIL_linear_AA"]


def write_csv(path, readings, times=None):
    rows = readings if times is None else np.column_stack([times, readings])
    head = ("time_s," if times is not None else "") + ",".join("x%d" % i for i in range(12))
    np.savetxt(path, rows, delimiter=",", fmt="%.17g", header=head, comments="")
    return str(path)


@pytest.fixture(scope="module")
def sessions(tmp_path_factory):
    """Three episodes: a long pinching walk with a dropped channel and uneven times, a short
    one, and an npy file without times."""
    d = tmp_path_factory.mktemp("sessions")
    walk = pinch_walk(400, seed=5)
    walk[100:120, 3] = np.nan
    rng = np.random.default_rng(9)
    walk_t = np.cumsum(rng.uniform(0.004, 0.016, 400))
    short = pinch_walk(7, seed=6)
    plain = pinch_walk(60, seed=7)
    np.save(d / "plain.npy", plain)
    return [
        (write_csv(d / "walk.csv", walk, walk_t), walk, walk_t),
        (write_csv(d / "short.csv", short, 0.01 * np.arange(7)), short, 0.01 * np.arange(7)),
        (str(d / "plain.npy"), plain, None),
    ]


def reference(hand, readings, action, dtype, dropout="pass"):
    """(actions, targets, readings) of one episode, straight from a fresh Hand."""
    out = quil_linear.Hand(hand, dropout=dropout).map(readings)
    if action == "next":
        acts, tgts, rd = out[1:], out[:-1], readings[:-1]
    else:
        acts, tgts, rd = out, out, readings
    return tuple(np.asarray(a, dtype) for a in (acts, tgts, rd))


def build(tmp_path, layout, sessions, **kw):
    kw.setdefault("workers", 1)
    return dataset.build(layout, HANDS, [s[0] for s in sessions], str(tmp_path / "out"), **kw)


def episodes_robomimic(path):
    with h5py.File(path, "r") as f:
        data = f["data"]
        demos = sorted(data.keys(), key=lambda k: int(k[5:]))  # as robomimic sorts them
        assert [m.decode() for m in f["mask/train"][:]] == demos
        assert int(data.attrs["total"]) == sum(data[k].attrs["num_samples"] for k in demos)
        out = []
        for k in demos:
            d = data[k]
            n = d.attrs["num_samples"]
            assert d["rewards"].shape == (n,) and not d["rewards"][:].any()
            assert list(d["dones"][:]) == [0] * (n - 1) + [1] and d["states"].shape == (n, 0)
            out.append((d["actions"][:], d["obs/hand_targets"][:], d["obs/glove_readings"][:]))
        return out, dict(data.attrs)


def episodes_act(path):
    out, attrs, i = [], None, 0
    while os.path.exists(os.path.join(path, "episode_%d.hdf5" % i)):
        with h5py.File(os.path.join(path, "episode_%d.hdf5" % i), "r") as f:
            assert f.attrs["sim"] == False and f.attrs["compress"] == False  # noqa: E712 (numpy bools)
            qpos = f["observations/qpos"][()]
            assert same_bits(f["observations/qvel"][()], np.zeros_like(qpos))
            out.append((f["action"][()], qpos, f["observations/glove_readings"][()]))
            attrs = dict(f.attrs)
        i += 1
    assert len(os.listdir(path)) == i
    return out, attrs


def episodes_zarr(path):
    root = zarr.open(path, mode="r")
    ends = root["meta/episode_ends"][:]
    assert ends.dtype == np.int64 and ends[-1] == len(root["data/action"])
    starts = np.concatenate([[0], ends[:-1]])
    out = [tuple(root["data/" + k][s:e] for k in ("action", "hand_targets", "glove_readings"))
           for s, e in zip(starts, ends)]
    return out, dict(root.attrs)


READ = {"robomimic": episodes_robomimic, "act": episodes_act, "zarr": episodes_zarr}


@pytest.mark.parametrize("layout", dataset.LAYOUTS)
@pytest.mark.parametrize("action,dtype", [("same", "float64"), ("next", "float32")])
def test_layout_read_back_as_the_training_tool_does(tmp_path, sessions, layout, action, dtype):
    summaries = build(tmp_path, layout, sessions, action=action, dtype=dtype)
    for s, hand in zip(summaries, HANDS):
        episodes, attrs = READ[layout](s["path"])
        assert len(episodes) == len(sessions)
        for (acts, tgts, rd), (_, readings, _) in zip(episodes, sessions):
            for got, want in zip((acts, tgts, rd), reference(hand, readings, action, dtype)):
                assert got.dtype == np.dtype(dtype) and same_bits(got, want)
        names = list(attrs["action_names"])
        assert names == list(quil_linear.Hand(hand).slot_roles)
        assert list(attrs["reading_names"]) == list(dataset.reading_names()) and len(attrs["reading_names"]) == 12
        assert attrs["hand"] == hand and attrs["action_convention"] == action and attrs["dropout"] == "pass"
        assert list(attrs["sources"]) == [x[0] for x in sessions]
        assert dataset.verify(s["path"])["steps"] == sum(len(e[0]) for e in episodes)


def test_zarr_timestamps_and_statistics(tmp_path, sessions):
    (s, *_) = build(tmp_path, "zarr", sessions, action="next")
    root = zarr.open(s["path"], mode="r")
    stamps = root["data/timestamp"][:]
    ends = root["meta/episode_ends"][:]
    assert same_bits(stamps[:ends[0]], sessions[0][2][:-1])
    assert np.isnan(stamps[ends[1]:]).all()  # the npy session has no times
    stats = root.attrs["stats"]["data/glove_readings"]
    readings = np.concatenate([r[:-1] for _, r, _ in sessions])
    assert stats["count"] == len(readings) == ends[-1]
    assert stats["min"] == list(np.nanmin(readings, axis=0)) and stats["q99"] == list(np.nanquantile(readings, 0.99, axis=0))


def test_resampling_takes_the_last_reading_at_or_before_each_tick(tmp_path, sessions):
    fps = 37.0
    (s, *_) = build(tmp_path, "zarr", sessions[:2], fps=fps, dropout="hold")
    root = zarr.open(s["path"], mode="r")
    ends = root["meta/episode_ends"][:]
    start = 0
    for (_, readings, times), end in zip(sessions[:2], ends):
        ticks, rows = [], []
        k = 0
        while times[0] + k / fps <= times[-1]:
            tick = times[0] + k / fps
            ticks.append(tick)
            rows.append(max(i for i in range(len(times)) if times[i] <= tick))
            k += 1
        assert same_bits(root["data/timestamp"][start:end], np.array(ticks))
        assert same_bits(root["data/glove_readings"][start:end], readings[rows])
        want = quil_linear.Hand(HANDS[0], dropout="hold").map(readings[rows])
        assert same_bits(root["data/action"][start:end], want)
        start = end
    assert dataset.verify(s["path"])["episodes"] == 2


def files_of(path):
    path = pathlib.Path(path)
    return {str(p.relative_to(path)): p.read_bytes() for p in sorted(path.rglob("*")) if p.is_file()}


def test_two_dask_workers_and_a_running_scheduler_write_the_same_files_as_one(tmp_path, sessions):
    from dask.distributed import LocalCluster

    for layout in ("robomimic", "zarr"):
        build(tmp_path / "one", layout, sessions, workers=1, action="next")
        build(tmp_path / "two", layout, sessions, workers=2, action="next")
    one = files_of(tmp_path / "one" / "out")
    assert len(one) > 20 and one == files_of(tmp_path / "two" / "out")
    # A scheduler already running, on the loopback address, for the command line.
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=False, host="127.0.0.1", protocol="tcp",
                      dashboard_address=None) as cluster:
        for layout in ("robomimic", "zarr"):
            r = run_cli("--to", layout, "--hands", ",".join(HANDS), "--action", "next", "--scheduler",
                        cluster.scheduler_address, *[s[0] for s in sessions], "-o", tmp_path / "three", timeout=120)
            assert r.returncode == 0, r.stderr
    assert files_of(tmp_path / "three") == one


def test_verify_finds_a_changed_action(tmp_path, sessions):
    (s, *_) = build(tmp_path, "robomimic", sessions[:2])
    with h5py.File(s["path"], "r+") as f:
        f["data/demo_1/actions"][4, 6] = np.nextafter(f["data/demo_1/actions"][4, 6], 1e9)
    r = subprocess.run([sys.executable, "-m", "quil_linear.dataset", "verify", s["path"]], capture_output=True, text=True)
    assert r.returncode == 1 and "episode 1" in r.stderr and "step 4" in r.stderr


def run_cli(*args, timeout=120):
    return subprocess.run([sys.executable, "-m", "quil_linear.dataset", *map(str, args)], capture_output=True,
                          text=True, timeout=timeout)


def bad_inputs(d):
    good = write_csv(d / "good.csv", pinch_walk(20, seed=1), 0.01 * np.arange(20))
    (d / "bad.csv").write_text("time_s," + ",".join("x%d" % i for i in range(12)) + "\n" +
                               "0," + ",".join(["1"] * 12) + "\n0.01," + ",".join(["1"] * 5 + ["x"] + ["1"] * 6) + "\n")
    (d / "back.csv").write_text("".join("%g,%s\n" % (t, ",".join(["2"] * 12)) for t in (0.0, 0.02, 0.01)))
    (d / "one.csv").write_text("0," + ",".join(["3"] * 12) + "\n")
    os.makedirs(d / "existing" / "RUIYAN_RY_H15.zarr")
    return [
        # (command line tail, exit status, what the message must name)
        (["--hands", "RUIYAN_RY_H15", good, d / "bad.csv"], 1, "bad.csv:3:"),
        (["--hands", "RUIYAN_RY_H1", good], 2, "RUIYAN_RY_H15"),
        (["--hands", "RUIYAN_RY_H15", good, d / "missing.csv"], 3, "missing.csv"),
        (["--hands", "RUIYAN_RY_H15", "--fps", "30", good, d / "back.csv"], 1, "back.csv: row 3"),
        (["--hands", "RUIYAN_RY_H15", "--action", "next", good, d / "one.csv"], 1, "one.csv"),
        (["--hands", "RUIYAN_RY_H15", "--fps", "0", good], 2, "--fps"),
        (["--hands", "RUIYAN_RY_H15,ruiyan_ry_h15", good], 2, "twice"),
    ]


def test_each_bad_input_stops_the_run_before_anything_is_written(tmp_path):
    for tail, status, named in bad_inputs(tmp_path):
        out = tmp_path / "out"
        r = run_cli("--to", "zarr", *tail, "-o", out)
        assert (r.returncode, named in r.stderr) == (status, True), (tail, r.stderr)
        assert not out.exists() or not os.listdir(out)
    r = run_cli("--to", "zarr", "--hands", "RUIYAN_RY_H15", tmp_path / "good.csv", "-o", tmp_path / "existing")
    assert r.returncode == 2 and "--overwrite" in r.stderr
    r = run_cli("--to", "zarr", "--hands", "RUIYAN_RY_H15", tmp_path / "good.csv", "-o", tmp_path / "existing",
                "--overwrite", "--quiet")
    assert r.returncode == 0 and "1 zarr datasets from 1 sessions" in r.stdout
    assert run_cli("verify", tmp_path / "existing" / "RUIYAN_RY_H15.zarr").returncode == 0


def test_a_failure_part_way_leaves_no_dataset(tmp_path, sessions, monkeypatch):
    calls = []

    def failing(path, meta, episodes, stats):
        calls.append(path)
        open(path, "wb").write(b"half")
        if len(calls) == 2:
            raise OSError("disk full")

    monkeypatch.setitem(dataset.WRITERS, "robomimic", failing)
    with pytest.raises(OSError, match="disk full"):
        build(tmp_path, "robomimic", sessions[:1])
    assert len(calls) >= 2 and os.listdir(tmp_path / "out") == []


def test_ctrl_c_leaves_nothing_that_looks_complete(tmp_path):
    long = write_csv(tmp_path / "long.csv", pinch_walk(60000, seed=3))
    out = tmp_path / "out"
    p = subprocess.Popen([sys.executable, "-m", "quil_linear.dataset", "--to", "act", "--all-hands", "--quiet",
                          "--workers", "2", long, long, "-o", str(out)], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    deadline = time.monotonic() + 60
    while not (out.exists() and any(".partial-" in n for n in os.listdir(out))):
        assert p.poll() is None and time.monotonic() < deadline, "the run ended before it wrote anything"
        time.sleep(0.005)
    p.send_signal(signal.SIGINT)
    _, err = p.communicate(timeout=60)
    assert p.returncode == 130 and b"interrupted" in err
    assert os.listdir(out) == []


@pytest.mark.skipif(not hasattr(quil_linear, "Profile"), reason="wiring profiles are not in this quil_linear yet")
@pytest.mark.parametrize("layout", dataset.LAYOUTS)
def test_a_profile_makes_the_actions_its_commands(tmp_path, sessions, layout):
    import json

    profile = tmp_path / "ruiyan.json"
    profile.write_text(json.dumps({"hand": "RUIYAN_RY_H15", "hold_after": 0.05, "safe_after": 0.2, "outputs": [
        {"name": "index_mcp", "slot": 6, "scale": 0.01745, "offset": 0.0, "min": -1.6, "max": 1.6, "safe": 0.0,
         "smoothing": {"kind": "one_euro", "min_cutoff": 1.0, "beta": 0.02, "d_cutoff": 1.0}, "max_rate": 4.0},
        {"name": "thumb_rot", "slot": 3, "scale": -0.01745, "offset": 0.1, "min": -2.0, "max": 2.0}]}))
    timed = sessions[:2]
    summaries = dataset.build(layout, ["RUIYAN_RY_H15", HANDS[0]], [s[0] for s in timed], str(tmp_path / "out"),
                              profiles={"ruiyan_ry_h15": str(profile)}, action="next", workers=1)
    episodes, attrs = READ[layout](summaries[0]["path"])
    hand_of = lambda: quil_linear.Hand("RUIYAN_RY_H15", profile=quil_linear.Profile.load(profile))  # noqa: E731
    assert list(attrs["action_names"]) == list(hand_of().output_names) == ["index_mcp", "thumb_rot"]
    for (acts, tgts, _), (_, readings, times) in zip(episodes, timed):
        out = hand_of().map(readings, times=times)
        assert same_bits(acts, out[1:]) and same_bits(tgts, out[:-1])
    with pytest.raises(dataset.DatasetError, match="plain.npy.*time column"):
        dataset.build(layout, ["RUIYAN_RY_H15"], [sessions[2][0]], str(tmp_path / "out2"),
                      profiles={"RUIYAN_RY_H15": str(profile)})
    profile.write_text("{}")  # the dataset keeps the wiring it was made with
    assert dataset.verify(summaries[0]["path"])["recomputed_from"] == "sources"
    assert list(READ[layout](summaries[1]["path"])[1]["action_names"]) == list(quil_linear.Hand(HANDS[0]).slot_roles)
