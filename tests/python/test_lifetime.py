"""Objects that end, callbacks, and threads."""

import collections
import contextlib
import copy
import gc
import pickle
import random
import sys
import subprocess
import threading
import time
import unittest
import weakref

import numpy as np
import prm
from support import CLIP, KINDS, body


def made():
    opacity = prm.Number("opacity")
    opacity.keys = [(0, 0.0), (10, 1.0)]
    return prm.Project([prm.Group("logo", [opacity])]), opacity


class Undo(unittest.TestCase):
    def test_a_block_that_raises_leaves_everything_as_it_was(self):
        project, opacity = made()
        before, steps = body(project), project.undo_text
        with self.assertRaises(ZeroDivisionError), project.edit("Fail"):
            opacity.set(3.0, at=5)
            with project.edit("inner"):
                project["logo"].add(prm.Text("new"))
                opacity.hidden = True
            del project["logo"]["opacity"]
            1 / 0
        self.assertEqual((body(project), project.undo_text), (before, steps))

    def test_an_edit_in_a_callback_is_part_of_the_step(self):
        project, opacity = made()
        other = prm.Number("other")
        project["logo"].add(other)
        before = body(project)

        def follow(change):
            if not project.is_replaying:
                other.set(opacity.value(5), at=5)

        subscription = opacity.on_change(follow)
        opacity.set(3.0, at=5)
        self.assertEqual(other.value(5), 3.0)
        project.undo()
        self.assertEqual(body(project), before)
        project.redo()
        self.assertEqual((opacity.value(5), other.value(5)), (3.0, 3.0))
        subscription.close()

    def test_what_a_callback_raises_comes_out_of_the_edit(self):
        project, opacity = made()
        other = prm.Number("other")
        project["logo"].add(other)
        before = body(project)

        def fail(change):
            other.set(1.0, at=1)
            raise KeyError("mine")

        subscription = opacity.on_change(fail)
        with self.assertRaisesRegex(KeyError, "mine"):
            opacity.set(3.0, at=5)
        self.assertEqual(body(project), before)
        subscription.close()

    def test_a_callback_that_edits_without_end_is_refused(self):
        project, opacity = made()
        before = body(project)
        watching = opacity.on_change(lambda change: opacity.set(opacity.value(0) + 1, at=0))
        with self.assertRaises(RecursionError):
            opacity.set(5.0, at=0)
        del watching
        self.assertEqual(body(project), before)
        opacity.set(5.0, at=0)
        project.undo()
        self.assertEqual(body(project), before)

    def test_a_group_announces_its_compounds_and_their_parts(self):
        x = prm.Number("x")
        project = prm.Project([prm.Group("g", [prm.Compound("position", [x, prm.Number("y")])])])
        wrong = set()
        subscription = project.on_change(
            lambda change: wrong.update(one.path for one in change.extent.parameters if 5 in change.extent.frames(of=one)))
        for name, act in [("set", lambda: x.set(3.0, at=4)), ("extrapolated", lambda: setattr(x, "extrapolation_after", "Linear")),
                          ("cleared", x.clear), ("moved", lambda: x.retime(scale=2))]:
            with self.subTest(name):
                x.keys = [(0, 0.0), (4, 1.0)]
                wrong.clear()
                act()
                self.assertIn("g.position.x", wrong)
        subscription.close()

    def test_refused_where_it_would_be_lost(self):
        project, opacity = made()
        with project.edit("open"):
            for call in (project.undo, project.redo, project.close, project.forget_steps):
                with self.subTest(call.__name__), self.assertRaises(RuntimeError):
                    call()

    def test_blocks_that_do_not_end_in_order(self):
        project, opacity = made()
        before = body(project)
        for name, error in [("ends with the one around it", None), ("is undone with it", ValueError())]:
            with self.subTest(name):
                outer, inner = project.edit("outer"), project.edit("inner")
                outer.__enter__()
                inner.__enter__()
                opacity.set(3.0, at=5)
                outer.__exit__(error and ValueError, error, None)
                with self.assertRaises(RuntimeError):
                    inner.__exit__(None, None, None)
                self.assertEqual(project.undo(), None if error else "outer")
                self.assertEqual(body(project), before)
        project.edit("dropped").__enter__()
        opacity.set(3.0, at=5)
        self.assertEqual(project.undo_text, "Set value of logo.opacity")
        project.undo()

        blocks = []

        def misuse(change):
            if not project.is_replaying:
                blocks.append(project.edit("in a callback"))
                blocks[-1].__enter__()
                blocks[0].__exit__(ValueError, ValueError(), None)

        subscription = opacity.on_change(misuse)
        with self.assertRaises(RuntimeError), project.edit("around"):
            opacity.set(3.0, at=5)
            opacity.set(4.0, at=5)
        subscription.close()
        self.assertEqual((body(project), project.undo_text), (before, None))


