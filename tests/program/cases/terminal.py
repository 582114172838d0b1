"""Control characters in everything that is printed, on terminals and through pipes.

Every case runs with a terminal for neither stream, for each, and for both: a terminal shows control
characters and bytes that are no UTF-8 in visible form, a pipe gets the exact bytes.
"""

import json

import generated_cases
import hostile_content as content
import listing_model
from generated_cases import (
    ADD, ADD_HOST, ASKED, CHANGES, DELETE, FILTERED, LISTING, ONE_HOST, OWN, Operation,
    binary, failure,
)  # fmt: skip

STREAMS = ([], ["stdout"], ["stderr"], ["stdout", "stderr"])
C0 = [chr(code) for code in range(1, 0x20)]
C1 = [chr(code) for code in range(0x80, 0xA0)]
CONTROLS = [*C0, "\x7f", *C1]
# No letters of UTF-8 (RFC 3629): lone bytes, overlong forms, surrogates, beyond U+10FFFF, cut off.
NO_UTF8 = [bytes([byte]) for byte in range(0x80, 0x100)] + [
    bytes.fromhex(each) for each in (
        "c080", "c19f", "c29b9b", "e0809b", "e2829b", "eda080", "edbfbf", "f08080af", "f4908080",
        "f09f98", "c2", "c2c29b", "f8888080", "fe9b",
    )]  # fmt: skip


def visible(data):
    """What a terminal is to be sent for these bytes."""
    return "".join(map(_visible_letter, data.decode("utf-8", "surrogateescape"))).encode()


def _visible_letter(letter):
    code = ord(letter)
    if 0xDC80 <= code <= 0xDCFF:  # a byte that is no letter
        return f"\\x{code - 0xDC00:02x}"
    if 0x80 <= code < 0xA0:
        return f"\\x{code:02x}"
    if letter in "\n\t" or 0x20 <= code != 0x7F:
        return letter
    return "^" + chr(code ^ 0x40)


def on_streams(case, stdout=b"", stderr=b""):
    """The case with what it prints, once for each choice of terminals."""
    for terminals in STREAMS:
        name = f"{case['name']}, {' and '.join(terminals) or 'no'} terminal"
        shown = {
            stream: binary(visible(text) if stream in terminals else text)
            for stream, text in (("stdout", stdout), ("stderr", stderr))
        }
        yield case | shown | {"name": name, "tty": terminals}


def surrounded(parts):
    """All parts in one text, each between letters of its own."""
    if isinstance(parts[0], str):
        return "".join(f"a{part}b" for part in parts) + "c"
    return b"".join(b"a" + part + b"b" for part in parts) + b"c"


EVERYTHING = surrounded([each.encode() for each in CONTROLS] + NO_UTF8)


def listings():
    """Every control character in every text of a host, as it is and escaped, in every format."""
    texts = [f"a{letter}b" for letter in CONTROLS] + list(content.SEQUENCES.values())
    hosts = [content.text_everywhere(text) for text in texts]
    hosts.append(content.text_everywhere("a\x7fb").replace("\x7f", "\\u007f"))
    hosts += [json.dumps(json.loads(content.text_everywhere(f"a{letter}b")), ensure_ascii=False)
              for letter in C1]  # fmt: skip
    reply = f'{{"hosts":[{",".join(hosts)}]}}'
    parsed = json.loads(reply)["hosts"]
    for operation, unfiltered in ((LISTING, True), (FILTERED, False)):
        yield from in_formats(
            operation, reply, listing_model.long_hosts(parsed, unfiltered),
            listing_model.short_hosts(parsed))  # fmt: skip
    names = [{"mappedHostName": text, "isApproved": True} for text in texts]
    host = {"uuid": "u", "hostName": texts[0], "hostMappings": names}
    reply = json.dumps(host)
    yield from in_formats(
        ONE_HOST, reply, listing_model.long_hosts([host]), listing_model.short_hosts([host])
    )
    yield from in_formats(
        OWN, reply, listing_model.table(names, False), listing_model.short_names(host, "")
    )


