"""Completions: words with what they mean, the person's names, signs, and file names inside quotes."""
import os
import re

from prompt_toolkit.completion import Completer, Completion

from . import words
from .scanner import Scan
from .signs import TYPED, onecharacter

FILEWORDS = {"READ", "WRITE", "APPEND", "READTEXT", "TEXTREAD", "TEXTWRITE", "WRITETEXT", "APPENDTEXT", "TEXTAPPEND", "OPEN",
             "MSBOPEN", "LSBOPEN", "SAVE", "LOAD", "DUMP", "DUMPSTACK", "REMEMBER"}
NAMED = re.compile(r"@([_$.]?[A-Za-z][^\s.;!'\"()]*)")
PARTIAL = re.compile(r"[^\s()'\"]*\Z")
TYPEDSIGN = re.compile(r"\\[a-z]+\Z")
ENOUGH = 2  # letters before completions show by themselves
LONGEST = 20000  # characters of a text that is looked at while one types


def namesin(text):
    """The names that a text gives values to, as it writes them."""
    return NAMED.findall(text)


def typedsign(before):
    """(letters, sign) where what stands before the cursor is a sign spelled out."""
    match = TYPEDSIGN.search(before)
    return (len(match.group()), TYPED[match.group()]) if match and match.group() in TYPED else None


def isfilestring(after):
    """Does a word that works on files follow the string that the cursor is in?"""
    _, quote, rest = after.partition("'")
    return bool(quote) and bool(FILEWORDS & set(rest.split(".")[0].split()))


class MorvikCompleter(Completer):
    def __init__(self, names, withsigns=True):
        self.names = names  # a function: the person's names
        self.withsigns = withsigns

    def get_completions(self, document, complete_event):
        before = document.text_before_cursor
        if len(before) > LONGEST:
            return
        opened = Scan(onecharacter(before)).opened
        if opened and opened[-1].what == "string":
            asked = complete_event.completion_requested
            if asked or isfilestring(document.text_after_cursor):
                yield from files(before[opened[-1].start + 1:])
            return
        if opened and opened[-1].what == "comment":
            return
        part = PARTIAL.search(before).group()
        if not part or (len(part) < ENOUGH and not complete_event.completion_requested):
            return
        yield from self.complete(part)

    def complete(self, part):
        if part.startswith("?") and len(part) > 1:
            part = part[1:]
        if part.startswith("\\"):
            for typed, sign in TYPED.items():
                if typed.startswith(part):
                    yield Completion(sign, -len(part), display="%s %s" % (sign, typed), display_meta=meaning(sign))
            return
        for name in sorted(set(self.names())):
            if name.startswith(part) and name != part or ("@" + name).startswith(part):
                yield Completion("@" + name if part[0] == "@" else name, -len(part), display_meta="a name of yours")
        for word in words.WORDS:
            yield from self.spellings(word, part)

    def spellings(self, word, part):
        for spelling in word.signed():
            if spelling.isascii() and spelling.startswith(part.upper()) and spelling[0].isalpha():
                signs = [other for other in word.signed() if not other.isascii()] if self.withsigns else []
                display = spelling + ("  " + " ".join(signs) if signs else "")
                yield Completion(spelling, -len(part), display=display, display_meta=word.line())


def meaning(sign):
    found = words.MEANINGS.get(sign)
    return found[0].line() if found else ""


def files(part):
    """The files that a name may go on to, in the folder that it names."""
    folder, _, begun = part.rpartition("/")
    try:
        entries = sorted(os.scandir(folder or ("/" if part.startswith("/") else ".")), key=lambda entry: entry.name)
    except OSError:
        return
    for entry in entries:
        if entry.name.startswith(begun) and (begun or not entry.name.startswith(".")):
            name = entry.name + ("/" if entry.is_dir() else "")
            yield Completion(name.replace("'", "''"), -len(begun), display=name)
