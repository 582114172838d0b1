"""What the programs among the case files share: every operation with the request it is about."""

import case_files
from case_files import shell_status

LIST = "/arkeon/config/hosts/hostmappings"
LOOKUP = LIST + "?mappedhostname=h"
ASKED = case_files.shared_text("asked")
LOOKED_UP = '{"hosts":[{"uuid":"u"}]}'


class Operation:
    """A command line whose last request is the one that a case is about.

    `before` are the replies to the requests before that one, `asked` is what it prints before any.
    """

    def __init__(self, name, args, requests, before=(), asked=""):
        self.name = name
        self.args = args
        self.requests = requests
        self.before = list(before)
        self.asked = asked

    def case(self, name, reply, stdout="", **expected):
        """A case with this reply to the last request."""
        return {
            "name": f"{self.name}: {name}", "args": self.args, "requests": self.requests,
            "replies": [*self.before, reply], "stdout": [self.asked, stdout], **expected,
        }  # fmt: skip

    def with_first_reply(self, reply):
        return Operation(self.name, self.args, self.requests, [reply, *self.before[1:]], self.asked)

    def with_options(self, *options):
        name = " ".join([self.name, *options])
        return Operation(name, [*self.args, *options], self.requests, self.before, self.asked)


def _change(name, method, options, target, body=""):
    """An operation that looks a host up and then changes it."""
    change = {"method": method, "target": f"/arkeon/config/hosts/{target}", "body": body}
    return Operation(
        f"-{name}", [f"-{name}", "-host", "h", *options], [{"target": LOOKUP}, change],
        [{"json": LOOKED_UP}])  # fmt: skip


LISTING = Operation("-list", ["-list"], [{"target": LIST}])
FILTERED = Operation("-list -approved", ["-list", "-ap"], [{"target": LIST + "?isapproved=true"}])
ONE_HOST = Operation("-list -hostid", ["-list", "-i", "x"], [{"target": "/arkeon/config/hosts/x"}])
OWN = Operation("-list -apvmappings", ["-list", "-am"], [{
    "target": "/arkeon/config/hosts/{host_id}/hostmappings?isapproved=true",
    "headers": {"Authorization": False},
}])  # fmt: skip
ADD = _change("add", "PUT", ["-mappingname", "m"], "u/hostmappings/m", '{"isShared":false}')
DELETE = _change("delete", "DELETE", ["-mappingname", "m"], "u/hostmappings/m")
REISSUE = _change(
    "allowautoreissuecert", "PATCH", ["-autoreissue", "1"], "u", '{"autoReissue":true}'
)
CHANGES = [
    ADD, DELETE, REISSUE,
    _change("addcomment", "PUT", ["-comment", "c"], "u/comment", '{"comment":"c"}'),
    _change("deletecomment", "PUT", [], "u/comment", '{"comment":""}'),
    _change("updatehost", "PATCH", ["-newhostname", "n"], "u", '{"hostName":"n"}'),
]  # fmt: skip
LOOKUPS = [
    Operation(f"{each.name}, look-up", each.args, each.requests[:1]) for each in CHANGES
]  # fmt: skip
ADD_HOST = Operation("-addhost", ["-addhost", "-host", "h"], [{
    "method": "POST", "target": "/arkeon/config/hosts/", "body": '{"hostName":"h"}',
}], asked=ASKED)  # fmt: skip
# One for each kind of request.
REQUESTS = [LISTING, OWN, LOOKUPS[0], ADD, DELETE, REISSUE, ADD_HOST]


def failure(code):
    """What a run shows that ends with this status, which is not that of a login."""
    return {
        "stderr": f"Exit Status {code}: {{status:{code}}}\n", "status": shell_status(code),
        "log": [f"2 akhostmgmt: Return value is: {code}"],
    }  # fmt: skip


def binary(data):
    """Bytes as a text of a case; a str is taken as UTF-8."""
    return {"hex": (data.encode() if isinstance(data, str) else data).hex()}


def grouped(*groups):
    """A case file's content: the cases of all groups, which are functions."""
    return {"case": [
        case | {"name": f"{group.__name__}: {case['name']}"} for group in groups for case in group()
    ]}  # fmt: skip
