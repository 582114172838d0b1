#!/usr/bin/env python3
"""Which works are chosen, how their requests are read from the log, and the slow line."""

import os
import socket
import time
import unittest

import bench_test
import web_server
import works
from figures import Row, Sample
from runner import Failure
from slow_network import Line


class Choice(unittest.TestCase):
    def test_without_names_everything_is_chosen(self):
        self.assertEqual(
            list(works.plan([1000, 10], [])),
            ["help", "usage-error", "request", "change", "delay", "list-1000", "list-10"])

    def test_a_name_chooses_its_work(self):
        self.assertEqual(list(works.plan([1000], ["change", "help"])), ["help", "change"])

    def test_the_first_words_of_a_name_choose(self):
        self.assertEqual(list(works.plan([10, 1000], ["list"])), ["list-10", "list-1000"])
        self.assertEqual(list(works.plan([10, 1000], ["list-10"])), ["list-10"])

    def test_a_format_can_be_chosen(self):
        planned = works.plan([10, 1000], ["list-10-json", "list-10-short"])
        self.assertEqual(planned["list-10"].args, (10, ["short", "json"]))
        self.assertNotIn("list-1000", planned)

    def test_an_unknown_name_chooses_nothing(self):
        self.assertEqual(works.plan([1000], ["hel", "nothing"]), {})


class Growth(unittest.TestCase):
    @staticmethod
    def rows(*sizes):
        return [Row(f"list-{size}-long", {works.TOOL: [Sample(1, size / 1000, 10 * size)]})
                for size in sizes]  # fmt: skip

    def test_is_from_ten_thousand_to_the_most(self):
        sizes = [1000, 10_000, 100_000, 1_000_000]
        [found] = works.growth_rows(self.rows(*sizes), sizes)
        self.assertEqual(found.work, "growth-long")
        self.assertEqual([each.value for each in found.results], [1, 1])
        self.assertIn("1,000,000 / 10,000", found.results[0].what)

    def test_needs_both_ends(self):
        self.assertEqual(works.growth_rows(self.rows(1000, 10_000), [1000, 10_000]), [])
        self.assertEqual(works.growth_rows(self.rows(100_000), [100_000]), [])


def request(connection, **others):
    texts = dict.fromkeys(web_server.FIELDS, "") | {"ssl_session_reused": "."}
    numbers = {"connection": connection, "connection_requests": 1, "status": 200, "bytes_sent": 9}
    return web_server.Request(**texts | numbers | others)


class Log:
    """A server's log that was written beforehand."""

    def __init__(self, requests):
        self._requests = requests

    def new_requests(self, count):
        taken, self._requests = self._requests[:count], self._requests[count:]
        return taken


class Runner:
    """Runs nothing at all."""

    class stage:
        curl = staticmethod(lambda resource: ["curl", resource])

    def run(self, pipeline):
        return Sample(1, 1, 1)

    def in_turns(self, programs, rounds):
        return dict.fromkeys(programs, [self.run("")] * rounds)


