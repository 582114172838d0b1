"""The server's replies: hosts generated from their numbers, as JSON, plain and with gzip."""

import json
import zlib

EARLIEST = 1_577_836_800_000  # 2020-01-01 00:00 UTC, in milliseconds
PERIOD = 217_000_000_000  # a little less than seven years
SYSTEMS = [
    ("Linux", "Debian GNU/Linux 12 (bookworm)", "linux-x86_64", "x86_64"),
    ("Linux", "Red Hat Enterprise Linux 9.4", "linux-x86_64", "x86_64"),
    ("Windows", "Windows Server 2022", "windows-x64", "x64"),
    ("AIX", "7.3", "aix-ppc64", "ppc64"),
    ("Linux", "SUSE Linux Enterprise 15", "linux-aarch64", "aarch64"),
]
HARDWARE = ["Virtual machine, 8 CPUs, 32 GiB", "Rack server, 64 CPUs, 512 GiB", "Büro-PC", None]
COMMENTS = [None, None, "", "Placed in rack 7", "Steht im Büro neben der Küche – nicht umräumen!"]
ROLES = ["web", "db", "mail", "büro", "cluster-node"]
SITES = ["berlin", "münchen", "storage", "lab"]
BATCH = 1000


def scrambled(number, salt):
    """A pseudo-random number below 2**32 that depends on the arguments only."""
    value = (number * 2654435761 + salt * 40503) & 0xFFFFFFFF
    value ^= value >> 15
    value = (value * 2246822519) & 0xFFFFFFFF
    return value ^ (value >> 13)


def timestamp(number, salt):
    return EARLIEST + scrambled(number, salt) * 1009 % PERIOD


def mapping(number, salt, name, approved=True, manual=False):
    created = timestamp(number, salt)
    return {
        "mappedHostName": name,
        "isApproved": approved,
        "isConflicting": not approved and number % 97 == 0,
        "isAddedManually": manual,
        "isShared": manual and number % 5 == 0,
        "createdOn": created,
        "updatedOn": created + scrambled(number, salt + 1) % 1_000_000_000,
    }


def mappings(number, name):
    """The name itself, a long name and an IP address, in different orders."""
    address = f"10.{number >> 16 & 255}.{number >> 8 & 255}.{number & 255}"
    names = [
        mapping(number, 1, name, approved=number % 50 != 0),
        mapping(number, 3, f"{name}.{SITES[number % 4]}.example.com", manual=number % 3 == 0),
        mapping(number, 5, address, approved=number % 7 != 0, manual=number % 11 == 0),
    ]
    first = number % 3
    return names[first:] + names[:first]


def host(number, primary_server):
    name = f"{ROLES[scrambled(number, 7) % 5]}{number:06d}"
    family, version, platform, processor = SYSTEMS[scrambled(number, 8) % 5]
    reissue = number % 20 == 0
    return {
        "uuid": f"{scrambled(number, 9):08x}-0000-4000-8000-{number:012x}",
        "hostName": name,
        "masterServer": primary_server,
        "osType": family,
        "osVersion": version,
        "installedEEBs": "EEB4711 EEB4712" if number % 13 == 0 else "",
        "installedPackages": "client",
        "qxUpdatePlatform": platform,
        "hwDescription": HARDWARE[scrambled(number, 10) % 4],
        "cpuArchitecture": processor,
        "akuVersion": "10.4",
        "isSecureEnabled": number % 10 != 0,
        "comment": COMMENTS[scrambled(number, 11) % 5],
        "autoReissue": reissue,
        "trustVersion": "3",
        "autoReissueDuration": timestamp(number, 12) if reissue else 0,
        "externalCertificateSubject": f"CN={name},O=Example" if number % 4 == 0 else None,
        "hasArkeonCaHostCertificate": True,
        "hostMappings": mappings(number, name),
    }


def compact(value):
    return json.dumps(value, ensure_ascii=False, separators=(",", ":"))


def listing(count, primary_server):
    """Yields a reply with `count` hosts in chunks of bytes."""
    separator = '{"hosts":['
    for first in range(1, count + 1, BATCH):
        numbers = range(first, min(first + BATCH, count + 1))
        records = ",".join(compact(host(each, primary_server)) for each in numbers)
        yield (separator + records).encode()
        separator = ","
    yield b"]}"


def write_reply(path, chunks):
    """Writes the chunks to `path` and, with gzip, to `path`.gz; returns the plain size."""
    packer = zlib.compressobj(6, zlib.DEFLATED, 31)
    size = 0
    with open(path, "wb") as plain, open(f"{path}.gz", "wb") as packed:
        for chunk in chunks:
            size += plain.write(chunk)
            packed.write(packer.compress(chunk))
        packed.write(packer.flush())
    return size
