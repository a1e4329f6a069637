"""What each class does, from outside."""

import inspect
import math
import re
import tempfile
import unittest

import numpy as np
import prm
from support import CHANGED, CLIP, KINDS, LOTTIE, body


class Lines(unittest.TestCase):
    def test_a_session_on_a_file(self):
        project = prm.Project.open(CLIP)
        opacity = project["logo.opacity"]
        self.assertEqual(opacity.value(10), 0.5)
        self.assertEqual(opacity.value(12, view="Right"), opacity.value(12, view=1))
        curve = opacity.sample(np.arange(0, 96, 0.5))
        self.assertEqual(curve.shape, (192,))
        self.assertEqual(list(opacity.keys["time"]), [0, 10, 24.5])
        before = body(project)
        with project.edit("Slow the fade down"):
            opacity.set(0.25, at=24)
            opacity.insert(at=18)
            project["logo"].retime(scale=2, pivot=0)
            opacity.simplify(error=0.001)
        after = body(project)
        self.assertEqual(opacity.keys["time"][-1], 49)
        self.assertEqual(project.undo(), "Slow the fade down")
        self.assertEqual(body(project), before)
        self.assertEqual(project.redo(), "Slow the fade down")
        self.assertEqual(body(project), after)
        frames = []
        subscription = opacity.on_change(lambda change: frames.extend(change.extent.frames().within(0, 100)))
        opacity.set(0.5, at=49)
        self.assertIn(49, frames)
        subscription.close()
        self.assertIn("view 1", str(opacity.explain(12, view="Right")))
        self.assertLessEqual(opacity.bounds(0, 96)[0], curve.min())
        self.assertIn(60, opacity.constant_around(60))
        with tempfile.TemporaryDirectory() as folder:
            project.save(folder + "/later.prm", timestamp=0)
            self.assertEqual(prm.Project.open(folder + "/later.prm")["logo.opacity"].value(30), opacity.value(30))

    def test_errors_say_what_is_wrong(self):
        project = prm.Project.open(CLIP)
        opacity, title = project["logo.opacity"], project["logo.title"]
        rows = [
            (KeyError, "logo.opacity", lambda: project["logo.opacty"]),
            (KeyError, "Right", lambda: opacity.value(0, view="Rigth")),
            (ValueError, "time", lambda: opacity.value(math.nan)),
            (ValueError, "times", lambda: opacity.sample([0, math.nan])),
            (ValueError, "at=", lambda: opacity.set(1.0)),
            (ValueError, "one value", lambda: prm.Number("n", keyframed=False).set(1.0, at=0)),
            (ValueError, "no keyframe", lambda: opacity.delete(at=3)),
            (ValueError, "scale", lambda: opacity.retime(scale=0)),
            (ValueError, "ascending", lambda: opacity.set_keyframes([(1, 0), (1, 2)])),
            (ValueError, "ease-in|In", lambda: opacity.ease("sine-inn-out")),
            (ValueError, "kind", lambda: opacity.interpolate("Bezir", at=0)),
            (ValueError, "keyframe", lambda: opacity.paste("no line")),
            (TypeError, "Text", lambda: title.set(3, at=0)),
            (TypeError, "Number", lambda: opacity.set("x", at=0)),
            (TypeError, "Switch", lambda: prm.Switch("s").set(1.5)),
            (ValueError, "4294967295", lambda: prm.StaticUnsigned("s", -1)),
            (ValueError, "2147483647", lambda: prm.Integer("i").set(2**31, at=0)),
            (TypeError, "Text", lambda: prm.StaticText("s", 4)),
            (TypeError, "group", lambda: prm.ChangedSince(opacity)),
            (TypeError, "Number", lambda: project.find("logo.title", prm.Number)),
            (ValueError, "found", lambda: project["logo"].add(project["logo.shadow"])),
            (OSError, "", lambda: prm.Project.open("/no/such/file")),
            (OSError, "/no", lambda: project.save("/no/such/folder/file")),
            (ValueError, "text", lambda: prm.Project.from_text(b"\x00 no project")),
        ]
        for kind, words, call in rows:
            with self.subTest(words=words), self.assertRaisesRegex(kind, words):
                call()


