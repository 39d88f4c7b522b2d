"""quil-retarget live on loopback: a generated glove stream at 1 kHz with a gap, checked for a
command per sample, the held-then-safe stall during the gap, and the recording mapped offline
giving back exactly what was sent. Bounded: about four seconds, 127.0.0.1 only.

    /usr/bin/python3 live_test.py path/to/quil-retarget
"""
import json
import math
import os
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

import numpy as np

TOOL = sys.argv[1]
HAND = "RUIYAN_RY_H15"
HOLD, SAFE_AFTER, RATE = 0.05, 0.2, 200.0
PROFILE = {
    "hand": HAND,
    "comment": "loopback test",
    "hold_after": HOLD,
    "safe_after": SAFE_AFTER,
    "outputs": [
        {"name": "index", "slot": 6, "scale": -1.0, "offset": 0.0, "min": 0.0, "max": 90.0, "safe": 0.0,
         "smoothing": {"kind": "one_euro", "min_cutoff": 2.0, "beta": 0.05, "d_cutoff": 1.0}, "max_rate": RATE},
        {"name": "middle", "slot": 10, "scale": -1.0, "offset": 5.0, "min": 0.0, "max": 95.0, "safe": 0.0,
         "smoothing": {"kind": "ema", "alpha": 0.3}, "reject_above": 20.0, "max_rate": RATE},
        {"name": "thumb", "slot": 1, "scale": -1.0, "offset": 0.0, "min": 0.0, "max": 60.0},
    ],
}
RUN, GAP = 1.2, 0.8  # seconds of stream on each side of the gap


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def readings(i):
    phase = i * 0.002
    return [45 + 40 * math.sin(phase * (c + 1)) for c in range(12)]


def fail(message):
    print("FAILED:", message)
    sys.exit(1)


def main():
    work = tempfile.mkdtemp(prefix="quil_live_")
    profile = os.path.join(work, "profile.json")
    record = os.path.join(work, "record.npy")
    with open(profile, "w") as f:
        json.dump(PROFILE, f)
    receiver = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    # Room for the whole run's commands: the sender's busy loop can keep this thread from
    # reading for a while on a loaded machine, and loopback UDP drops what does not fit.
    receiver.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 8 << 20)
    receiver.bind(("127.0.0.1", 0))
    receiver.settimeout(0.2)
    in_port = free_port()
    got, done = [], threading.Event()

    def receive():
        while not done.is_set():
            try:
                got.append(json.loads(receiver.recv(65536)))
            except socket.timeout:
                pass

    listener = threading.Thread(target=receive)
    listener.start()
    bridge = subprocess.Popen(
        [TOOL, "live", "-m", HAND, "--profile", profile, "--in", "udp://127.0.0.1:%d" % in_port,
         "--out", "udp://127.0.0.1:%d" % receiver.getsockname()[1], "--in-format", "f64", "--out-format", "json",
         "--record", record, "--stats", "--tick", "0.005"],
        stderr=subprocess.PIPE, text=True)
    try:
        if "reading udp://" not in bridge.stderr.readline():
            fail("the bridge did not start")
        sender = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        times = []
        start = time.perf_counter()
        i = 0
        for t0, length in ((0.0, RUN), (RUN + GAP, RUN)):
            n = int(length * 1000)
            for k in range(n):
                t = t0 + k * 0.001
                while time.perf_counter() - start < t:
                    pass
                sender.sendto(struct.pack("<13d", 100.0 + t, *readings(i)), ("127.0.0.1", in_port))
                times.append(100.0 + t)
                i += 1
        time.sleep(0.3)
        bridge.send_signal(signal.SIGINT)
        _, err = bridge.communicate(timeout=10)
    finally:
        if bridge.poll() is None:
            bridge.kill()
        done.set()
        listener.join()
    print(err, end="")
    if bridge.returncode != 0:
        fail("the bridge ended with status %d" % bridge.returncode)

    names = [o["name"] for o in PROFILE["outputs"]]
    samples = [m for m in got if not m["stale"]]
    ticks = [m for m in got if m["stale"]]
    if [m["t"] for m in samples] != times:
        fail("%d samples sent, %d commands for them came back (in order)" % (len(times), len(samples)))
    sent = np.array([[m["commands"][n] for n in names] for m in samples])

    # The gap: held from hold_after, then ramping to safe at max_rate, never past it.
    last = times[int(RUN * 1000) - 1]
    in_gap = [m for m in ticks if last < m["t"] < last + GAP]
    if not in_gap or in_gap[0]["t"] < last + HOLD or in_gap[0]["t"] >= last + SAFE_AFTER:
        fail("no watchdog commands held between hold_after and safe_after in the gap")
    before = sent[int(RUN * 1000) - 1]
    for m in in_gap:
        v = np.array([m["commands"][n] for n in names])
        if m["t"] < last + SAFE_AFTER and not (v == before).all():
            fail("a command moved before safe_after: %s" % m)
        if m["t"] >= last + SAFE_AFTER:
            expect = np.maximum(before - RATE * (m["t"] - last - SAFE_AFTER), 0.0)
            expect[2] = 0.0  # no rate limit: straight to safe
            if not np.allclose(v, expect, atol=1e-9) or (v < 0).any():
                fail("the ramp to safe is off at %s: %s" % (m["t"], v))
    if not (np.array([in_gap[-1]["commands"][n] for n in names]) == 0.0).all():
        fail("the gap did not end at safe")

    # Offline: the recording through map --profile gives the sent commands bit for bit.
    offline = os.path.join(work, "offline.npy")
    subprocess.run([TOOL, "map", "-q", "-m", HAND, "--profile", record + ".profile.json", record, "-o", offline],
                   check=True)
    recorded, again = np.load(record), np.load(offline)
    if recorded.shape != (len(times), 13) or not (recorded[:, 0] == times).all():
        fail("the record holds %s rows, %d were sent" % (recorded.shape, len(times)))
    if not (again[:, 1:].view(np.uint64) == sent.view(np.uint64)).all():
        fail("the recording mapped offline differs from what was sent")
    print("live: %d samples, %d watchdog commands in the gap, offline equals live" % (len(times), len(in_gap)))
    shutil.rmtree(work)


main()