class Connections(unittest.TestCase):
    @staticmethod
    def bench(*requests):
        return works.Bench(Runner(), Log(requests), 1, 1)

    def test_two_requests_on_one_connection_are_right(self):
        bench = self.bench(request(5), request(6), request(6), request(7))
        self.assertEqual(bench.requests_of("", 2), (request(6), request(6)))

    def test_a_second_connection_is_a_failure(self):
        bench = self.bench(request(5), request(6), request(7), request(8))
        with self.assertRaisesRegex(Failure, "not one connection"):
            bench.requests_of("", 2)

    def test_a_connection_without_a_request_is_a_failure(self):
        for others in ((6, 6, 8), (7, 7, 8)):
            bench = self.bench(request(5), *map(request, others))
            with self.assertRaisesRegex(Failure, "not one connection"):
                bench.requests_of("", 2)

    def test_a_session_that_is_taken_up_again_is_a_failure(self):
        bench = self.bench(request(5), request(6, ssl_session_reused="r"), request(7))
        with self.assertRaisesRegex(Failure, "taken up again"):
            bench.requests_of("", 1)

    def test_other_requests_are_a_failure(self):
        for others in ({"http_accept": "x"}, {"request_uri": "/"}, {"ssl_protocol": "TLSv1.2"}):
            bench = self.bench(
                request(1), request(2), request(3), request(4), request(5, **others), request(6))
            with self.assertRaisesRegex(Failure, "does not ask as"):
                bench.demand_same_requests("ours", "theirs", 1)

    def test_timed_runs_have_one_connection_each(self):
        bench = self.bench(*map(request, (3, 3, 4, 4, 5, 5, 6, 6)))
        samples = bench.timed({"a": {}, "b": {}}, 2, 2)
        self.assertEqual({name: len(runs) for name, runs in samples.items()}, {"a": 2, "b": 2})
        self.assertEqual(bench.connections_of_a_run, 1)

    def test_timed_runs_with_more_or_less_are_a_failure(self):
        for connections in ((3, 4, 5, 6), (3, 3, 5, 5), (3, 3, 3, 3)):
            with self.assertRaisesRegex(Failure, "made these connections"):
                self.bench(*map(request, connections)).timed({"a": {}}, 2, 2)


class AccessLog(unittest.TestCase):
    FIELDS = ["7", "2", ".", "201", "312", "TLSv1.3", "PUT", "/arkeon/x", "a/b", "gzip",
              "Bearer t", "c/d", "18", ""]  # fmt: skip

    def test_a_line_is_read(self):
        read = web_server.parsed("\t".join(self.FIELDS))
        self.assertEqual((read.connection, read.connection_requests), (7, 2))
        self.assertEqual((read.status, read.bytes_sent), (201, 312))
        self.assertEqual(read.asked(), tuple(self.FIELDS[5:]))

    def test_a_line_of_another_form_is_an_error(self):
        for fields in (self.FIELDS[:-1], [*self.FIELDS, ""], ["x", *self.FIELDS[1:]]):
            with self.assertRaises(ValueError):
                web_server.parsed("\t".join(fields))


class SlowLine(unittest.TestCase):
    DELAY = 0.1

    def setUp(self):
        near, near_end = socket.socketpair(socket.AF_UNIX, socket.SOCK_DGRAM)
        far, far_end = socket.socketpair(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.near, self.far = near, far
        line = Line(near_end.detach(), far_end.detach(), self.DELAY)
        for end in (line.cut, near.close, far.close):
            self.addCleanup(end)

    def receive(self, end):
        end.settimeout(10)
        return end.recv(100), time.monotonic()

    def test_packets_arrive_late_and_in_order(self):
        begin = time.monotonic()
        packets = [b"%d" % number for number in range(5)]
        for packet in packets:
            self.near.send(packet)
        arrived = [self.receive(self.far) for _ in packets]
        self.assertEqual([packet for packet, _ in arrived], packets)
        self.assertGreaterEqual(arrived[0][1] - begin, self.DELAY)

    def test_packets_do_not_wait_for_each_other(self):
        begin = time.monotonic()
        for _ in range(100):
            self.near.send(b"packet")
            time.sleep(0.001)
        for _ in range(100):
            self.receive(self.far)
        self.assertLess(time.monotonic() - begin, 50 * self.DELAY)

    def test_there_and_back_takes_twice_as_long(self):
        begin = time.monotonic()
        self.near.send(b"there")
        self.receive(self.far)
        self.far.send(b"back")
        packet, arrived = self.receive(self.near)
        self.assertEqual(packet, b"back")
        self.assertGreaterEqual(arrived - begin, 2 * self.DELAY)

    def test_cutting_it_closes_the_devices(self):
        one, two = os.pipe(), os.pipe()
        Line(one[0], two[0], self.DELAY).cut()
        for descriptor in (one[0], two[0]):
            with self.assertRaises(OSError):
                os.fstat(descriptor)
        for descriptor in (one[1], two[1]):
            os.close(descriptor)


if __name__ == "__main__":
    bench_test.run()
