#!/usr/bin/env python3
"""commands_test.py PROGRAM: the commands that the README and the pages show do run.

Of every block marked as `sh` that consists of calls of build/linux/lumiset alone, all lines are run, in a folder with
small stand-ins for the files they read. Blocks with other commands (scripts/..., package managers, other programs) are
for reading; so is a block behind a line `<!-- not run: the reason -->`.
"""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = "build/linux/lumiset"
BLOCK = re.compile(r"^(?P<before>[^\n]*)\n```sh\n(?P<text>.*?)^```$", re.MULTILINE | re.DOTALL)

# The stand-ins: a second of small pictures unless a page asks for more.
STAND_INS = {
    "clip.mp4": "scene-full:160x90:1:10",
    "clip.mkv": "scene-full:64x36:16:2",
    "title.mov": "scene-cutout:160x90:1:10",
    "logo.png": "scene-cutout:160x90:1:1",
    "sky.png": "scene:160x90:1:1",
    "window.png": "scene:160x90:1:1",
}


def blocks_of(page):
    for block in BLOCK.finditer(page.read_text()):
        text = re.sub(r"\\\n\s*", "", block["text"])
        lines = [line for line in text.splitlines() if line.strip() and not line.startswith("#")]
        if all(line.startswith(PROGRAM + " ") for line in lines) and "<!-- not run:" not in block["before"]:
            yield lines


def smaller(command):
    """Scenes of a size that takes no time."""
    return re.sub(r"(?<= )(scene(?:-\w+)?)(?::\d+x\d+)?(?=[: ]|$)", r"\1:160x90", command)


def main(program):
    faults = []
    count = 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "build").mkdir()
        (folder / "build/linux").symlink_to(Path(program).resolve().parent)
        environment = {**os.environ, "XDG_CONFIG_HOME": str(folder / "config"), "XDG_DATA_HOME": str(folder / "data")}

        def run(command):
            options = {"cwd": folder, "env": environment, "capture_output": True, "text": True, "timeout": 60}
            return subprocess.run(["bash", "-c", command], **options)

        def clear():
            """Leaves what a reader has: the stand-ins."""
            for file in folder.iterdir():
                if file.is_file() and file.name not in STAND_INS:
                    file.unlink()

        for file, source in STAND_INS.items():
            made = run(f'{PROGRAM} render {source} {file} -e Outline -p "Reset to None"')
            if made.returncode != 0:
                faults.append(f"{file} cannot be made: {made.stderr}")
        for page in [ROOT / "README.md", *sorted(ROOT.glob("docs/**/*.md"))]:
            for block in blocks_of(page):
                clear()
                for command in block:
                    count += 1
                    done = run(smaller(command))
                    if done.returncode != 0 and "There is no OpenGL" not in done.stderr:
                        faults.append(f"{page.relative_to(ROOT)}: {command}\n  {done.stderr.strip()}")
    print(f"{count} commands")
    if count < 18:
        faults.append("Fewer commands than the README alone has: the blocks are not found any more.")
    sys.exit("\n".join(faults) or None)


main(sys.argv[1])