class Ends(unittest.TestCase):
    def test_a_parameter_keeps_its_project(self):
        opacity = prm.Project.open(CLIP)["logo.opacity"]
        gc.collect()
        self.assertEqual(opacity.value(10), 0.5)
        opacity.set(1.0, at=3)

    def test_dead_handles_raise(self):
        def closed():
            project = prm.Project.open(CLIP)
            found = [project["logo"], project["logo.opacity"], project["logo.title"]]
            project.close()
            return found

        def removed():
            group = prm.Group("g", [prm.Number("n")])
            found = group["n"]
            del group["n"]
            gc.collect()
            return [found]

        def forgotten():
            project, _ = made()
            del _
            found = project["logo.opacity"]
            del project["logo"]["opacity"]
            self.assertTrue(found.alive)
            project.forget_steps()
            return [found]

        for dead in closed() + removed() + forgotten():
            with self.subTest(repr(dead)):
                self.assertFalse(dead.alive)
                with self.assertRaises(ReferenceError):
                    dead.path
                with self.assertRaises(ReferenceError):
                    dead.retime(scale=2) if hasattr(dead, "retime") else dead.set(1)
        project = prm.Project.open(CLIP)
        project.close()
        for call in (lambda: project.text, lambda: project["logo"], lambda: project.undo(), lambda: project.merge(CLIP, CLIP)):
            with self.assertRaises(ReferenceError):
                call()

    def test_a_conversion_may_drop_everything(self):
        class Value:
            def __float__(self):
                project.close()
                return 1.0

        def rows():
            yield 0, 1.0
            project.close()
            yield 1, 2.0

        class Early(prm.Number):
            def __init__(self):
                self.name

        for name, call in [
            ("value", lambda one: one.set(Value())),
            ("static value", lambda one: one.set_static(Value())),
            ("rows", lambda one: one.set_keyframes(rows())),
            ("before its constructor", lambda one: Early()),
        ]:
            project = prm.Project([prm.Group("g", [prm.Number("n")])])
            with self.subTest(name), self.assertRaises(ReferenceError):
                call(project["g.n"])

    def test_endless_edits_in_no_project(self):
        number = prm.Number("n")
        subscription = number.on_change(lambda change: number.set(number.value(0) + 1, at=0))
        with self.assertRaises(RecursionError):
            number.set(1.0, at=0)
        subscription.close()

    def test_the_end_with_threads_that_work(self):
        saving = """
def save():
    mine = prm.Project.open(clip)
    while True: mine.save(path)
threading.Thread(target=save, daemon=True).start()
time.sleep(0.2)
"""
        sampling = """
number = prm.Number("n", 1.0)
def sample():
    while not stop.is_set(): number.sample(range(1000))
thread = threading.Thread(target=sample, daemon=True)
thread.start()
"""
        several = """
def work():
    while True:
        number = prm.Number("n")
        number.keys = [(0, 1.0), (2, 3.0)]
        number.sample(range(1000)), number.keys, prm.Project.open(clip)
for i in range(4): threading.Thread(target=work, daemon=True).start()
time.sleep(0.05)
"""
        for name, script in [("saving", saving), ("sampling, joined by an older exit function", sampling),
                             *[("several at once", several)] * 10]:
            beginning = f"""import atexit, threading, time, os, tempfile
stop = threading.Event()
def end():
    stop.set()
    if "thread" in globals(): thread.join()
atexit.register(end)
import prm
clip, path = {str(CLIP)!r}, os.path.join(tempfile.mkdtemp(), "x.prm")
"""
            with self.subTest(name):
                ended = subprocess.run([sys.executable, "-c", beginning + script], timeout=60)
                self.assertEqual(ended.returncode, 0)

    def test_objects_without_a_value_are_not_made(self):
        project, opacity = made()
        changes = []
        subscription = opacity.on_change(changes.append)
        opacity.set(1.0, at=1)
        for one in (project, opacity, subscription, changes[0], project["logo"], opacity.explain(3), project.edit()):
            with self.subTest(repr(one)):
                for call in (copy.copy, lambda one: pickle.dumps(one, 0)):
                    with self.assertRaises(TypeError):
                        call(one)
                with contextlib.suppress(TypeError):
                    empty = type(one).__new__(type(one))
                    with self.assertRaises((ReferenceError, RuntimeError)):
                        empty.on_change(print)

    def test_subscriptions_end_when_they_die(self):
        project, opacity = made()
        seen = []
        subscription = opacity.on_change(seen.append)
        opacity.set(1.0, at=1)
        count = len(seen)
        self.assertGreater(count, 0)
        with self.assertRaises(RuntimeError):
            seen[0].extent
        del subscription
        opacity.set(2.0, at=1)
        self.assertEqual(len(seen), count)

        class Watcher:
            def __init__(self):
                self.subscription = opacity.on_change(self.changed)

            def changed(self, change):
                self.subscription.close()

        watcher = Watcher()
        opacity.set(3.0, at=1)  # ends itself while it is called
        self.assertFalse(watcher.subscription.active)
        watcher = Watcher()
        alive = weakref.ref(watcher)
        del watcher
        gc.collect()
        self.assertIsNone(alive(), "a callback that refers to its own subscription is collected")

    def test_a_callback_may_drop_everything(self):
        project, opacity = made()
        held = [project, opacity]
        subscription = opacity.on_change(lambda change: held.clear())
        del project
        opacity.set(1.0, at=4)
        del opacity
        gc.collect()
        del subscription

    def test_many_objects_in_any_order(self, count=2000):
        choose = random.Random(1)
        held = []
        for _ in range(count):
            kind = choose.choice(list(KINDS))
            what = choose.randrange(5)
            if what == 0:
                held.append(prm.Group("g", [kind("p", KINDS[kind][0])]))
            elif what == 1:
                held.append(prm.Project([prm.Group("g", [prm.Compound("c", [kind("a"), kind("b")])])]))
            elif what == 2 and held:
                one = choose.choice(held)
                held.append(one.walk(parts=True)[0] if hasattr(one, "walk") and one.walk() else kind("q"))
            elif what == 3 and held and hasattr(held[-1], "on_change"):
                held.append(held[-1].on_change(print))
            else:
                held.append(kind("p"))
            while len(held) > 60:
                held.pop(choose.randrange(len(held)))
        choose.shuffle(held)
        held.clear()
        gc.collect()


