"""The blanks around the labels of the listing, with which they line up on a screen.

The listing fills its labels up to a number of bytes, so that one with letters of more bytes than
columns gets too few blanks. In the host's block every label ends in blanks of several bytes, so
many that all labels get as few; those of the tables have ordinary blanks.
"""

import pathlib
import re
import unicodedata

LABELS = "hostmgmt/listing/ListLabels.cpp"
LISTING = pathlib.Path("hostmgmt/listing/ListPrinter.cpp")
HOST_ID, MAPPED_NAMES, TRUST_VERSION = "SmeHmm0039N", "SmeHmm0029N", "SmeHmm0168N"
YES, NO = "SmeHmm0037N", "SmeHmm0038N"
# The heads of the mapping table, and whether Yes and No stand below them.
HEADS = {
    "SmeHmm0030N": False, "SmeHmm0031N": True, "SmeHmm0032N": True, "SmeHmm0033N": True,
    "SmeHmm0034N": True, "SmeHmm0035N": False, "SmeHmm0036N": False,
}  # fmt: skip
LAST_HEAD = "SmeHmm0036N"  # nothing stands beside it
OUTSIDE_BLOCK = {*HEADS, MAPPED_NAMES, YES, NO}
# A blank of two bytes, which every font has, and one of three, where there is little room.
TWO_BYTES, THREE_BYTES = "\u00a0", "\u2002"


def room(context):
    """The bytes that a label may have."""
    return 63 if context == TRUST_VERSION else 39


def columns(line):
    """The columns that a line takes on a screen."""
    wide = sum(unicodedata.east_asian_width(letter) in "WF" for letter in line)
    return len(line.expandtabs(8)) + wide


def size(text):
    return len(text.encode())


def surplus(text):
    """By how many a text has more bytes than columns."""
    return size(text) - columns(text)


def head_widths(root):
    """The bytes of each column of the mapping table, by the context of its head."""
    text = (root / LISTING).read_text("utf-8")
    numbers = re.search(r"columnWidths = \{([\d, ]+)\}", text)[1].split(",")
    return dict(zip(HEADS, map(int, numbers)))


def head_columns(widths, labels):
    """The columns that each column of the mapping table takes on a screen."""
    lost = surplus(labels[YES])
    return {context: widths[context] - (lost if is_boolean else 0)
            for context, is_boolean in HEADS.items()}  # fmt: skip


def lined_up(labels, widths):
    """The labels with the blanks that they need, by context."""
    words = {context: text.strip() for context, text in labels.items()}
    wanted = max(surplus(word) for context, word in words.items() if context not in OUTSIDE_BLOCK)
    shown = head_columns(widths, words)
    for context, word in words.items():
        if context in HEADS:
            words[context] = _head(word, widths[context], shown[context], context == LAST_HEAD)
        elif context not in OUTSIDE_BLOCK:
            words[context] = _block_label(word, wanted - surplus(word), room(context))
    # Behind the host ID's label, which is filled up as short of columns as that is.
    words[MAPPED_NAMES] = " " * wanted + words[MAPPED_NAMES]
    return words


def _block_label(word, missing, most):
    long_ones = max(0, size(word) + missing * 2 - most)  # each saves a byte
    return word + THREE_BYTES * long_ones + TWO_BYTES * (missing - 2 * long_ones)


def _head(word, width, shown, is_last):
    if is_last or columns(word) + max(0, width - size(word)) == shown:
        return word
    return word + " " * (shown - columns(word))
