"""The interpreter as a process behind pipes: texts go in, what it prints comes out, and when it wants to read is known.

Nothing that a programme prints can be taken for the end of a text:

- The output pipe keeps writes apart (packets), and the interpreter writes its prompt as one write of its own.
- The kernel tells when the process waits for its standard input, and where its stack stands then. At the prompt it always
  stands where it stood at the first one; a programme that reads stands deeper.
- While a text is read, interrupts are ignored; while QUOTEDIN reads a line, they are not.
"""
import fcntl
import os
import re
import select
import signal
import struct
import subprocess
import termios
import time
from typing import NamedTuple

PROMPT = re.compile(rb"\n\nMorvik \[(\d+)\]> ")
INSPECT = re.compile(rb"(?:\A|\n)Inspect \[\d+\]: \Z")
PACKETS = getattr(os, "O_DIRECT", 0)
PACKET = 65536
OUTPUT_PIPE = 1 << 20
SAME_FRAME = 128  # bytes of stack between the places in which one text is read
NAPS = [0.0001, 0.0002, 0.0005, 0.001, 0.002, 0.005, 0.01, 0.02]
NOBODYKNOWS = 0.5  # seconds of sleep after which a process that cannot be looked at is taken to read
INTERRUPT = 1 << (signal.SIGINT - 1)

# What the process wants when `converse` comes back.
AT_PROMPT, UNFINISHED, ASKS_TEXT, ASKS_LINE, ENDED = "prompt", "unfinished", "text", "line", "ended"


class Wanted(NamedTuple):
    state: str
    depth: int = 0  # of the stack, at the prompt
    inspects: bool = False  # is the text that is asked for a line at the Inspect prompt?


class Observed(NamedTuple):
    """How the process stands while it waits for its standard input."""
    stack: int
    readstext: bool


