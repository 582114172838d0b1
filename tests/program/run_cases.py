#!/usr/bin/env python3
"""Runs the whole tool against a scripted HTTPS server, case by case; see README.md."""

import argparse
import concurrent.futures
import datetime
import difflib
import fnmatch
import os
import pathlib
import queue
import re
import resource
import secrets
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

import case_files
import marked_language
import sandbox
import scripted_server

HOST_ID = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0"
SERVER_KINDS = {"running", "none", "unnamed", "plain", "silent", "TLS 1.1", "TLS 1.2"}
REPLY_LINE = re.compile(r"2 arkeon: [A-Z]+ .*: HTTP status \d+, \d+ bytes, \d+ ms")
LOG_LINE = re.compile(r"\d{4}(?:-\d\d){2}T\d\d:\d\d:\d\d\.\d{3}[+-]\d{4} (\d+) (.*)", re.DOTALL)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", required=True, type=os.path.abspath)
    parser.add_argument("--devserver", required=True, help="makes the certificates")
    parser.add_argument("--make-certificates", help="the program that makes those of other kinds")
    parser.add_argument("--filter", default="*", help="only cases whose name matches")
    parser.add_argument("--jobs", type=int, default=4)
    parser.add_argument("--every", type=int, default=1, metavar="N", help="only every Nth case")
    parser.add_argument(
        "--marked", action="store_true", help="in a language whose every text is marked"
    )
    parser.add_argument("--list", action="store_true", help="show the names, run nothing")
    parser.add_argument(
        "--define", action="append", default=[], metavar="NAME=VALUE", help="a placeholder"
    )
    parser.add_argument("case_files", nargs="+", metavar="CASEFILE")
    return parser.parse_args()


class Stage:
    """What all cases share: certificates, and addresses that one case at a time may use."""

    def __init__(self, options, folder):
        self.tool = options.tool
        self.folder = folder
        self.language = language_of(options)
        self.language_files = self.language.files(folder)
        self.defined = dict(each.split("=", 1) for each in options.define)
        addresses = [scripted_server.random_address() for _ in range(4 * options.jobs)]
        self.certificates = sandbox.Certificates(options.devserver, folder / "ours", addresses)
        self.stranger = sandbox.Certificates(options.devserver, folder / "strangers", addresses)
        self._make_others(options.make_certificates, addresses)
        self._copying = threading.Lock()
        self._free = queue.SimpleQueue()
        for address in addresses:
            self._free.put(address)

    def _make_others(self, program, addresses):
        """Certificates that no client should trust, by their kind."""
        self._others = self.folder / "others"
        self._others.mkdir()
        if program:
            authority = self.folder / "ours" / "ca"
            subprocess.run([program, authority, self._others, *addresses], check=True)

    def tool_for(self, case):
        """The tool; for another user a copy, with its module, that everybody can reach."""
        if not case.get("unprivileged") or os.geteuid() != 0:
            return self.tool
        with self._copying:
            copy = self.folder / "tool"
            if not copy.exists():
                self.folder.chmod(0o711)
                shutil.copy(pathlib.Path(self.tool).parent / "libarkeon-https.so", self.folder)
                shutil.copy(self.tool, copy)
        return copy

    def listener(self, kind):
        """An address and a socket that listens there; the socket is None for "none"."""
        while True:
            named = kind != "unnamed"
            address = self._free.get_nowait() if named else scripted_server.random_address()
            try:
                listener = scripted_server.listen(address)
            except OSError:
                continue  # another program is there: leave the address to it
            if kind == "none":
                listener.close()
            return address, None if kind == "none" else listener

    def give_back(self, address, kind):
        if kind != "unnamed":
            self._free.put(address)

    def bystander(self):
        """A server that nobody should turn to, with its `address`."""
        address, listener = self.listener("unnamed")
        bystander = scripted_server.Bystander(listener)
        bystander.address = address
        return bystander

    def server(self, case, listener, texts, known):
        kind = case["server"]
        replies = [
            scripted_server.Reply(
                case_files.reply_bytes(reply, texts, known), reply.get("then", "keep"),
                case_files.reply_endless(reply, texts, known), reply.get("drip"),
            )  # fmt: skip
            for reply in case["replies"]
        ]
        context = None
        if kind != "plain":
            tls = kind.removeprefix("TLS ") if kind.startswith("TLS ") else None
            ours = self.certificates
            server, key = ours.server, ours.server_key
            if kind not in SERVER_KINDS:
                server, key = self._others / f"{kind}.pem", self._others / f"{kind}.key"
            context = scripted_server.server_context(server, key, ours.authority, tls)
        return scripted_server.ScriptedServer(listener, context, replies, case.get("hello"))


