"""A small session with a word, made by running it on plain operands in an interpreter of its own."""
import itertools
import re
import subprocess
import tempfile

SECONDS = 2
# What stands for the letters of a stack effect, the likeliest first.
OPERANDS = {"x": ("3", "2.5", "(3 1 2)", "'abc'", "65"), "y": ("2", "(1 2 3)", "(2)", "'b'"), "z": ("5",),
            "n": ("2", "(2)"), "m": ("5",), "v": ("(3 1 2)", "(1 2 3)[3 1]"), "t": ("T", "(1 0 1)"), "s": ("'abc'", "'1 2 +'"),
            "f": (": 1 + ;",), "mark": ("[. 1 2",), "...": ("1 2 3",)}
TRIES = 12
# Words that talk to the terminal, to files or to the process itself.
LEFT_OUT = re.compile(r"READ|WRITE|APPEND|OPEN|CLOSE|SAVE|LOAD|DUMP|REMEMBER|SEEK|REWIND|DATA|INPUT|QUOTE|QUAD|EDIT|WAIT|SLEEP"
                      r"|TRACE|STEP|RUN|BREAK|OFF|QUIT|ENDPROCESS|WIPE|CONTEXT|DICTIONARY|SED|STREAM|GOTO|JUMP|CALL$|YIELD"
                      r"|RETURN|POSITION")
CLOSING = re.compile(rb"\n--- Spent: .*\s*\Z")


def texts(word):
    spelling = next((name for name in word.spellings if name.isascii() and name[0].isalpha()), word.spellings[0])
    if not word.effect or any(LEFT_OUT.search(name) for name in word.spellings) or not spelling.isascii():
        return []
    taken = word.effect.split("--")[0].split()
    if any(letter not in OPERANDS for letter in taken):
        return []
    every = itertools.product(*(OPERANDS[letter] for letter in taken))
    return [" ".join([*operands, spelling, "."]) for operands in itertools.islice(every, TRIES)]


def session(binary, word):
    """The text and its answer, or nothing where none of the operands fits."""
    for text in texts(word):
        with tempfile.TemporaryDirectory(prefix="morvik-") as folder:
            try:
                run = subprocess.run([binary, "-q"], input=text.encode() + b"\n", capture_output=True, cwd=folder,
                                     timeout=SECONDS, check=False)
            except (OSError, subprocess.TimeoutExpired):
                return None
        if run.returncode == 0 and not run.stderr and b"-- " not in CLOSING.sub(b"", run.stdout):
            said = CLOSING.sub(b"", run.stdout).decode("utf-8", "replace")
            return "Morvik [0]> %s\n%s" % (text, said.strip("\n"))
    return None
