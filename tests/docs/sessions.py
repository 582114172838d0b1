"""Runs the sessions and the shell commands of a page as somebody at a terminal would."""

import contextlib
import os
import pathlib
import pty
import re
import select
import signal
import subprocess
import tempfile
import time

import local_server

# Reads the name of a file, runs the commands in it as if they had been typed, and tells the status.
SHELL = """
status=0
while IFS= read -r -u 3 file; do
  (exit $status)
  . "$file"
  status=$?
  printf '%d\\n' $status >&4
done
"""
ASKED = re.compile(r"(.*(?:\(y/n\)|for no): )(\S+)$")
SERVING = re.compile(r"akdevserver (?!.*(--audit|--init-only|--help|--version))")
TIME = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}")
LIMIT = 60  # seconds for a command


class Desk:
    """A user's terminal with a shell in it, a home of its own, and a server to talk to."""

    def __init__(self, programs, data):
        self._left = contextlib.ExitStack()
        folder = self._left.enter_context(tempfile.TemporaryDirectory(prefix="akhostmgmt-docs-"))
        self.home = pathlib.Path(folder)
        self.server = local_server.Server()
        self._left.callback(self.server.stop)
        self._programs = programs
        self._data = data
        self._servers = []
        self._start_shell()

    def _start_shell(self):
        bin_folder = self.home / ".bin"
        bin_folder.mkdir()
        for name, path in self._programs.items():
            (bin_folder / name).symlink_to(path)
        environment = {
            "HOME": str(self.home), "PATH": f"{bin_folder}:/usr/sbin:/usr/bin:/sbin:/bin",
            "ARKEON_ROOT": str(self.server.root), "LC_ALL": "C.UTF-8", "TZ": "UTC0",
            "XDG_CONFIG_HOME": str(self.server.root / "config"), "TERM": "dumb",
            "AK_TEST_LOG_DIRECTORY": str(self.home / ".logs"),
        }  # fmt: skip
        self._screen, terminal = pty.openpty()
        orders, self._orders = os.pipe()
        self._statuses, statuses = os.pipe()
        plumbing = f"exec 3<&{orders} 4>&{statuses} {orders}<&- {statuses}>&-\n"
        self._shell = subprocess.Popen(
            ["bash", "--norc", "-c", plumbing + SHELL], cwd=self.home, env=environment,
            stdin=terminal, stdout=terminal, stderr=terminal, pass_fds=(orders, statuses),
            start_new_session=True)  # fmt: skip
        for descriptor in (terminal, orders, statuses):
            os.close(descriptor)

    def close(self):
        os.close(self._orders)
        try:
            self._shell.wait(LIMIT)
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(self._shell.pid, signal.SIGKILL)  # and what runs in its background
            self.stop_servers()
            os.close(self._screen)
            os.close(self._statuses)
            self._left.close()

    def run(self, command, answers=()):
        """What the terminal shows of a command, with the answers that were typed, and its status.

        `answers` are pairs of a prompt and what is typed once it is the last thing on the screen.
        A command that is a server's runs beside the shell, on an address of its own.
        """
        return self._serve(command) if SERVING.match(command) else self.type(command, answers)

    def type(self, command, answers=()):
        """The same in the shell, whatever the command is."""
        order = self.home / ".order"
        order.write_text(command.replace("/usr/share/akhostmgmt", str(self._data)) + "\n")
        os.write(self._orders, f"{order}\n".encode())
        return self._watch(list(answers))

    def _watch(self, answers):
        shown, until = b"", time.monotonic() + LIMIT
        while True:
            ready = select.select([self._screen, self._statuses], [], [], 0.5)[0]
            if self._screen in ready:
                shown += os.read(self._screen, 65536)
                if answers and shown.endswith(answers[0][0].encode()):
                    os.write(self._screen, answers.pop(0)[1].encode() + b"\n")
            elif ready:
                return self._readable(shown), int(os.read(self._statuses, 16))
            elif time.monotonic() > until:
                raise TimeoutError(f"no end after {LIMIT} s; shown: {shown!r}")

    def _serve(self, command):
        """Starts a server as a second terminal would; it stays until the page has been read."""
        address = local_server.random_address()
        ready = self.home / f".ready-{address}"
        log = self.home / f".server-{address}"
        with log.open("wb") as output:
            server = subprocess.Popen(
                ["bash", "-c", f"exec {command} --listen {address} --ready-file {ready}"],
                cwd=self.home, env={"HOME": str(self.home), "PATH": f"{self.home}/.bin:/usr/bin"},
                stdin=subprocess.DEVNULL, stdout=output, stderr=output)  # fmt: skip
        self._servers.append(server)
        until = time.monotonic() + LIMIT
        while not ready.exists() and server.poll() is None and time.monotonic() < until:
            time.sleep(0.02)
        shown = self._readable(log.read_bytes()).replace(address, "127.0.0.1")
        return shown, server.poll() or 0

    def stop_servers(self):
        """Stops the servers that the page has started."""
        while self._servers:
            server = self._servers.pop()
            server.terminate()
            server.wait(LIMIT)

    def _readable(self, shown):
        text = shown.decode(errors="replace").replace("\r\n", "\n")
        text = text.replace(str(self.home), "/home/me").replace(self.server.address, "localhost")
        return TIME.sub(lambda match: "T" * len(match[0]), text)


def session(text):
    """The commands of a session with what the page shows of each."""
    steps = []
    for line in text.splitlines():
        if line.startswith("$ "):
            steps.append([line[2:], ""])
        elif not steps:
            raise ValueError("a session begins with a command")
        elif steps[-1][0].endswith("\\"):
            steps[-1][0] += "\n" + line
        else:
            steps[-1][1] += line + "\n"
    return steps


def answers_in(expected):
    """The prompts of the page that have an answer behind them."""
    return [match.groups() for match in map(ASKED.match, expected.splitlines()) if match]


def as_pattern(expected):
    """A line "..." stands for any lines, "..." and "…" within a line for anything in it."""
    pattern = ""
    for line in expected.splitlines():
        if line.strip() == "...":
            pattern += r"(?:.*\n)*?"
        else:
            line = TIME.sub(lambda match: "T" * len(match[0]), line)
            parts = re.split(r"\.\.\.|…", line.rstrip())
            pattern += ".*".join(map(re.escape, parts)) + r" *\n"
    return re.compile(pattern)
