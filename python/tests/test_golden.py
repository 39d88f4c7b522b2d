"""Every hand through the Python package against the golden record (tests/golden): the record's
samples, written by the build's `golden` program, mapped in one batch per hand; each block of
1024 samples must have the recorded SHA-256, and a differing block is named with its first
differing sample."""
import hashlib
import subprocess

import numpy as np
import pytest

import quil_linear
from conftest import HANDS, REPO

RECORD = REPO / "tests" / "golden"
BLOCK = 1024


def read_record():
    blocks = {}
    for line in (RECORD / "record.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            name, _, sha = line.split()
            blocks.setdefault(name, []).append(sha)
    digests = np.fromfile(RECORD / "samples.digest", dtype=np.uint8)
    per_hand = len(digests) // len(blocks)
    return {name: (shas, digests[i * per_hand:(i + 1) * per_hand]) for i, (name, shas) in enumerate(blocks.items())}


@pytest.fixture(scope="module")
def golden_samples(c_library_path, tmp_path_factory):
    golden = c_library_path.parent / "tests" / "golden"
    directory = tmp_path_factory.mktemp("golden")
    subprocess.run([str(golden), "samples", str(directory), "--format", "npy"], check=True)
    return directory


@pytest.mark.parametrize("name", [h.name for h in HANDS])
def test_hand_matches_the_golden_record(name, golden_samples):
    shas, digests = read_record()[name]
    readings = np.load(golden_samples / (name + ".npy"))
    targets = np.ascontiguousarray(quil_linear.Hand(name).map(readings), dtype="<f8")
    assert targets.shape == (len(shas) * BLOCK, 24)
    for b, sha in enumerate(shas):
        block = targets[b * BLOCK:(b + 1) * BLOCK]
        if hashlib.sha256(block.tobytes()).hexdigest() == sha:
            continue
        first = next((s for s in range(BLOCK)
                      if hashlib.sha256(block[s].tobytes()).digest()[0] != digests[b * BLOCK + s]), None)
        pytest.fail("%s through the Python package: block %d differs from the golden record; first differing "
                    "sample %s of the block, readings %s" % (name, b, first, readings[b * BLOCK + (first or 0)].tolist()))
