#!/usr/bin/python3
"""The life of the packages in throw-away roots: installed, used, upgraded, installed again, removed
and purged, by dpkg and by rpm. To be run by the superuser in the namespaces of throwaway_root."""

import argparse
import os
import pathlib
import shutil
import sys

import archives
from archives import NAMES, Packages
from checks import Checks
from site_life import LOGS, PLATFORM, ROTATION, Site
from throwaway_root import Failure, command, start_loopback, throwaway_root

PREFIX = "/opt/arkeon-tools"  # of the plain installation
CONFIGURATION = {f"{PLATFORM}/etc/master.toml", f"{PLATFORM}/etc/certificates.toml"}


class Debian:
    kind = "deb"
    purges = True

    def install(self, root, packages):
        root.must("dpkg", "--install", *packages)

    upgrade = reinstall = install

    def version(self, root, name):
        return root.must("dpkg-query", "-W", "-f", "${Version}", name)

    def remove(self, root):
        root.must("dpkg", "--remove", *NAMES)

    def purge(self, root):
        root.must("dpkg", "--purge", *NAMES)


class Rpm:
    kind = "rpm"
    purges = False
    # Debian's own packages are not in rpm's books, and nobody has signed these.
    options = ("--nodeps", "--nosignature")

    def install(self, root, packages):
        root.must("rpm", *self.options, "-i", *packages)

    def upgrade(self, root, packages):
        root.must("rpm", *self.options, "-U", *packages)

    def reinstall(self, root, packages):
        root.must("rpm", *self.options, "-U", "--replacepkgs", *packages)

    def version(self, root, name):
        return root.must("rpm", "-q", "--qf", "%{VERSION}-%{RELEASE}", name)

    def remove(self, root):
        root.must("rpm", "-e", *NAMES)


class Life:
    """One root, and in it the packages of two versions."""

    def __init__(self, checks, manager, root, newer, older):
        self._checks, self._manager, self._root = checks, manager, root
        self._remove_the_machines_own()
        self._untouched = root.changes()
        self._newer = self._copied(newer, "/tmp/newer")
        self._older = self._copied(older, "/tmp/older")
        self._version = newer.deb(NAMES[0]).name.split("_")[1]

    def _remove_the_machines_own(self):
        if self._root.run("dpkg-query", "-s", *NAMES)[0] == 0:
            self._root.must("dpkg", "--purge", *NAMES)
        self._root.remove(PLATFORM)

    def _copied(self, packages, to):
        """The packages' paths inside the root."""
        self._root.at(to).mkdir()
        found = packages.all(self._manager.kind)
        for each in found:
            shutil.copy(each, self._root.at(to))
        return [f"{to}/{each.name}" for each in found]

    def _name(self, text):
        return f"{self._manager.kind}: {text}"

    def _entries(self):
        kind = self._manager.kind
        return {each for name in NAMES for each in archives.expected_entries(name, kind)}

    def _check_entries(self, when):
        expected = {f"{each.mode} {each.owner} {each.path}" for each in self._entries()}
        found = {self._root.entry(each.path) for each in self._entries()} - {None}
        self._checks.same_set(self._name(f"all is there as listed, {when}"), found, expected)

    def _check_left(self, when, expected):
        """What is there besides the machine's own files, and the folders of what is."""
        folders = {str(parent) for path in expected for parent in pathlib.Path(path).parents}
        left = self._root.changes() - self._untouched - folders
        self._checks.same_set(self._name(f"what is left after the {when}"), left, set(expected))

    def of_a_site(self):
        """The packages are used, upgraded and removed; what is the site's own stays."""
        manager, root = self._manager, self._root
        manager.install(root, self._older)
        self._check_entries("installed")
        site = Site(self._checks, root, manager.kind)
        site.prepare()
        self._untouched |= {"/etc/hosts"}
        site.use()
        self._note_new_files("/etc", site.open_logs)
        site.edit()
        self._upgrade(site)
        site.use_together()
        site.rotate()
        self._remove(site)

    def _note_new_files(self, below, step):
        """Takes what a step changes below a folder for the machine's own."""
        step()
        self._untouched |= {path for path in self._root.changes()
                            if path.startswith(below) and path != ROTATION}  # fmt: skip

    def _upgrade(self, site):
        kept = site.belongings()
        for step in ("upgrade", "reinstall"):
            getattr(self._manager, step)(self._root, self._newer)
            self._checks.equal(self._name(f"the version after the {step}"),
                               self._manager.version(self._root, NAMES[0]), self._version)
            changed = [path for path, facts in kept.items() if site.belongings().get(path) != facts]
            self._checks.check(self._name(f"the {step} leaves alone what is the site's"), *changed)
            self._check_entries(f"after the {step}")

    def _remove(self, site):
        logs = {f"{LOGS}/{log.name}" for log in site.logs()}
        certificates = {f"{PLATFORM}/certs/{name}" for name in ("ca.pem", "host.pem", "host.key")}
        self._manager.remove(self._root)
        rotation = ROTATION if self._manager.purges else f"{ROTATION}.rpmsave"
        self._check_left("removal", CONFIGURATION | certificates | logs | {rotation})
        if self._manager.purges:
            self._manager.purge(self._root)
            self._check_left("purge", CONFIGURATION | certificates)

    def of_a_trial(self):
        """The packages are installed, tried without a configuration, and removed."""
        self._manager.install(self._root, self._newer)
        status, text = self._root.run("akhostmgmt", "-list")
        self._checks.check(self._name("a run without a configuration fails"), not status and text)
        logs = {f"{LOGS}/{log.name}" for log in self._root.at(LOGS).iterdir()}
        self._checks.equal(self._name("it is logged"), len(logs), 1)
        self._manager.remove(self._root)
        self._check_left("removal", logs | ({ROTATION} if self._manager.purges else set()))
        if self._manager.purges:
            self._manager.purge(self._root)
            self._check_left("purge", set())


def check_plain_installation(checks, installed):
    """What `cmake --install` put below a folder, with a prefix of its own, works in its place."""
    with throwaway_root() as root:
        root.remove(PLATFORM)
        command("cp", "-r", "--preserve=mode", f"{installed}/.", root.path)
        site = Site(checks, root, "cmake --install", PREFIX)
        site.prepare()
        site.check_module()


def main():
    parser = argparse.ArgumentParser()
    for name in ("--packages", "--older", "--installed"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    arguments = parser.parse_args()
    os.umask(0o022)
    checks = Checks()
    newer, older = Packages(arguments.packages), Packages(arguments.older)
    start_loopback()
    for manager in (Debian(), Rpm()):
        for life in (Life.of_a_site, Life.of_a_trial):
            with throwaway_root() as root:
                life(Life(checks, manager, root, newer, older))
    check_plain_installation(checks, arguments.installed)
    return 1 if checks.failed else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Failure as failure:
        print(f"FAILED a command that has to succeed\n       {failure}")
        sys.exit(1)
