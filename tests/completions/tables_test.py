#!/usr/bin/env python3
"""What the completions are made from: held against the tool, and tables of other kinds."""

import itertools
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import tomllib
import unittest

import make_completions
import shells

TABLES = json.loads(pathlib.Path(os.environ["TABLES"]).read_text())
DESCRIPTIONS = tomllib.loads(pathlib.Path(os.environ["DESCRIPTIONS"]).read_text())
WRONG_COMMAND_LINE = 144


class AgainstTheTool(unittest.TestCase):
    """The tool without certificate information: a line that it takes ends with another status."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="akhostmgmt-")
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name)
        (self.root / "etc").mkdir()
        (self.root / "etc" / "master.toml").write_text('[primary_server]\nname = "127.0.0.1"\n')
        self.tables = make_completions.Tables(TABLES, DESCRIPTIONS)

    def takes(self, operation, options):
        """Whether the tool takes a line of the operation with these options and values."""
        words = [word for name, *value in options for word in (f"-{name}", *value)]
        run = subprocess.run(
            [os.environ["LOGGING_TOOL"], f"-{operation}", *words], capture_output=True,
            stdin=subprocess.DEVNULL, timeout=60,
            env={"ARKEON_ROOT": self.root, "AK_TEST_LOG_DIRECTORY": self.root})  # fmt: skip
        self.assertGreater(run.returncode, 0, run)
        return run.returncode != WRONG_COMMAND_LINE

    def filled(self, name):
        """An option with a value where it takes one."""
        kind, *values = self.tables.takes().get(name, [""])
        return (name, *values[:1]) if kind != "text" else (name, "web1")

    def is_of_use(self, operation, option, others):
        """Whether there is a line that the tool takes with the option and at most three others."""
        others = [each for each in others if each != option]
        for count in range(4):
            for beside in itertools.combinations(others, count):
                if self.takes(operation, map(self.filled, (option, *beside))):
                    return True
        return False

    def test_what_is_offered_is_what_the_tool_takes(self):
        for row in TABLES["operations"]:
            names = [option["name"] for option in row["options"] if option["name"] != "help"]
            useful = [name for name in names if self.is_of_use(row["name"], name, names)]
            with self.subTest(row["name"]):
                self.assertEqual(useful, self.tables.choices()[row["name"]])

    def test_the_values_are_those_that_the_tool_takes(self):
        taken = [
            str(value)
            for value in range(4)
            if self.takes("aa", [("host", "web1"), ("autoreissue", str(value))])
        ]
        self.assertEqual(taken, DESCRIPTIONS["values"]["autoreissue"])


def option(name, alias, kind, values=()):
    return {"name": name, "alias": alias, "type": kind, "values": list(values)}


HELP = option("help", "h", "none")
# Options of the kinds that no operation has today: a path, values in the table, one without alias.
OTHER_TABLES = {
    "operations": [
        {"name": "copy", "alias": "c", "options": [
            option("from", "f", "path"), option("mode", "m", "string", ["Fast", "safe"]),
            option("quiet", "", "none"), HELP]},
        {"name": "count", "alias": "", "options": [option("number", "n", "unsigned"), HELP]},
    ],
    "help": {"name": "help", "alias": "h"},
}  # fmt: skip
OTHER_DESCRIPTIONS = {
    "operations": {"copy": "the user's \\ copy: all of it", "count": "count"},
    "options": {
        "from": "the file", "mode": "how", "quiet": "say nothing", "number": "how many",
        "help": "help",
    },
    "values": {}, "refused": {},
}  # fmt: skip
OTHER_LINES = {
    "": ["-copy", "-count", "-help"],
    "-c": ["-copy", "-count"],
    "-copy ": ["-from", "-mode", "-quiet", "-help"],
    "-copy -from ": shells.FILES,
    "-copy -F h": ["hosts.csv"],
    "-copy -f -": [],
    "-from ": shells.FILES,
    "-copy -mode ": ["Fast", "safe"],
    "-copy -m f": ["Fast"],
    "-copy -m x": [],
    "-copy -q": ["-quiet"],
    "-copy -quiet -from hosts.csv -": ["-mode"],
    "-count -number ": [],
    "-count -n 7 ": [],
}


class OtherTables(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="akhostmgmt-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def made(self, tables, descriptions):
        """Runs the program that makes the completions."""
        (self.folder / "tables.json").write_text(json.dumps(tables))
        lines = [
            f"{name} = {json.dumps(value)}\n" if kind else f"[{name}]\n"
            for table, rows in descriptions.items()
            for kind, name, value in [(0, table, 0), *((1, *row) for row in rows.items())]
        ]
        (self.folder / "descriptions.toml").write_text("".join(lines))
        return subprocess.run(
            [sys.executable, make_completions.__file__, "tables.json", "descriptions.toml", "."],
            cwd=self.folder, capture_output=True, text=True)  # fmt: skip

    def test_every_kind_of_option_in_every_shell(self):
        made = self.made(OTHER_TABLES, OTHER_DESCRIPTIONS)
        self.assertEqual((made.returncode, made.stdout, made.stderr), (0, "", ""))
        for shell in shells.ALL:
            place = shells.Place(self.folder, os.environ["TOOL"])
            self.addCleanup(place.remove)
            session = shell(place)
            self.addCleanup(session.close)
            for line, offers in OTHER_LINES.items():
                with self.subTest(line, shell=shell.__name__):
                    self.assertEqual(sorted(session.offers(f"akhostmgmt {line}")), sorted(offers))
            self.assertEqual(
                getattr(session, "phrases", {}).get("-copy", "the user's \\ copy: all of it"),
                "the user's \\ copy: all of it")

    def assert_refused(self, reason, change):
        tables, descriptions = json.loads(json.dumps((OTHER_TABLES, OTHER_DESCRIPTIONS)))
        change(tables["operations"], descriptions)
        with self.subTest(reason):
            made = self.made(tables, descriptions)
            self.assertEqual(made.returncode, 1)
            self.assertTrue(made.stderr.endswith(f"make_completions.py: {reason}\n"), made.stderr)

    def test_what_does_not_fit_is_refused(self):
        self.assert_refused(
            "options not in both places: mode", lambda _, texts: texts["options"].pop("mode"))
        self.assert_refused(
            "options not in both places: size",
            lambda _, texts: texts["options"].update(size="how large"))
        self.assert_refused(
            "operations not in both places: count",
            lambda _, texts: texts["operations"].pop("count"))
        self.assert_refused(
            "operations not in both places: move",
            lambda _, texts: texts["operations"].update(move="move"))
        self.assert_refused(
            "there is no such option: size", lambda _, texts: texts["values"].update(size=["1"]))
        self.assert_refused(
            "there is no such option: number",
            lambda _, texts: texts["refused"].update(copy=["number"]))
        self.assert_refused(
            "there is no such option: help",
            lambda _, texts: texts["refused"].update(move=["help"]))
        self.assert_refused(
            "these words have two meanings: n",
            lambda rows, _: rows[0]["options"][2].update(alias="n"))
        self.assert_refused(
            "there are two kinds of -help", lambda rows, _: rows[1]["options"][1].update(alias="?"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
