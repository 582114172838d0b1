#!/usr/bin/env python3
"""Reads the documentation and does what it says: every command runs and shows what the page shows.

    documentation_test.py --tool PATH --devserver PATH --build FOLDER [--by-hand] [PAGE...]

--by-hand runs the commands that take long instead (commands.toml).
"""

import argparse
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tomllib
import xml.etree.ElementTree

import local_server
import pages
import sessions
from pages import TOP

OTHER_KINDS = {"text", "toml", "json", "cpp", "ini"}
KNOWN = tomllib.loads((pathlib.Path(__file__).parent / "commands.toml").read_text())
TOOL_OPTION = re.compile(r"(?<!\S)-(\w+)")


class Fault(Exception):
    """A page that does not say what is."""


class Reader:
    """Holds a page against the programs and the tree."""

    def __init__(self, options):
        self._programs = {"akhostmgmt": options.tool, "akdevserver": options.devserver}
        self._build = options.build
        self._data = options.build / "tables"
        cache = (options.build / "CMakeCache.txt").read_text()
        self._has_all_tests = "CMAKE_BUILD_TYPE:STRING=RelWithDebInfo" in cache
        tables = json.loads((self._data / "tables.json").read_text())
        rows = [*tables["operations"], tables["help"]]
        rows += [option for row in tables["operations"] for option in row["options"]]
        self._options = {row[key] for row in rows for key in ("name", "alias")}

    def read(self, page):
        """Does all that the page says; how much that was."""
        count = 0
        desk = sessions.Desk(self._programs, self._data) if self._needs_desk(page) else None
        try:
            for block in page.blocks:
                count += self._do(page, block, desk)
        finally:
            if desk:
                desk.close()
        self._check_words(page)
        self._check_links(page)
        check_version(page)
        return count

    @staticmethod
    def _needs_desk(page):
        return any(block.kind in ("console", "sh") for block in page.blocks)

    def _do(self, page, block, desk):
        place = f"{page.name}:{block.line}"
        if block.kind == "console":
            return self._follow(place, sessions.session(block.text), desk)
        if block.kind == "sh":
            return self._run(place, block.text, desk)
        if block.kind not in OTHER_KINDS:
            raise Fault(f"{place}: a block of an unknown kind: '{block.kind}'")
        if block.kind in ("toml", "json"):
            self._parse(place, block)
        elif block.kind == "cpp" and not any(block.text in text for text in source_texts()):
            raise Fault(f"{place}: no source file has these lines")
        return 0

    @staticmethod
    def _parse(place, block):
        try:
            {"toml": tomllib.loads, "json": json.loads}[block.kind](block.text)
        except ValueError as error:
            raise Fault(f"{place}: no {block.kind}: {error}") from None

    @staticmethod
    def _follow(place, steps, desk):
        for command, expected in steps:
            shown, _ = desk.run(command, sessions.answers_in(expected))
            if not sessions.as_pattern(expected).fullmatch(with_end(shown)):
                raise Fault(f"{place}: $ {command}\nthe page:\n{expected}the program:\n{shown}")
        return len(steps)

    def _chooses_tests(self, command):
        """Whether a command is a choice among the tests that there are."""
        words = shlex.split(command)
        if words[0] != "ctest" or "-R" not in words:
            return False
        if not self._has_all_tests:
            return True
        listing = ["ctest", "--test-dir", self._build, "-N", "-R", words[words.index("-R") + 1]]
        found = subprocess.run(listing, capture_output=True, text=True, check=True).stdout
        if "Total Tests: 0" in found:
            raise Fault(f"no test is chosen by {command}")
        return True

    def _run(self, place, text, desk):
        commands = pages.commands(text)
        if all(is_known(command) or self._chooses_tests(command) for command in commands):
            return len(commands)
        if not any(name in text for name in self._programs):
            raise Fault(f"{place}: commands.toml does not say who runs this")
        served = all(sessions.SERVING.match(command) for command in commands)
        for command in commands if served else [text]:
            shown, status = desk.run(command)
            desk.stop_servers()
            if status != 0:
                raise Fault(f"{place}: status {status} of\n{command}\n{shown}")
        return len(commands)

    def _check_words(self, page):
        for span in page.spans():
            first = span.split()[0] if span.split() else ""
            if first == "akhostmgmt":
                unknown = set(map(str.lower, TOOL_OPTION.findall(span))) - self._options
                if unknown - {"operation"}:
                    raise Fault(f"{page.name}: `{span}`: the tool has no {', '.join(unknown)}")
            elif first.startswith(("scripts/", ".ci/")) and not is_script(TOP / first):
                raise Fault(f"{page.name}: `{span}`: there is no such script")
            elif first == "ctest":
                self._chooses_tests(span)
            elif re.fullmatch(r"(driver|hostmgmt|cmdframework|platform|tests)/[\w/.]+", first):
                self._check_path(page, first)

    @staticmethod
    def _check_path(page, path):
        folder, _, name = path.rpartition("/")
        named = [*TOP.glob(path), *(TOP / folder).glob(name + ".*")]
        if not named:
            raise Fault(f"{page.name}: `{path}` is not there")

    @staticmethod
    def _check_links(page):
        for target in page.links():
            file, _, anchor = target.partition("#")
            path = (page.path.parent / file).resolve() if file else page.path
            if not path.exists():
                raise Fault(f"{page.name}: the link to {target} leads nowhere")
            if anchor and anchor not in pages.Page(path).anchors():
                raise Fault(f"{page.name}: {target}: the page has no such heading")
            if path.suffix == ".svg":
                check_picture(path)


