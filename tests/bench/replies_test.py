#!/usr/bin/env python3
"""The generated replies: the same every time, plain and with gzip."""

import collections
import gzip
import json
import pathlib
import tempfile
import unittest

import bench_test
import hosts


def listing(count):
    return b"".join(hosts.listing(count, "primary"))


class Listings(unittest.TestCase):
    def test_has_the_requested_number_of_hosts(self):
        for count in (1, 999, 1000, 1001):
            with self.subTest(count=count):
                self.assertEqual(len(json.loads(listing(count))["hosts"]), count)

    def test_is_reproducible(self):
        self.assertEqual(listing(50), listing(50))

    def test_a_longer_one_begins_with_the_shorter_one(self):
        self.assertTrue(listing(60).startswith(listing(50).removesuffix(b"]}")))

    def test_is_compact(self):
        text = listing(20).decode()
        self.assertEqual(text, hosts.compact(json.loads(text)))

    def test_every_host_has_all_members_and_three_mappings(self):
        for host in json.loads(listing(100))["hosts"]:
            self.assertEqual(len(host), 19)
            self.assertEqual([len(each) for each in host["hostMappings"]], [7, 7, 7])

    def test_names_and_ids_are_unique(self):
        records = json.loads(listing(3000))["hosts"]
        names = [each["mappedHostName"] for host in records for each in host["hostMappings"]]
        identities = [host["uuid"] for host in records]
        for values in (names, identities):
            self.assertEqual(max(collections.Counter(values).values()), 1)

    def test_hosts_differ_in_every_way_that_is_displayed(self):
        records = json.loads(listing(1000))["hosts"]
        mappings = [each for host in records for each in host["hostMappings"]]
        self.assertEqual({each["isApproved"] for each in mappings}, {True, False})
        self.assertEqual({each["isConflicting"] for each in mappings}, {True, False})
        self.assertEqual({each["isAddedManually"] for each in mappings}, {True, False})
        self.assertIn(None, {host["comment"] for host in records})
        self.assertFalse(listing(1000).isascii())
        lengths = {len(each["mappedHostName"].encode()) < 16 for each in mappings}
        self.assertEqual(lengths, {True, False})

    def test_dates_are_from_2020_to_2026(self):
        records = json.loads(listing(1000))["hosts"]
        dates = [each[key] for host in records for each in host["hostMappings"]
                 for key in ("createdOn", "updatedOn")]  # fmt: skip
        self.assertGreaterEqual(min(dates), 1_577_836_800_000)
        self.assertLess(max(dates), 1_798_761_600_000)


class Files(unittest.TestCase):
    def test_the_plain_and_the_gzip_file_have_the_same_content(self):
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory) / "listing.json"
            size = hosts.write_reply(path, hosts.listing(1500, "primary"))
            self.assertEqual(path.read_bytes(), listing(1500))
            self.assertEqual(size, path.stat().st_size)
            packed = pathlib.Path(f"{path}.gz").read_bytes()
        self.assertEqual(gzip.decompress(packed), listing(1500))
        self.assertLess(len(packed), size / 4)


if __name__ == "__main__":
    bench_test.run()
