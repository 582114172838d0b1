"""Runs the unit tests and the whole-program cases with one mutant in force."""

import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import types

PROGRAM_TESTS = pathlib.Path(__file__).resolve().parent.parent / "program"
sys.path.insert(0, str(PROGRAM_TESTS))

import case_files  # noqa: E402  (found only now)
import run_cases  # noqa: E402

# What a run may take: a mutant may well loop for ever, or ask for all memory.
CPU_SECONDS = 20
WALL_SECONDS = 120
MEMORY_BYTES = 8 << 30
FILE_BYTES = 1 << 30

# What ctest gives every test.
ENVIRONMENT = {"LC_ALL": "C.UTF-8", "LANGUAGE": "", "ARKEON_ROOT": "/dev/null/no-root"}


def fence():
    """Bounds what this process and all that it starts may take."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_BYTES, MEMORY_BYTES))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_BYTES, FILE_BYTES))


class UnitTest:
    """One test of a GoogleTest program, in a process and a folder of its own."""

    def __init__(self, program, name):
        self.program = program
        self.name = name

    def __str__(self):
        return f"{self.program.name} {self.name}"

    def passes(self, choice):
        with tempfile.TemporaryDirectory(prefix="akhostmgmt_mutant_") as folder:
            limited = ["prlimit", f"--cpu={CPU_SECONDS}", self.program]
            environment = {"PATH": os.environ["PATH"], "TMPDIR": folder, "HOME": folder}
            process = subprocess.Popen(
                [*limited, f"--gtest_filter={self.name}"],
                env=ENVIRONMENT | environment | choice, cwd=folder, start_new_session=True,
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            )  # fmt: skip
            try:
                return process.wait(WALL_SECONDS) == 0
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
                return False


def unit_tests(program):
    """The tests that a program lists."""
    command = [program, "--gtest_list_tests"]
    listed = subprocess.run(command, check=True, capture_output=True, text=True)
    tests, suite = [], ""
    for line in listed.stdout.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            tests.append(UnitTest(program, suite + name.strip()))
        elif name.endswith("."):
            suite = name
    return tests


class Case:
    """One whole run of the tool against a scripted server."""

    def __init__(self, stage, label, case, *rest):
        self.name = label
        self.file = label.partition(":")[0]
        self._stage = stage
        self._case = case
        self._rest = rest

    def __str__(self):
        return f"case {self.name}"

    def passes(self, choice):
        case = dict(self._case, environment=self._case["environment"] | choice)
        case["timeout"] = min(case["timeout"], CPU_SECONDS)
        try:
            return not run_cases.run_case(self._stage, case, *self._rest)
        except (OSError, UnicodeError, ValueError):  # the tool's folder or its outputs are broken
            return False


def cases(tool, devserver, names, jobs, folder):
    """The cases of the files with these names, against `tool`."""
    options = types.SimpleNamespace(
        tool=str(tool), devserver=str(devserver), make_certificates=None, jobs=jobs, define=[],
        marked=False,
    )
    folder.mkdir()
    stage = run_cases.Stage(options, folder)
    found = []
    for name in names:
        of_file, texts, files = case_files.load(PROGRAM_TESTS / "cases" / f"{name}.toml")
        found += [Case(stage, f"{name}: {each['name']}", each, texts, files) for each in of_file]
    return found
