#!/usr/bin/python3
"""Tests packages that were made: what they hold, what linters say, whether a second build gives the
same bytes, what a plain installation holds, and (life_test.py) their life in a throw-away root."""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import archives
from archives import NAMES, Packages, output
from checks import Checks
from throwaway_root import NAMESPACES

SOURCES = pathlib.Path(__file__).parents[2]
# A tag of every level, so that each is either none or explained in the package's overrides.
LINTIAN = ["lintian", "--display-info", "--pedantic", "--fail-on", "error,warning,info,pedantic"]
OLDER = "0.0.9"  # a version to upgrade from


def check_contents(checks, packages):
    for name in NAMES:
        expected = archives.expected_entries(name, "deb")
        found = archives.deb_entries(packages.deb(name))
        found = archives.without_parents(found, expected)
        checks.same_set(f"{name}.deb holds what its list says", found, expected)
        checks.same_set(
            f"{name}.rpm holds what its list says",
            archives.rpm_entries(packages.rpm(name)),
            archives.expected_entries(name, "rpm"),
        )


def check_pages(checks):
    """Every page of the documentation is in one of the packages."""
    names = {path.name for path in (SOURCES / "docs").iterdir()}
    listed = {entry.path for name in NAMES for entry in archives.expected_entries(name, "deb")}
    checks.same_set("every page is in a package", names & {path.split("/")[-1] for path in listed},
                    names)  # fmt: skip


def project_version():
    text = (SOURCES / "CMakeLists.txt").read_text()
    return re.search(r"project\(\w+ VERSION ([0-9.]+)", text)[1]


def check_control(checks, packages):
    for name in NAMES:
        fields = output("dpkg-deb", "-W", "--showformat=${Package} ${Version} ${Architecture}",
                        packages.deb(name)).decode()  # fmt: skip
        own = output("dpkg", "--print-architecture").decode().strip()
        checks.equal(f"{name}.deb says what it is", fields, f"{name} {project_version()}-1 {own}")
        fields = output("rpm", "-qp", "--nosignature", "--qf",
                        "%{NAME} %{VERSION}-%{RELEASE} %{BUILDHOST} %{PACKAGER}",
                        packages.rpm(name)).decode()  # fmt: skip
        maintainer = output("dpkg-deb", "-f", packages.deb(name), "Maintainer").decode().strip()
        checks.equal(f"{name}.rpm says what it is, and not where it was made", fields,
                     f"{name} {project_version()}-1 localhost {maintainer}")  # fmt: skip
    depends = output("dpkg-deb", "-f", packages.deb(NAMES[0]), "Depends").decode()
    for library in ("libcurl4", "libssl3", "libjansson4", "libstdc++6", "libc6"):
        checks.check(f"the tool's .deb depends on {library}", library not in depends and depends)
    requires = output("rpm", "-qpR", "--nosignature", packages.rpm(NAMES[0])).decode()
    for library in ("libcurl.so.4", "libcrypto.so.3", "libjansson.so.4", "libstdc++.so.6"):
        checks.check(f"the tool's .rpm requires {library}", library not in requires and requires)


def check_programs(checks, packages, folder):
    for name in NAMES:
        output("dpkg-deb", "-x", packages.deb(name), folder)
    programs = [*folder.glob("usr/bin/*"), *folder.glob("usr/lib/akhostmgmt/*")]
    checks.equal("programs and libraries", len(programs), 3)
    for program in programs:
        sections = output("readelf", "-SW", program).decode()
        left = re.findall(r"\.(?:symtab|debug_\w+|comment)\b", sections)
        checks.check(f"{program.name} is stripped", " ".join(left))
        named = str(SOURCES).encode() in program.read_bytes()
        checks.check(f"{program.name} does not name the folder it was built in", named)


def check_linters(checks, packages):
    for command, kind in (
        (LINTIAN, "deb"),
        (["rpmlint", "-c", SOURCES / "packaging/rpmlint.toml", "--strict"], "rpm"),
    ):
        run = subprocess.run([*command, *packages.all(kind)], stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, text=True)  # fmt: skip
        remarks = re.findall(r"^(?:[EWIPX]: .*|\S+: [EWI]: .*)$", run.stdout, re.MULTILINE)
        failed = run.returncode and not remarks and run.stdout
        checks.check(f"{command[0]} has no remark that is not explained", failed, *remarks)


def date_of(packages):
    query = ["rpm", "-qp", "--nosignature", "--qf", "%{BUILDTIME}"]
    return output(*query, packages.rpm(NAMES[0])).decode()


def check_date(checks, packages):
    """The packages' date is that of the last commit where there is one."""
    log = subprocess.run(["git", "-C", SOURCES, "log", "-1", "--format=%ct"], text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)  # fmt: skip
    expected = os.environ.get("SOURCE_DATE_EPOCH") or log.stdout.strip()
    if expected:
        checks.equal("the packages' date is the last change's", date_of(packages), expected)