class Engine:
    def __init__(self, command, environment=None):
        self.command, self.environment = command, environment
        self.process = None
        self.depth = 0

    # ---- Start and end.

    def start(self):
        inner, self.input = os.pipe2(os.O_CLOEXEC)
        try:
            self.output, outer = os.pipe2(os.O_CLOEXEC | PACKETS)
        except OSError:
            self.output, outer = os.pipe2(os.O_CLOEXEC)
        try:
            fcntl.fcntl(self.output, 1031, OUTPUT_PIPE)  # F_SETPIPE_SZ
        except OSError:
            pass
        self.process = subprocess.Popen(self.command, stdin=inner, stdout=outer, stderr=outer, env=self.environment)
        self.unread = inner  # tells what the process has not read yet
        os.close(outer)
        os.set_blocking(self.input, False)
        os.set_blocking(self.output, False)
        self.promptstack = None
        self.held = None
        self.tail = b""

    def close(self):
        for descriptor in (self.input, self.output, self.unread):
            os.close(descriptor)

    def end(self):
        """Ends the input, and with it the process. Returns what it still prints."""
        os.close(self.input)
        os.close(self.unread)
        self.input, self.unread = os.open(os.devnull, os.O_WRONLY), os.open(os.devnull, os.O_RDONLY)
        os.set_blocking(self.output, True)
        said = []
        while data := os.read(self.output, PACKET):
            said.append(data)
        self.process.wait()
        return b"".join(said)

    def interrupt(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)

    # ---- What the process does.

    def about(self, name):
        with open("/proc/%d/%s" % (self.process.pid, name), "rb", buffering=0) as file:
            return file.read(4096)

    def isempty(self):
        """Has the process read all that it was sent?"""
        return struct.unpack("i", fcntl.ioctl(self.unread, termios.FIONREAD, bytes(4)))[0] == 0

    def masks(self):
        """Which signals the process ignores, as a mask, and whether one that it has not taken yet is an interrupt."""
        masks = dict(re.findall(rb"(\w+):\s*(\w+)\n", self.about("status")))
        ignored, *pending = (int(masks[name], 16) for name in (b"SigIgn", b"SigPnd", b"ShdPnd"))
        return ignored, any(INTERRUPT & mask for mask in pending)

    def observe(self):
        """An Observed while the process waits for input that nobody has sent, otherwise None."""
        if not self.isempty():
            return None
        try:
            # A process that has just been woken by an interrupt still counts as one that waits.
            ignored, interrupted = before = self.masks()
            call = self.about("syscall").split()
            if interrupted or len(call) < 8 or call[:2] != [b"0", b"0x0"] or self.masks() != before:
                return None
            return Observed(int(call[-2], 16), bool(ignored & INTERRUPT))
        except (PermissionError, FileNotFoundError):
            return self.guess()
        except (OSError, ValueError, KeyError):
            return None

    def guess(self):
        """Where the kernel shows no calls: a process that sleeps and ignores interrupts reads a text; one that sleeps for
        long reads a line."""
        try:
            ignored, interrupted = self.masks()
            sleeps = self.about("stat").rpartition(b")")[2].split()[0] == b"S"
        except (OSError, ValueError, KeyError):
            return None
        readstext = bool(ignored & INTERRUPT)
        if interrupted or not sleeps or (not readstext and time.monotonic() - self.quietsince < NOBODYKNOWS):
            return None
        return Observed(0, readstext)

    # ---- Conversation.

    def receive(self, write):
        """Takes what was printed. Is there an end to it?"""
        while True:
            try:
                data = os.read(self.output, PACKET)
            except BlockingIOError:
                return False
            if self.held:
                write(self.held)
                self.held = None
            if not data:
                return True
            self.quietsince = time.monotonic()
            self.tail = (self.tail + data)[-80:]
            if PROMPT.fullmatch(data):
                self.held = data
            else:
                write(data)

    def send(self, data):
        try:
            return data[os.write(self.input, data[:PACKET]):]
        except BlockingIOError:
            return data
        except BrokenPipeError:
            return b""

    def converse(self, data=b"", write=lambda data: None, tick=lambda: None):
        """Sends bytes, hands on what is printed, and says what the process wants then. `tick` is called while it works."""
        naps, self.quietsince, self.tail = 0, time.monotonic(), b""
        left = memoryview(data)
        if data:
            self.held = None
        while True:
            if self.receive(write):
                self.process.wait()
                return Wanted(ENDED)
            if len(left):
                left = self.send(left)
            else:
                observed = self.observe()
                if observed:
                    # It waits, so that all that it printed has arrived.
                    if self.receive(write):
                        continue
                    return self.wanted(observed)
            tick()
            nap = NAPS[min(naps, len(NAPS) - 1)]
            naps += 1
            ready = select.select([self.output], [self.input] if len(left) else [], [], nap)
            if ready[0]:
                naps = 0

    def wanted(self, observed):
        if self.promptstack is None:
            self.promptstack = observed.stack
        samelevel = observed.readstext and abs(self.promptstack - observed.stack) < SAME_FRAME
        if self.held and observed.readstext and observed.stack == self.promptstack:
            self.depth = int(PROMPT.fullmatch(self.held).group(1))
            return Wanted(AT_PROMPT, self.depth)
        if samelevel and self.promptstack:
            return Wanted(UNFINISHED)
        if not observed.readstext:
            return Wanted(ASKS_LINE)
        return Wanted(ASKS_TEXT, 0, bool(INSPECT.search(self.tail)))

    # ---- Ways out of a text that is being read.

    def leave(self, wanted, closing, write=lambda data: None):
        """Out of whatever the process reads, back to where a text can begin. `closing` ends what the text so far has
        opened. Says what the process wants then."""
        if wanted.state == ASKS_LINE:
            self.interrupt()
            return self.converse(write=write)
        if wanted.state == UNFINISHED:
            # A text of too many Points is dropped as a whole.
            return self.converse(closing + b" 1" * 1100 + b" .\n")
        if wanted.state == ASKS_TEXT and wanted.inspects:
            return self.converse(closing + b" ::BREAK\n", write)
        if wanted.state == ASKS_TEXT:
            # While a text is read, interrupts are ignored; while a line is read, they are not.
            wanted = self.converse(closing + b" ::QUOTEDIN\n")
            return self.leave(wanted, b"", write) if wanted.state == ASKS_LINE else wanted
        return wanted