def run_case(stage, case, texts, standard_files):
    """Runs one case; the list of its differences, empty when it passed."""
    kind = case["server"]
    address, listener = stage.listener(kind)
    try:
        with tempfile.TemporaryDirectory(dir=stage.folder) as name:
            folder = pathlib.Path(name)
            token = secrets.token_hex(16)
            known = {"server": address, "token": token, "host_id": HOST_ID, "folder": name}
            known["today"] = datetime.datetime.now(datetime.UTC).strftime("%Y%m%d")
            known |= stage.defined
            bystander = stage.bystander() if case.get("bystander") else None
            known["bystander"] = bystander.address if bystander else ""
            box = sandbox.Sandbox(folder, known, stage.certificates, stage.stranger)
            case = stage.language.expected(case, texts, known)
            box.make_files(standard_files + stage.language_files + case["files"], texts)
            box.note_files()
            if case.get("unprivileged") and os.geteuid() == 0:
                box.give_to(sandbox.NOBODY)
            serves = listener and kind != "silent"  # a silent listener leaves clients waiting
            server = stage.server(case, listener, texts, known) if serves else None
            try:
                run = start(stage, case, texts, known, folder, server)
            finally:
                if server:
                    server.stop()
                elif listener:
                    listener.close()
                if bystander:
                    bystander.stop()
            verdict = Verdict(case, texts, known, stage.language)
            return verdict.differences(run, server, box, bystander)
    finally:
        stage.give_back(address, kind)


def start(stage, case, texts, known, folder, server):
    environment = {"PATH": os.environ["PATH"]}
    for variable, value in case["environment"].items():
        if value is not False:
            environment[variable] = texts.string(value, known)
    arguments = [texts.bytes(each, known) for each in case["args"]]
    stdin = texts.bytes(case["stdin"], known)
    return sandbox.Run(
        stage.tool_for(case), case, arguments, stdin, environment, folder, server,
        lambda printed: stage.language.plain("stdout", printed)[0],
    )  # fmt: skip


