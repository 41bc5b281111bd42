#!/usr/bin/env python3
"""Transcripts that check nothing and files that belong to none are errors."""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent / "transcripts"
sys.path.append(str(ROOT))
import expectation  # noqa: E402

TOOLS = {"run.py", "expectation.py", "__pycache__"}
SIBLINGS = (".expected", ".args", ".env", ".files")


def faultsof(transcript):
    path = transcript.with_suffix(".expected")
    if not path.exists():
        return ["%s: no expectation" % transcript]
    try:
        sections = expectation.readexpectation(path.read_text())
        for lines in sections.values():
            for line in lines:
                expectation.linepattern(line[:-1] if expectation.isunfinished(line) else line)
    except expectation.Malformed as fault:
        return ["%s: %s" % (path, fault)]
    return [] if expectation.checksanything(sections) else ["%s: checks nothing" % path]


def orphans(folder):
    for path in sorted(folder.iterdir()):
        if path.suffix == ".morvik":
            continue
        if path.suffix not in SIBLINGS:
            yield "%s: neither a transcript nor a part of one" % path
        elif not path.with_suffix(".morvik").exists():
            yield "%s: belongs to no transcript" % path


def main():
    folders = [path for path in sorted(ROOT.iterdir()) if path.name not in TOOLS]
    faults, count = [], 0
    for folder in folders:
        if not folder.is_dir():
            faults.append("%s: not in a folder" % folder)
            continue
        faults += orphans(folder)
        for transcript in sorted(folder.glob("*.morvik")):
            count += 1
            faults += faultsof(transcript)
    for fault in faults:
        print(fault)
    print("%d transcripts looked at, %d faults" % (count, len(faults)))
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
