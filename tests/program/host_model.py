"""The development server's host database, its answers and its audit trail, modelled in memory.

Texts are str; bytes that are no UTF-8 stand in them as surrogates (see `text`).
"""

import re
import unicodedata
import urllib.parse
from dataclasses import dataclass

HOST_KEYS = [
    "uuid", "hostName", "masterServer", "osType", "osVersion", "installedEEBs",
    "installedPackages", "qxUpdatePlatform", "hwDescription", "cpuArchitecture", "akuVersion",
    "isSecureEnabled", "comment", "autoReissue", "trustVersion", "autoReissueDuration",
    "externalCertificateSubject", "hasArkeonCaHostCertificate",
]  # fmt: skip
MAPPING_KEYS = [
    "mappedHostName", "isApproved", "isConflicting", "isAddedManually", "isShared", "createdOn",
    "updatedOn",
]  # fmt: skip
COLLECTION = "arkeon/config/hosts"
PERMISSION = 48 * 60 * 60 * 1000
MAX_NAME, MAX_COMMENT, MAX_REASON = 1024, 2048, 512  # as in hostmgmt/ArgumentRules.h


def text(data):
    return data.decode(errors="surrogateescape")


def data(string):
    return string.encode(errors="surrogateescape")


def folded(name):
    """Equal for names that differ in nothing but the case of ASCII letters."""
    return data(name).lower() if isinstance(name, str) else None


def is_plain(letter):
    """Neither a control character nor a byte that is no UTF-8."""
    return unicodedata.category(letter) not in ("Cc", "Cs")


class Between:
    """A time that is not known better than this, in milliseconds."""

    def __init__(self, first, last):
        self.first, self.last = first, last

    def fits(self, found):
        return isinstance(found, int) and self.first <= found <= self.last

    def __repr__(self):
        return f"{self.first} to {self.last}"


class NewId:
    """The host ID of a new host, which the server chooses."""

    PATTERN = re.compile(r"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")

    def fits(self, found):
        return isinstance(found, str) and self.PATTERN.fullmatch(found) is not None

    def __repr__(self):
        return "a random UUID"


def differences(expected, found, where="the reply"):
    """Says where `found` is not what is expected; the order of an object's keys counts."""
    if isinstance(expected, (Between, NewId)):
        if not expected.fits(found):
            yield f"{where}: expected {expected!r}, found {found!r}"
    elif isinstance(expected, dict) and isinstance(found, dict):
        if list(expected) != list(found):
            yield f"{where}: expected the keys {list(expected)}, found {list(found)}"
        for key in expected.keys() & found.keys():
            yield from differences(expected[key], found[key], f"{where}.{key}")
    elif isinstance(expected, list) and isinstance(found, list):
        if len(expected) != len(found):
            yield f"{where}: expected {len(expected)} elements, found {len(found)}"
        for index, (one, other) in enumerate(zip(expected, found)):
            yield from differences(one, other, f"{where}[{index}]")
    elif type(expected) is not type(found) or expected != found:
        yield f"{where}: expected {expected!r}, found {found!r}"


def settle(record, found):
    """Replaces what the model could not know by what was found, so that it must stay so."""
    for key, value in record.items():
        if isinstance(value, (Between, NewId)):
            record[key] = found[key]
    for mapping, other in zip(record.get("hostMappings", []), found.get("hostMappings", [])):
        settle(mapping, other)


class Refused(Exception):
    def __init__(self, status, code):
        super().__init__(status, code)
        self.status, self.code = status, code


@dataclass
class AuditRow:
    who: str
    method: str
    status: int
    code: int
    resource: str
    reason: str

    def cells(self):
        columns = (self.who, self.method, self.status, self.code, self.resource, self.reason)
        return ["".join(map(_visible, str(column))) for column in columns]


def _visible(letter):
    return letter if is_plain(letter) else "".join(f"\\x{byte:02x}" for byte in data(letter))


def audit_table(rows):
    """The lines of `akdevserver --audit` without their first column."""
    table = [["WHO", "METHOD", "STATUS", "CODE", "RESOURCE", "REASON"]]
    table += [row.cells() for row in rows]
    widths = [max(map(len, column)) for column in zip(*table)]
    return ["  ".join(cell.ljust(width) for cell, width in zip(cells, widths)).rstrip(" ")
            for cells in table]  # fmt: skip


