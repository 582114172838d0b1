#!/usr/bin/env python3
"""The completions as they are built, in real shells."""

import contextlib
import os
import pathlib
import re
import tomllib
import unittest

import shells

LINES = tomllib.loads((shells.HERE / "lines.toml").read_text())["line"]
DESCRIPTIONS = pathlib.Path(os.environ["DESCRIPTIONS"])
COMMAND = "akhostmgmt "


@contextlib.contextmanager
def running(shell, before=()):
    place = shells.Place(os.environ["COMPLETIONS"], os.environ["TOOL"])
    try:
        session = shell(place, [word.format(folder=place.folder) for word in before])
        try:
            yield session
        finally:
            session.close()
            session.trace = place.trace()
    finally:
        place.remove()


class Completions(unittest.TestCase):
    def test_every_line_is_offered_what_may_follow_and_nothing_else(self):
        for shell in shells.ALL:
            with running(shell) as session:
                for line in LINES:
                    with self.subTest(line["typed"], shell=shell.__name__):
                        offers = session.offers(COMMAND + line["typed"])
                        self.assertEqual(sorted(offers), sorted(line["offers"]))

    def test_a_tab_completes_the_line(self):
        for shell in shells.ON_TERMINALS:
            with running(shell) as session:
                for line in (line for line in LINES if "completed" in line):
                    with self.subTest(line["typed"], shell=shell.__name__):
                        completed = session.completed(COMMAND + line["typed"])
                        self.assertEqual(completed, COMMAND + line["completed"])

    def test_what_stands_behind_the_cursor_counts_and_stays(self):
        for shell in shells.ON_TERMINALS:
            with running(shell) as session:
                for before, behind, completed in (
                    ("-list -sho", " -json", "-list -short -json"),
                    ("-sho", " -LIST", "-short -LIST"),
                    ("-add -hos", " -hostid 1", "-add -host -hostid 1"),
                    ("-aut", " -aa -host web1", "-autoreissue -aa -host web1"),
                    ("-list -ser", " ::1 -json", "-list -server ::1 -json"),
                    ("-res", " -list", "-res -list"),
                    ("", " -uh -s s -n n -i i -nh n2", "-reason -uh -s s -n n -i i -nh n2"),
                ):
                    with self.subTest(before + "|" + behind, shell=shell.__name__):
                        line = COMMAND + before + behind + shells.LEFT * len(behind)
                        words = session.completed(line).split()
                        self.assertEqual(words, (COMMAND + completed).split())


class Phrases(unittest.TestCase):
    def setUp(self):
        texts = tomllib.loads(DESCRIPTIONS.read_text())
        self.operations, self.options = texts["operations"], texts["options"]

    def test_fish_says_what_each_offer_is(self):
        with running(shells.Fish) as session:
            for line in LINES:
                session.offers(COMMAND + line["typed"])
            said = {word[1:]: text for word, text in session.phrases.items() if word[0] == "-"}
        for name, text in (self.operations | self.options).items():
            with self.subTest(name):
                self.assertEqual(said[name], text)
        self.assertEqual(said["uh"], said["updatehost"])

    def test_zsh_says_what_each_offer_is(self):
        with running(shells.Zsh) as session:
            for name, text in self.operations.items():
                session.wait_for(COMMAND + "-", f"-{name} ")
                session.wait_for(COMMAND + "-", f" -- {text}")


class Trace(unittest.TestCase):
    """While lines are completed no program is run, no login is read and nobody is asked."""

    CALLS = "execve,execveat,open,openat,openat2,connect"
    PROGRAMS = {"bash", "zsh", "fish", "mv"}  # zsh's compinit moves its cache into place

    def test_the_shell_alone_works(self):
        strace = ["strace", "-f", "--seccomp-bpf", "-qq", "-e", f"trace={self.CALLS}"]
        for shell in shells.ALL:
            with running(shell, [*strace, "-o", "{folder}/trace"]) as session:
                for line in LINES:
                    session.offers(COMMAND + line["typed"])
            with self.subTest(shell.__name__):
                self.assert_harmless(session.trace, shell.COMMAND[0])

    def assert_harmless(self, trace, shell):
        programs = set(re.findall(r'exec\w+\([^"]*"(?:[^"]*/)?([^"/]*)"', trace))
        self.assertIn(shell, programs)
        self.assertLessEqual(programs, self.PROGRAMS)
        self.assertRegex(trace, r'open\w*\([^"]*"[^"]*akhostmgmt(\.fish)?"')
        self.assertEqual(re.findall(r".*(?:arkeon|logins).*", trace), [])
        self.assertEqual(re.findall(r"connect\(.*AF_INET.*", trace), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
