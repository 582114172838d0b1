"""Cases as they stand in TOML files: defaults laid under them and texts built from their parts."""

import gzip
import itertools
import json
import pathlib
import re
import runpy
import tomllib

FOLDER = pathlib.Path(__file__).resolve().parent
STATUS_TEXTS = FOLDER.parent.parent / "platform" / "catalogue" / "StatusTexts.cpp"

KEYS = {
    "name", "args", "argv0", "stdin", "stdin_from", "environment", "dialogue", "tty",
    "stdout_to", "stderr_to", "ignores_sigpipe", "files", "server", "replies", "timeout",
    "stdout", "stderr", "stderr_begins", "status", "signal", "requests", "connections",
    "log", "log_is", "log_absent", "unprivileged", "killed_by", "seen", "longest_file",
    "bystander", "hello",
}  # fmt: skip
REPLY_KEYS = {
    "status", "json", "body", "type", "headers", "coding", "raw", "then", "drip", "endless",
}  # fmt: skip
REQUEST_KEYS = {"method", "target", "headers", "body"}
MEDIA_TYPE = "application/vnd.arkeon+json;version=6.0"


class CaseError(Exception):
    """A case that is not written as README.md says."""


def _merge(below, above):
    """`above` laid over `below`, tables key by key."""
    merged = dict(below)
    for key, value in above.items():
        both_tables = isinstance(value, dict) and isinstance(merged.get(key), dict)
        merged[key] = _merge(merged[key], value) if both_tables else value
    return merged


def _status_texts():
    """The text of every status code, read from the source file that holds the table.

    The entry "Unknown" is the text for a code without a row, with %d for the code.
    """
    literals = r'((?:"(?:[^"\\]|\\.)*"\s*)+)'
    row = re.compile(r'"Status(\d+|Unknown)",(?:[^"]*,)?\s*' + literals)
    texts = {}
    for code, text in row.findall(STATUS_TEXTS.read_text("utf-8")):
        parts = re.findall(r'"((?:[^"\\]|\\.)*)"', text)
        texts[code] = "".join(json.loads(f'"{part}"') for part in parts)
    return texts


def status_text(code, texts=_status_texts()):
    """The text of a status code."""
    return texts.get(str(code)) or texts["Unknown"].replace("%d", str(code))


def shell_status(status):
    """What a shell sees: eight bits, which are never 0 for a failure."""
    return status % 256 or (255 if status else 0)


class Texts:
    """Builds the bytes of a text value: a string with placeholders, a table, or a list of both."""

    PLACEHOLDER = re.compile(r"\{(text:\w+|status:-?\d+|[a-z_]+)\}")

    def __init__(self, named, folder):
        self._named = named
        self._folder = folder

    def bytes(self, value, known):
        """The bytes of `value`; `known` has the placeholders of this run, such as "server"."""
        if isinstance(value, list):
            return b"".join(self.bytes(part, known) for part in value)
        if isinstance(value, str):
            return self.string(value, known).encode()
        if isinstance(value, dict) and set(value) == {"repeat", "times"}:
            return self.bytes(value["repeat"], known) * value["times"]
        if isinstance(value, dict) and set(value) == {"hex"}:
            return bytes.fromhex(value["hex"])
        if isinstance(value, dict) and set(value) == {"from"}:
            return (self._folder / value["from"]).read_bytes()
        raise CaseError(f"{value!r} is no text")

    def string(self, text, known):
        return self.PLACEHOLDER.sub(lambda match: self._resolve(match, known), text)

    def _resolve(self, match, known):
        kind, _, argument = match[1].partition(":")
        try:
            if kind == "text":
                return self.bytes(self._named[argument], known).decode()
            if kind == "status":
                return status_text(argument)
        except KeyError:
            raise CaseError(f"nothing is known for {match[0]}") from None
        return known.get(kind, match[0])


