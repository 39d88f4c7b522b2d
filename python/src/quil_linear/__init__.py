"""Drive a dexterous robot hand from a data glove.

Each glove sample is twelve finger-angle readings x0..x11; a Hand maps it to the 24 joint
targets of one robot hand, exactly as the library's C API does, and remembers what the hand
needs from sample to sample (pinch latches, thumb references, held readings).

    import numpy as np, quil_linear
    hand = quil_linear.Hand("RUIYAN_RY_H15")
    targets = hand.map(readings)        # (N, 12) -> (N, 24) float64, in order

quil_linear.hands() lists every hand with what its 24 output slots drive.

A wiring profile turns the targets into the hand driver's own commands, through a safety stage:

    hand = quil_linear.Hand("RUIYAN_RY_H15", profile=quil_linear.Profile.load("profile.json"))
    commands = hand.map(readings, times=times)   # (N, len(hand.output_names)) float64
"""
from typing import List, NamedTuple, Tuple

from . import _core
from ._core import Hand
from .profile import Profile

__all__ = ["Hand", "HandInfo", "Profile", "hands", "closest_hands", "__version__"]

#: The library's version, "MAJOR.MINOR.PATCH" (quil_linear_version() of the C API).
__version__ = _core.version()


class HandInfo(NamedTuple):
    """A hand of the catalogue."""

    name: str  #: class name and prefix of the hand's C exports, what Hand() takes
    version: str  #: what the hand's <name>_GetVersion() answers
    keeps_state: bool  #: remembers pinches or thumb references between samples
    persistent_buffer: bool  #: its C export reuses one result buffer (else a fresh one per call)
    slot_roles: Tuple[str, ...]  #: what the hand's rules drive in each of the 24 output slots


def hands() -> List[HandInfo]:
    """Every hand the library serves, in catalogue order."""
    return [HandInfo(*entry) for entry in _core.catalogue()]


def closest_hands(name: str, count: int = 3) -> List[str]:
    """The names of the `count` hands closest to `name`, best first (for "did you mean")."""
    return _core.closest(name, count)


Hand.__module__ = __name__
