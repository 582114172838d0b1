#!/usr/bin/env python3
"""What the tool loads when it starts, and when it makes a request.

    start_test.py --tool PATH --devserver PATH
"""

import contextlib
import pathlib
import re
import shutil
import tempfile
import unittest

import local_server

SYSTEM_LIBCURL = "libcurl.so.4"
OWN_LIBCURL = "/proc/self/fd/"  # as which it is loaded, once its owner has been looked at
# What a start of the tool waits for, and what the sanitizers add to that.
LOADED_AT_START = {"libjansson.so.4", "libc.so.6"}
SANITIZERS = {"libasan.so.8", "libubsan.so.1"}
LOADED_WITH_SANITIZERS = {"libstdc++.so.6", "libgcc_s.so.1", "libm.so.6"}


class WhatIsLoaded(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server()
        cls.listing = cls.server.listing("-json_compact")

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def loaded(self, *arguments, status=0):
        """The libraries that a run of the tool loads, by their names without a folder.

        The tool's own build of libcurl is OWN_LIBCURL.
        """
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            watch = {"LD_DEBUG": "files", "LD_DEBUG_OUTPUT": f"{folder}/loader"}
            run = self.server.run(*arguments, environment=watch)
            self.assertEqual((run.returncode, run.stderr), (status, b""))
            (report,) = pathlib.Path(folder).iterdir()
            names = re.findall(r"file=(\S+) \[0\];  generating link map", report.read_text())
        return {
            OWN_LIBCURL if name.startswith(OWN_LIBCURL) else pathlib.Path(name).name
            for name in names
        }

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
        with self.moved_tool():
            self.assert_the_system_libcurl_lists_the_same()

    def test_a_libcurl_that_others_could_have_changed_is_not_loaded(self):
        own = pathlib.Path(local_server.PROGRAMS.tool).parent / "../lib/akhostmgmt"
        with self.moved_tool() as folder:
            copy = shutil.copytree(own, folder / "lib" / "akhostmgmt")
            self.assertIn(OWN_LIBCURL, self.loaded("-list"))
            (copy / "libarkeon-curl.so").chmod(0o775)
            self.assert_the_system_libcurl_lists_the_same()

    @contextlib.contextmanager
    def moved_tool(self):
        """A folder in whose folder bin the tool is while the context lasts."""
        tool = local_server.PROGRAMS.tool
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as name:
            folder = pathlib.Path(name)
            (folder / "bin").mkdir()
            try:
                local_server.PROGRAMS.tool = shutil.copy(tool, folder / "bin")
                yield folder
            finally:
                local_server.PROGRAMS.tool = tool

    def assert_the_system_libcurl_lists_the_same(self):
        self.assertIn(SYSTEM_LIBCURL, self.loaded("-list"))
        self.assertEqual(self.server.listing("-json_compact"), self.listing)


if __name__ == "__main__":
    raise SystemExit(local_server.run_unit_tests(__doc__))
