"""The ways in which a change can fail, as tables: see refused_changes_test.py."""

from dataclasses import dataclass

from host_model import HostModel, AuditRow
from tool_model import LOGIN_NEEDED, Failure, encoded, status_line

REASON = "moved to büro 7 – 100% sure"
LIMIT = "100000"
OWN_NAME, TAKEN_NAME, SHARED_NAME = "host000002", "host000003", "shared-name"


def host_id(number):
    return f"{number:08x}-0000-4000-8000-{number:012x}"


def host_name(number):
    return f"host{number:06d}"


@dataclass
class Change:
    """An operation that changes something: `options` beside the host, and the request it makes.

    `suffix` is the request's address behind the host ID; None when it is the collection.
    """

    options: list
    method: str
    suffix: str | None
    has_reason: bool = True

    def arguments(self, operation, host):
        reason = ["-reason", REASON] if self.has_reason else []
        return ["-" + operation, *host, *self.options, *reason]

    def target(self, number):
        """The address of the request for a host, as it is sent."""
        collection = "/arkeon/config/hosts/"
        return collection if self.suffix is None else collection + host_id(number) + self.suffix


NEW_MAPPING = "new näme 100%"
CHANGES = {
    "add": Change(
        ["-mappingname", NEW_MAPPING], "PUT", "/hostmappings/" + encoded(NEW_MAPPING)),
    "delete": Change(["-mappingname", NEW_MAPPING], "DELETE",
                     "/hostmappings/" + encoded(NEW_MAPPING)),
    "addcomment": Change(["-comment", "a comment"], "PUT", "/comment", False),
    "deletecomment": Change([], "PUT", "/comment", False),
    "allowautoreissuecert": Change(["-autoreissue", "1"], "PATCH", ""),
    "updatehost": Change(["-newhostname", "renamed"], "PATCH", ""),
    "addhost": Change([], "POST", None),
}  # fmt: skip
OF_A_HOST = [operation for operation in CHANGES if operation != "addhost"]


@dataclass
class Fault:
    """What a server does to a request, and what the tool makes of it.

    `status` and `code` are what the audit trail says; None when the change is made all the same.
    `seen` is the status with which the tool ends, 0 for a reply that it takes for a success.
    """

    action: str
    status: int | None
    code: int
    seen: int
    methods: tuple = ("PUT", "DELETE", "PATCH", "POST")


LARGE = 9223372036854775807
FAULTS = [
    Fault("status=503/8999", 503, 8999, 8999),
    Fault("status=400/8704", 400, 8704, 8704),
    Fault("status=404/8701", 404, 8701, 8701),
    Fault("status=403/8900", 403, 8900, 8900),
    Fault("status=401/117", 401, 117, 117),
    Fault("status=401/118", 401, 118, 118),
    Fault("status=500/0", 500, 0, 0),
    Fault(f"status=500/{LARGE}", 500, LARGE, 7610),
    Fault("status=500", 500, 0, 7610),
    Fault("status=202", 202, 0, 7610),
    Fault("status=204", 204, 0, 7610, ("PUT", "POST")),
    Fault("html,status=502", 502, 0, 7610),
    Fault("html", 200, 0, 0),
    Fault("redirect=https://127.0.0.1:1556/", 302, 0, 7610),
    Fault("endless", 200, 0, 7628),
    Fault("drop", 200, 0, 7625),
    Fault("status=503/8999,cut=5", 503, 8999, 7625),
    Fault("status=503/8999,cut=0", 503, 8999, 7625),
    Fault("status=503/8999,length=+9", 503, 8999, 7625),
    Fault("status=503/8999,drip=9/1", 503, 8999, 8999),
    Fault("status=503/8999,delay=50", 503, 8999, 8999),
    Fault("cut=9", None, 0, 7625, ("PUT", "POST")),
    Fault("cut=0", None, 0, 7625, ("PUT", "POST")),
    Fault("length=+9", None, 0, 7625, ("PUT", "POST")),
    Fault("delay=50", None, 0, 0),
    Fault("drip=9/1", None, 0, 0),
    Fault("hostile=utf8", None, 0, 0),
]
LOOKUP_FAULTS = [
    ("status=503/8999", 8999), ("status=400/8704", 8704), ("status=404/8701", 8701),
    ("status=401/117", 117), ("status=401/118", 118), ("status=500/0", 7610),
    (f"status=500/{LARGE}", 7610), ("status=500", 7610), ("status=204", 7610),
    ("html,status=502", 7610), ("html", 7610), ("redirect=https://127.0.0.1:1556/", 7610),
    ("endless", 7628), ("drop", 7625), ("cut=30", 7625), ("length=+9", 7625),
    ("hostile=utf8", 7610),
]  # fmt: skip


class FaultyHosts(HostModel):
    """Hosts behind a server that fails: at the look-up or at the change, with the failure given."""

    lookup_failure = None
    change_failure = None
    fault = None
    caller = "admin"

    def lookup(self, name):
        if self.lookup_failure:
            raise self.lookup_failure
        return super().lookup(name)

    def change(self, method, target, body, reason):
        if self.change_failure:
            raise self.change_failure
        if self.fault is None:
            return super().change(method, target, body, reason)
        if self.fault.status is None:
            status, _ = super().change(method, target, body, reason)
            return status, self.fault.seen
        row = AuditRow(
            self.caller, method, self.fault.status, self.fault.code, "/" + target, reason)
        self.audit.append(row)
        return self.fault.status, self.fault.seen


