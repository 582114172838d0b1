"""A throw-away copy of the machine's root file system, to install packages in for real."""

import contextlib
import os
import pathlib
import shutil
import stat
import subprocess
import tempfile

# The mounts, the network and the processes of what this is put before end with it.
NAMESPACES = ["unshare", "--mount", "--net", "--pid", "--fork", "--kill-child", "--"]
# Where package managers and their helpers keep their own books, and where tests keep theirs.
BOOKS = ("var/lib/dpkg", "var/lib/rpm", "var/log", "var/cache", "var/backups", "root/.rpmdb",
         "tmp")  # fmt: skip
ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/root",
               "DEBIAN_FRONTEND": "noninteractive"}  # fmt: skip


class Failure(Exception):
    """A command that had to succeed did not."""


def command(*words):
    run = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if run.returncode != 0:
        raise Failure(f"{' '.join(map(str, words))}: {run.stdout.strip()}")


def start_loopback():
    command("ip", "link", "set", "lo", "up")


class Root:
    """The root file system, and over it in memory whatever is changed."""

    def __init__(self, folder):
        self._folder = folder
        command("mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", folder)
        self._upper, work, self.path = (folder / name for name in ("upper", "work", "root"))
        for each in (self._upper, work, self.path):
            each.mkdir(mode=0o755)
        layers = f"lowerdir=/,upperdir={self._upper},workdir={work}"
        command("mount", "-t", "overlay", "-o", layers, "overlay", self.path)
        command("mount", "--rbind", "/dev", self.path / "dev")
        command("mount", "-t", "proc", "proc", self.path / "proc")
        self._servers = []

    def close(self):
        for server in self._servers:
            server.kill()
            server.wait()
        command("umount", "--recursive", self._folder)

    def at(self, path):
        return self.path / path.lstrip("/")

    def run(self, *words, user=None, groups=(), environment=None):
        """Runs a program in the root, as a user's number with groups: its exit status and what it
        wrote to both streams."""
        run = subprocess.run(
            self._chroot(user, groups, words), env=ENVIRONMENT | (environment or {}),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            umask=0o022)  # fmt: skip
        return run.returncode, run.stdout.decode("utf-8", "replace")

    def must(self, *words, **options):
        """The same for one that has to succeed: what it wrote."""
        status, text = self.run(*words, **options)
        if status != 0:
            raise Failure(f"{' '.join(words)}: status {status}: {text}")
        return text

    def start(self, *words):
        """Starts a server, which ends with the root."""
        server = subprocess.Popen(self._chroot(None, (), words), env=ENVIRONMENT,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)  # fmt: skip
        self._servers.append(server)

    def _chroot(self, user, groups, words):
        as_user = [f"--userspec={user}:{user}", f"--groups={','.join(groups)}"]
        return ["chroot", *([] if user is None else as_user), self.path, *words]

    def changes(self):
        """The paths that differ from the machine's own root, books apart; a folder's only where it
        is new or has another mode."""
        paths = {"/" + str(found.relative_to(self._upper)) for found in self._upper.rglob("*")}
        return {path for path in paths
                if not path[1:].startswith(BOOKS) and not self._same_folder(path)}  # fmt: skip

    def _same_folder(self, path):
        with contextlib.suppress(FileNotFoundError):
            below, above = os.lstat(path).st_mode, os.lstat(self._upper / path[1:]).st_mode
            return stat.S_ISDIR(above) and above == below
        return False

    def remove(self, path):
        """Takes a folder away with all that is in it."""
        shutil.rmtree(self.at(path), ignore_errors=True)

    def entry(self, path):
        """Mode, owner and path of what is there, as in the lists; None where nothing is."""
        with contextlib.suppress(FileNotFoundError):
            facts = os.lstat(self.at(path.rstrip("/")))
            owner = f"{facts.st_uid}:{facts.st_gid}".replace("0:0", "root:root")
            folder = "/" if stat.S_ISDIR(facts.st_mode) else ""
            return f"{stat.S_IMODE(facts.st_mode):04o} {owner} {path.rstrip('/')}{folder}"
        return None


@contextlib.contextmanager
def throwaway_root():
    with tempfile.TemporaryDirectory(prefix="akhostmgmt-root-") as folder:
        root = Root(pathlib.Path(folder))
        try:
            yield root
        finally:
            root.close()
