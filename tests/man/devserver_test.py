#!/usr/bin/env python3
"""akdevserver(1) has the options and faults that akdevserver --help names, and no others."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import manual

PAGE = "akdevserver.1"
# An exception from the rules that follow, which the help has no room for.
NOT_IN_HELP = {"none"}


def output(option):
    return subprocess.run([manual.PROGRAMS.devserver, option], capture_output=True, check=True,
                          stdin=subprocess.DEVNULL).stdout.decode()  # fmt: skip


def options_of_help():
    """Each option with its argument, or with nothing."""
    rows = re.findall(r"^  -(-[a-z-]+)(?: ([A-Z]+))? ", output("--help"), re.M)
    return [tuple(word for word in row if word) for row in rows]


class DevelopmentServer(unittest.TestCase):
    def test_each_option_has_its_entry(self):
        entries = [(*manual.arguments(words, "Fl"), *manual.arguments(words, "Ar"))
                   for section, _, words in manual.macro_lines(manual.built(PAGE))
                   if section == "DESCRIPTION" and words[0] == "It"]  # fmt: skip
        self.assertGreater(len(entries), 1)
        self.assertCountEqual(entries, options_of_help())

    def test_the_synopsis_has_each_option(self):
        found = {flag for section, _, words in manual.macro_lines(manual.built(PAGE))
                 if section == "SYNOPSIS" for flag in manual.arguments(words, "Fl")}  # fmt: skip
        self.assertEqual(found, {row[0] for row in options_of_help()})

    def test_each_fault_is_explained(self):
        rules = output("--help").partition("A fault RULE")[2].partition("\n")[2]
        known = set(re.findall(r"(?:^|\s)([a-z-]+)", rules))
        lines = (words for section, _, words in manual.macro_lines(manual.built(PAGE))
                 if section == "FAULTS" and words[0] in ("It", "Cm", "Pq"))  # fmt: skip
        found = {name for words in lines for name in manual.arguments(words, "Cm")}
        self.assertGreater(len(found), len(NOT_IN_HELP))
        self.assertEqual(found, known | NOT_IN_HELP)

    def test_the_files_are_those_that_are_made(self):
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            root = pathlib.Path(folder) / "DIR"
            subprocess.run([manual.PROGRAMS.devserver, "--root", root, "--init-only"], check=True,
                           stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)  # fmt: skip
            made = {str(path.relative_to(folder)) for path in root.rglob("*") if path.is_file()}
        found = [path for row in manual.items(manual.built(PAGE), "FILES", "Pa") for path in row]
        self.assertGreater(len(found), 1)
        self.assertCountEqual(found, made)

    def test_the_version_is_that_of_the_program(self):
        version = output("--version").split()[-1]
        for name in manual.NAMES:
            foot = manual.rendered(manual.built(name), "mandoc").splitlines()[-1]
            self.assertRegex(foot, rf"^akhostmgmt {re.escape(version)} .* [A-Z][a-z]+ \d+, \d{{4}} ")


if __name__ == "__main__":
    sys.exit(manual.run(__doc__))
