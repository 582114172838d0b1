#!/usr/bin/env python3
"""How the built programs are hardened, as their files say.

    hardening_test.py FILE...
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

FILES = []
MODULE_DIRECTORY = "$ORIGIN/../lib/akhostmgmt"
HARDENED = [
    "-O2", "-D_FORTIFY_SOURCE=2", "-fstack-protector-strong", "-fPIE", "-pie",
    "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack",
]  # fmt: skip
# A program with an array on its stack, into which it copies what it is given.
SOURCE = """
#include <stdio.h>
#include <string.h>
int main(int argc, char** argv) {
    char text[64];
    strcpy(text, argv[argc - 1]);
    return puts(text);
}
"""


def readelf(option, path):
    return subprocess.run(
        ["readelf", "--wide", option, path], capture_output=True, check=True, text=True,
        env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"}).stdout  # fmt: skip


def segments(path):
    """Type and flags of each segment."""
    lines = readelf("--program-headers", path).partition("Program Headers:")[2].splitlines()
    rows = [line.split() for line in lines if " 0x" in line]
    return [(row[0], "".join(row[6:-1])) for row in rows if len(row) > 7]


def missing(path):
    """What the file lacks of the hardening."""
    dynamic = readelf("--dynamic", path)
    symbols = set(re.findall(r"(\w+)@GLIBC", readelf("--dyn-syms", path)))
    parts = segments(path)
    stack = [flags for kind, flags in parts if kind == "GNU_STACK"]
    search = set(re.findall(r"(?:RPATH|RUNPATH).*\[(.*)\]", dynamic))
    has = {
        "position independence": "DYN (" in readelf("--file-header", path),
        "RELRO": any(kind == "GNU_RELRO" for kind, _ in parts),
        "binding at the start": "BIND_NOW" in dynamic or "Flags: NOW" in dynamic,
        "a stack that is not executable": stack == ["RW"],
        "no part that is writable and executable": all(
            not {"W", "E"} <= set(flags) for _, flags in parts),
        "code without relocations": "TEXTREL" not in dynamic,
        "no search path but the module's": search <= {MODULE_DIRECTORY},
        "a stack protector": "__stack_chk_fail" in symbols,
        # The module calls no function that has a checked variant.
        "checked copies": path.endswith(".so") or any(name.endswith("_chk") for name in symbols),
    }  # fmt: skip
    return [name for name, there in has.items() if not there]


class Programs(unittest.TestCase):
    def test_nothing_is_missing(self):
        for path in FILES:
            with self.subTest(path):
                self.assertEqual(missing(path), [])


class Findings(unittest.TestCase):
    """Each part of the hardening is missed when it is left out."""

    def found(self, *options):
        with tempfile.TemporaryDirectory(prefix="akhostmgmt-") as folder:
            source = pathlib.Path(folder, "program.c")
            source.write_text(SOURCE)
            program = pathlib.Path(folder, "program")
            subprocess.run(["cc", "-w", *HARDENED, *options, source, "-o", program], check=True)
            return missing(str(program))

    def test_nothing_left_out(self):
        self.assertEqual(self.found(), [])

    def test_each_part_left_out(self):
        for option, part in {
            "-no-pie": "position independence",
            "-Wl,-z,norelro": "RELRO",
            "-Wl,-z,lazy": "binding at the start",
            "-Wl,-z,execstack": "a stack that is not executable",
            "-Wl,-rpath,/tmp": "no search path but the module's",
            "-fno-stack-protector": "a stack protector",
            "-U_FORTIFY_SOURCE": "checked copies",
        }.items():
            with self.subTest(option):
                self.assertIn(part, self.found(option))


if __name__ == "__main__":
    FILES = sys.argv[1:]
    sys.exit("no file is named" if not FILES else unittest.main(argv=sys.argv[:1], verbosity=2))
