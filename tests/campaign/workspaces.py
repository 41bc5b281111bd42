#!/usr/bin/env python3
"""Loads workspaces that were changed at random:  workspaces.py [--loads N] [--seed N] [--seconds N] BINARY

Random programmes leave names and values, which are saved; their files are cut, spliced, doubled and sprinkled with words and
bytes, and loaded, a hundred to a process. Whatever a file says, the process ends in order (fuzz/judge.py).
"""
import argparse
import os
import pathlib
import random
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "fuzz"))
import judge  # noqa: E402
import minimise  # noqa: E402
import programmes  # noqa: E402

LOADS = 100  # in a process
LOAD = b"CLEAR 'm%d' LOAD .\n"
WRITTEN = b": DUP ; @fun SET (1 2.5 3i4 'x' (5 6)) @_v SET 'ab' @$d SET MONADIC %here 1 @%here JUMP FUNCTIONEND @.l SET "


def saved(binary, seed):
    """A workspace, as a random programme leaves it."""
    lines = programmes.session(seed, 12, comparable=True)
    # What the texts leave in names is wiped by the next; the last of them is to leave its names.
    text = programmes.written(lines[:1]) + WRITTEN + b"1 2 3 .\n"
    for tokens in lines[1:]:
        text += b" ".join(token for token in tokens[2:] if token not in (b"WIPE", b"CLEAR")) + b"\n"
    text += b"'kept' SAVE 'kept' TEXTREAD 'BEGIN' TELL TELL .\n"
    run = judge.perform(binary, text)
    return run.out[run.out.rfind(b"BEGIN") + 5:run.out.rfind(b"--- Spent")]


def mutated(r, files):
    data = bytearray(r.choice(files))
    for _ in range(r.choice([1, 1, 2, 3, 8])):
        if not data:
            break
        here, there = sorted(r.randrange(len(data) + 1) for _ in range(2))
        choice = r.random()
        if choice < 0.2:
            data[here:min(there, here + 20)] = b""
        elif choice < 0.4:
            data[here:here] = bytes(r.choice([r.randint(0, 255), 2, 3, 39, 40, 41, 46, 91]) for _ in range(r.choice([1, 1, 2, 5])))
        elif choice < 0.55:
            data[here:here] = b" " + r.choice(r.choice(programmes.WORDS).spellings) + b" "
        elif choice < 0.65:
            data[here:here + 1] = b"%d" % r.choice([0, -1, 1 << 31, 1 << 62, 9])
        elif choice < 0.8:
            other = r.choice(files)
            data[here:there] = other[len(other) // 3:r.randrange(len(other) + 1)]
        elif choice < 0.9:
            data[here:here] = data[here:there][:2000]
        else:
            del data[here:]
    return bytes(data)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--loads", type=int, default=500)
    parser.add_argument("--seconds", type=float, default=0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", default="findings")
    parser.add_argument("binary")
    options = parser.parse_args()
    binary = os.path.abspath(options.binary)
    r, loads, found = random.Random(options.seed), 0, 0
    files = [data for data in (saved(binary, options.seed * 1000 + number) for number in range(12)) if len(data) > 50]
    ends = time.monotonic() + (options.seconds or 1e9)
    while loads < options.loads and time.monotonic() < ends and files:
        given = {"m%d" % number: mutated(r, files) for number in range(LOADS)}
        shows = lambda text: judge.fault(judge.perform(binary, text, files=given))
        lines = [[LOAD[:-1] % number] for number in range(LOADS)]
        wrong = shows(programmes.written(lines))
        loads += LOADS
        if wrong:
            found += 1
            print("seed %d, after %d loads: %s" % (options.seed, loads, wrong), flush=True)
            text = programmes.written(minimise.thin(lines, lambda some: bool(shows(programmes.written(some)))))
            pathlib.Path(options.keep).mkdir(parents=True, exist_ok=True)
            for name, data in given.items():
                if b"'%s'" % name.encode() in text:
                    pathlib.Path(options.keep, "workspace-%d-%d-%s" % (options.seed, loads, name)).write_bytes(data)
            print("    %r" % text[:300], flush=True)
            if found == 3:
                break
    print("%d loads of %d workspaces mutated, %d findings" % (loads, len(files), found))
    return 1 if found or not loads else 0


if __name__ == "__main__":
    sys.exit(main())
