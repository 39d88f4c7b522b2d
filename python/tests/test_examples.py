"""The Python examples run as a user runs them, and write what they say they write."""
import json
import subprocess
import sys

import numpy as np

import quil_linear
from conftest import REPO, pinch_walk, same_bits

EXAMPLES = REPO / "examples" / "python"


def run(script, *args):
    return subprocess.run([sys.executable, str(EXAMPLES / script), *map(str, args)], check=True,
                          capture_output=True, text=True, timeout=300)


def test_map_session_plots_a_png(tmp_path):
    png = tmp_path / "session.png"
    run("01_map_session.py", "--hand", "choho_hand", "--out", png)
    assert png.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n" and png.stat().st_size > 20000


def test_many_sessions_on_a_local_dask_cluster(tmp_path):
    sessions = {"walk": pinch_walk(1500, seed=21), "short": pinch_walk(3, seed=22), "empty": np.empty((0, 12))}
    sessions["walk"][700:760, 6] = np.nan  # the middle finger's channel drops out for a while
    (tmp_path / "in").mkdir()
    for stem, readings in sessions.items():
        rows = np.column_stack([np.arange(len(readings)) / 100.0, readings])
        np.savetxt(tmp_path / "in" / (stem + ".csv"), rows, delimiter=",", fmt="%.17g",
                   header="time_s," + ",".join("x%d" % i for i in range(12)), comments="")
    run("02_many_sessions_dask.py", tmp_path / "in", tmp_path / "out", "--hand", "CHOHO_Hand",
        "--dropout", "hold", "--workers", "2")
    for stem, readings in sessions.items():
        hand = quil_linear.Hand("CHOHO_Hand", dropout="hold")
        assert same_bits(np.load(tmp_path / "out" / (stem + ".npy")), hand.map(readings).reshape(-1, 24))
        record = json.loads((tmp_path / "out" / (stem + ".json")).read_text())
        assert record["samples"] == len(readings) and record["dropout"] == "hold"
        assert bytes.fromhex(record["final_state"]) == hand.state
