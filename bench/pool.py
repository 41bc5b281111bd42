#!/usr/bin/env python3
"""What coprocessors gain: pool.py FOLDER [MOST]. Each programme runs without -c and with 1 to MOST threads beside the
main one, all in turn, several times; the ratio of the medians of elapsed time to that without -c is printed, as a row of
a table. Every run checks its answer.
"""
import os
import statistics
import subprocess
import sys
import time

RUNS = 5
START = "1000000 .. 1E-6 * @x SET x 1l1 * @o SET x 1 + @y SET 0 @n SET . 10000 .. 1E-4 * 1l1 * @p SET . "
# title: answer, text. What is measured is repeated, so that the start is little beside it.
PROGRAMMES = {
    "CIRCULAR of reals": ("0.8414709848", "40 : x SIN DISCARD ; REPEAT x SIN MIRROR FIRST ."),
    "POWER of reals": ("1", "20 : x 1.5 ** DISCARD ; REPEAT x 1.5 ** MIRROR FIRST ."),
    "MULTIPLY of octonions": ("1i0j0k0l1", "o 1 * 20 : 0l1 * ; REPEAT MIRROR FIRST ."),
    "the same into new blocks": ("0i0j0k0l2", "10 : o o * DISCARD ; REPEAT o o * MIRROR FIRST ."),
    "the same, ten thousand": ("0i0j0k0l2", "500 : p p * DISCARD ; REPEAT p p * MIRROR FIRST ."),
    "ADD of reals": ("3", "100 : x y + DISCARD ; REPEAT x y + MIRROR FIRST ."),
    "small spaces": ("4000000", "0 2000000 DYADIC DISCARD 1 + 1 + ; LOOP ."),
}


def elapsed(binary, options, text, answer):
    began = time.perf_counter()
    run = subprocess.run([binary, "-q", *options], input=START + text, capture_output=True, text=True, check=True)
    took = time.perf_counter() - began
    if answer not in run.stdout.split():
        raise SystemExit("%s answered %r" % (text, run.stdout[-300:] + run.stderr[-300:]))
    return took


def measure(binary, most):
    """For each programme the ratios by number of threads beside the main one."""
    found = {}
    for title, (answer, text) in PROGRAMMES.items():
        choices = [[]] + [["-c%d" % n] for n in range(1, most + 1)]
        starts = [[] for _ in choices]
        times = [[] for _ in choices]
        for _ in range(RUNS):
            for i, options in enumerate(choices):
                starts[i].append(elapsed(binary, options, "1 .", "1"))
                times[i].append(elapsed(binary, options, text, answer))
        # What the programme itself takes, without its start.
        net = [statistics.median(t) - statistics.median(s) for t, s in zip(times, starts)]
        found[title] = [n / net[0] for n in net[1:]]
        print("%-22s %6.2f s: " % (title, net[0]) + " ".join("%.2f" % ratio for ratio in found[title]), flush=True)
    return found


def main():
    most = int(sys.argv[2]) if len(sys.argv) > 2 else os.cpu_count() - 1
    measure(sys.argv[1] + "/morvik", most)


if __name__ == "__main__":
    main()