class Kinds(unittest.TestCase):
    def test_every_kind_keeps_its_values(self):
        for kind, (first, second) in KINDS.items():
            with self.subTest(kind.__name__):
                one = kind("one", first)
                self.assertEqual((one.default, one.value(3)), (first, first))
                one.set(first, at=0)
                one.set(second, at=10)
                self.assertEqual((one.value(0), one.value(10)), (first, second))
                self.assertEqual(one.sample(np.zeros((2, 3))).shape[:2], (2, 3))
                np.testing.assert_array_equal(one.sample([0, 10]), one.keys["value"])
                other = kind("other")
                other.keys = one.keys
                np.testing.assert_array_equal(other.keys, one.keys)
                other.paste(one.copy(), at=20)
                self.assertEqual(list(other.times()), [0, 10, 20, 30])

    def test_times_before_all_frames_are_times(self):
        for time in -0.4, -1, -24:
            for kind, (first, second) in KINDS.items():
                with self.subTest(kind.__name__, time=time):
                    one, part = kind("one", first), kind("part", first, splittable=False)
                    pair = prm.Compound("pair", [part])
                    project = prm.Project([prm.Group("g", [one, pair])])
                    one.set(second, at=time, view=1)
                    pair.set((second,), at=time)
                    self.assertEqual((list(one.times(1)), list(part.times())), ([time], [time]))
                    self.assertEqual((one.static_value(), one.value(time, 1), pair.value(time)), (first, second, (second,)))
                    project.undo()
                    project.undo()
                    self.assertEqual((one.views, list(part.times())), ([], []))

    def test_every_inherited_method_of_every_class(self):
        given = {"time": 1.0, "at": 1.0, "start": 1.0, "end": 5.0, "to": 2.0, "view": 0, "error": 0.1, "radius": 1.0,
                 "tolerance": 0.1, "easing": "linear", "kind": "Linear", "text": "", "times": [0.0], "callback": print, "keys": [],
                 "name": "n"}
        values = {kind: value for kind, (value, _) in KINDS.items()}
        refused = []
        values.update({prm.StaticText: "a", prm.StaticUnsigned: 1})
        for one in [kind("p") for kind in values] + [prm.Compound("c", [prm.Number("n")])]:
            given["value"] = values.get(type(one), (0.5,))
            animated = hasattr(one, "set")
            for name, member in inspect.getmembers(type(one)):
                if name.startswith("_"):
                    continue
                if animated:
                    one.set(given["value"], at=1)
                with self.subTest(f"{type(one).__name__}.{name}"):
                    if not callable(member):
                        getattr(one, name)
                        continue
                    signature = member.__doc__.splitlines()[0]
                    arguments = re.split(r", (?=\w+: )", signature[signature.index("(") + 1 : signature.index(") ->")])
                    needed = [argument.split(":")[0] for argument in arguments if " = " not in argument]
                    try:
                        getattr(one, name)(*[given[argument] for argument in needed if argument != "self"])
                    except ValueError:
                        refused.append(name)
        self.assertLessEqual(set(refused), {"set", "adjust", "smooth", "ease", "flatten", "set_handles"})