def copy_sources(folder):
    """The sources as they are now, with the times of now."""
    listing = ["git", "-C", SOURCES, "ls-files", "-z", "-co", "--exclude-standard"]
    for name in filter(None, output(*listing).decode().split("\0")):
        if (SOURCES / name).exists():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(SOURCES / name, folder / name)
            shutil.copymode(SOURCES / name, folder / name)


def second_build(packages, folder):
    """Builds and packs everything again: elsewhere, later, by another user's habits."""
    sources, build = folder / "sources elsewhere", folder / "b"
    copy_sources(sources)
    settings = {
        "cwd": sources,
        "umask": 0o077,
        "env": os.environ | {"TZ": "Pacific/Auckland", "LC_ALL": "C", "HOME": str(folder),
                             "SOURCE_DATE_EPOCH": date_of(packages)},
    }  # fmt: skip
    output("cmake", "--preset", "release", "-B", build, "-DAKHOSTMGMT_TESTS=OFF", **settings)
    output("cmake", "--build", build, "--target", "packaged", **settings)
    output("packaging/pack", build, folder / "packages", **settings)
    return Packages(folder / "packages")


def check_same_bytes(checks, packages, folder):
    again = second_build(packages, folder)
    for kind in ("deb", "rpm"):
        for one, other in zip(packages.all(kind), again.all(kind)):
            differs = one.name != other.name or one.read_bytes() != other.read_bytes()
            checks.check(f"a second build gives the same bytes: {one.name}", differs and other)


def check_plain_installation(checks, build, folder):
    """`cmake --install` with another prefix, below DESTDIR."""
    output("cmake", "--install", build, "--prefix", "/opt/arkeon-tools", umask=0o022,
           env=os.environ | {"DESTDIR": str(folder)})  # fmt: skip
    expected = {
        entry.mode + " " + entry.path.replace("/usr/", "/opt/arkeon-tools/", not_ours(entry))
        for name in NAMES
        for entry in archives.expected_entries(name, "installed")
    }
    found = {
        f"{path.stat().st_mode & 0o7777:04o} /{path.relative_to(folder)}" + "/" * path.is_dir()
        for path in folder.rglob("*")
    }
    parents = {f"0755 {parent}/" for each in expected for parent in pathlib.Path(each[5:]).parents}
    checks.same_set("a plain installation holds the lists", found - (parents - expected), expected)


def not_ours(entry):
    """How often /usr/ in the path is the prefix: not where the platform's root is."""
    return 0 if entry.path.startswith("/usr/zelvik/") else 1


def check_life(checks, packages, older, installed):
    """Runs life_test.py as the superuser and takes over its counts."""
    command = [*NAMESPACES, sys.executable, "-B", pathlib.Path(__file__).with_name("life_test.py"),
               "--packages", packages.folder, "--older", older,
               "--installed", installed]  # fmt: skip
    if os.geteuid() != 0:
        command = ["sudo", "--", *command]
    if shutil.which(command[0]) is None:
        checks.check("the packages' life in a throw-away root", "needs root or sudo")
        return
    run = subprocess.run(command, stdout=subprocess.PIPE, text=True)
    print(run.stdout, end="")
    failed = len(re.findall("^FAILED ", run.stdout, re.MULTILINE))
    checks.passed += len(re.findall("^ok ", run.stdout, re.MULTILINE))
    checks.failed += failed
    ended = run.returncode == (1 if failed else 0)
    checks.check("the packages' life ends as its checks say", not ended and run.returncode)


def test(checks, build, packages, folder):
    check_contents(checks, packages)
    check_pages(checks)
    check_control(checks, packages)
    check_programs(checks, packages, folder / "unpacked")
    check_linters(checks, packages)
    check_date(checks, packages)
    older = folder / "older"
    output(SOURCES / "packaging/pack", build, older, "-D", f"CPACK_PACKAGE_VERSION={OLDER}")
    check_plain_installation(checks, build, folder / "installed")
    check_life(checks, packages, older, folder / "installed")
    check_same_bytes(checks, packages, folder / "second")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--packages", type=pathlib.Path, required=True)
    arguments = parser.parse_args()
    checks = Checks()
    with tempfile.TemporaryDirectory(prefix="akhostmgmt-packages-") as temporary:
        folder = pathlib.Path(temporary)
        for name in ("unpacked", "installed", "second"):
            (folder / name).mkdir()
        packages = Packages(arguments.packages.resolve())
        test(checks, arguments.build.resolve(), packages, folder)
    print(f"{checks.passed} checks passed, {checks.failed} failed")
    return 1 if checks.failed else 0


if __name__ == "__main__":
    sys.exit(main())
