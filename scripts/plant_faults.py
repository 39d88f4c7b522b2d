#!/usr/bin/python3
"""Plants faults in the hands and the shared mechanics and counts how many the tests catch.

Copies the tracked files to a scratch directory, builds a release tree there once, then for each
planted fault changes ONE token of one source under models/ or core/ (a comparison made strict or
loose, a number nudged, && and || swapped, + and - swapped, std::min and std::max swapped),
rebuilds the library and the test programs, runs the tests of the hands and the mechanics, and
puts the file back. A fault is killed when a test fails (or hangs past the timeout); one that
does not compile is shown but not counted.

    /usr/bin/python3 scripts/plant_faults.py [--count 100] [--seed 1] [--timeout 120]

The faults are drawn with the seed from every site the files offer, so the same tree and seed
plant the same faults. Files are found by glob, so hands moved into subfolders are still found.
Slow (a rebuild per fault): not part of scripts/test.sh.
"""
import argparse
import glob
import json
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCE_GLOBS = ["models/**/*.cpp", "models/**/*.h", "core/**/*.cpp", "core/**/*.h"]

# Binary operators are written with a space on each side in this code base, which keeps the
# template brackets (std::array<double, 24>), shifts and unary minus out of the swaps.
SWAPS = [
    (re.compile(r"(?<=\s)<=(?=\s)"), "<"),
    (re.compile(r"(?<=\s)<(?=\s)"), "<="),
    (re.compile(r"(?<=\s)>=(?=\s)"), ">"),
    (re.compile(r"(?<=\s)>(?=\s)"), ">="),
    (re.compile(r"(?<=\s)&&(?=\s)"), "||"),
    (re.compile(r"(?<=\s)\|\|(?=\s)"), "&&"),
    (re.compile(r"(?<=[\w)\]]\s)\+(?=\s)"), "-"),
    (re.compile(r"(?<=[\w)\]]\s)-(?=\s)"), "+"),
    (re.compile(r"\bstd::min\b"), "std::max"),
    (re.compile(r"\bstd::max\b"), "std::min"),
]
# A bound applied by a comparison with the bound itself, `if (x < -60) x = -60;` or
# `x < 15 ? 15 : x`: making that comparison strict or loose changes nothing (the value at the bound
# is the bound either way; a bound of 0 is left in, as the sign of a zero can change).
CLAMP = re.compile(r"if \((?P<a>[\w\[\].:]+) (?:<=?|>=?) (?P<b>-?[\d.]+)\) (?P=a) = (?P=b);"
                   r"|(?P<c>[\w\[\].:]+) (?:<=?|>=?) (?P<d>-?[\d.]+) \? (?P=d) : (?P=c)")
NUMBER = re.compile(r"(?<![\w.])(\d+(?:\.\d*)?(?:[eE][+-]?\d+)?)([fFuUlL]*)(?![\w.])")


def code_mask(text):
    """The text with comments, string and character literals blanked out (lengths kept)."""
    out = list(text)
    i, n = 0, len(text)
    while i < n:
        c = text[i]
        if text.startswith("//", i):
            j = text.find("\n", i)
            j = n if j < 0 else j
            for k in range(i, j):
                out[k] = " "
            i = j
        elif text.startswith("/*", i):
            j = text.find("*/", i + 2)
            j = n if j < 0 else j + 2
            for k in range(i, j):
                if out[k] != "\n":
                    out[k] = " "
            i = j
        elif c in "\"'":
            j = i + 1
            while j < n and text[j] != c:
                j += 2 if text[j] == "\\" else 1
            for k in range(i, min(j + 1, n)):
                out[k] = " "
            i = j + 1
        else:
            i += 1
    return "".join(out)


def nudge(number):
    """The number with its last digit changed: 1.2 -> 1.3, 9 -> 8, 0.05 -> 0.06."""
    mantissa = re.match(r"[\d.]+", number).group(0)
    pos = max(i for i, ch in enumerate(mantissa) if ch.isdigit())
    d = int(mantissa[pos])
    new = str(d + 1) if d < 9 else "8"
    return number[:pos] + new + number[pos + 1:]


