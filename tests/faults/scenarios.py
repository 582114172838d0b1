"""A scenario in its own directory, with a server that gives every run the same replies."""

import os
import pathlib
import secrets
import signal
import socket
import subprocess
import sys
import tempfile
import threading

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "program"))

import case_files  # noqa: E402
import run_cases  # noqa: E402
import sandbox  # noqa: E402
import scripted_server  # noqa: E402

HOST_ID = run_cases.HOST_ID
# Longer than any limit below: a run that takes this long hangs.
MAX_SECONDS = 20
# A connection or a transfer that a fault brought to a halt ends soon.
LIMITS = {"AK_TEST_CONNECT_MILLISECONDS": "3000", "AK_TEST_STALL_SECONDS": "2"}


class SteadyServer(scripted_server.ScriptedServer):
    """Gives each run the same replies; one connection after another, in one thread."""

    def __init__(self, listener, context):
        self._serving = threading.Lock()
        super().__init__(listener, context, [])

    def begin(self, replies):
        """Waits for the end of the previous connection, which may still bring a request."""
        with self._serving:
            self.requests = []
            self.problems = []
            self.unused = list(replies)
            self._sockets.clear()

    def received(self):
        """The requests of the run that has ended."""
        with self._serving:
            return [(request.line, request.body) for request in self.requests]

    def _accept(self):
        while not self._stopping.is_set():
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            # Otherwise a short reply waits for the acknowledgement of the previous packet.
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            with self._serving:
                self._sockets.append(connection)
                self._serve(connection)


class Host:
    """What a worker has once: a temporary directory, certificates and a server at an address."""

    def __init__(self, tool, devserver):
        self.tool = tool
        self._temporary = tempfile.TemporaryDirectory(prefix="akhostmgmt_faults_")
        self.directory = pathlib.Path(self._temporary.name)
        self._listener = None
        self.server = None
        try:
            self._listen(devserver)
        except BaseException:
            self.close()
            raise

    def _listen(self, devserver):
        while self._listener is None:
            self.address = scripted_server.random_address()
            try:
                self._listener = scripted_server.listen(self.address)
            except OSError:
                continue  # the port is in use at this address
        self.certificates = sandbox.Certificates(devserver, self.directory / "ours", [self.address])
        ours = self.certificates
        context = scripted_server.server_context(ours.server, ours.server_key, ours.authority)
        self.server = SteadyServer(self._listener, context)

    def close(self):
        if self.server:
            self.server.stop()
        elif self._listener:
            self._listener.close()
        self._temporary.cleanup()


class Outcome:
    """The result of a run: `status` (negative: the signal), streams, requests and new files."""

    def __init__(self, status, out, err, timed_out=False):
        self.status = status
        self.out = out
        self.err = err
        self.timed_out = timed_out
        self.requests = []
        self.files = {}
        self.injected = False

    def visible(self):
        """What the caller and the server see of the run."""
        return self.status, self.out, self.err, self.requests


class Scenario:
    """One case on a host, ready for any number of runs."""

    def __init__(self, host, case, texts, standard_files):
        self.host = host
        self.case = case
        self.token = secrets.token_hex(16)
        self.directory = host.directory / secrets.token_hex(8)
        self.directory.mkdir()
        known = {"server": host.address, "token": self.token, "host_id": HOST_ID,
                 "folder": str(self.directory)}  # fmt: skip
        ours = host.certificates
        box = sandbox.Sandbox(self.directory, known, ours, ours)
        box.make_files(standard_files + case["files"], texts)
        (self.directory / "work").mkdir()
        self._arguments = [texts.bytes(each, known) for each in case["args"]]
        self._stdin = texts.bytes(case["stdin"], known)
        self._environment = {"PATH": os.environ["PATH"], **LIMITS} | {
            name: texts.string(value, known)
            for name, value in case["environment"].items() if value is not False
        }  # fmt: skip
        self._replies = [
            scripted_server.Reply(
                case_files.reply_bytes(reply, texts, known), reply.get("then", "keep")
            )
            for reply in case["replies"]
        ]
        self._own_files = set(self._paths())

    def run(self, before=(), variables=None, stdin=None, max_seconds=MAX_SECONDS):
        """Runs the tool, `before` being the command that runs it, if any; returns the outcome.

        `variables` replace environment variables; None removes one.
        """
        environment = self._environment | (variables or {})
        environment = {name: value for name, value in environment.items() if value is not None}
        self.host.server.begin(self._replies)
        process = subprocess.Popen(
            [*before, self.host.tool, *self._arguments], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment,
            cwd=self.directory / "work", start_new_session=True)  # fmt: skip
        stdin = self._stdin if stdin is None else stdin
        streams = self._finish(process, stdin, max_seconds)
        outcome = Outcome(process.returncode, *streams)
        outcome.requests = self.host.server.received()
        outcome.files = self._take_new_files()
        return outcome

    @staticmethod
    def _finish(process, stdin, max_seconds):
        try:
            return *process.communicate(stdin, max_seconds), False
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            return *process.communicate(), True

    def _paths(self):
        for directory, _, names in os.walk(self.directory):
            for name in names:
                yield os.path.join(directory, name)

    def _take_new_files(self):
        """The content of every file that the run has left, by its name; removes the files."""
        files = {}
        for path in self._paths():
            if path not in self._own_files:
                with open(path, "rb") as file:
                    files[os.path.relpath(path, self.directory)] = file.read()
                os.unlink(path)
        return files


def load(path):
    """For each case of a file, the arguments of a Scenario after its host."""
    cases, texts, standard_files = case_files.load(path)
    return [(case, texts, standard_files) for case in cases]
