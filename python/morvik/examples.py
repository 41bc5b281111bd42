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
MESSAGE = re.compile(r"^\d+ - |^-- ", re.M)
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


def run(binary, text):
    """(what is printed, was there no message) for a text in an interpreter of its own, or nothing where it does not end."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as folder:
        try:
            done = subprocess.run([binary, "-q"], input=text.encode("latin-1") + b"\n", stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, cwd=folder, timeout=SECONDS, check=False)
        except (OSError, subprocess.TimeoutExpired):
            return None
    said = CLOSING.sub(b"", done.stdout).decode("utf-8", "replace")
    return said.strip("\n"), done.returncode == 0 and not MESSAGE.search(said)


def session(binary, what):
    """A text and its answer: the text given, or one for a Word; nothing where none of the operands fits."""
    for text in [what] if isinstance(what, str) else texts(what):
        found = run(binary, text)
        if found and (found[1] or isinstance(what, str)):
            return "Morvik [0]> %s\n%s" % (text, found[0])
    return None
