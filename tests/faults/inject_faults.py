#!/usr/bin/env python3
"""Lets every call of the tool fail, run by run, and checks what comes of it; see README.md."""

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
import scenes
import verdict

FOLDER = pathlib.Path(__file__).resolve().parent
BATCH = 100
# What a fault may take away without the run failing: the language, the zone, the input.
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
    parser.add_argument("--scenarios", default=FOLDER / "scenarios.toml", help=argparse.SUPPRESS)
    return parser.parse_args()


class Worker:
    """A process's host with the scene it was last asked for."""

    def __init__(self, options):
        self.options = options
        self.rows = scenes.load_scenarios(options.scenarios)
        self.host = scenes.Host(options.tool, options.devserver)
        self._place = None

    def scene(self, place):
        """The scene and the clean runs of a scenario."""
        if place != self._place:
            self._scene = scenes.Scene(self.host, *self.rows[place])
            self._clean = clean_runs(self._scene)
            self._place = place
        return self._scene, self._clean

    def system_faults(self, place, share):
        """Every Nth fault of the scenario, from another one on than in the next."""
        every = sorted(faults.system_faults(*self.scene(place)), key=lambda fault: fault.for_good)
        return every[place % share :: share]

    def walk(self, place, kind, share):
        """How many faults did no harm in a copy of the run; what was wrong; the other faults."""
        scene, clean = self.scene(place)
        outcome, copies = faults.walk(kind, scene, clean, self.options.shim, share, place % share)
        found = verdict.problems(outcome, clean, scene.token)
        wrong = [("the run whose copies met the faults", each) for each in found]
        if not copies or not clean.shows(outcome):
            wrong.append(("the run whose copies met the faults", repr(outcome.seen())))
        left = [fault for fault, copy in copies if not self._is_harmless(fault, copy)]
        return len(copies) - len(left), wrong, left

    def _is_harmless(self, fault, copy):
        """Whether a copy tells by itself that all is well: it failed, and said so."""
        if copy.status in (0, faults.UNDECIDED):
            return False
        return not verdict.problems(copy, self._clean, self._scene.token, fault)

    def inject(self, place, batch):
        """How many faults of the batch were met, and what was wrong: pairs of fault and problem."""
        scene, clean = self.scene(place)
        met, wrong = 0, []
        for fault in batch:
            outcome = faults.run(scene, fault, self.options.shim)
            met += outcome.injected
            found = verdict.problems(outcome, clean, scene.token, fault,
                                     "-apvmappings" in scene.case["args"],
                                     "LANGUAGE" in scene.case["environment"])  # fmt: skip
            wrong += [(str(fault), f"{each}: {outcome.err[-200:]!r}") for each in found]
        return met, wrong


def clean_runs(scene):
    """The undisturbed runs; they must be as the scenario says."""
    first = scene.run()
    expected = scene.case.get("status", 0), len(scene.case["replies"])
    if (first.status, len(first.requests)) != expected:
        raise RuntimeError(f"{scene.case['name']}: {first.seen()}")
    found = verdict.problems(first, verdict.Clean(first), scene.token)
    if found:
        raise RuntimeError(f"{scene.case['name']}: {found}")
    others = [scene.run(variables=variables) for variables in WITHOUT]
    return verdict.Clean(first, [*others, scene.run(stdin=b"")])


worker = None


def start_worker(options):
    global worker
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    worker = Worker(options)
    # multiprocessing ends its workers without atexit, but with this.
    multiprocessing.util.Finalize(worker, worker.host.close, exitpriority=10)


def first_step(task):
    """Of the system calls the faults, of the rest what is left after a walk."""
    place, kind, share = task
    if kind == "system":
        return place, kind, 0, [], worker.system_faults(place, share)
    return place, kind, *worker.walk(place, kind, share)


def second_step(task):
    place, kind, batch = task
    return place, kind, *worker.inject(place, batch)


def batches(place, kind, left):
    for begin in range(0, len(left), BATCH):
        yield place, kind, left[begin : begin + BATCH]


class Report:
    """Counts by scenario and kind, and the faults that the tool did not stand."""

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
        widths = max(map(len, self._names))
        print(f"{'':{widths}}", *(f"{kind:>10}" for kind in faults.KINDS))
        rows = [*enumerate(self._names), (None, "all")]
        for place, name in rows:
            counts = [
                sum(count for (where, what), count in self._met.items()
                    if what == kind and place in (where, None))
                for kind in faults.KINDS
            ]  # fmt: skip
            if any(counts):
                print(f"{name:{widths}}", *(f"{count:>10}" for count in counts))


def run_all(options):
    """Injects what was asked for; the report."""
    rows = scenes.load_scenarios(options.scenarios)
    names = [case["name"] for case, *_ in rows]
    places = [place for place, name in enumerate(names) if fnmatch.fnmatch(name, options.scenario)]
    kinds = options.kind or faults.KINDS
    tasks = [(place, kind, options.share) for kind in kinds for place in places]
    report = Report(names)
    with multiprocessing.Pool(options.jobs, start_worker, (options,)) as pool:
        left = []
        for place, kind, met, wrong, rest in pool.imap_unordered(first_step, tasks, 1):
            report.add(place, kind, met, wrong)
            left += batches(place, kind, rest)
        runs = sum(len(batch) for _, _, batch in left)
        print(f"{report.total()} faults in copies of runs, {runs} more in runs", flush=True)
        left.sort(key=lambda batch: batch[0])  # scene by scene
        for place, kind, met, wrong in pool.imap_unordered(second_step, left, 1):
            report.add(place, kind, met, wrong)
        pool.close()
        pool.join()
    return report


def main():
    options = arguments()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    began = time.monotonic()
    report = run_all(options)
    report.show()
    print(f"{report.total()} faults in {time.monotonic() - began:.0f} s, {report.wrong} problems")
    return 1 if report.wrong or not report.total() else 0


if __name__ == "__main__":
    sys.exit(main())