class Structure(unittest.TestCase):
    def test_mappings(self):
        x, y = prm.Number("x"), prm.Number("y")
        group = prm.Group("logo", [prm.Compound("position", [x, y]), prm.Text("title")])
        project = prm.Project([group])
        self.assertEqual((list(project), list(group), len(group)), (["logo"], ["position", "title"], 2))
        self.assertEqual(project["logo.position.x"], x)
        self.assertIn("logo.title", project)
        self.assertNotIn("logo.nothing", project)
        self.assertIsNone(project.get("nothing"))
        self.assertEqual([one.path for one in project.walk(parts=True)],
                         ["logo.position", "logo.position.x", "logo.position.y", "logo.title"])
        self.assertEqual(len({x, project["logo.position.x"]}), 1)
        del group["title"]
        self.assertEqual(list(group), ["position"])
        project.undo()
        self.assertEqual(list(group), ["position", "title"])
        group.add(prm.Switch("on"), position=0)
        self.assertEqual(list(group), ["on", "position", "title"])
        x.keys = [(0, 1.0)]
        project.view_names = ["Right", "R"]
        x.set(2.0, at=0, view="R")
        self.assertEqual((x.value(0, view="Right"), x.value(0, view="R")), (1.0, 2.0))

    def test_what_changes_nothing_is_no_step(self):
        def fresh():
            names = "number", "held", "x", "y"
            one = {name: prm.Number(name, 1.0, keyframed=name != "held") for name in names}
            one["pair"] = prm.Compound("pair", [one["x"], one["y"]])
            one["project"] = prm.Project([prm.Group("g", [one["number"], one["held"], one["pair"]])])
            for name in "number", "x":
                one[name].set(1.0, at=0)
                one[name].split(1)
            one["held"].set(1.0)
            return one

        for is_step, edit in [
            (False, "number.set(1.0, at=0)"), (True, "number.set(2.0, at=0)"), (False, "held.set(1.0)"),
            (False, "number.move(0, 0)"), (False, "number.retime(shift=0)"), (False, "number.adjust(scale=1)"),
            (False, "number.__setattr__('hidden', False)"), (False, "number.__setattr__('keys', number.keys)"),
            (False, "number.split(1)"), (True, "number.split(2)"), (True, "pair.split(1)"), (False, "x.split(1)"),
            (True, "pair.set((1.0, 1.0), at=0)"), (False, "number.clear(view=2)"), (False, "number.insert(0)"),
            (False, "project['g'].__setattr__('display_name', project['g'].display_name)"),
            (True, "number.delete_view(1)"),
        ]:  # fmt: skip
            with self.subTest(edit):
                one = fresh()
                project = one["project"]
                before = body(project)
                one["held"].set(2.0)
                project.undo()
                eval(edit, {}, one)
                self.assertEqual((body(project) != before, project.redo_text is None), (is_step, is_step))
                if is_step:
                    project.undo()
                self.assertEqual(body(project), before)

    def test_masters_views_and_flags_are_undone(self):
        a, b = prm.Number("a"), prm.Number("b")
        project = prm.Project([prm.Group("g", [a, b])])
        a.keys = [(0, 0.0), (10, 1.0, "Bezier", 0.5, 0, 0.5, 1)]
        before = body(project)
        b.master = a
        self.assertEqual((b.master, a.constrained, b.value(5)), (a, [b], 0.5))
        b.master = None
        a.set(4.0, at=5, view="Right")
        self.assertEqual((a.views, a.value(10, view=1), a.value(5)), ([0, 1], 1.0, 0.5))
        a.hidden = a.locked = True
        a.extrapolation_after = "Linear"
        with self.assertRaises(ValueError):
            b.master = a
            a.master = b
        while project.undo_text != "Replace 2 keyframes of g.a":
            project.undo()
        self.assertEqual(body(project), before)

    def test_what_has_changed_since(self):
        opacity, count = prm.Number("opacity"), prm.StaticUnsigned("count", 3)
        opacity.keys = [(0, 0.0), (10, 1.0), (20, 0.0), (30, 1.0)]
        logo = prm.Group("logo", [opacity, count, prm.StaticText("label", "a")])
        project = prm.Project([logo])
        changes = prm.ChangedSince(project)
        steps = [
            ("nothing", lambda: None, ([], [], [], [])),
            ("values", lambda: (opacity.set(5.0, at=20), count.set_static(4)), ([opacity, count], [], [], [])),
            ("forth and back", lambda: (count.set_static(5), project.undo()), ([], [], [], [])),
            ("undo", lambda: (project.undo(), project.undo()), ([opacity, count], [], [], [])),
            ("went", lambda: logo.__delitem__("count"), ([], [], ["logo.count"], [])),
            ("came", lambda: project.undo(), ([count], [count], [], [])),
            ("names", lambda: setattr(logo, "display_name", "L"), ([], [], [], [logo])),
            ("a group", lambda: project.__delitem__("logo"), ([], [], ["logo"], [])),
        ]
        for name, act, expected in steps:
            with self.subTest(name):
                act()
                since = changes.take()
                found = (since.parameters, since.came, since.went, since.renamed)
                self.assertEqual([sorted(map(repr, one)) for one in found], [sorted(map(repr, one)) for one in expected])
                self.assertEqual(bool(since), any(expected))
                if name == "values":
                    self.assertEqual([(one.start, one.end) for one in since.frames(of=opacity)], [(10, 30)])
                    self.assertIn(0, since.frames())
        project.close()
        with self.assertRaises(ReferenceError):
            changes.take()

    def test_merging_keeps_kinds_and_defaults(self):
        parts = [kind("p" + kind.__name__) for kind in KINDS] + [prm.StaticText("st", "a"), prm.StaticUnsigned("su", 4)]
        compound = prm.Compound("c", [prm.Number("x"), prm.Integer("y", 3)])
        project = prm.Project([prm.Group("g", [*parts, prm.Number("unset", 0.25), compound])])
        compound.set((1.0, 2), at=3)
        for part, (value, _) in zip(parts, KINDS.values()):
            part.set(value, at=2)
        text, before, members = project.text, body(project), [repr(one) for one in project.walk(parts=True)]
        theirs = text.replace('st.value="a"', 'st.value="b"').replace("Key( 3, 1,", "Key( 3, 5,")
        self.assertEqual(project.merge(text.encode(), theirs.encode()), [])
        self.assertEqual([repr(one) for one in project.walk(parts=True)], members)
        self.assertEqual((project["g.st"].value(), compound.value(3), project["g.unset"].value()), ("b", (5.0, 2), 0.25))
        project.undo()
        self.assertEqual(body(project), before)

    def test_refused(self):
        number, inner = prm.Number("n"), prm.Group("inner")
        project = prm.Project([prm.Group("g", [number, inner])])
        fixed, keyed = prm.Number("fixed", keyframed=False), prm.Number("keyed")
        keyed.set(1.0, at=3)
        group = prm.Group("h", [keyed])
        for name, error, call in [
            ("in two groups", ValueError, lambda: prm.Group("other", [number])),
            ("in itself", ValueError, lambda: inner.add(inner)),
            ("a group in a compound", TypeError, lambda: prm.Compound("c", [prm.Group("q")])),
            ("a fraction as a whole number", TypeError, lambda: prm.Integer("i").set(np.float32(3.7))),
            ("numpy's truth as a number", TypeError, lambda: number.set(np.True_)),
            ("bytes as a point", TypeError, lambda: prm.Point("i").set(b"ab")),
            ("a text as a time", TypeError, lambda: number.set_keyframes([("a", 1)])),
            ("a keyframe of one value", ValueError, lambda: fixed.insert(3)),
            ("pasted into one value", ValueError, lambda: fixed.paste(keyed.copy())),
            ("a time before all of one value", ValueError, lambda: fixed.set(1.0, at=-24)),
            ("handles of no keyframe", ValueError, lambda: keyed.handles(2)),
            ("flat at no keyframe", ValueError, lambda: keyed.flatten(2)),
            ("retimed out of range", ValueError, lambda: keyed.retime(shift=1e10)),
            ("retimed without an order", ValueError, lambda: keyed.retime(scale=0)),
            ("a group retimed out of range", ValueError, lambda: group.retime(shift=1e10)),
            ("its own master", ValueError, lambda: setattr(keyed, "master", keyed)),
            ("a name that no file has", ValueError, lambda: project.save("/tmp/a\0b")),
        ]:
            with self.subTest(name), self.assertRaises(error):
                call()
        number.keys = [(0, 1.0), (10, 2.0)]
        other = prm.Number("m")
        other.keys = number.keys[["value", "time", "kind", "x1", "y1", "x2", "y2"]]
        np.testing.assert_array_equal(other.keys, number.keys)
        alone = prm.Number("alone", 3.0)
        project["g"].add(alone)
        alone.adjust(scale=2)
        project.undo()
        self.assertEqual(alone.value(), 3.0)

    def test_exchange(self):
        project = prm.Project.open(CLIP)
        before = body(project)
        self.assertEqual(project.merge(base=CLIP, theirs=CHANGED), [])
        self.assertEqual(project["logo.opacity"].times()[1], 12)
        self.assertEqual((project.undo(), body(project)), ("Merge", before))
        mine = prm.Project.open(CLIP)
        mine["logo.opacity"].move(10, 11)
        conflicts = mine.merge(base=CLIP, theirs=CHANGED)
        self.assertEqual([conflict.path for conflict in conflicts], ["logo.opacity"])
        self.assertIn("10 moved to 12", " ".join(map(str, prm.diff(CLIP, CHANGED))))
        lottie = prm.Project.import_animation(LOTTIE)
        self.assertIn("Beam", lottie)
        table = lottie.export_table("Beam.transform.rotation", times=[0, 12])
        self.assertEqual(len(table.splitlines()), 3)
        self.assertIn("@keyframes", lottie.export_style_sheet(24))
        switch = prm.Switch("on")
        switch.keys = [(0, False), (10, True)]
        switched = prm.Project([prm.Group("g", [switch])])
        self.assertEqual(switched.export_table(times=[0, 5, 10]).splitlines()[1:], ["0,0", "5,0", "10,1"])


if __name__ == "__main__":
    unittest.main()
