#!/usr/bin/env python3
"""Programmes over large values beside the same in CPython and, where it is installed, Lua: large.py FOLDER [RUNS]

Each is run in turn with the others, RUNS times (5); medians of user and system time in seconds, and the most memory that a
run held, with what the language takes to start. Every run checks its answer. A name after RUNS picks the rows that have
it in their title.
"""
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile

LIBRARIES = "".join((pathlib.Path(__file__).resolve().parents[1] / "lib" / (name + ".morvik")).read_text(encoding="ascii")
                    for name in ("arrays", "text"))

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

CHARACTERS = 10000000
SENTENCE = "The quick brown fox jumps over the lazy dog, and a hundred more\n"
WORDS = "'prose' TEXTREAD text:words @words SET words SHAPE FIRST .\n"
WORDS_PYTHON = "words = open('prose').read().split()\nprint(len(words))"
WORDS_LUA = """
local words = {} for word in io.open('prose'):read('a'):gmatch('%S+') do words[#words + 1] = word end
print(#words)
"""
PIECES = """
100000 .. MONADIC 7 MOD 1 + 'abcdefg' SWAP RESHAPE ; EACH @texts SET
10 : texts ',' text:join @all SET all ',' text:split @pieces SET ; REPEAT all SHAPE pieces SHAPE , .
"""
PIECES_PYTHON = """
texts = ['abcdefg'[:i % 7 + 1] for i in range(1, 100001)]
for i in range(10):
    all = ','.join(texts)
    pieces = all.split(',')
print(len(all), len(pieces))
"""
PIECES_LUA = """
local texts, all, pieces = {}
for i = 1, 100000 do texts[i] = ('abcdefg'):sub(1, i % 7 + 1) end
for n = 1, 10 do
  all, pieces = table.concat(texts, ','), {}
  for piece in all:gmatch('[^,]+') do pieces[#pieces + 1] = piece end
end
print(#all .. ' ' .. #pieces)
"""
APPENDS = "10 : '' @a SET 100000 : a 'abcdefg' , @a SET ; REPEAT ; REPEAT a SHAPE .\n"
APPENDS_PYTHON = """
def f():
    for i in range(10):
        a = ''
        for j in range(100000): a += 'abcdefg'
    return len(a)
print(f())
"""

# Title, and the programmes of the languages.
ROWS = (
    ("100 rounds of life on 512 x 512", LIFE, LIFE_PYTHON, LIFE_LUA),
    ("the words of ten million characters", WORDS, WORDS_PYTHON, WORDS_LUA),
    ("10 times 100000 texts joined and cut again", PIECES, PIECES_PYTHON, PIECES_LUA),
    ("10 times 100000 texts appended to a text", APPENDS, APPENDS_PYTHON),
)


def measure(command, text, folder):
    """The words of the answer, seconds, and bytes at most."""
    with tempfile.TemporaryFile("w+") as given, tempfile.TemporaryFile("w+") as answer:
        given.write(text)
        given.seek(0)
        with subprocess.Popen(command, stdin=given, stdout=answer, cwd=folder) as process:
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        answer.seek(0)
        words = [word for word in answer.read().split() if word.isdigit()]
    if process.returncode != 0:
        raise SystemExit("%s ended with %d" % (command[0], process.returncode))
    return words, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def beside(languages, title, programmes, runs, folder):
    found = {name: [] for name, _ in languages}
    for _ in range(runs):
        answers = set()
        for (name, command), text in zip(languages, programmes):
            words, seconds, most = measure(command, (LIBRARIES if "text:" in text else "") + text, folder)
            answers.add(tuple(words))
            found[name].append((seconds, most))
        if len(answers) != 1 or not words:
            raise SystemExit("%s: the answers differ: %s" % (title, answers))
    print("%-44s %s" % (title, ", ".join("%s %.2f s %.0f MB" % (
        name, *(statistics.median(column) / unit for column, unit in zip(zip(*found[name]), (1, 1e6))))
        for name, _ in languages if found[name])), flush=True)


def main():
    runs, wanted = int(sys.argv[2]) if len(sys.argv) > 2 else 5, " ".join(sys.argv[3:])
    languages = [("morvik", [os.path.abspath(sys.argv[1]) + "/morvik", "-q"]), ("python3", [sys.executable, "-"])]
    if shutil.which("lua5.4"):
        languages.append(("lua5.4", ["lua5.4", "-"]))
    with tempfile.TemporaryDirectory(prefix="morvik-") as folder:
        pathlib.Path(folder, "prose").write_text((SENTENCE * (CHARACTERS // len(SENTENCE) + 1))[:CHARACTERS], encoding="ascii")
        for title, *programmes in ROWS:
            if wanted in title:
                beside(languages, title, programmes, runs, folder)


if __name__ == "__main__":
    main()
