"""What the tool makes of a command line, written down a second time.

Arguments are bytes. `parse` gives a `Command` or raises `Usage`.
"""

import re
from dataclasses import dataclass, field

from host_model import MAX_COMMENT, MAX_NAME, MAX_REASON

SERVER, HOST_ID, HOST = ("server", "s"), ("hostid", "i"), ("host", "n")
REASON, HELP = ("reason", "r"), ("help", "h")
MAPPING, NEW_NAME, COMMENT = ("mappingname", "hm"), ("newhostname", "nh"), ("comment", "c")
REISSUE, SHARED = ("autoreissue", "ar"), ("isshared", "is")
SHORT, JSON, COMPACT = ("short", "l"), ("json", "j"), ("json_compact", "jc")
APPROVED, PENDING, CONFLICT = ("approved", "ap"), ("pending", "p"), ("conflict", "cf")
OWN = ("apvmappings", "am")
SWITCHES = {HELP, SHARED, SHORT, JSON, COMPACT, APPROVED, PENDING, CONFLICT, OWN}

# In the order in which they are recognised, with the options in the order of their checks.
OPERATIONS = {
    ("add", "a"): [SERVER, HOST_ID, HOST, MAPPING, SHARED, REASON, HELP],
    ("delete", "d"): [SERVER, HOST_ID, HOST, MAPPING, REASON, HELP],
    ("list", "li"): [
        SERVER, HOST_ID, HOST, SHORT, JSON, COMPACT, APPROVED, PENDING, CONFLICT, OWN, HELP],
    ("addcomment", "ac"): [SERVER, HOST_ID, HOST, COMMENT, HELP],
    ("deletecomment", "dc"): [SERVER, HOST_ID, HOST, COMMENT, HELP],
    ("allowautoreissuecert", "aa"): [SERVER, HOST_ID, HOST, REASON, REISSUE, HELP],
    ("addhost", "ah"): [SERVER, HOST, REASON, HELP],
    ("updatehost", "uh"): [SERVER, HOST_ID, HOST, NEW_NAME, REASON, HELP],
}  # fmt: skip

SLASHES = {
    "hostid": "Host ID must not contain slashes ('/' or '\\')",
    "host": "Host name must not contain slashes ('/' or '\\')",
    "newhostname": "Host name must not contain slashes ('/' or '\\')",
    "mappingname": "Mapping name must not contain slashes ('/' or '\\')",
}
TOO_LONG = "The value for the following parameter is too long."
ONE_OF = "Please select exactly one of these options:"
INVALID_OPTION = "An invalid option was used."
REQUIRED = "The following option is required and was not specified:"
MISSING_VALUE = "The value for this option was missing:"
NOT_A_NUMBER = (
    "The following option requires an unsigned integer value or the number entered was too large:"
)
INVALID_VALUE = "Invalid value supplied for option"
TEXT_BYTES = 1023


class Usage(Exception):
    """A mistake in the command line; `operation` is None when none was recognised.

    Without a text the user has asked for help.
    """

    def __init__(self, operation, text=None, detail=None):
        super().__init__(text, detail)
        self.operation = operation
        self.text = text
        if text is not None:
            detail = "" if detail is None else "\n" + detail
            self.text = (text + detail).encode(errors="surrogateescape")[:TEXT_BYTES]


@dataclass
class Command:
    """A command line that is in order: its operation's long name, and the options by any name."""

    operation: str
    options: dict = field(default_factory=dict)

    def given(self, option):
        return any(name in self.options for name in option)

    def value(self, option):
        """The value under the long name, if that is there, else under the alias; else empty."""
        return next((self.options[name] for name in option if name in self.options), b"")


def _shown(data):
    return data.decode(errors="surrogateescape")


def _folded(name):
    """Names compare without regard to the case of ASCII letters."""
    return _shown(name.lower())


def _split(arguments):
    """The options as typed with their values, by folded name."""
    options = {}
    rest = list(arguments)
    while rest:
        argument = rest.pop(0)
        if not argument.startswith(b"-"):
            raise Usage(None, "Missing option character on parameter.", _shown(argument))
        name = argument[1:]
        value = rest.pop(0) if rest and not rest[0].startswith(b"-") else b""
        if _folded(name) in options:
            raise Usage(None, "The following option was entered more than once:", _shown(name))
        options[_folded(name)] = (name, value)
    return options


def number(value):
    """The unsigned 32-bit number in a text; None when there is none."""
    match = re.fullmatch(rb"[ \t-\r]*\+?([0-9]+)[ \t-\r]*", value)
    return int(match[1]) if match and int(match[1]) < 2**32 else None


def parse(arguments):
    """The command of a command line; None for the top-level help."""
    typed = _split(arguments)
    if len(arguments) == 1 and typed.keys() & set(HELP):
        return None
    operation = next((each for each in OPERATIONS if typed.keys() & set(each)), None)
    if operation is None:
        raise Usage(None, INVALID_OPTION)
    _check_table(operation, typed)
    command = Command(operation[0], {name: value for name, (_, value) in typed.items()})
    if command.given(HELP):
        raise Usage(operation[0])
    _check_rules(command)
    return command


