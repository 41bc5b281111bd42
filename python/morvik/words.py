"""What the language's words mean: help at the prompt, and the lines beside completions."""
import difflib
import re
import textwrap

from . import signs, vocabulary


class Word:
    def __init__(self, spellings, needs, effect, meaning, session=""):
        self.spellings, self.needs, self.effect, self.meaning, self.session = spellings, needs, effect, meaning, session

    def signed(self):
        """Its spellings as people type them."""
        return [withsigns(spelling) for spelling in self.spellings]

    def line(self):
        return "  ".join(part for part in (self.effect, self.meaning.replace("`", "")) if part)


def withsigns(spelling):
    return "".join(signs.SIGNS.get(ord(char), char) for char in spelling)


def allwords():
    for row in vocabulary.WORDS:
        yield Word(*row)
    for spellings, meaning in vocabulary.STRUCTURE:
        yield Word([part for spelling in spellings for part in [spelling.split()[0]]], 0, "", meaning)
    for spellings, meaning in vocabulary.CONSTANTS:
        yield Word(spellings, 0, "", meaning)


WORDS = list(allwords())
MEANINGS = {}
for _word in WORDS:
    for _spelling in _word.signed():
        MEANINGS.setdefault(_spelling, []).append(_word)
MESSAGES = {number: rest for number, *rest in vocabulary.MESSAGES}

FINDING = """\
?WORD   what a word means, takes and leaves      ?SIN
?TEXT   the words whose meaning holds a text     ?inverse
?23     a message: what it says, why, what helps
?signs  all signs, and how they are typed
?keys   the keys of this prompt
Words take what they need from the stack and leave their results there; a text ends at a full stop: 1 2 + ."""
KEYS = """\
Enter   sends a whole text, else opens a line      Esc Enter  sends at once, with a full stop
Tab     completes words, names, files, signs       Ctrl-R     searches history
Ctrl-C  drops the text; breaks a programme off     Ctrl-D     ends, on an empty line
F2      shows or hides the stack                   F3         shows all of the last output
F4      keys of Emacs or of Vi                     F5         a full stop at the end of each line, or not"""


def answer(question, example=None):
    """The help that a line beginning with a question mark asks for. `example` runs a text, or one made for a word, and
    returns the session."""
    question = question.strip()[1:]
    if not question:
        return FINDING
    if question == "keys":
        return KEYS
    if question == "signs":
        return "\n".join("%s  %02X  %-18s %s" % (sign, byte, typed, twin) for byte, sign, typed, twin in vocabulary.GLYPHS)
    if question.isdigit():
        return message(int(question), example)
    found = MEANINGS.get(question) or MEANINGS.get(question.upper()) or MEANINGS.get(signs.TYPED.get(question, ""))
    return "\n\n".join(map(lambda word: page(word, example), found)) if found else search(question)


def page(word, example):
    lines = ["  ".join(word.signed())]
    if word.effect:
        lines.append("  %s%s" % (word.effect, "   (needs %d)" % word.needs if word.needs else ""))
    lines += textwrap.wrap(word.meaning.replace("`", ""), 76, initial_indent="  ", subsequent_indent="  ")
    session = example(word) if example else None
    return "\n".join(lines + (["", textwrap.indent(session, "  ")] if session else []))


def message(number, example=None):
    if number not in MESSAGES:
        return "There is no message %d." % number
    text, when, left, cure, shown = MESSAGES[number]
    lines = [text, *told("When:  ", when), *told("Left:  ", left), *told("Helps: ", cure)]
    session = example(shown + " .") if example and shown else None
    return "\n".join(lines + (["", textwrap.indent(session, "  ")] if session else []))


def told(title, text):
    """A column of the table, as lines."""
    return textwrap.wrap(text.replace("`", ""), 84, initial_indent="  " + title, subsequent_indent=" " * (2 + len(title)))


def search(text):
    """Words that speak of a text, or are spelled like it."""
    found = [word for word in WORDS if re.search(re.escape(text), word.meaning, re.I)
             or any(text.upper() in spelling for spelling in word.spellings)]
    if not found:
        close = difflib.get_close_matches(text.upper(), MEANINGS, 3)
        return "Nothing speaks of %s.%s" % (text, " Is it %s?" % " or ".join(close) if close else " ? tells how to find things.")
    lines = ["%-24s %s" % ("  ".join(word.signed())[:24], word.line()) for word in found[:20]]
    return "\n".join(lines + (["... and %d more" % (len(found) - 20)] if len(found) > 20 else []))
