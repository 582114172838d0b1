"""The faults that a scenario can meet, counted in runs without one."""

import dataclasses
import re

import system_calls

KINDS = ("system", "allocation", "library")
ALLOCATIONS = {"operator_new", "argument_copy"}


@dataclasses.dataclass(frozen=True)
class Fault:
    """One call that fails, or all calls from one on."""

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


def every(kind, scenario, expected, shim):
    """Every fault of a kind that the scenario can meet; those that occur once first."""
    found = (_system_faults(scenario, expected) if kind == "system"
             else _function_faults(kind, scenario, expected, shim))  # fmt: skip
    return sorted(found, key=lambda fault: fault.for_good)


def _may_be_silent(call, for_good, expected, error=""):
    """Whether the write that fails can be one to standard error.

    A reader of standard output that has gone gets no message either.
    """
    writes = call in ("write", "writev")
    return writes and (for_good or bool(expected.first.err) or error == "EPIPE")


def _function_faults(kind, scenario, expected, shim):
    counts = scenario.directory / "counts"
    outcome = scenario.run(variables={"LD_PRELOAD": shim, "AK_FAULT_COUNTS": str(counts)})
    if outcome.visible() != expected.first.visible():
        raise RuntimeError(f"{scenario.case['name']}, with {shim}: {outcome.visible()}")
    for line in outcome.files["counts"].decode().splitlines():
        call, count = line.split()
        if (call in ALLOCATIONS) != (kind == "allocation"):
            continue
        for number in range(1, int(count) + 1):
            for for_good in (False, True):
                yield Fault(kind, call, number, for_good,
                            may_be_silent=_may_be_silent(call, for_good, expected))  # fmt: skip


def _system_trace(scenario):
    """The system calls of an undisturbed run in their order: name and first arguments."""
    trace = scenario.directory / "trace"
    outcome = scenario.run(before=["strace", "-f", "-qq", "-y", "-o", str(trace)])
    lines = outcome.files["trace"].decode("utf-8", "replace").splitlines()
    return [match.groups() for match in (re.match(r"\d+ +(\w+)\((.*)", line) for line in lines)
            if match]  # fmt: skip


def _system_faults(scenario, expected):
    counts = {}
    loading = True
    for call, arguments in _system_trace(scenario):
        loading = loading and call != "munmap"  # the loader's last call
        if call in system_calls.CANNOT_FAIL:
            continue
        if call not in system_calls.ERRORS:
            raise LookupError(f"system_calls.py does not say how {call} fails")
        counts[call] = counts.get(call, 0) + 1
        to_log = call == "write" and "/logs/admin/" in arguments.split(",")[0]
        for error in system_calls.ERRORS[call]:
            yield Fault("system", call, counts[call], False, error, to_log,
                        _may_be_silent(call, False, expected, error), loading)  # fmt: skip
            if error not in system_calls.INTERRUPTIONS:
                yield Fault("system", call, counts[call], True, error, False,
                            _may_be_silent(call, True, expected), loading)  # fmt: skip


def run(scenario, fault, shim):
    """Runs the scenario with the fault; `injected` of the outcome is whether the run met it."""
    if fault.kind == "system":
        return _run_traced(scenario, fault)
    mark = scenario.directory / "mark"
    variables = {
        "LD_PRELOAD": shim, "AK_FAULT_CALL": fault.call, "AK_FAULT_AT": str(fault.number),
        "AK_FAULT_FOR_GOOD": "1" if fault.for_good else None, "AK_FAULT_MARK": str(mark),
    }  # fmt: skip
    outcome = scenario.run(variables=variables)
    outcome.injected = outcome.files.pop("mark", None) is not None
    return outcome


def _run_traced(scenario, fault):
    failure = system_calls.injection(fault.call, fault.error)
    when = f"{fault.number}{'+' if fault.for_good else ''}"
    trace = scenario.directory / "trace"
    command = [
        "strace", "-f", "--seccomp-bpf", "-qq", "-o", str(trace), "-e", "signal=none",
        "-e", f"trace={fault.call}", "-e", f"inject={fault.call}:{failure}:when={when}",
    ]  # fmt: skip
    outcome = scenario.run(before=command)
    outcome.injected = b"(INJECTED)" in outcome.files.pop("trace", b"")
    return outcome
