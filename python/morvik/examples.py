"""A small session with a word or a message: its text, run in an interpreter of its own."""
import re
import subprocess
import tempfile

SECONDS = 2
CLOSING = re.compile(rb"\n--- Spent: .*\s*\Z")


def run(binary, text):
    """What is printed for a text in an interpreter of its own, or nothing where it does not end."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as folder:
        try:
            done = subprocess.run([binary, "-q"], input=text.encode("latin-1") + b"\n", stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, cwd=folder, timeout=SECONDS, check=False)
        except (OSError, subprocess.TimeoutExpired):
            return None
    return CLOSING.sub(b"", done.stdout).decode("utf-8", "replace").strip("\n") if done.returncode == 0 else None


def session(binary, what):
    """A text and its answer: the text given, or that of a Word; nothing where the word has none."""
    text = what if isinstance(what, str) else what.session
    found = run(binary, text) if text else None
    return "Morvik [0]> %s\n%s" % (text, found) if found is not None else None
