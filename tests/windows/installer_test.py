#!/usr/bin/env python3
"""installer_test.py SETUP ZIP: the installer puts everything in place and takes it away again, and the zip runs as it is.

Programs run under Wine, with the settings of scripts/wine."""

import json
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
SETUP, ZIP = (Path(word).resolve() for word in sys.argv[1:3])
DISK = ROOT / "build/wine/drive_c"
HOME = DISK / "Program Files/Lumiset"
BUNDLE = DISK / "Program Files/Common Files/OFX/Plugins/Lumiset.ofx.bundle"
ENVIRONMENT = r"HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Lumiset"


def wine(*words, check=True):
    with tempfile.TemporaryFile() as out:
        status = subprocess.run([ROOT / "scripts/wine", "--direct", *words], stdin=subprocess.DEVNULL, stdout=out,
                                stderr=subprocess.DEVNULL, timeout=300).returncode
        out.seek(0)
        text = out.read().decode(errors="replace")
    if check and status != 0:
        raise AssertionError(f"{words} ended with {status}: {text}")
    return text


def setup(*options):
    wine(SETUP, "/S", *options)


def uninstall():
    wine(HOME / "uninstall.exe", "/S")
    for _ in range(600):  # it goes on as a copy of itself
        if not (HOME / "uninstall.exe").exists() and not registered():
            return
        time.sleep(0.1)
    raise AssertionError("the uninstaller does not end")


def value(key, name):
    """Type and text of a value in the registry."""
    lines = [line.split(None, 2) for line in wine("reg", "query", key, "/v", name).splitlines() if "REG_" in line]
    return lines[0][1:]


def registered():
    return "Lumiset" in wine("reg", "query", KEY, "/reg:64", check=False)


def files():
    return sorted(str(path) for path in DISK.glob("Program Files*/**/*"))


def doctor(program):
    report = json.loads(wine(program, "doctor", "--json"))
    return {each["name"]: each for each in report["findings"]}


class Installer(unittest.TestCase):
    def setUp(self):
        if registered():  # a run before this one was cut off
            uninstall()

    def test_installs_silently_and_leaves_nothing(self):
        before, path = files(), value(ENVIRONMENT, "PATH")
        setup("/PATH=yes")
        found = doctor(HOME / "lumiset.exe")
        for name, place in (("Program", HOME), ("Module", HOME), ("OpenFX", BUNDLE)):
            self.assertIn(str(place.relative_to(DISK)).replace("/", "\\"), found[name]["found"].replace("/", "\\"))
            self.assertEqual(found[name]["remedy"], "", found[name])
        wine(HOME / "lumiset.exe", "render", "scene:64x36:0.04", "Z:" + tempfile.gettempdir() + "/lumiset_installed.png",
             "-y", "-e", "Outline")
        self.assertEqual(value(ENVIRONMENT, "PATH"), [path[0], path[1] + r";C:\Program Files\Lumiset"])
        for name in ("LICENSE.txt", "licenses/GPL-2.txt", "licenses/sources", "doc/README.md"):
            self.assertTrue((HOME / name).is_file(), name)

        (HOME / "licenses/sources").rename(HOME / "of_an_older_version")
        (HOME / "mine.txt").write_text("the user's own")
        setup()  # over itself: what was there goes, the entry stays
        self.assertTrue((HOME / "licenses/sources").is_file())
        self.assertTrue(value(ENVIRONMENT, "PATH")[1].endswith(r";C:\Program Files\Lumiset"))

        uninstall()
        self.assertEqual(value(ENVIRONMENT, "PATH"), path)
        self.assertFalse(registered())
        for name in ("mine.txt", "of_an_older_version"):
            (HOME / name).unlink()  # neither was put there by the installer
        HOME.rmdir()
        self.assertEqual(files(), before)

    def test_leaves_out_what_is_not_wanted(self):
        before, path = files(), value(ENVIRONMENT, "PATH")
        setup("/OPENFX=no")
        self.assertTrue((HOME / "lumiset.exe").is_file())
        self.assertFalse(BUNDLE.exists())
        self.assertEqual(value(ENVIRONMENT, "PATH"), path)
        uninstall()
        self.assertEqual(files(), before)


class Zip(unittest.TestCase):
    def test_runs_where_it_is_unpacked(self):
        with tempfile.TemporaryDirectory() as folder:
            with zipfile.ZipFile(ZIP) as archive:
                archive.extractall(folder)
            [home] = Path(folder).iterdir()
            found = doctor(home / "lumiset.exe")
            self.assertIn("all of which render", found["Effects"]["found"])
            for name in ("frei0r", "OpenFX"):
                self.assertIn("10 of 10 plug-ins", found[name]["found"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
