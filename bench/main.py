"""Measures the tool beside other programs that do the same; scripts/bench builds and calls this.

Exit status 0 when everything could be measured, also where an aim is missed; 1 when a run failed,
bytes differ or connections are more than they should be.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import signal
import subprocess
import sys

import figures
import works
from runner import Failure, Runner, say
from stage import Stage, random_address
from web_server import WebServer

HERE = os.path.dirname(os.path.abspath(__file__))
LOG_FOLDER = "/usr/zelvik/arkeon/logs/admin"
SIZES = [1_000, 10_000, 100_000, 1_000_000]


def words(text):
    return [word for word in text.split(",") if word]


def rounds(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("at least one round")
    return number


def numbers(text):
    return sorted(int(word.replace("_", "")) for word in words(text))


def arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/bench", description="Measures akhostmgmt beside programs that do the same.")
    parser.add_argument("--only", type=words, default=[], metavar="NAME[,NAME]",
                        help="works, by name or by the first words of it (list-1000, list)")
    parser.add_argument("--sizes", type=numbers, default=SIZES, metavar="N[,N]",
                        help="how many hosts are listed (1000,10000,100000,1000000)")
    parser.add_argument("--rounds", type=rounds, default=40, metavar="N",
                        help="rounds of short works and of listings up to 10,000 hosts (40)")
    parser.add_argument("--long-rounds", type=rounds, default=5, metavar="N",
                        help="rounds of longer listings (5)")
    parser.add_argument("--json", type=argparse.FileType("w"), metavar="FILE",
                        help="write all figures to FILE")
    parser.add_argument("--list", action="store_true", help="show the names of the works")
    parser.add_argument("--programs", help=argparse.SUPPRESS)
    options = parser.parse_args()  # fmt: skip
    for name in options.only:
        if not any(works.chosen(each, [name]) for each in names(options.sizes)):
            parser.error(f"--only: there is no work {name}; --list shows them")
    return options


def names(sizes):
    listed = [f"list-{size}-{form}" for size in sizes for form in works.FORMATS]
    return [name for name in works.plan([], []) if not name.startswith("list-")] + listed


def stop(number, _):
    sys.exit(128 + number)


def measured(options):
    """The rows of all chosen works."""
    rows = []
    with Stage(options.programs, random_address()) as stage, WebServer(stage) as server:
        bench = works.Bench(Runner(stage), server, options.rounds, options.long_rounds)
        for name, work in works.plan(options.sizes, options.only).items():
            say(name)
            rows += work(bench)
    return rows + works.growth_rows(rows, options.sizes)


def first_line(*command):
    """What a program says first, on either stream: its version."""
    run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                         env=os.environ | {"PATH": f"{os.environ['PATH']}:/usr/sbin"}, check=False)
    return "unknown" if run.returncode else run.stdout.split("\n")[0]  # fmt: skip


def about():
    """Where and when the figures come from."""
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
        print("\n".join(names(options.sizes)))
        return 0
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)
    if os.path.isdir(LOG_FOLDER):
        say(f"{LOG_FOLDER} is there: the tool's times include its debug log.")
    try:
        circumstances = about()
        rows = measured(options)
    except (Failure, OSError, subprocess.CalledProcessError) as failure:
        say(f"bench: {failure}")
        return 1
    print("".join(f"{name}: {value}\n" for name, value in circumstances.items()))
    print(figures.program_table(rows))
    print(figures.result_table(rows), end="")
    if options.json:
        text = json.dumps({"about": circumstances, "rows": figures.raw(rows)}, indent=1)
        options.json.write(text + "\n")
        options.json.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
