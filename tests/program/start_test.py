#!/usr/bin/env python3
"""What the tool loads when it starts, and when it makes a request.

    start_test.py --tool PATH --devserver PATH
"""

import pathlib
import re
import shutil
import tempfile
import unittest

import local_server

SYSTEM_LIBCURL = "libcurl.so.4"
OWN_LIBCURL = "libarkeon-curl.so"
# What a start of the tool waits for, and what the sanitizers add to that.
LOADED_AT_START = {"libjansson.so.4", "libc.so.6"}
SANITIZERS = {"libasan.so.8", "libubsan.so.1"}
LOADED_WITH_SANITIZERS = {"libstdc++.so.6", "libgcc_s.so.1", "libm.so.6"}


class WhatIsLoaded(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server()

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def loaded(self, *arguments, status=0):
        """The libraries that a run of the tool loads, by their names without a folder."""
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            watch = {"LD_DEBUG": "files", "LD_DEBUG_OUTPUT": f"{folder}/loader"}
            run = self.server.run(*arguments, environment=watch)
            self.assertEqual((run.returncode, run.stderr), (status, b""))
            (report,) = pathlib.Path(folder).iterdir()
            names = re.findall(r"file=(\S+) \[0\];  generating link map", report.read_text())
        return {pathlib.Path(name).name for name in names}

    def test_a_run_without_a_request_loads_no_client(self):
        for arguments in (["-help"], ["-list", "-help"]):
            with self.subTest(arguments):
                loaded = self.loaded(*arguments)
                if loaded & SANITIZERS:
                    loaded -= SANITIZERS | LOADED_WITH_SANITIZERS
                self.assertEqual(loaded, LOADED_AT_START)

    def test_a_request_takes_the_libcurl_beside_the_program(self):
        loaded = self.loaded("-list")
        self.assertIn(OWN_LIBCURL, loaded)
        self.assertNotIn(SYSTEM_LIBCURL, loaded)

    def test_a_program_moved_alone_takes_the_libcurl_of_the_system(self):
        listing = self.server.listing("-json_compact")
        tool = local_server.PROGRAMS.tool
        try:
            local_server.PROGRAMS.tool = shutil.copy(tool, self.server.folder)
            self.assertIn(SYSTEM_LIBCURL, self.loaded("-list"))
            self.assertEqual(self.server.listing("-json_compact"), listing)
        finally:
            local_server.PROGRAMS.tool = tool


if __name__ == "__main__":
    raise SystemExit(local_server.run_unit_tests(__doc__))
