"""The prompt: reads texts with everything that eases typing, and has the interpreter behind pipes run them."""
import argparse
import contextlib
import os
import pathlib
import shutil
import signal
import sys
import termios
import time

from . import engine, options as settings, signs
from .screen import Screen

HERE = pathlib.Path(__file__).resolve().parent
# Where the interpreter is: installed beside the prompt, built in the source tree, or on the path.
PLACES = [HERE.parents[1] / "build" / "morvik", HERE.parents[2] / "bin" / "morvik"]
LONG = 1.0  # seconds after which the time of a text is told


def interpreter(named):
    """Its path; None where there is none. One that is named is that one or none."""
    if named:
        return shutil.which(named)
    for place in [os.environ.get("MORVIK"), *PLACES]:
        if place and os.access(place, os.X_OK):
            return str(place)
    return shutil.which("morvik")


def parsed(arguments):
    parser = argparse.ArgumentParser(
        prog="morvik-prompt", description="A prompt for Morvik. Options for the interpreter itself go behind --.",
        epilog="Settings are read from %s." % settings.optionfile())
    parser.add_argument("--dot", action="store_true", default=None, help="end each whole line with a full stop by itself")
    parser.add_argument("--vi", action="store_const", const="vi", dest="editing", help="keys of Vi")
    parser.add_argument("--emacs", action="store_const", const="emacs", dest="editing", help="keys of Emacs")
    parser.add_argument("--no-toolbar", action="store_false", default=None, dest="toolbar", help="do not show the stack")
    parser.add_argument("--large", choices=("cut", "pager", "all"), help="what is done with a large output")
    parser.add_argument("--confine", action="store_true", default=None,
                        help="allow files below the present folder only, wherever links lead, and no editor")
    parser.add_argument("--log", metavar="FILE", help="write every text to a file, to be run again")
    parser.add_argument("--interpreter", metavar="PATH", help="the morvik to run")
    parser.add_argument("passed", nargs="*", metavar="-- OPTION", help="options of the interpreter, such as -c4")
    given = parser.parse_args(arguments)
    options = settings.Options()
    for name in settings.DEFAULTS:
        value = getattr(given, name, None)
        if value is not None:
            setattr(options, name, value)
    return given, options


class Log:
    """What was sent, so that `morvik -q <FILE` does the same again."""

    def __init__(self, path):
        self.file = open(path, "ab") if path else None

    def add(self, data):
        if self.file:
            self.file.write(data)
            self.file.flush()


class Keys:
    """The terminal between two line edits: nothing is echoed, no line is cut, and keys send no signals but wait for the
    next edit. While a programme runs they do (`running`), to the interpreter itself, and to us through `interrupt`."""

    def __init__(self, interrupt):
        self.interrupt = interrupt
        self.descriptor = sys.stdin.fileno()
        self.before = termios.tcgetattr(self.descriptor)

    def change(self, signals):
        modes = termios.tcgetattr(self.descriptor)
        modes[3] &= ~(termios.ECHO | termios.ICANON | termios.ISIG)
        modes[3] |= termios.ISIG if signals else 0
        termios.tcsetattr(self.descriptor, termios.TCSADRAIN, modes)

    def __enter__(self):
        self.change(False)
        return self

    def __exit__(self, *_):
        termios.tcsetattr(self.descriptor, termios.TCSADRAIN, self.before)

    @contextlib.contextmanager
    def running(self):
        for number in (signal.SIGINT, signal.SIGQUIT):
            signal.signal(number, lambda *_: self.interrupt())
        self.change(True)
        try:
            yield
        finally:
            self.change(False)


def environment():
    """That of the interpreter. Its words for an editor find one that works at the terminal."""
    variables = dict(os.environ)
    variables["$EDITOR"] = str(HERE / "edit")  # the name that it asks for
    variables["MORVIK_EDITOR"] = os.environ.get("VISUAL") or os.environ.get("EDITOR") or "vi"
    return variables


