#!/usr/bin/env python3
"""Writes docs/messages.md: every numbered message, from the table that the interpreter takes them from, and the words that
were found to raise it.

    messages.py            writes the page; what its sessions show is kept, and tests/pages/run.py --update runs new ones
    messages.py --check    says where the page is not the one that the table makes, or a session does not show its message
"""
import re
import sys

import tables
import words

TARGET = tables.ROOT / "docs" / "messages.md"
SESSION = re.compile(r"^```morvik\nMorvik \[0\]> (.*?) \.\n(.*?)^```$", re.M | re.S)

OPENING = """# Messages

Every failure has a number, and its text is written to standard error, with the word at work under it. What ends a word
that works on elements or arrays (those sessions go on with `Exception processing:...`) ends the whole text; what ends
another word ends the function that it is in, and the caller goes on. Nothing is lost: what was set stays set, and the
stack keeps what is said here.

Some texts speak of another number than their own, or of none; the number here is the one that counts.

This page is made by `tools/reference/messages.py`. [All words](words.md) tells what each word asks for.
"""
KEPT = """
## Rows that nothing raises

These are in the table, and no word reports them.

| | |
| --- | --- |
"""
BANDS = [(0, "Arrays and the language"), (200, "The whole process"), (700, "Files and `INPUT`"), (800, "The machine and the stack"),
         (949, "Control"), (1000, "Encapsulation and shapes")]


# Raised by no word of its own: greetings, what any word may report, and what is found while a text is compiled.
UNBOUND = {0, 27, 74, 150, 151, 152, 200, 205, 206, 806, 807, 808, 809, 810, 993, 999}
FEW = 12  # words that a line names


def raisers():
    """By number, the words that were found to raise a message."""
    found = {}
    for title, (_, _, numbers) in words.findings().items():
        for number in numbers:
            found.setdefault(number, []).append(title)
    return found


def session(row, shown):
    return "\n```morvik\nMorvik [0]> %s .\n%s```\n" % (row.session, shown.get(row.session, ""))


def entry(row, shown, raised):
    made = "\n### %d\n\n    %s\n\n%s" % (row.number, row.text.replace("\n", "\n    "), row.when)
    if raised:
        told = ", ".join("[`%s`](words.md#%s)" % (title, title.lower()) for title in raised)
        made += "\n\n*Words:* %s" % (told if len(raised) <= FEW else "%d; [their page](words.md) names it at each." % len(raised))
    if row.left:
        made += "\n\n*Left:* %s%s" % (row.left[0].lower(), row.left[1:])
    if row.cure:
        made += "\n\n*What to do:* %s" % row.cure
    return made + "\n" + (session(row, shown) if row.session else "")


def page(shown):
    parts, bands, raised = [OPENING], list(BANDS), raisers()
    for row in sorted(tables.messages()):
        while bands and row.number >= bands[0][0] and row.number != 999:
            parts.append("\n## %s\n" % bands.pop(0)[1])
        parts.append(entry(row, shown, raised.get(row.number)))
    parts.append(KEPT + "".join("| %d | %s |\n" % (number, text.replace("|", "\\|").replace("\n", " "))
                                for number, text in tables.keptmessages()))
    return "".join(parts)


def main():
    present = TARGET.read_text(encoding="utf-8") if TARGET.exists() else ""
    shown = dict(SESSION.findall(present))
    made = page(shown)
    if sys.argv[1:] != ["--check"]:
        TARGET.write_text(made, encoding="utf-8")
        return 0
    faults = [] if made == present else ["docs/messages.md is not what the table makes: run tools/reference/messages.py"]
    faults += ["docs/messages.md: the session of %d does not show it" % row.number for row in tables.messages()
               if row.session and row.text.split("\n")[0] not in shown.get(row.session, "")]
    faults += ["docs/messages.md: no word raises %d" % row.number for row in tables.messages()
               if (row.number in raisers()) == (row.number in UNBOUND)]
    print(*faults, sep="\n", end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
