#!/usr/bin/env python3
"""The tool against the development server: every filter in every format, many hosts, many runs.

    local_server_test.py --tool PATH --devserver PATH

What is printed is held against a model of the listing, made from the server's own JSON.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time
import unittest

import listing_model

PROGRAMS = argparse.Namespace(tool="", devserver="")
FILTERS = [
    [], ["-approved"], ["-pending"], ["-conflict"], ["-host", "testhost1"], ["-host", "TESTHOST1"],
    ["-host", "büro-rechner-ä"], ["-host", "cluster-vip"],
]  # fmt: skip
MANY = 100_000


class Server:
    """A development server on a loopback address of its own, with everything in one folder."""

    def __init__(self, *options):
        self.folder = tempfile.TemporaryDirectory(prefix="akhostmgmt-")
        self.root = pathlib.Path(self.folder.name) / "root"
        for _ in range(20):
            self.address = "127." + ".".join(str(random.randint(1, 254)) for _ in range(3))
            if self._start(options):
                return
        raise RuntimeError("no development server could be started")

    def _start(self, options):
        ready = pathlib.Path(self.folder.name) / "ready"
        self.process = subprocess.Popen(
            [PROGRAMS.devserver, "--root", self.root, "--listen", self.address,
             "--ready-file", ready, *options],
            stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)  # fmt: skip
        until = time.monotonic() + 60
        while self.process.poll() is None and time.monotonic() < until:
            if ready.exists():
                return True
            time.sleep(0.02)
        self.process.kill()
        self.process.wait()
        return False

    def stop(self):
        self.process.terminate()
        try:
            status = self.process.wait(30)
        finally:
            self.process.kill()
            self.folder.cleanup()
        return status

    def run(self, *options):
        environment = {
            "ARKEON_ROOT": self.root, "XDG_CONFIG_HOME": self.root / "config",
            "AK_TEST_LOG_DIRECTORY": self.folder.name, "LC_ALL": "C.UTF-8", "TZ": "UTC0",
            "PATH": os.environ["PATH"],
        }  # fmt: skip
        return subprocess.run(
            [PROGRAMS.tool, "-list", *options], env=environment, stdin=subprocess.DEVNULL,
            capture_output=True, timeout=240)  # fmt: skip

    def output(self, *options):
        run = self.run(*options)
        if run.returncode or run.stderr:
            raise AssertionError(f"{options}: {run.returncode} {run.stderr}")
        return run.stdout.decode()


class EveryListing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server()

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def test_filters_in_every_format(self):
        for chosen in FILTERS:
            with self.subTest(filter=chosen):
                compact = self.server.output(*chosen, "-json_compact")
                reply = json.loads(compact)
                self.assertTrue(reply["hosts"])
                self.assertEqual(
                    self.server.output(*chosen, "-short"),
                    listing_model.short_hosts(reply["hosts"]))
                self.assertEqual(
                    self.server.output(*chosen),
                    listing_model.long_hosts(reply["hosts"], unfiltered=not chosen))
                self.assertEqual(
                    self.server.output(*chosen, "-json"),
                    json.dumps(reply, indent=3, ensure_ascii=False))

    def test_each_host_by_its_id(self):
        for host in json.loads(self.server.output("-json_compact"))["hosts"]:
            with self.subTest(host=host["uuid"]):
                by_id = ["-hostid", host["uuid"]]
                alone = json.loads(self.server.output(*by_id, "-json_compact"))
                self.assertEqual(alone, host)
                self.assertEqual(
                    self.server.output(*by_id), listing_model.long_hosts([alone]))
                self.assertEqual(
                    self.server.output(*by_id, "-short"), listing_model.short_hosts([alone]))

    def test_the_own_approved_mappings(self):
        own = json.loads(self.server.output("-apvmappings", "-json"))
        self.assertTrue(all(each["isApproved"] for each in own["hostMappings"]))
        self.assertEqual(
            self.server.output("-apvmappings"), listing_model.table(own["hostMappings"], False))
        self.assertEqual(
            self.server.output("-apvmappings", "-short"), listing_model.short_names(own, ""))

    def test_an_unknown_name_and_an_unknown_id(self):
        name = self.server.run("-host", "nobody")
        self.assertEqual((name.returncode, name.stdout), (8902 % 256, b""))
        identity = self.server.run("-hostid", "nobody")
        self.assertEqual((identity.returncode, identity.stdout), (8701 % 256, b""))

    def test_a_hundred_runs_at_once(self):
        wanted = self.server.run()
        with concurrent.futures.ThreadPoolExecutor(100) as pool:
            runs = list(pool.map(lambda _: self.server.run(), range(100)))
        for run in runs:
            self.assertEqual((run.returncode, run.stderr, run.stdout), (0, b"", wanted.stdout))


class ManyHosts(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server("--hosts", str(MANY))
        cls.reply = json.loads(cls.server.output("-json_compact"))

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def test_there_are_as_many(self):
        self.assertEqual(len(self.reply["hosts"]), MANY)

    def test_short(self):
        self.assertTrue(
            self.server.output("-short") == listing_model.short_hosts(self.reply["hosts"]))

    def test_long(self):
        self.assertTrue(
            self.server.output() == listing_model.long_hosts(self.reply["hosts"], True))

    def test_json(self):
        self.assertTrue(
            self.server.output("-json") == json.dumps(self.reply, indent=3, ensure_ascii=False))


class AServerThatGoes(unittest.TestCase):
    def test_is_reported(self):
        server = Server()
        self.assertEqual(server.run().returncode, 0)
        server.process.kill()
        server.process.wait()
        run = server.run()
        server.folder.cleanup()
        self.assertEqual((run.returncode, run.stdout), (7621 % 256, b""))
        self.assertTrue(run.stderr.startswith(b"Exit Status 7621: "))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tool", required=True)
    parser.add_argument("--devserver", required=True)
    parser.parse_args(namespace=PROGRAMS)
    result = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    failed = len(result.failures) + len(result.errors)
    print(f"{result.testsRun - failed} passed, {failed} failed")
    return 1 if failed or not result.testsRun else 0


if __name__ == "__main__":
    sys.exit(main())
