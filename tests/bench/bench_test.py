"""What the benchmark's tests share: a stage, a server with replies, and how a program ends."""

import os
import sys
import unittest

import scripted_server
from runner import Runner
from stage import Stage

PROGRAMS = os.environ["BENCH_PROGRAMS"]
TOOL = os.environ["BENCH_TOOL"]
JQ = os.environ["BENCH_JQ"]


def http_reply(body, status="200 OK"):
    head = f"HTTP/1.1 {status}\r\nContent-Type: text/plain\r\nContent-Length: {len(body)}\r\n\r\n"
    return scripted_server.Reply(head.encode() + body)


class StageTest(unittest.TestCase):
    """Tests on a stage for an address of their own, where `serve` starts a server."""

    @classmethod
    def setUpClass(cls):
        cls.stage = Stage(PROGRAMS, scripted_server.random_address())
        cls.addClassCleanup(cls.stage.__exit__)
        cls.runner = Runner(cls.stage)

    def serve(self, *replies):
        """Starts a server that gives these replies, in this order, until the test's end."""
        context = scripted_server.server_context(
            self.stage.server_certificate, self.stage.server_key, self.stage.authority)
        listener = scripted_server.listen(self.stage.address)
        server = scripted_server.ScriptedServer(listener, context, replies)
        self.addCleanup(server.stop)
        return server


def run():
    """The main function of a test program; ends with the closing line that counts."""
    result = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    failed = len(result.failures) + len(result.errors)
    passed = max(result.testsRun - failed, 0)
    print(f"{passed} passed, {failed} failed")
    sys.exit(1 if failed or not passed else 0)