def _check_table(operation, typed):
    """The checks that every operation shares; takes the operation itself out of `typed`."""
    long_name = operation[0]
    if "help" in typed:
        raise Usage(long_name)
    _, value = typed.pop(next(name for name in operation if name in typed))
    if value:
        raise Usage(long_name, "There is no value associated with the command option")
    table = OPERATIONS[operation]
    for option in table:
        _check_presence(long_name, option, typed)
    for name in sorted(typed, key=lambda each: each.encode(errors="surrogateescape")):
        as_typed = _shown(typed[name][0])
        if not any(name in option for option in table):
            raise Usage(long_name, INVALID_OPTION, as_typed)
        if name in REISSUE and number(typed[name][1]) is None:
            raise Usage(long_name, NOT_A_NUMBER, as_typed)


def _check_presence(operation, option, typed):
    present = [name for name in option if name in typed]
    if not present:
        return
    has_value = bool(typed[present[0]][1])
    if option not in SWITCHES and not has_value:
        raise Usage(operation, MISSING_VALUE, present[0])
    if option in SWITCHES and has_value:
        text = "This option was given a value but does not use one."
        raise Usage(operation, text, present[0])
    if len(present) == 2:
        text = "Either parameter name or alias of the following option required:"
        raise Usage(operation, text, "\n".join(option))


def _check_rules(command):
    """The operation's own rules, in their order."""
    for rule in RULES[command.operation]:
        rule(command)


def _fail(command, text, detail=None):
    raise Usage(command.operation, text, detail)


def _one_host(command):
    if command.given(HOST_ID) and command.given(HOST):
        _fail(command, ONE_OF + "hostid host")
    if not command.given(HOST_ID) and not command.given(HOST):
        _fail(command, "Either hostid or host is required and was not specified")


def _needs(option):
    def rule(command):
        if not command.given(option):
            _fail(command, REQUIRED, option[0])

    return rule


def _no_comment(command):
    if command.given(COMMENT):
        _fail(command, INVALID_OPTION, COMMENT[0])


def _no_slashes(option):
    def rule(command):
        if re.search(rb"[/\\]", command.value(option)):
            _fail(command, SLASHES[option[0]])

    return rule


def _at_most(limit, option):
    def rule(command):
        if len(command.value(option)) > limit:
            _fail(command, TOO_LONG, option[0])

    return rule


def _zero_or_one(command):
    if number(command.value(REISSUE)) > 1:
        _fail(command, "The value for autoreissue parameter should be either 0 or 1.", "")


def _is_utf8(option):
    def rule(command):
        try:
            command.value(option).decode()
        except UnicodeDecodeError:
            _fail(command, INVALID_VALUE, option[0])

    return rule


def _list_rules(command):
    if command.given(HOST_ID) and command.given(HOST):
        _fail(command, ONE_OF + "hostid host")
    for one, other in ((SHORT, JSON), (SHORT, COMPACT), (JSON, COMPACT)):
        if command.given(one) and command.given(other):
            _fail(command, f"{ONE_OF}{one[0]} {other[0]}")
    for rule in (_no_slashes(HOST), _no_slashes(HOST_ID), _at_most(MAX_NAME, HOST)):
        rule(command)
    named = [option[0] for option in (HOST_ID, HOST, APPROVED, PENDING, CONFLICT)
             if command.given(option)]  # fmt: skip
    if len(named) + command.given(OWN) > 1:
        _fail(command, f"{ONE_OF} {''.join(name + ' ' for name in named)}")


_MAPPING_RULES = [
    _one_host, _needs(MAPPING), _no_slashes(HOST), _no_slashes(HOST_ID), _no_slashes(MAPPING),
    _at_most(MAX_NAME, HOST), _at_most(MAX_NAME, MAPPING), _at_most(MAX_REASON, REASON),
]  # fmt: skip
_COMMENT_RULES = [
    _no_slashes(HOST_ID), _no_slashes(HOST), _at_most(MAX_NAME, HOST), _at_most(MAX_COMMENT, COMMENT),
    _is_utf8(COMMENT),
]  # fmt: skip
RULES = {
    "add": _MAPPING_RULES,
    "delete": _MAPPING_RULES,
    "list": [_list_rules],
    "addcomment": [_one_host, _needs(COMMENT), *_COMMENT_RULES],
    "deletecomment": [_one_host, _no_comment, *_COMMENT_RULES],
    "allowautoreissuecert": [
        _one_host, _no_slashes(HOST_ID), _no_slashes(HOST), _at_most(MAX_NAME, HOST),
        _needs(REISSUE), _zero_or_one],
    "addhost": [_needs(HOST), _no_slashes(HOST), _at_most(MAX_NAME, HOST), _is_utf8(HOST)],
    "updatehost": [
        _one_host, _needs(NEW_NAME), _no_slashes(HOST), _no_slashes(HOST_ID),
        _no_slashes(NEW_NAME), _at_most(MAX_NAME, HOST), _at_most(MAX_NAME, NEW_NAME),
        _is_utf8(NEW_NAME)],
}  # fmt: skip
