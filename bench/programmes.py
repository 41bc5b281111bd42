#!/usr/bin/env python3
"""Whole programmes beside the same in other languages:  programmes.py [--quick] [--times N] FOLDER [WORD...]

A table is printed as docs/performance.md has it. Each figure is time of the processor, user's and system's: the least of
several short runs, as others on the machine only add to it, without what the programme takes to start and to prepare. The
rows and peers take turns, so that a noisy minute spoils a few runs of each and not all of one; with --times there are N times
as many turns. How often the work is done is raised until it takes long enough. Every run checks its answer. A peer that is
not installed leaves its column empty. The rows are in peers/rows.py; a word chooses those with it in their titles. With
--quick each runs once, and storage is not measured.
"""
import argparse
import datetime
import hashlib
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

from peers.rows import LIBRARIES, MEGABYTES, ROWS

PEERS = ("Morvik", "C++", "CPython", "NumPy", "Lua", "gforth")
ENOUGH = 0.1  # seconds that the work is to take, and no less than the start
MOST = 10**8
EPILOGUE = re.compile(r"\n--- Spent: [^\n]*\n*\Z")


def line(words):
    return "| %s |" % " | ".join(words)


HEAD = line(["Programme", "unit", *PEERS, "goal", "then"]) + "\n|" + "---|" * (len(PEERS) + 4)


class Wrong(Exception):
    pass


def pythons():
    """The Python that has NumPy, for both columns; without one, this Python for its own."""
    chooser = pathlib.Path(__file__).resolve().parents[1] / "tools" / "python"
    found = subprocess.run([chooser, "numpy", "--", "-c", "import sys; print(sys.executable)"], capture_output=True, text=True,
                           check=False)
    return (found.stdout.strip(), True) if found.returncode == 0 else (sys.executable, False)


def peers(morvik):
    """What runs a file of each language, or compiles it, without the file; only of those that are installed."""
    python, numpy = pythons()
    found = {"Morvik": [os.path.abspath(morvik), "-q"], "C++": [shutil.which("g++"), "-O2"], "CPython": [python, "-I"],
             "NumPy": [numpy and python, "-I"], "Lua": [shutil.which("lua5.4")],
             "gforth": [shutil.which("gforth-fast") or shutil.which("gforth")]}
    return {peer: command for peer, command in found.items() if command[0]}


def versions(commands):
    asked = {"C++": ["-dumpfullversion"], "CPython": ["-V"], "NumPy": ["-c", "import numpy; print(numpy.__version__)"],
             "Lua": ["-v"], "gforth": ["--version"]}
    for peer in PEERS[1:]:
        if peer in commands:
            run = subprocess.run([commands[peer][0], *asked[peer]], capture_output=True, text=True, check=True)
            yield peer + " " + re.search(r"\d[\d.]*\d", run.stdout + run.stderr).group()


def compiled(command, text):
    """The file that a programme in C++ becomes, which is made once."""
    file = os.path.abspath(hashlib.sha256(text.encode()).hexdigest())
    if not os.path.exists(file):
        subprocess.run([*command, "-x", "c++", "-o", file, "-"], input=text, text=True, check=True)
    return file


def run(command, peer, text, answer):
    """Runs a programme in the present folder. Returns the seconds of the processor, and the most memory in MB."""
    morvik, forth = peer == "Morvik", peer == "gforth"
    if peer == "C++":
        command = [compiled(command, text)]
    with open("programme", "w+", encoding="utf-8") as programme, open("answer", "w+", encoding="utf-8") as output:
        programme.write(text + "\n")
        programme.seek(0)
        words = command if morvik else [*command, "programme", *(["-e", "bye"] if forth else [])]
        typed = programme if morvik else subprocess.DEVNULL
        child = subprocess.Popen(words, stdin=typed, stdout=output, stderr=subprocess.STDOUT)
        _, status, used = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        said = EPILOGUE.sub("", output.read()).strip()
    if child.returncode != 0 or said != answer:
        raise Wrong("%s, status %d, answered %r in place of %r:\n%s" % (peer, child.returncode, said[-300:], answer, text))
    return used.ru_utime + used.ru_stime, used.ru_maxrss / 1024


