"""Replies that are wrong in what they say: statuses, redirects, JSON and its values."""

import json

import listing_model
from generated_cases import binary

# Values of every kind as they stand in JSON.
INTEGERS = [
    "0", "-0", "1", "-1", "999", "1000", "-999", "-1000", "2147483647", "2147483648", "-2147483648",
    "-2147483649", "4294967295", "4294967296", "253402300799999", "253402300800000",
    "-62135596800000", "-62135596800001", "-62167219200000", "-62167219201000", "-30641760000000",
    "-30641846400001", "9007199254740993", "67767976233532799", "67768036191676800",
    "9223372036854775807", "-9223372036854775807", "-9223372036854775808",
]  # fmt: skip
OTHERS = [
    "1.5", "-0.0", "0.1", "1E3", "1e15", "1e-400", "1e308", "-1e308", "5e-324",
    "123456789.123456789",
    "true", "false", "null", '""', '"1"', '"Yes"', "[]", "{}", "[1]", '{"a":1}', '[[],{}]',
]  # fmt: skip
VALUES = INTEGERS + OTHERS
# What no value of JSON or of 64 bits is.
NO_VALUES = [
    "9223372036854775808", "-9223372036854775809", "18446744073709551616", "1" * 400, "1e309",
    "-1e309", "1e999", "1e99999999999999999999", "01", "-01", "+1", ".5", "1.", "1e", "1e+", "--1",
    "- 1", "1_000", "0x10", "NaN", "Infinity", "-Infinity", "nan", "True", "NULL", "undefined", "",
    "'1'", "1,", "[1,]", "{,}", '{"a"}', "{a:1}", "{1:1}", '{"a":1,}', "/**/1", "1//",
]  # fmt: skip
TEXT_KEYS = [key for _, key in listing_model.TEXT_LINES] + [
    "comment", "trustVersion", "externalCertificateSubject"]  # fmt: skip
HOST_KEYS = [
    *TEXT_KEYS, "isSecureEnabled", "autoReissue", "autoReissueDuration",
    "hasArkeonCaHostCertificate", "hostMappings",
]  # fmt: skip
MAPPING_KEYS = [
    "mappedHostName", "isApproved", "isConflicting", "isAddedManually", "isShared", "createdOn",
    "updatedOn",
]  # fmt: skip


def hosts_of_every_value():
    """Hosts in JSON: each key with each value, in the host and in a mapping; and no hosts."""
    hosts = [f'{{"{key}":{value}}}' for key in HOST_KEYS for value in VALUES]
    mappings = [f'{{"{key}":{value}}}' for key in MAPPING_KEYS for value in VALUES]
    tables = [f'{{"uuid":"u","hostMappings":[{each}]}}' for each in mappings]
    return hosts + tables + [f'{{"hostMappings":[{",".join(mappings)}]}}', *VALUES]


def host_of(value):
    """One host in JSON that has this value everywhere."""
    mapping = ",".join(f'"{key}":{value}' for key in MAPPING_KEYS)
    members = ",".join(f'"{key}":{value}' for key in HOST_KEYS[:-1])
    return f'{{{members},"hostMappings":[{{{mapping}}},{value}]}}'


# Errors

CODES = [
    "0", "-0", "1", "20", "37", "104", "144", "255", "256", "257", "511", "512", "1024", "5930",
    "7610", "7651", "7680", "8614", "8701", "8704", "8900", "8901", "8902", "65536", "16777216",
    "2147483392", "2147483646", "2147483647", "-1", "-37", "-255", "-256", "-257", "-65536",
    "-2147483392", "-2147483647", "-2147483648",
]  # fmt: skip
UNREADABLE_CODES = [
    *[each for each in VALUES if each not in CODES and not each.lstrip("-").isdigit()],
    "2147483648", "-2147483649", "4294967295", "4294967296", "1099511627776",
    "9223372036854775807", "-9223372036854775808", *NO_VALUES,
]  # fmt: skip


def error_reply(code, message='"m"', status=500):
    return {"status": status, "body": f'{{"errorCode":{code},"errorMessage":{message}}}'}


# Bodies that are no JSON, or no JSON that can be read.


def no_json():
    deep = 100_000
    for name, body in (
        ("nothing", b""), ("blanks", b" \n"),
        ("HTML", b"<!DOCTYPE html><html><body>Bad</body></html>"),
        ("half an object", b'{"hosts":['), ("a byte order mark", b"\xef\xbb\xbf{}"),
        ("UTF-16", '{"hosts":[]}'.encode("utf-16")), ("a NUL after it", b'{"hosts":[]}\0'),
        ("a NUL and more after it", b'{"hosts":[]}\0{}'), ("a NUL alone", b"\0"),
        ("two objects", b"{}{}"), ("a number", b"1"), ("a text", b'"x"'), ("a literal", b"null"),
        ("arrays without end", b"[" * deep), ("arrays in arrays", b"[" * deep + b"]" * deep),
        ("objects without end", b'{"a":' * deep),
        ("objects in objects", b'{"a":' * deep + b"1" + b"}" * deep),
        ("nested one too deep", b'{"hosts":' + b"[" * 2048 + b"]" * 2048 + b"}"),
    ):  # fmt: skip
        yield name, body
    for value in NO_VALUES:
        yield f"the value {value[:20]!r}", f'{{"hosts":[{{"createdOn":{value}}}]}}'.encode()
    yield from ((name, b'{"hosts":[{"hostName":"' + text + b'"}]}') for name, text in bad_texts())


