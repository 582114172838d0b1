#!/usr/bin/env python3
"""The tool against the development server: every filter in every format, many hosts, many runs.

    local_server_test.py --tool PATH --devserver PATH [--many N]

What is printed is held against a model of the listing, made from the server's own JSON.
"""

import concurrent.futures
import json
import sys
import unittest

import listing_model
import local_server

FILTERS = [
    [], ["-approved"], ["-pending"], ["-conflict"], ["-host", "testhost1"], ["-host", "TESTHOST1"],
    ["-host", "büro-rechner-ä"], ["-host", "cluster-vip"],
]  # fmt: skip


class EveryListing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server()

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def test_filters_in_every_format(self):
        for chosen in FILTERS:
            with self.subTest(filter=chosen):
                compact = self.server.listing(*chosen, "-json_compact")
                reply = json.loads(compact)
                self.assertTrue(reply["hosts"])
                self.assertEqual(
                    self.server.listing(*chosen, "-short"),
                    listing_model.short_hosts(reply["hosts"]))
                self.assertEqual(
                    self.server.listing(*chosen),
                    listing_model.long_hosts(reply["hosts"], unfiltered=not chosen))
                self.assertEqual(
                    self.server.listing(*chosen, "-json"),
                    json.dumps(reply, indent=3, ensure_ascii=False))

    def test_each_host_by_its_id(self):
        for host in json.loads(self.server.listing("-json_compact"))["hosts"]:
            with self.subTest(host=host["uuid"]):
                by_id = ["-hostid", host["uuid"]]
                alone = json.loads(self.server.listing(*by_id, "-json_compact"))
                self.assertEqual(alone, host)
                self.assertEqual(
                    self.server.listing(*by_id), listing_model.long_hosts([alone]))
                self.assertEqual(
                    self.server.listing(*by_id, "-short"), listing_model.short_hosts([alone]))

    def test_the_own_approved_mappings(self):
        own = json.loads(self.server.listing("-apvmappings", "-json"))
        self.assertTrue(all(each["isApproved"] for each in own["hostMappings"]))
        self.assertEqual(
            self.server.listing("-apvmappings"), listing_model.table(own["hostMappings"], False))
        self.assertEqual(
            self.server.listing("-apvmappings", "-short"), listing_model.short_names(own, ""))

    def test_an_unknown_name_and_an_unknown_id(self):
        name = self.server.run("-list", "-host", "nobody")
        self.assertEqual((name.returncode, name.stdout), (8902 % 256, b""))
        identity = self.server.run("-list", "-hostid", "nobody")
        self.assertEqual((identity.returncode, identity.stdout), (8701 % 256, b""))

    def test_a_hundred_runs_at_once(self):
        wanted = self.server.run("-list")
        with concurrent.futures.ThreadPoolExecutor(100) as pool:
            runs = list(pool.map(lambda _: self.server.run("-list"), range(100)))
        for run in runs:
            self.assertEqual((run.returncode, run.stderr, run.stdout), (0, b"", wanted.stdout))


class ManyHosts(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = local_server.Server("--hosts", str(local_server.PROGRAMS.many))
        cls.reply = json.loads(cls.server.listing("-json_compact"))

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def test_there_are_as_many(self):
        self.assertEqual(len(self.reply["hosts"]), local_server.PROGRAMS.many)

    def test_short(self):
        self.assertTrue(
            self.server.listing("-short") == listing_model.short_hosts(self.reply["hosts"]))

    def test_long(self):
        self.assertTrue(
            self.server.listing() == listing_model.long_hosts(self.reply["hosts"], True))

    def test_json(self):
        self.assertTrue(
            self.server.listing("-json") == json.dumps(self.reply, indent=3, ensure_ascii=False))


class AServerThatGoes(unittest.TestCase):
    def test_is_reported(self):
        server = local_server.Server()
        self.addCleanup(server.stop)
        self.assertEqual(server.run("-list").returncode, 0)
        server.process.kill()
        server.process.wait()
        run = server.run("-list")
        self.assertEqual((run.returncode, run.stdout), (7621 % 256, b""))
        self.assertTrue(run.stderr.startswith(b"Exit Status 7621: "))


if __name__ == "__main__":
    sys.exit(local_server.run_unit_tests(__doc__.splitlines()[0]))
