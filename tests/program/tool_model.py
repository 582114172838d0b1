"""What a run of the tool prints and returns, modelled on a `HostModel` in the server's place."""

import re
import urllib.parse
from dataclasses import dataclass

import case_files
import command_line_model as line
import listing_model
from case_files import shell_status
from host_model import COLLECTION, Refused, text

OWN_HOST_ID = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0"
NOT_SENDABLE = re.compile("[\0-\x20\x7f]|[/#](?:\\.|%2e){1,2}(?:[/?#]|$)", re.IGNORECASE)

PROMPT_AGAIN = "Please type 'y' for yes or 'n' for no: "
REISSUE_TEXTS = [
    ("This option resets the auto reissue certificate parameter. You will require a reissue token "
     "to deploy a certificate on the host.",
     "The auto reissue certificate parameter is disabled for {}."),
    ("This option lets you reissue certificate on the host without requiring a reissue token. By "
     "default, the option is disabled after 48 hours.",
     "The auto reissue certificate parameter is enabled for {}."),
]  # fmt: skip
AMBIGUOUS = "The host name that was provided must be associated with a single host ID."
NO_SUCH_MAPPING = "The mapping name that was provided does not exist."
NO_MAPPINGS = "Mappings for the specified host do not exist."
NOTHING_FOUND = "Mappings for the specified option do not exist.\n"
LOGIN_NEEDED = "Authorization failed. A web login is required. Run the 'akauth -login -loginType \
WEB|APIKEY' command to login.\n"


def status_line(code, sentence=None):
    sentence = sentence or case_files.status_text(code)
    return f"Exit Status {code}: {sentence}\n"


@dataclass
class Outcome:
    """What comes of a run. `reply` stands for a standard output that is this value as JSON."""

    status: int = 0
    stdout: bytes = b""
    stderr: bytes = b""
    reply: object = None


class Failure(Exception):
    """Ends a run with a status and its line on standard error, or the whole of what stands there.

    A login that is refused is asked for before.
    """

    def __init__(self, status, sentence=None, stderr=None):
        super().__init__(status)
        self.status = status
        login = LOGIN_NEEDED if status in (117, 118) else ""
        self.stderr = login + status_line(status, sentence) if stderr is None else stderr


