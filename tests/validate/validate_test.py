#!/usr/bin/env python3
"""validate_test.py PROGRAM MODULE: `lumiset validate` finds each rule that the module breaks by the check that is about
it, and nothing in the module while it breaks none."""

import json
import os
import subprocess
import sys

# The check that has to find each broken rule.
RULES = {
    "exports": ["no-name", "effect-past-the-last", "never-unloads"],
    "identity": ["answers-for-strangers", "query-without-reference", "leaves-the-place-unset"],
    "counting": ["release-answers-nothing", "born-with-two"],
    "parameters": ["endless-parameters", "half-filled-record", "default-out-of-range", "item-without-label"],
    "presets": ["preset-out-of-range"],
    "sizes": ["no-single-columns", "reads-beyond", "writes-the-source", "leaves-a-pixel", "not-finite"],
    "layouts": ["ignores-the-strides-sign", "row-order-shows", "writes-padding"],
    "formats": ["alpha-of-one-format-alone"],
    "cropping": ["leaves-the-rectangle"],
    "fields": ["bad-aspect", "needs-a-record"],
    "refusals": ["takes-any-frame"],
    "values": ["believes-numbers", "choice-past-its-end", "asks-by-another-type", "calls-a-reserved-slot"],
    "times": ["moves-without-saying"],
    "order": ["remembers-frames"],
    "threads": ["shares-scratch"],
    "memory": ["fails-too-late", "crashes-without-memory", "keeps-memory", "keeps-the-host"],
    "files": ["half-read-file", "answers-true", "believes-files", "reads-another-value"],
}


def validate(program, module, rule, *arguments):
    environment = {**os.environ, "LUMISET_BROKEN": rule}
    run = subprocess.run([program, "validate", module, "--json", *arguments], env=environment, text=True,
                         capture_output=True)
    return run.returncode, json.loads(run.stdout)


def main(program, module):
    faults = 0
    status, verdict = validate(program, module, "")
    for check in verdict["checks"]:
        if not check["holds"]:
            faults += 1
            print(f"sound, yet {check['name']}: {check['finding']}")
    faults += status != 0
    for name, rules in RULES.items():
        for rule in rules:
            status, verdict = validate(program, module, rule, "--check", name)
            print(f"{rule}: {verdict['checks'][0]['finding'] or 'NOT FOUND'}")
            faults += status != 1 or verdict["holds"]
    unused = {check["name"] for check in validate(program, module, "")[1]["checks"]} - set(RULES)
    print(f"checks without a broken rule: {unused}")
    return 1 if faults or unused - {"loading"} else 0


sys.exit(main(*sys.argv[1:]))
