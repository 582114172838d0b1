#!/usr/bin/env python3
"""Thousands of random runs of the tool against development servers, each held against a model.

    random_changes_test.py --tool PATH --devserver PATH [--seed N] [--operations N] [--part N]

The operations are dealt out to parts, each with a server of its own. The same seed gives the same
operations; `--part N` runs that part alone.
"""

import concurrent.futures
import json
import os
import random
import re
import shlex
import sys
import time
import traceback
from datetime import datetime, timezone

import listing_model
import local_server
from case_files import shell_status
from host_model import HostModel, audit_table, differences, settle
from random_operations import RandomOperations
from tool_model import ToolModel, usages

PARTS = 4
INTERVAL = 100
RETURN_VALUE = re.compile(r"Return value is: (-?\d+)")
WHEN = "%Y-%m-%dT%H:%M:%S.%fZ"


class Mismatch(Exception):
    """The tool or the server did something else than the model."""


def now():
    return time.time_ns() // 1_000_000


def expect(what, expected, found):
    if expected != found:
        raise Mismatch(f"{what}:\n  expected {expected!r}\n  found    {found!r}")


class Part:
    """One server, the model of it, and the operations that both go through."""

    def __init__(self, number, seed, operations):
        self._number = number
        self._seed = seed
        self._operations = operations
        self._done = "the start"
        self._started = now()

    def run(self):
        """The names of the checks that passed, and what went wrong, if something did."""
        options = ["--hosts", "40"] if self._number % 2 else []
        server = local_server.Server(*options)
        passed = []
        try:
            self._prepare(server)
            for check in (self._change, self._compare, self._inspect_database):
                check(server)
                passed.append(check.__name__)
        except Mismatch as mismatch:
            return passed, f"{self._where()}\n{mismatch}"
        except Exception:
            return passed, f"{self._where()}\n{traceback.format_exc()}"
        finally:
            server.stop()
        return passed, None

    def _where(self):
        return f"seed {self._seed}, part {self._number}, {self._done}"

    def _prepare(self, server):
        server.logs.mkdir(parents=True)
        hosts = json.loads(server.listing("-json_compact"))["hosts"]
        self._hosts = HostModel(hosts, server.address)
        self._tool = ToolModel(self._hosts, usages(server.run))
        logins = json.loads((server.root / "config" / "arkeon" / "logins.json").read_text())
        self._token = logins["logins"][0]["token"]
        self._take_log(server)

    def _change(self, server):
        chance = random.Random(f"{self._seed} {self._number}")
        source = RandomOperations(chance, self._hosts, server.address)
        for number in range(1, self._operations + 1):
            arguments, stdin = source.next()
            words = (os.fsdecode(each) for each in arguments)
            self._done = f"operation {number}: akhostmgmt {shlex.join(words)} <<< {stdin!r}"
            self._done = os.fsencode(self._done).decode(errors="backslashreplace")
            self._perform(server, arguments, stdin)
            if number % INTERVAL == 0:
                self._compare(server)

    def _perform(self, server, arguments, stdin):
        before = now()
        run = server.run(*arguments, stdin=stdin)
        self._hosts.window = (before, now())
        known = len(self._hosts.hosts)
        outcome = self._tool.run(arguments, stdin)
        expect("exit status", shell_status(outcome.status), run.returncode)
        expect("standard error", outcome.stderr, run.stderr)
        if outcome.reply is None:
            expect("standard output", outcome.stdout, run.stdout)
        else:
            self._same(outcome.reply, json.loads(run.stdout))
        self._check_log(server, arguments, outcome)
        if len(self._hosts.hosts) > known:
            self._settle(server, self._hosts.hosts[known]["hostName"])

    @staticmethod
    def _same(expected, found):
        problems = list(differences(expected, found))
        if problems:
            raise Mismatch("\n".join(problems[:20]))

    def _settle(self, server, name):
        """Learns the ID of a new host, which the server chose."""
        reply = json.loads(server.listing("-host", name, "-json_compact"))["hosts"]
        hosts = self._hosts.lookup(name)
        self._same([self._hosts.record(host) for host in hosts], reply)
        for host, found in zip(hosts, reply):
            settle(host, found)
        self._take_log(server)

    @staticmethod
    def _take_log(server):
        """What the runs since the last call have logged."""
        lines = ""
        for log in sorted(server.logs.glob("*.log")):
            lines += log.read_text(errors="surrogateescape")
            log.unlink()
        return lines

    def _check_log(self, server, arguments, outcome):
        log = self._take_log(server)
        if self._token in log:
            raise Mismatch("the token is in the log")
        only_help = len(arguments) == 1 and arguments[0].lower() in (b"-help", b"-h")
        returned = [] if only_help else [str(outcome.status)]
        expect("return values in the log", returned, RETURN_VALUE.findall(log))

    def _compare(self, server):
        """Holds every host and the whole audit trail against the model."""
        hosts = json.loads(server.listing("-json_compact"))["hosts"]
        self._same(self._hosts.records(), hosts)
        for host, found in zip(self._hosts.hosts, hosts):
            settle(host, found)
        expect("short listing", listing_model.short_hosts(hosts), server.listing("-short"))
        expect("long listing", listing_model.long_hosts(hosts, True), server.listing())
        self._compare_audit_trail(server)
        self._take_log(server)

    def _compare_audit_trail(self, server):
        lines = server.printed_audit_trail().decode().splitlines()
        table = audit_table(self._hosts.audit)
        for expected, found in zip(table, (line[26:] for line in lines)):
            expect("row of the audit trail", expected, found)
        expect("rows of the audit trail", len(table), len(lines))
        whens = [datetime.strptime(line[:24], WHEN) for line in lines[1:]]
        times = [when.replace(tzinfo=timezone.utc).timestamp() * 1000 for when in whens]
        expect("times in order", sorted(times), times)
        if times and not self._started <= times[0] + 1 <= times[-1] + 1 <= now() + 2:
            raise Mismatch(f"the audit trail has impossible times: {times[0]} to {times[-1]}")

    @staticmethod
    def _inspect_database(server):
        expect("exit status of the server", 0, server.halt())
        with server.database() as database:
            expect("integrity", [("ok",)], database.execute("PRAGMA integrity_check").fetchall())
            expect("foreign keys", [], database.execute("PRAGMA foreign_key_check").fetchall())


def main():
    parser = local_server.argument_parser(__doc__.splitlines()[0])
    parser.add_argument("--seed", type=int, default=20261121)
    parser.add_argument("--operations", type=int, default=3200, help="in all parts together")
    parser.add_argument("--part", type=int, choices=range(1, PARTS + 1))
    parser.parse_args(namespace=local_server.PROGRAMS)
    options = local_server.PROGRAMS
    numbers = [options.part] if options.part else range(1, PARTS + 1)
    parts = [Part(number, options.seed, options.operations // PARTS) for number in numbers]
    passed = failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for number, (names, failure) in zip(numbers, pool.map(Part.run, parts)):
            print(f"part {number}: {', '.join(names)}", flush=True)
            passed += len(names)
            if failure:
                failed += 1
                print("FAILED:", failure, flush=True)
    return local_server.close(passed, failed)


if __name__ == "__main__":
    sys.exit(main())
