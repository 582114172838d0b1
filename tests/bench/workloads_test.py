#!/usr/bin/env python3
"""Which workloads are selected, and how requests and connections are checked with the log."""

import unittest

import bench_test
import web_server
import workloads
from metrics import Result, Sample
from runner import Failure, Program


class Selection(unittest.TestCase):
    def test_everything_is_selected_by_default(self):
        self.assertEqual(
            list(workloads.selected([1000, 10], [])),
            ["help", "usage-error", "request", "change", "list-1000", "list-10"])

    def test_a_name_selects_its_workload(self):
        self.assertEqual(list(workloads.selected([1000], ["change", "help"])), ["help", "change"])

    def test_a_prefix_selects(self):
        self.assertEqual(list(workloads.selected([10, 1000], ["list"])), ["list-10", "list-1000"])
        self.assertEqual(list(workloads.selected([10, 1000], ["list-10"])), ["list-10"])

    def test_a_format_can_be_selected(self):
        found = workloads.selected([10, 1000], ["list-10-json", "list-10-short"])
        self.assertEqual(found["list-10"].args, (10, ["short", "json"]))
        self.assertNotIn("list-1000", found)

    def test_an_unknown_name_selects_nothing(self):
        self.assertEqual(workloads.selected([1000], ["hel", "nothing"]), {})


class Growth(unittest.TestCase):
    @staticmethod
    def results(*sizes):
        return [Result(f"list-{size}-long", {workloads.TOOL: [Sample(1, size / 1000, 10 * size)]})
                for size in sizes]  # fmt: skip

    def test_is_the_cost_per_host_from_ten_thousand_to_the_largest(self):
        sizes = [1000, 10_000, 100_000]
        results = self.results(*sizes)
        results[-1].samples[workloads.TOOL] = [Sample(1, 200, 500_000)]
        [found] = workloads.growth_results(results, sizes)
        self.assertEqual(found.workload, "growth-long")
        self.assertEqual([each.ratio for each in found.comparisons], [2, 0.5])

    def test_needs_both_listings(self):
        for sizes in ([1000, 10_000], [100_000]):
            self.assertEqual(workloads.growth_results(self.results(*sizes), sizes), [])


def request(connection, **others):
    texts = dict.fromkeys(web_server.FIELDS, "") | {"ssl_session_reused": "."}
    numbers = {"connection": connection, "connection_requests": 1, "status": 200, "bytes_sent": 9}
    return web_server.Request(**texts | numbers | others)


class Log:
    """A scripted server log."""

    def __init__(self, requests):
        self._requests = requests

    def new_requests(self, count):
        taken, self._requests = self._requests[:count], self._requests[count:]
        return taken


class Runner:
    """Runs nothing."""

    workspace = None

    def run(self, pipeline):
        return Sample(1, 1, 1)

    def interleave(self, programs, iterations):
        return {name: [self.run("")] * iterations for name in programs}


class Requests(unittest.TestCase):
    TWICE = {"one connection": Program([], requests=(2,)), "two": Program([], requests=(1, 1))}

    @staticmethod
    def bench(*requests):
        return workloads.Bench(Runner(), Log(requests), 1, 1)

    def test_the_same_requests_are_accepted_on_any_connection(self):
        bench = self.bench(request(1), request(1), request(2), request(3))
        found = bench.require_same_requests(self.TWICE.values())
        self.assertEqual(found, (request(1), request(1)))

    def test_other_requests_are_a_failure(self):
        for others in ({"http_accept": "x"}, {"request_uri": "/"}, {"ssl_protocol": "TLSv1.2"}):
            with self.assertRaisesRegex(Failure, "not send the same"):
                self.bench(request(1), request(2, **others)).require_same_requests(
                    [Program([]), Program([])])

    def test_every_program_makes_its_connections(self):
        bench = self.bench(*map(request, (3, 3, 4, 5, 6, 6, 7, 8)))
        samples = bench.measure(self.TWICE, 2)
        self.assertEqual([len(each) for each in samples.values()], [2, 2])

    def test_more_or_fewer_connections_are_a_failure(self):
        for connections in ((3, 4, 5, 6), (3, 3, 3, 4), (3, 3, 3, 3), (3, 3, 4, 6), (3, 3, 5, 6)):
            with self.assertRaisesRegex(Failure, "connections of the requests"):
                self.bench(*map(request, connections)).measure(self.TWICE, 1)

    def test_a_resumed_session_is_a_failure(self):
        bench = self.bench(request(3), request(4, ssl_session_reused="r"))
        with self.assertRaisesRegex(Failure, "resumed"):
            bench.measure({"a": Program([])}, 2)


class AccessLog(unittest.TestCase):
    FIELDS = ["7", "2", ".", "201", "312", "TLSv1.3", "PUT", "/arkeon/x", "a/b", "gzip",
              "Bearer t", "c/d", "18", ""]  # fmt: skip

    def test_a_line_is_parsed(self):
        parsed = web_server.parsed("\t".join(self.FIELDS))
        self.assertEqual((parsed.connection, parsed.connection_requests), (7, 2))
        self.assertEqual((parsed.status, parsed.bytes_sent), (201, 312))
        self.assertEqual(parsed.content(), tuple(self.FIELDS[5:]))

    def test_a_malformed_line_is_an_error(self):
        for fields in (self.FIELDS[:-1], [*self.FIELDS, ""], ["x", *self.FIELDS[1:]]):
            with self.assertRaises(ValueError):
                web_server.parsed("\t".join(fields))


if __name__ == "__main__":
    bench_test.run()
