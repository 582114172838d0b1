#!/usr/bin/python3
"""Changes the sources in one small way at a time and shows which changes no test finds."""

import argparse
import collections
import json
import os
import pathlib
import re
import signal
import sys
import tempfile
import time
import tomllib
from concurrent.futures import ThreadPoolExecutor

import groups
import programs
import trials

ROOT = pathlib.Path(__file__).resolve().parents[2]
ACCEPTED = pathlib.Path(__file__).resolve().parent / "survivors.toml"


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__)
    parser.add_argument("--file", action="append", metavar="F", help="only this source")
    parser.add_argument("--share", type=int, default=1, metavar="N", help="one mutant in N")
    parser.add_argument(
        "--cases", type=int, default=100, metavar="N",
        help="what so many whole runs do not find counts as found by none",
    )  # fmt: skip
    parser.add_argument("--again", action="store_true", help="only what no run has found yet")
    parser.add_argument("--list", action="store_true", help="show the mutants, run nothing")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()
    options.build = options.build.resolve()
    return options


class Trials:
    """The tests, and which mutants each of them comes by.

    Every test comes by the mutants in a file's tables, before it begins: for these count the tests
    that come by another mutant of the file, as nobody else sees its tables.
    """

    def __init__(self, tests, mutants, folder, jobs, most_cases=0):
        self._most_cases = most_cases
        self._folder = folder
        self._paths = {each.number: each.path for each in mutants}
        with ThreadPoolExecutor(jobs) as pool:
            noted = dict(zip(tests, pool.map(self._reach, tests)))
        linked = {each.program for each in tests if isinstance(each, trials.UnitTest)}
        idle = [self._reach(trials.UnitTest(each, "-*"))[0] for each in linked]
        self._in_tables = set().union(*idle)
        self._cost = {
            test: seconds * len(numbers - self._in_tables)
            for test, (numbers, seconds) in noted.items()
        }
        self._reaching = collections.defaultdict(set)
        for test, (numbers, _) in noted.items():
            for number in numbers - self._in_tables:
                self._reaching[number].add(test)
                self._reaching[self._paths[number]].add(test)

    def _reach(self, test):
        """The mutants that a test comes by with none in force, and its time; it has to pass."""
        with tempfile.NamedTemporaryFile(dir=self._folder) as notes:
            notes.truncate(max(self._paths, default=0) + 1)
            begin = time.monotonic()
            choice = {"AK_MUTANTS_REACHED": notes.name}
            if not test.passes(choice) and not test.passes(choice):  # a busy machine is no fault
                raise SystemExit(f"without a mutant this fails: {test}")
            seconds = time.monotonic() - begin
            numbers = {number for number, byte in enumerate(notes.read()) if byte}
            return numbers & self._paths.keys(), seconds

    def killer(self, mutant):
        """The first test that fails with the mutant; None when all pass that come by it."""
        choice = {"AK_MUTANT": str(mutant.number)}
        for test in self._in_order(mutant):
            # A whole run has a server and a clock beside it: it has to fail twice.
            if not test.passes(choice) and not (
                isinstance(test, trials.Case) and test.passes(choice)
            ):
                return test
        return None

    def reached(self, mutant):
        """The tests that come by a mutant."""
        in_table = mutant.number in self._in_tables
        return self._reaching[mutant.path if in_table else mutant.number]

    def _in_order(self, mutant):
        """The same to be tried in this order: units before whole runs, the likeliest first."""
        named = re.compile(rf"{pathlib.Path(mutant.path).stem}(Test)?\b")
        reaching = self.reached(mutant)
        units = [each for each in reaching if isinstance(each, trials.UnitTest)]
        units.sort(key=lambda test: (not named.match(test.name), self._cost[test]))
        # Of every file some: cases of one file resemble each other.
        ranks = collections.Counter()
        cases = []
        for case in sorted(reaching.difference(units), key=self._cost.get):
            ranks[case.file] += 1
            cases.append((ranks[case.file], self._cost[case], case))
        cases.sort(key=lambda row: row[:2])
        return units + [case for _, _, case in cases[: self._most_cases]]