def in_formats(operation, reply, printed_long, printed_short):
    """One reply in all formats."""
    printed = {
        "": printed_long, "-short": printed_short, "-json_compact": reply + "\n",
        "-json": listing_model.laid_out(json.loads(reply)),
    }  # fmt: skip
    for option, text in printed.items():
        case = operation.with_options(*[option] if option else [])
        yield from on_streams(case.case("texts", {"body": binary(reply)}), text.encode())


def raw_replies():
    """A reply that is not read, with every byte that there is."""
    body = b"".join(b"a" + bytes([byte]) + b"b" for byte in range(0x100)) + EVERYTHING
    for operation in (ONE_HOST, OWN):
        case = operation.with_options("-json_compact").case("bytes", {"body": binary(body)})
        yield from on_streams(case, body + b"\n")
    for name, sequence in content.SEQUENCES.items():
        case = ONE_HOST.with_options("-jc").case(name, {"body": binary(sequence)})
        yield from on_streams(case, sequence.encode() + b"\n")


def quoted(data):
    """A name as it stands in a request's target."""
    plain = b"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~"
    return "".join(chr(byte) if byte in plain else f"%{byte:02X}" for byte in data)


def changed(operation, target):
    """The operation's last request with another target."""
    return {**operation.requests[-1], "target": binary(b"/arkeon/config/hosts/" + target)}


def announced():
    """Success messages with texts of the command line and of the server."""
    host_id = surrounded([each.encode() for each in C1] + NO_UTF8)
    mapping, name = EVERYTHING, surrounded(CONTROLS).encode()
    target = host_id + b"/hostmappings/" + quoted(mapping).encode()
    for status, text in (
        (201, mapping + b" is successfully mapped to " + host_id + b".\n"),
        (200, mapping + b" is successfully updated.\n"),
    ):
        case = ADD.case(f"names, {status}", {"status": status, "json": "{}"}) | {
            "args": ["-add", "-i", binary(host_id), "-mappingname", binary(mapping)],
            "requests": [changed(ADD, target)], "replies": [{"status": status, "json": "{}"}],
        }  # fmt: skip
        yield from on_streams(case, text)
    removed = DELETE.case("names", {}) | {
        "args": ["-delete", "-i", binary(host_id), "-mappingname", binary(mapping)],
        "requests": [changed(DELETE, target)], "replies": [{"status": 204}],
    }  # fmt: skip
    yield from on_streams(
        removed, b"Mapping between " + mapping + b" and " + host_id + b" is removed.\n")
    body = json.dumps({"hostName": name.decode()}, ensure_ascii=False, separators=(",", ":"))
    body = listing_model.upper_escapes(body)
    host = ADD_HOST.case("name", {"status": 201, "json": "{}"}) | {
        "args": ["-addhost", "-host", binary(name)],
        "requests": [{**ADD_HOST.requests[0], "body": binary(body)}],
    }  # fmt: skip
    text = b"The host " + name + b" is added in the host database\n"
    yield from on_streams(host, ASKED.encode() + text)
    keyboard = host | {"name": "-addhost: name, typed", "dialogue": [["(y/n): ", "y\n"]]}
    for case in on_streams(keyboard, ASKED.encode() + text):
        yield case | {"tty": [*case["tty"], "stdin"]}


ANNOUNCED = {
    "-add": "m is successfully mapped to {}.\n",
    "-delete": "Mapping between m and {} is removed.\n",
    "-addcomment": "Comment for {} is successfully added.\n",
    "-deletecomment": "Comment for {} is successfully removed.\n",
    "-updatehost": "The primary host name is updated for {}\n",
    "-allowautoreissuecert":
        "This option lets you reissue certificate on the host without requiring a reissue token. "
        "By default, the option is disabled after 48 hours.\n"
        "The auto reissue certificate parameter is enabled for {}.\n",
}  # fmt: skip


def looked_up():
    """Success messages with a host ID that the server gave (a control of C0 cannot be sent)."""
    host_id = surrounded(C1)
    lookup = {"json": json.dumps({"hosts": [{"uuid": host_id}]})}
    for operation in CHANGES:
        request = operation.requests[-1]
        target = request["target"].replace("/hosts/u", f"/hosts/{host_id}")
        done = {"status": 201 if operation is ADD else 200, "json": "{}"}
        case = operation.with_first_reply(lookup).case("a host ID", done)
        case["requests"] = [operation.requests[0], {**request, "target": binary(target)}]
        yield from on_streams(case, ANNOUNCED[operation.name].format(host_id).encode())


