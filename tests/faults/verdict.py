"""What a run with a fault must not do."""

import signal

# The one way to end by a signal: without a readable master configuration there is nobody to ask.
ABORT_TEXTS = (
    b"check master configuration file",
    b"no master server record found",
    b"no master server name found",
)
LOGIC_ERROR = b"'std::logic_error'"
# What a shell sees of 7640 to 7644.
OWN_IDENTITY_UNKNOWN = range(216, 221)


class Clean:
    """The runs of a scenario without a fault, the first one as it stands.

    A fault may leave the tool without the user's language or time zone, or without its input. What
    `others` show then is as good: their texts line by line, since a fault can hit one text alone.
    """

    def __init__(self, first, others=()):
        self.first = first
        self.runs = [first, *others]
        self._lines = [run.out.split(b"\n") for run in self.runs]

    def shows(self, outcome):
        """Whether the outcome is a whole success: streams, requests and status."""
        return any(
            outcome.status == run.status
            and outcome.err == run.err
            and outcome.requests == run.requests
            and self._has_lines_like(lines, outcome.out)
            for run, lines in zip(self.runs, self._lines)
        )

    def _has_lines_like(self, lines, out):
        found = out.split(b"\n")
        alike = [each for each in self._lines if len(each) == len(lines)]
        return len(found) == len(lines) and all(
            line in variants for line, *variants in zip(found, *alike)
        )


def may_end_by_signal(outcome, clean, fault, translated):
    aborted = any(text in outcome.err for text in ABORT_TEXTS) and LOGIC_ERROR in outcome.err
    if outcome.status == -signal.SIGABRT and aborted:
        return True
    if not fault or outcome.status != -signal.SIGSEGV or outcome.out:
        return False
    # The system's loader does not look whether it got its first memory. gettext does not when it
    # opens the character set of a catalogue, which the tool has it do first of all.
    opening = translated and fault.call == "allocation"
    return (opening or fault.loading) and not outcome.requests


def is_silent(outcome, own_mappings):
    """Whether a failure was not shown. -apvmappings leaves it to the log that there is no row."""
    return not outcome.err and not (own_mappings and outcome.status in OWN_IDENTITY_UNKNOWN)


def problems(outcome, clean, token, fault=None, own_mappings=False, translated=False):
    """What is wrong with the outcome of a run with a fault, as texts; none when all is well."""
    found = []
    if outcome.timed_out:
        return ["still running: killed"]
    if outcome.status < 0 and not may_end_by_signal(outcome, clean, fault, translated):
        found.append(f"ended by {signal.Signals(-outcome.status).name}")
    if outcome.status == 0 and not clean.shows(outcome):
        found.append("status 0 although something is missing or different")
    may_be_silent = fault and fault.may_be_silent
    if outcome.status > 0 and not may_be_silent and is_silent(outcome, own_mappings):
        found.append(f"status {outcome.status} without a word on standard error")
    if fault and fault.harmless and outcome.seen() != clean.first.seen():
        found.append("the debug log's fault changed the run")
    texts = {"standard output": outcome.out, "standard error": outcome.err, **outcome.files}
    found += [f"the token is in {name}" for name, text in texts.items() if token.encode() in text]
    return found
