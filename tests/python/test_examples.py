"""The examples run; sampled arrays are what the program prm computes."""

import contextlib
import io
import os
import pathlib
import runpy
import struct
import subprocess
import tempfile
import unittest

import numpy as np
import prm
from support import CLIP, LOTTIE, ROOT

TOOL = pathlib.Path(os.environ.get("PRM_TOOL", ROOT / "build/release/bin/prm"))


def bits(numbers):
    return [struct.pack("<d", float(number)) for number in numbers]


class Examples(unittest.TestCase):
    def run_example(self, name, call, *arguments):
        with contextlib.redirect_stdout(io.StringIO()) as printed:
            result = runpy.run_path(str(ROOT / "python/examples" / name))[call](*arguments)
        return result, printed.getvalue()

    def test_slow_down(self):
        with tempfile.TemporaryDirectory() as folder:
            _, printed = self.run_example("slow_down.py", "slow_down", str(CLIP), folder + "/later.prm")
            self.assertIn("Slow the fade down is undone", printed)
            self.assertEqual(prm.Project.open(folder + "/later.prm")["logo.opacity"].times()[-1], 49)

    def test_cache(self):
        self.assertEqual(self.run_example("cache.py", "frames_to_draw")[0], list(range(11, 31)))
        hashes = self.run_example("cache.py", "hashes_to_renew")[0]
        title = prm.Text("title", "Hello")
        title.set("Good bye", at=40)
        self.assertEqual(hashes, {"logo.title": title.hash_range(), "logo.visible": prm.Switch("v", True).hash_range()})

    def test_build(self):
        project, printed = self.run_example("build.py", "build")
        self.assertEqual(printed.splitlines()[1], "logo.position.x 6.0")
        self.assertEqual(prm.Project.from_text(project.text)["logo.position.x"].value(5, view="Right"), 6.0)


class BitForBit(unittest.TestCase):
    def test_sampled_arrays_equal_prm_eval(self):
        with tempfile.TemporaryDirectory() as folder:
            path = folder + "/clip.prm"
            prm.Project.import_animation(LOTTIE).save(path)
            project = prm.Project.open(path)
            compared = 0
            for one in project.walk():
                if not isinstance(one, prm.Number):
                    continue
                lines = subprocess.run([TOOL, "eval", path, one.path, "--frames", "0..96x0.5", "--csv"], text=True, check=True,
                                       capture_output=True).stdout.splitlines()
                values = [line.rsplit(",", 1)[1] for line in lines[1:]]
                with self.subTest(one.path):
                    self.assertEqual(bits(one.sample(np.arange(0, 96.5, 0.5))), bits(values))
                    compared += len(values)
            self.assertGreater(compared, 1000)


if __name__ == "__main__":
    unittest.main()
