"""Opens the project text of any application, slows an animation down, and saves it."""

import sys

import numpy as np

import prm


def slow_down(path: str, later: str) -> None:
    # [open]
    project = prm.Project.open(path)
    for finding in project.findings:
        print(finding.line, finding.reason)
    opacity = project["logo.opacity"]  # or project.find("logo.opacity", prm.Number), which type checkers follow
    print(opacity.value(12), opacity.value(12, view="Right"))
    curve = opacity.sample(np.arange(0, 96, 0.5))
    print(curve.max(), opacity.keys["time"])
    # [open]
    # [edit]
    with project.edit("Slow the fade down"):
        opacity.set(0.25, at=24)
        opacity.insert(at=18)
        project["logo"].retime(scale=2, pivot=0)
        opacity.simplify(error=0.001)
    print(project.undo(), "is undone")
    project.redo()
    # [edit]
    # [answers]
    print(opacity.explain(12, view="Right"))
    print(opacity.bounds(0, 96), opacity.constant_around(40))
    # [answers]
    project.save(later)


if __name__ == "__main__":
    slow_down(sys.argv[1], sys.argv[2])
