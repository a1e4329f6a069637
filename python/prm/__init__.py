"""Animatable parameters: keyframes for each view, undo, project text.

>>> import prm
>>> opacity = prm.Number("opacity")
>>> opacity.set(1.0, at=0)
>>> opacity.set(0.0, at=24)
>>> opacity.value(12)
0.5

Times are frames. The thread that made a project or a parameter edits it; any thread may evaluate.
"""

from collections.abc import Mapping

import numpy as _numpy  # First, since what is compiled needs it and would hide why it fails.

from . import _prm
from ._prm import (
    BasicParameter,
    Change,
    ChangedSince,
    Compound,
    Conflict,
    Difference,
    EditBlock,
    Explanation,
    Extent,
    Finding,
    Group,
    Integer,
    IntegerPoint,
    Number,
    Parameter,
    Point,
    Project,
    Span,
    StaticText,
    StaticUnsigned,
    Subscription,
    Switch,
    Text,
    Times,
    Unsigned,
    diff,
    easings,
)

__all__ = [name for name in dir(_prm) if not name.startswith("_")]

for _name in __all__:
    getattr(_prm, _name).__module__ = __name__
del _name



def _find(self, path, kind):
    """The member of that path, which must be of that class. Raises KeyError, and TypeError for another class."""
    member = self[path]
    if not isinstance(member, kind):
        raise TypeError(f"{path!r} is a {type(member).__name__}, not a {kind.__name__}")
    return member


_find.__name__ = "find"
_find.__qualname__ = "Group.find"
Group.find = _find
del _find

class _Members:
    """What a project forwards to its root, so that it is the mapping that its root is."""

    def __getitem__(self, path):
        return self.root[path]

    def __contains__(self, path):
        return path in self.root

    def __len__(self):
        return len(self.root)

    def __iter__(self):
        return iter(self.root)

    def __delitem__(self, name):
        del self.root[name]

    def get(self, path, default=None):
        return self.root.get(path, default)

    def find(self, path, kind):
        return self.root.find(path, kind)

    def keys(self):
        return self.root.keys()

    def values(self):
        return self.root.values()

    def items(self):
        return self.root.items()

    def add(self, member, position=-1):
        self.root.add(member, position)

    def walk(self, *, parts=False):
        return self.root.walk(parts=parts)

    def groups(self):
        return self.root.groups()

    def retime(self, scale=1.0, pivot=0.0, shift=0.0, start=float("-inf"), end=float("inf")):
        self.root.retime(scale, pivot, shift, start, end)

    def hash_range(self, start=float("-inf"), end=float("inf"), view=0):
        return self.root.hash_range(start, end, view)

    def on_change(self, callback):
        return self.root.on_change(callback)


for _name, _method in vars(_Members).items():
    if hasattr(Group, _name) and callable(_method):
        _method.__qualname__ = "Project." + _name
        _method.__doc__ = getattr(Group, _name).__doc__
        setattr(Project, _name, _method)
del _name, _method, _Members

Mapping.register(Group)
Mapping.register(Project)
