#!/usr/bin/env python3
"""program_test.py WINE EXE PRESS_CTRL_C LINUX_PROGRAM: lumiset.exe does what the program does on Linux, byte for byte."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

WINE, EXE, PRESS_CTRL_C, LINUX = sys.argv[1:5]
UNICODE = "Grüße, 世界 😀"
PLAIN = ("-q", "-e", "Outline")


def on_windows(path):
    return "Z:" + str(path).replace("/", "\\")


class Run:
    """Output goes to files: programs in Wine's background would keep a pipe open."""

    def __init__(self, *words, input=b"", check=True, cwd=None, env=None):
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            process = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=out, stderr=err, cwd=cwd,
                                       env=env and os.environ | env)
            process.communicate(input, timeout=120)
            for stream in (out, err):
                stream.seek(0)
            self.status, self.out, self.err = process.returncode, out.read(), err.read().decode()
        if check and self.status != 0:
            raise AssertionError(f"{words} ended with {self.status}: {self.err}{self.out[:300]}")


def exe(*words, **more):
    return Run(WINE, "--direct", EXE, *words, **more)


def linux(*words, **more):
    return Run(LINUX, *words, **more)


class Program(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = Path(holder.name)

    def bytes_of_both(self, name, *words, **more):
        """What the two write to files of that name."""
        written = []
        for run, prefix in ((exe, "w_"), (linux, "l_")):
            run("render", *words, prefix + name, "-q", cwd=self.folder, **more)
            written.append((self.folder / (prefix + name)).read_bytes())
        return written

    def test_pipes_carry_the_same_bytes(self):
        for words in (["-e", "Old TV", "--preset", "Snow"], ["-e", "Outline", "--bits", "10", "--depth", "float"]):
            clip = linux("render", "scene:160x90:0.4", "-", *PLAIN).out
            with self.subTest(words=words):
                self.assertTrue(exe("render", "-", "-", "-q", *words, input=clip).out ==
                                linux("render", "-", "-", "-q", *words, input=clip).out)

    def test_texts_have_the_line_ends_of_linux(self):
        for words in (["list"], ["show", "Old TV", "--json"], ["render", "--help"]):
            with self.subTest(words=words):
                self.assertEqual(exe(*words).out, linux(*words).out)
        wrong = exe("render", "nothing.png", "x.png", *PLAIN, check=False, cwd=self.folder)
        self.assertEqual((wrong.status, wrong.err.startswith("lumiset: ")), (1, True), wrong.err)

    def test_pictures_are_those_of_linux(self):
        for name in ("still.png", "still.jpg", "still.tif", "still.webp", "still.bmp"):
            with self.subTest(name=name):
                windows, here = self.bytes_of_both(name, "scene:320x180:0.04", "-e", "Viewfinder", "--preset", "2000s")
                self.assertTrue(windows == here)

    def test_video_is_read_and_written(self):
        linux("render", "scene:160x90:1", "clip.mp4", *PLAIN, cwd=self.folder)
        for name in ("x.mp4", "x.mkv", "x.mov", "x.webm"):
            with self.subTest(name=name):
                exe("render", "clip.mp4", name, "-e", "Outline", "--preset", "Red Glow", "-q", cwd=self.folder)
                frames = linux("render", name, "-", *PLAIN, cwd=self.folder).out
                self.assertEqual(frames.count(b"FRAME\n"), linux("render", "clip.mp4", "-", *PLAIN, cwd=self.folder)
                                 .out.count(b"FRAME\n"))
        # Its table stands at the end, so what comes through the pipe is kept in a file and read again.
        self.assertTrue(exe("render", "-", "-", *PLAIN, input=(self.folder / "clip.mp4").read_bytes()).out ==
                        linux("render", "clip.mp4", "-", *PLAIN, cwd=self.folder).out)

    def test_names_have_any_letters_and_any_length(self):
        deep = self.folder / UNICODE
        for _ in range(4):
            deep /= " a folder with a long name" * 3
        self.assertGreater(len(str(deep)), 300)
        for place in (self.folder / UNICODE, deep):
            place.mkdir(parents=True, exist_ok=True)
            pattern = on_windows(place / f"{UNICODE}_%02d.png")
            exe("render", "scene:64x36:0.2", pattern, *PLAIN)
            written = sorted(place.glob("*.png"))
            self.assertEqual(len(written), 5)
            both = [exe("render", on_windows(place / words), "-", *PLAIN).out
                    for words in (f"{UNICODE}_%02d.png", f"{UNICODE[:3]}*_0[0-9].PNG")]
            self.assertEqual(both[0].count(b"FRAME\n"), 5)
            self.assertTrue(both[0] == both[1])
            exists = exe("render", "scene:64x36:0.04", on_windows(written[0]), *PLAIN, check=False)
            self.assertIn(UNICODE, exists.err)
            self.assertIn("--overwrite", exists.err)

    def test_presets_and_looks_are_those_of_linux(self):
        exe("preset", "save", f"{UNICODE}.lumvc", "-e", "Outline", "--preset", "Red Glow", cwd=self.folder)
        for run, name in ((exe, "w.json"), (linux, "l.json")):
            run("preset", "convert", f"{UNICODE}.lumvc", name, cwd=self.folder)
        self.assertEqual((self.folder / "w.json").read_bytes(), (self.folder / "l.json").read_bytes())
        exe("preset", "convert", "w.json", "again.lumvc", cwd=self.folder)
        self.assertIn(UNICODE.encode(), (self.folder / "again.lumvc").read_bytes())
        windows, here = self.bytes_of_both("x.png", "scene:160x90:0.04", "--look", "Home Video 1986")
        self.assertTrue(windows == here)

    def test_what_is_read_is_not_written(self):
        linux("render", "scene:64x36:0.04", "x.png", *PLAIN, cwd=self.folder)
        same = exe("render", "x.png", "X.PNG", "-y", *PLAIN, check=False, cwd=self.folder)
        self.assertEqual(same.status, 2, same.err)
        self.assertIn("is what is read", same.err)

    def findings(self, env):
        report = json.loads(exe("doctor", "--json", env=env).out)
        self.assertTrue(report["usable"])
        return {each["name"]: each for each in report["findings"]}

    def test_doctor_finds_what_was_built(self):
        found = self.findings(None)
        for name in ("Program", "Module", "Effects", "Monitor", "Looks"):
            self.assertEqual(found[name]["remedy"], "", found[name])
        self.assertIn("lumiset.exe", found["Program"]["found"])
        self.assertIn(": 10 of 10 plug-ins", found["frei0r"]["found"])
        self.assertIn(": 10 of 10 plug-ins", found["OpenFX"]["found"])
        self.assertIn("AppData\\Roaming\\lumiset\\looks", found["Looks"]["found"])
        # The plug-ins read the variable by themselves.
        module = self.folder / f"{UNICODE}.dll"
        shutil.copy(Path(EXE).parent / "vantrel_lumiset5.dll", module)
        found = self.findings({"LUMISET_MODULE": on_windows(module)})
        self.assertIn(UNICODE, found["Module"]["found"])
        self.assertIn(": 10 of 10 plug-ins", found["frei0r"]["found"])

    def test_doctor_says_what_helps_on_windows(self):
        remedy = self.findings({"DISPLAY": ""})["OpenGL"]["remedy"]  # Wine has none without a screen
        self.assertIn("driver", remedy)
        self.assertNotIn("Debian", remedy)

    def test_ctrl_c_leaves_nothing_behind(self):
        output = self.folder / "out"
        output.mkdir()
        run = Run(WINE, "--direct", PRESS_CTRL_C, on_windows(output), on_windows(EXE), "render", "scene:640x360:3600",
                  on_windows(output / "x.mkv"), *PLAIN, check=False)
        self.assertEqual(run.status, 130, run.err)
        self.assertEqual(os.listdir(output), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
