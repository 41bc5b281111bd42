"""A session with the binary at a pseudo-terminal, as a person has it: typed text is echoed, line feeds are plain."""
import fcntl
import os
import pty
import re
import select
import signal
import subprocess
import tempfile
import termios
import time

PATIENCE = 60.0
PARTING = 1.0
PROMPT = re.compile(r"\n\nMorvik \[\d+\]> $")
ANYPROMPT = re.compile(r"\n(?:\nMorvik \[\d+\]> |Inspect \[\d+\]: )$")


class Silence(Exception):
    """What was waited for did not come."""


class Terminal:
    def __init__(self, binary, *arguments, preparation=None):
        self.scratch = tempfile.TemporaryDirectory(prefix="morvik-")
        self.master, slave = pty.openpty()
        modes = termios.tcgetattr(slave)
        modes[1] &= ~termios.ONLCR
        termios.tcsetattr(slave, termios.TCSANOW, modes)
        variables = dict(os.environ, HOME=self.scratch.name, LC_ALL="C")
        self.process = subprocess.Popen([os.path.abspath(binary), *arguments], stdin=slave, stdout=slave, stderr=slave,
                                        cwd=self.scratch.name, env=variables, start_new_session=True,
                                        preexec_fn=lambda: self.prepare(slave, preparation))
        os.close(slave)
        self.text = ""

    @staticmethod
    def prepare(slave, preparation):
        """In the child: makes the slave the session's terminal, so that keys send signals."""
        fcntl.ioctl(slave, termios.TIOCSCTTY, 0)
        if preparation:
            preparation()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()
        os.close(self.master)
        self.scratch.cleanup()

    def end(self):
        """Lets a process at its prompt end in order, so that its counters of what it reached are written; kills any other."""
        if self.process.poll() is None:
            self.type("\x04")
            self.ended(PARTING)
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    def ended(self, seconds):
        end = time.monotonic() + seconds
        while self.process.poll() is None and time.monotonic() < end:
            self.read(0.02)

    def read(self, seconds):
        """Adds what came within the time to the text. Returns whether the terminal is still open."""
        if not select.select([self.master], [], [], seconds)[0]:
            return True
        try:
            data = os.read(self.master, 65536)
        except OSError:
            return False
        self.text += data.decode("latin-1")
        return bool(data)

    def until(self, pattern):
        """Reads until the text not taken yet matches, and takes it."""
        end = time.monotonic() + PATIENCE
        while not re.search(pattern, self.text):
            if not self.read(0.1) or time.monotonic() > end:
                raise Silence("waited for %r, have %r" % (getattr(pattern, "pattern", pattern), self.text))
        taken, self.text = self.text, ""
        return taken

    def untilprompt(self):
        return self.until(PROMPT)

    def answer(self):
        """Reads up to the next prompt of either kind, or to the end of the process."""
        end = time.monotonic() + PATIENCE
        while not ANYPROMPT.search(self.text) and self.read(0.1):
            if time.monotonic() > end:
                raise Silence("waited for a prompt, have %r" % self.text)
        taken, self.text = self.text, ""
        return taken

    def type(self, text):
        os.write(self.master, text.encode("latin-1"))

    def say(self, text):
        """Types a line and reads up to the next prompt: the echo of the line is a part of what is returned."""
        self.type(text + "\n")
        return self.untilprompt()

    def quiet(self, seconds):
        """What comes within the time, when nothing is expected."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.read(0.05)
        taken, self.text = self.text, ""
        return taken

    def ending(self):
        """Reads up to the end of the process. Returns the rest of the text and the exit status."""
        end = time.monotonic() + PATIENCE
        while self.read(0.1):
            if time.monotonic() > end:
                raise Silence("waited for the end, have %r" % self.text)
        taken, self.text = self.text, ""
        return taken, self.process.wait(PATIENCE)
