#!/usr/bin/env python3
"""Writes docs/performance.md: what one frame takes, what it gains from threads, and how that compares.

  bench/page.py BENCH [--repetitions N]    measures with the program BENCH, and with ffmpeg, in one run
  bench/page.py --check PROGRAM            says what in the page cannot be: effects that PROGRAM does not have or that have
                                           no row, and figures that do not follow from those beside them
"""

import argparse
import json
import os
import platform
import re
import resource
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/performance.md"

# Ours, and what of ffmpeg's comes nearest: the pixel format that its filter works in, and the filter.
FFMPEG = (
    ("FrameBlur 8 51", "gbrap", "gblur=sigma=10.4"),
    ("FrameBlur float 51", "gbrapf32le", "gblur=sigma=10.4"),
    ("FrameSharpen 8", "gbrap", "convolution='-1 -1 -1 -1 16 -1 -1 -1 -1:-1 -1 -1 -1 16 -1 -1 -1 -1:"
                                "-1 -1 -1 -1 16 -1 -1 -1 -1':0rdiv=.125:1rdiv=.125:2rdiv=.125"),
    ("FrameColorTransform 8", "bgra", "colorchannelmixer=.9:.1:.1:0:.1:.8:.1:0:.1:.1:.7"),
    ("FrameRgbToHsv 8", "gbrap", "huesaturation=hue=30:saturation=.2"),
    ("FrameResizeInto 8C4 to 853x480 linear", "bgra", "scale=853:480:flags=bilinear"),
    ("FrameInvert 8", "bgra", "lutrgb=r=negval:g=negval:b=negval"),
    ("FrameFlipVerticalCopy 8", "bgra", "vflip,copy"),
    ("Color Fixer Pro, defaults, 8", "bgra", "colorbalance=rs=.1:bh=.1"),
    ("Selective Color, Just Red, 8", "bgra", "colorhold=red:similarity=.2:blend=.2"),
    ("Selective Focus, Vignette, 8", "gbrp", "vignette"),
    ("Old TV, Snow, 8", "gbrap", "noise=alls=40:allf=t"),
)

THREADS = """\
Every effect at its defaults and with its dearest preset. The column behind the gain is that of as many whole frames at
the same time, each on a thread of its own, which share nothing but the machine. *serial* is the part of one thread's
time with which no other thread can help; *cutting* is what a frame takes more when it is cut into parts. *memcpys* is
one thread's time by that of a memcpy of the frame: the fewer they are, the more an effect waits for memory, and the
nearer its gain comes to that of the memcpy in the first row. The last columns tell how much faster a frame can be at
most on 4 to 32 threads: its parts, each timed on one thread, are shared out among so many, as if waking threads cost
nothing and memory kept up with all of them. It does where a machine has as many times this one's bandwidth; where it
has not, effects of few memcpys stay behind.

A gain below that of whole frames, where cutting costs little, is lost to what the threads of one frame share. The blurs
pay for cutting instead: a band goes down the columns and along the rows on one thread, and its sums begin with as many
rows as the blur is high. In 8 bits there are about as many bands as threads; in floats, where beginning shows in the
last digits, they are few and always the same, and more threads than bands share the columns of a band as well.
"""


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=True, **options).stdout


def exactly(names):
    return "^(" + "|".join(re.sub(r"([^\w ,])", r"\\\1", name) for name in names) + ")$"


class Bench:
    def __init__(self, program, repetitions):
        self.program, self.repetitions = program, str(repetitions)

    def cases(self, names):
        """Rows of the table of one thread, in the order of the names."""
        output = run(self.program, "--json", "--filter", exactly(names), "--repetitions", self.repetitions)
        rows = {row["name"]: row for row in json.loads(output)}
        return [rows[name] for name in names]

    def names(self):
        return run(self.program, "--list").splitlines()

    def threads(self, count, names, *options):
        return run(self.program, "--threads", str(count), "--markdown", "--filter", exactly(names), "--repetitions",
                   self.repetitions, *options)


def dearest(bench):
    """The preset of each effect that takes longest."""
    of = {}
    names = [name for name in bench.names() if re.fullmatch(r".+, .+, 8", name) and not name.startswith("All effects")]
    quick = Bench(bench.program, 1)
    for row in quick.cases(names):
        effect = row["name"].split(", ")[0]
        if "defaults" not in row["name"] and row["milliseconds"] > of.get(effect, (0, ""))[0]:
            of[effect] = (row["milliseconds"], row["name"])
    return [name for _, name in of.values()]


def ffmpeg_milliseconds(pixel_format, filters):
    """Of the processor, for a frame: what a second filter graph takes more than the one without the filter."""
    frames = 40

    def seconds(graph):
        source = f"testsrc2=s=1920x1080:r=25:d=0.04,format={pixel_format},loop=loop={frames}:size=1"
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        run("ffmpeg", "-v", "error", "-nostdin", "-filter_threads", "1", "-filter_complex_threads", "1", "-f", "lavfi",
            "-i", source, "-vf", graph, "-c:v", "wrapped_avframe", "-f", "null", "-")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    # The least of each in turn: the least difference would be that of the most disturbed turn without the filter.
    turns = [(seconds(filters), seconds("null")) for _ in range(5)]
    return max(min(with_it for with_it, _ in turns) - min(without for _, without in turns), 0.0) * 1e3 / frames


