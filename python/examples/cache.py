"""Drops the frames of a cache that an edit has made wrong."""

import prm


def frames_to_draw() -> list[int]:
    # [cache]
    opacity = prm.Number("opacity")
    opacity.keys = [(0, 1.0), (10, 0.0), (20, 1.0)]
    pictures = {frame: opacity.value(frame) for frame in range(31)}

    def drop(change: prm.Change) -> None:
        wrong = change.extent.frames()
        for frame in [frame for frame in pictures if frame in wrong]:
            del pictures[frame]

    subscription = opacity.on_change(drop)
    opacity.set(0.5, at=20)
    # [cache]
    subscription.close()
    return [frame for frame in range(31) if frame not in pictures]


def hashes_to_renew() -> dict[str, str]:
    # [since]
    logo = prm.Group("logo", [prm.Number("opacity", 1.0), prm.Text("title", "Hello")])
    project = prm.Project([logo])
    hashes = {one.path: one.hash_range() for one in project.walk()}
    changes = prm.ChangedSince(project)

    logo["title"].set("Good bye", at=40)
    logo.add(prm.Switch("visible", True))
    del logo["opacity"]
    since = changes.take()
    for path in since.went:
        del hashes[path]
    for one in since.parameters:
        hashes[one.path] = one.hash_range()
    # [since]
    return hashes


if __name__ == "__main__":
    print(frames_to_draw(), sorted(hashes_to_renew()))
