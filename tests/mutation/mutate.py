#!/usr/bin/env python3
"""Plants small changes into src/, one at a time, and tells which of them no test finds.

    mutate.py [--sample N] [--seed N] [--jobs N] [--again] [--report] [--only TEXT] [--skip STEPS]

Works on copies under build-mutate/; the working tree is only read. Goes on where it was stopped. --again tries only what
survived, and --report only reports. --only keeps to the sources whose path begins so. --skip leaves out steps whose
name begins so, with commas between: "unit.slow,terminal,pool,pages" is soon done, and --again has the last word.
"""
import argparse
import difflib
import hashlib
import json
import pathlib
import random
import re
import subprocess
import sys
import threading

import changes
from schemata import Schemata
from suite import Suite
from trial import BROKEN, KILLED, SURVIVED, TIMEOUT, Workshop

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EQUIVALENT = "equivalent"
SUFFIXES = (".cpp", ".h", ".def")
LEAST_SHARE = 1 / 60  # of the changes, for a folder's sources of one kind, however few its lines
SPARE = 1.3  # so many more are planted together than the sample asks for, since some do not compile


# ---- What is changed.

def trackednames(root):
    listed = subprocess.run(["git", "-C", str(root), "ls-files", "-coz", "--exclude-standard"], check=True,
                            stdout=subprocess.PIPE).stdout
    return {name for name in listed.decode().split("\0") if name and (root / name).is_file()}


def stratum(path):
    """What gets its share of the changes: the sources of a folder by their kind; the quick loop by itself."""
    return path.parent, path.suffix, path.stem.startswith(("quick", "decode"))


def draw(texts, seed):
    """The changes in the order in which they are tried. Each stratum has a share of any first part of them, by its lines
    of code; within it lines are drawn at random, and for each one kind of change and one change of that kind."""
    strata, generator = {}, random.Random(seed)
    for path in sorted(texts):
        lines, found = changes.changesof(texts[path])
        if path.suffix == ".def":  # rows of macros, where an exchange never compiles
            found = changes.tablechangesof(texts[path])
        strata.setdefault(stratum(path), []).extend((path, line, found.get(line, [])) for line in sorted(lines))
    whole, order = sum(map(len, strata.values())), []
    for _, places in sorted(strata.items()):
        generator.shuffle(places)
        first, share = generator.random(), max(len(places), LEAST_SHARE * whole)
        order += [((i + first) / share, place) for i, place in enumerate(place for place in places if place[2])]
    for _, (path, line, found) in sorted(order, key=lambda entry: (entry[0], entry[1][:2])):
        generator = random.Random("%d %s %d" % (seed, path, line))
        kind = generator.choice(sorted({change.kind for change in found}))
        yield path, generator.choice([change for change in found if change.kind == kind])


def readequivalents(text):
    """The rows of equivalent.txt. A row without its four fields is an error."""
    rows = []
    for line in text.splitlines():
        if line.strip() and not line.startswith("#"):
            source, holds, change, why = (field.strip() for field in line.split(" :: "))
            assert why
            rows.append((source, re.compile(holds, re.MULTILINE), re.compile(change)))
    return rows


def isequivalent(rows, path, text, change):
    exchange = ("%s => %s" % (change.before, change.after)).strip()
    return any(source == str(path) and whole.fullmatch(exchange) and isheld(holds, text.splitlines(), change.line)
               for source, holds, whole in rows)


def isheld(holds, lines, number):
    """Is a pattern found in the line of that number? It may begin in the line before."""
    before = lines[number - 2] + "\n" if number > 1 else ""
    return any(found.end() > len(before) for found in holds.finditer(before + lines[number - 1]))


# ---- What came of it.

def identity(path, change):
    return "%s:%d:%s=>%s" % (path, change.start, change.before, change.after)


