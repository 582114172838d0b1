"""Shared by the benchmark's tests: a workspace, a scripted server, and the main function."""

import os
import sys
import unittest

import scripted_server
from runner import Runner
from workspace import Workspace

PROGRAMS = os.environ["BENCH_PROGRAMS"]
TOOL = os.environ["BENCH_TOOL"]
JQ = os.environ["BENCH_JQ"]


def http_reply(body, status="200 OK"):
    start = f"HTTP/1.1 {status}\r\nContent-Type: text/plain\r\nContent-Length: {len(body)}\r\n\r\n"
    return scripted_server.Reply(start.encode() + body)


class WorkspaceTest(unittest.TestCase):
    """Tests with a workspace; `serve` starts a server at its address."""

    @classmethod
    def setUpClass(cls):
        cls.workspace = Workspace(PROGRAMS, scripted_server.random_address())
        cls.addClassCleanup(cls.workspace.__exit__)
        cls.runner = Runner(cls.workspace)

    def serve(self, *replies):
        """Starts a server that sends these replies in order; it stops at the end of the test."""
        context = scripted_server.server_context(
            self.workspace.server_certificate, self.workspace.server_key, self.workspace.ca)
        listener = scripted_server.listen(self.workspace.address)
        server = scripted_server.ScriptedServer(listener, context, replies)
        self.addCleanup(server.stop)
        return server


def run():
    """The main function of a test program; prints the counts in its last line."""
    result = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    failed = len(result.failures) + len(result.errors)
    passed = max(result.testsRun - failed, 0)
    print(f"{passed} passed, {failed} failed")
    sys.exit(1 if failed or not passed else 0)
