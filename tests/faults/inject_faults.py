#!/usr/bin/env python3
"""Makes every call of the tool fail, run by run, and checks the outcome; see README.md."""

import argparse
import collections
import fnmatch
import multiprocessing
import os
import pathlib
import resource
import signal
import sys
import time

import faults
import oracle
import scenarios

CASES = pathlib.Path(__file__).resolve().with_name("scenarios.toml")
# What a fault may take away without the run failing: the language, the time zone.
WITHOUT = ({"LANGUAGE": None}, {"TZ": "UTC0"})


def arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, type=os.path.abspath)
    parser.add_argument("--devserver", required=True, type=os.path.abspath)
    parser.add_argument("--shim", required=True, type=os.path.abspath)
    parser.add_argument("--kind", choices=faults.KINDS, action="append", help="all by default")
    parser.add_argument("--scenario", default="*", help="only those whose name matches")
    parser.add_argument("--share", type=int, default=1, metavar="N", help="every Nth fault only")
    parser.add_argument("--jobs", type=int, default=2)
    return parser.parse_args()


def expected_outcomes(scenario):
    """Runs the scenario undisturbed; the outcome must be the one in its case."""
    first = scenario.run()
    stated = scenario.case.get("status", 0), len(scenario.case["replies"])
    found = oracle.problems(first, oracle.Expected(scenario, first))
    if (first.status, len(first.requests)) != stated or found:
        raise RuntimeError(f"{scenario.case['name']}: {found} {first.visible()}")
    others = [scenario.run(variables=variables) for variables in WITHOUT]
    return oracle.Expected(scenario, first, [*others, scenario.run(stdin=b"")])


def start_worker(options):
    global host
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    host = scenarios.Host(options.tool, options.devserver)
    # multiprocessing ends its workers without atexit, but with this.
    multiprocessing.util.Finalize(host, host.close, exitpriority=10)


def inject(task):
    """Injects every Nth fault of a kind into a scenario, from a different one on in each scenario.

    Returns the task's place and kind, how many faults were met, and pairs of fault and problem.
    """
    place, kind, row, options = task
    scenario = scenarios.Scenario(host, *row)
    expected = expected_outcomes(scenario)
    every = faults.every(kind, scenario, expected, options.shim)
    met, wrong = 0, []
    for fault in every[place % options.share :: options.share]:
        outcome = faults.run(scenario, fault, options.shim)
        met += outcome.injected
        found = oracle.problems(outcome, expected, fault)
        wrong += [(str(fault), f"{each}: {outcome.err[-200:]!r}") for each in found]
    return place, kind, met, wrong


class Report:
    """Counts by scenario and kind, and the faults whose outcome was not the expected one."""

    def __init__(self, names):
        self._names = names
        self._met = collections.Counter()
        self.wrong = 0

    def add(self, place, kind, met, wrong):
        self._met[place, kind] += met
        self.wrong += len(wrong)
        for fault, problem in wrong:
            print(f"FAILED {self._names[place]}: {fault}: {problem}", flush=True)

    def total(self):
        return self._met.total()

    def show(self):
        width = max(map(len, self._names))
        print(f"{'':{width}}", *(f"{kind:>10}" for kind in faults.KINDS))
        for place, name in [*enumerate(self._names), (None, "all")]:
            counts = [
                sum(count for (where, what), count in self._met.items()
                    if what == kind and place in (where, None))
                for kind in faults.KINDS
            ]  # fmt: skip
            if any(counts):
                print(f"{name:{width}}", *(f"{count:>10}" for count in counts))


def inject_all(options):
    """Injects the faults that the options select; returns the report."""
    rows = scenarios.load(CASES)
    names = [case["name"] for case, *_ in rows]
    tasks = [
        (place, kind, rows[place], options)
        for kind in options.kind or faults.KINDS
        for place, name in enumerate(names)
        if fnmatch.fnmatch(name, options.scenario)
    ]
    report = Report(names)
    with multiprocessing.Pool(options.jobs, start_worker, (options,)) as pool:
        for result in pool.imap_unordered(inject, tasks, 1):
            report.add(*result)
        pool.close()
        pool.join()
    return report


def main():
    options = arguments()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    began = time.monotonic()
    report = inject_all(options)
    report.show()
    print(f"{report.total()} faults in {time.monotonic() - began:.0f} s, {report.wrong} problems")
    return 1 if report.wrong or not report.total() else 0


if __name__ == "__main__":
    sys.exit(main())
