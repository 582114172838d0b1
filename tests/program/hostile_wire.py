"""Replies that are wrong below their content: framing, compression, sizes, and odd ends."""

import gzip
import zlib

from generated_cases import binary

BODY = b'{"hosts":[{"uuid":"1"}]}'
TIMED_OUT, BROKEN, TOO_LARGE, CLIENT, UNREADABLE = 7622, 7625, 7628, 7629, 7610
CHUNKED, GZIP = "Transfer-Encoding: chunked", "Content-Encoding: gzip"
LIMIT = 100_000  # of the body, in these cases
ENVIRONMENT = {"AK_TEST_STALL_SECONDS": "30", "AK_TEST_BODY_BYTES": str(LIMIT)}
IMPATIENT = {"AK_TEST_STALL_SECONDS": "2"}
# Less than its dripping reply takes.
HARDLY_PATIENT = ENVIRONMENT | {"AK_TEST_STALL_SECONDS": "4"}
EMPTY_BLOCKS = bytes.fromhex("000000ffff") * 1000  # stored ones of deflate, of no bytes
GZIP_HEAD = bytes.fromhex("1f8b0800000000000003")
GZIP_HEAD_WITH_NAME = bytes.fromhex("1f8b0808000000000003")


def head(*lines, status="200 OK"):
    return "\r\n".join([f"HTTP/1.1 {status}", *lines, "", ""]).encode()


def with_length(body, *lines):
    return head(f"Content-Length: {len(body)}", *lines) + body


def in_chunks(body, size=9):
    pieces = [body[place : place + size] for place in range(0, len(body), size)]
    return b"".join(b"%x\r\n%b\r\n" % (len(piece), piece) for piece in pieces) + b"0\r\n\r\n"


def chunked(size, body=BODY):
    """One chunk with the size as it is written here, and the last chunk."""
    return head(CHUNKED) + size.encode() + b"\r\n" + body + b"\r\n0\r\n\r\n"


def coded(body, *codings):
    return with_length(body, *(f"Content-Encoding: {coding}" for coding in codings))


def reply(data, then="close", endless=b"", **more):
    return {"raw": binary(data), "then": then, "endless": binary(endless), **more}


ZIPPED = gzip.compress(BODY, mtime=0)
DEFLATED = zlib.compress(BODY)
BOMB = gzip.compress(b" " * 50_000_000, mtime=0)


def changed(data, place):
    return data[:place] + bytes([data[place] ^ 1]) + data[place + 1 :]


# Replies that say where they end.
WHOLE = {
    "a length": with_length(BODY),
    "chunks": head(CHUNKED) + in_chunks(BODY),
    "a trailer": head(CHUNKED) + in_chunks(BODY)[:-2] + b"X-Sum: 1\r\n\r\n",
    "gzip": with_length(ZIPPED, GZIP),
    "gzip in chunks": head(CHUNKED, GZIP) + in_chunks(ZIPPED),
    "an interim reply before": head(status="103 Early Hints") + with_length(BODY),
}

# Odd, but clear: the body is BODY.
TAKEN = {
    "HTTP/1.0": reply(b"HTTP/1.0 200 OK\r\n\r\n" + BODY),
    "a status line in small letters": reply(with_length(BODY).replace(b"HTTP", b"http")),
    "no reason": reply(b"HTTP/1.1 200\r\nContent-Length: 24\r\n\r\n" + BODY),
    "lines without a carriage return": reply(b"HTTP/1.1 200 OK\nContent-Length: 24\n\n" + BODY),
    "the same length twice": reply(with_length(BODY, "Content-Length: 24")),
    "a length with zeros before it": reply(head("Content-Length: 00024") + BODY),
    "a length with blanks around it": reply(head("Content-Length: \t 24 \t") + BODY),
    "a length of another body, but chunks": reply(
        head("Content-Length: 5", CHUNKED) + in_chunks(BODY)),
    "chunks of one byte": reply(head(CHUNKED) + in_chunks(BODY, 1)),
    "a chunk with an extension": reply(chunked("18;a=b")),
    "a continued line": reply(with_length(BODY, "X: a", "  Content-Length: 5")),
    "a line named like a status line": reply(with_length(BODY, "HTTP/1.1: 100")),
    "a trailer named like a status line": reply(
        head(CHUNKED) + in_chunks(BODY)[:-2] + b"HTTP/1.1: 100\r\n\r\n"),
    "a line of 90,000 bytes": reply(with_length(BODY, "X: " + 90_000 * "x")),
    "a thousand interim replies": reply(
        head(status="102 Processing") * 1000 + with_length(BODY)),
    "gzip twice": reply(coded(gzip.compress(ZIPPED), "gzip, gzip")),
    "gzip in the transfer": reply(
        head("Transfer-Encoding: gzip, chunked") + in_chunks(ZIPPED)),
    "deflate": reply(coded(DEFLATED, "deflate")),
    "deflate without its frame": reply(coded(DEFLATED[2:-4], "deflate")),
    "no coding under its name": reply(coded(BODY, "identity")),
    "a part of something else": reply(with_length(BODY, "Content-Range: bytes 50-73/99")),
    "two bytes at a time": reply(
        with_length(BODY), drip={"from": len(with_length(BODY)) - 24, "bytes": 2, "seconds": 0.4}),
    "a second reply after it": reply(with_length(BODY) + with_length(b"{}")),
    "clear text after it": reply(with_length(BODY), "clear text"),
    "the largest body": reply(with_length(BODY.ljust(LIMIT))),
}  # fmt: skip


