#!/usr/bin/env python3
"""Makes a manual page from its source: fills in the version and the table of exit statuses.

In the source a literal block (.Bd -literal) is plain text. The page gets it so written that every
formatter shows exactly these characters.
"""

import argparse
import json
import pathlib
import re
import textwrap

# What roff would show as another character, or take for itself.
ESCAPES = str.maketrans({"\\": "\\e", "-": "\\-", "'": "\\(aq", "`": "\\(ga",
                         "^": "\\(ha", "~": "\\(ti"})  # fmt: skip
WIDTH = 72  # of a line of text
RETRIES = {"no", "yes", "check"}


def plain(text):
    """The text as a line of its own in the source of a page."""
    escaped = text.translate(ESCAPES)
    return "\\&" + escaped if escaped.startswith(".") else escaped


def with_plain_blocks(lines):
    literal = False
    for line in lines:
        literal = literal and not line.startswith(".Ed")
        yield plain(line) if literal else line
        literal = literal or line.startswith(".Bd -literal")


def status_table(rows):
    """The rows of statuses.json as a list of four columns."""
    yield '.Bl -column "status" "shell" "retry"'
    yield ".It Sy status Ta Sy shell Ta Sy retry Ta Sy meaning"
    for row in rows:
        if row["retry"] not in RETRIES:
            raise ValueError(f"status {row['status']}: no advice on a retry: {row['retry']!r}")
        yield f'.It {row["status"]} Ta {row["shell"]} Ta {row["retry"]} Ta'
        lines = textwrap.wrap(row["meaning"], WIDTH, break_on_hyphens=False)
        yield from (plain(line) for line in lines)
    yield ".El"


def page(source, version, rows):
    text = "\n".join(with_plain_blocks(source.splitlines())) + "\n"
    text = text.replace("@VERSION@", version)
    return re.sub(r"^@STATUSES@$", lambda _: "\n".join(status_table(rows)), text, flags=re.M)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--version", required=True)
    parser.add_argument("--statuses", required=True, type=pathlib.Path)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    parser.add_argument("source", type=pathlib.Path)
    options = parser.parse_args()
    rows = json.loads(options.statuses.read_text())["statuses"]
    options.output.write_text(page(options.source.read_text(), options.version, rows))


if __name__ == "__main__":
    main()
