#!/usr/bin/env python3
"""Latency of quil-retarget live on loopback: a glove stream at --rate Hz for --seconds, each
sample's time from its send to the arrival of its command (round trip through the bridge), and
the bridge's own receipt-to-send figures from its summary.

  /usr/bin/python3 bench/live_latency_bench.py [--tool build/tools/quil-retarget]
        [--profile profiles/linkerbot_linkerhand_o6_radians.json] [--rate 1000] [--seconds 5]

Only 127.0.0.1. Reports p50, p99 and max in microseconds.
"""
import argparse
import json
import signal
import socket
import struct
import subprocess
import time


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--tool", default="build/tools/quil-retarget")
    ap.add_argument("--profile", default="profiles/linkerbot_linkerhand_o6_radians.json")
    ap.add_argument("--rate", type=float, default=1000.0)
    ap.add_argument("--seconds", type=float, default=5.0)
    a = ap.parse_args()
    hand = json.load(open(a.profile))["hand"]
    rx = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    rx.bind(("127.0.0.1", 0))
    rx.setblocking(False)
    probe = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    probe.bind(("127.0.0.1", 0))
    in_port = probe.getsockname()[1]
    probe.close()
    bridge = subprocess.Popen([a.tool, "live", "-m", hand, "--profile", a.profile, "--in", "udp://127.0.0.1:%d" % in_port,
                               "--out", "udp://127.0.0.1:%d" % rx.getsockname()[1], "--in-format", "f64",
                               "--out-format", "f64"], stderr=subprocess.PIPE, text=True)
    bridge.stderr.readline()
    tx = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    n = int(a.rate * a.seconds)
    sent, rtt = [], []
    start = time.perf_counter()
    for i in range(n):
        due = start + i / a.rate
        while time.perf_counter() < due:
            try:
                rx.recv(4096)
                rtt.append(time.perf_counter() - sent[len(rtt)])
            except BlockingIOError:
                pass
        sent.append(time.perf_counter())
        tx.sendto(struct.pack("<13d", i / a.rate, *([40.0 + (i % 100) * 0.3] * 12)), ("127.0.0.1", in_port))
    end = time.perf_counter() + 0.5
    while len(rtt) < n and time.perf_counter() < end:
        try:
            rx.recv(4096)
            rtt.append(time.perf_counter() - sent[len(rtt)])
        except BlockingIOError:
            pass
    bridge.send_signal(signal.SIGINT)
    _, err = bridge.communicate(timeout=10)
    rtt.sort()
    if rtt:
        print("round trip over %d of %d samples: p50 %.0f us, p99 %.0f us, max %.0f us" % (
            len(rtt), n, rtt[len(rtt) // 2] * 1e6, rtt[int(len(rtt) * 0.99)] * 1e6, rtt[-1] * 1e6))
    print("bridge:", [l for l in err.splitlines() if "samples received" in l][0].split("; ")[-1])


main()
