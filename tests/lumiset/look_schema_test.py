#!/usr/bin/env python3
"""look_schema_test.py PROGRAM FOLDER: by docs/lumilook.schema.json below FOLDER every look that is shipped and everything
that `look save` writes is valid, and what the program refuses for its form is not."""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed, nothing is tested")
    sys.exit(77)

EFFECT = '{"lumilook": 1, "effects": [{"effect": "Outline"%s}]}'
BAD_FORMS = (
    "[]",
    '{"effects": [{"effect": "Outline"}]}',
    '{"lumilook": 2, "effects": [{"effect": "Outline"}]}',
    '{"lumilook": "1", "effects": [{"effect": "Outline"}]}',
    '{"lumilook": 1, "effects": []}',
    '{"lumilook": 1, "effects": [%s]}' % ", ".join(['{"effect": "Outline"}'] * 101),
    '{"lumilook": 1, "colour": 1, "effects": [{"effect": "Outline"}]}',
    '{"lumilook": 1, "name": "two\\nlines", "effects": [{"effect": "Outline"}]}',
    '{"lumilook": 1, "name": "%s", "effects": [{"effect": "Outline"}]}' % ("x" * 201),
    '{"lumilook": 1, "strength": 101, "effects": [{"effect": "Outline"}]}',
    '{"lumilook": 1, "effects": [{"preset": "Red Glow"}]}',
    '{"lumilook": 1, "clip": 5, "effects": [{"effect": "Outline"}]}',
    EFFECT % ', "off": 1',
    EFFECT % ', "strength": "all"',
    EFFECT % ', "strength": -1',
    EFFECT % ', "values": [1]',
    EFFECT % ', "values": {"Width": null}',
    EFFECT % ', "values": {"Width": {"stored": 1, "more": 2}}',
    EFFECT % ', "values": {"Width": [1, 2, 3]}',
    EFFECT % ', "keys": {"Width": []}',
    EFFECT % ', "keys": {"Width": [{"at": -1, "value": 1}]}',
    EFFECT % ', "keys": {"Width": [{"at": "101%", "value": 1}]}',
    EFFECT % ', "keys": {"Width": [{"at": "2", "value": 1}]}',
    EFFECT % ', "keys": {"Width": [{"at": 1}]}',
    EFFECT % ', "keys": {"Width": [{"at": 1, "value": 1, "ease": "in"}]}',
)


def run(*words):
    return subprocess.run(words, capture_output=True, text=True)


def lines(program):
    """What to save: every preset of every effect, and every kind of value set and keyed."""
    for effect in json.loads(run(program, "list", "--json").stdout):
        shown = json.loads(run(program, "show", effect["name"], "--json").stdout)
        words = ["-e", effect["name"], "--strength", "33.3"]
        for parameter in shown["parameters"]:
            kind = parameter["type"]
            low, high = parameter.get("minimum", 0), parameter.get("maximum", 1)
            value = {"slider": f"{low + (high - low) / 3:.3f}", "choice": (parameter.get("items") or [""])[-1],
                     "color": "#12aBcD", "point": "12.5,77", "boolean": "on"}[kind]
            moments = ["0", "1e-7%", "66.67%", "100%"] if len(words) % 4 == 0 else []
            for moment in moments:
                words += ["--key", f"{parameter['name']}@{moment}={value}"]
            if not moments:
                words += ["--set", f"{parameter['name']}={value}"]
        yield words
        for preset in shown["presets"]:
            yield ["-e", effect["name"], "-p", preset["uniqueName"], "-e", "Outline"]


def main(program, folder):
    schema = json.loads((Path(folder) / "docs/lumilook.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    faults = []
    checked = 0
    with tempfile.TemporaryDirectory() as scratch:
        file = str(Path(scratch) / "saved.lumilook")
        texts = {str(look): look.read_text() for look in (Path(folder) / "looks").glob("*.lumilook")}
        for number, words in enumerate(lines(program)):
            saved = run(program, "look", "save", file, "--name", f"Look {number}", "--author", "Somebody", *words)
            if saved.returncode != 0:
                faults.append(f"not saved: {' '.join(words)}: {saved.stderr}")
            else:
                texts[" ".join(words)] = Path(file).read_text()
                Path(file).unlink()
        for name, text in texts.items():
            checked += 1
            faults += [f"{name}: {error.message}" for error in validator.iter_errors(json.loads(text))]
        for text in BAD_FORMS:
            Path(file).write_text(text)
            if run(program, "look", "check", file).returncode != 1:
                faults.append(f"the program takes {text[:120]}")
            if validator.is_valid(json.loads(text)):
                faults.append(f"the schema takes {text[:120]}")
    print("\n".join([*faults, f"{checked} looks, {len(BAD_FORMS)} bad forms"]))
    return 1 if faults or checked < 100 else 0


sys.exit(main(*sys.argv[1:]))
