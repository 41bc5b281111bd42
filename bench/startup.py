#!/usr/bin/env python3
"""The time from start to end on empty input, against a programme that does nothing:  startup.py BUILDFOLDER

Fails where Morvik takes more than 1.5 ms longer. The runs alternate, and medians are compared, so that a busy machine
disturbs both alike.
"""
import os
import statistics
import subprocess
import sys
import time

ROUNDS = 400
ALLOWED_MS = 1.5


def elapsed(command):
    start = time.perf_counter()
    subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=True)
    return (time.perf_counter() - start) * 1000


def main():
    folder = sys.argv[1]
    commands = {"empty": [os.path.join(folder, "bench", "startup_empty")],
                "morvik": [os.path.join(folder, "morvik"), "-q"]}
    times = {name: [] for name in commands}
    for _ in range(ROUNDS):
        for name, command in commands.items():
            times[name].append(elapsed(command))
    medians = {name: statistics.median(values) for name, values in times.items()}
    more = medians["morvik"] - medians["empty"]
    print("start to end: empty programme %.2f ms, morvik -q %.2f ms: %.2f ms more (%.1f allowed), medians of %d" %
          (medians["empty"], medians["morvik"], more, ALLOWED_MS, ROUNDS))
    return 1 if more > ALLOWED_MS else 0


if __name__ == "__main__":
    sys.exit(main())
