"""read_session reads what quil-retarget reads, with its messages, and gives times in seconds."""
import os
import pathlib
import subprocess

import numpy as np
import pytest

import quil_linear
from conftest import REPO, pinch_walk, same_bits

LIB = pathlib.Path(os.environ.get("QUIL_LINEAR_LIB", REPO / "build" / "libquil_linear.so"))
TOOL = LIB.parent / "tools" / "quil-retarget"

READINGS = pinch_walk(40, seed=5)
QUOTED = ",".join('"%s"' % n for n in ["Thumb", "Thumb Mid", "Index", "Index Mid", "Middle", "Middle Mid", "Ring",
                                         "Ring Mid", "Little", "Little Mid", "Spread A", "Spread B"])


def text_rows(rows, sep, end=""):
    return "".join(sep.join("%.17g" % v for v in r) + end + "\n" for r in rows)


# Real-looking recordings: (file name, contents, time unit given, times in seconds expected,
# unit reported, whether a note says the unit was guessed).
def recordings():
    ms = 1715000000000 + 10 * np.arange(len(READINGS))
    timed_ms = np.column_stack([ms, READINGS])
    radians = np.radians(READINGS)
    return [
        ("export.csv", '"Timestamp",' + QUOTED + ",\n" + text_rows(timed_ms, ",", ","), None, ms / 1e3, "ms", True),
        ("export_named.csv", '"time_ms",' + QUOTED + "\n" + text_rows(timed_ms, ","), None, ms / 1e3, "ms", False),
        ("export_given.csv", "t," + QUOTED + "\n" + text_rows(timed_ms, ","), "ms", ms / 1e3, "ms", False),
        ("research.txt", "# research glove, radians\n" + text_rows(radians, " "), None, None, None, False),
        ("aligned.txt", "".join(" ".join("%12.6f" % v for v in r) + "\n" for r in READINGS), None, None, None, False),
        ("tabs.tsv", "\t".join("x%d" % i for i in range(12)) + "\n" + text_rows(READINGS, "\t"), None, None, None,
         False),
        ("seconds.csv", "time_s;" + ";".join("x%d" % i for i in range(12)) + "\n" +
         text_rows(np.column_stack([np.arange(len(READINGS)) / 100, READINGS]), ";"), None,
         np.arange(len(READINGS)) / 100, "s", False),
    ]


@pytest.mark.parametrize("case", recordings(), ids=lambda c: c[0])
def test_every_dialect_reads_as_the_tool_reads_it(tmp_path, case):
    name, content, unit, times, unit_seen, guessed = case
    path = tmp_path / name
    path.write_text(content)
    s = quil_linear.read_session(path, time_unit=unit)
    expect = np.radians(READINGS) if name == "research.txt" else READINGS
    if name == "aligned.txt":
        expect = np.array([[float("%12.6f" % v) for v in r] for r in READINGS])
    assert s.readings.shape == (len(READINGS), 12) and s.readings.dtype == np.float64
    assert s.readings.flags["C_CONTIGUOUS"] and same_bits(s.readings, expect)
    assert s.time_unit == unit_seen and s.path == str(path)
    if times is None:
        assert s.times is None
    else:
        assert same_bits(s.times, times)
    assert any("milliseconds" in n for n in s.notes) == guessed
    assert any("radians" in n for n in s.notes) == (name == "research.txt")
    if TOOL.exists():  # the tool maps the same file to what the package's Hand maps from these readings
        out = tmp_path / "t.npy"
        subprocess.run([str(TOOL), "map", "-m", "CHOHO_Hand", str(path), "-o", str(out), "-q"], check=True)
        got = np.load(out)
        assert same_bits(got[:, -24:], quil_linear.Hand("CHOHO_Hand").map(s.readings))


def test_npy_with_and_without_time(tmp_path):
    t = np.arange(len(READINGS)) * 2000.0  # microseconds at 500 Hz
    np.save(tmp_path / "timed.npy", np.column_stack([t, READINGS]))
    np.save(tmp_path / "plain.npy", np.asfortranarray(READINGS.astype(">f8")))
    timed = quil_linear.read_session(tmp_path / "timed.npy")
    assert timed.format == "npy" and timed.time_unit == "us" and same_bits(timed.times, t / 1e6)
    assert same_bits(timed.readings, READINGS) and timed.notes
    plain = quil_linear.read_session(str(tmp_path / "plain.npy"))
    assert plain.times is None and plain.time_unit is None and same_bits(plain.readings, READINGS)
    assert quil_linear.read_session(tmp_path / "timed.npy", time_unit="s").times[1] == 2000.0


# Files the tool refuses: the package raises SessionError with the tool's own message.
BAD = [
    ("commas.csv", "time;x0;x1;x2;x3;x4;x5;x6;x7;x8;x9;x10;x11\n0.5;1,5;2;3;4;5;6;7;8;9;10;11;12\n", "commas.csv:2:5"),
    ("short.csv", text_rows(READINGS[:3], ",") + "1,2,3\n", "short.csv:4:6: short row"),
    ("empty.csv", "time,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n", "no samples"),
    ("word.csv", text_rows(READINGS[:2], ",") + ",".join(["1"] * 11 + ["abc"]) + "\n", "malformed number \"abc\""),
    ("cut.npy", None, "short data"),
]


@pytest.mark.parametrize("name,content,message", BAD, ids=lambda c: c if isinstance(c, str) else "")
def test_malformed_input_raises_the_tools_message(tmp_path, name, content, message):
    path = tmp_path / name
    if content is None:
        np.save(path, READINGS)
        path.write_bytes(path.read_bytes()[:-100])
    else:
        path.write_text(content)
    with pytest.raises(quil_linear.SessionError) as err:
        quil_linear.read_session(path)
    assert message in str(err.value) and isinstance(err.value, ValueError)
    assert err.value.session is not None and err.value.session.readings.shape[1] == 12
    if TOOL.exists():
        tool = subprocess.run([str(TOOL), "map", "-m", "CHOHO_Hand", str(path), "-o", str(tmp_path / "o.csv")],
                              capture_output=True, text=True)
        assert tool.returncode != 0 and ("quil-retarget: %s\n" % err.value) in tool.stderr


def test_arguments_are_checked(tmp_path):
    with pytest.raises(OSError):
        quil_linear.read_session(tmp_path / "missing.csv")
    (tmp_path / "a.csv").write_text(text_rows(READINGS, ","))
    with pytest.raises(ValueError, match="time_unit"):
        quil_linear.read_session(tmp_path / "a.csv", time_unit="min")
    with pytest.raises(ValueError, match="format"):
        quil_linear.read_session(tmp_path / "a.csv", format="xlsx")