def is_script(path):
    return os.access(path, os.X_OK) or (path.suffix == ".sh" and path.exists())


def with_end(shown):
    return shown if not shown or shown.endswith("\n") else shown + "\n"


def is_known(command):
    """Whether a command is run elsewhere, as commands.toml says."""
    if command in KNOWN["by_hand"]:
        return True
    if command not in KNOWN["run_by"]:
        return command.startswith("scripts/bench ")
    file, line = KNOWN["run_by"][command]
    if line not in (TOP / file).read_text():
        raise Fault(f"commands.toml: {file} does not have '{line}'")
    return True


def source_texts():
    for pattern in ("driver/*", "hostmgmt/**/*", "cmdframework/*", "platform/**/*"):
        for path in TOP.glob(pattern):
            if path.suffix in (".h", ".cpp"):
                yield path.read_text()


def check_picture(path):
    """What a picture names as code is in the tree, as a file, a folder, or a word of a source."""
    words = set()
    for text in xml.etree.ElementTree.parse(path).iter("{http://www.w3.org/2000/svg}text"):
        if "Mono" in text.get("font-family", ""):
            words |= set(re.findall(r"\b[A-Za-z]+[A-Z_]\w+\b|\b[a-z]+/", text.text))
    sources = "\n".join(source_texts())
    folders = {folder.name + "/" for folder in TOP.iterdir()}
    strange = {word for word in words if word not in folders and word not in sources}
    if strange - {"YYYYMMDD", "HTTPS"}:
        raise Fault(f"{path.name} names what is not there: {', '.join(sorted(strange))}")


def check_version(page):
    """The newest of the changes is the version that is built."""
    built = re.search(r"project\(akhostmgmt VERSION ([\d.]+)", (TOP / "CMakeLists.txt").read_text())
    told = re.search(r"^## ([\d.]+)$", page.prose, re.MULTILINE)
    if "Semantic Versioning" in page.prose and (not told or told[1] != built[1]):
        raise Fault(f"{page.name}: the newest version is not {built[1]}")


def run_by_hand():
    failed = 0
    for command in filter(None, KNOWN["by_hand"].values()):
        print(f"== {command}", flush=True)
        failed += subprocess.run(command, shell=True, cwd=TOP, check=False).returncode != 0
    return 1 if failed else 0


def main():
    parser = local_server.argument_parser(__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--by-hand", action="store_true")
    parser.add_argument("pages", nargs="*", type=pathlib.Path)
    options = parser.parse_args()
    if options.by_hand:
        return run_by_hand()
    local_server.PROGRAMS = argparse.Namespace(tool=options.tool, devserver=options.devserver)
    reader, passed, failed = Reader(options), 0, 0
    for path in options.pages or pages.all_paths():
        try:
            page = pages.Page(path.resolve())
            print(f"{page.name}: {reader.read(page)} commands")
            passed += 1
        except (Fault, ValueError, TimeoutError) as fault:
            print(f"FAILED {path.name}: {fault}")
            failed += 1
    return local_server.close(passed, failed)


sys.exit(main())
