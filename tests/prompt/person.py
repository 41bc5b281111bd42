"""A person at the prompt: a real pseudo-terminal, with a screen behind it that answers as terminals do."""
import os
import pathlib
import re
import signal
import tempfile
import time

import pexpect
import pyte

ROOT = pathlib.Path(__file__).resolve().parents[2]
PATIENCE = 60.0


class Impatient(Exception):
    """What was waited for did not come."""


class Person:
    def __init__(self, binary, *arguments, rows=30, columns=100, home=None, **environment):
        self.scratch = None if home else tempfile.TemporaryDirectory(prefix="morvik-")
        self.home = pathlib.Path(home or self.scratch.name)
        kept = {name: value for name, value in os.environ.items() if not re.match("XDG_|MORVIK|NO_COLOR|VISUAL|EDITOR", name)}
        environment = {**kept, "HOME": str(self.home), "TERM": "xterm-256color", "LC_ALL": "C.UTF-8", **environment}
        self.screen = pyte.HistoryScreen(columns, rows, history=100000)
        self.stream = pyte.ByteStream(self.screen)
        self.raw = b""
        self.child = pexpect.spawn(os.sys.executable, [str(ROOT / "python" / "morvik-prompt"), "--interpreter",
                                   os.path.abspath(binary), *arguments], env=environment, cwd=str(self.home),
                                   dimensions=(rows, columns), timeout=PATIENCE, maxread=1 << 16)
        self.child.delaybeforesend = None
        self.screen.write_process_input = lambda text: os.write(self.child.child_fd, text.encode())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.child.close(force=True)
        if self.scratch:
            self.scratch.cleanup()

    # ---- What is on the screen.

    def read(self, seconds=0.0):
        """Takes what comes within a time. Is the terminal still open?"""
        try:
            data = self.child.read_nonblocking(1 << 16, seconds)
        except pexpect.TIMEOUT:
            return True
        except pexpect.EOF:
            return False
        self.raw += data
        self.stream.feed(data)
        return True

    def lines(self):
        return [line.rstrip() for line in self.screen.display]

    def text(self):
        return "\n".join(self.lines()).rstrip()

    def until(self, pattern, seconds=PATIENCE):
        """Waits until the screen matches."""
        end = time.monotonic() + seconds
        while not re.search(pattern, self.text(), re.M):
            if not self.read(0.05) and not re.search(pattern, self.text(), re.M):
                raise Impatient("the end came before %r; the screen:\n%s" % (pattern, self.text()))
            if time.monotonic() > end:
                raise Impatient("waited for %r; the screen:\n%s" % (pattern, self.text()))
        return self.text()

    def untilprompt(self, depth=r"\d+"):
        """Waits for an empty line at the prompt, and the cursor on it."""
        end = time.monotonic() + PATIENCE
        while not re.fullmatch(r"Morvik \[%s\]>" % depth, self.lines()[self.screen.cursor.y]):
            if not self.read(0.05) or time.monotonic() > end:
                raise Impatient("waited for a prompt; the screen:\n%s" % self.text())
        return self.text()

    def ending(self):
        while self.read(1):
            pass
        self.child.wait()
        return self.child.exitstatus

    # ---- Keys.

    def type(self, keys):
        self.child.send(keys)

    def say(self, text, depth=r"\d+"):
        """Types a text and Enter, and waits for the prompt after the answer. Returns what is on the screen."""
        self.type("\x0c")  # an empty screen
        self.until(r"\AMorvik \[\d+\]>$")
        self.type(text + "\r")
        self.until(r"^Morvik \[\d+\]> \S")
        return self.untilprompt(depth)

    def paste(self, text):
        self.type("\x1b[200~" + text + "\x1b[201~")

    def interpreter(self):
        """The process that runs the texts."""
        children = pathlib.Path("/proc/%d/task/%d/children" % (self.child.pid, self.child.pid)).read_text().split()
        return int(children[0])

    def kill(self):
        os.kill(self.interpreter(), signal.SIGKILL)

    def resize(self, rows, columns):
        self.screen.resize(rows, columns)
        self.child.setwinsize(rows, columns)
