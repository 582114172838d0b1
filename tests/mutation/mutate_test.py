#!/usr/bin/python3
"""The mutation script's own test: of a small source it finds the mutants that tests let live."""

import pathlib
import subprocess
import tempfile
import unittest

import mutants
import mutate
import programs
import rewriting
import trials

SAMPLE = pathlib.Path(__file__).resolve().parent / "sample"
COMPILER = ["g++", "-std=c++20", "-w", "-Wno-narrowing", f"-I{SAMPLE}"]


def found_in(path):
    return mutants.Finder(mutants.parse(path, f"g++ -std=c++20 -I{SAMPLE}"), path, path.name)


class Sample(unittest.TestCase):
    def setUp(self):
        kept = tempfile.TemporaryDirectory(prefix="akhostmgmt_mutate_test_")
        self.addCleanup(kept.cleanup)
        self.folder = pathlib.Path(kept.name)

    def mutated(self, path):
        """The mutants of a source that compile, and the mutated source."""
        finder = found_in(path)
        for number, each in enumerate(finder.mutants, 1):
            each.number = number
        target = self.folder / path.name
        check = [*COMPILER, "-include", programs.HEADER, "-fsyntax-only", target]
        good = rewriting.compilable(
            path.read_bytes(), finder.mutants, finder.constexpr_words, target, check, self.folder
        )
        return good, target

    def test_survivors_are_told_from_what_the_tests_find(self):
        good, source = self.mutated(SAMPLE / "Sample.cpp")
        program = self.folder / "SampleTest"
        subprocess.run([*COMPILER, "-include", programs.HEADER, source, SAMPLE / "SampleTest.cpp",
                        "-o", program, "-lgtest", "-lgtest_main"], check=True)  # fmt: skip
        tests = trials.unit_tests(program)
        self.assertEqual([test.name for test in tests], ["Sample.Fair", "Sample.Good"])
        held_against = mutate.Trials(tests, good, self.folder, 2)
        survivors = {each.change for each in good if held_against.killer(each) is None}
        self.assertEqual(survivors, {
            "90 -> 90 + 1", "90 -> 90 - 1",
            "points == 100 -> points != 100", "100 -> 100 + 1", "100 -> 100 - 1",
        })  # fmt: skip
        killed = {each.change for each in good} - survivors
        self.assertLessEqual({
            "50 -> 50 + 1", "50 -> 50 - 1", '"good" -> ""', '"fair" -> ""', '"poor" -> ""',
            "points >= grade.least -> points > grade.least",
            "points >= grade.least -> points < grade.least", "other than grade.name",
        }, killed)  # fmt: skip

    def test_a_mutant_that_does_not_compile_is_left_out(self):
        path = self.folder / "Fixed.cpp"
        path.write_text("int sized(int n) { return n + 1; }\nint f() { return sized(2); }\n")
        found = found_in(path).mutants
        found[0].changed = '"a text"'
        for number, each in enumerate(found, 1):
            each.number = number
        target = self.folder / "mutated.cpp"
        check = [*COMPILER, "-include", programs.HEADER, "-fsyntax-only", target]
        good = rewriting.compilable(path.read_bytes(), found, [], target, check, self.folder)
        self.assertEqual(good, found[1:])

    def test_a_test_that_fails_without_a_mutant_ends_the_run(self):
        program = self.folder / "failing"
        program.write_text("#!/bin/sh\nexit 1\n")
        program.chmod(0o755)
        with self.assertRaises(SystemExit):
            mutate.Trials([trials.UnitTest(program, "Any.Thing")], [], self.folder, 1)

    def test_an_endless_mutant_is_found(self):
        program = self.folder / "endless"
        program.write_text("#!/bin/sh\nwhile :; do :; done\n")
        program.chmod(0o755)
        test = trials.UnitTest(program, "Any.Thing")
        self.addCleanup(setattr, trials, "CPU_SECONDS", trials.CPU_SECONDS)
        trials.CPU_SECONDS = 1
        self.assertFalse(test.passes({}))


if __name__ == "__main__":
    unittest.main()
