"""The pages of the documentation: their blocks of code, their spans of code, and their links."""

import pathlib
import re
from dataclasses import dataclass

TOP = pathlib.Path(__file__).resolve().parents[2]
PATTERNS = ("*.md", "docs/*.md", "packaging/*.md", "tests/*/README.md")


@dataclass
class Block:
    """A block of code: the word behind its opening fence, the line it begins in, its text."""

    kind: str
    line: int
    text: str


class Page:
    """A page in Markdown (CommonMark): fenced blocks of code, and everything else."""

    FENCE = re.compile(r"( *)```(\w*)$")

    def __init__(self, path):
        self.path = path
        self.name = str(path.relative_to(TOP))
        self.blocks, prose, block = [], [], None
        for number, line in enumerate(path.read_text().splitlines(), 1):
            fence = self.FENCE.match(line)
            if fence and block is None:
                block, indent = Block(fence[2], number, ""), len(fence[1])
            elif fence:
                self.blocks.append(block)
                block = None
            elif block is not None:
                block.text += line[indent:] + "\n"
            else:
                prose.append(line)
        if block is not None:
            raise ValueError(f"{self.name}: the block of line {block.line} has no end")
        self.prose = "\n".join(prose)

    def spans(self):
        """The spans of code among the prose."""
        return [" ".join(span.split()) for span in re.findall(r"`([^`]+)`", self.prose)]

    def links(self):
        """Where the links and the pictures lead that are no addresses of the web."""
        targets = re.findall(r"\]\(([^)\s]+)\)", self.prose)
        return [target for target in targets if not target.startswith(("http:", "https:"))]

    def anchors(self):
        """The names of the headings as places to link to, in the form that web views give them."""
        headings = re.findall(r"^#+ (.*)$", self.prose, re.MULTILINE)
        return {re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-") for text in headings}


def all_paths():
    return sorted(path for pattern in PATTERNS for path in TOP.glob(pattern))


def commands(text):
    """The commands of a block of shell: comments left out, continued lines joined."""
    found, command = [], ""
    for line in text.splitlines():
        if not command and re.match(r"\s*(#|$)", line):
            continue
        command += line
        if command.endswith("\\"):
            command = command[:-1]
            continue
        found.append(" ".join(re.sub(r"\s+# .*$", "", command).split()))
        command = ""
    return found
