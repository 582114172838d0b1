"""Replies as a hostile or broken server sends them, to every kind of request."""

import json
import zlib

import generated_cases
import hostile_content as content
import hostile_wire as wire
import listing_model
from generated_cases import (
    ADD, ADD_HOST, DELETE, LISTING, LOOKUPS, ONE_HOST, OWN, REISSUE, REQUESTS, binary,
    failure,
)  # fmt: skip

# What the change's own reply is taken for, whatever its HTTP status.
AFTER_CODE_0 = {
    ADD: "\n", DELETE: "Mapping between m and u is removed.\n", REISSUE: "\n\n", ADD_HOST: "\n",
}  # fmt: skip
UNKNOWN_MAPPING = "Exit Status 8901: The mapping name that was provided does not exist.\n"
COMPACT = LISTING.with_options("-json_compact")


def cut():
    """Each reply that says where it ends, cut at every byte."""
    for label, data in wire.WHOLE.items():
        # libcurl does without the last line feed of a body in chunks.
        needed = len(data) - data.endswith(b"\r\n")
        for place in range(len(data) + 1):
            for ending in ("close", "abort"):
                name, reply = f"{label}, {place} bytes, {ending}", wire.reply(data[:place], ending)
                whole = {"stdout": [binary(wire.BODY), "\n"]}
                ended = whole if place >= needed else failure(wire.BROKEN)
                yield COMPACT.case(name, reply, **ended)


def handshakes():
    """A server that closes inside its first flight of TLS."""
    for place in [*range(0, 20), *range(20, 900, 20)]:
        yield {
            "name": f"{place} bytes", "args": LISTING.args, "requests": [], "connections": 1,
            "hello": place, **failure(7624),
        }  # fmt: skip


def shortened():
    """Compressed bodies of the right length that stop early: all is printed, or nothing."""
    for coding, data, window in (("gzip", wire.ZIPPED, 31), ("deflate", wire.DEFLATED, 15)):
        for place in range(len(data)):
            decoded = zlib.decompressobj(window).decompress(data[:place])
            whole = {"stdout": [binary(wire.BODY), "\n"]}
            ended = whole if decoded == wire.BODY else failure(wire.UNREADABLE)
            reply = wire.reply(wire.coded(data[:place], coding))
            yield COMPACT.case(f"{coding}, {place} bytes", reply, **ended)


def refused():
    """To every kind of request; a look-up is not followed by a change."""
    for name, reply, code in wire.refused():
        for operation in REQUESTS:
            yield operation.case(name, reply, environment=wire.ENVIRONMENT, **failure(code))


def slow():
    for name, reply, code in wire.slow():
        for operation in (LISTING, LOOKUPS[0], DELETE):
            yield operation.case(name, reply, environment=wire.IMPATIENT, **failure(code))


def statuses():
    """Every HTTP status of a final reply: but for the good ones it is the error that counts."""
    for status in range(200, 1000):
        empty = status in (204, 304)
        reply = {"status": status} if empty else content.error_reply("37", status=status)
        expected = failure(wire.UNREADABLE if empty else 37)
        if status == 200:
            expected = {"stdout": "{text:nothing_found}"}
        elif status == 201:
            expected = {}
        yield LISTING.case(f"status {status}", reply, **expected)


def redirects():
    """Nobody is turned to, and nothing is sent again."""
    for status in content.REDIRECTS:
        for name, target in content.TARGETS.items():
            reply = {"status": status, "headers": {"Location": target}}
            for operation in REQUESTS if status in (302, 307, 308) else (LISTING, ADD):
                yield operation.case(
                    f"{status} to {name}", reply, bystander=True, **failure(wire.UNREADABLE))


def asking():
    """Heads that ask for more than to read the reply."""
    for header, values in content.ASKING.items():
        for value in values:
            name = f"{header}: {value[:30]}"
            for status in (401, 407, 200, 500):
                reply = {"status": status, "json": '{"hosts":[]}', "headers": {header: value}}
                ended = {"stdout": "{text:nothing_found}"} if status == 200 else failure(7610)
                yield LISTING.case(f"{name}, {status}", reply, bystander=True, **ended)
            # A change goes on in peace: its look-up's reply has the line.
            before = {"json": '{"hosts":[{"uuid":"u"}]}', "headers": {header: value}}
            after = {"status": 401, "headers": {header: value}}
            change = ADD.with_first_reply(before)
            connections = {"connections": 2} if value == "close" else {}
            yield change.case(name, after, bystander=True, **connections, **failure(7610))


