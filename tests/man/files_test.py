#!/usr/bin/env python3
"""The pages name the files that the tool opens, their formats, its variables and its messages."""

import ctypes
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import tomllib
import unittest

import local_server
import manual
import sandbox

FILES = "akhostmgmt-files.5"
LANGUAGE = "xx"
EXAMPLE_SERVER, EXAMPLE_TOKEN = "primary.example.com", "TOKEN"
LOG_FOLDER = "/usr/zelvik/arkeon/logs"
# What the installation has besides the files of the platform.
INSTALLED = {"/usr/share/akhostmgmt/statuses.json", "/usr/share/akhostmgmt/statuses.sh",
             "../lib/akhostmgmt/libarkeon-https.so"}  # fmt: skip
LAYERS = ("driver", "cmdframework", "hostmgmt", "platform")


class OpenedFiles:
    """Which files below a folder are opened while it is watched, by inotify(7)."""

    OPEN, FOLDER = 0x20, 0x40000000
    EVENT = struct.Struct("iIII")

    def __init__(self, folder):
        self._libc = ctypes.CDLL(None, use_errno=True)
        self._queue = self._libc.inotify_init1(os.O_CLOEXEC | os.O_NONBLOCK)
        self._root = folder
        self._folders = {self._watch(path): path for path in (folder, *folder.rglob("*"))
                         if path.is_dir()}  # fmt: skip

    def _watch(self, path):
        watch = self._libc.inotify_add_watch(self._queue, os.fsencode(path), self.OPEN)
        if watch < 0:
            raise OSError(ctypes.get_errno(), f"cannot watch {path}")
        return watch

    def close(self):
        """Their paths below the folder."""
        found, data = set(), b""
        try:
            while piece := os.read(self._queue, 65536):
                data += piece
        except BlockingIOError:
            os.close(self._queue)
        while data:
            watch, mask, _, length = self.EVENT.unpack_from(data)
            name = data[self.EVENT.size : self.EVENT.size + length].rstrip(b"\0")
            data = data[self.EVENT.size + length :]
            if not mask & self.FOLDER:
                path = self._folders[watch] / os.fsdecode(name)
                found.add(str(path.relative_to(self._root)))
        return found


def documented(name):
    """The files of a page's FILES."""
    return [path for row in manual.items(manual.built(name), "FILES", "Pa") for path in row]


def formats():
    """The examples of akhostmgmt-files(5): master.toml, certificates.toml, logins.json, a line."""
    return manual.literal_blocks(FILES, "DESCRIPTION")


def keys_of_page():
    return [key for row in manual.items(manual.built(FILES), "DESCRIPTION", "Cm") for key in row]


class Platform(unittest.TestCase):
    """A run with files that are the page's examples, apart from the server and the token."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="akhostmgmt-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        server = local_server.Server()
        self.addCleanup(server.stop)
        self.address = server.address
        logins = json.loads((server.root / "config/arkeon/logins.json").read_text())["logins"]
        self.token = logins[0]["token"]
        shutil.copytree(server.root / "certs", self.folder / "root/certs")
        for name in ("home", f"root/locale/{LANGUAGE}/LC_MESSAGES", "logs/admin"):
            (self.folder / name).mkdir(parents=True)
        master, certificates, login, _ = formats()
        self.write("root/etc/master.toml", master)
        self.write("root/etc/certificates.toml", certificates)
        self.write("home/.config/arkeon/logins.json", login)
        catalogue = self.folder / f"root/locale/{LANGUAGE}/LC_MESSAGES/akhostmgmt.mo"
        catalogue.write_bytes(sandbox.compiled_catalogue([("SmeHmm0039N", "Host ID", "Number")]))

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text.replace(EXAMPLE_SERVER, self.address)
                        .replace(EXAMPLE_TOKEN, self.token))  # fmt: skip
        path.chmod(0o600)

    def run_tool(self):
        run = subprocess.run(
            [manual.PROGRAMS.tool, "-list", "-short", "-host", "testhost2"], capture_output=True,
            stdin=subprocess.DEVNULL, timeout=100,
            env={"ARKEON_ROOT": str(self.folder / "root"), "HOME": str(self.folder / "home"),
                 "AK_TEST_LOG_DIRECTORY": str(self.folder / "logs"), "LC_ALL": "C.UTF-8",
                 "LANGUAGE": LANGUAGE, "TZ": "UTC-1"})  # fmt: skip
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return run.stdout.decode()

    def place_of(self, path):
        """Where a documented file is in this test's folder."""
        log = next((self.folder / "logs/admin").iterdir(), None)
        places = {"<root>": "root", "~": "home", LOG_FOLDER: "logs", "LANG": LANGUAGE,
                  "admin.YYYYMMDD.log": log.name}  # fmt: skip
        for text, place in places.items():
            path = path.replace(text, place)
        return path

    def test_the_formats_are_understood(self):
        self.assertRegex(self.run_tool(), r"\nNumber .*\n2c2cc2c2-\S+ +testhost2\n")

    def test_the_files_are_those_that_are_opened(self):
        watch = OpenedFiles(self.folder)
        self.run_tool()
        opened = watch.close()
        table = tomllib.loads((self.folder / "root/etc/certificates.toml").read_text())
        named = {os.path.normpath(f"root/etc/{table['certificate'][0][key]}")
                 for key in ("certificate", "private_key", "ca")}  # fmt: skip
        for name in ("akhostmgmt.1", FILES):
            paths = {self.place_of(path) for path in set(documented(name)) - INSTALLED}
            self.assertEqual(paths, opened - named, name)

    def test_the_log_has_the_format_of_the_page(self):
        self.run_tool()
        [log] = (self.folder / "logs/admin").iterdir()
        self.assertRegex(log.name, r"\Aadmin\.\d{8}\.log\Z")
        line = re.sub(r"\d", "0", re.escape(formats()[3].rstrip("\n"))).replace("0", r"\d")
        for word, form in (("PID", r"\d+"), ("LEVEL", "(2|16)"), ("NAME", r"\w*"), ("text", ".*")):
            line = line.replace(word, form)
        lines = log.read_text().splitlines()
        self.assertGreater(len(lines), 5)
        for each in lines:
            self.assertRegex(each, rf"\A{line}\Z")


