#!/usr/bin/env python3
"""The statuses as data: what scripts read, in each shell and after real runs of the tool.

    TABLES_FOLDER=BUILD/tables statuses_test.py --tool PATH --devserver PATH
"""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import local_server

FOLDER = pathlib.Path(os.environ["TABLES_FOLDER"])
SNIPPET = FOLDER / "statuses.sh"
TABLE = json.loads((FOLDER / "statuses.json").read_text())
ROWS = {row["status"]: row for row in TABLE["statuses"]}
PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "statuses.md"
SHELLS = {
    "dash": ["dash"],
    "bash": ["bash", "--norc"],
    "bash as sh": ["bash", "--posix"],
    "zsh": ["zsh", "-f"],
    "busybox": ["busybox", "sh"],
}
# The number that a run's standard error and what the shell saw of it stand for; "" cannot be told.
READINGS = [
    ("Exit Status 8701: x\n", "253", "8701"),
    ("Exit Status 8701: x\n", "", "8701"),
    ("Exit Status 8701: x\nExit Status 7651: x\n", "253", "8701"),
    ("Exit Status 8701: x\nExit Status 7651: x\n", "", "7651"),
    ("wrong\nExit Status 7651: x\n", "144", "144"),
    ("Exit Status 7610: x\n", "0", "0"),
    ("Exit Status 7680: x\n", "255", "7680"),
    ("Exit Status -5: x\n", "251", "-5"),
    ("Exit Status 10: x\n", "10", "10"),
    ("Exit Status 010: x\n", "10", ""),
    ("Exit Status 2147483647: x\n", "255", "2147483647"),
    ("Exit Status 99999999999999999999: x\n", "255", ""),
    ("\udcff\udcfe: x\nExit Status 8902: \udcff\n", "198", "8902"),
    (" Exit Status 8902: x\nNo Exit Status 8902: x\nExit Status 8902 x\n", "198", ""),
    ("", "", ""),
    ("", "0", "0"),
    ("", "42", "5930"),
    ("", "216", "7640"),
    ("", "197", ""),
    ("", "134", ""),
    ("", "127", ""),
]
# Errors of the server that stand in no table.
FAULTS = ["--fault", "PUT * x* status=503/7680", "--fault", "POST * x* status=503/8999"]


