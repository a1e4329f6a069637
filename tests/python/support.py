"""What the tests of the module share."""

import pathlib

import prm

ROOT = pathlib.Path(__file__).resolve().parents[2]
CLIP = ROOT / "tests/data/tool/logo.prm"
CHANGED = ROOT / "tests/data/tool/logo_changed.prm"
LOTTIE = ROOT / "examples/data/lighthouse.json"

# Each class with a value, and another one.
KINDS = {
    prm.Number: (0.5, 2.0),
    prm.Integer: (-3, 7),
    prm.Unsigned: (3, 4000000000),
    prm.Switch: (True, False),
    prm.Text: ("a", "b\ud800\U0001f600é"),
    prm.Point: ((1.0, -2.0), (3.5, 4.0)),
    prm.IntegerPoint: ((1, -2), (3, 4)),
}


def body(project: prm.Project) -> str:
    """The text without the time of writing."""
    return "\n".join(line for line in project.text.splitlines() if not line.startswith("FileTimestamp"))
