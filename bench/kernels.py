#!/usr/bin/env python3
"""All kernels in one table:  kernels.py FOLDER [FILTER]

A row is an instruction over one kind of elements. Its ratios are the time of the instruction's loop by that of the same
written by hand, over 10^3, 10^5 and 10^7 elements; one that is over its goal bears a star. Kernels that answer
otherwise than the loop beside them fail.
"""
import json
import os
import subprocess
import sys
import tempfile

COLUMNS = (10**3, 10**5, 10**7)
ARRAYGOAL = 1.2  # of the array instructions, whose rows name none
MINTIME = "0.05"  # seconds for each kernel that does not say itself how often it runs


def measured(binary, chosen):
    """What the benchmarks that match report, as the library writes it."""
    with tempfile.TemporaryDirectory() as folder:
        report = os.path.join(folder, "report.json")
        subprocess.run([binary, "--benchmark_filter=" + chosen, "--benchmark_min_time=" + MINTIME,
                        "--benchmark_out=" + report, "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with open(report) as f:
            return json.load(f)["benchmarks"]


def named(benchmark):
    """The label and the number of elements, None where there is none."""
    parts = [part for part in benchmark["name"].split("/") if ":" not in part]
    count = int(parts.pop()) if parts[-1].isdigit() else None
    return " ".join(parts).replace("_", " "), count


def cell(found, goal):
    """One ratio as the table shows it. With an apostrophe it is of fewer elements than the column says."""
    if found is None:
        return "%8s " % ""
    ratio, fewer = found
    return "%8.2f%s%s" % (ratio, "'" if fewer else " ", "*" if ratio > goal else " ")


def main():
    found = measured(os.path.join(sys.argv[1], "bench", "kernel_bench"), sys.argv[2] if len(sys.argv) > 2 else ".")
    failed = [b["name"] + ": " + b["error_message"] for b in found if b.get("error_occurred")]
    rows, others = {}, []
    for b in found:
        label, count = named(b)
        if "ratio" not in b:
            others.append(b)
            continue
        goal, ratios = rows.setdefault(label, (b.get("goal", ARRAYGOAL), {}))
        column = min((c for c in COLUMNS if count <= c), default=COLUMNS[-1])
        ratios[column] = (b["ratio"], count < column)

    print("%-36s %5s  %9s %9s %9s" % ("by the loop written by hand", "goal", "10^3", "10^5", "10^7"))
    over = 0
    for label, (goal, ratios) in rows.items():
        over += sum(ratio > goal for ratio, _ in ratios.values())
        print("%-36s %5.2f %s" % (label, goal, "".join(cell(ratios.get(c), goal) for c in COLUMNS)))
    print("%d rows; * over the goal: %d of %d ratios; ' of 10^6 elements\n" %
          (len(rows), over, sum(len(ratios) for _, ratios in rows.values())))
    for b in others:
        if not b.get("error_occurred"):
            print("%-36s %14.1f %s" % (b["name"], b.get("ns", b["cpu_time"]), "ns" if "ns" in b else b["time_unit"]))
    for line in failed:
        print("FAILED " + line)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
