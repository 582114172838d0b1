"""What `-list` prints for a reply, written down a second time: a model to hold the tool against."""

import json
import re
from datetime import datetime, timedelta, timezone

EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
CYCLE = timedelta(days=146_097) // timedelta(seconds=1)  # of the calendar: 400 years

TEXT_LINES = [
    ("Host ID", "uuid"), ("Host", "hostName"), ("Master Server", "masterServer"),
    ("OS Type", "osType"), ("Operating System", "osVersion"), ("Arkeon EEBs", "installedEEBs"),
    ("Arkeon Packages", "installedPackages"), ("QxUpdate Platform", "qxUpdatePlatform"),
    ("Hardware Description", "hwDescription"), ("CPU Architecture", "cpuArchitecture"),
    ("Version", "akuVersion"),
]  # fmt: skip
COLUMNS = [
    ("Mapped Host Name", 20), ("Approved", 14), ("Conflict", 12), ("Auto-discovered", 21),
    ("Shared", 11), ("Created On", 30), ("Last Updated On", 22),
]  # fmt: skip


def pad(text, width):
    """`text` with blanks to `width` bytes."""
    return text + " " * (width - len(text.encode()))


def member(value, key, default=None):
    """A member of what need not be an object."""
    return value.get(key, default) if isinstance(value, dict) else default


def elements(value, key):
    """A member's elements; of what is no array there are none."""
    found = member(value, key)
    return found if isinstance(found, list) else []


def text_of(record, key):
    value = member(record, key, default=0)
    return "" if value is None else value if isinstance(value, str) else "(null)"


def name_of(mapping):
    value = member(mapping, "mappedHostName")
    return value if isinstance(value, str) else ""


def integer(value):
    return value if type(value) is int else 0


def date(milliseconds):
    """The date of any year, in UTC; a part of a second is cut off towards the epoch."""
    milliseconds = integer(milliseconds)
    seconds = milliseconds // 1000 if milliseconds >= 0 else -(-milliseconds // 1000)
    when = EPOCH + timedelta(seconds=seconds % CYCLE)
    year = when.year + 400 * (seconds // CYCLE)
    return when.strftime(f"%b %d, {year} %I:%M:%S %p")


def yes(condition):
    return "Yes" if condition else "No"


def trimmed(name):
    """A name of 16 bytes or more is cut to 15 without splitting a letter."""
    data = name.encode()
    return name if len(data) < 16 else data[:15].decode(errors="ignore") + "~"


def row(mapping):
    manual = member(mapping, "isAddedManually", False)
    cells = [
        trimmed(text_of(mapping, "mappedHostName")),
        yes(member(mapping, "isApproved") is True),
        yes(member(mapping, "isConflicting") is True),
        yes(manual is not None and manual is not True),
        yes(member(mapping, "isShared") is True),
        date(member(mapping, "createdOn")),
        date(member(mapping, "updatedOn")),
    ]
    return "\n" + "".join(pad(cell, width) for cell, (_, width) in zip(cells, COLUMNS))


def table(mappings, unfiltered):
    header = "\n\n" + "".join(pad(label, width) for label, width in COLUMNS)
    if unfiltered:
        known = [each for each in mappings if member(each, "isApproved", False) is not None]
        approved = [each for each in known if member(each, "isApproved") is True]
        pending = [each for each in known if member(each, "isApproved") is not True]
        mappings = approved + pending
    return header + "".join(map(row, mappings)) + "\n"


def long_host(host, unfiltered):
    end = integer(member(host, "autoReissueDuration"))
    lines = [(label, text_of(host, key)) for label, key in TEXT_LINES] + [
        ("Secure", yes(member(host, "isSecureEnabled") is True)),
        ("Comment", text_of(host, "comment")),
        ("Allow Auto Reissue Certificate", yes(member(host, "autoReissue") is True)),
        ("Trust Version", text_of(host, "trustVersion")),
        ("Allow Auto Reissue Certificate Validity", date(end) if end else ""),
        ("Subject Name of External Certificate", text_of(host, "externalCertificateSubject")),
        ("Arkeon CA Issued Certificate", yes(member(host, "hasArkeonCaHostCertificate") is True)),
    ]
    block = "".join(f"\n{pad(label, 40)} : {value}" for label, value in lines)
    return block + table(elements(host, "hostMappings"), unfiltered)


def short_names(host, primary):
    names = [name_of(mapping) for mapping in elements(host, "hostMappings")]
    first = [primary] if primary in names else []
    others = [name for name in names if name != primary]
    return ", ".join(first + others) + "\n"


def primary_of(host):
    value = member(host, "hostName")
    return value if isinstance(value, str) else ""


def short_hosts(hosts):
    return f"\n{pad('Host ID', 39)} Mapped Names" + "".join(
        f"\n{pad(text_of(host, 'uuid'), 40)}{short_names(host, primary_of(host))}"
        for host in hosts
    )


def long_hosts(hosts, unfiltered=False):
    return "".join(long_host(host, unfiltered) for host in hosts)


def upper_escapes(text):
    """JSON with its escapes of control characters as jansson writes them."""
    escapes = re.compile(r"\\(\\|u00..)")
    return escapes.sub(lambda match: match[0].upper().replace("U", "u"), text)


def json_text(text):
    return upper_escapes(json.dumps(text, ensure_ascii=False))


def json_real(number):
    text = "%.17g" % number
    text = re.sub(r"e([+-])0*(?=\d)", lambda match: "e" + match[1].strip("+"), text)
    return text if re.search("[.e]", text) else text + ".0"


def laid_out(value, depth=0):
    """What `-json` prints."""
    if isinstance(value, str):
        return json_text(value)
    if isinstance(value, float):
        return json_real(value)
    if isinstance(value, dict):
        parts = [f"{json_text(key)}: {laid_out(each, depth + 1)}" for key, each in value.items()]
        return _in_lines("{", parts, "}", depth)
    if isinstance(value, list):
        return _in_lines("[", [laid_out(each, depth + 1) for each in value], "]", depth)
    return json.dumps(value)


def _in_lines(begin, parts, end, depth):
    margin = "\n" + "   " * depth
    lines = ",".join(f"{margin}   {part}" for part in parts)
    return begin + lines + (margin if parts else "") + end
