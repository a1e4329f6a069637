"""Builds a project from nothing."""

import prm


def build() -> prm.Project:
    # [build]
    position = prm.Compound("position", [prm.Number("x"), prm.Number("y")], keyframe_together=True)
    logo = prm.Group("logo", [position, prm.Number("opacity", 1.0), prm.Text("title", "Hello")])
    project = prm.Project([logo])
    position.set((0.0, 0.0), at=0)
    position.set((10.0, 4.0), at=10)
    position.set((2.0, 0.0), at=0, view="Right")
    for path, value in [(one.path, one.value(5, view="Right")) for one in project.walk(parts=True)]:
        print(path, value)
    # [build]
    return project


if __name__ == "__main__":
    print(build().text)
