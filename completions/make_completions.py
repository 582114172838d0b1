#!/usr/bin/env python3
"""Writes the completions for bash, zsh and fish from the tables of operations and options.

    PYTHONPATH=TABLES_FOLDER make_completions.py TABLES_JSON DESCRIPTIONS_TOML OUTPUT_FOLDER

The templates beside this program have the code; names in @...@ stand for what is made here.
"""

import json
import pathlib
import shlex
import sys
import tomllib

from templates import filled

TEMPLATES = pathlib.Path(__file__).resolve().parent
OUTPUTS = {
    "akhostmgmt": "akhostmgmt.bash.in",
    "_akhostmgmt": "akhostmgmt.zsh.in",
    "akhostmgmt.fish": "akhostmgmt.fish.in",
}


class TableError(Exception):
    """The tables or the descriptions are not such that completions can be made of them."""


class Tables:
    """What may stand on a command line.

    `operations` has for each operation its options without -help, both as they are to be offered.
    """

    def __init__(self, tables, descriptions):
        self.help = tables["help"]
        refused = descriptions["refused"]
        self.operations = {
            row["name"]: [
                option
                for option in row["options"]
                if option["name"] not in [self.help["name"], *refused.get(row["name"], [])]
            ]
            for row in tables["operations"]
        }
        self.rows = _rows_by_name(tables)
        self.phrases = descriptions["operations"] | descriptions["options"]
        self._values = descriptions["values"]
        _check(tables, descriptions)

    def choices(self):
        """What is offered without an operation (""), and with each operation."""
        names = {"": list(self.operations)}
        names |= {name: [row["name"] for row in rows] for name, rows in self.operations.items()}
        return names

    def takes(self):
        """For each option with a value: "file", "text", or "values" and these."""
        return {
            name: _kind(row, row["values"] or self._values.get(name))
            for name, row in self.rows.items()
            if row.get("type", "none") != "none"
        }


def _kind(row, values):
    if values:
        return ["values", *values]
    return ["file" if row["type"] == "path" else "text"]


def _rows_by_name(tables):
    """Every operation and option once; what is called alike has to be alike."""
    rows = {}
    for operation in tables["operations"]:
        top = {"name": operation["name"], "alias": operation["alias"]}
        for row in (top, *operation["options"]):
            if rows.setdefault(row["name"], row) != row:
                raise TableError(f"there are two kinds of -{row['name']}")
    words = [word for row in rows.values() for word in (row["name"], row["alias"]) if word]
    repeated = sorted({word for word in words if words.count(word) > 1})
    if repeated:
        raise TableError(f"these words have two meanings: {', '.join(repeated)}")
    return rows


def _check(tables, descriptions):
    """Holds the descriptions against the tables: nothing may be missing and nothing left over."""
    options = {
        row["name"]: {option["name"] for option in row["options"]} for row in tables["operations"]
    }
    every_option = set().union(*options.values())
    for what, described, known in (
        ("operations", set(descriptions["operations"]), set(options)),
        ("options", set(descriptions["options"]), every_option),
    ):
        if described != known:
            raise TableError(f"{what} not in both places: {', '.join(sorted(described ^ known))}")
    unknown = set(descriptions["values"]) - every_option
    for name, refused in descriptions["refused"].items():
        unknown |= set(refused) - options.get(name, set())
    if unknown:
        raise TableError(f"there is no such option: {', '.join(sorted(unknown))}")


class Posix:
    """The data in the form of bash and zsh."""

    @staticmethod
    def arm(pattern, statement):
        return f"{shlex.quote(pattern)}) {statement} ;;"

    @staticmethod
    def assign(name, value):
        if isinstance(value, list):
            return f"{name}=({' '.join(map(shlex.quote, value))})"
        return f"{name}={shlex.quote(value)}"


class Fish:
    """The data in the form of fish."""

    @staticmethod
    def _quote(text):
        return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"

    @classmethod
    def arm(cls, pattern, statement):
        return f"case {cls._quote(pattern)}; {statement}"

    @classmethod
    def assign(cls, name, value):
        values = value if isinstance(value, list) else [value]
        return f"set {name} {' '.join(map(cls._quote, values))}"


def sections(tables, form):
    """What each name in a template stands for, in lines."""
    def arms(name, values):
        return [form.arm(key, form.assign(name, value)) for key, value in values.items()]

    with_alias = {name: row["alias"] for name, row in tables.rows.items() if row["alias"]}
    return {
        "names": arms("name", {alias: name for name, alias in with_alias.items()}),
        "aliases": arms("alias", with_alias),
        "takes": arms("takes", tables.takes()),
        "choices": arms("choices", tables.choices()),
        "phrases": arms("phrase", tables.phrases),
        "operations": [" ".join(tables.operations)],
        "help": [tables.help["name"]],
    }


def main():
    source, descriptions, folder = map(pathlib.Path, sys.argv[1:])
    tables = Tables(json.loads(source.read_text()), tomllib.loads(descriptions.read_text()))
    for output, template in OUTPUTS.items():
        form = Fish if output.endswith(".fish") else Posix
        text = filled((TEMPLATES / template).read_text(), sections(tables, form))
        (folder / output).write_text(text)


if __name__ == "__main__":
    try:
        main()
    except TableError as error:
        sys.exit(f"{sys.argv[0]}: {error}")
