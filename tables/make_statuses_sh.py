#!/usr/bin/env python3
"""Writes the functions for scripts that need the exit statuses.

    make_statuses_sh.py STATUSES_JSON TEMPLATE OUTPUT
"""

import json
import pathlib
import shlex
import sys

from templates import filled

# The exit status of every server code whose low 8 bits are 0, besides that of one status.
AMBIGUOUS = 255


def arm(numbers, text):
    """An arm of a shell's case: prints `text` for any of the numbers."""
    return f"{' | '.join(map(str, numbers))}) echo {shlex.quote(str(text))} ;;"


def grouped(rows, key):
    """The numbers of the statuses by what they have under `key`."""
    groups = {}
    for row in rows:
        groups.setdefault(row[key], []).append(row["status"])
    return groups


def values(statuses):
    """What the template's names in @...@ stand for, in lines."""
    rows, unknown = statuses["statuses"], statuses["unknown"]
    advice = grouped(rows, "retry")
    advice.pop(unknown["retry"])
    return {
        "meanings": [arm([row["status"]], row["meaning"]) for row in rows],
        "unknown_meaning": [shlex.quote(unknown["meaning"].replace("%d", "%s") + r"\n")],
        "advice": [arm(numbers, text) for text, numbers in advice.items()],
        "unknown_advice": [unknown["retry"]],
        "only_statuses": [
            arm([shell], numbers[0])
            for shell, numbers in grouped(rows, "shell").items()
            if len(numbers) == 1 and shell != AMBIGUOUS
        ],
    }


def main():
    source, template, output = map(pathlib.Path, sys.argv[1:])
    lines = values(json.loads(source.read_text()))
    output.write_text(filled(template.read_text(), lines))


main()