class Prompt:
    def __init__(self, command, options):
        self.options = options
        self.command = command
        plain = os.environ.get("TERM") in ("dumb", "unknown", None)
        self.colourless = plain or bool(os.environ.get("NO_COLOR"))
        self.screen = Screen(large=options.large, limit=options.limit, plain=plain, colourless=self.colourless)
        self.process = engine.Engine(command, environment())
        self.process.start()
        self.keys = Keys(self.noteinterrupt)
        # What is typed is a matter of milliseconds to import, and the process starts meanwhile.
        from . import editor, peek  # pylint: disable=import-outside-toplevel
        self.peeker = peek.Peeker(self.process)
        self.names = set()
        self.listed = None
        self.stack = []
        self.editor = editor.Editor(self, plain)
        try:
            self.log = Log(os.path.expanduser(options.log))
        except OSError as fault:
            self.log = Log(None)
            options.complaints.append("%s: %s" % (options.log, fault.strerror))

    # ---- The process.

    def converse(self, data):
        self.interrupted = 0
        with self.keys.running():
            return self.process.converse(data, self.screen.write, self.tick)

    def noteinterrupt(self):
        self.interrupted = time.monotonic()
        self.brokenoff = True

    def tick(self):
        """The terminal sends an interrupt to the interpreter itself. It ignores one that comes while it still reads."""
        if self.interrupted and time.monotonic() - self.interrupted > 0.1:
            self.process.interrupt()
            self.interrupted = 0
        self.screen.tick()

    def how(self):
        """How the process ended."""
        status = self.process.process.returncode
        return "killed by signal %d" % -status if status < 0 else "gone with status %d" % status

    def restart(self):
        self.screen.note("the interpreter is %s, and is started again: its stack and names are empty" % self.how())
        self.process.close()
        self.process.start()
        wanted = self.process.converse()
        self.names.clear()
        self.listed = self.stack = None
        return wanted

    # ---- What is known about the process.

    def look(self):
        """The values on top for the toolbar."""
        if self.options.toolbar and not self.editor.plain:
            self.stack = self.peeker.stack(self.screen.count)

    def knownnames(self):
        """The person's names: those that the interpreter lists, asked for when one wants them, and those of the texts."""
        if self.listed is None:
            self.listed = self.peeker.names() if self.wanted.state == engine.AT_PROMPT else []
        return self.names.union(self.listed)

    def example(self, what):
        """A small session with a word, or with a text, run in an interpreter of its own."""
        from . import examples  # pylint: disable=import-outside-toplevel
        return examples.session(self.command[0], what)

    # ---- Texts.

    def run(self, text):
        """One or more texts, as they were typed, one after another: so the end of each is known."""
        self.screen.begin()
        self.listed = None
        self.names.update(self.editor.namesin(text))
        self.brokenoff = False
        for start, end in self.editor.scanned(text).texts():
            data = signs.tobytes(text[start:end]) + b"\n"
            self.log.add(data)
            wanted = self.serve(self.converse(data), text[start:end])
            if wanted.state == engine.ENDED or self.brokenoff:
                break
            self.screen.resume()
        self.screen.finish()
        if wanted.state == engine.AT_PROMPT and self.screen.elapsed() > LONG + self.waited:
            self.screen.note("%.2f s" % (self.screen.elapsed() - self.waited))
        return wanted

    def serve(self, wanted, sofar):
        """Lets a person answer whatever the running text asks, up to the next prompt or the end."""
        while wanted.state not in (engine.AT_PROMPT, engine.ENDED):
            wanted, sofar = self.serveonce(wanted, sofar)
        return wanted

    def serveonce(self, wanted, sofar):
        # An interrupt that came when the process had just begun to read a text, which ignores it, counts as one here.
        answer = None if self.interrupted else self.ask(wanted, sofar)
        if answer is None:
            self.brokenoff = True
            closing = self.editor.scanned(sofar).closing() if wanted.state != engine.ASKS_LINE else ""
            self.log.add(b'" interrupted "\n')
            self.interrupted = 0
            with self.keys.running():
                return self.process.leave(wanted, closing.encode(), self.screen.write), ""
        data = (answer.encode("utf-8", "surrogateescape") if wanted.state == engine.ASKS_LINE else signs.tobytes(answer))
        self.log.add(data + b"\n")
        self.screen.resume()
        open_ = sofar + "\n" + answer if wanted.state == engine.UNFINISHED else answer
        return self.converse(data + b"\n"), open_

    def ask(self, wanted, sofar):
        question = self.screen.question()
        since = time.monotonic()
        answer = self.editor.answer(wanted, question, sofar)
        self.waited += time.monotonic() - since
        return answer

    def session(self):
        self.waited = 0.0
        self.wanted, title = self.begin_quietly()
        if self.wanted.state == engine.ENDED:
            sys.stdout.write(signs.shown(bytes(self.screen.kept)))
            print("morvik-prompt: %s ended before its first prompt: %s" % (self.command[0], self.how()), file=sys.stderr)
            return self.process.process.returncode or 1
        print("%s   ? helps, Ctrl-D ends" % title)
        for complaint in self.options.complaints:
            self.screen.note(complaint)
        self.screen.begin()
        while True:
            text = self.editor.text(self.wanted.depth)
            if text is None:
                return self.goodbye()
            if not text.strip():
                continue
            if self.editor.ishelp(text):
                self.editor.help(text, self.example)
                continue
            self.waited = 0.0
            self.wanted = self.run(text)
            if self.wanted.state == engine.ENDED:
                if self.process.process.returncode == 0:
                    return 0
                self.wanted = self.restart()
                if self.wanted.state == engine.ENDED:
                    return 1
            self.look()

    def begin_quietly(self):
        """The first prompt, without what the interpreter says before it."""
        said = []
        wanted = self.process.converse(write=said.append)
        self.screen.kept = bytearray(b"".join(said))
        lines = b"".join(said).decode("utf-8", "replace").splitlines()
        return wanted, next((line.strip("- ") for line in lines if line.startswith("-- ")), "Morvik")

    def goodbye(self):
        said = signs.shown(self.process.end())
        lines = [line for line in said.splitlines() if line.strip()]
        print("\n".join(lines[:-2] + lines[-1:] if len(lines) > 2 else lines))
        return self.process.process.returncode


def main(arguments=None):
    given, options = parsed(arguments)
    binary = interpreter(given.interpreter)
    if not binary:
        print("morvik-prompt: %s" % ("%s is no program that can be run" % given.interpreter if given.interpreter
                                     else "no morvik found; --interpreter names one"), file=sys.stderr)
        return 1
    if options.confine:
        binary = str(pathlib.Path(binary).resolve().with_name("morvik-confined"))
        if not os.access(binary, os.X_OK):
            print("morvik-prompt: --confine needs %s, which is not there" % binary, file=sys.stderr)
            return 1
    command = [binary, *(option for option in given.passed if option != "-q")]
    if not (sys.stdin.isatty() and sys.stdout.isatty()):
        os.execv(binary, command)
    # Measuring runs would count what is asked between texts.
    if any(option.startswith(("-i", "-t", "-p")) for option in given.passed):
        options.toolbar = False
    prompt = Prompt(command, options)
    with prompt.keys:
        return prompt.session()
