"""A language in which every text of the catalogues stands between marks.

What is marked was looked up; without the marks a run prints what it prints in English, but where
help was asked for.
"""

import pathlib
import re
import sys

import sandbox

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "po"))
import line_up
import po_file

# Two bytes each: a marked label is no wider than its column.
OPEN, CLOSE = "«", "»"
MARKED = re.compile(f"{OPEN}(.*?){CLOSE}".encode(), re.DOTALL)
LANGUAGE = "xx"
CATALOGUE = f"root/locale/{LANGUAGE}/LC_MESSAGES/akhostmgmt.mo"
# What chooses the language, as it is where a case says nothing of it.
CHOOSING = {"ARKEON_ROOT": "{folder}/root", "LC_ALL": "C.UTF-8", "LC_MESSAGES": None, "LANG": None,
            "LANGUAGE": None}  # fmt: skip
# Where the room for a text of an operation ends, its second mark is lost.
CUT_TEXT = "a message is cut at 8191 bytes"

UNPADDED_LABEL = "Mapped Names"
ANSWERS = {"Yes", "No"}
FAILURE_ROOM = 1023
CONVERSION = re.compile(r"%[sd]")
# Shorter pieces of a text are found by chance in names, paths and fixed lines.
TELLING = 16
HELP = "Help requested."
UNSUCCESSFUL = "2 akhostmgmt: Command did not complete successfully."


class English:
    """The language in which the cases are written."""

    def speaks(self, case):
        return True

    def expected(self, case, texts, known):
        return case

    def files(self, folder):
        return []

    def plain(self, what, data):
        return data, []


class Marked:
    """The language itself; its catalogue is made from the template."""

    def __init__(self):
        self._entries = po_file.read(PROJECT / "po" / "akhostmgmt.pot")
        self._shown = {entry.context: self._fitting(entry) for entry in self._entries}
        self._texts = {self._shown[entry.context].encode(): entry.text.encode()
                       for entry in self._entries}  # fmt: skip
        self._padded = {self._shown[entry.context].encode() for entry in self._entries
                        if line_up.LABELS in entry.files and entry.text != UNPADDED_LABEL}  # fmt: skip
        formats = [text for text in self._texts.values() if CONVERSION.search(text.decode())]
        self._filled = re.compile(b"|".join(map(filled_in, formats)), re.DOTALL)
        self._unmarked = self._pattern_of_unmarked()

    @staticmethod
    def _fitting(entry):
        """The text between the marks; of a label as much as there is room for."""
        room = line_up.room(entry.context) - line_up.size(OPEN + CLOSE)
        return entry.text[:room] if line_up.LABELS in entry.files else entry.text

    def _pattern_of_unmarked(self):
        """What of the catalogue's texts is told from other output without its marks."""
        pieces = {re.escape(piece) for text in self._texts.values()
                  for piece in CONVERSION.split(text.decode())
                  if len(piece) >= TELLING}  # fmt: skip
        answers = "|".join(sorted(ANSWERS))
        labels = "|".join(re.escape(entry.text) for entry in self._entries
                          if line_up.LABELS in entry.files and entry.text not in ANSWERS)  # fmt: skip
        pieces |= {rf"(?m:^(?:{labels}) *(?: : |  ))", rf"(?:{answers}) {{2,}}(?:{answers}) {{2,}}"}
        return re.compile("|".join(sorted(pieces)).encode())

    def speaks(self, case):
        """Whether the case says nothing of the language, so that this one can be set."""
        own = any("locale" in str(row["path"]) for row in case["files"])
        environment = {name: case["environment"].get(name) for name in CHOOSING}
        return not own and environment == CHOOSING and case["name"] != CUT_TEXT

    def files(self, folder):
        """The row that makes the catalogue; it is compiled once, below `folder`."""
        compiled = folder / "marked.mo"
        if not compiled.exists():
            rows = [(entry.context, entry.text, OPEN + self._shown[entry.context] + CLOSE)
                    for entry in self._entries]  # fmt: skip
            compiled.write_bytes(sandbox.compiled_catalogue(rows))
        return [{"path": CATALOGUE, "text": {"from": compiled}}]

    def expected(self, case, texts, known):
        """The case as it is in this language."""
        case = case | {"environment": case["environment"] | {"LANGUAGE": LANGUAGE}}
        if asks_for_help(case, texts, known):
            return shown_as_failure(case)
        if case.get("status") == 144 and "stderr_begins" not in case:
            stderr = texts.bytes(case["stderr"], known)
            # What a terminal is shown is longer than what was cut.
            if not ("stderr" in case.get("tty", []) and b"\\x" in stderr):
                case["stderr"] = {"hex": cut_failure(stderr).hex()}
        return case

    def plain(self, what, data):
        """The output without the marks, and what is wrong with these."""
        problems = []

        def unmarked(match):
            shown = match[1]
            if shown not in self._texts and not self._filled.fullmatch(shown):
                problems.append(f"{what}: marked, but not in the catalogue: {shown!r}")
            text = self._texts.get(shown, shown)
            return text.ljust(len(match[0])) if shown in self._padded else text

        text = MARKED.sub(unmarked, data)
        for found in self._unmarked.findall(MARKED.sub(b"\0", data)):
            problems.append(f"{what}: in the catalogue, but not marked: {found!r}")
        return text, problems


def filled_in(text):
    """The pattern of a text with any arguments."""
    pieces = map(re.escape, CONVERSION.split(text.decode()))
    return ".*".join(pieces).encode()


def asks_for_help(case, texts, known):
    """Whether the case shows an operation's usage because it was asked for."""
    stdout = texts.bytes(case["stdout"], known)
    top_level = texts.string("{text:top_level_help}", known).encode()
    return stdout.startswith(b"\nUSAGE:\n") and stdout != top_level and not case.get("status")


def shown_as_failure(case):
    """The case whose request for help is not understood as one."""
    changed = {"status": 144, "stderr": [f"{HELP}\n", case["stderr"]]}
    for key in ("log", "log_is"):
        if key in case:
            lines = [[UNSUCCESSFUL, "2 akhostmgmt: Return value is: 144"]
                     if line == "2 akhostmgmt: Return value is: 0" else [line]
                     for line in case[key]]  # fmt: skip
            changed[key] = sum(lines, [])
    return case | changed


def cut_failure(stderr):
    """What is left of a failure's text where the marks take some of its room."""
    room = FAILURE_ROOM - line_up.size(OPEN + CLOSE)
    if len(stderr) - 1 <= room:
        return stderr
    while stderr[room] & 0xC0 == 0x80:  # no letter of UTF-8 is split
        room -= 1
    return stderr[:room] + b"\n"
