"""What `-list` prints for a reply, written down a second time: a model to hold the tool against."""

from datetime import datetime, timedelta, timezone

EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)

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


def text_of(record, key):
    if key in record and record[key] is None:
        return ""
    value = record.get(key)
    return value if isinstance(value, str) else "(null)"


def date(milliseconds):
    when = EPOCH + timedelta(seconds=(milliseconds or 0) // 1000)
    return when.strftime("%b %d, %Y %I:%M:%S %p")


def yes(condition):
    return "Yes" if condition else "No"


def trimmed(name):
    """A name of 16 bytes or more is cut to 15 without splitting a letter."""
    data = name.encode()
    return name if len(data) < 16 else data[:15].decode(errors="ignore") + "~"


def row(mapping):
    manual = mapping.get("isAddedManually", False)
    cells = [
        trimmed(text_of(mapping, "mappedHostName")),
        yes(mapping.get("isApproved") is True),
        yes(mapping.get("isConflicting") is True),
        yes(manual is False),
        yes(mapping.get("isShared") is True),
        date(mapping.get("createdOn")),
        date(mapping.get("updatedOn")),
    ]
    return "\n" + "".join(pad(cell, width) for cell, (_, width) in zip(cells, COLUMNS))


def table(mappings, unfiltered):
    header = "\n\n" + "".join(pad(label, width) for label, width in COLUMNS)
    if unfiltered:
        approved = [each for each in mappings if each.get("isApproved") is True]
        pending = [each for each in mappings if each.get("isApproved", False) is False]
        mappings = approved + pending
    return header + "".join(map(row, mappings)) + "\n"


def long_host(host, unfiltered):
    end = host.get("autoReissueDuration") or 0
    lines = [(label, text_of(host, key)) for label, key in TEXT_LINES] + [
        ("Secure", yes(host.get("isSecureEnabled") is True)),
        ("Comment", text_of(host, "comment")),
        ("Allow Auto Reissue Certificate", yes(host.get("autoReissue") is True)),
        ("Trust Version", text_of(host, "trustVersion")),
        ("Allow Auto Reissue Certificate Validity", date(end) if end else ""),
        ("Subject Name of External Certificate", text_of(host, "externalCertificateSubject")),
        ("Arkeon CA Issued Certificate", yes(host.get("hasArkeonCaHostCertificate") is True)),
    ]
    block = "".join(f"\n{pad(label, 40)} : {value}" for label, value in lines)
    return block + table(host.get("hostMappings") or [], unfiltered)


def short_names(host, primary):
    names = [mapping.get("mappedHostName") or "" for mapping in host.get("hostMappings") or []]
    first = [primary] if primary in names else []
    others = [name for name in names if name != primary]
    return ", ".join(first + others) + "\n"


def short_hosts(hosts):
    return f"\n{pad('Host ID', 39)} Mapped Names" + "".join(
        f"\n{pad(text_of(host, 'uuid'), 40)}{short_names(host, host.get('hostName') or '')}"
        for host in hosts
    )


def long_hosts(hosts, unfiltered=False):
    return "".join(long_host(host, unfiltered) for host in hosts)
