"""What packages hold, and what they should hold: entries with path, mode and owner."""

import collections
import io
import pathlib
import stat
import subprocess
import tarfile

LISTS = pathlib.Path(__file__).parents[2] / "packaging"
NAMES = ("akhostmgmt", "akdevserver")

# A folder's path ends in a slash; the mode is that of chmod.
Entry = collections.namedtuple("Entry", "mode owner path")


def output(*command, **options):
    """The standard output of a command that has to succeed, as bytes."""
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, **options).stdout


def expected_entries(name, kind):
    """The rows of a package's list, `MODE PATH [KIND...]`, that go for this kind."""
    rows = (LISTS / f"contents-{name}.txt").read_text().splitlines()
    fields = [row.split() for row in rows if row and not row.startswith("#")]
    return {Entry(row[0], "root:root", row[1]) for row in fields if not row[2:] or kind in row[2:]}


def deb_entries(package):
    with tarfile.open(fileobj=io.BytesIO(output("dpkg-deb", "--fsys-tarfile", package))) as tree:
        return {
            Entry(
                f"{member.mode:04o}",
                f"{member.uname}:{member.gname}",
                member.name[1:] + "/" * member.isdir(),
            )
            for member in tree
            if member.name != "."
        }


def rpm_entries(package):
    rows = output("rpm", "-qp", "--nosignature", "--qf", "[%{FILEMODES} %{FILEUSERNAME}:"
                  "%{FILEGROUPNAME} %{FILENAMES}\n]", package).decode().splitlines()  # fmt: skip
    return {rpm_entry(*row.split(" ", 2)) for row in rows}


def rpm_entry(mode, owner, path):
    number = int(mode)
    return Entry(f"{stat.S_IMODE(number):04o}", owner, path + "/" * stat.S_ISDIR(number))


def without_parents(entries, expected):
    """Entries less the folders, 0755 and root's, that a tree of the expected ones needs anyway."""
    parents = {f"{parent}/" for each in expected for parent in pathlib.Path(each.path).parents}
    common = {Entry("0755", "root:root", path) for path in parents}
    return entries - (common - expected)


class Packages:
    """The four packages in a folder."""

    def __init__(self, folder):
        self.folder = folder

    def deb(self, name):
        return self._only(f"{name}_*.deb")

    def rpm(self, name):
        return self._only(f"{name}-*.rpm")

    def all(self, kind):
        return [getattr(self, kind)(name) for name in NAMES]

    def _only(self, pattern):
        (found,) = self.folder.glob(pattern)
        return found