class Shell(unittest.TestCase):
    """Tests of what a script prints that has read the functions, in each shell."""

    def assert_prints(self, wanted, script, *arguments, environment=None):
        for name, shell in SHELLS.items():
            run = subprocess.run(
                [*shell, "-c", f'. "$1"; shift\n{script}', "script", SNIPPET, *arguments],
                env=environment or {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"},
                stdin=subprocess.DEVNULL, capture_output=True, timeout=240)  # fmt: skip
            seen = (run.stdout.decode(), run.stderr.decode(), run.returncode)
            with self.subTest(name):
                self.assertEqual(seen, (wanted, "", 0))


class Table(unittest.TestCase):
    def test_the_numbers_ascend(self):
        self.assertEqual(list(ROWS), sorted(ROWS))
        self.assertEqual(len(ROWS), len(TABLE["statuses"]))

    def test_no_failure_looks_like_success(self):
        for status, row in ROWS.items():
            self.assertEqual(row["shell"], status % 256 or (255 if status else 0))

    def test_the_page_names_what_a_shell_cannot_tell_apart(self):
        seen = [row["shell"] for row in ROWS.values()]
        self.assertEqual({each for each in seen if seen.count(each) > 1}, {196, 197, 198})
        self.assertIn("one of 196,\n197 and 198, which stand for two", PAGE.read_text())

    def test_a_word_that_names_no_table_is_refused(self):
        for words in ([], ["hosts"], ["statuses", "operations"]):
            run = subprocess.run([FOLDER / "akhostmgmt_tables", *words], capture_output=True)
            self.assertEqual((run.returncode, run.stdout), (2, b""))


class Functions(Shell):
    def test_each_status_has_its_row(self):
        script = """for number; do
            akhostmgmt_shell_status "$number"
            akhostmgmt_retry "$number"
            akhostmgmt_meaning "$number"
        done"""
        texts = (row[key] for row in ROWS.values() for key in ("shell", "retry", "meaning"))
        self.assert_prints("".join(f"{text}\n" for text in texts), script, *map(str, ROWS))

    def test_an_unknown_status_has_a_meaning_and_is_to_be_checked(self):
        script = 'for number; do akhostmgmt_meaning "$number"; akhostmgmt_retry "$number"; done'
        numbers = ["1", "4711", "-1", "2147483647"]
        meaning = TABLE["unknown"]["meaning"]
        wanted = "".join(meaning.replace("%d", number) + "\ncheck\n" for number in numbers)
        self.assert_prints(wanted, script, *numbers)

    def test_what_is_no_number_has_no_meaning(self):
        script = 'for text; do akhostmgmt_meaning "$text" || echo "$?"; done; akhostmgmt_retry ""'
        self.assert_prints("1\n1\n1\n1\ncheck\n", script, "", "x", "7610x", "*")

    def test_the_number_is_read_from_the_line_that_fits_what_the_shell_saw(self):
        script = 'akhostmgmt_status "$1" ${2:+"$2"} || echo "$?"'
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            errors = pathlib.Path(folder, "-n errors")
            for text, code, number in READINGS:
                errors.write_bytes(text.encode(errors="surrogateescape"))
                with self.subTest(text, code=code):
                    self.assert_prints(f"{number or 1}\n", script, errors, code)

    def test_a_file_that_is_missing_leaves_what_the_shell_saw(self):
        self.assert_prints("5930\n", "akhostmgmt_status /dev/null/none 42 2>/dev/null")

    def test_the_callers_shell_stays_as_it_is(self):
        script = """set -eu
        found=a number=b line=c IFS=0187
        printf 'Exit Status 8701: x\\n' | akhostmgmt_status /dev/stdin 253
        . "$1"
        akhostmgmt_status /dev/null || printf '%s\\n' "$found$number$line$IFS"
        """
        self.assert_prints("8701\nabc0187\n", script, SNIPPET)


class AfterRuns(Shell):
    """Whole runs of the tool, started by each shell."""

    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server(*FAULTS)
        cls.bare = cls.server.folder / "bare"
        (cls.bare / "etc").mkdir(parents=True)
        master = cls.server.root / "etc" / "master.toml"
        (cls.bare / "etc" / "master.toml").write_bytes(master.read_bytes())

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def assert_run(self, seen, number, command, environment=None):
        """What a shell sees of a command of the tool, and the number that it stands for."""
        script = f"""cd "$1"; tool=$2 code=0
        {{ {command}; }} >output 2>errors || code=$?
        echo "$code $(akhostmgmt_status errors "$code")"
        """
        folder, tool = self.server.folder, local_server.PROGRAMS.tool
        variables = self.server.variables() | (environment or {})
        self.assert_prints(f"{seen} {number}\n", script, folder, tool, environment=variables)

    def test_runs(self):
        for seen, number, command in (
            (0, 0, '"$tool" -list'),
            (144, 144, '"$tool" -list -nothing'),
            (144, 144, '"$tool" -list -nothing >/dev/full'),
            (227, 7651, '"$tool" -list >/dev/full'),
            (196, 8900, '"$tool" -addcomment -host testhost1 -comment "rack 7"'),
            (198, 8902, '"$tool" -list -host nobody'),
            (253, 8701, '"$tool" -updatehost -host nobody -newhostname web1'),
            (197, 8901, '"$tool" -delete -host testhost2 -mappingname nobody'),
            (255, 7680, '"$tool" -addcomment -host testhost2 -comment "rack 7"'),
            (39, 8999, 'echo y | "$tool" -addhost -host web1'),
        ):
            with self.subTest(command):
                self.assert_run(seen, number, command)

    def test_a_status_that_has_no_line(self):
        self.assert_run(216, 7640, '"$tool" -list -apvmappings', {"ARKEON_ROOT": self.bare})

    def test_a_server_that_has_gone(self):
        self.assertEqual(self.server.halt(), 0)
        try:
            self.assert_run(197, 7621, '"$tool" -list')
        finally:
            self.assertTrue(self.server.start(*FAULTS))


if __name__ == "__main__":
    raise SystemExit(local_server.run_unit_tests(__doc__))
