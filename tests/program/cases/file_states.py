"""Every file that the tool reads, in every state in which it may find one."""

MASTER = "root/etc/master.toml"
CERTIFICATES = "root/etc/certificates.toml"
LOGINS = "config/arkeon/logins.json"
CATALOGUE = "root/locale/de/LC_MESSAGES/akhostmgmt.mo"
LISTING = {"args": ["-list"], "environment": {"LANGUAGE": "de"}, "timeout": 20}
USED = {
    "requests": [{"target": "/arkeon/config/hosts/hostmappings"}],
    "replies": [{"json": "{}"}],
    "stdout": "{text:nothing_found}",
}
ABORTED = {
    "signal": "SIGABRT",
    "stderr_begins": "Error occurred during initialization, check master configuration file\n",
}
NO_PRIMARY_SERVER = ABORTED | {"stderr_begins": "akhostmgmt: no master server record found\n"}

# What a file is besides a good one: the row that makes it.
LARGE = 8 << 30
NOISE = {"hex": bytes((7 * number * number + 3) % 256 for number in range(4096)).hex()}
STATES = {
    "missing": {"absent": True},
    "a link to nothing": {"symlink": "nothing"},
    "empty": {"text": ""},
    "unreadable": {"text": "", "mode": 0o000},
    "a folder": {"kind": "folder"},
    "a FIFO": {"kind": "fifo"},
    "a socket": {"kind": "socket"},
    "a link to a FIFO": {"symlink": "{folder}/home/fifo"},
    "a link to itself": {"symlink": "{folder}/{path}"},
    "a link to an endless device": {"symlink": "/dev/zero"},
    "a link to a terminal": {"symlink": "/dev/tty"},
    "8 GiB of zero bytes": {"size": LARGE},
    "a megabyte of zero bytes": {"size": 1 << 20},
    "noise": {"text": NOISE},
}


def failure(status, before="", **more):
    line = f"Exit Status {status}: {{status:{status}}}\n"
    return {"stderr": before + line, "status": status % 256, **more}


NOT_LOGGED_IN = failure(5930, "{text:login_needed}")
LOGIN_REFUSED = failure(117, "{text:login_needed}" * 2)


def states_of(path, bad, **exceptions):
    """A case for each state of the file: `bad` comes of it but where `exceptions` says so."""
    for name, row in STATES.items():
        link = {"symlink": row["symlink"].replace("{path}", path)} if "symlink" in row else {}
        mode = {"mode": 0o600} if {"text", "size"} & set(row) else {}
        files = [{"path": "home/fifo", "kind": "fifo"}, {"path": path} | mode | row | link]
        outcome = exceptions.get(name.replace(" ", "_"), bad)
        yield LISTING | outcome | {"name": f"{path}: {name}", "files": files, "unprivileged": True}


def below_a_file(path, outcome):
    """The case in which a file stands where the path has a folder."""
    folder = path.rsplit("/", 1)[0]
    return LISTING | outcome | {"name": f"{folder}: a file", "files": [{"path": folder, "text": ""}]}


def behind_a_link(path):
    """The case in which the good file is elsewhere and a link leads there."""
    name = "a link to the file"
    files = [{"path": path, "moved_to": "home/elsewhere", "symlink": "{folder}/home/elsewhere"}]
    return LISTING | USED | {"name": f"{path}: {name}", "files": files}


def all_cases():
    yield from states_of(MASTER, ABORTED, empty=NO_PRIMARY_SERVER)
    yield from states_of(CERTIFICATES, failure(7641), missing=failure(7640),
                         a_link_to_nothing=failure(7640), empty=failure(7640))  # fmt: skip
    yield from states_of(LOGINS, LOGIN_REFUSED, missing=NOT_LOGGED_IN,
                         a_link_to_nothing=NOT_LOGGED_IN)  # fmt: skip
    for name in ("host.pem", "host.key", "ca.pem"):
        # Whether a text is PEM shows when the connection is there and TLS begins.
        unusable = failure(7642, connections=1)
        yield from states_of(f"root/certs/{name}", failure(7642),
                             a_megabyte_of_zero_bytes=unusable, noise=unusable)  # fmt: skip
    yield below_a_file(MASTER, ABORTED)
    yield below_a_file(LOGINS, NOT_LOGGED_IN)
    yield below_a_file("root/certs/host.pem", failure(7642))
    yield below_a_file(CATALOGUE, USED)
    for path in (MASTER, CERTIFICATES, LOGINS, "root/certs/host.pem", "root/certs/host.key",
                 "root/certs/ca.pem"):  # fmt: skip
        yield behind_a_link(path)


CASES = {"case": list(all_cases())}