def _unclear_lengths():
    for length in (
        "-1", "-0", "-24", "+24", "", "abc", "24x", "24;", "24,24", "24, 5", "2 4", "0x18", "2.4e1",
        "9223372036854775808", "18446744073709551640", "99999999999999999999",
    ):  # fmt: skip
        yield f"the length {length!r}", reply(head(f"Content-Length: {length}") + BODY), CLIENT
    for first, last in ((24, 5), (5, 24), (24, ""), ("", 24)):
        lines = [f"Content-Length: {length}" for length in (first, last)]
        yield f"the lengths {first} and {last}", reply(head(*lines) + BODY), CLIENT


def _wrong_lengths():
    for longer in (1, 1000, 2**63 - 25):
        lengths = f"Content-Length: {24 + longer}"
        yield f"a body {longer} bytes short", reply(head(lengths) + BODY), BROKEN
    for size in (
        "-5", "+18", " 18", "g", "", "fffffffffffffffff", "ffffffffffffffff", "8000000000000000",
        "7fffffffffffffff", "00000000000000000000018", "1a", "5",
    ):  # fmt: skip
        yield f"the chunk size {size!r}", reply(chunked(size)), BROKEN
    yield "the chunk size '0x18'", reply(chunked("0x18")), CLIENT


def _wrong_compression():
    for name, body, *codings in (
        ("gzip with another checksum", changed(ZIPPED, -8), "gzip"),
        ("gzip with another length", changed(ZIPPED, -4), "gzip"),
        ("gzip with something after it", ZIPPED + b"x", "gzip"),
        ("gzip after gzip", ZIPPED + ZIPPED, "gzip"),
        ("gzip that is none", BODY, "gzip"),
        ("deflate that is none", b"\xff" + BODY, "deflate"),
        ("deflate with another checksum", changed(DEFLATED, -1), "deflate"),
        ("brotli that is none", BODY, "br"),
        ("zstd that is none", BODY, "zstd"),
        ("a coding nobody asked for", BODY, "compress"),
        ("a coding nobody knows", BODY, "x" * 1000),
        ("six codings", ZIPPED, ", ".join(["gzip"] * 6)),
        ("a thousand codings", ZIPPED, *["gzip"] * 1000),
    ):
        yield name, reply(coded(body, *codings)), CLIENT
    yield "a transfer nobody knows", reply(with_length(BODY, "Transfer-Encoding: x")), CLIENT


def _too_large():
    yield "a byte over the limit", reply(with_length(b"x" * (LIMIT + 1))), TOO_LARGE
    yield "a length beyond all limits", reply(
        head(f"Content-Length: {2**63 - 1}"), "keep", b"x" * 5000), TOO_LARGE
    yield "a gzip bomb", reply(coded(BOMB, "gzip")), TOO_LARGE
    yield "a gzip bomb in gzip in gzip", reply(
        coded(gzip.compress(gzip.compress(BOMB)), "gzip, gzip, gzip")), TOO_LARGE
    yield "a deflate bomb", reply(coded(zlib.compress(b" " * 5_000_000), "deflate")), TOO_LARGE
    yield "a line of the head over the limit", reply(
        with_length(BODY, "X: " + 110_000 * "x")), TOO_LARGE


