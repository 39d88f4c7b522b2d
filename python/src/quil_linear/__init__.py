"""Drive a dexterous robot hand from a data glove.

Each glove sample is twelve finger-angle readings x0..x11; a Hand maps it to the 24 joint
targets of one robot hand, exactly as the library's C API does, and remembers what the hand
needs from sample to sample (pinch latches, thumb references, held readings).

    import numpy as np, quil_linear
    hand = quil_linear.Hand("RUIYAN_RY_H15")
    targets = hand.map(readings)        # (N, 12) -> (N, 24) float64, in order

quil_linear.hands() lists every hand; Hand.slots says what each of its 24 output slots is
(role, kind, relation, range, the readings that move it); quil_linear.readings() names the
twelve readings the hands expect, in degrees; quil_linear.read_session(path) reads a recorded
session exactly as quil-retarget reads it.

A wiring profile turns the targets into the hand driver's own commands, through a safety stage:

    hand = quil_linear.Hand("RUIYAN_RY_H15", profile=quil_linear.Profile.load("profile.json"))
    commands = hand.map(readings, times=times)   # (N, len(hand.output_names)) float64
"""
import os
import warnings
from typing import List, NamedTuple, Optional, Tuple

from . import _core
from ._core import Hand
from .profile import Profile

__all__ = ["Hand", "HandInfo", "Profile", "Slot", "Reading", "hands", "readings", "suggest", "read_session", "DROPOUTS",
           "Session", "SessionError", "__version__"]

#: The library's version, "MAJOR.MINOR.PATCH" (quil_linear_version() of the C API).
__version__ = _core.version()

#: The dropout policies a Hand takes, by name: ("pass", "hold") (quil_dropout_name of the C API).
DROPOUTS = _core.DROPOUTS


class HandInfo(NamedTuple):
    """A hand of the catalogue."""

    name: str  #: class name and prefix of the hand's C exports, what Hand() takes
    version: str  #: what the hand's <name>_GetVersion() answers
    keeps_state: bool  #: remembers pinches or thumb references between samples
    persistent_buffer: bool  #: its C export reuses one result buffer (else a fresh one per call)
    slot_roles: Tuple[str, ...]  #: what the hand's rules drive in each of the 24 output slots


class Slot(NamedTuple):
    """One output slot of one hand: what it is, and what the library measured it to do."""

    index: int  #: 0..23, the position in the targets
    role: str  #: the joint, the same on every hand: "index_proximal", "thumb_rotation", ...
    kind: str  #: "joint", "follower", "fixed", "unused", "terminator" or "gesture_code"
    follows: Tuple[int, ...]  #: a follower's source slots
    relation: str  #: a follower's value from its sources, "min(0.8 * slot 5, 0)"; "" otherwise
    departs: str  #: where a follower leaves its relation ("in pinches"); "" if never seen to
    value: float  #: the value of a fixed, unused or terminator slot; NaN otherwise
    sign: int  #: -1 smaller as its finger bends (or its spread opens), +1 larger, 0 neither
    range: Tuple[float, float]  #: least and greatest value over the library's documented sweep
    moved_by: Tuple[int, ...]  #: the readings that alone move it (indices into readings())
    meaning: str  #: what the role means for the robot
    negative_zero: bool  #: a zero comes out as -0.0 (the slot is mirrored last)


class Reading(NamedTuple):
    """One of the twelve glove readings x0..x11, as the hands read it."""

    index: int  #: 0..11, the position in a sample
    name: str  #: "index_bend", ...
    finger: str  #: "thumb", "index", "middle", "ring" or "little"
    motion: str  #: "bend" or "spread"
    unit: str  #: "degrees": 0 is an open, flat hand
    meaning: str  #: what the hands do with it
    hands: Tuple[str, ...]  #: the hands it moves a slot of


def slots(name: str) -> Tuple[Slot, ...]:
    """The 24 slots of the hand `name` (as Hand takes it)."""
    return tuple(Slot(*s) for s in _core.slot_facts(name))


def readings() -> Tuple[Reading, ...]:
    """The twelve glove readings, in sample order x0..x11."""
    return tuple(Reading(*r) for r in _core.reading_facts())


def hands() -> List[HandInfo]:
    """Every hand the library serves, in catalogue order."""
    return [HandInfo(*entry) for entry in _core.catalogue()]


def suggest(name: str, count: int = 3) -> List[str]:
    """The names of the `count` hands closest to `name`, best first (for "did you mean")."""
    return _core.suggest(name, count)


def closest_hands(name: str, count: int = 3) -> List[str]:
    """Deprecated name of suggest()."""
    warnings.warn("quil_linear.closest_hands is now quil_linear.suggest", DeprecationWarning, stacklevel=2)
    return suggest(name, count)


class Session:
    """A recorded session read by read_session().

    readings:   (N, 12) float64, C-contiguous: the glove readings x0..x11 of each sample
    times:      (N,) float64 in seconds, or None when the file has no time column
    time_unit:  what the file's time column is in: "s", "ms", "us", or None without one
    time_name:  the time column's name (the heading's, else "time"), or None
    names:      the file's own names of x0..x11 (empty strings without a heading)
    format:     "csv", "f64" or "npy", as the file was read
    notes:      what the reader decided on its own, as sentences (a time unit it detected)
    path:       the file, as messages name it
    """

    __slots__ = ("readings", "times", "time_unit", "time_name", "names", "format", "notes", "path")

    def __init__(self, d):
        for k in self.__slots__:
            setattr(self, k, d[k])

    def __len__(self):
        return len(self.readings)

    def __repr__(self):
        timed = "no time column" if self.times is None else "time column %r in %s" % (self.time_name, self.time_unit)
        return "<quil_linear.Session %r: %d samples, %s, %s>" % (self.path, len(self.readings), self.format, timed)


class SessionError(ValueError):
    """A session file quil-retarget would refuse; the message names file:line:column (or the
    byte offset, or the npy header problem), as the tool's does. `session` holds the rows
    before the fault (a Session, possibly of 0 rows)."""

    def __init__(self, message, session=None):
        super().__init__(message)
        self.session = session


def read_session(path, time_unit: Optional[str] = None, format: Optional[str] = None) -> Session:
    """Reads a whole recorded session with quil-retarget's own readers and rules.

    path: a .csv/.tsv/.txt file (commas, semicolons, tabs or runs of spaces; 12 readings per
    row, or 13 with the time first; an optional heading), a .npy array (N, 12) or (N, 13), or
    a .f64 file of raw little-endian doubles; "-" reads standard input. format ("csv", "f64",
    "npy") overrides the extension.
    time_unit: what the file's time column is in, "s", "ms" or "us". None: the unit the
    column's name states (time_ms, "t [us]"), else the one its steps suggest, else seconds;
    a guess is said in Session.notes. Session.times is always in seconds.

    Raises SessionError (a ValueError) for malformed or empty input, OSError for a file that
    cannot be read. Reads in the calling thread with the GIL released.
    """
    d = _core.read_session(os.fsdecode(path), format or "", time_unit or "")
    session = Session(d)
    if d["error"] is not None:
        if d["io_error"]:
            raise OSError(d["error"])
        raise SessionError(d["error"], session)
    return session


Hand.__module__ = __name__
Hand.slots = property(lambda self: slots(self.name), doc="The hand's 24 slots as quil_linear.Slot records.")