def against_ffmpeg(bench):
    lines = ["| here | ms | ffmpeg | format | ms | ratio |", "|---|---:|---|---|---:|---:|"]
    for (_, pixel_format, filters), row in zip(FFMPEG, bench.cases([name for name, _, _ in FFMPEG])):
        theirs = ffmpeg_milliseconds(pixel_format, filters)
        ours = row["milliseconds"]
        lines.append(f"| {row['name']} | {ours:.2f} | `{filters.split('=')[0]}` | {pixel_format} | {theirs:.2f} | "
                     f"{theirs / ours:.2f} |")
    return "\n".join(lines)


def against_opencv(bench):
    rows = [row for row in bench.cases([name for name in bench.names() if re.match("Img|Frame", name)])
            if row["opencvMilliseconds"] is not None]
    lines = ["| | ms | OpenCV, ms | ratio |", "|---|---:|---:|---:|"]
    lines += [f"| {row['name']} | {row['milliseconds']:.3f} | {row['opencvMilliseconds']:.3f} | "
              f"{row['opencvMilliseconds'] / row['milliseconds']:.2f} |" for row in rows]
    return "\n".join(lines)


def processor():
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":")[1].strip()
    return platform.processor()


def page(bench):
    cores = os.cpu_count()
    defaults = [f"{name.split(', ')[0]}, defaults, 8" for name in bench.names() if name.endswith(", defaults, 8")]
    both = [name[:-1] + suffix for name in defaults + dearest(bench) for suffix in ("8", "float")]
    plain = [name[:-1] + suffix for name in defaults for suffix in ("8", "float")]
    load = os.getloadavg()[0]
    return f"""<!-- Written by scripts/bench --page. -->
# Performance

Measured in one run of

```sh
scripts/bench --page --repetitions {bench.repetitions}
```

on {cores} cores of a processor that calls itself "{processor()}", {platform.system()}, with a load of {load:.1f} by other
programs at the start. Ratios of one row are measured in turn and say more than the milliseconds; what two threads gain
is measured on the wall, and other programs on the same cores take from it.

## One frame on {cores} threads

{THREADS}
{bench.threads(cores, both)}
{bench.threads(cores, plain, "--uhd")}
## Beside ffmpeg

Milliseconds of the processor for a frame of 1920 x 1080, one thread. ffmpeg's are what a chain takes more with the
filter than without it. The filters are the nearest in kind, not the same: most work on separate planes, which is
easier on them, some on three channels where ours are four, and none of the effects exists there as a whole.

{against_ffmpeg(bench)}

## Beside OpenCV

The nearest function of OpenCV on the same frames, one thread; above 1 ours is faster.

{against_opencv(bench)}
"""


def faults(program):
    """What cannot be in the page as it stands."""
    text = PAGE.read_text()
    effects = {}
    for effect in json.loads(run(program, "list", "--json")):
        shown = json.loads(run(program, "show", effect["name"], "--json"))
        effects[effect["name"]] = {"defaults"} | {preset["name"] for preset in shown["presets"]}
    if not text.startswith("<!-- Written by scripts/bench --page. -->") or "scripts/bench --page" not in text:
        yield "the page does not tell how it was made"
    seen = set()
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if not line.startswith("| ") or not re.fullmatch(r"[\d.]+", cells[1]):
            continue
        name = re.fullmatch(r"(.+?), (.+), (8|float)", cells[0])
        if name and name[2].split(" (")[0] not in effects.get(name[1], ()):
            yield f"no such effect or preset: {cells[0]}"
        numbers = [float(cell) for cell in cells[1:] if re.fullmatch(r"[\d.]+", cell)]
        if name and len(numbers) > 3:
            seen.add((name[1], name[2], name[3]))
        # One thread by many, or theirs by ours.
        above, below, ratio = (numbers[0], numbers[1], numbers[2]) if len(numbers) > 3 else (
            numbers[1], numbers[0], numbers[2])
        rounding = 0.06 + 0.01 * ratio + ratio * 0.005 / max(below, 0.005)
        if abs(above / max(below, 1e-9) - ratio) > rounding:
            yield f"{cells[0]}: {above} by {below} is not {ratio}"
    for effect in effects:
        for depth in ("8", "float"):
            if (effect, "defaults", depth) not in seen:
                yield f"no row for {effect}, defaults, {depth}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--repetitions", type=int, default=7)
    parser.add_argument("program")
    options = parser.parse_args()
    if options.check:
        found = list(faults(options.program))
        print("\n".join(found))
        return 1 if found else 0
    PAGE.write_text(page(Bench(options.program, options.repetitions)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
