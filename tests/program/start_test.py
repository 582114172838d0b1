#!/usr/bin/env python3
"""What the tool loads when it starts, and when it makes a request.

    start_test.py --tool PATH --devserver PATH
"""

import pathlib
import re
import shutil
import tempfile
import unittest
from unittest import mock

import local_server

MODULE = "libarkeon-https.so"
CLIENT_FAILED = 7629
WRONG_COMMAND_LINE = 144


class WhatIsLoaded(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server()

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def loaded(self, *arguments, status=0):
        """The paths of the libraries that a run of the tool loads, by their names."""
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            watch = {"LD_DEBUG": "libs", "LD_DEBUG_OUTPUT": f"{folder}/loader"}
            run = self.server.run(*arguments, environment=watch)
            self.assertEqual(run.returncode, status, run.stderr)
            (report,) = pathlib.Path(folder).iterdir()
            paths = re.findall(r"calling init: (\S+)", report.read_text())
        return {pathlib.Path(path).name: path for path in paths}

    def test_a_run_without_a_request_loads_no_client(self):
        for arguments, status in ((["-help"], 0), (["-list", "-help"], 0),
                                  (["-list", "-unknown"], WRONG_COMMAND_LINE)):  # fmt: skip
            with self.subTest(arguments):
                names = self.loaded(*arguments, status=status)
                self.assertIn("libc.so.6", names)
                for client in (MODULE, "libcurl.so.4", "libssl.so.3", "libcrypto.so.3"):
                    self.assertNotIn(client, names)

    def test_a_request_loads_the_module_of_the_program_and_the_libcurl_of_the_system(self):
        loaded = self.loaded("-list")
        module = pathlib.Path(local_server.PROGRAMS.tool).resolve().with_name(MODULE)
        self.assertEqual(loaded[MODULE], str(module))
        self.assertIn("libcurl.so.4", loaded)

    def test_a_program_without_its_module_logs_the_reason_of_the_loader(self):
        self.server.logs.mkdir(parents=True)
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            moved = shutil.copy(local_server.PROGRAMS.tool, folder)
            with mock.patch.object(local_server.PROGRAMS, "tool", moved):
                run = self.server.run("-list")
        self.assertEqual((run.returncode, run.stdout), (CLIENT_FAILED & 0xFF, b""))
        self.assertRegex(run.stderr, rb"\AExit Status %d: .+\.\n\Z" % CLIENT_FAILED)
        (log,) = self.server.logs.iterdir()
        self.assertIn(f" {MODULE}: cannot open shared object file", log.read_text())


if __name__ == "__main__":
    raise SystemExit(local_server.run_unit_tests(__doc__))
