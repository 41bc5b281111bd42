#!/usr/bin/env python3
"""Names whatever of the tables no test touches.

- A spelling of keywords.def or constants.def must be in a transcript, a one-line test, an example or a session on a page.
- An instruction must be run there by one of its spellings; the folder frontend does not count, which compiles more than it
  runs. What has no spelling of its own is given by its number or name in a unit test.
- A message that is raised must be shown there, or looked for by its number in a unit test.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
TESTS = ROOT / "tests"
sys.path.insert(0, str(ROOT / "tools" / "reference"))
import tables  # noqa: E402

COMMENT = re.compile(rb'["\xBC][^"\xBC]*["\xBC]')
SESSION = re.compile(r"^```morvik[^\n]*\n(.*?)^```", re.M | re.S)
# The word that closes a function is none of the keywords.
CLOSING = {"FUNCTIONEND": [b";"]}
ARROW = " → ".encode()
FIRSTCERTAIN = 100  # a smaller number in a unit test may mean anything


def pages():
    return [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]


def onelines():
    """The texts of the one-line tests, with their answers."""
    for path in sorted(TESTS.glob("lines/*.lines")):
        for line in path.read_bytes().splitlines():
            text, arrow, answer = line.rpartition(ARROW)
            if arrow and not line.startswith(b"# "):
                yield text, answer.decode()


def programmes(frontend):
    """All that the transcripts, the examples and the pages put in, without comments."""
    found = [path for path in sorted(TESTS.glob("transcripts/*/*")) + sorted((ROOT / "examples").glob("*"))
             if path.suffix == ".morvik" and (frontend or path.parent.name != "frontend")]
    found += [path for path in sorted(TESTS.glob("transcripts/*/*.files/**/*")) if path.is_file()]
    texts = [COMMENT.sub(b" ", path.read_bytes()) for path in found]
    texts += [COMMENT.sub(b" ", text) for text, _ in onelines()]
    for page in pages():
        texts += [session.encode("latin-1", "replace") for session in SESSION.findall(page.read_text())]
    return b"\n".join(texts)


def shown():
    """All that they put out, and what the tests at a terminal look for."""
    found = sorted(TESTS.glob("transcripts/*/*.expected")) + sorted((ROOT / "examples").glob("*.expected"))
    found += pages() + sorted(TESTS.glob("terminal/*.py"))
    return "\n".join(path.read_text() for path in found)


def unittests():
    return "\n".join(path.read_text() for path in sorted(TESTS.glob("unit/*_test.cpp")))


def occurs(spelling, text):
    pattern = rb"(?:(?<=[\s;.()])|^)" + re.escape(spelling) + rb"(?![0-9A-Za-z_])"
    return re.search(pattern, text, re.M) is not None


def untouchedspellings():
    everything = programmes(frontend=True)
    for row in tables.keywords() + tables.constants():
        for spelling in row.spellings:
            if not occurs(spelling, everything):
                yield "spelling %s" % spelling.decode("latin-1").encode("unicode_escape").decode()


def untouchedinstructions():
    words = {name: list(spelled) for name, spelled in CLOSING.items()}
    for row in tables.keywords():
        if row.kind != "MASK_FORM":  # these two write no Point
            words.setdefault(row.instruction, []).extend(row.spellings)
    run, units = programmes(frontend=False), unittests()
    for row in tables.instructions():
        if any(occurs(spelling, run) for spelling in words.get(row.name, ())):
            continue
        # Those without an implementation are run in unit/instructions_test.cpp, by number and by every spelling.
        if row.handler in tables.RESERVED or (row.name not in words and "instructions::%s" % row.name in units):
            continue
        yield "instruction %s %s" % (row.number, row.name)


def untouchedmessages():
    texts, units, answers = shown(), unittests(), "\n".join(answer for _, answer in onelines())
    for row in tables.messages():
        inunits = row.number >= FIRSTCERTAIN and re.search(r"\b%s\b" % row.number, units)
        inlines = re.search(r"!%d\b" % row.number, answers)
        if row.text.split("\n")[0] not in texts and not inunits and not inlines:
            yield "message %s" % row.number


def main():
    missing = list(untouchedspellings()) + list(untouchedinstructions()) + list(untouchedmessages())
    for fault in missing:
        print("touched by no test: " + fault)
    print("%d faults" % len(missing))
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
