#!/usr/bin/env python3
"""Runs the sessions that the pages show, at a pseudo-terminal, and compares them as they are on the page.

    run.py [--update] BINARY PAGE.md...

A session is a fenced block whose info line is `morvik`, with the options of the run if it has any; `morvik more` goes on
with the session before it on the page. What follows `Morvik [n]> ` is typed, and so are the lines after it until one ends
with `.` or `END`; what follows `Inspect [n]: ` is typed too. The rest is expected. Blank lines at the end of a block, and
blanks at the end of a line, count for nothing. Where the run has options, measured figures stand for any others. The option
`lib=NAME` reads lib/NAME.morvik before the session begins, `editor=COMMAND` is what `EDIT` starts; they are none of the run.
--update writes what the sessions show into the pages; it is to be read, and derived, before it is committed.
"""
import difflib
import os
import pathlib
import re
import shutil
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "terminal"))
from terminal import Silence, Terminal  # noqa: E402

LIBRARY = "lib="
EDITOR = "editor="
LIBRARIES = pathlib.Path(__file__).resolve().parents[2] / "lib"
FENCE = re.compile(r"^```(\S*) *(.*)$")
PROMPT = re.compile(r"^(?:Morvik \[\d+\]>|Inspect \[\d+\]:) ?")
LASTPROMPT = re.compile(r"(?:Morvik \[\d+\]> |Inspect \[\d+\]: |)$")
MEASURED = (
    re.compile(r"(?<=performance: )\S+"),
    # A figure and its unit; what is counted, and not timed, is the same in every run.
    re.compile(r" *(?:(?:\d+:)?\d+\.\d+|inf) *(?!(?:[GMK]?(?:ops|flops?(?!/S)|verbs))\b)[A-Za-z:/%]+,? *"),
    re.compile(r"\d\d\.\d\d \d{3}mS \d{3}uS"),
    re.compile(r"\d\d:\d\d:\d\d\.\d{6}"),
)
ENDED = re.compile(r"(?:\.|(?<![A-Za-z_0-9])END)$")


def sessions(page):
    """The sessions of a page: options, and blocks, each the number of its first line and its lines."""
    found, block, kind = [], None, None
    for number, line in enumerate(page.read_text().splitlines(), 1):
        fence = FENCE.match(line)
        if fence and block is None:
            block, kind = (number + 1, []), fence.groups()
        elif fence:
            if kind == ("morvik", "more") and found:
                found[-1][1].append(block)
            elif kind[0] == "morvik":
                found.append((kind[1].split(), [block]))
            block = None
        elif block is not None:
            block[1].append(line)
    return found


def typed(lines):
    """The texts that a block types, each as its lines."""
    texts, unfinished = [], False
    for line in lines:
        if PROMPT.match(line):
            texts.append([PROMPT.sub("", line)])
        elif unfinished:
            texts[-1].append(line)
        else:
            continue
        unfinished = not line.startswith("Inspect") and not ENDED.search(line.rstrip())
    return texts


def perform(terminal, prompt, lines):
    """Types what a block types. Returns what the terminal shows from the block's first prompt on, and the last one."""
    shown = ""
    for text in typed(lines):
        terminal.type(("\n".join(text) + "\n").encode().decode("latin-1"))  # the page is UTF-8
        answer = terminal.answer()
        start = LASTPROMPT.search(answer).start()
        shown += prompt + answer[:start]
        prompt = answer[start:]
    return shown, prompt


def compared(text, measured):
    """What of a text counts."""
    if measured:
        for pattern in MEASURED:
            text = pattern.sub("<figure>", text)
    return "\n".join(map(str.rstrip, text.split("\n"))).rstrip("\n")


def loadlibraries(terminal, names):
    """Reads libraries in, up to the prompt that follows."""
    prompt = terminal.untilprompt()
    for name in names:
        shutil.copy(LIBRARIES / (name + ".morvik"), terminal.scratch.name)
        prompt = terminal.say("'%s.morvik' READ ." % name)
    return prompt


def checksession(binary, page, options, blocks, changed):
    """Complaints about a session. `changed` takes, by the number of its first line, what a block should have shown."""
    complaints = []
    libraries = [word.removeprefix(LIBRARY) for word in options if word.startswith(LIBRARY)]
    os.environ["$EDITOR"] = next((word.removeprefix(EDITOR) for word in options if word.startswith(EDITOR)), "false")
    options = [word for word in options if not word.startswith((LIBRARY, EDITOR))]
    with Terminal(binary, *options) as terminal:
        prompt = loadlibraries(terminal, libraries)
        prompt = prompt[prompt.rindex("Morvik [") :]
        for number, lines in blocks:
            if not typed(lines):
                complaints.append("%s:%d: nothing is typed in this session\n" % (page, number))
                continue
            shown, prompt = perform(terminal, prompt, lines)
            shown = shown.encode("latin-1").decode("utf-8", "replace")
            expected, actual = compared("\n".join(lines), options), compared(shown, options)
            if actual != expected:
                changed[number] = (len(lines), actual.splitlines())
                complaints.append("%s:%d: the session reads otherwise\n" % (page, number) + "".join(
                    difflib.unified_diff(expected.splitlines(True), actual.splitlines(True), "page", "run")))
    return complaints


def update(page, changed):
    lines = page.read_text().splitlines()
    for number, (length, shown) in sorted(changed.items(), reverse=True):
        lines[number - 1:number - 1 + length] = shown
    page.write_text("\n".join(lines) + "\n")


def main():
    updating = sys.argv[1] == "--update"
    binary, *pages = sys.argv[1 + updating:]
    ran, failed = 0, 0
    for page in map(pathlib.Path, pages):
        changed = {}
        for options, blocks in sessions(page):
            ran += 1
            try:
                complaints = checksession(binary, page, options, blocks, changed)
            except Silence as fault:
                complaints = ["%s:%d: %s\n" % (page, blocks[0][0], fault)]
            failed += bool(complaints)
            print("".join(complaints), end="")
        if updating:
            update(page, changed)
    print("%d passed, %d failed" % (ran - failed, failed))
    return 1 if failed or not ran else 0


if __name__ == "__main__":
    sys.exit(main())
