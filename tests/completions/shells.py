"""Shells that complete lines of akhostmgmt as they do for a user, each in folders of its own."""

import contextlib
import fcntl
import os
import pathlib
import pty
import select
import shutil
import signal
import struct
import subprocess
import tempfile
import termios

HERE = pathlib.Path(__file__).resolve().parent
FILES = ["hosts.csv", "sub"]  # what is in the folder where the lines are typed; the second a folder
SECONDS = 60  # how long a shell may take for an answer
TAB = b"\t"
LEFT = "\x02"  # moves the cursor
CLEAR = b"\x15"
DUMP = b"\x18d"
INSERT = b"\x18i"


class Failure(Exception):
    """A shell that does not do as a shell does."""


class Place:
    """The folders of a shell: home with a login, the files, and the completions as installed."""

    def __init__(self, completions, tool):
        self._temporary = tempfile.TemporaryDirectory(prefix="akhostmgmt-")
        folder = pathlib.Path(self._temporary.name)
        self.folder = folder
        self.data = folder / "share"
        self.files = folder / "files"
        self.login = folder / "home" / ".config" / "arkeon" / "logins.json"
        (self.files / FILES[1]).mkdir(parents=True)
        (self.files / FILES[0]).touch()
        self.login.parent.mkdir(parents=True)
        self.login.write_text('{"logins": []}')
        self.login.chmod(0o600)
        self._install(pathlib.Path(completions))
        self.variables = {
            "HOME": str(folder / "home"), "ZDOTDIR": str(folder / "home"), "TERM": "dumb",
            "PATH": f"{pathlib.Path(tool).parent}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8",
            "XDG_DATA_DIRS": f"{self.data}:/usr/share", "DATA": str(self.data),
            "ANSWERS": str(folder / "answers"),
        }  # fmt: skip

    def _install(self, completions):
        for name, place in {
            "akhostmgmt": self.data / "bash-completion" / "completions",
            "_akhostmgmt": self.data / "zsh" / "vendor-completions",
            "akhostmgmt.fish": self.data / "fish" / "vendor_completions.d",
        }.items():
            place.mkdir(parents=True)
            shutil.copy(completions / name, place)

    def trace(self):
        """What a shell that was started by strace has left; empty without one."""
        trace = self.folder / "trace"
        return trace.read_text(errors="replace") if trace.exists() else ""

    def remove(self):
        self._temporary.cleanup()


class Terminal:
    """A shell on a terminal of its own. It answers through a FIFO, with a NUL at the end."""

    def __init__(self, place, command, variables):
        os.mkfifo(place.variables["ANSWERS"])
        self._answers = os.open(place.variables["ANSWERS"], os.O_RDWR | os.O_NONBLOCK)
        self._seen = b""
        own, theirs = pty.openpty()
        # Wide and high enough for no shell to ask whether it may list so much.
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 500, 500, 0, 0))
        self._process = subprocess.Popen(
            command, env=place.variables | variables, cwd=place.files, stdin=theirs, stdout=theirs,
            stderr=theirs, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))  # fmt: skip
        os.close(theirs)
        self._own = own

    def ask(self, keys):
        """Types the keys; the shell's answer."""
        os.write(self._own, keys)
        answer = b""
        while not answer.endswith(b"\0"):
            if self._answers in self._wait(keys, self._own, self._answers):
                answer += os.read(self._answers, 65536)
        return answer[:-1].decode()

    def _wait(self, keys, *ends):
        """Waits for one of the ends to have something, and reads the screen."""
        ready, _, _ = select.select(ends, [], [], SECONDS)
        if not ready:
            raise Failure(f"no answer to {keys!r}; on the screen is {self._seen[-500:]!r}")
        if self._own in ready:
            self._seen = (self._seen + os.read(self._own, 65536))[-20000:]
        return ready

    def wait_for(self, keys, text):
        """Types the keys and waits until the text is on the screen."""
        os.write(self._own, keys)
        self._seen = b""
        while text.encode() not in self._seen:
            self._wait(keys, self._own)

    def close(self):
        """Has the shell end as its user does; kills it where it does not."""
        if self._process.poll() is None:
            os.write(self._own, CLEAR + b"exit\n")
        with contextlib.suppress(OSError):  # that the other end has gone
            self._wait_for_end()
        with contextlib.suppress(ProcessLookupError):
            os.killpg(self._process.pid, signal.SIGKILL)
        self._process.wait()
        os.close(self._own)
        os.close(self._answers)

    def _wait_for_end(self):
        while select.select([self._own], [], [], SECONDS)[0]:
            os.read(self._own, 65536)


class Shell:
    """A shell in a place. `before` is the command that it is started with."""

    def __init__(self, place, before=()):
        self._terminal = Terminal(place, [*before, *self.COMMAND], self.VARIABLES)
        self._terminal.ask(f". {HERE / self.SESSION}\n".encode())

    def close(self):
        self._terminal.close()

    def completed(self, line):
        """The line after a TAB."""
        return self._terminal.ask(line.encode() + TAB + DUMP)

    def wait_for(self, line, text):
        """Types the line and a TAB, and waits until the text is on the screen."""
        self._terminal.wait_for(line.encode() + TAB, text)
        self._terminal.ask(DUMP)


class Bash(Shell):
    COMMAND = ["bash", "--norc", "--noprofile", "-i"]
    SESSION = "session.bash"
    VARIABLES = {}

    def offers(self, line):
        """What may stand in place of the line's last word, as bash itself puts it there."""
        inserted = self._terminal.ask(line.encode() + INSERT + DUMP)
        if inserted == line:
            return set()
        kept = line[: max(line.rfind(" "), line.rfind(">")) + 1]
        if not inserted.startswith(kept):
            raise Failure(f"{line!r} became {inserted!r}")
        return {each.rstrip("/") for each in inserted[len(kept):].split()}


class BashWithPackage(Bash):
    """bash with the package bash-completion, which reads a completion when it is needed."""

    VARIABLES = {"WITH_PACKAGE": "yes"}


class Zsh(Shell):
    COMMAND = ["zsh", "-f", "-i"]
    SESSION = "session.zsh"
    VARIABLES = {}

    def offers(self, line):
        """What zsh takes as matches of the line's last word."""
        _, *matches = super().completed(line).splitlines()
        return {each.rstrip("/") for each in matches}

    def completed(self, line):
        return super().completed(line).splitlines()[0]


class Fish:
    """fish, which completes a line on request. `phrases` has what it says of each offer so far."""

    COMMAND = ["fish", "-c", "while read -l line; complete -C $line; printf '\\0\\n'; end"]

    def __init__(self, place, before=()):
        self.phrases = {}
        self._process = subprocess.Popen(
            [*before, *self.COMMAND], env=place.variables, cwd=place.files,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)  # fmt: skip

    def close(self):
        self._process.communicate()

    def offers(self, line):
        self._process.stdin.write(line.encode() + b"\n")
        self._process.stdin.flush()
        offers = set()
        for answer in self._process.stdout:
            if answer == b"\0\n":
                return offers
            word, _, phrase = answer.decode().rstrip("\n").partition("\t")
            self.phrases[word] = phrase
            offers.add(word.rstrip("/"))
        raise Failure(f"fish went away at {line!r}")


ON_TERMINALS = [Bash, BashWithPackage, Zsh]
ALL = [*ON_TERMINALS, Fish]
