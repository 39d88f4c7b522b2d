"""quil-retarget map --profile: the commands named in the heading and in --meta, equal to the
hand API's, and every kind of fault in a profile file refused with the file and the field.

    /usr/bin/python3 profile_tool_test.py path/to/quil-retarget path/to/source
"""
import copy
import json
import os
import subprocess
import sys
import tempfile

TOOL, SOURCE = sys.argv[1], sys.argv[2]
SESSION = os.path.join(SOURCE, "data", "sample_session.csv")
GOOD = json.load(open(os.path.join(SOURCE, "profiles", "linkerbot_linkerhand_o6_radians.json")))
HAND = GOOD["hand"]
failures = 0


def check(ok, what):
    global failures
    if not ok:
        failures += 1
        print("FAILED:", what)


def run(profile_data, *extra, raw=None):
    with tempfile.TemporaryDirectory() as work:
        path = os.path.join(work, "p.json")
        with open(path, "w") as f:
            f.write(raw if raw is not None else json.dumps(profile_data))
        meta = os.path.join(work, "meta.json")
        r = subprocess.run([TOOL, "map", "-q", "-m", extra[0] if extra else HAND, "--profile", path, SESSION,
                            "--meta", meta], capture_output=True, text=True)
        m = json.load(open(meta)) if os.path.exists(meta) else None
        return r, path, m


r, _, meta = run(GOOD)
check(r.returncode == 0, "a good profile maps: " + r.stderr)
names = [o["name"] for o in GOOD["outputs"]]
lines = r.stdout.splitlines()
check(lines[0].split(",")[1:] == names, "the heading names the outputs")
check(len(lines) == 2001 and all(len(l.split(",")) == 1 + len(names) for l in lines[1:]), "one row per sample")
check(meta["profile"]["outputs"] == names and meta["output"]["columns"][1:] == names, "--meta names the outputs")


def spoiled(edit):
    data = copy.deepcopy(GOOD)
    edit(data)
    return data


FAULTS = [
    ("another hand", spoiled(lambda d: None), ["CHOHO_Hand"], "hand"),
    ("unknown hand", spoiled(lambda d: d.update(hand="NOPE")), [], "hand"),
    ("unknown slot", spoiled(lambda d: d["outputs"][2].update(slot=31)), [], "outputs[2].slot"),
    ("min > max", spoiled(lambda d: d["outputs"][0].update(min=3.0)), [], "outputs[0].min"),
    ("missing field", spoiled(lambda d: d["outputs"][1].pop("scale")), [], "outputs[1].scale"),
    ("unknown field", spoiled(lambda d: d["outputs"][1].update(gain=1)), [], "outputs[1].gain"),
    ("unknown profile field", spoiled(lambda d: d.update(rate=1)), [], "rate"),
    ("a string number", spoiled(lambda d: d.update(hold_after="0.1")), [], "hold_after"),
    ("bad smoothing", spoiled(lambda d: d["outputs"][3]["smoothing"].pop("beta")), [], "outputs[3].smoothing.beta"),
    ("negative rate", spoiled(lambda d: d["outputs"][5].update(max_rate=-2)), [], "outputs[5].max_rate"),
]
for what, data, extra, field in FAULTS:
    r, path, meta = run(data, *extra)
    check(r.returncode == 2 and path in r.stderr and field in r.stderr and r.stdout == "",
          "%s: refused naming %s and %s (got %d: %s)" % (what, path, field, r.returncode, r.stderr.strip()))
for what, raw in [("NaN", '{"hand": "%s", "hold_after": NaN, "outputs": []}' % HAND), ("truncated", '{"hand": ')]:
    r, path, _ = run(None, raw=raw)
    check(r.returncode == 2 and path in r.stderr and "byte" in r.stderr, what + ": " + r.stderr.strip())

# A session without times cannot drive the stage.
with tempfile.TemporaryDirectory() as work:
    no_time = os.path.join(work, "s.csv")
    with open(SESSION) as f, open(no_time, "w") as g:
        for line in f:
            g.write(line.split(",", 1)[1])
    r = subprocess.run([TOOL, "map", "-q", "-m", HAND, "--profile", os.path.join(SOURCE, "profiles",
                        "linkerbot_linkerhand_o6_radians.json"), no_time], capture_output=True, text=True)
    check(r.returncode == 2 and "time" in r.stderr, "a session without times is refused: " + r.stderr.strip())