class HostModel:
    """The hosts, and what requests with a valid login make of them.

    `window` is the time, as first and last millisecond, in which the next change happens.
    """

    def __init__(self, hosts, primary_server):
        self.hosts = hosts
        self.primary_server = primary_server
        self.audit = []
        self.window = (0, 0)

    def records(self, condition=lambda mapping: True):
        """The hosts as the server shows them, with the mappings for which the condition holds."""
        return [self.record(host, condition) for host in self.hosts]

    def record(self, host, condition=lambda mapping: True):
        record = {key: host[key] for key in HOST_KEYS if key in host}
        record["hostMappings"] = [
            {key: mapping[key] for key in MAPPING_KEYS if key in mapping}
            for mapping in host["hostMappings"] if condition(mapping)]  # fmt: skip
        return record

    def hosts_with(self, condition):
        """The hosts with such mappings, each with these alone."""
        return [each for each in self.records(condition) if each["hostMappings"]]

    def lookup(self, name):
        """The hosts that have this mapped name."""
        return [host for host in self.hosts if self._mapping(host, name)]

    def host(self, host_id):
        host = next((each for each in self.hosts if each["uuid"] == host_id), None)
        if host is None:
            raise Refused(404, 8701)
        return host

    def get_host(self, target):
        """The record of the host that a GET of this address shows."""
        resource, parts = self._address(target)
        if resource != "host":
            raise Refused(404, 8710)
        return self.record(self.host(parts[0]))

    def change(self, method, target, body, reason):
        """The answer's status and error code; every request leaves a row of the audit trail."""
        try:
            status, code = self._change(method, target, body, reason), 0
        except Refused as refused:
            status, code = refused.status, refused.code
        sent = "/" + target.partition("#")[0]
        self.audit.append(AuditRow("admin", method, status, code, sent, reason))
        return status, code

    def _change(self, method, target, body, reason):
        resource, parts = self._address(target)
        handlers = {
            ("hosts", "POST"): self._add_host, ("host", "PATCH"): self._patch_host,
            ("comment", "PUT"): self._set_comment, ("mapping", "PUT"): self._put_mapping,
            ("mapping", "DELETE"): self._delete_mapping,
        }  # fmt: skip
        if (resource, method) not in handlers:
            raise Refused(405, 8708)
        if len(data(reason)) > MAX_REASON:
            raise Refused(400, 8706)
        return handlers[resource, method](*parts, body)

    def _address(self, target):
        """The kind of resource, and the decoded parts of its address."""
        path, _, query = target.partition("#")[0].partition("?")
        segments = path.removeprefix(COLLECTION + "/").split("/")
        if query or any(re.search("%(?![0-9A-Fa-f]{2})", each) for each in segments):
            raise Refused(400, 8711)
        parts = [urllib.parse.unquote(each, errors="surrogateescape") for each in segments]
        if segments == [""]:
            return "hosts", []
        if len(segments) == 1:
            return ("listing", []) if segments == ["hostmappings"] else ("host", parts)
        if segments[1:] == ["comment"]:
            return "comment", parts[:1]
        if len(segments) == 3 and segments[1] == "hostmappings":
            return "mapping", [parts[0], parts[2]]
        raise Refused(404, 8710)

    def _put_mapping(self, host_id, name, body):
        _check_name(name)
        host = self.host(host_id)
        self._check_free(host, name, body["isShared"])
        mapping = self._mapping(host, name)
        now = Between(*self.window)
        if mapping is None:
            status, mapping = 201, {"mappedHostName": name, "createdOn": now}
            host["hostMappings"].append(mapping)
        else:
            status = 200
        mapping |= {"isApproved": True, "isConflicting": False, "isAddedManually": True,
                    "isShared": body["isShared"], "updatedOn": now}  # fmt: skip
        self._settle_conflicts(name)
        return status

    def _delete_mapping(self, host_id, name, _):
        host = self.host(host_id)
        mapping = self._mapping(host, name)
        if mapping is None:
            raise Refused(404, 8701)
        host["hostMappings"].remove(mapping)
        self._settle_conflicts(name)
        return 204

    def _set_comment(self, host_id, body):
        if len(data(body["comment"])) > MAX_COMMENT:
            raise Refused(400, 8706)
        self.host(host_id)["comment"] = body["comment"] or None
        return 200

    def _patch_host(self, host_id, body):
        if "hostName" in body:
            _check_name(body["hostName"])
        host = self.host(host_id)
        if "hostName" in body:
            self._check_host_name(body["hostName"], host)
            host["hostName"] = body["hostName"]
        if "autoReissue" in body:
            ends = Between(*(time + PERMISSION for time in self.window))
            host["autoReissue"] = body["autoReissue"]
            host["autoReissueDuration"] = ends if body["autoReissue"] else 0
        return 204

    def _add_host(self, body):
        name = body["hostName"]
        _check_name(name)
        self._check_host_name(name, None)
        self._check_free(None, name, False)
        host = dict.fromkeys(HOST_KEYS) | {
            "uuid": NewId(), "hostName": name, "masterServer": self.primary_server,
            "isSecureEnabled": False, "autoReissue": False, "autoReissueDuration": 0,
            "hasArkeonCaHostCertificate": False, "hostMappings": []}  # fmt: skip
        self.hosts.append(host)
        now = Between(*self.window)
        host["hostMappings"].append({
            "mappedHostName": name, "isApproved": True, "isConflicting": False,
            "isAddedManually": True, "isShared": False, "createdOn": now, "updatedOn": now,
        })  # fmt: skip
        self._settle_conflicts(name)
        return 201

    @staticmethod
    def _mapping(host, name):
        same = (each for each in host["hostMappings"]
                if folded(each.get("mappedHostName")) == folded(name))  # fmt: skip
        return next(same, None)

    def _check_host_name(self, name, but):
        if any(host is not but and folded(host.get("hostName")) == folded(name)
               for host in self.hosts):  # fmt: skip
            raise Refused(409, 8703)

    def _approved_elsewhere(self, host, name):
        found = (self._mapping(other, name) for other in self.hosts if other is not host)
        return [each for each in found if each and each.get("isApproved") is True]

    def _check_free(self, host, name, shared):
        """A name may be approved for several hosts when all of them share it."""
        for mapping in self._approved_elsewhere(host, name):
            if not shared or mapping.get("isShared") is not True:
                raise Refused(409, 8702)

    def _settle_conflicts(self, name):
        """A pending mapping is in conflict while another host has the name for itself."""
        for host in self.lookup(name):
            mapping = self._mapping(host, name)
            pending = mapping.get("isApproved") is not True
            mapping["isConflicting"] = pending and any(
                other.get("isShared") is not True
                for other in self._approved_elsewhere(host, name))  # fmt: skip


def _check_name(name):
    if not 0 < len(data(name)) <= MAX_NAME or not all(map(is_plain, name)):
        raise Refused(400, 8706)