def sites(root):
    """Every single-token change the sources offer: (file, line, column, before, after)."""
    found = []
    files = sorted({f for g in SOURCE_GLOBS for f in glob.glob(os.path.join(root, g), recursive=True)})
    for path in files:
        rel = os.path.relpath(path, root)
        with open(path, encoding="utf-8") as fh:
            text = fh.read()
        masked = code_mask(text)
        for lineno, line in enumerate(masked.split("\n"), start=1):
            stripped = line.strip()
            if not stripped or stripped.startswith("#") or "static_assert" in line:
                continue
            for pattern, after in SWAPS:
                for m in pattern.finditer(line):
                    found.append((rel, lineno, m.start(), m.group(0), after))
            for m in NUMBER.finditer(line):
                # Sizes of arrays and template arguments change nothing the hands compute.
                before_text = line[:m.start()].rstrip()
                if before_text.endswith(("<", "[")) and "std::array" in line:
                    continue
                if re.search(r"std::array<[^>]*$", line[:m.start()]):
                    continue
                found.append((rel, lineno, m.start(), m.group(1), nudge(m.group(1))))
    return found


def equivalent(line, col, before):
    """True for a strictness flip inside a clamp to a nonzero constant (see CLAMP)."""
    if before not in ("<", "<=", ">", ">="):
        return False
    for m in CLAMP.finditer(line):
        bound = m.group("b") or m.group("d")
        if m.start() <= col < m.end() and float(bound) != 0.0:
            return True
    return False


def kind(before):
    if before[0].isdigit():
        return "number"
    if before in ("<", "<=", ">", ">="):
        return "comparison"
    if before in ("&&", "||"):
        return "logic"
    if before in ("+", "-"):
        return "arithmetic"
    return "min/max"


def draw(found, seed):
    """The sites in the order the faults are planted: shuffled with the seed within each kind of
    change, then the kinds taken in turn, so the many numbers do not crowd out the operators."""
    rng = random.Random(seed)
    groups = {}
    for site in found:
        groups.setdefault(kind(site[3]), []).append(site)
    order = sorted(groups)
    for k in order:
        rng.shuffle(groups[k])
    drawn = []
    while any(groups[k] for k in order):
        for k in order:
            if groups[k]:
                drawn.append(groups[k].pop())
    return drawn


