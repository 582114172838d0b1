"""One run of the tool: a folder of its own, a clean environment, and its three streams."""

import os
import pathlib
import resource
import shutil
import signal
import socket
import struct
import subprocess
import termios
import threading
import time
import tomllib
import tty

NOBODY = 65534  # who runs what must not be run as root
STREAMS = {"pipe", "closed", "closed pipe", "/dev/full"}
INPUTS = {"pipe", "closed", "unreadable"}


class Certificates:
    """What the development server made below `root`: the identities of both sides."""

    def __init__(self, devserver, root, addresses):
        names = [argument for address in addresses for argument in ("--name", address)]
        command = [devserver, "--root", root, "--init-only", "--listen", addresses[0], *names]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        table = root / "etc" / "certificates.toml"
        row = tomllib.loads(table.read_text())["certificate"][0]
        self.host = table.parent / row["certificate"]
        self.host_key = table.parent / row["private_key"]
        self.authority = table.parent / row["ca"]
        self.server = root / "server" / "server.pem"
        self.server_key = root / "server" / "server.key"


def compiled_catalogue(messages):
    """GNU gettext's binary form of rows of context, English text and translation."""
    pairs = {b"": b"Content-Type: text/plain; charset=UTF-8\n"}
    pairs |= {f"{context}\4{key}".encode(): text.encode() for context, key, text in messages}
    keys = sorted(pairs)
    texts = [text for column in (keys, [pairs[key] for key in keys]) for text in column]
    tables, place = b"", 28 + 8 * len(texts)
    for text in texts:
        tables += struct.pack("<II", len(text), place)
        place += len(text) + 1
    head = struct.pack("<7I", 0x950412DE, 0, len(keys), 28, 28 + 8 * len(keys), 0, 0)
    return head + tables + b"".join(text + b"\0" for text in texts)


def bind_socket(path):
    """A socket in the file system that nobody listens at."""
    with socket.socket(socket.AF_UNIX) as unix:
        unix.bind(str(path))


KINDS = {"fifo": os.mkfifo, "folder": os.mkdir, "socket": bind_socket}


class Sandbox:
    """The folder that a run sees: root, config, home and logs."""

    def __init__(self, folder, known, certificates, stranger):
        self.folder = folder
        self.known = known
        for name in ("root/etc", "root/certs", "config/arkeon", "home", "logs/admin"):
            (folder / name).mkdir(parents=True)
        for prefix, kept in (("", certificates), ("stranger_", stranger)):
            shutil.copy(kept.host, folder / f"root/certs/{prefix}host.pem")
            shutil.copy(kept.host_key, folder / f"root/certs/{prefix}host.key")
            shutil.copy(kept.authority, folder / f"root/certs/{prefix}ca.pem")
            os.chmod(folder / f"root/certs/{prefix}host.key", 0o600)

    def give_to(self, user):
        """Makes the whole folder another user's, with the group of the same number."""
        for path in (self.folder, *self.folder.rglob("*")):
            os.chown(path, user, user, follow_symlinks=False)

    def make_files(self, files, texts):
        for row in files:
            path = self.folder / texts.string(row["path"], self.known)
            if "moved_to" in row:
                path.rename(self.folder / row["moved_to"])
            if set(row) - {"path", "mode"}:
                self._remove(path)
                path.parent.mkdir(parents=True, exist_ok=True)
                self._make(row, path, texts)
            if "mode" in row:
                os.chmod(path, row["mode"])

    @staticmethod
    def _remove(path):
        if path.is_dir() and not path.is_symlink():
            shutil.rmtree(path)
        else:
            path.unlink(missing_ok=True)

    def _make(self, row, path, texts):
        if "text" in row:
            path.write_bytes(texts.bytes(row["text"], self.known))
        elif "symlink" in row:
            path.symlink_to(texts.string(row["symlink"], self.known))
        elif "hard_link" in row:
            path.hardlink_to(self.folder / row["hard_link"])
        elif "catalogue" in row:
            path.write_bytes(compiled_catalogue(self._messages(row, texts)))
        elif "size" in row:
            path.touch()
            os.truncate(path, row["size"])
        elif "kind" in row:
            KINDS[row["kind"]](path)

    def _messages(self, row, texts):
        rows = row["catalogue"]
        return [[texts.string(each, self.known) for each in message] for message in rows]

    def note_files(self):
        self._before = set(self.folder.rglob("*"))

    def new_files(self):
        """What has come into the folder since `note_files`, besides a log."""
        logs = set((self.folder / "logs/admin").glob("admin.*.log"))
        return set(self.folder.rglob("*")) - self._before - logs

    def log_lines(self):
        """The lines of the debug log, without a final empty one."""
        logs = [log for log in sorted((self.folder / "logs/admin").glob("admin.*.log"))
                if log.is_file() and not log.is_symlink()]  # fmt: skip
        for log in logs:
            os.chmod(log, 0o600)  # a case may have left it to its writer alone
        text = b"".join(log.read_bytes() for log in logs)
        lines = text.decode("utf-8", "backslashreplace").split("\n")
        return lines if lines[-1] else lines[:-1]


