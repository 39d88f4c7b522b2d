"""The Python examples run as a user runs them, write what they say they write, and say
exactly what their C and C++ twins of the same number say."""
import json
import os
import pathlib
import subprocess
import sys

import numpy as np
import pytest

import quil_linear
from conftest import REPO, pinch_walk, same_bits

EXAMPLES = REPO / "examples"
# The built C and C++ examples sit beside the library in the build tree.
BUILT = pathlib.Path(os.environ.get("QUIL_LINEAR_LIB", REPO / "build" / "libquil_linear.so")).parent / "examples"


def run(script, *args):
    return subprocess.run([sys.executable, str(EXAMPLES / script), *map(str, args)], check=True,
                          capture_output=True, text=True, timeout=300)


SAMPLE = REPO / "data" / "sample_session.csv"


@pytest.mark.parametrize("name, args", [
    ("01_one_hand", []),
    ("01_one_hand", ["robotera_xhand1"]),
    ("01_one_hand", ["choho"]),  # unknown: both answer with the same closest hands, and fail
    ("02_two_gloves", []),
    ("03_session_batch", [SAMPLE]),
    ("03_session_batch", [SAMPLE, "CHOHO_Hand"]),
    ("04_resume", ["{tmp}/hand.state"]),
    ("06_wired_hand", []),
])
def test_python_twin_says_what_the_c_example_says(tmp_path, name, args):
    built = BUILT / name
    if not built.exists():
        pytest.skip("%s is not built" % built)
    args = [str(a).format(tmp=tmp_path) for a in args]
    c = subprocess.run([str(built), *args], capture_output=True, text=True, timeout=60)
    py = subprocess.run([sys.executable, str(EXAMPLES / (name + ".py")), *args], capture_output=True, text=True,
                        timeout=300)
    assert (py.returncode, py.stdout) == (c.returncode, c.stdout) and (py.stdout or py.stderr)
    if c.returncode:
        assert py.stderr == c.stderr


def test_python_and_c_save_the_same_state(tmp_path):
    built = BUILT / "04_resume"
    if not built.exists():
        pytest.skip("%s is not built" % built)
    # Both save the hand after the first half of the same session: the same bytes, so a state
    # saved by either resumes in the other.
    run("04_resume.py", tmp_path / "py.state")
    subprocess.run([str(built), str(tmp_path / "c.state")], check=True, capture_output=True, timeout=60)
    assert (tmp_path / "py.state").read_bytes() == (tmp_path / "c.state").read_bytes()


def test_map_session_plots_a_png(tmp_path):
    png = tmp_path / "session.png"
    run("07_plot_session.py", "--hand", "choho_hand", "--out", png)
    assert png.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n" and png.stat().st_size > 20000


def test_many_sessions_on_a_local_dask_cluster(tmp_path):
    sessions = {"walk": pinch_walk(1500, seed=21), "short": pinch_walk(3, seed=22)}
    sessions["walk"][700:760, 6] = np.nan  # the middle finger's channel drops out for a while
    (tmp_path / "in").mkdir()
    for stem, readings in sessions.items():
        rows = np.column_stack([np.arange(len(readings)) / 100.0, readings])
        np.savetxt(tmp_path / "in" / (stem + ".csv"), rows, delimiter=",", fmt="%.17g",
                   header="time_s," + ",".join("x%d" % i for i in range(12)), comments="")
    # What the tool reads, the example reads (read_session's own tests cover every dialect):
    # 12 columns without a time, a millisecond clock under a quoted heading.
    sessions["plain"] = pinch_walk(26, seed=23)
    np.savetxt(tmp_path / "in" / "plain.csv", sessions["plain"], delimiter=",", fmt="%.17g")
    sessions["clock"] = pinch_walk(40, seed=25)
    clock = 1715000000000 + 8 * np.arange(40)
    np.savetxt(tmp_path / "in" / "clock.tsv", np.column_stack([clock, sessions["clock"]]), delimiter="\t",
               fmt="%.17g", header="\t".join('"%s"' % n for n in ["Timestamp"] + ["ch%d" % i for i in range(12)]),
               comments="")
    # Bad sessions are named, the others still converted; other files are listed as skipped.
    (tmp_path / "in" / "commas.csv").write_text("x0;x1;x2;x3;x4;x5;x6;x7;x8;x9;x10;x11\n1,5;2;3;4;5;6;7;8;9;10;11;12\n")
    (tmp_path / "in" / "empty.csv").write_text("time_s," + ",".join("x%d" % i for i in range(12)) + "\n")
    (tmp_path / "in" / "notes.md").write_text("recorded on Tuesday\n")
    (tmp_path / "out").mkdir()
    np.save(tmp_path / "out" / "commas.npy", np.zeros((3, 24)))  # an earlier run's targets
    run_ = subprocess.run([sys.executable, str(EXAMPLES / "08_many_sessions_dask.py"), str(tmp_path / "in"),
                           str(tmp_path / "out"), "--hand", "CHOHO_Hand", "--dropout", "hold", "--workers", "2"],
                          capture_output=True, text=True, timeout=300)
    assert run_.returncode == 1, run_.stderr
    assert "commas.csv:2:1: field 1 (x0): malformed number \"1,5\"" in run_.stderr
    assert "empty.csv: no samples" in run_.stderr and "skipped notes.md" in run_.stderr
    assert "2 sessions failed: commas.csv, empty.csv" in run_.stderr
    assert "clock.tsv: the time column 'Timestamp' does not name its unit" in run_.stderr
    for stem in ["commas", "empty"]:
        assert json.loads((tmp_path / "out" / (stem + ".json")).read_text())["complete"] is False
        assert not (tmp_path / "out" / (stem + ".npy")).exists()
    for stem, readings in sessions.items():
        hand = quil_linear.Hand("CHOHO_Hand", dropout="hold")
        assert same_bits(np.load(tmp_path / "out" / (stem + ".npy")), hand.map(readings).reshape(-1, 24))
        record = json.loads((tmp_path / "out" / (stem + ".json")).read_text())
        assert record["samples"] == len(readings) and record["dropout"] == "hold" and record["complete"]
        assert bytes.fromhex(record["final_state"]) == hand.state
    record = json.loads((tmp_path / "out" / "clock.json").read_text())
    assert record["time_unit"] == "ms" and abs(record["seconds_recorded"] - 0.312) < 1e-6
    assert json.loads((tmp_path / "out" / "plain.json").read_text())["seconds_recorded"] is None
    assert json.loads((tmp_path / "out" / "walk.json").read_text())["seconds_recorded"] == 14.99


def test_dataset_example_builds_verifies_and_plots(tmp_path):
    pytest.importorskip("h5py")
    pytest.importorskip("zarr")
    out = run("09_dataset.py", "--to", "zarr", "--out", tmp_path)
    assert "3 zarr datasets from 4 sessions" in out.stdout and out.stdout.count("\nok ") + out.stdout.startswith("ok ") == 3
    assert sorted(os.listdir(tmp_path / "zarr")) == ["CHOHO_Hand.zarr", "ROBOTERA_XHAND1.zarr", "RUIYAN_RY_H15.zarr"]
    png = tmp_path / "episode_0.png"
    assert png.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n" and png.stat().st_size > 50000
