"""Writes a source anew with all its mutants, each behind the question whether it is in force."""

import re
import subprocess

LOCATION = re.compile(r"^(.*?):(\d+):(\d+): (?:fatal )?error: ", re.MULTILINE)


class Rewriting:
    """A source's text with its mutants, and where in it each of them came to stand."""

    def __init__(self, source, mutants, constexpr_words):
        self._source = source
        self._pieces = []
        self._size = 0
        self.places = []  # (start, end, numbers) in the new text; inner places come first
        self._nodes = {}
        for each in mutants:
            self._nodes.setdefault((each.start, each.end), []).append(each)
        self._words = {
            start for start, end in constexpr_words
            if any(start < low and high <= end for low, high in self._nodes)
        }  # fmt: skip
        ranges = sorted(self._nodes, key=lambda node: (node[0], -node[1]))
        self._write(0, len(source), ranges)
        self.text = b"".join(self._pieces)

    def _put(self, text):
        text = text.encode() if isinstance(text, str) else text
        self._pieces.append(text)
        self._size += len(text)

    def _plain(self, start, end):
        for word in sorted(self._words):
            if start <= word < end:
                self._put(self._source[start:word] + b"const")
                start = word + len(b"constexpr")
        self._put(self._source[start:end])

    def _write(self, start, end, ranges):
        """What stands between two offsets; `ranges` are the nodes in it, outer ones first."""
        while ranges:
            low, high = ranges[0]
            inside = [each for each in ranges[1:] if each[1] <= high and each[0] >= low]
            self._plain(start, low)
            self._node((low, high), inside)
            start = high
            ranges = ranges[1 + len(inside) :]
        self._plain(start, end)

    def _node(self, node, inside):
        begin = self._size
        mutants = self._nodes[node]
        omitted = [each for each in mutants if each.changed is None]
        changed = [each for each in mutants if each.changed is not None]
        for each in omitted:
            self._put(f"if (!mutation::on({each.number})) ")
        self._put("(" * bool(changed))
        for each in changed:
            place = self._size
            self._put(f"mutation::on({each.number}) ? ({each.changed}) : ")
            self.places.append((place, self._size, {each.number}))
        if changed:
            self._put("bool(" if any(each.is_condition for each in changed) else "(")
        self._write(*node, inside)
        self._put("))" if changed else "")
        self.places.append((begin, self._size, {each.number for each in mutants}))

    def numbers_at(self, line, column):
        """The mutants of the innermost place there; all of the line where there is none."""
        lines = self.text.split(b"\n")
        before = sum(len(each) + 1 for each in lines[: line - 1])
        offset = before + column - 1
        around = [place for place in self.places if place[0] <= offset < place[1]]
        if around:
            return min(around, key=lambda place: place[1] - place[0])[2]
        end = before + len(lines[line - 1])
        found = [numbers for low, high, numbers in self.places if before <= low and high <= end]
        return set().union(*found)


def compilable(source, mutants, constexpr_words, path, command, folder):
    """Writes the source with those mutants that compile to `path`; returns them.

    `command`, run in `folder`, compiles `path`.
    """
    while True:
        rewriting = Rewriting(source, mutants, constexpr_words)
        path.write_bytes(rewriting.text)
        run = subprocess.run(command, cwd=folder, capture_output=True, text=True)
        if run.returncode == 0:
            return mutants
        wrong = set()
        for file, line, column in LOCATION.findall(run.stderr):
            if file == str(path):
                wrong |= rewriting.numbers_at(int(line), int(column))
        if not wrong:
            raise SystemExit(f"{path} does not compile, and no mutant is the reason:\n{run.stderr}")
        mutants = [each for each in mutants if each.number not in wrong]