class Stream:
    """Where one of the tool's output streams goes, and what arrived there."""

    def __init__(self, target, is_terminal):
        if target not in STREAMS and not target.startswith("first "):
            raise ValueError(f"a stream cannot go to {target!r}")
        self.data = b""
        self._limit = int(target.split()[1]) if target.startswith("first ") else None
        self._thread = None
        if target == "/dev/full":
            self.child = os.open(target, os.O_WRONLY)
            return
        if is_terminal:
            self._reader, self.child = os.openpty()
            tty.setraw(self.child)
        else:
            self._reader, self.child = os.pipe()
        if target == "closed pipe":
            os.close(self._reader)
            return
        self._thread = threading.Thread(target=self._read, daemon=True)

    def started(self):
        """To be called once the tool has its own copy of the descriptor."""
        os.close(self.child)
        if self._thread:
            self._thread.start()

    def finish(self):
        if self._thread:
            self._thread.join(10)

    def _read(self):
        try:
            while self._limit is None or len(self.data) < self._limit:
                piece = os.read(self._reader, 65536 if self._limit is None else 1)
                if not piece:
                    break
                self.data += piece
        except OSError:  # a pseudo-terminal says EIO when its last writer has gone
            pass
        finally:
            os.close(self._reader)


class Run:
    """The tool's run and what came of it: `status` (negative: the signal), outputs, `pid`.

    `killed_by` strikes once `server` has got the requests of the case; `seen` is what others can
    see of the process then. `english` gives the English for what was printed, as prompts are.
    """

    def __init__(self, tool, case, arguments, stdin, environment, folder, server, english):
        terminals = case.get("tty", [])
        self.out = Stream(case["stdout_to"], "stdout" in terminals)
        self.err = Stream(case["stderr_to"], "stderr" in terminals)
        self.problems = []
        self._dialogue = case.get("dialogue", [])
        self._english = english
        self._ended = threading.Event()
        self._typed = "stdin" in terminals
        keyboard, child = standard_input(case["stdin_from"], self._typed)
        user = NOBODY if case.get("unprivileged") and os.geteuid() == 0 else None
        process = subprocess.Popen(
            self._command(tool, case, arguments),
            executable=None if self._closes(case) else tool,
            stdin=child, stdout=self.out.child, stderr=self.err.child,
            env=environment, cwd=folder, restore_signals=not case.get("ignores_sigpipe"),
            user=user, group=user, extra_groups=None if user is None else [],
            preexec_fn=limits(case),
        )  # fmt: skip
        os.close(child)
        self.out.started()
        self.err.started()
        self.pid = process.pid
        feeder = threading.Thread(target=self._feed, args=(keyboard, stdin), daemon=True)
        feeder.start()
        self.seen = b""
        if "killed_by" in case:
            self._kill(process, case, server)
        try:
            self.status = process.wait(case["timeout"])
        except subprocess.TimeoutExpired:
            self.problems.append(f"still running after {case['timeout']} s")
            process.kill()
            self.status = process.wait()
        self._ended.set()
        for part in (self.out, self.err):
            part.finish()
        feeder.join(10)

    def _kill(self, process, case, server):
        until = time.monotonic() + 10
        while len(server.requests) < len(case["requests"]) and time.monotonic() < until:
            time.sleep(0.01)
        self.seen = seen_of(process.pid)
        process.send_signal(signal.Signals[case["killed_by"]])

    @staticmethod
    def _closes(case):
        return "closed" in (case["stdin_from"], case["stdout_to"], case["stderr_to"])

    def _command(self, tool, case, arguments):
        if not self._closes(case):
            return [case["argv0"], *arguments]
        closing = ["<&-"] if case["stdin_from"] == "closed" else []
        closing += [">&-"] if case["stdout_to"] == "closed" else []
        closing += ["2>&-"] if case["stderr_to"] == "closed" else []
        return ["/bin/sh", "-c", f'exec "$0" "$@" {" ".join(closing)}', tool, *arguments]

    def _feed(self, keyboard, stdin):
        """Types the answers, each once its prompt is the end of what the tool has written."""
        try:
            os.write(keyboard, stdin)
            for prompt, answer in self._dialogue:
                self._await(prompt)
                os.write(keyboard, answer.encode())
            if self._typed:  # a terminal that goes away would take the last answer with it
                self._ended.wait()
        except OSError:  # the tool has gone without reading
            pass
        finally:
            os.close(keyboard)

    def _await(self, prompt):
        until = time.monotonic() + 10
        while not self._english(self.out.data).endswith(prompt.encode()):
            if self._ended.is_set() or time.monotonic() > until:
                self.problems.append(f"the prompt did not come: {prompt!r}")
                return
            time.sleep(0.01)