def codes():
    """Every error code, in the reply to every kind of request."""
    for code in content.CODES:
        for operation in REQUESTS:
            number = int(code)
            if operation is DELETE and number == 8701:
                expected = failure(8901) | {"stderr": UNKNOWN_MAPPING}
            elif number == 0 and operation is not LOOKUPS[0]:
                expected = {"stdout": AFTER_CODE_0.get(operation, "")}
            else:
                expected = failure(number or wire.UNREADABLE)
            yield operation.case(f"code {code}", content.error_reply(code), **expected)
    for code in content.UNREADABLE_CODES:
        for operation in REQUESTS:
            reply = content.error_reply(code)
            yield operation.case(f"code {code[:30]}", reply, **failure(wire.UNREADABLE))
    for message in [each for each in content.VALUES if each[0] != '"']:
        reply = content.error_reply("37", message)
        yield LISTING.case(f"message {message}", reply, **failure(wire.UNREADABLE))


def no_json():
    for name, body in content.no_json():
        good, bad = ({"status": status, "body": binary(body)} for status in (200, 500))
        unreadable = failure(wire.UNREADABLE)
        if name not in ("a number", "a text", "a literal"):
            for option in ([], ["-short"], ["-json"], ["-json_compact"]):
                yield LISTING.with_options(*option).case(name, good, **unreadable)
            shown = {"stderr": unreadable["stderr"]}
            yield ONE_HOST.case(name, good, **shown)
            yield OWN.with_options("-json").case(name, good, **shown)
            exact = {"stdout": [binary(body), "\n"]}
            yield ONE_HOST.with_options("-json_compact").case(name, good, **exact)
        yield LOOKUPS[0].case(name, good, **unreadable)
        for operation in (LISTING, LOOKUPS[1], DELETE):
            yield operation.case(f"{name}, an error", bad, **unreadable)


def lookups():
    """Look-ups that give no host ID, or one that cannot be sent."""
    values = [each for each in content.VALUES if each[0] != '"'] + ['""']
    replies = [f'{{"hosts":{value}}}' for value in values if value not in ("[]", "[[],{}]")]
    replies += [f'{{"hosts":[{{"uuid":{value}}}]}}' for value in values]
    replies += [f'{{"hosts":[{value}]}}' for value in values] + values
    for operation in LOOKUPS:
        for reply in dict.fromkeys(replies):
            yield operation.case(reply, {"body": reply}, **failure(wire.UNREADABLE))
        for escape in [f"\\u{code:04x}" for code in [*range(1, 0x21), 0x7F]]:
            reply = {"body": f'{{"hosts":[{{"uuid":"a{escape}b"}}]}}'}
            yield operation.case(f"a host ID with {escape}", reply, **failure(7627))


def values():
    """Every value as the one host, and everywhere in it."""
    for value in content.VALUES:
        yield from one_host(value, content.host_of(value))
        yield from one_host(f"{value} as the reply", value)


def one_host(name, host):
    reply, parsed = {"body": binary(host)}, json.loads(host)
    if not isinstance(parsed, (dict, list)):
        for operation in (ONE_HOST, OWN):
            yield operation.case(name, reply, stderr=failure(wire.UNREADABLE)["stderr"])
        return
    table = listing_model.table(listing_model.elements(parsed, "hostMappings"), False)
    yield ONE_HOST.case(name, reply, stdout=binary(listing_model.long_hosts([parsed])))
    yield OWN.case(name, reply, stdout=binary(table))
    for option, printed in (
        ("-short", listing_model.short_hosts([parsed])), ("-json", listing_model.laid_out(parsed)),
    ):  # fmt: skip
        yield ONE_HOST.with_options(option).case(name, reply, stdout=binary(printed))


CASES = generated_cases.grouped(
    cut, handshakes, shortened, refused, slow, statuses, redirects, asking, codes, no_json, lookups,
    values)  # fmt: skip
