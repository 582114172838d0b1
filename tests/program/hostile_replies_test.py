#!/usr/bin/env python3
"""Replies as a hostile or broken server sends them, one run of the tool each.

    hostile_replies_test.py --tool PATH --devserver PATH [--group NAME] [--every N] [...]
"""

import json
import sys

import generated_cases
import hostile_content as content
import hostile_wire as wire
import listing_model
from generated_cases import (
    ADD, ADD_HOST, DELETE, FILTERED, LISTING, LOOKUPS, ONE_HOST, OWN, REISSUE, REQUESTS, binary,
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
                yield COMPACT.case(name, reply, **whole if place >= needed else failure(wire.BROKEN))


def taken():
    for name, reply in wire.TAKEN.items():
        body = wire.BODY.ljust(wire.LIMIT) if "largest" in name else wire.BODY
        printed = {"stdout": [binary(body), "\n"]}
        yield COMPACT.case(name, reply, environment=wire.ENVIRONMENT, **printed)


def refused():
    """To every kind of request; a look-up is not followed by a change."""
    for name, reply, code in wire.refused():
        for operation in REQUESTS:
            yield operation.case(name, reply, environment=wire.ENVIRONMENT, **failure(code))


def slow():
    for name, reply, code in wire.slow():
        for operation in (LISTING, LOOKUPS[0], DELETE):
            yield operation.case(name, reply, environment=wire.ENVIRONMENT, **failure(code))


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


def formats():
    """Every key with every value, in every format: one reply holds them all."""
    hosts = content.hosts_of_every_value()
    reply = {"body": content.reply_of(hosts)}
    parsed = json.loads(f'{{"hosts":[{",".join(hosts)}]}}')
    compact = case_bytes(content.reply_of(hosts))
    for operation, unfiltered in ((LISTING, True), (FILTERED, False)):
        for options, printed in (
            ([], listing_model.long_hosts(parsed["hosts"], unfiltered)),
            (["-short"], listing_model.short_hosts(parsed["hosts"])),
            (["-json"], listing_model.laid_out(parsed)),
            (["-json_compact"], compact + b"\n"),
        ):
            yield operation.with_options(*options).case("values", reply, stdout=binary(printed))


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


def case_bytes(text):
    return bytes.fromhex(text["hex"])


GROUPS = {
    "cut": cut, "taken": taken, "refused": refused, "slow": slow, "statuses": statuses,
    "redirects": redirects, "asking": asking, "codes": codes, "no_json": no_json,
    "lookups": lookups, "values": values, "formats": formats,
}  # fmt: skip

if __name__ == "__main__":
    sys.exit(generated_cases.main(__doc__, GROUPS, whole={"taken", "formats"}))