# A session in two files, the stage's memory carried by --state-out/--state-in, maps as one.
with tempfile.TemporaryDirectory() as work:
    lines = open(SESSION).read().splitlines()
    halves = [lines[:1] + lines[1:1234], lines[:1] + lines[1234:]]
    profile = os.path.join(SOURCE, "profiles", "linkerbot_linkerhand_o6_radians.json")
    outs = []
    for i, half in enumerate(halves):
        part = os.path.join(work, "part%d.csv" % i)
        open(part, "w").write("\n".join(half) + "\n")
        state = ["--state-out", os.path.join(work, "s%d" % i)] + (["--state-in", os.path.join(work, "s0")] if i else [])
        r = subprocess.run([TOOL, "map", "-q", "-m", HAND, "--profile", profile, part] + state, capture_output=True, text=True)
        check(r.returncode == 0, "part %d maps: %s" % (i, r.stderr.strip()))
        outs.append(r.stdout.splitlines()[1:])
    whole = subprocess.run([TOOL, "map", "-q", "-m", HAND, "--profile", profile, SESSION], capture_output=True, text=True)
    check(outs[0] + outs[1] == whole.stdout.splitlines()[1:], "two parts with the state between them map as one")
    r = subprocess.run([TOOL, "map", "-q", "-m", HAND, os.path.join(work, "part1.csv"), "--state-in", os.path.join(work, "s0")],
                       capture_output=True, text=True)
    check(r.returncode == 4 and "profile" in r.stderr, "a profile's state without the profile is refused: " + r.stderr.strip())

# --hold-after and --safe-after stand for the profile's own, as live applies them.
with tempfile.TemporaryDirectory() as work:
    gappy = os.path.join(work, "gap.csv")
    lines = open(SESSION).read().splitlines()
    rows = [l.split(",") for l in lines[1:]]
    with open(gappy, "w") as f:
        f.write(lines[0] + "\n")
        # The glove stalls 0.3 s in the fist and comes back open: the jump is rejected, and the
        # command it holds is where the stall had taken it.
        for i, r in enumerate(rows[:601] + rows[900:]):
            f.write(",".join(["%.2f" % (0.01 * i + (0.3 if i > 600 else 0.0))] + r[1:]) + "\n")
    edited = copy.deepcopy(GOOD)
    edited.update(hold_after=0.02, safe_after=0.05)
    path = os.path.join(work, "edited.json")
    json.dump(edited, open(path, "w"))
    base = [TOOL, "map", "-q", "-m", HAND, gappy, "--profile"]
    a = subprocess.run(base + [path], capture_output=True, text=True).stdout
    b = subprocess.run(base + [os.path.join(SOURCE, "profiles", "linkerbot_linkerhand_o6_radians.json"),
                               "--hold-after", "0.02", "--safe-after", "0.05"], capture_output=True, text=True).stdout
    c = subprocess.run(base + [os.path.join(SOURCE, "profiles", "linkerbot_linkerhand_o6_radians.json")],
                       capture_output=True, text=True).stdout
    check(a == b and a != c and a.count("\n") == 1702, "--safe-after overrides the profile's")

# A slot named by its role (the hand's only slot of that role) maps as its number does.
describe = json.loads(subprocess.run([TOOL, "describe", HAND, "--json"], capture_output=True, text=True).stdout)
roles = [s.get("role") for s in describe.get("slots", [])]
if len(roles) != 24 or None in roles:
    print("note: describe --json gives no slot roles; slots by role not checked")
    roles = ["a%d" % i for i in range(23)] + ["a0"]
unique = next(i for i, r in enumerate(roles) if roles.count(r) == 1)
shared = next(r for r in roles if roles.count(r) > 1)
by_number, by_role = copy.deepcopy(GOOD), copy.deepcopy(GOOD)
by_number["outputs"][0]["slot"] = unique
by_role["outputs"][0]["slot"] = roles[unique]
if roles[0] != "a0":
    r1, r2 = run(by_number), run(by_role)
    check(r1[0].returncode == 0 and r1[0].stdout == r2[0].stdout, "a slot by role maps as by number: " + r2[0].stderr)
    by_role["outputs"][0]["slot"] = shared
    r = run(by_role)[0]
    check(r.returncode == 2 and "outputs[0].slot" in r.stderr, "a role of several slots is refused: " + r.stderr.strip())

print("%d faults checked, %d failed" % (len(FAULTS) + 3, failures))
sys.exit(1 if failures else 0)
