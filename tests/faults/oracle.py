"""The expected outcome of a run with a fault."""

import signal

# The one way to end by a signal: no primary server can be read from the master configuration.
ABORT_TEXTS = (
    b"check master configuration file",
    b"no master server record found",
    b"no master server name found",
)
LOGIC_ERROR = b"'std::logic_error'"
# What a shell sees of 7640 to 7644.
OWN_IDENTITY_UNKNOWN = range(216, 221)
OUT_OF_MEMORY = (
    b"Exit Status 20: There is not enough memory; check whether the change was made before trying"
    b" again.\n"
)
# The allocations of the static objects in arkeon/media_type.h.
BEFORE_MAIN = 3
WITHOUT_ARGUMENTS = 144, b"An invalid option was used.\n"


class Expected:
    """The outcomes of a scenario without a fault.

    A fault may cost the tool the user's language or time zone, or its input. The outcomes of
    `others`, which lack these, are as good as that of `first`: line by line, since a fault can hit
    a single message.
    """

    def __init__(self, scenario, first, others=()):
        self.first = first
        self.token = scenario.token.encode()
        # -apvmappings leaves it to the log that this host has no entry in the certificate file.
        self.may_lack_identity = "-apvmappings" in scenario.case["args"]
        self._runs = [first, *others]
        self._lines = [run.out.split(b"\n") for run in self._runs]

    def includes(self, outcome):
        """Whether the outcome is that of a run without a fault: streams, requests and status."""
        return any(
            outcome.status == run.status
            and outcome.err == run.err
            and outcome.requests == run.requests
            and self._has_lines_like(lines, outcome.out)
            for run, lines in zip(self._runs, self._lines)
        )

    def _has_lines_like(self, lines, out):
        found = out.split(b"\n")
        alike = [each for each in self._lines if len(each) == len(lines)]
        return len(found) == len(lines) and all(
            line in variants for line, *variants in zip(found, *alike)
        )


def problems(outcome, expected, fault=None):
    """What is wrong with the outcome of a run with a fault, as texts; empty if nothing is."""
    if outcome.timed_out:
        return ["still running: killed"]
    found = []
    if outcome.status < 0 and not _may_end_by_signal(outcome, fault):
        found.append(f"ended by {signal.Signals(-outcome.status).name}")
    if outcome.status == 0 and not expected.includes(outcome):
        found.append("status 0 although something is missing or different")
    if outcome.status > 0 and not outcome.err and not _may_be_silent(outcome, expected, fault):
        found.append(f"status {outcome.status} without a message on standard error")
    if fault and fault.harmless and outcome.visible() != expected.first.visible():
        found.append("the debug log's fault changed the run")
    if fault and fault.kind == "allocation" and outcome.status >= 0:
        found += _memory_problems(outcome, expected.first, fault)
    texts = {"standard output": outcome.out, "standard error": outcome.err, **outcome.files}
    found += [f"the token is in {name}" for name, text in texts.items() if expected.token in text]
    return found


def _may_end_by_signal(outcome, fault):
    nothing_done = not (outcome.out or outcome.requests or outcome.files)
    if outcome.status == -signal.SIGABRT:
        before_main = fault and fault.call == "operator_new" and fault.number <= BEFORE_MAIN
        no_server = any(text in outcome.err for text in ABORT_TEXTS) and LOGIC_ERROR in outcome.err
        return no_server or (before_main and nothing_done)
    # The dynamic loader does not check whether it got its first memory.
    return outcome.status == -signal.SIGSEGV and fault and fault.loading and nothing_done


def _may_be_silent(outcome, expected, fault):
    without_identity = expected.may_lack_identity and outcome.status in OWN_IDENTITY_UNKNOWN
    return without_identity or (fault and fault.may_be_silent)


def _memory_problems(outcome, first, fault):
    """A run that is out of memory reports it, or does not notice (a log line is left out).

    What it printed and sent until then is what the undisturbed run printed and sent first. Without
    memory for the copy of its arguments the run continues as if none had been given.
    """
    if outcome.visible() == first.visible():
        return []
    without_arguments = (outcome.status, outcome.err) == WITHOUT_ARGUMENTS
    if fault.call == "argument_copy" and without_arguments and not outcome.requests:
        return []
    if outcome.status != 20 or not outcome.err.endswith(OUT_OF_MEMORY):
        return ["out of memory is neither reported nor unnoticed"]
    parts = {
        "standard output": (outcome.out, first.out),
        "standard error": (outcome.err.removesuffix(OUT_OF_MEMORY), first.err),
        "the requests": (outcome.requests, first.requests),
    }
    return [f"{name}: not the beginning of the undisturbed run's"
            for name, (part, complete) in parts.items()
            if complete[: len(part)] != part]  # fmt: skip