def run(cmd, cwd=None, timeout=None, env=None):
    try:
        p = subprocess.run(cmd, cwd=cwd, timeout=timeout, env=env,
                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return p.returncode, p.stdout
    except subprocess.TimeoutExpired as e:
        return "timeout", (e.stdout or b"").decode() if isinstance(e.stdout, bytes) else (e.stdout or "")


def test_programs(build):
    """The test programs CTest runs for the library, as (target, command): the golden record, the
    slot facts, the hand, mechanics and API tests. Tools, memcheck and install checks are left
    out. Found from CTest, so new test files are picked up; a GoogleTest program runs once with
    all its tests rather than once per test."""
    rc, out = run(["ctest", "--test-dir", build, "--show-only=json-v1"])
    if rc != 0:
        sys.exit("ctest --show-only failed:\n" + out)
    programs = {}
    for test in json.loads(out)["tests"]:
        cmd = test.get("command") or []
        if not cmd or not cmd[0].startswith(os.path.join(build, "tests") + os.sep):
            continue
        name = os.path.basename(cmd[0])
        if not name.endswith("_test"):
            continue
        if any(a.startswith("--gtest_filter") for a in cmd[1:]):
            cmd = [cmd[0], "--gtest_brief=1"]
        programs[name] = cmd
    first = [n for n in ("golden_test", "slot_facts_test") if n in programs]
    rest = sorted(n for n in programs if n not in first)
    return [(n, programs[n]) for n in first + rest]


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--count", type=int, default=100, help="faults that compile to run (default 100)")
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--timeout", type=int, default=120, help="seconds per test program")
    ap.add_argument("--jobs", type=int, default=1, help="ninja jobs (default 1)")
    ap.add_argument("--keep", action="store_true", help="keep the scratch directory")
    ap.add_argument("--only", action="append", default=[], metavar="FILE:LINE",
                    help="plant only the drawn faults at these places (repeatable)")
    args = ap.parse_args()

    files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True,
                           stdout=subprocess.PIPE).stdout.decode().split("\0")
    scratch = tempfile.mkdtemp(prefix="quil_faults_")
    src = os.path.join(scratch, "src")
    build = os.path.join(scratch, "build")
    for f in files:
        if not f or not os.path.isfile(os.path.join(ROOT, f)):
            continue
        os.makedirs(os.path.dirname(os.path.join(src, f)), exist_ok=True)
        shutil.copy2(os.path.join(ROOT, f), os.path.join(src, f))
    env = dict(os.environ, CCACHE_BASEDIR=scratch)
    try:
        cmake = ["cmake", "-S", src, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                 "-DQUIL_LINEAR_BUILD_BENCH=OFF", "-DQUIL_LINEAR_BUILD_TOOLS=OFF"]
        if shutil.which("ccache"):
            cmake += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DCMAKE_C_COMPILER_LAUNCHER=ccache"]
        rc, out = run(cmake, env=env)
        if rc != 0:
            sys.exit("configure failed:\n" + out)
        rc, out = run(["ninja", "-C", build, "-j", str(args.jobs), "quil_linear", "quil_linear_internal"], env=env)
        if rc != 0:
            sys.exit("build failed:\n" + out)
        # gtest discovery registers the tests only once the programs exist: build them first.
        rc, out = run(["ninja", "-C", build, "-j", str(args.jobs), "tests/all"], env=env)
        if rc != 0:
            sys.exit("building the tests failed:\n" + out)
        programs_all = test_programs(build)
        targets = [n for n, _ in programs_all]
        rc, out = run(["ninja", "-C", build, "-j", str(args.jobs)] + targets, env=env)
        if rc != 0:
            sys.exit("building the tests failed:\n" + out)
        for name, cmd in programs_all:
            rc, out = run(cmd, timeout=args.timeout)
            if rc != 0:
                sys.exit(f"{name} fails before any fault is planted:\n{out[-3000:]}")
        print(f"tests: {' '.join(targets)}", flush=True)
        first, rest = programs_all[:2], programs_all[2:]

        candidates = draw(sites(src), args.seed)
        print(f"{len(candidates)} sites in {len({c[0] for c in candidates})} files; seed {args.seed}", flush=True)
        killed = counted = broken = same = 0
        survivors = []
        for rel, lineno, col, before, after in candidates:
            if counted >= args.count:
                break
            if args.only and f"{rel}:{lineno}" not in args.only:
                continue
            path = os.path.join(src, rel)
            with open(path, encoding="utf-8") as fh:
                original = fh.read()
            lines = original.split("\n")
            line = lines[lineno - 1]
            assert line[col:col + len(before)] == before, (rel, lineno, before)
            if equivalent(line, col, before):
                same += 1
                print(f"{rel}:{lineno}: {before} -> {after}: changes nothing (a clamp's own bound), not planted", flush=True)
                continue
            lines[lineno - 1] = line[:col] + after + line[col + len(before):]
            with open(path, "w", encoding="utf-8") as fh:
                fh.write("\n".join(lines))
            started = time.time()
            verdict, by = "survived", ""
            try:
                for group in (first, rest):
                    names = [n for n, _ in group]
                    rc, out = run(["ninja", "-C", build, "-j", str(args.jobs)] + names, env=env)
                    if rc != 0:
                        verdict = "didn't compile"
                        break
                    for name, cmd in group:
                        rc, _ = run(cmd, timeout=args.timeout)
                        if rc != 0:
                            verdict, by = "killed", f" by {name}" + (" (timeout)" if rc == "timeout" else "")
                            break
                    if verdict != "survived":
                        break
            finally:
                with open(path, "w", encoding="utf-8") as fh:
                    fh.write(original)
            if verdict == "didn't compile":
                broken += 1
            else:
                counted += 1
                killed += verdict == "killed"
                if verdict == "survived":
                    survivors.append(f"{rel}:{lineno}")
            print(f"{rel}:{lineno}: {before} -> {after}: {verdict}{by} ({time.time() - started:.0f} s)", flush=True)
        pct = 100.0 * killed / counted if counted else 0.0
        print(f"didn't compile: {broken}; clamp flips left out: {same}")
        print(f"survivors: {' '.join(survivors) if survivors else 'none'}")
        print(f"killed {killed} of {counted} ({pct:.1f}%)")
    finally:
        if args.keep:
            print(f"scratch kept: {scratch}")
        else:
            shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main()
