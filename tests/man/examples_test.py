#!/usr/bin/env python3
"""Every command of the pages' EXAMPLES is run and prints what the page shows below it.

A command stands behind "$ ", its further lines behind "> ". In the output "..." is any text.
"""

import re
import socket
import sys
import textwrap
import unittest

import local_server
import manual
import sessions

PAGES = ("akhostmgmt.1", "akdevserver.1")
# The address in the page of the development server. Each run of this test takes one of its own.
ADDRESS = "127.0.0.9"
PORT = 1556


def examples(text):
    """Each command with the output that is shown for it."""
    found = []
    for line in text.splitlines():
        if line.startswith("$ "):
            found.append([line[2:], ""])
        elif line.startswith("> "):
            found[-1][0] += "\n" + line[2:]
        else:
            found[-1][1] += line + "\n"
    return found


def free_address():
    """A loopback address on which nobody has the port of the tool."""
    while True:
        address = local_server.random_address()
        with socket.socket() as listener:
            try:
                listener.bind((address, PORT))
                return address
            except OSError:
                continue


class Examples(unittest.TestCase):
    def setUp(self):
        programs = {"akhostmgmt": manual.PROGRAMS.tool, "akdevserver": manual.PROGRAMS.devserver}
        self.desk = sessions.Desk(programs, manual.PROGRAMS.tables)
        self.addCleanup(self.desk.close)

    def shows(self, command, expected):
        """What a command prints, and whether that is what is expected; both without empty ends."""
        shown, expected = (re.sub(r"\n+\Z", "\n", text) for text in
                           (self.desk.type(command)[0], expected))  # fmt: skip
        return shown, bool(sessions.as_pattern(expected).fullmatch(shown))

    def test_each_shows_what_the_page_shows(self):
        address = free_address()
        for name in PAGES:
            text = "".join(manual.literal_blocks(name, "EXAMPLES")).replace(ADDRESS, address)
            self.assertGreater(len(examples(text)), 10)
            for command, expected in examples(text):
                shown, same = self.shows(command, expected)
                self.assertTrue(same, f"{name}: {command}: {shown}")

    def test_a_reader_sees_what_is_run(self):
        for name in PAGES:
            for formatter in manual.FORMATTERS:
                shown = manual.rendered(manual.built(name), formatter)
                for block in manual.literal_blocks(name, "EXAMPLES"):
                    self.assertIn(textwrap.indent(block, " " * 5).rstrip("\n"), shown)

    def test_wrong_output_is_noticed(self):
        for text in ("$ echo a\nb\n", "$ echo a\n", "$ true\na\n", "$ echo a\nb...\n"):
            [(command, expected)] = examples(text)
            self.assertFalse(self.shows(command, expected)[1], text)


if __name__ == "__main__":
    sys.exit(manual.run(__doc__))