class Verdict:
    """Compares what a run did with what its case expects."""

    def __init__(self, case, texts, known, language):
        self._case = case
        self._texts = texts
        self._known = known
        self._language = language
        self._found = []

    def differences(self, run, server, box, bystander):
        self._status(run)
        stdout = self._english("stdout", run.out.data)
        self._same_bytes("stdout", self._bytes(self._case["stdout"]), stdout)
        self._standard_error(self._english("stderr", run.err.data))
        if server:
            self._requests(server)
        if bystander:
            self._same("connections to the bystander", 0, bystander.connections)
        log = self._log_texts(box.log_lines(), run.pid)
        self._log(log)
        self._found += [f"the run has made {path}" for path in box.new_files()]
        self._same_bytes("seen", self._bytes(self._case.get("seen", "")), run.seen)
        self._secret(run, box)
        return self._found

    def _english(self, what, found):
        text, problems = self._language.plain(what, found)
        self._found += problems
        return text

    def _secret(self, run, box):
        """The token is in no output and in no file but the user's logins."""
        secret = self._known["token"].encode()
        logins = {os.path.realpath(path) for path in box.folder.rglob("logins.json")}
        places = {"stdout": run.out.data, "stderr": run.err.data}
        for path in box.folder.rglob("*"):
            is_file = path.is_file() and not path.is_symlink() and os.access(path, os.R_OK)
            if is_file and str(path) not in logins:
                with path.open("rb") as file:
                    places[path] = file.read(64 << 20)
        self._found += [f"the token is in {name}" for name, text in places.items() if secret in text]

    def _bytes(self, value):
        return self._texts.bytes(value, self._known)

    def _string(self, value):
        return self._texts.string(value, self._known)

    def _same(self, what, expected, found):
        if expected != found:
            self._found.append(f"{what}: expected {expected!r}, found {found!r}")

    def _same_bytes(self, what, expected, found):
        if expected != found:
            lines = difflib.ndiff(*([repr(line) for line in text.splitlines(True)]
                                    for text in (expected, found)))  # fmt: skip
            self._found.append("\n    ".join([f"{what}:", *list(lines)[:200]]))

    def _status(self, run):
        self._found += run.problems
        if run.status < 0:
            self._same("signal", self._case.get("signal"), signal.Signals(-run.status).name)
        else:
            self._same("signal", self._case.get("signal"), None)
            self._same("status", self._case.get("status", 0), run.status)

    def _standard_error(self, found):
        if "stderr_begins" in self._case:
            expected = self._bytes(self._case["stderr_begins"])
            self._same_bytes("start of stderr", expected, found[: len(expected)])
        else:
            self._same_bytes("stderr", self._bytes(self._case["stderr"]), found)

    def _requests(self, server):
        expected = self._case["requests"]
        self._same("connections", self._case.get("connections", min(len(expected), 1)),
                   server.connections)  # fmt: skip
        self._found += server.problems
        if server.unused:
            self._found.append(f"{len(server.unused)} replies were not used")
        if len(expected) != len(server.requests):
            lines = [request.line for request in server.requests]
            self._found.append(f"{len(expected)} requests expected, found {lines}")
        for number, (wanted, request) in enumerate(zip(expected, server.requests), 1):
            target = self._bytes(wanted["target"]).decode("utf-8", "surrogateescape")
            line = f"{wanted['method']} {target} HTTP/1.1"
            self._same(f"request {number}", line, request.line)
            self._headers(number, wanted["headers"], request.header_values())
            self._same_bytes(f"body of request {number}", self._bytes(wanted["body"]), request.body)

    def _headers(self, number, wanted, found):
        for name in sorted({*map(str.lower, wanted), *found}):
            values = [value for key, value in wanted.items() if key.lower() == name]
            value = values[0] if values else False
            if value == "*" and name in found:
                continue
            expected = None if value is False else self._string(value)
            self._same(f"header {name} of request {number}", expected, found.get(name))

    def _log_texts(self, lines, pid):
        texts = []
        for line in lines:
            match = LOG_LINE.fullmatch(line)
            if not match or int(match[1]) != pid:
                self._found.append(f"log: no line of process {pid}: {line!r}")
            text = match[2] if match else line
            texts.append(self._english("log", text.encode()).decode())
        return texts

    def _log(self, found):
        if "log_is" in self._case:
            expected = [self._string(each) for each in self._case["log_is"]]
            untimed = [line for line in found if not REPLY_LINE.fullmatch(line)]
            self._same_bytes("log", "\n".join(expected).encode(), "\n".join(untimed).encode())
        rest = iter(found)
        for entry in map(self._string, self._case.get("log", [])):
            start = entry.removesuffix("...") if entry.endswith("...") else None
            if not any(line == entry or start and line.startswith(start) for line in rest):
                shown = "".join(f"\n    {line}" for line in found)
                self._found.append(f"log: missing, or not in this order: {entry}{shown}")
                break
        for text in map(self._string, self._case.get("log_absent", [])):
            self._found += [f"log: has {text!r}: {line}" for line in found if text in line]


def language_of(options):
    return marked_language.Marked() if options.marked else marked_language.English()


def chosen_cases(options):
    chosen = []
    language = language_of(options)
    for path in options.case_files:
        cases, texts, standard_files = case_files.load(path)
        label = pathlib.Path(path).stem
        for case in cases:
            if fnmatch.fnmatch(case["name"], options.filter) and language.speaks(case):
                chosen.append((f"{label}: {case['name']}", case, texts, standard_files))
    return chosen[:: options.every]


def run_all(options, chosen):
    """Runs the cases side by side and shows the failures; their number."""
    failed = 0
    with tempfile.TemporaryDirectory(prefix="akhostmgmt_cases_") as name:
        stage = Stage(options, pathlib.Path(name))
        pool = concurrent.futures.ThreadPoolExecutor(options.jobs)
        try:
            runs = {label: pool.submit(run_case, stage, *rest) for label, *rest in chosen}
            for label, run in runs.items():
                problems = [repr(run.exception())] if run.exception() else run.result()
                failed += bool(problems)
                if problems:
                    print("\n  ".join([f"FAILED {label}", *problems]), flush=True)
        finally:
            pool.shutdown(cancel_futures=True)  # the cases that run end before their folders go
    return failed


def main():
    signal.signal(signal.SIGQUIT, signal.SIG_DFL)  # ignored in background jobs
    options = arguments()
    chosen = chosen_cases(options)
    if options.list:
        print("\n".join(label for label, *_ in chosen))
        return 0
    _, most = resource.getrlimit(resource.RLIMIT_CORE)
    resource.setrlimit(resource.RLIMIT_CORE, (0, most))  # the aborted runs that are expected
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the folder goes
    failed = run_all(options, chosen)
    print(f"{len(chosen) - failed} passed, {failed} failed")
    return 1 if failed or not chosen else 0


if __name__ == "__main__":
    sys.exit(main())
