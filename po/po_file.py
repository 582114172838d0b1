"""Reads catalogues in the form in which the gettext tools write them."""

import dataclasses
import json
import pathlib


@dataclasses.dataclass
class Entry:
    """One text: where it stands, its context (the identifier), itself and its translation."""

    files: list = dataclasses.field(default_factory=list)
    flags: set = dataclasses.field(default_factory=set)
    context: str = ""
    text: str = ""
    translation: str = ""


FIELDS = {"msgctxt": "context", "msgid": "text", "msgstr": "translation"}


def _entry(block):
    entry, field = Entry(), ""
    for line in block.splitlines():
        if line.startswith("#:"):
            entry.files += line.split()[1:]
        elif line.startswith("#,"):
            entry.flags |= {flag.strip() for flag in line[2:].split(",")}
        elif not line.startswith("#"):
            keyword, quote, literal = line.partition('"')
            field = FIELDS[keyword.strip()] if keyword else field
            setattr(entry, field, getattr(entry, field) + json.loads(quote + literal))
    return entry


def read(path):
    """The entries of a catalogue, without its head."""
    blocks = pathlib.Path(path).read_text("utf-8").strip().split("\n\n")
    entries = [_entry(block) for block in blocks if "\nmsgid " in f"\n{block}"]
    return [entry for entry in entries if entry.text]
