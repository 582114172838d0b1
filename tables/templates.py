"""Templates of the files that are made from the tables: @NAME@ stands for lines."""

import re


def filled(template, lines_by_name):
    """The template with its names replaced.

    A name alone on its line stands for any number of lines, all indented as it is; elsewhere for
    one line's text.
    """
    def lines_of(match):
        return "".join(f"{match[1]}{line}\n" for line in lines_by_name[match[2]])

    whole_lines = re.sub(r"^( *)@(\w+)@\n", lines_of, template, flags=re.M)
    return re.sub(r"@(\w+)@", lambda match: lines_by_name[match[1]][0], whole_lines)