class Work:
    """A row in one language."""

    def __init__(self, row, peer, command, size):
        self.row, self.peer, self.command, self.size = row, peer, command, size
        self.n, self.starts, self.times, self.memory = 1, [], [], []

    def run(self, n):
        for name, content in self.row.files(n, self.size).items():
            pathlib.Path(name).write_bytes(content)
        text = self.row.programmes[self.peer].replace("<n>", str(n)).replace("<size>", str(self.size))
        return run(self.command, self.peer, text, self.row.answer(n, self.size))

    def choose(self, least):
        """Raises n until the work takes long enough; of two starts the slower one tells. The peak of memory is for one n."""
        self.n = least
        if self.row.memory is not None:
            return
        start = max(self.run(1)[0] for _ in range(2))
        while self.n < MOST:
            took, wanted = self.run(self.n)[0] - start, max(ENOUGH, start)
            if took >= 0.8 * wanted:
                break
            self.n = min(MOST, int(self.n * min(100, max(2, 1.1 * wanted / max(took, 1e-4)))))

    def turn(self):
        self.starts.append(self.run(1)[0])
        # A host may take back the memory that a machine has freed: the first run that touches it again waits for the host.
        if self.row.memory is not None:
            self.run(self.n)
        took, memory = self.run(self.n)
        self.times.append(took)
        self.memory.append(memory)

    def figure(self):
        net = min(self.times) - min(self.starts)
        return max(net, 0) / ((self.n - 1) * self.row.each(self.size)) / self.row.unit[1]


def prepare():
    """What the programmes may find in their folder beside the files of their rows."""
    for library in LIBRARIES.glob("*.morvik"):
        shutil.copy(library, ".")


def prepared(row, commands, quick):
    works = {peer: Work(row, peer, commands[peer], row.size) for peer in PEERS if peer in row.programmes and peer in commands}
    for work in works.values():
        work.choose(2 if quick else row.least)
    return works


def measure(rows, commands, quick, times):
    """The works of each row by peer, after all their turns."""
    measured = [(row, prepared(row, commands, quick)) for row in rows]
    runs = [1 if quick else row.runs * times for row in rows]
    turns = max(runs, default=0)
    for turn in range(turns):
        print("\rTurn %d of %d" % (turn + 1, turns), end="", file=sys.stderr, flush=True)
        for (_, works), own in zip(measured, runs):
            # Those of a row that has few are spread over all.
            if turn * own % turns < own:
                for work in works.values():
                    work.turn()
    print(file=sys.stderr)
    return measured


def figures(row, works, quick):
    yield row.title, row.unit[0], {peer: work.figure() for peer, work in works.items()}, row.goal, row.then
    if row.memory is not None and not quick:
        most = {peer: statistics.median(work.memory) for peer, work in works.items()}
        yield "the same, peak of memory", MEGABYTES, most, row.memory, None


def digits(figure):
    return "%.0f" % figure if figure >= 99.5 else "%.*g" % (2 if figure < 10 else 3, figure)


def cells(title, unit, figures, goal, then):
    """One line of the table. What misses its goal is set in bold."""
    shown = {peer: digits(figure) for peer, figure in figures.items()}
    limit = figures.get(goal) if isinstance(goal, str) else goal
    if limit is not None and figures["Morvik"] > limit:
        shown["Morvik"] = "**%s**" % shown["Morvik"]
    return [title, unit, *(shown.get(peer, "") for peer in PEERS), *("" if word is None else str(word) for word in (goal, then))]


def titles():
    """What stands at the sides of the figures, line by line: title, unit, goal and what comes then."""
    for row in ROWS:
        yield (row.title, row.unit[0], *cells("", "", {"Morvik": 0}, row.goal, row.then)[-2:])
        if row.memory is not None:
            yield "the same, peak of memory", MEGABYTES, str(row.memory), ""


def surroundings(commands, morvik):
    told = subprocess.run([morvik, "-v"], input="", capture_output=True, text=True, check=True).stdout
    with open("/proc/cpuinfo", encoding="ascii") as cpuinfo:
        processor = re.search(r"^model name\s*: (.*)$", cpuinfo.read(), re.MULTILINE)
    return "%s; %s, %d processors, load %.1f; Morvik by%s; %s" % (
        datetime.date.today(), processor.group(1) if processor else platform.machine(), os.cpu_count(), os.getloadavg()[0],
        re.search(r"with\s*( .*)", told).group(1), ", ".join(versions(commands)))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0].split(":")[0])
    parser.add_argument("folder")
    parser.add_argument("words", nargs="*", metavar="word")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--times", type=int, default=1, metavar="N")
    given = parser.parse_args()
    morvik = os.path.join(given.folder, "morvik")
    commands = peers(morvik)
    for peer in PEERS:
        if peer not in commands:
            print("%s is not installed: its column stays empty.\n" % peer)
    print(surroundings(commands, morvik) + "\n\n" + HEAD, flush=True)
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        prepare()
        rows = [row for row in ROWS if all(word in row.title for word in given.words)]
        for row, works in measure(rows, commands, given.quick, given.times):
            for found in figures(row, works, given.quick):
                print(line(cells(*found)), flush=True)
        os.chdir("/")


if __name__ == "__main__":
    main()