def bad_texts():
    """What no text of JSON holds, without its quotation marks."""
    for control in range(0x20):
        yield f"the byte {control:02x} in a text", bytes([control])
    for escape in (
        r"\u0000", r"\ud800", r"\udbff", r"\udc00", r"\udfff", r"\ud800x", r"\ud800\ud800",
        r"\udc00\ud800", r"\ud800\u0041", r"\u12", r"\u12g4", r"\x41", r"\0", r"\'", "\\",
    ):  # fmt: skip
        yield f"the escape {escape}", escape.encode()
    for data in (
        "80", "bf", "c0", "c080", "c1bf", "c2", "c2c2", "e08080", "e09fbf", "e2", "e282", "ed",
        "eda080", "edbfbf", "f08080af", "f08fbfbf", "f48fbf", "f4908080", "f5808080", "f7bfbfbf",
        "f8888080", "fe", "ff", "c328", "e28228", "f09f98",
    ):  # fmt: skip
        yield f"the bytes {data} in a text", bytes.fromhex(data)


# Redirects and what else a head may ask for.

TARGETS = {
    "another server": "https://{bystander}:1556/arkeon/config/hosts/hostmappings",
    "another server without TLS": "http://{bystander}:1556/arkeon/config/hosts/hostmappings",
    "another server in two slashes": "//{bystander}:1556/x",
    "another server with a user": "https://{server}:1556@{bystander}:1556/x",
    "the server itself": "https://{server}:1556/arkeon/config/hosts/",
    "a path": "/elsewhere",
    "a file": "file:///etc/passwd",
    "another protocol": "ftp://{bystander}:1556/x",
    "nowhere": "",
}
REDIRECTS = range(300, 310)
ASKING = {
    "WWW-Authenticate": (
        'Basic realm="x"', 'Digest realm="x", nonce="y"', "Negotiate", "Negotiate YIIBhg==", "NTLM",
        'NTLM TlRMTVNTUAACAAAA', 'Bearer realm="https://{bystander}:1556/"', "x" * 5000,
    ),
    "Proxy-Authenticate": ('Basic realm="x"', "Negotiate", "NTLM"),
    "Set-Cookie": ("a=b; Domain={bystander}; Secure", "a=b; Path=/; Max-Age=99999999"),
    "Strict-Transport-Security": ("max-age=31536000; includeSubDomains",),
    "Alt-Svc": ('h2="{bystander}:1556"; ma=9999', 'h3="{bystander}:1556"', "clear"),
    "Refresh": ("0; url=https://{bystander}:1556/",),
    "Content-Location": ("https://{bystander}:1556/",),
    "Link": ("<https://{bystander}:1556/>; rel=preload",),
    "Upgrade": ("h2c, websocket",),
    "Retry-After": ("0", "-1", "99999999999999999999"),
    "Connection": ("close", "keep-alive, upgrade", "x" * 5000),
    "Keep-Alive": ("timeout=-1, max=0",),
    "Content-Disposition": ("attachment; filename=../../x",),
}  # fmt: skip


SEQUENCES = {
    "OSC 52 (the clipboard)": "\x1b]52;c;cm0gLXJmIC8=\x07",
    "OSC 8 (a link)": "\x1b]8;;https://example.com\x1b\\x\x1b]8;;\x1b\\",
    "OSC 0 (the title)": "\x1b]0;title\x07",
    "OSC in C1": "\x9d0;title\x9c",
    "CSI (clear, move, colours)": "\x1b[2J\x1b[1;1H\x1b[31;5m",
    "CSI in C1": "\x9b2J\x9b?25l",
    "DCS (a key's text)": "\x1bP1;1|17/6c73\x1b\\",
    "APC, PM and SOS": "\x1b_x\x1b\\\x1b^x\x1b\\\x1bXx\x1b\\",
    "a report asked for": "\x1b[6n\x1b[c\x05",
    "another character set": "\x0e\x1b(0\x0f",
    "reset": "\x1bc",
    "a line written over": "safe\rroot\b\b\b\bevil\x0b\x0c",
}


def reply_of(hosts):
    """A reply with hosts that are JSON already."""
    return binary(f'{{"hosts":[{",".join(hosts)}]}}')


def text_everywhere(text):
    """One host that has a text wherever a text can be."""
    host = dict.fromkeys(TEXT_KEYS, text)
    return json.dumps(host | {"hostMappings": [{"mappedHostName": text}, {"mappedHostName": "b"}]})
