#!/usr/bin/env python3
"""The jq programs that the tool is compared with print the same bytes as the tool."""

import bench_test
import hosts
import workloads
from runner import Failure


def row(name, **others):
    values = dict.fromkeys(("isConflicting", "isAddedManually", "isShared"), False)
    dates = {"createdOn": 1_600_000_000_123, "updatedOn": 1_700_000_000_999}
    return {"mappedHostName": name, "isApproved": True} | values | dates | others


def host(name, *mappings, **others):
    return hosts.host(1, "primary") | {"hostName": name, "hostMappings": list(mappings)} | others


NULLS = dict.fromkeys(
    key for key in hosts.host(1, "primary") if key not in ("uuid", "hostMappings"))
NULL_MEMBERS = dict.fromkeys(key for key in row("x") if key != "mappedHostName")
UNUSUAL_HOSTS = [
    host("nomappings"),
    host(None, row("nullhost"), row(None), **NULLS),
    host(None, row(None), row("second")),
    host("nulls", row("nulls", **NULL_MEMBERS), row("b", isApproved=None),
         row("c", **NULL_MEMBERS | {"isApproved": True}),
         row("d", **NULL_MEMBERS | {"isApproved": False})),
    host("primary-in-the-middle", row("a"), row("primary-in-the-middle"), row("z")),
    host("not-among-them", row("first"), row("second"), row("third")),
    host("twice", row("twice"), row("other"), row("twice")),
    host("pending", row("p1", isApproved=False), row("a1"), row("p2", isApproved=False), row("a2")),
    host("lengths", row("fourteen-bytes"), row("fifteen-bytes-x"), row("sixteen-bytes-xx"),
         row("a-rather-long-name.with.many.labels.site-7.department.example.com")),
    host("büro-ä", row("büro-ä"), row("fourteen-byteä"), row("fourteen-bytesä"),
         row("thirteen-bytä"), row("サーバー.example.com"), row("名前名前名"), row("名前名前名前")),
    host("epoch", row("epoch", createdOn=0, updatedOn=999), autoReissueDuration=0),
    host("summertime", row("before", createdOn=1_711_846_799_999, updatedOn=1_711_846_800_000),
         row("after", createdOn=1_729_990_799_000, updatedOn=1_729_990_800_000),
         autoReissue=True, autoReissueDuration=4_102_444_800_000),
    host("all-true", row("yes", isConflicting=True, isAddedManually=True, isShared=True)),
    host('quotes" and \\ and / and 😀', row("tab\tand\x01control")),
    host("-40 wide-", row("x"), uuid="u" * 41), host("narrow", row("x"), uuid="ü"),
]  # fmt: skip


class SameBytes(bench_test.WorkspaceTest):
    def reply(self, listing):
        """Serves a listing to the tool, and writes it to a file that takes curl's place."""
        data = hosts.compact({"hosts": listing}).encode()
        self.data = self.workspace.directory / "reply"
        self.data.write_bytes(data)
        self.serve(bench_test.http_reply(data))

    def compare(self, form):
        """Compares the tool's output in a format with jq's; returns the number of bytes."""
        [ours], [_, jq] = workloads.listing_commands(self.workspace, form)
        return self.runner.require_same_output(
            [[bench_test.TOOL, *ours[1:]]], [["cat", str(self.data)], [bench_test.JQ, *jq[1:]]])

    def test_unusual_hosts(self):
        for form in workloads.FORMATS:
            for record in UNUSUAL_HOSTS:
                with self.subTest(form=form, host=record["hostName"]):
                    self.reply([record])
                    try:
                        self.assertGreater(self.compare(form), 0)
                    finally:
                        self.doCleanups()

    def test_many_hosts(self):
        for form in workloads.FORMATS:
            with self.subTest(form=form):
                self.reply([hosts.host(number, "primary") for number in range(1, 301)])
                try:
                    self.assertGreater(self.compare(form), 10_000)
                finally:
                    self.doCleanups()

    def test_a_difference_is_a_failure(self):
        for one, two in (("a", "b"), ("a", "aa"), ("a", "")):
            with self.assertRaisesRegex(Failure, "differ"):
                self.runner.require_same_output([["printf", one]], [["printf", two]])

    def test_a_difference_leaves_no_files(self):
        before = sorted(self.workspace.directory.iterdir())
        with self.assertRaises(Failure):
            self.runner.require_same_output([["printf", "a"]], [["printf", "b"]])
        self.assertEqual([file for file in sorted(self.workspace.directory.iterdir())
                          if file not in before and file.name != "errors"], [])  # fmt: skip


if __name__ == "__main__":
    bench_test.run()
