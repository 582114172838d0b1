"""Odd replies that are taken, and one with every value in every place, in every format."""

import json

import generated_cases
import hostile_content as content
import hostile_wire as wire
import listing_model
from generated_cases import FILTERED, LISTING, binary

COMPACT = LISTING.with_options("-json_compact")


def taken():
    for name, reply in wire.TAKEN.items():
        body = wire.BODY.ljust(wire.LIMIT) if "largest" in name else wire.BODY
        printed = {"stdout": [binary(body), "\n"]}
        yield COMPACT.case(name, reply, environment=wire.HARDLY_PATIENT, **printed)


def formats():
    """Every key with every value, in every format: one reply holds them all."""
    hosts = content.hosts_of_every_value()
    reply = {"body": content.reply_of(hosts)}
    parsed = json.loads(f'{{"hosts":[{",".join(hosts)}]}}')
    compact = bytes.fromhex(content.reply_of(hosts)["hex"])
    for operation, unfiltered in ((LISTING, True), (FILTERED, False)):
        for options, printed in (
            ([], listing_model.long_hosts(parsed["hosts"], unfiltered)),
            (["-short"], listing_model.short_hosts(parsed["hosts"])),
            (["-json"], listing_model.laid_out(parsed)),
            (["-json_compact"], compact + b"\n"),
        ):
            yield operation.with_options(*options).case("values", reply, stdout=binary(printed))


CASES = generated_cases.grouped(taken, formats)