def limits(case):
    """What sets the limits of the run in its process; None when there are none to set."""
    wanted = {}
    if "killed_by" in case:
        wanted[resource.RLIMIT_CORE] = resource.getrlimit(resource.RLIMIT_CORE)[1]
    if "longest_file" in case:
        wanted[resource.RLIMIT_FSIZE] = case["longest_file"]

    def set_limits():
        for kind, size in wanted.items():
            resource.setrlimit(kind, (size, resource.getrlimit(kind)[1]))

    return set_limits if wanted else None


def seen_of(pid):
    """What other users can see of a process and its children, and who may look into its memory."""
    process = pathlib.Path(f"/proc/{pid}")
    children = [child for task in (process / "task").iterdir()
                for child in (task / "children").read_text().split()]  # fmt: skip
    seen = (process / "cmdline").read_bytes()
    if (process / "mem").stat().st_uid != 0:
        seen += b"its memory is its user's"
    return seen + b"".join(b"a child: " + seen_of(child) for child in children)


def standard_input(source, is_terminal):
    """The end that is written to and the tool's end; from the latter nothing comes if unreadable."""
    if source not in INPUTS:
        raise ValueError(f"standard input cannot come from {source!r}")
    if is_terminal:
        return keyboard_terminal()
    reader, keyboard = os.pipe()
    if source == "unreadable":
        os.close(reader)
        reader = os.open("/", os.O_RDONLY)
    return keyboard, reader


def keyboard_terminal():
    """A terminal that shows nothing of what is typed; byte 4 at a line's start ends the input."""
    keyboard, child = os.openpty()
    settings = termios.tcgetattr(child)
    settings[3] &= ~termios.ECHO
    termios.tcsetattr(child, termios.TCSANOW, settings)
    return keyboard, child
