"""What a site does with the installed packages: it configures the tool, uses it, and looks after
the logs."""

import gettext
import os
import pathlib
import re
import time

PLATFORM = "/usr/zelvik/arkeon"
LOGS = f"{PLATFORM}/logs/admin"
ROTATION = "/etc/logrotate.d/akhostmgmt"
MODULE = "/lib/akhostmgmt/libarkeon-https.so"
GUIDE = pathlib.Path(__file__).parents[2] / "packaging" / "README.md"
SERVER = "/tmp/primary"  # akdevserver's folder
MEMBER, STRANGER = 4711, 4712  # users: one is of the group of administrators, one is not
KEY_GROUP = "4713"  # both may read the host's key
DAY = 24 * 3600


class Site:
    def __init__(self, checks, root, kind, prefix="/usr"):
        self._checks, self._root, self._kind, self._prefix = checks, root, kind, prefix
        self._members = []  # the group of administrators, once there is one
        self._listing = ""

    def check(self, name, *problems):
        self._checks.check(f"{self._kind}: {name}", *problems)

    def prepare(self):
        """Configures the tool with the samples as they are, for a server of the name in them."""
        root = self._root
        with root.at("/etc/hosts").open("a") as hosts:
            hosts.write("127.0.0.1 primary.example.com\n")
        self._start_server()
        samples = f"{self._prefix}/share/doc/akhostmgmt/examples"
        root.must("cp", f"{samples}/master.toml", f"{samples}/certificates.toml", f"{PLATFORM}/etc")
        root.must("cp", "-r", f"{SERVER}/certs", PLATFORM)
        root.must("chmod", "-R", "u=rwX,g=rX,o=X", f"{PLATFORM}/certs")
        root.must("chgrp", "-R", KEY_GROUP, f"{PLATFORM}/certs")
        for user in (MEMBER, STRANGER):
            root.must("cp", "-r", f"{SERVER}/config", f"/tmp/{user}")
            root.must("chown", "-R", f"{user}:{user}", f"/tmp/{user}")

    def _start_server(self):
        self._root.start(f"{self._prefix}/bin/akdevserver", "--root", SERVER,
                         "--name", "primary.example.com", "--ready-file", "/tmp/ready")  # fmt: skip
        until = time.monotonic() + 60
        while not self._root.at("/tmp/ready").exists():
            if time.monotonic() > until:
                raise RuntimeError("the development server does not become ready")
            time.sleep(0.05)

    def run(self, *arguments, user=None, environment=None):
        """Runs the tool as root or as a user, who is logged in: exit status and output."""
        settings = {"XDG_CONFIG_HOME": f"{SERVER}/config" if user is None else f"/tmp/{user}"}
        groups = [KEY_GROUP, *(self._members if user == MEMBER else [])]
        return self._root.run("akhostmgmt", *arguments, user=user, groups=groups,
                              environment=settings | (environment or {}))  # fmt: skip

    def logs(self):
        return sorted(self._root.at(LOGS).glob("admin.*"))

    def logged(self):
        """How many runs of the tool the logs know of."""
        return sum(log.read_text().count(": Return value is: ") for log in self.logs())

    def _check_run(self, who, user, is_logged):
        before = self.logged()
        status, text = self.run("-list", "-short", user=user)
        self._listing = self._listing or text
        self.check(f"-list of {who}", status, "testhost1" not in text and text,
                   text != self._listing and "another listing than before")  # fmt: skip
        more = self.logged() - before
        self.check(f"the run of {who} is in {'the' if is_logged else 'no'} log",
                   more != is_logged and f"{more} runs more")  # fmt: skip

    def use(self):
        """Runs of root, which are logged, and of another user, which need not be."""
        status, text = self.run("-help")
        self.check("-help", status, "-allowautoreissuecert" not in text and text)
        self._check_run("root", None, True)
        self._check_run("another user", STRANGER, False)
        for words in (["ls", LOGS], ["touch", f"{LOGS}/admin.20990101.log"]):
            status, text = self._root.run(*words, user=STRANGER)
            self.check(f"another user has no {words[0]} in the logs", status == 0 and text or "")
        self.check_module()
        self._check_languages()

    def _check_languages(self):
        """The failure of a host that nobody knows, in each language that is installed."""
        _, line = self.run("-list", "-host", "nobody.example.com")
        english = line.strip().partition("Exit Status 8902: ")[2]
        folders = sorted(self._root.at(f"{PLATFORM}/locale").iterdir())
        self.check("there are languages", not folders or not english and line)
        for folder in folders:
            with (folder / "LC_MESSAGES/akhostmgmt.mo").open("rb") as file:
                expected = gettext.GNUTranslations(file).pgettext("SmeHmm0040N", english)
            _, line = self.run("-list", "-host", "nobody.example.com",
                               environment={"LANGUAGE": folder.name})  # fmt: skip
            self.check(f"a failure in {folder.name}", expected == english and "not translated",
                       expected not in line and line)  # fmt: skip

    def check_module(self):
        """A request loads the HTTPS client below the program's own prefix."""
        trace = self._root.must("strace", "-e", "trace=open,openat",
                                f"{self._prefix}/bin/akhostmgmt", "-list",
                                environment={"XDG_CONFIG_HOME": f"{SERVER}/config"})  # fmt: skip
        opened = re.findall(r'"([^"]+)".* = \d+$', trace, re.MULTILINE)
        found = any(os.path.normpath(path) == self._prefix + MODULE for path in opened)
        self.check(f"the tool below {self._prefix} loads its module", not found and opened)

    def open_logs(self):
        """What the guide says for a site that wants the runs of other administrators logged."""
        (steps,) = re.findall(r"```sh\n(groupadd .*?)```", GUIDE.read_text(), re.DOTALL)
        self._root.must("sh", "-ec", steps)
        self._members = [self._root.must("getent", "group", "arkeon-admins").split(":")[2]]
        for log in self.logs():
            self._check_run("a member, in root's older log", MEMBER, True)
            log.unlink()
        self.use_together()

    def use_together(self):
        """Runs of root and of a member of the group, in one log."""
        for who, user in (("a member", MEMBER), ("root", None), ("a member again", MEMBER)):
            self._check_run(who, user, True)
        modes = {f"{log.stat().st_mode & 0o777:03o}" for log in self.logs()}
        self.check("the common log is closed to others", modes != {"660"} and modes)
        self._check_run("another user", STRANGER, False)

    def edit(self):
        """Changes the configuration and the rotation of the logs."""
        for path in (f"{PLATFORM}/etc/master.toml", f"{PLATFORM}/etc/certificates.toml", ROTATION):
            with self._root.at(path).open("a") as file:
                file.write("# edited by the site\n")

    def belongings(self):
        """The site's files and folders, with contents, modes and access lists."""
        etc = sorted(self._root.at(f"{PLATFORM}/etc").iterdir())
        rotation = self._root.at(ROTATION)
        files = [*etc, *self.logs(), *([rotation] if rotation.exists() else [])]
        facts = {str(file): (file.stat().st_mode, file.read_bytes()) for file in files}
        folders = (f"{PLATFORM}/logs", LOGS)
        return facts | {path: self._root.must("getfacl", "-p", path) for path in folders}

    def rotate(self):
        """The rotation leaves the log of today alone, and takes care of the older ones."""
        today = self.logs()[-1]
        kept = (today.stat().st_ino, today.read_bytes())
        for name, days in (("admin.20260101.log", 1), ("admin.20260102.log", 3),
                           ("admin.20260103.log.1.gz", 80), ("admin.20260104.log.1.gz", 92)):
            log = self._root.at(f"{LOGS}/{name}")
            log.write_text(f"{name}\n")
            os.utime(log, (time.time() - days * DAY,) * 2)
        state = self._root.at("/tmp/rotation")
        for _ in range(2):  # logrotate takes care of a file when it sees it for the second time
            self._root.must("logrotate", "-s", "/tmp/rotation", ROTATION)
            state.write_text(re.sub(r'" .*', '" 2000-1-1-0:0:0', state.read_text()))
        names = {"admin.20260101.log", "admin.20260102.log.1.gz", "admin.20260103.log.1.gz"}
        self._checks.same_set(f"{self._kind}: the rotation compresses and deletes by age",
                              {log.name for log in self.logs()}, names | {today.name})  # fmt: skip
        self.check("the rotation leaves the log of today as it is",
                   (today.stat().st_ino, today.read_bytes()) != kept and today)  # fmt: skip
        text = self._root.must("gzip", "-dc", f"{LOGS}/admin.20260102.log.1.gz")
        self._checks.equal(f"{self._kind}: a compressed log", text, "admin.20260102.log\n")
