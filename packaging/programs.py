"""What the installed programs say about their options: read from their own help, so that the pages of the manual and the
completions of shells tell of those that there are."""
import os
import re
import subprocess
from typing import NamedTuple

# The layout of getopt's tradition: names, an argument, and beside them or on the next line what the option does.
ROW = re.compile(r"^ {2,6}(?P<names>--?[A-Za-z][\w-]*(?:, --?[\w-]+)*)(?P<argument>\[=[^\]]*\]|[ =]\{[^}]*\}|[ =][A-Z]+(?!\S))?"
                 r"(?: +(?P<text>\S.*))?$")
# That of morvik: between tabs, `-pp<processor speed in MHz>`.
TABBED = re.compile(r"^\t(?P<name>-\w+)(?:<(?P<argument>[^>]+)>)? ?(?:\t(?P<text>.*))?$")


class Option(NamedTuple):
    names: tuple  # such as -l and --library
    argument: str  # its name in capitals, choices as {a,b}, a choice that may be left out as [=a]; empty where there is none
    text: str

    def optional(self):
        return self.argument.startswith("[")

    def choices(self):
        """The words that the argument may be, where it is one of few."""
        bare = self.argument.strip("[=]{}")
        return bare.split(",") if self.argument[:1] in ("{", "[") and bare.islower() or "," in bare else []


class Program(NamedTuple):
    name: str
    options: list


def help_of(command, option):
    # One width and one language whatever the terminal of the build is.
    return subprocess.run([*command, option], capture_output=True, text=True, check=True,
                          env={**os.environ, "COLUMNS": "100", "LC_ALL": "C.UTF-8"}).stdout


def rowed(text):
    """Options as getopt's and argparse's help lays them out."""
    found = []
    for line in text.splitlines():
        row = ROW.match(line)
        if row:
            argument = (row["argument"] or "").lstrip(" =")
            found.append(Option(tuple(row["names"].split(", ")), argument, row["text"] or ""))
        elif found and re.match(r"^ {12,}\S", line):
            found[-1] = found[-1]._replace(text=(found[-1].text + " " + line.strip()).strip())
        elif line.strip() == "" and found and found[-1].text:
            found.append(None)  # what follows is no continuation
    return [option for option in found if option]


def tabbed(text):
    """Options as morvik lists them. One without a text shares that of the next."""
    found = []
    for line in text.splitlines():
        row = TABBED.match(line)
        if row:
            found.append(Option((row["name"],), row["argument"] or "", (row["text"] or "").strip()))
        elif found and line.startswith("\t\t"):
            before = found[-1].text
            stop = "." if before and before[-1] not in ".,:" and line.strip()[:1].isupper() else ""
            found[-1] = found[-1]._replace(text=(before + stop + " " + line.strip()).strip())
    for place in reversed(range(len(found) - 1)):
        if not found[place].text:
            found[place] = found[place]._replace(text=found[place + 1].text)
    return [option._replace(text=option.text[:1].upper() + option.text[1:]) for option in found]


def described(name, command):
    """The program of that name, which `command` starts. Only the interpreter has a help of its own kind."""
    own = name in ("morvik", "morvik-confined")
    options = tabbed(help_of(command, "-h")) if own else rowed(help_of(command, "--help"))
    if not options:
        raise SystemExit("%s: its help shows no options" % name)
    return Program(name, options)
