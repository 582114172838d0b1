"""A development server and runs of the tool against it, with everything in one temporary folder."""

import argparse
import atexit
import os
import pathlib
import random
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAMS = argparse.Namespace(tool="", devserver="")


def random_address(generator=random.Random()):
    """A loopback address that most likely nobody uses; a test may have seeded the common generator."""
    return "127." + ".".join(str(generator.randint(1, 254)) for _ in range(3))


class Server:
    """A development server on a loopback address of its own.

    `logs` is the folder of the tool's debug log, which it writes once the folder is made.
    """

    def __init__(self, *options):
        self._temporary = tempfile.TemporaryDirectory(prefix="akhostmgmt-")
        self.folder = pathlib.Path(self._temporary.name)
        self.root = self.folder / "root"
        self.logs = self.folder / "logs" / "admin"
        try:
            self._start_somewhere(options)
        except BaseException:
            self._temporary.cleanup()
            raise

    def _start_somewhere(self, options):
        for _ in range(20):
            self.address = random_address()
            if self.start(*options):
                return
        raise RuntimeError("no development server could be started")

    def start(self, *options):
        """Starts it on its address; whether it answers."""
        ready = self.folder / "ready"
        self.process = subprocess.Popen(
            [PROGRAMS.devserver, "--root", self.root, "--listen", self.address,
             "--ready-file", ready, *options],
            stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)  # fmt: skip
        atexit.register(self.process.kill)  # for a test that fails before it stops its server
        until = time.monotonic() + 60
        while self.process.poll() is None and time.monotonic() < until:
            if ready.exists():
                return True
            time.sleep(0.02)
        self.process.kill()
        self.process.wait()
        return False

    def halt(self):
        """Stops the server and keeps its files; the server's exit status."""
        self.process.terminate()
        try:
            return self.process.wait(30)
        finally:
            self.process.kill()

    def stop(self):
        """Stops the server and removes its files; the server's exit status."""
        try:
            return self.halt()
        finally:
            self._temporary.cleanup()

    def variables(self):
        """The environment in which the tool finds this server."""
        return {
            "ARKEON_ROOT": self.root, "XDG_CONFIG_HOME": self.root / "config",
            "AK_TEST_LOG_DIRECTORY": self.logs.parent, "LC_ALL": "C.UTF-8", "TZ": "UTC0",
            "PATH": os.environ["PATH"],
        }  # fmt: skip

    def run(self, *arguments, stdin=b"", environment=None):
        """Runs the tool with these arguments, which may be bytes."""
        return subprocess.run(
            [PROGRAMS.tool, *arguments], env=self.variables() | (environment or {}), input=stdin,
            capture_output=True, timeout=240)  # fmt: skip

    def listing(self, *options):
        """What `-list` prints with these options; it must succeed."""
        run = self.run("-list", *options)
        if run.returncode or run.stderr:
            raise AssertionError(f"-list {options}: {run.returncode} {run.stderr}")
        return run.stdout.decode()

    def database(self, mode="ro"):
        """The server's database. Texts come as str; bytes that are no UTF-8 as surrogates."""
        connection = sqlite3.connect(f"file:{self.root / 'hosts.db'}?mode={mode}", uri=True)
        connection.text_factory = lambda data: data.decode(errors="surrogateescape")
        return connection

    def printed_audit_trail(self):
        """What `akdevserver --audit` prints."""
        return subprocess.run(
            [PROGRAMS.devserver, "--root", self.root, "--audit"], stdin=subprocess.DEVNULL,
            capture_output=True, check=True, timeout=240).stdout  # fmt: skip


def argument_parser(description):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--tool", required=True, type=os.path.abspath)
    parser.add_argument("--devserver", required=True, type=os.path.abspath)
    return parser


def close(passed, failed):
    """Prints the closing line; the exit status."""
    print(f"{passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


def run_unit_tests(description):
    """The main function of a test program that is made of unittest classes."""
    parser = argument_parser(description)
    parser.add_argument("--many", type=int, default=100_000, help="how many hosts many are")
    return run_with(parser)


def run_with(parser):
    """The same for a program with arguments of its own, which `PROGRAMS` has then."""
    parser.parse_args(namespace=PROGRAMS)
    result = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    failed = len(result.failures) + len(result.errors)
    return close(max(result.testsRun - failed, 0), failed)