def _endless():
    for name, start, again in (
        ("lines of the head", b"HTTP/1.1 200 OK\r\n", b"X: y\r\n" * 999),
        ("line of the head", b"HTTP/1.1 200 OK\r\nX: ", b"x" * 5000),
        ("status line", b"HTTP/1.1 200 ", b"x" * 5000),
        ("continued line", b"HTTP/1.1 200 OK\r\nX: y\r\n", (b" " + b"x" * 90 + b"\r\n") * 99),
        ("interim replies", b"", head(status="102 Processing") * 99),
        ("body", head(), b"x" * 5000),
        ("chunks", head(CHUNKED), b"3e8\r\n" + b"x" * 1000 + b"\r\n"),
        ("chunks of a byte", head(CHUNKED), b"1\r\nx\r\n" * 999),
        ("trailers", head(CHUNKED) + in_chunks(BODY)[:-2], b"X: y\r\n" * 999),
        ("gzip that comes to nothing", head(GZIP) + GZIP_HEAD, EMPTY_BLOCKS),
        ("gzip that comes to nothing, in chunks", head(CHUNKED, GZIP) + b"a\r\n" + GZIP_HEAD,
         b"\r\n1388\r\n" + EMPTY_BLOCKS),
        ("name in the head of gzip", head(GZIP) + GZIP_HEAD_WITH_NAME, b"x" * 5000),
        ("deflate that comes to nothing", head("Content-Encoding: deflate"), EMPTY_BLOCKS),
        ("gzip in gzip that comes to nothing", head("Content-Encoding: gzip, gzip") + GZIP_HEAD,
         EMPTY_BLOCKS),
    ):  # fmt: skip
        yield f"endless: {name}", reply(start, "keep", again), TOO_LARGE
    for name, start, again, code in (
        ("trailer", head(CHUNKED) + in_chunks(BODY)[:-2] + b"X: ", b"x" * 5000, BROKEN),
        ("chunk size", head(CHUNKED), b"0" * 5000, BROKEN),
        ("empty lines", b"", b"\r\n" * 999, CLIENT),
        ("no HTTP", b"", b"x" * 5000, CLIENT),
    ):
        yield f"endless: {name}", reply(start, "keep", again), code


def _no_http():
    for start in (
        "HTTP/0.9 200 OK", "HTTP/1.2 200 OK", "HTTP/3 200", "HTTP/9.9 200 OK", "HTTP/1.1",
        "HTTP/1.1 000 X", "HTTP/1.1 20 X", "HTTP/1.1 2000 X", "HTTP/1.1 -200 X", "HTTP/1.1 2OO OK",
        "HTTP/1.1 99999999999999999999 X", "ICY 200 OK", "220 mail.example.com ESMTP", "",
    ):  # fmt: skip
        yield f"the status line {start!r}", reply(
            f"{start}\r\nContent-Length: 24\r\n\r\n".encode() + BODY), CLIENT
    yield "no head (HTTP/0.9)", reply(BODY), CLIENT
    yield "a NUL in the head", reply(with_length(BODY, "X: a\0b")), CLIENT
    yield "a line without a colon", reply(with_length(BODY, "no colon")), CLIENT
    yield "a second status line", reply(with_length(BODY, "HTTP/1.1 404 Not Found")), CLIENT


def _odd_ends():
    for name, data in (("the reply", b""), ("the body", head("Content-Length: 24"))):
        for ending in ("close", "abort", "reset", "clear text"):
            yield f"{ending} in place of {name}", reply(data, ending), BROKEN
    yield "only interim replies", reply(head(status="100 Continue") * 9), BROKEN
    yield "another protocol, nobody asked for", reply(
        head("Upgrade: h2c", "Connection: Upgrade", status="101 Switching Protocols")
        + with_length(BODY)), BROKEN  # fmt: skip


def refused():
    """Names, replies and the status that must come of them."""
    for part in (_unclear_lengths, _wrong_lengths, _wrong_compression, _too_large, _endless,
                 _no_http, _odd_ends):  # fmt: skip
        yield from part()


def slow():
    """The same for what takes as long as the stall limit or longer."""
    last = len(with_length(BODY)) - 24
    for name, data, place, seconds in (
        ("a head, a byte at a time", with_length(BODY), 0, 0.06),
        ("a body, a byte in one and a half seconds", with_length(BODY), last, 1.5),
        ("chunks, a byte in one and a half seconds", chunked("18"), len(head(CHUNKED)), 1.5),
    ):
        yield name, reply(data, drip={"from": place, "seconds": seconds}), TIMED_OUT
    yield "an endless extension of a chunk", reply(
        head(CHUNKED) + b"5;", "keep", b"x" * 5000), TIMED_OUT
    yield "interim replies and then nothing", reply(
        head(status="100 Continue") * 9, "stall"), TIMED_OUT
    for place in (0, 5, last - 2, last, last + 23):
        yield f"nothing after {place} bytes", reply(with_length(BODY)[:place], "stall"), TIMED_OUT