class ToolModel:
    """`known_usages` is what `usages` gives."""

    def __init__(self, hosts, known_usages):
        self.hosts = hosts
        self._usages = known_usages
        self._printed = ""

    def run(self, arguments, stdin=b""):
        """The outcome of a run, after which the model of the hosts has changed as it should."""
        self._printed = ""
        try:
            command = line.parse(arguments)
            if command is None:
                return Outcome(stdout=self._usages[None])
            outcome = self._perform(command, stdin)
        except line.Usage as usage:
            return self._usage(usage)
        except Failure as failure:
            outcome = Outcome(failure.status, stderr=failure.stderr.encode())
        outcome.stdout = outcome.stdout or self._printed.encode(errors="surrogateescape")
        return outcome

    def _usage(self, usage):
        printed = self._usages[usage.operation]
        if usage.text is None:
            return Outcome(stdout=printed)
        return Outcome(144, printed, usage.text + b"\n")

    def _perform(self, command, stdin):
        if command.operation == "list":
            return self._list(command)
        if command.operation == "addhost":
            if not self._confirmed(stdin):
                return Outcome()
            host_id = None
        else:
            host_id = self._host_id(command)
        changes = {
            "add": self._add, "delete": self._delete, "addcomment": self._comment,
            "deletecomment": self._comment, "allowautoreissuecert": self._reissue,
            "addhost": self._add_host, "updatehost": self._update_host,
        }  # fmt: skip
        changes[command.operation](command, host_id)
        return Outcome()

    def _print(self, sentence):
        self._printed += sentence + "\n"

    def _host_id(self, command):
        if command.given(line.HOST_ID):
            return text(command.value(line.HOST_ID))
        found = self.hosts.lookup(text(command.value(line.HOST)))
        if not found:
            raise Failure(8701)
        if len(found) > 1:
            raise Failure(8900, AMBIGUOUS)
        return found[0]["uuid"]

    def _send(self, command, method, suffix, body=None):
        """The HTTP status of a request that succeeds."""
        target = f"{COLLECTION}/{suffix}"
        if NOT_SENDABLE.search(target):
            raise Failure(7627)
        reason = text(command.value(line.REASON))
        status, code = self.hosts.change(method, target, body, reason)
        if code == 0:
            return status
        if method == "DELETE" and code == 8701:
            raise Failure(8901, NO_SUCH_MAPPING)
        raise Failure(code)

    def _add(self, command, host_id):
        name = command.value(line.MAPPING)
        resource = f"{host_id}/hostmappings/{encoded(name)}"
        status = self._send(command, "PUT", resource, {"isShared": command.given(line.SHARED)})
        self._print({
            201: f"{text(name)} is successfully mapped to {host_id}.",
            200: f"{text(name)} is successfully updated.",
        }.get(status, ""))  # fmt: skip

    def _delete(self, command, host_id):
        name = command.value(line.MAPPING)
        self._send(command, "DELETE", f"{host_id}/hostmappings/{encoded(name)}")
        self._print(f"Mapping between {text(name)} and {host_id} is removed.")

    def _comment(self, command, host_id):
        comment = text(command.value(line.COMMENT))
        adds = command.operation == "addcomment"
        if adds and not comment.strip(" "):
            raise line.Usage(command.operation, line.MISSING_VALUE, "comment")
        status = self._send(command, "PUT", f"{host_id}/comment", {"comment": comment})
        done = "added" if adds else "removed"
        self._print(f"Comment for {host_id} is successfully {done}." if status == 200 else "")

    def _reissue(self, command, host_id):
        allowed = line.number(command.value(line.REISSUE)) == 1
        status = self._send(command, "PATCH", host_id, {"autoReissue": allowed})
        explanation, result = REISSUE_TEXTS[allowed] if status in (200, 204) else ("", "")
        self._print(explanation)
        self._print(result.format(host_id))

    def _update_host(self, command, host_id):
        name = text(command.value(line.NEW_NAME))
        status = self._send(command, "PATCH", host_id, {"hostName": name})
        done = f"The primary host name is updated for {host_id}"
        self._print(done if status in (200, 204) else "")

    def _add_host(self, command, _):
        name = text(command.value(line.HOST))
        status = self._send(command, "POST", "", {"hostName": name})
        done = f"The host {name} is added in the host database"
        self._print(done if status in (200, 201) else "")

    def _confirmed(self, stdin):
        """Asks until there is an answer; the end of the input is a yes to all but a no."""
        self._printed = case_files.shared_text("asked")
        *lines, last = stdin.split(b"\n")
        for answer in lines:
            if answer.lower() in (b"y", b"yes", b"n", b"no"):
                return answer.lower() in (b"y", b"yes")
            self._printed += PROMPT_AGAIN
        return last.lower() not in (b"n", b"no")

    def _list(self, command):
        if command.given(line.HOST_ID):
            return self._list_one(command)
        if command.given(line.OWN):
            own = self.hosts.record(self.hosts.host(OWN_HOST_ID), _is_approved)
            if command.given(line.SHORT):
                return Outcome(stdout=listing_model.short_names(own, "").encode())
            return Outcome(reply=own)
        records = self._listed(command)
        if not records and command.given(line.HOST):
            raise Failure(8902, NO_MAPPINGS)
        if not records:
            return Outcome(stdout=NOTHING_FOUND.encode())
        if command.given(line.SHORT):
            return Outcome(stdout=listing_model.short_hosts(records).encode())
        return Outcome(reply={"hosts": records})

    def _list_one(self, command):
        target = f"{COLLECTION}/{text(command.value(line.HOST_ID))}"
        if NOT_SENDABLE.search(target):
            raise Failure(7627)
        try:
            record = self.hosts.get_host(target)
        except Refused as refused:
            raise Failure(refused.code) from None
        if command.given(line.SHORT):
            return Outcome(stdout=listing_model.short_hosts([record]).encode())
        return Outcome(reply=record)

    def _listed(self, command):
        if command.given(line.HOST):
            found = self.hosts.lookup(text(command.value(line.HOST)))
            return [self.hosts.record(host) for host in found]
        if command.given(line.APPROVED):
            return self.hosts.hosts_with(_is_approved)
        if command.given(line.PENDING):
            return self.hosts.hosts_with(lambda mapping: mapping.get("isApproved") is False)
        if command.given(line.CONFLICT):
            return self.hosts.hosts_with(lambda mapping: mapping.get("isConflicting") is True)
        return self.hosts.records()


def usages(run):
    """The usage of every operation and the help, as the tool itself shows them."""
    found = {None: run("-help").stdout}
    for operation, _ in line.OPERATIONS:
        found[operation] = run("-" + operation, "-help").stdout
    assert len(set(found.values())) == len(found)
    return found


def encoded(name):
    return urllib.parse.quote(name, safe="")


def _is_approved(mapping):
    return mapping.get("isApproved") is True
