#!/usr/bin/env python3
"""akhostmgmt(1) has the operations and options of the tool's tables, and no others."""

import json
import sys
import unittest

import manual

# The two operations on comments share a table; what deleting refuses is in no synopsis.
REFUSED = {"deletecomment": {"comment"}}
PAGE = "akhostmgmt.1"


def tables():
    return json.loads((manual.PROGRAMS.tables / "tables.json").read_text())


def names(row):
    return row["name"], row["alias"]


def takes_value(row):
    return row["type"] != "none"


def sections():
    """The operations' sections: for each operation its entries, as (names, values)."""
    found = {}
    for section, subsection, words in manual.macro_lines(manual.built(PAGE)):
        operation = tuple(manual.arguments(subsection.split(), "Fl"))
        if section == "OPERATIONS" and words[0] == "Ss":
            found[operation] = []
        elif section == "OPERATIONS" and words[0] == "It":
            found[operation].append((words, tuple(manual.arguments(words, "Fl"))))
    return found


def synopses():
    """For each operation of the SYNOPSIS, its words."""
    groups = []
    for section, _, words in manual.macro_lines(manual.built(PAGE)):
        if section == "SYNOPSIS" and words[0] == "Nm":
            groups.append([])
        elif section == "SYNOPSIS" and words[0] != "Sh":
            groups[-1] += words
    return {manual.arguments(words, "Fl")[0]: words for words in groups}


class Options(unittest.TestCase):
    def test_each_operation_has_its_section(self):
        known = tables()
        expected = [names(row) for row in known["operations"]] + [names(known["help"])]
        self.assertGreater(len(expected), 1)
        self.assertCountEqual(sections(), expected)

    def test_each_section_has_the_options_of_its_operation(self):
        found = sections()
        for operation in tables()["operations"]:
            with self.subTest(operation["name"]):
                entries = [flags for _, flags in found[names(operation)]]
                self.assertCountEqual(entries, [names(row) for row in operation["options"]])

    def test_an_entry_shows_a_value_where_the_option_takes_one(self):
        found = sections()
        for operation in tables()["operations"]:
            values = {names(row): takes_value(row) for row in operation["options"]}
            for words, flags in found[names(operation)]:
                with self.subTest(operation=operation["name"], option=flags[0]):
                    shown = manual.arguments(words, "Ar")
                    self.assertEqual(len(shown), 2 if values[flags] else 0)
                    self.assertLessEqual(len(set(shown)), 1)

    def test_the_synopsis_has_the_options_of_each_operation(self):
        found = synopses()
        known = tables()
        self.assertCountEqual(
            found, [row["name"] for row in known["operations"]] + [known["help"]["name"]])
        for operation in known["operations"]:
            with self.subTest(operation["name"]):
                refused = REFUSED.get(operation["name"], set()) | {known["help"]["name"]}
                expected = [row["name"] for row in operation["options"]
                            if row["name"] not in refused]  # fmt: skip
                flags = manual.arguments(found[operation["name"]], "Fl")
                self.assertCountEqual(flags[1:], expected)

    def test_each_option_of_the_text_exists(self):
        known = tables()
        operations = {row["name"] for row in known["operations"]} | {known["help"]["name"]}
        options = {row["name"]: {name for option in row["options"] for name in names(option)}
                   for row in known["operations"]}  # fmt: skip
        everywhere = {option["name"] for row in known["operations"] for option in row["options"]}
        for name in ("akhostmgmt.1", "akhostmgmt-files.5"):
            for section, subsection, words in manual.macro_lines(manual.built(name)):
                flags = manual.arguments(subsection.split(), "Fl")
                operation = flags[0] if section == "OPERATIONS" and flags else ""
                allowed = options.get(operation, everywhere)
                if words[0] != "Ss":
                    wrong = set(manual.arguments(words, "Fl")) - allowed - operations
                    self.assertFalse(wrong, f"{name}: {section} {subsection}: {words}")


if __name__ == "__main__":
    sys.exit(manual.run(__doc__))
