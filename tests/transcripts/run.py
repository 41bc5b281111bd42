#!/usr/bin/env python3
"""Runs transcripts through the real binary and compares both streams, the exit status and the files left behind.

    run.py [--bless] [--first] [--timeout SECONDS] BINARY [FOLDER | FILE.morvik]...

tests/README.md describes the format. --bless rewrites expectations; read the difference before you keep it. --first
stops at the first that fails.
"""
import argparse
import difflib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile

import expectation as form

ROOT = pathlib.Path(__file__).resolve().parent
DEFAULT_ARGUMENTS = ["-q"]
KEPT_ENVIRONMENT = ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS")
STREAMS = ("stdout", "stderr")


def arguments(transcript):
    path = transcript.with_suffix(".args")
    return shlex.split(path.read_text()) if path.exists() else DEFAULT_ARGUMENTS


def environment(transcript, scratch):
    variables = {name: os.environ[name] for name in KEPT_ENVIRONMENT if name in os.environ}
    variables.update(HOME=scratch, LC_ALL="C")
    path = transcript.with_suffix(".env")
    if path.exists():
        variables.update(line.split("=", 1) for line in path.read_text().splitlines() if line)
    return variables


def leftfiles(scratch, given):
    """What the run left in its directory: every file that it was not given, or was given otherwise."""
    found = {}
    for path in sorted(pathlib.Path(scratch).rglob("*")):
        name = str(path.relative_to(scratch))
        if path.is_file() and given.get(name) != path.read_bytes():
            found["file " + name] = path.read_bytes()
    return found


def perform(binary, transcript, timeout):
    """Runs a transcript in a scratch directory. Returns its exit status and its streams and files by section title."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        given = transcript.with_suffix(".files")
        if given.is_dir():
            shutil.copytree(given, scratch, dirs_exist_ok=True)
        contents = {str(path.relative_to(given)): path.read_bytes() for path in given.rglob("*") if path.is_file()}
        run = subprocess.run([binary, *arguments(transcript)], input=transcript.read_bytes(), stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, cwd=scratch, env=environment(transcript, scratch), timeout=timeout,
                             check=False)
        return run.returncode, {"stdout": run.stdout, "stderr": run.stderr, **leftfiles(scratch, contents)}


def actualsections(status, texts, old):
    sections = {}
    for title, data in texts.items():
        if data or title not in STREAMS:  # an empty stream has no section
            sections[title] = form.encodestream(data, old.get(title, ()))
    if status != 0:
        sections["status %d" % status] = []
    return sections


def agrees(expected, status, texts):
    statuses = [title for title in expected if title.startswith("status ")]
    if statuses != (["status %d" % status] if status else []):
        return False
    if {title for title in expected if title.startswith("file ")} != {title for title in texts if title not in STREAMS}:
        return False
    return all(form.matches(expected.get(title, ()), data) for title, data in texts.items())


def check(binary, transcript, timeout, bless):
    """Returns the complaint about a transcript, or nothing."""
    path = transcript.with_suffix(".expected")
    if not path.exists() and not bless:
        return "no expectation: write %s, or bless and read it" % path.name
    text = path.read_text() if path.exists() else ""
    try:
        old = form.readexpectation(text)
        status, texts = perform(binary, transcript, timeout)
        if path.exists() and agrees(old, status, texts):
            return ""
    except form.Malformed as fault:
        return str(fault)
    except subprocess.TimeoutExpired:
        return "did not end within %g seconds" % timeout
    actual = form.writeexpectation(actualsections(status, texts, old))
    if bless:
        path.write_text(actual)
        print("blessed", label(transcript))
        return ""
    return "".join(difflib.unified_diff(text.splitlines(True), actual.splitlines(True), "expected", "actual"))


def label(transcript):
    return "%s/%s" % (transcript.parent.name, transcript.name)


def selection(names):
    if not names:
        return sorted(ROOT.glob("*/*.morvik"))
    chosen = []
    for name in names:
        path = pathlib.Path(name)
        path = path.resolve() if path.exists() else ROOT / name
        chosen += sorted(path.glob("*.morvik")) if path.is_dir() else [path]
    return chosen


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bless", action="store_true")
    parser.add_argument("--first", action="store_true")
    parser.add_argument("--timeout", type=float, default=60)
    parser.add_argument("binary")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    transcripts = selection(options.names)
    binary = os.path.abspath(options.binary)
    passed = failed = 0
    for transcript in transcripts:
        complaint = check(binary, transcript, options.timeout, options.bless)
        passed += not complaint
        if complaint:
            failed += 1
            print("FAILED %s\n%s" % (label(transcript), complaint))
            if options.first:
                break
    print("%d passed, %d failed" % (passed, failed))
    return 1 if failed or not transcripts else 0


if __name__ == "__main__":
    sys.exit(main())