class Threads(unittest.TestCase):
    def in_thread(self, call):
        result = []

        def run():
            try:
                result.append(call())
            except Exception as error:
                result.append(error)

        thread = threading.Thread(target=run)
        thread.start()
        thread.join()
        return result[0]

    def test_other_threads_evaluate_and_do_not_edit(self):
        project, opacity = made()
        self.assertEqual(self.in_thread(lambda: opacity.value(5)), 0.5)
        for call in (lambda: opacity.set(1, at=0), lambda: project["logo"], lambda: project.text, project.undo,
                     project.edit().__enter__, lambda: project.root):
            self.assertIsInstance(self.in_thread(call), RuntimeError)
        self.assertIsNone(self.in_thread(lambda: (project.take_over(), opacity.set(0.25, at=5))[1]))
        self.assertEqual(opacity.value(5), 0.25)
        with self.assertRaises(RuntimeError):
            opacity.set(1, at=0)

    def test_dropped_on_another_thread(self):
        held = [prm.Number("n"), prm.Project([prm.Group("g", [prm.Number("n")])])]
        self.in_thread(held.clear)
        prm.Number("next").set(1.0, at=0)

    def test_sampling_beside_edits(self, seconds=0.5):
        project, opacity = made()
        other = prm.Point("position")
        project["logo"].add(other)
        other.keys = [(0, (0, 0)), (10, (1, 1))]
        stop = threading.Event()
        wrong = []

        def sample(one):
            times = np.linspace(-5, 30, 500)
            while not stop.is_set():
                if not np.isfinite(one.sample(times)).all() or one.value(3) is None:
                    wrong.append(one)

        handed = collections.deque(maxlen=100)

        def drop():
            while not stop.is_set():
                with contextlib.suppress(IndexError):
                    handed.popleft()

        threads = [threading.Thread(target=sample, args=(one,)) for one in (opacity, other, opacity, other)]
        threads.append(threading.Thread(target=drop))
        for thread in threads:
            thread.start()
        end = time.monotonic() + seconds
        edits = 0
        while time.monotonic() < end:
            with project.edit("both"):
                opacity.set(edits % 7, at=edits % 20)
                other.set((edits % 5, 1), at=edits % 11, view=edits % 3)
                opacity.simplify(error=0.01)
            project.undo()
            project["logo"].add(prm.Number("extra"))
            handed.extend((project["logo"], prm.ChangedSince(project)))
            if edits % 50 == 0:
                project.forget_steps()
            edits += 1
        stop.set()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])
        self.assertGreater(edits, 3)

    def test_ends_beside_sampling(self):
        for _ in range(20):
            project = prm.Project.open(CLIP)
            opacity = project["logo.opacity"]
            times = np.linspace(0, 50, 20000)

            def sample():
                try:
                    while True:
                        opacity.sample(times)
                except ReferenceError:
                    return "ended"

            results = []
            threads = [threading.Thread(target=lambda: results.append(sample())) for _ in range(2)]
            for thread in threads:
                thread.start()
            time.sleep(0.002)
            project.close()
            for thread in threads:
                thread.join()
            self.assertEqual(results, ["ended", "ended"])


if __name__ == "__main__":
    if len(sys.argv) > 1 and sys.argv[1].isdigit():
        Threads().test_sampling_beside_edits(seconds=int(sys.argv[1]))
    else:
        unittest.main()