def run(options, build, mutants):
    """The test that finds each mutant, or None."""
    linked = [build.link(name) for name in groups.UNIT_TESTS]
    build.link(groups.MODULE)  # the tool finds it beside itself
    tests = [test for program in linked for test in trials.unit_tests(program)]
    devserver = options.build / "bin/akdevserver"
    for tool, files in groups.CASES.items():
        certificates = build.folder / pathlib.Path(tool).name
        tests += trials.cases(build.link(tool), devserver, files, options.jobs, certificates)
    print(f"{len(mutants)} mutants, {len(tests)} tests", flush=True)
    begin = time.monotonic()
    all_trials = Trials(tests, mutants, build.folder, options.jobs, options.cases)
    print(f"all tests pass without a mutant, {time.monotonic() - begin:.0f} s", flush=True)
    with ThreadPoolExecutor(options.jobs) as pool:
        found = []
        for mutant, killer in zip(mutants, pool.map(all_trials.killer, mutants)):
            found.append((mutant, killer))
            if killer is None:
                why = "survived" if all_trials.reached(mutant) else "no test comes by"
                print(f"{why}: {mutant.path}:{mutant.line}: {mutant.change}", flush=True)
    return found


def report(found, whole):
    """Shows the figures and what is wrong with them; the number of faults."""
    rows = tomllib.loads(ACCEPTED.read_text()).get("survivor", [])
    accepted = {
        (row["file"], row["code"], row["change"], row.get("occurrence", 1)) for row in rows
    }
    survivors = {mutant.key for mutant, killer in found if killer is None}
    faults = [f"no test finds {each}" for each in sorted(survivors - accepted)]
    if whole:
        faults += [f"found by a test after all: {each}" for each in sorted(accepted - survivors)]
    counts = collections.Counter(groups.group_of(mutant.path) for mutant, _ in found)
    killed = collections.Counter(groups.group_of(mutant.path) for mutant, by in found if by)
    for name, count in counts.items():
        share = 100 * killed[name] / count
        print(f"{name:24} {count:5} mutants {killed[name]:5} found {share:6.1f} %")
        if whole and share < groups.LEAST_SHARE:
            faults.append(f"{name}: fewer than {groups.LEAST_SHARE} % are found")
    print("\n".join(faults) or "Every mutant that survived is listed with its reason.")
    return len(faults)


def remember(found, path):
    """Notes what was found, for --again."""
    known = json.loads(path.read_text()) if path.exists() else {}
    known |= {str(mutant.key): str(killer) for mutant, killer in found if killer}
    path.write_text(json.dumps(known, indent=1))


def main():
    options = arguments()
    sources = options.file or [path for paths in groups.GROUPS.values() for path in paths]
    notes = options.build / "mutants-found.json"
    known = json.loads(notes.read_text()) if options.again and notes.exists() else {}

    earlier = []

    def chosen(mutants):
        earlier.extend((each, known[str(each.key)]) for each in mutants if str(each.key) in known)
        return [each for each in mutants if str(each.key) not in known]

    trials.fence()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the folder goes
    begin = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="akhostmgmt_mutation_") as name:
        tempfile.tempdir = name  # what the runs leave behind goes with it
        build = programs.Build(ROOT, options.build, pathlib.Path(name))
        if options.list:
            for each in (each for source in sources for each in chosen(build.find(source)[0])):
                print(f"{each.path}:{each.line}: {each.change}")
            return 0
        mutants = build.compile_all(sources, chosen, options.jobs)
        found = earlier + run(options, build, mutants[:: options.share])
    remember(found, notes)
    faults = report(found, whole=not options.file and options.share == 1)
    spent = os.times()
    print(f"{time.monotonic() - begin:.0f} s, {sum(spent[:4]):.0f} s of processor time")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
