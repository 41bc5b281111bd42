#!/usr/bin/env python3
"""How long the prompt takes to start, and a short text from Enter to its answer:  prompt.py FOLDER

At a pseudo-terminal with a screen behind it, as the tests have it; milliseconds of elapsed time, so on a quiet machine alone.
"""
import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests" / "prompt"))
from person import Person  # noqa: E402

STARTS, TEXTS = 12, 60


def started(binary):
    began = time.monotonic()
    person = Person(binary)
    person.untilprompt()
    return person, time.monotonic() - began


def answertime(person):
    person.type("1 2 + .")
    person.until(r"1 2 \+ \.$")
    before, began = len(person.raw), time.monotonic()
    person.type("\r")
    while b" 3" not in person.raw[before:]:
        person.read(0.05)
    took = time.monotonic() - began
    person.untilprompt()
    person.say("CLEAR .")
    return took


def told(what, times):
    print("%-22s %6.1f least, %6.1f median, %6.1f most, of %d" %
          (what, 1000 * min(times), 1000 * statistics.median(times), 1000 * max(times), len(times)))


def main():
    binary, starts = sys.argv[1] + "/morvik", []
    for _ in range(STARTS):
        person, took = started(binary)
        starts.append(took)
        if len(starts) == STARTS:
            answers = [answertime(person) for _ in range(TEXTS)]
        with person:
            pass
    told("start, ms", starts)
    told("Enter to answer, ms", answers)


if __name__ == "__main__":
    main()