def connection_failure(code):
    """No connection: the look-up and the change fail alike."""
    return Failure(code), Failure(code)


def login_failure(code):
    """No login to send: the look-up only asks for one, the change also tells the status."""
    again = "" if code == 5930 else LOGIN_NEEDED
    change = Failure(code, stderr=LOGIN_NEEDED + again + status_line(code))
    return Failure(code, stderr=LOGIN_NEEDED), change


SLASHES = ["a/b", "a\\b", "/" * 1025]
NO_NUMBERS = ["2", "4294967295", "4294967296", "x", "1x", "0x1", "1 1", " "]
WRONG_VALUES = {
    "-host": [*SLASHES, "x" * 1025, "ä" * 513], "-mappingname": [*SLASHES, "x" * 1025],
    "-newhostname": [*SLASHES, "x" * 1025, b"\xff"], "-comment": ["x" * 2049, b"\xed\xa0\x80"],
    "-autoreissue": NO_NUMBERS, "-reason": [],
}  # fmt: skip


def wrong_arguments(operation):
    """Command lines of an operation with every kind of mistake, and requests for help."""
    by_name, by_id = ["-host", OWN_NAME], ["-hostid", host_id(2)]
    right = CHANGES[operation].arguments(operation, by_name)
    for index in range(1, len(right), 2):
        name, end = right[index], index + 2
        yield right[:index + 1] + right[end:]
        yield [*right, name.upper(), "again"]
        if name != "-reason":
            yield right[:index] + right[end:]
        for value in WRONG_VALUES[name]:
            yield [*right[:index + 1], value, *right[end:]]
    yield from (CHANGES[operation].arguments(operation, host) for host in (
        [*by_id, *by_name], [], ["-hostid", "a/b"], ["-hostid", "a\\b"]))  # fmt: skip
    yield [right[0], "value", *right[1:]]
    yield ["-list", *right]
    for more in (["stray"], ["-n", "again"], ["-unknown"], ["-isshared", "yes"], ["-json"],
                 ["-help"], ["-h"], ["-h", "now"]):  # fmt: skip
        yield [*right, *more]
    if operation in ("add", "delete"):
        yield [*right[:-1], "x" * 513]
    if operation == "addhost":
        yield ["-addhost", "-host", b"\xff"]
    if operation == "addcomment":
        for host in (by_id, by_name):
            yield from (["-addcomment", *host, "-comment", text] for text in ("", " ", "   "))


UNKNOWN_HOSTS = [
    ["-host", "nobody"], ["-host", "host000002x"], ["-host", "%"], ["-host", b"\xff"],
    ["-host", SHARED_NAME], ["-host", SHARED_NAME.upper()],
    ["-hostid", "nobody"], ["-hostid", host_id(10).upper()], ["-hostid", ".."],
    ["-hostid", "%zz"], ["-hostid", host_id(2) + "?x"], ["-hostid", "hostmappings"],
    ["-hostid", host_id(2) + " "], ["-hostid", "a\nb"], ["-hostid", "\x7f"], ["-hostid", "ä"],
]  # fmt: skip
LATER_REFUSALS = [
    ["-delete", "-host", OWN_NAME, "-mappingname", "nobody"],
    ["-delete", "-hostid", host_id(2), "-mappingname", TAKEN_NAME, "-reason", REASON],
    ["-delete", "-hostid", host_id(2), "-mappingname", "..."],
    ["-delete", "-hostid", "nobody", "-mappingname", OWN_NAME, "-reason", REASON],
    ["-add", "-host", OWN_NAME, "-mappingname", TAKEN_NAME, "-reason", REASON],
    ["-add", "-host", OWN_NAME, "-mappingname", TAKEN_NAME.upper(), "-isshared"],
    ["-add", "-host", OWN_NAME, "-mappingname", SHARED_NAME],
    ["-add", "-host", OWN_NAME, "-mappingname", "line\nfeed", "-reason", "a\nb"],
    ["-add", "-host", OWN_NAME, "-mappingname", b"\xff", "-reason", b"\xff"],
    ["-updatehost", "-host", OWN_NAME, "-newhostname", TAKEN_NAME, "-reason", REASON],
    ["-updatehost", "-host", OWN_NAME, "-newhostname", TAKEN_NAME.upper()],
    ["-updatehost", "-host", OWN_NAME, "-newhostname", "bell\a"],
    ["-updatehost", "-host", OWN_NAME, "-newhostname", "renamed", "-reason", "x" * 513],
    ["-allowautoreissuecert", "-host", OWN_NAME, "-autoreissue", "1", "-reason", "ä" * 257],
    ["-addhost", "-host", TAKEN_NAME, "-reason", REASON],
    ["-addhost", "-host", TAKEN_NAME.upper()],
    ["-addhost", "-host", TAKEN_NAME + "-backup"],
    ["-addhost", "-host", SHARED_NAME],
    ["-addhost", "-host", "tab\t"],
    ["-addhost", "-host", "new", "-reason", "x" * 513],
]  # fmt: skip