class Results:
    """A file of one result a line, and in the first what they are about. Results about something else are put aside."""

    def __init__(self, path, about):
        self.path, self.found = path, {}
        lines = path.read_text().splitlines() if path.exists() else []
        if lines and json.loads(lines[0]) != about:
            path.rename(path.with_suffix(".old"))
            lines = []
        for line in lines[1:]:
            result = json.loads(line)
            self.found[result["id"]] = result
        if not lines:
            path.write_text(json.dumps(about) + "\n")

    def add(self, result):
        self.found[result["id"]] = result
        with open(self.path, "a", encoding="utf-8") as stream:
            stream.write(json.dumps(result) + "\n")

    def verdict(self, path, change):
        return self.found.get(identity(path, change), {}).get("verdict")


def counts(verdict):
    return verdict is not None and verdict != BROKEN


def difference(path, text, change):
    old, new = text.splitlines(), change.apply(text).splitlines()
    lines = list(difflib.unified_diff(old, new, n=0, lineterm=""))[3:]
    return "\n".join(["%s:%d: %s" % (path, change.line, change.kind), *("  " + line for line in lines)])


def report(texts, drawn, results, sample, equivalents, out):
    """Tells about the first `sample` changes that count. Returns whether there were as many."""
    tally, survivors = dict.fromkeys((KILLED, TIMEOUT, SURVIVED, EQUIVALENT, BROKEN), 0), []
    for path, change in drawn:
        verdict = results.verdict(path, change)
        if verdict is None:
            continue
        if verdict == SURVIVED and isequivalent(equivalents, path, texts[path], change):
            verdict = EQUIVALENT
        tally[verdict] += 1
        if verdict == SURVIVED:
            survivors.append(difference(path, texts[path], change))
        if sum(tally.values()) - tally[BROKEN] == sample:
            break
    for text in survivors:
        print(text + "\n", file=out)
    tried = sum(tally.values()) - tally[BROKEN]
    killed = tally[KILLED] + tally[TIMEOUT]
    print("%d changes: %d killed (%d by a time limit), %d survived, %d equivalent; %d more did not compile" %
          (tried, killed, tally[TIMEOUT], tally[SURVIVED], tally[EQUIVALENT], tally[BROKEN]), file=out)
    if tried:
        print("killed: %.1f %% of all, %.1f %% of those that are not equivalent" %
              (100 * killed / tried, 100 * killed / max(tried - tally[EQUIVALENT], 1)), file=out)
    return tried >= sample


# ---- Trying.

class Queue:
    """The changes still to be tried, for several workers: until as many count as the sample asks for. What is in a build
    with others comes first, then what needs one of its own."""

    def __init__(self, drawn, results, sample, again, number):
        self.results, self.again = results, again
        self.missing = len(drawn) if again else sample - sum(counts(results.verdict(*place)) for place in drawn)
        wanted = SURVIVED if again else None
        places = [place for place in drawn if results.verdict(*place) == wanted]
        sure = sorted(places[:self.missing], key=lambda place: (not number(*place), place[0].suffix != ".cpp"))
        self.places = iter(sure + places[self.missing:])
        self.changed, self.running = threading.Condition(), 0

    def take(self):
        """The next change, or None at the end. What runs already may turn out not to count: that is waited for."""
        with self.changed:
            while self.running and self.running >= self.missing:
                self.changed.wait()
            place = next(self.places, None) if self.missing > 0 else None
            self.running += place is not None
            return place

    def give(self, path, change, result):
        with self.changed:
            result = {"id": identity(path, change), "line": change.line, "kind": change.kind, **result}
            self.results.add(result)
            self.running -= 1
            self.missing -= counts(result["verdict"])
            self.changed.notify_all()
            print("%-15s %5.1f s  %s:%d %s  %s => %s  %s" %
                  (result["verdict"], result["seconds"], path, change.line, change.kind,
                   shortened(change.before), shortened(change.after), shortened(result["by"])), flush=True)


