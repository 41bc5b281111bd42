"""What a programme prints, on its way to the person: signs for bytes, large outputs cut or paged, a spinner meanwhile."""
import os
import re
import shutil
import subprocess
import sys
import time

from . import signs, words
from .engine import PACKET

FRAMES = "|/-\\"
SPINNING_AFTER, FRAME_EVERY = 0.4, 0.12
KEPT = 64 << 20  # bytes of an output that can be looked at afterwards
# A line of a report: a numbered message, or a complaint without a number.
REPORT = re.compile(r"^(?:(\d{1,4}) - .*|\[(?:Trelk|lexnum)\] error.*|WARNING/ERROR: .*)$", re.M)
RED, BLACK = "\x1b[31m", "\x1b[39m"
CONTROL = re.compile(r"\x1b\[[0-9;?]*[ -/]*[@-~]|[\x00-\x08\x0b-\x1f\x7f]")


def coloured(text):
    """Reports in red. What begins as a message is one where the table of messages knows it."""
    def paint(found):
        if found[1] and not words.MESSAGES.get(int(found[1]), [""])[0].startswith(found[0]):
            return found[0]
        return RED + found[0] + BLACK
    return REPORT.sub(paint, text)


class Screen:
    """One stream to a terminal. `begin` before each text, `finish` behind it."""

    def __init__(self, stream=None, large="cut", limit=50000, plain=False, colourless=True):
        self.stream = stream or sys.stdout
        self.large, self.limit, self.plain, self.colourless = large, limit, plain, colourless
        self.begin()

    def begin(self):
        self.shower = signs.Shower()
        self.started = time.monotonic()
        self.kept = bytearray()
        self.count = 0  # bytes that came
        self.shownbytes = 0
        self.atstart = True
        self.line = ""  # what stands on the last line
        self.spun = 0
        self.spinning = False

    def resume(self):
        """After an answer to a running programme, and between two texts."""
        if self.line:
            self.put("\n")
        self.atstart = True

    # ---- Output.

    def write(self, data):
        self.count += len(data)
        if len(self.kept) < KEPT:
            self.kept += data
        if self.large == "pager" and self.count > self.limit:
            return
        if self.large != "all":
            data = data[:max(0, self.limit - self.shownbytes)]
        self.shownbytes += len(data)
        self.put(self.shower.show(data))

    def put(self, text):
        """The blank lines that the interpreter leads off with are left out: the person's own line feed did that."""
        if self.atstart:
            text = text.lstrip("\n")
            self.atstart = not text
        if not text:
            return
        self.stopspinner()
        self.stream.write(text if self.colourless else coloured(text))
        self.stream.flush()
        self.line = (self.line + text).rpartition("\n")[2][-2000:]
        self.last = text

    def cut(self):
        return self.large == "cut" and self.count > self.limit

    def finish(self):
        """Ends the output of a text."""
        self.stopspinner()
        self.put(self.shower.show(b"", last=True))
        if self.line:
            self.stream.write("\n")
            self.line = ""
        if self.cut():
            self.note("%d of %d bytes shown; F3 shows all" % (self.limit, self.count))
        elif self.large == "pager" and self.count > self.limit:
            self.page()
        self.stream.flush()

    def note(self, text):
        self.stopspinner()
        self.stream.write("-- %s\n" % text)
        self.stream.flush()

    def elapsed(self):
        return time.monotonic() - self.started

    def page(self):
        """All of the last output in the person's pager."""
        pager = os.environ.get("PAGER") or ("less" if shutil.which("less") else "more")
        try:
            subprocess.run(pager, shell=True, input=signs.shown(bytes(self.kept)).lstrip("\n").encode(), check=False,
                           env={"LESS": "-FRX", **os.environ})
        except OSError as fault:
            self.note("%s: %s" % (pager, fault.strerror))

    def question(self):
        """Takes back the last line, for a prompt that stands in its place. What a programme asks is on that line, whether
        a line feed follows or not."""
        self.stopspinner()
        self.put(self.shower.show(b"", last=True))
        if self.plain:
            return ""
        said = signs.shown(bytes(self.kept[-4 * PACKET:]))
        ended = said.endswith("\n")
        asked = (said[:-1] if ended else said).rpartition("\n")[2]
        if not asked or CONTROL.search(asked) or len(asked) >= shutil.get_terminal_size().columns or self.cut():
            return ""
        self.stream.write(("\x1b[A" if ended else "") + "\r\x1b[K")
        self.stream.flush()
        self.line = ""
        self.atstart = True
        return asked

    # ---- The spinner stands behind what was printed, and goes before more is.

    def tick(self):
        elapsed = self.elapsed()
        if self.plain or elapsed < SPINNING_AFTER + self.spun * FRAME_EVERY or self.line:
            return
        self.stopspinner()
        self.stream.write(FRAMES[self.spun % len(FRAMES)])
        self.stream.flush()
        self.spinning = True
        self.spun = int((elapsed - SPINNING_AFTER) / FRAME_EVERY) + 1

    def stopspinner(self):
        if self.spinning:
            self.stream.write("\b \b")
            self.spinning = False
