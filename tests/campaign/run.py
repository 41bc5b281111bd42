#!/usr/bin/env python3
"""The reliability campaign, as long as it is given:  run.py [--seconds N] [--seed N] [--jobs N] [PART]...

Each part has its share of the time and a seed, and what it finds is left in build-campaign/. What is not built is an error,
but for --sample, which takes the three builds that the suite has. The last line says what was found, the status too.
"""
import argparse
import os
import pathlib
import subprocess
import sys
import time
from typing import List, NamedTuple

ROOT = pathlib.Path(__file__).resolve().parents[2]
TESTS = ROOT / "tests"
FOUND = ROOT / "build-campaign"
RELEASE, ASAN, CHECKING, TSAN, FUZZ = "build", "build-asan", "build-checking", "build-tsan", "build-fuzz"


class Part(NamedTuple):
    name: str
    share: float  # of the time
    build: str
    script: str
    options: List[str] = []
    sampled: bool = True


PARTS = [
    Part("programmes, address sanitizer", 24, ASAN, "fuzz/hunt.py", ["--findings", "5", "--texts", "1000"]),
    Part("programmes, checking build", 16, CHECKING, "fuzz/hunt.py", ["--findings", "5"]),
    Part("programmes, serial against the pool", 16, RELEASE, "fuzz/hunt.py", ["--findings", "5", "--pool", "2,4"]),
    Part("programmes, thread sanitizer", 6, TSAN, "fuzz/hunt.py", ["--findings", "5", "--option=-c2"], sampled=False),
    Part("bytes, address sanitizer", 12, FUZZ, "fuzz/run", sampled=False),
    Part("allocations that fail", 8, CHECKING, "storage/run.py", ["--random", "100000"]),
    Part("signals", 4, RELEASE, "campaign/signals.py", ["--signals", "1000000"]),
    Part("signals, checking build", 4, CHECKING, "campaign/signals.py", ["--signals", "1000000"]),
    Part("workspaces, address sanitizer", 6, ASAN, "campaign/workspaces.py", ["--loads", "100000000"]),
    Part("streams, checking build", 2, CHECKING, "campaign/streams.py", ["--sessions", "1000000"]),
    Part("streams", 2, RELEASE, "campaign/streams.py", ["--sessions", "1000000"]),
]


def command(part, seconds, options):
    script = TESTS / part.script
    if part.script == "fuzz/run":
        return ["sh", str(script), "%d" % max(seconds, 10), str(ROOT / FUZZ)]
    line = [sys.executable, "-B", str(script), *part.options, "--seconds", "%.0f" % seconds, "--seed", str(options.seed)]
    if part.script == "fuzz/hunt.py":
        line += ["--jobs", str(options.jobs)]
    if part.script in ("fuzz/hunt.py", "campaign/workspaces.py"):
        line += ["--keep", str(FOUND)]
    return line + [str(ROOT / part.build / "morvik")]


def works(options):
    """The part that takes the time it takes."""
    line = [sys.executable, "-B", str(TESTS / "campaign/resources.py"), str(ROOT / RELEASE / "morvik")]
    return line + (["--small"] if options.sample or options.seconds < 1200 else [])


def perform(name, line):
    began = time.monotonic()
    done = subprocess.run(line, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
    last = done.stdout.strip().splitlines()[-1:] or [""]
    if done.returncode:
        print(done.stdout)
    print("%s %-38s %6.0f s  %s" % ("FOUND" if done.returncode else "clean", name, time.monotonic() - began, last[0]), flush=True)
    return done.returncode != 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seconds", type=float, default=3600)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--sample", action="store_true", help="only what the builds of the suite can do")
    parser.add_argument("parts", nargs="*", help="only those whose names hold one of these")
    options = parser.parse_args()
    FOUND.mkdir(exist_ok=True)
    parts = [part for part in PARTS if (part.sampled or not options.sample)
             and (not options.parts or any(word in part.name for word in options.parts))]
    missing = {part.build for part in parts if not (ROOT / part.build).is_dir()}
    if missing:
        print("not built: %s" % ", ".join(sorted(missing)))
        return 1
    whole = sum(part.share for part in parts)
    found = sum(perform(part.name, command(part, options.seconds * part.share / whole, options)) for part in parts)
    if not options.parts:
        found += perform("resources", works(options))
    print("seed %d: %d parts found something" % (options.seed, found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
