"""Builds the programs of the tests with mutated sources, from the objects of an ordinary build."""

import json
import pathlib
import shlex
import shutil
import subprocess
from concurrent.futures import ThreadPoolExecutor

import mutants
import rewriting

HEADER = pathlib.Path(__file__).resolve().parent / "Mutant.h"


class Build:
    """An ordinary build, and the folder where what is mutated of it goes."""

    def __init__(self, root, build, folder):
        self.root = root
        self.build = build
        self.folder = folder
        rows = json.loads((build / "compile_commands.json").read_text())
        self._commands = {row["file"]: row["command"] for row in rows}
        for name in ("sources", "objects", "archives", "bin"):
            (folder / name).mkdir(parents=True)
        (folder / "lib").symlink_to(build / "lib")

    def command(self, source):
        return self._commands[str(self.root / source)]

    def _words(self, source, mutated):
        """The compile command of a source for its mutated form, and the object it makes."""
        words = shlex.split(self.command(source))
        place = words.index("-o")
        made = words[place + 1]
        del words[place : place + 2]
        words.remove("-c")
        words[words.index(str(self.root / source))] = str(mutated)
        return [*words, "-w", "-Wno-narrowing", "-O0", "-g0", "-include", str(HEADER)], made

    def find(self, source):
        """The mutants of a source and the constexpr words in their way."""
        path = self.root / source
        finder = mutants.Finder(mutants.parse(path, self.command(source)), path, source)
        return finder.mutants, finder.constexpr_words

    def compile(self, source, found, words):
        """Compiles a source with its mutants; returns those that compile."""
        mutated = self.folder / "sources" / source.replace("/", "-")
        command, made = self._words(source, mutated)
        target = self.folder / "objects" / made.replace("/", "-")
        good = rewriting.compilable(
            (self.root / source).read_bytes(), found, words, mutated,
            [*command, "-c", "-o", str(target)], self.build,
        )  # fmt: skip
        return good, made, target

    def compile_all(self, sources, chosen, jobs):
        """Numbers the chosen mutants of all sources, compiles them and puts them into archives."""
        everything = []
        for source in sources:
            found, words = self.find(source)
            if mutants_left := chosen(found):
                everything.append((source, mutants_left, words))
        for number, each in enumerate((each for row in everything for each in row[1]), 1):
            each.number = number
        with ThreadPoolExecutor(jobs) as pool:
            done = list(pool.map(lambda row: self.compile(*row), everything))
        for _, made, target in done:
            self._into_archive(made, target)
        return [each for good, _, _ in done for each in good]

    def _into_archive(self, made, target):
        folder, _, rest = made.partition("CMakeFiles/")
        name, _, member = rest.partition(".dir/")
        archive = self._archive(f"{folder}lib{name}.a")
        if not archive.exists():
            shutil.copy(self.build / folder / f"lib{name}.a", archive)
        as_member = self.folder / pathlib.Path(member).name
        target.rename(as_member)
        subprocess.run(["ar", "r", archive, as_member], check=True)
        as_member.unlink()

    def _archive(self, name):
        return self.folder / "archives" / name.replace("/", "-")

    def link(self, target):
        """Links a program of the build with the mutated archives; its path."""
        asked = ["ninja", "-C", self.build, "-t", "commands", "-s", target]
        shown = subprocess.run(asked, check=True, capture_output=True, text=True).stdout
        command = shown.strip().splitlines()[-1].removeprefix(": && ").split(" && ")[0]
        # shlex keeps the backslash of "\$ORIGIN", which the shell removes.
        words = [word.replace("\\$", "$") for word in shlex.split(command)]
        program = self.folder / "bin" / pathlib.Path(target).name
        words[words.index("-o") + 1] = str(program)
        mutated = [self._archive(word) for word in words]
        words = [
            str(own) if word.endswith(".a") and own.exists() else word
            for word, own in zip(words, mutated)
        ]
        subprocess.run(words, check=True, cwd=self.build)
        return program
