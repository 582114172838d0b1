"""Manual pages: what their source says, and what a reader sees."""

import pathlib
import re
import subprocess

import local_server

WIDTH = 78  # the columns that a formatter fills on a terminal of 80
NAMES = ("akhostmgmt.1", "akhostmgmt-files.5", "akdevserver.1")
PROGRAMS = local_server.PROGRAMS
FORMATTERS = {
    "mandoc": ("mandoc", "-T", "utf8", "-O"),
    "groff": ("groff", "-mandoc", "-T", "utf8", "-P-c", "-P-b", "-P-u"),
}
MACRO = re.compile(r"[A-Z][a-z]{1,2}")
DELIMITERS = set("|.,:;()[]?!")


def built(name):
    return PROGRAMS.pages / name


def source(name):
    return PROGRAMS.source / "man" / f"{name}.in"


def code(*folders):
    """The text of all sources in these folders, with adjacent literals joined."""
    files = sorted(path for folder in folders for path in (PROGRAMS.source / folder).rglob("*")
                   if path.suffix in (".h", ".cpp"))  # fmt: skip
    return re.sub(r'"\s*\n\s*"', "", "".join(path.read_text() for path in files))


def rendered(path, formatter, width=WIDTH):
    """The page as a terminal shows it, without bold and underlined letters."""
    setting = f"width={width}" if formatter == "mandoc" else f"-rLL={width}n"
    run = subprocess.run([*FORMATTERS[formatter], setting, path], capture_output=True, check=True)
    return re.sub(".\b", "", run.stdout.decode())


def literal_blocks(name, section):
    """The texts of the literal blocks of a section, as the page's source has them."""
    body = re.search(rf"^\.Sh {section}\n(.*?)(?=^\.Sh |\Z)", source(name).read_text(), re.S | re.M)
    return re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed$", body[1], re.S | re.M)


def macro_lines(path):
    """Every macro line as (section, subsection, words); a subsection is named by its line."""
    section = subsection = ""
    for line in path.read_text().splitlines():
        words = re.findall(r'"[^"]*"|\S+', line)
        if not line.startswith("."):
            continue
        if words[0] == ".Sh":
            section, subsection = " ".join(words[1:]), ""
        elif words[0] == ".Ss":
            subsection = " ".join(words[1:])
        yield section, subsection, [words[0][1:], *words[1:]]


def arguments(words, macro):
    """What a macro on the line is given, as mdoc(7) has it: up to the next macro."""
    found, current = [], None
    for word in words:
        if MACRO.fullmatch(word):
            current = word
        elif current == macro and word not in DELIMITERS:
            found.append(word.replace("\\-", "-").replace("\\(ti", "~"))
    return found


def items(path, section, macro):
    """Of each list entry in a section, what the macro is given there; entries without it not."""
    lines = (words for at, _, words in macro_lines(path) if at == section and words[0] == "It")
    return [found for found in (arguments(words, macro) for words in lines) if found]


def absolute(path):
    return pathlib.Path(path).absolute()


def run(description):
    parser = local_server.argument_parser(description)
    folders = {"--pages": "the built pages", "--source": "the source tree",
               "--tables": "the tables as files"}  # fmt: skip
    for name, content in folders.items():
        parser.add_argument(name, required=True, type=absolute, help=content)
    return local_server.run_with(parser)
