"""Wiring profiles: what a robot hand's driver takes, made from a hand's 24 joint targets.

A profile is a JSON file:

    {"hand": "RUIYAN_RY_H15", "comment": "...", "hold_after": 0.05, "safe_after": 0.2,
     "outputs": [{"name": "index_mcp", "slot": 5, "scale": 0.01745, "offset": 0.0,
                  "min": 0.0, "max": 1.6, "safe": 0.0,
                  "smoothing": {"kind": "one_euro", "min_cutoff": 1.0, "beta": 0.02, "d_cutoff": 1.0},
                  "reject_above": 0.5, "max_rate": 4.0}, ...]}

Each output is scale * target[slot] + offset, then the library's safety stage (non-finite
guard, smoothing, jump rejection, rate limit, clip, and the stall behaviour from hold_after and
safe_after). Hand(name, profile=Profile.load(path)).map(readings, times=...) gives the commands.
"""
import json
import math
import os
from typing import Any, Dict, List, Optional, Tuple

from . import _core

__all__ = ["Profile"]

_REQUIRED = ("name", "slot", "scale", "offset", "min", "max")
_OUTPUT_FIELDS = set(_REQUIRED) | {"safe", "smoothing", "reject_above", "max_rate"}
_PROFILE_FIELDS = {"hand", "comment", "hold_after", "safe_after", "outputs"}
_SMOOTHING = {"none": (0, ()), "ema": (1, ("alpha",)), "one_euro": (2, ("min_cutoff", "beta", "d_cutoff"))}
_INF = math.inf
_NAN = math.nan


class _Fault(Exception):
    def __init__(self, field: str, problem: str):
        super().__init__(field, problem)
        self.field, self.problem = field, problem


def _number(value: Any, field: str) -> float:
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise _Fault(field, "must be a number, not %s" % json.dumps(value)[:40])
    number = float(value)
    if not math.isfinite(number):
        raise _Fault(field, "must be a finite number")
    return number


def _object(value: Any, field: str, allowed, required=()) -> Dict[str, Any]:
    if not isinstance(value, dict):
        raise _Fault(field, "must be a JSON object")
    prefix = field + "." if field else ""
    for key in value:
        if key not in allowed:
            raise _Fault(prefix + key, "is not a field of a profile" if not field else "is not a known field")
    for key in required:
        if key not in value:
            raise _Fault(prefix + key, "is missing")
    return value


def _no_duplicates(pairs):
    seen = {}
    for key, value in pairs:
        if key in seen:
            raise _Fault(key, "appears twice in one object")
        seen[key] = value
    return seen


def _no_constant(name):
    raise _Fault("", "holds %s, which is not a finite number" % name)