def wrong_lines():
    """Failures that name what was typed."""
    for name, args, sentence, usage in (
        ("an unknown option", ["-list", b"-" + EVERYTHING], "An invalid option was used.", "list"),
        ("an option twice", [b"-" + EVERYTHING, b"-" + EVERYTHING],
         "The following option was entered more than once:", "top"),
        ("no option", [EVERYTHING], "Missing option character on parameter.", "top"),
    ):  # fmt: skip
        yield from wrong_line(name, args, f"{sentence}\n".encode() + EVERYTHING, usage)
    for letter in ("ä", "€", "😀"):  # a letter is never cut, nor shown as bytes
        typed = "x" * 3 + letter * 600
        text = f"An invalid option was used.\n{typed}".encode()[:1023].decode(errors="ignore")
        args = ["-list", "-" + typed]
        yield from wrong_line(f"letters like {letter}", args, text.encode(), "list")


def wrong_line(name, args, text, usage):
    shown = {"list": "{text:list_usage}", "top": "{text:top_level_help}"}[usage]
    case = {"name": name, "args": [binary(each) for each in args], "requests": [], "status": 144}
    for each in on_streams(case, b"", text + b"\n"):
        yield each | {"stdout": shown}


def translated():
    """Texts of the catalogue with every control character: prompts, failures, labels."""
    extra = surrounded(CONTROLS)
    rows = [[context, english, f"{english}<{extra}>"] for context, english in (
        ("SmeHmm0057N", ASKED.split(". ")[0] + "."),
        ("SmeHmm0059N", "Do you really want to add a host? (y/n): "),
        ("SmeHmm0060N", "Please type 'y' for yes or 'n' for no: "),
        ("SmeHmm0017N", "Mappings for the specified option do not exist."),
        ("SmeNsc0136N",
         "Authorization failed. A web login is required. Run the %s command to login."),
        ("SmeEmm0000N", "An invalid option was used."),
    )]  # fmt: skip
    texts = {context: text for context, _, text in rows}
    files = [{"path": "root/locale/de/LC_MESSAGES/akhostmgmt.mo", "catalogue": rows}]
    language = {"files": files, "environment": {"LANGUAGE": "de"}}
    where = ASKED.split(".", 1)[1].split("\n")[0]
    asked = f"{texts['SmeHmm0057N']}{where}\n{texts['SmeHmm0059N']}{texts['SmeHmm0060N']}"
    dialogue = {"name": "prompts", "args": ADD_HOST.args, "requests": [], "stdin": "?\nn\n"}
    yield from on_streams(dialogue | language, asked.encode())
    nothing = LISTING.case("nothing found", {"json": '{"hosts":[]}'})
    yield from on_streams(nothing | language, f"{texts['SmeHmm0017N']}\n".encode())
    login = {"name": "a login", "args": ["-list"], "requests": [], **failure(5930)}
    login |= language | {"files": [*files, {"path": "config/arkeon/logins.json", "absent": True}]}
    sentence = texts["SmeNsc0136N"].replace("%s", "'akauth -login -loginType WEB|APIKEY'")
    for case in on_streams(login, b"", f"{sentence}\n".encode()):
        yield case | {"stderr": [case["stderr"], failure(5930)["stderr"]]}
    unknown = Operation("-list", ["-list", "-x"], []).case("an option", {}, status=144)
    wrong = unknown | language | {"replies": []}
    for case in on_streams(wrong, b"", f"{texts['SmeEmm0000N']}\nx\n".encode()):
        yield case | {"stdout": "{text:list_usage}"}


def server_errors():
    """A server's error message is printed in no form: the code's own sentence is."""
    error = {"errorCode": 8999, "errorMessage": surrounded(CONTROLS)}
    for operation in (LISTING, ADD, ADD_HOST):
        shown = failure(8999)
        case = operation.case("an error", {"status": 500, "json": json.dumps(error)}, **shown)
        for each in on_streams(case, operation.asked.encode()):
            yield each | {"stderr": shown["stderr"]}


CASES = generated_cases.grouped(
    listings, raw_replies, announced, looked_up, wrong_lines, translated, server_errors)