def _check_keys(table, allowed, what):
    unknown = set(table) - allowed
    if unknown:
        raise CaseError(f"{what} has unknown keys: {', '.join(sorted(unknown))}")


def _with_defaults(request, every, by_method):
    """A request of a case laid over what every request has, and over what its method adds."""
    method = request.get("method", every["method"])
    return _merge(_merge(every, by_method.get(method, {})), request)


def _products(products, factors):
    """For each row of `product` every combination of a row of each of its factors."""
    for product in products:
        _check_keys(product, {"factors"}, "a product")
        for rows in itertools.product(*(factors[name] for name in product["factors"])):
            case = {}
            for row in rows:
                case = _merge(case, row)
            yield case | {"name": ": ".join(row["name"] for row in rows)}


def _content(path):
    """What a case file holds: TOML, or a Python program's CASES of the same form."""
    if path.suffix == ".py":
        return runpy.run_path(str(path))["CASES"]
    return tomllib.loads(path.read_text("utf-8"))


def _shared():
    return tomllib.loads((FOLDER / "defaults.toml").read_text("utf-8"))


def shared_text(name):
    """One of the texts that all files of cases have."""
    return Texts(_shared()["texts"], FOLDER).string(f"{{text:{name}}}", {})


def load(path):
    """A file's cases with the defaults laid under them, their texts, and every run's files."""
    path = pathlib.Path(path)
    shared = _shared()
    own = _content(path)
    _check_keys(own, {"defaults", "texts", "case", "factor", "product"}, path.name)
    defaults = _merge(shared["defaults"], own.get("defaults", {}))
    texts = Texts(_merge(shared["texts"], own.get("texts", {})), path.parent)
    request_defaults, by_method = defaults.pop("request"), defaults.pop("request_by_method")
    cases = []
    products = _products(own.get("product", []), own.get("factor", {}))
    for written in itertools.chain(own.get("case", []), products):
        case = _merge(defaults, written)
        case["requests"] = [
            _with_defaults(each, request_defaults, by_method) for each in case["requests"]
        ]
        _check_keys(case, KEYS, case.get("name", "a case without a name"))
        for request in case["requests"]:
            _check_keys(request, REQUEST_KEYS, f"a request of '{case['name']}'")
        cases.append(case)
    names = [case["name"] for case in cases]
    repeated = {name for name in names if names.count(name) > 1}
    if repeated:
        raise CaseError(f"{path.name} has names that stand twice: {', '.join(sorted(repeated))}")
    return cases, texts, shared["standard_files"]


def reply_endless(reply, texts, known):
    """What a scripted reply goes on with for ever; empty: it ends."""
    return texts.bytes(reply.get("endless", ""), known)


def reply_bytes(reply, texts, known):
    """A scripted reply as it goes over the wire."""
    _check_keys(reply, REPLY_KEYS, "a reply")
    if "raw" in reply:
        return texts.bytes(reply["raw"], known)
    body = texts.bytes(reply.get("json", reply.get("body", "")), known)
    headers = {"Content-Type": reply.get("type", MEDIA_TYPE if "json" in reply else "text/html")}
    if reply.get("coding") == "gzip":
        body = gzip.compress(body)
        headers["Content-Encoding"] = "gzip"
    if reply.get("coding") == "chunked":
        pieces = [piece for piece in (body[:10], body[10:]) if piece]
        body = b"".join(b"%x\r\n%b\r\n" % (len(piece), piece) for piece in pieces)
        body += b"0\r\n\r\n"
        headers["Transfer-Encoding"] = "chunked"
    elif reply.get("status", 200) != 204:
        headers["Content-Length"] = str(len(body))
    headers |= reply.get("headers", {})
    lines = [f"HTTP/1.1 {reply.get('status', 200)} Scripted"]
    lines += [f"{name}: {value}" for name, value in headers.items() if value is not False]
    return "\r\n".join([*lines, "", ""]).encode() + body
