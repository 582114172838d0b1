"""The faults that a scenario can meet, counted in runs without one."""

import dataclasses
import re

import scenes
import system_calls

KINDS = ("system", "allocation", "library")
# The status of a copy of a run that cannot tell what comes of its fault.
UNDECIDED = 99
# A run whose copies go through their faults takes its time.
LONGEST_WALK = 3600
NO_LIMITS = {"AK_TEST_CONNECT_MILLISECONDS": "36000000", "AK_TEST_STALL_SECONDS": "36000"}


@dataclasses.dataclass(frozen=True)
class Fault:
    """One call that fails, or all from one on."""

    kind: str
    call: str
    number: int
    for_good: bool
    error: str = ""
    harmless: bool = False
    may_be_silent: bool = False
    loading: bool = False

    def __str__(self):
        what = f"{self.call} {self.error}".strip()
        return f"{what}, call {self.number}{' and all later ones' if self.for_good else ''}"


def walk(kind, scene, clean, shim, share, begin):
    """Goes through the faults of a kind in one run, copies of which meet them.

    The run's own outcome, and pairs of a fault and the outcome of its copy.
    """
    path = scene.folder / "walk"
    outcome = scene.run(longest=LONGEST_WALK, variables={
        "LD_PRELOAD": shim, "AK_FAULT_WALK": str(path), "AK_FAULT_KIND": kind,
        "AK_FAULT_SHARE": f"{share} {begin}", **NO_LIMITS})  # fmt: skip
    return outcome, list(_copies(kind, outcome.files.pop("walk", b""), clean))


def _copies(kind, data, clean):
    begin = 0
    while begin < len(data):
        end = data.index(b"\n", begin)
        call, number, for_good, status, *lengths = data[begin:end].decode().split()
        out = end + 1 + int(lengths[0])
        begin = out + int(lengths[1])
        fault = Fault(kind, call, int(number), for_good == "1",
                      may_be_silent=_may_be_silent(call, for_good == "1", clean))  # fmt: skip
        yield fault, scenes.Outcome(int(status), data[end + 1 : out], data[out:begin])


def _may_be_silent(call, for_good, clean, error=""):
    """A write that fails may be the one to standard error, if there is one or once all fail.

    Nothing is said, either, when the reader of standard output has gone.
    """
    writes = call in ("write", "writev")
    return writes and (for_good or bool(clean.first.err) or error == "EPIPE")


def system_trace(scene):
    """The system calls of an undisturbed run in their order: name and first arguments."""
    trace = scene.folder / "trace"
    outcome = scene.run(before=["strace", "-f", "-qq", "-y", "-o", str(trace)])
    lines = outcome.files["trace"].decode("utf-8", "replace").splitlines()
    return [match.groups() for match in (re.match(r"\d+ +(\w+)\((.*)", line) for line in lines)
            if match]  # fmt: skip


def system_faults(scene, clean):
    """Every fault of a system call that the scenario can meet."""
    counts = {}
    loading = True
    for call, arguments in system_trace(scene):
        loading = loading and call != "munmap"  # the loader's last call
        if call in system_calls.CANNOT_FAIL:
            continue
        if call not in system_calls.ERRORS:
            raise LookupError(f"system_calls.py does not say how {call} fails")
        counts[call] = counts.get(call, 0) + 1
        to_log = call == "write" and "/logs/admin/" in arguments.split(",")[0]
        for error in system_calls.ERRORS[call]:
            yield Fault("system", call, counts[call], False, error, to_log,
                        _may_be_silent(call, False, clean, error), loading)  # fmt: skip
            if error not in system_calls.INTERRUPTIONS:
                yield Fault("system", call, counts[call], True, error, False,
                            _may_be_silent(call, True, clean), loading)  # fmt: skip


def run(scene, fault, shim):
    """Runs the scenario with the fault; in the outcome is whether it was met."""
    if fault.kind == "system":
        return _run_traced(scene, fault)
    mark = scene.folder / "mark"
    variables = {
        "LD_PRELOAD": shim, "AK_FAULT_CALL": fault.call, "AK_FAULT_AT": str(fault.number),
        "AK_FAULT_FOR_GOOD": "1" if fault.for_good else None, "AK_FAULT_MARK": str(mark),
    }  # fmt: skip
    outcome = scene.run(variables=variables)
    outcome.injected = outcome.files.pop("mark", None) is not None
    return outcome


def _run_traced(scene, fault):
    failure = system_calls.injection(fault.call, fault.error)
    when = f"{fault.number}{'+' if fault.for_good else ''}"
    trace = scene.folder / "trace"
    command = [
        "strace", "-f", "--seccomp-bpf", "-qq", "-o", str(trace), "-e", "signal=none",
        "-e", f"trace={fault.call}", "-e", f"inject={fault.call}:{failure}:when={when}",
    ]  # fmt: skip
    outcome = scene.run(before=command)
    outcome.injected = b"(INJECTED)" in outcome.files.pop("trace", b"")
    return outcome