class Contents(unittest.TestCase):
    def test_the_keys_are_those_of_the_formats(self):
        master, certificates, login, _ = formats()
        tables = tomllib.loads(master).items()
        expected = [f"{table}.{key}" for table, row in tables for key in row]
        for row in (tomllib.loads(certificates)["certificate"], json.loads(login)["logins"]):
            expected += row[0]
        self.assertCountEqual(keys_of_page(), expected)

    def test_the_fixed_places_are_those_of_the_program(self):
        text = manual.code(*LAYERS)
        for place in (LOG_FOLDER, "/usr/zelvik/arkeon", "libarkeon-https.so"):
            self.assertIn(f'"{place}"', text)
        self.assertLessEqual(INSTALLED, set(documented("akhostmgmt.1")))
        for name in ("statuses.json", "statuses.sh"):
            self.assertTrue((manual.PROGRAMS.tables / name).is_file())

    def test_the_limits_are_those_of_the_program(self):
        rules = (manual.PROGRAMS.source / "hostmgmt/ArgumentRules.h").read_text()
        known = set(re.findall(r"constexpr std::size_t max\w+ = (\d+);", rules))
        text = manual.source("akhostmgmt.1").read_text()
        limits = text.partition(".Ss Limits\n")[2].partition("\n.Sh ")[0]
        found = {number.replace(",", "") for number in re.findall(r"(?<!-)\b\d[\d,]*", limits)}
        self.assertGreater(len(found), 2)
        self.assertLessEqual(found, known)
        for number in known:
            self.assertRegex(text, rf"\b{int(number):,} ?(bytes)?\b")

    def test_the_variables_are_those_of_the_program(self):
        text = manual.code(*LAYERS)
        read = set(re.findall(r'environment\("(\w+)"\)', text))
        dropped = re.search(r"for \(const char\* variable : \{([^}]*)\}", text)[1]
        self.assertGreater(len(read), 2)
        rows = manual.items(manual.built("akhostmgmt.1"), "ENVIRONMENT", "Ev")
        locale = {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE", "TZ"}
        self.assertEqual({name for row in rows for name in row}, read | locale)
        named = {name for section, _, words in manual.macro_lines(manual.built("akhostmgmt.1"))
                 if section == "ENVIRONMENT" for name in manual.arguments(words, "Ev")}  # fmt: skip
        self.assertLessEqual(set(re.findall(r'"(\w+)"', dropped)), named)

    def test_the_messages_are_those_of_the_program(self):
        text = manual.code(*LAYERS)
        rows = [words[1].strip('"') for section, _, words in
                manual.macro_lines(manual.built("akhostmgmt.1"))
                if section == "DIAGNOSTICS" and words[0] == "It"]  # fmt: skip
        self.assertGreater(len(rows), 5)
        for row in rows:
            with self.subTest(row):
                self.assertIn('"' + re.split(r" N:| ?\.\.\.", row)[0], text)


if __name__ == "__main__":
    sys.exit(manual.run(__doc__))
