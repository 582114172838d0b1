"""Measures the tool beside other programs that do the same; scripts/bench builds and calls this.

The exit status is 0 if everything was measured, even if a target is missed. It is 1 if a run
failed, the outputs differ, or a program did not make the expected connections.
"""

import argparse
import dataclasses
import datetime
import json
import os
import pathlib
import platform
import re
import signal
import subprocess
import sys

import metrics
import workloads
from runner import Failure, Runner, say
from web_server import WebServer
from workspace import Workspace, random_address

HERE = os.path.dirname(os.path.abspath(__file__))
LOG_DIRECTORY = "/usr/zelvik/arkeon/logs/admin"
SIZES = [1_000, 10_000, 100_000, 1_000_000]


def names(text):
    return [name for name in text.split(",") if name]


def iterations(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("at least one iteration")
    return number


def sizes(text):
    return sorted(int(word.replace("_", "")) for word in names(text))


def arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/bench", description="Measures akhostmgmt beside programs that do the same.")
    parser.add_argument("--only", type=names, default=[], metavar="NAME[,NAME]",
                        help="workloads, by name or prefix (list-1000, list)")
    parser.add_argument("--sizes", type=sizes, default=SIZES, metavar="N[,N]",
                        help="numbers of listed hosts (1000,10000,100000,1000000)")
    parser.add_argument("--iterations", type=iterations, default=40, metavar="N",
                        help="iterations of each workload, except longer listings (40)")
    parser.add_argument("--long-iterations", type=iterations, default=5, metavar="N",
                        help="iterations of listings of more than 10,000 hosts (5)")
    parser.add_argument("--json", type=argparse.FileType("w"), metavar="FILE",
                        help="write all samples and results to FILE")
    parser.add_argument("--list", action="store_true", help="show the names of the workloads")
    parser.add_argument("--programs", help=argparse.SUPPRESS)
    options = parser.parse_args()  # fmt: skip
    for name in options.only:
        if not any(workloads.is_selected(each, [name]) for each in all_names(options.sizes)):
            parser.error(f"--only: there is no workload {name}; --list shows them")
    return options


def all_names(counts):
    listings = [f"list-{count}-{form}" for count in counts for form in workloads.FORMATS]
    return [*workloads.selected([], []), *listings]


def stop(number, _):
    sys.exit(128 + number)


def measure(options):
    """Returns the results of the selected workloads."""
    results = []
    with Workspace(options.programs, random_address()) as space, WebServer(space) as server:
        bench = workloads.Bench(
            Runner(space), server, options.iterations, options.long_iterations)  # fmt: skip
        for name, workload in workloads.selected(options.sizes, options.only).items():
            say(name)
            results += workload(bench)
    return results + workloads.growth_results(results, options.sizes)


def first_line(*command):
    """The first line that a program prints, on either stream."""
    run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                         env=os.environ | {"PATH": f"{os.environ['PATH']}:/usr/sbin"}, check=False)
    return "unknown" if run.returncode else run.stdout.split("\n")[0]  # fmt: skip


def about():
    """Where, when and with which programs the results were measured."""
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    return {
        "date": datetime.date.today().isoformat(),
        "commit": first_line("git", "-C", HERE, "describe", "--always", "--dirty"),
        "machine": f"{os.cpu_count()} x {cpu.group(1) if cpu else platform.machine()}",
        "memory": f"{memory:.1f} GiB",
        "kernel": platform.release(),
        "curl": " ".join(first_line("curl", "--version").split()[1::2][:2]),
        "jq": first_line("jq", "--version"),
        "nginx": first_line("nginx", "-v"),
        "git": first_line("git", "--version"),
    }


def main():
    options = arguments()
    if options.list:
        print("\n".join(all_names(options.sizes)))
        return 0
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)
    if os.path.isdir(LOG_DIRECTORY):
        say(f"{LOG_DIRECTORY} exists: the tool's times include its debug log.")
    try:
        circumstances = about()
        results = measure(options)
    except (Failure, OSError, subprocess.CalledProcessError) as failure:
        say(f"bench: {failure}")
        return 1
    print("".join(f"{name}: {value}\n" for name, value in circumstances.items()))
    print(metrics.table(results), end="")
    if options.json:
        results = [dataclasses.asdict(each) for each in results]
        text = json.dumps({"about": circumstances, "results": results}, indent=1)
        options.json.write(text + "\n")
        options.json.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
