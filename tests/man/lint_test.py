#!/usr/bin/env python3
"""The pages are clean to both formatters, fit a terminal and show exactly what they mean."""

import json
import pathlib
import re
import string
import subprocess
import sys
import tempfile
import unittest

import manual

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "man"))
import make_pages

# Which other pages are installed is no matter of ours.
NOT_OURS = "referenced manual not found"


def complaints(path):
    """What mandoc and groff have to say about a page."""
    lint = subprocess.run(["mandoc", "-T", "lint", "-W", "style", path], capture_output=True)
    groff = subprocess.run(["groff", "-mandoc", "-ww", "-z", path], capture_output=True)
    lines = (lint.stdout + groff.stderr).decode().splitlines()
    return [line for line in lines if NOT_OURS not in line]


def made(text, rows=()):
    """The complaints about a page made from this source, and how each formatter shows it."""
    with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
        path = pathlib.Path(folder) / "page.1"
        head = ".Dd November 21, 2026\n.Dt PAGE 1\n.Os\n.Sh NAME\n.Nm page\n.Nd a page\n"
        path.write_text(make_pages.page(head + text, "1.2.3", rows))
        shown = {name: manual.rendered(path, name) for name in manual.FORMATTERS}
        return complaints(path), shown


class Pages(unittest.TestCase):
    def test_nobody_complains(self):
        for name in manual.NAMES:
            self.assertEqual(complaints(manual.built(name)), [], name)

    def test_no_line_is_longer_than_the_terminal(self):
        for name in manual.NAMES:
            for formatter in manual.FORMATTERS:
                lines = manual.rendered(manual.built(name), formatter).splitlines()
                self.assertGreater(len(lines), 50)
                self.assertEqual([line for line in lines if len(line) > manual.WIDTH], [], name)

    def test_the_statuses_are_all_there(self):
        rows = json.loads((manual.PROGRAMS.tables / "statuses.json").read_text())["statuses"]
        expected = [(str(row["status"]), str(row["shell"]), row["retry"], row["meaning"])
                    for row in rows]  # fmt: skip
        self.assertGreater(len(expected), 30)
        for formatter in manual.FORMATTERS:
            text = manual.rendered(manual.built("akhostmgmt.1"), formatter, 300)
            found = re.findall(r"^ +(\d+) +(\d+) +(no|yes|check) +(\S.*)$", text, re.M)
            self.assertEqual(found, expected, formatter)


class Generator(unittest.TestCase):
    def test_a_broken_page_is_complained_about(self):
        for text in (".Xyz\n", ".Bl -tag\n.It x\n", ".Sh A\n.Pp\n", "x" * 50 + " " + "y" * 50):
            self.assertNotEqual(made(text)[0], [], text)

    def test_a_literal_block_is_shown_as_it_is(self):
        marks = string.punctuation + "\\fB\\e\\-"
        lines = [marks, marks[::-1], ".Sh no macro", "'no request", "a  b", "--x", "...", "\\"]
        text = ".Sh EXAMPLES\n.Bd -literal\n" + "\n".join(lines) + "\n.Ed\n"
        found, shown = made(text)
        self.assertEqual(found, [])
        for name in manual.FORMATTERS:
            for line in lines:
                self.assertRegex(shown[name], rf"(?m)^     {re.escape(line)}$", name)

    def test_a_meaning_is_shown_as_it_is(self):
        texts = ["No macro It Ta -x", ".Sh 'x' \\-", "word " * 40 + "end"]
        rows = [{"status": 20 + i, "shell": 20 + i, "retry": "no", "meaning": text}
                for i, text in enumerate(texts)]  # fmt: skip
        found, shown = made(".Sh EXIT STATUS\nText.\n@STATUSES@\n", rows)
        self.assertEqual(found, [])
        for name in manual.FORMATTERS:
            words = " ".join(shown[name].split())
            for row in rows:
                self.assertIn(f"{row['status']} {row['shell']} no {row['meaning']}", words, name)

    def test_unknown_advice_is_an_error(self):
        row = {"status": 1, "shell": 1, "retry": "maybe", "meaning": "x"}
        with self.assertRaisesRegex(ValueError, "maybe"):
            made("@STATUSES@\n", [row])

    def test_the_version_is_filled_in(self):
        self.assertIn("1.2.3", made(".Sh DESCRIPTION\n@VERSION@\n")[1]["mandoc"])


if __name__ == "__main__":
    sys.exit(manual.run(__doc__))
