#!/usr/bin/env python3
"""The benchmark's C++ programs, akbench_measure and akbench_floor."""

import gzip
import subprocess
import sys

import bench_test
import scripted_server
from runner import Failure


def shell(script):
    return ["/bin/sh", "-c", script]


class Measure(bench_test.WorkspaceTest):
    def output_of(self, *pipeline):
        file = self.workspace.directory / "output"
        self.runner.run(pipeline, output=file)
        return file.read_text()

    def test_the_output_of_one_command(self):
        self.assertEqual(self.output_of(shell("echo one; echo two >&2")), "one\n")

    def test_the_output_of_a_pipeline(self):
        words = (shell("printf abc"), ["tr", "a-c", "A-C"], ["cat", "-"])
        self.assertEqual(self.output_of(*words), "ABC")

    def test_an_earlier_output_is_replaced(self):
        self.output_of(shell("echo something long"))
        self.assertEqual(self.output_of(shell("echo short")), "short\n")

    def test_the_first_command_reads_dev_null(self):
        self.assertEqual(self.output_of(["cat"]), "")

    def test_a_command_whose_reader_ends_gets_sigpipe(self):
        self.runner.run([["yes"], ["head", "-n", "1"]], statuses=[141, 0])

    def test_the_exit_status_of_every_command_is_checked(self):
        self.runner.run([shell("exit 3"), shell("exit 0"), shell("exit 4")], statuses=[3, 0, 4])
        self.runner.run([shell("kill -TERM $$")], statuses=[143])

    def test_a_failure_for_another_status_shows_standard_error(self):
        for script in ("echo alas >&2; exit 3", "echo alas >&2; kill -KILL $$"):
            with self.assertRaisesRegex(Failure, "alas"):
                self.runner.run([shell(script)])
        with self.assertRaises(Failure):
            self.runner.run([shell("exit 1"), shell("exit 0")])
        with self.assertRaises(Failure):
            self.runner.run([shell("exit 0")], statuses=[144])

    def test_a_command_that_cannot_be_started_is_an_error(self):
        for pipeline in ([["/nowhere/at/all"]], [["cat"], ["/nowhere/at/all"]]):
            with self.assertRaises(subprocess.CalledProcessError):
                self.runner.run(pipeline)

    def test_a_command_line_without_a_command_is_rejected(self):
        for words in ([], ["-o"], ["-x", "y", "true"], ["true", "|"], ["|", "true"]):
            program = self.workspace.programs / "akbench_measure"
            run = subprocess.run([program, *words], capture_output=True, check=False)
            self.assertEqual((run.returncode, run.stdout), (2, b""), words)

    def test_waiting_takes_wall_time_but_no_cpu_time(self):
        sample = self.runner.run([["sleep", "0.3"]])
        self.assertGreaterEqual(sample.wall, 0.3)
        self.assertLess(sample.cpu, 0.2)

    def test_cpu_time_is_the_sum_of_all_commands(self):
        busy = "import time\nwhile time.process_time() < 0.3: pass"
        command = [sys.executable, "-c", busy]
        sample = self.runner.run([command, command])
        self.assertGreaterEqual(sample.cpu, 0.59)
        self.assertLess(sample.cpu, 3)

    def test_peak_memory_is_that_of_the_largest_command(self):
        large = [sys.executable, "-c", "print(len(b'x' * (100 << 20)))"]
        sample = self.runner.run([large, ["cat"]])
        self.assertGreater(sample.peak_kib, 100 << 10)
        self.assertLess(sample.peak_kib, 160 << 10)

    def test_peak_memory_is_not_that_of_the_caller(self):
        ballast = b"x" * (200 << 20)
        self.assertLess(self.runner.run([["/bin/true"]]).peak_kib, 100 << 10)
        self.assertEqual(len(ballast), 200 << 20)


class Floor(bench_test.WorkspaceTest):
    def ends_with(self, status):
        self.runner.run([self.workspace.floor("hostmappings")], statuses=[status])

    def test_accepts_json(self):
        server = self.serve(bench_test.http_reply(b'{"hosts":[]}'))
        self.ends_with(0)
        self.assertEqual(server.requests[0].line, "GET /arkeon/config/hosts/hostmappings HTTP/1.1")
        headers = server.requests[0].header_values()
        self.assertEqual(headers["authorization"], f"Bearer {self.workspace.token}")
        self.assertIn("gzip", headers["accept-encoding"])

    def test_accepts_large_json_with_gzip(self):
        body = gzip.compress(b"[" + b"17," * 1_000_000 + b"4]")
        start = f"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: {len(body)}\r\n\r\n"
        self.serve(scripted_server.Reply(start.encode() + body))
        self.ends_with(0)

    def test_fails_if_the_reply_is_not_json(self):
        for body in (b"", b"<html>", b'{"hosts":[', b'{"hosts":[]}]', b'"\xff"'):
            with self.subTest(body=body):
                server = self.serve(bench_test.http_reply(body))
                self.ends_with(1)
                server.stop()

    def test_fails_on_another_http_status(self):
        for status in ("404 Not Found", "201 Created", "302 Found"):
            with self.subTest(status=status):
                server = self.serve(bench_test.http_reply(b"{}", status))
                self.ends_with(1)
                server.stop()

    def test_fails_without_a_server(self):
        self.ends_with(1)

    def test_fails_if_the_server_certificate_is_of_another_ca(self):
        self.serve(bench_test.http_reply(b"{}"))
        command = self.workspace.floor("hostmappings")
        command[1] = str(self.workspace.certificate)
        self.runner.run([command], statuses=[1])


if __name__ == "__main__":
    bench_test.run()