class Profile:
    """A wiring profile, checked: every fault raises ValueError naming the source and the field.

    Attributes: hand, comment, hold_after, safe_after (None when absent), outputs (a list of
    dicts as written in the file), output_names, source (the file, or None).
    """

    def __init__(self, data: Dict[str, Any], source: Optional[str] = None):
        self.source = source
        try:
            self._wiring_tuple = self._read(data)
        except _Fault as fault:
            raise ValueError("%s: %s %s" % (source or "profile", fault.field or "(file)", fault.problem)) from None
        self._data = json.loads(json.dumps(data))

    @classmethod
    def load(cls, path) -> "Profile":
        """Reads and checks the profile file at `path`."""
        path = os.fspath(path)
        try:
            with open(path, "rb") as f:
                text = f.read().decode("utf-8")
        except (OSError, UnicodeDecodeError) as e:
            raise ValueError("%s: cannot be read as a UTF-8 profile: %s" % (path, e)) from None
        try:
            data = json.loads(text, object_pairs_hook=_no_duplicates, parse_constant=_no_constant)
        except _Fault as fault:
            raise ValueError("%s: %s %s" % (path, fault.field or "a value", fault.problem)) from None
        except json.JSONDecodeError as e:
            raise ValueError("%s:%d:%d: not JSON: %s" % (path, e.lineno, e.colno, e.msg)) from None
        return cls(data, source=path)

    @classmethod
    def from_dict(cls, data: Dict[str, Any]) -> "Profile":
        """A profile from the dict a profile file holds."""
        return cls(data)

    def to_dict(self) -> Dict[str, Any]:
        """The profile as its file holds it."""
        return json.loads(json.dumps(self._data))

    def save(self, path) -> None:
        """Writes the profile as JSON to `path`."""
        with open(os.fspath(path), "w") as f:
            json.dump(self._data, f, indent=2)
            f.write("\n")

    @property
    def hand(self) -> str:
        return self._data["hand"]

    @property
    def comment(self) -> str:
        return self._data.get("comment", "")

    @property
    def hold_after(self) -> Optional[float]:
        return self._data.get("hold_after")

    @property
    def safe_after(self) -> Optional[float]:
        return self._data.get("safe_after")

    @property
    def outputs(self) -> List[Dict[str, Any]]:
        return self.to_dict()["outputs"]

    @property
    def output_names(self) -> Tuple[str, ...]:
        return tuple(o["name"] for o in self._data["outputs"])

    def _wiring(self):
        return self._wiring_tuple

    def __reduce__(self):
        return (Profile, (self.to_dict(), self.source))

    def __eq__(self, other):
        return isinstance(other, Profile) and self._data == other._data

    def __repr__(self):
        return "<quil_linear.Profile for %r: %d outputs%s>" % (
            self.hand, len(self._data["outputs"]), ", from " + self.source if self.source else "")

    @staticmethod
    def _read(data):
        _object(data, "", _PROFILE_FIELDS, ("hand", "outputs"))
        hand = data["hand"]
        if not isinstance(hand, str):
            raise _Fault("hand", "must be a hand's name")
        if "comment" in data and not isinstance(data["comment"], str):
            raise _Fault("comment", "must be a string")
        hold_after = _number(data["hold_after"], "hold_after") if "hold_after" in data else _INF
        safe_after = _number(data["safe_after"], "safe_after") if "safe_after" in data else _INF
        outputs = data["outputs"]
        if not isinstance(outputs, list):
            raise _Fault("outputs", "must be a list of outputs")
        wired = []
        for i, o in enumerate(outputs):
            at = "outputs[%d]" % i
            _object(o, at, _OUTPUT_FIELDS, _REQUIRED)
            name = o["name"]
            if not isinstance(name, str):
                raise _Fault(at + ".name", "must be a string")
            slot = o["slot"]
            if isinstance(slot, str):
                # A slot named by its role, when the hand has exactly one slot of that role.
                roles = next((entry[4] for entry in _core.catalogue() if entry[0].lower() == hand.lower()), ())
                matches = [i for i, role in enumerate(roles) if role == slot]
                if len(matches) != 1:
                    raise _Fault(at + ".slot", '"%s" names %d slots of the hand; give the slot number' % (slot, len(matches))
                                 if matches else '"%s" is not a slot role of the hand' % slot)
                slot = matches[0]
            if isinstance(slot, bool) or not isinstance(slot, int):
                raise _Fault(at + ".slot", "must be a slot number 0..23 or a slot role of the hand")
            if not 0 <= slot < 24:
                raise _Fault(at + ".slot", "is not a slot of the hand (0..23)")
            numbers = [_number(o[k], at + "." + k) for k in ("scale", "offset", "min", "max")]
            safe = _number(o["safe"], at + ".safe") if "safe" in o else _NAN
            kind, alpha, min_cutoff, beta, d_cutoff = 0, 1.0, 1.0, 0.0, 1.0
            if "smoothing" in o:
                s = o["smoothing"]
                field = at + ".smoothing"
                if not isinstance(s, dict):
                    raise _Fault(field, "must be a JSON object")
                if "kind" not in s:
                    raise _Fault(field + ".kind", "is missing")
                if s["kind"] not in _SMOOTHING:
                    raise _Fault(field + ".kind", "must be \"none\", \"ema\" or \"one_euro\"")
                kind, params = _SMOOTHING[s["kind"]]
                _object(s, field, {"kind", *params}, params)
                values = {k: _number(s[k], field + "." + k) for k in params}
                alpha = values.get("alpha", alpha)
                min_cutoff = values.get("min_cutoff", min_cutoff)
                beta = values.get("beta", beta)
                d_cutoff = values.get("d_cutoff", d_cutoff)
            reject = _number(o["reject_above"], at + ".reject_above") if "reject_above" in o else _INF
            rate = _number(o["max_rate"], at + ".max_rate") if "max_rate" in o else _INF
            wired.append((name, slot, *numbers, safe, kind, alpha, min_cutoff, beta, d_cutoff, reject, rate))
        wiring = (hand, hold_after, safe_after, wired)
        fault = _core.profile_fault(wiring)
        if fault is not None:
            output, field, problem = fault
            raise _Fault(field if output < 0 else "outputs[%d].%s" % (output, field), problem)
        return wiring
