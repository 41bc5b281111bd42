#!/usr/bin/env python3
"""Programmes over large values beside the same in CPython and, where it is installed, Lua: large.py FOLDER [RUNS]

Each is run in turn with the others, RUNS times (5); medians of user and system time in seconds, and the most memory that a
run held, with what the language takes to start. Every run checks its answer. A name after RUNS picks the rows that have
it in their title.
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

LIFE = """
(1 1 1 1 1 1 1 1 1)[3 3] @weights SET
262144 INTERVAL 2654435 * 1048573 MOD 300000 < (512 512) RESHAPE @board SET
: board weights MONADIC RAVEL SUM ; MASK @sums SET sums 3 = sums 4 = board AND OR @board SET ; @step SET
100 step REPEAT board RAVEL SUM .
"""
LIFE_PYTHON = """
n = 512
cells = [int(i * 2654435 % 1048573 < 300000) for i in range(1, n * n + 1)]
board = [cells[i:i + n] for i in range(0, n * n, n)]
def step(board):
    none = [0] * (n + 2)
    wide = [none] + [[0] + row + [0] for row in board] + [none]
    sums = [[a + b + c for a, b, c in zip(row, row[1:], row[2:])] for row in wide]
    return [[1 if a + b + c == 3 or (x and a + b + c == 4) else 0 for a, b, c, x in zip(*sums[i:i + 3], board[i])]
            for i in range(n)]
for i in range(100): board = step(board)
print(sum(map(sum, board)))
"""
LIFE_LUA = """
local n, board = 512, {}
for r = 0, n + 1 do board[r] = {} for c = 0, n + 1 do board[r][c] = 0 end end
for i = 0, n * n - 1 do
  if (i + 1) * 2654435 % 1048573 < 300000 then board[i // n + 1][i % n + 1] = 1 end
end
for round = 1, 100 do
  local new = {[0] = board[0], [n + 1] = board[n + 1]}
  for r = 1, n do
    local a, b, d, row = board[r - 1], board[r], board[r + 1], {[0] = 0, [n + 1] = 0}
    for c = 1, n do
      local s = a[c - 1] + a[c] + a[c + 1] + b[c - 1] + b[c] + b[c + 1] + d[c - 1] + d[c] + d[c + 1]
      row[c] = (s == 3 or (s == 4 and b[c] == 1)) and 1 or 0
    end
    new[r] = row
  end
  board = new
end
local s = 0
for r = 1, n do for c = 1, n do s = s + board[r][c] end end
print(s)
"""

# Title, answer, the programmes. FILE is where the text of ten million bytes is.
ROWS = (
    ("100 rounds of life on 512 x 512", LIFE, LIFE_PYTHON, LIFE_LUA),
)


def measure(command, text):
    """The words of the answer, seconds, and bytes at most."""
    with tempfile.TemporaryFile("w+") as given, tempfile.TemporaryFile("w+") as answer:
        given.write(text)
        given.seek(0)
        with subprocess.Popen(command, stdin=given, stdout=answer) as process:
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        answer.seek(0)
        words = [word for word in answer.read().split() if word.isdigit()]
    if process.returncode != 0:
        raise SystemExit("%s ended with %d" % (command[0], process.returncode))
    return words, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def main():
    runs, wanted = int(sys.argv[2]) if len(sys.argv) > 2 else 5, " ".join(sys.argv[3:])
    languages = [("morvik", [sys.argv[1] + "/morvik", "-q"]), ("python3", [sys.executable, "-"])]
    if shutil.which("lua5.4"):
        languages.append(("lua5.4", ["lua5.4", "-"]))
    for title, *programmes in ROWS:
        if wanted not in title:
            continue
        found = {name: [] for name, _ in languages}
        for _ in range(runs):
            answers = set()
            for (name, command), text in zip(languages, programmes):
                words, seconds, most = measure(command, text)
                answers.add(tuple(words))
                found[name].append((seconds, most))
            if len(answers) != 1 or not words:
                raise SystemExit("%s: the answers differ: %s" % (title, answers))
        print("%-40s %s" % (title, ", ".join("%s %.2f s %.0f MB" % (
            name, *(statistics.median(column) / unit for column, unit in zip(zip(*found[name]), (1, 1e6))))
            for name, _ in languages)), flush=True)


if __name__ == "__main__":
    main()