def shortened(text, most=50):
    text = " ".join(text.split())
    return text if len(text) <= most else text[:most - 3] + "..."


def work(queue, suite, texts, equivalents, schemata):
    while (place := queue.take()) is not None:
        path, change = place
        if isequivalent(equivalents, path, texts[path], change):
            queue.give(path, change, {"verdict": EQUIVALENT, "by": "", "seconds": 0})
        elif schemata.isbroken(path, change):
            queue.give(path, change, {"verdict": BROKEN, "by": "", "seconds": 0})
        elif number := schemata.number(path, change):
            result = suite.workshop.chosen(number, suite.binaries(), suite.chosensteps(path))
            queue.give(path, change, {**result, "way": "chosen"})
        else:
            result = suite.workshop.trial(path, change.apply(texts[path]), suite.steps(path))
            queue.give(path, change, {**result, "way": "built"})


def prepare(root, folders, names, schemata, skip, kind):
    """A suite for each folder, with a copy of the tree in it that holds many changes, none of them chosen. The first one
    runs it so, and the others go by its times. Ends the process where something fails."""
    suites = []
    fingerprint = fingerprintof(root, {name for name in names if not name.startswith("tests/mutation/")})
    for folder in folders:
        suite = kind(Workshop(folder), skip)
        stamp, alone = suite.workshop.folder / "unchanged", suite.workshop.folder / "alone.json"
        about = [fingerprint, sorted(map(str, schemata.numbers))]
        known = json.loads(alone.read_text()) if alone.exists() else {}
        if known.get("about") == about:
            schemata.alone |= set(known["alone"])

        def bring(suite=suite):
            suite.workshop.bring(root, names, {**schemata.planted(), **suite.support()})
        bring()
        if not stamp.exists() or known.get("about") != about:
            complaint = suite.ready(schemata, bring)
            complaint = complaint or (suite.learn(suites[0].seconds) if suites else suite.measure())
            if complaint:
                sys.exit("Without a change there fails " + complaint)
            alone.write_text(json.dumps({"about": about, "alone": sorted(schemata.alone)}))
            stamp.write_text(fingerprint)
        suites.append(suite)
    return suites


def fingerprintof(root, names):
    digest = hashlib.sha256()
    for name in sorted(names):
        digest.update(name.encode() + b"\0" + (root / name).read_bytes())
    return digest.hexdigest()


def readarguments(arguments):
    parser = argparse.ArgumentParser()
    parser.add_argument("--sample", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--report", action="store_true")
    parser.add_argument("--only", default="src/")
    parser.add_argument("--skip", type=lambda text: tuple(text.split(",")), default=())
    return parser.parse_args(arguments)


def run(root, arguments, kind=Suite, out=sys.stdout):
    options = readarguments(arguments)
    names = trackednames(root)
    sources = {name for name in names if name.startswith(options.only) and name.endswith(SUFFIXES)}
    texts = {pathlib.Path(name): (root / name).read_text() for name in sources}
    drawn = list(draw(texts, options.seed))
    place = root / "build-mutate"
    place.mkdir(exist_ok=True)
    about = {"seed": options.seed, "only": options.only, "sources": fingerprintof(root, sources)}
    results = Results(place / ("results-%d.jsonl" % options.seed), about)
    equivalents = readequivalents((root / "tests" / "mutation" / "equivalent.txt").read_text())
    if not options.report:
        schemata = Schemata(texts, drawn[:round(SPARE * options.sample)])
        suites = prepare(root, [place / str(number) for number in range(options.jobs)], names, schemata, options.skip, kind)
        queue = Queue(drawn, results, options.sample, options.again, schemata.number)
        workers = [threading.Thread(target=work, args=(queue, suite, texts, equivalents, schemata))
                   for suite in suites]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
    return report(texts, drawn, results, options.sample, equivalents, out)


if __name__ == "__main__":
    sys.exit(0 if run(ROOT, sys.argv[1:]) else 1)
