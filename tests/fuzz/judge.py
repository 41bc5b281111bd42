"""Runs a session of texts and says what is wrong with its end: the oracles of the campaign.

A run must end in order: with status 0 and its closing line, with the status that is described where the process stack ended
a third time, with no report of a sanitizer, no block left, no fault that the process caught, and no message that names
the impossible. What does not end by itself must take an interrupt."""
import functools
import os
import pathlib
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
from typing import NamedTuple

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "pairs"))
CLOSING = re.compile(rb"--- Spent: \d\d:\d\d:\d\d\.\d{6} ---\n\n$")
FAULTS = (b"UNKNOWN SIGNAL", b"Floating point exception", b"Counted block", b"runtime error", b"A Problem Occured",
          b"BRRRRR", b"Realloc: SERIOUS", b"error in QUATERNION", b"lexnum", b"recount", b"live blocks")
# Where a call calls itself without end, the process stack ends. That is described, once, twice, and for good.
STACK_ENDS = b"\nSEGMENTATION VIOLATION\n"
NO_STORAGE = b"27 - out of main storage.", b"No more active memory available"
STOPPED = b"--- PROCESSING STOPPED ---"
SANITIZER_STACK = b"Sanitizer: stack-overflow"
NESTED = b"AddressSanitizer: nested bug"
CALLS = re.compile(rb"#\d+ (?:0x\w+ in )?(?:morvik::)?(?:\(anonymous namespace\)::)?(?:machine|runinner\w*|runbody)\b")
# A sum of what does not fit together gives it, as described.
IMPOSSIBLE = re.compile(rb"991 - [^\n]*\n\nInstruction:\n \. (?!OPERATOR:\t\t(?:\+|ADD|SUM|[^\n]*(?:REDUCE|/|\xab)))[^\n]*")
TRACE = re.compile(rb"#\d+ 0x\w+ in (?:morvik::)?([\w:~<>() ]+?)[ (][^\n]*/src/")

STACK_BYTES = 256 << 20
# What the sanitizer for addresses forgets of frames that a jump leaves is less than 64 MiB; that for threads holds 2^16 calls.
ADDRESSES_STACK_BYTES = 60 << 20
THREADS_STACK_BYTES = 5 << 20
DATA_BYTES = 1 << 30
FILE_BYTES = 16 << 20
TALKATIVE = 2 << 20  # bytes said, after which an interrupt is sent
SANITIZER_OPTIONS = "exitcode=98:allocator_may_return_null=1"
ADDRESSES_OPTIONS = ("max_allocation_size_mb=256:soft_rss_limit_mb=3000:quarantine_size_mb=64:"
                     "detect_stack_use_after_return=0")
REPORTS = "sanitizer"  # begins the names of their files
PATIENCE = 0.25  # seconds of the processor without a word said, before an interrupt is sent
PATIENT = 1.5   # the same, where a run that is interrupted says nothing
BUSY = 6.0      # seconds of the processor, whatever is said
RESTING = 4.0   # seconds in all without a word
BETWEEN = 0.1   # between interrupts after that
LONGEST = 120.0  # seconds without an answer to interrupts
ENDLESS = 10     # times that, for a run in all
DEAF = 5.0       # instead, where the sanitizer for threads hands an interrupt over at calls of the library alone


IDLE, WORKING = "idle", "working"


class Run(NamedTuple):
    status: int
    out: bytes
    errors: bytes
    interrupted: int  # how many interrupts it took to come to the end
    hung: bool        # it took none where it had to, and was killed
    deaf: bool        # it took none where it need not, and was killed


@functools.lru_cache(None)
def limits(binary):
    """What bounds the stack and the storage of a binary. What a sanitizer maps for itself would count, and it has a bound of its
    own; the checking build recounts only where no limit may keep it from ending the count."""
    code = pathlib.Path(binary).read_bytes()
    if b"__asan_" in code:
        return [(resource.RLIMIT_STACK, ADDRESSES_STACK_BYTES)]
    if b"__tsan_" in code:
        return [(resource.RLIMIT_STACK, THREADS_STACK_BYTES)]
    checking = b"MORVIK_FAIL_ALLOCATION" in code
    storage = (resource.RLIMIT_AS, 6 * DATA_BYTES) if checking else (resource.RLIMIT_DATA, DATA_BYTES)
    return [(resource.RLIMIT_STACK, STACK_BYTES), storage]


def lower(binary):
    for which, size in [(resource.RLIMIT_FSIZE, FILE_BYTES), (resource.RLIMIT_CORE, 0), *limits(binary)]:
        resource.setrlimit(which, (size, size))


@functools.lru_cache(None)
def maybedeaf(binary):
    """Does it take interrupts at calls of the library alone? At work, that is: whoever waits has made such a call."""
    return b"__tsan_" in pathlib.Path(binary).read_bytes()


def variables(home, reported=False):
    """The environment of a run. A report goes to the errors, or to files in the folder."""
    kept = {name: os.environ[name] for name in ("PATH", "UBSAN_OPTIONS") if name in os.environ}
    options = SANITIZER_OPTIONS + (":log_path=%s/%s" % (home, REPORTS) if reported else "")
    return {**kept, "ASAN_OPTIONS": "%s:%s" % (options, ADDRESSES_OPTIONS), "TSAN_OPTIONS": options,
            "HOME": home, "LC_ALL": "C", "$EDITOR": "true"}


def processorseconds(pid):
    try:
        fields = pathlib.Path("/proc/%d/stat" % pid).read_text().rsplit(")", 1)[1].split()
    except OSError:
        return 0.0
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def watch(process, said, patience, longest):
    """Waits for the end. Where nothing is said for long, interrupts. Returns how many were sent, and where all was in vain,
    IDLE or WORKING, which the process was then: where none was answered for so long, or the end did not come in many
    times that."""
    sent, size, heard, spent, busy, since, began, asked = 0, -1, 0, 0.0, 0.0, time.monotonic(), time.monotonic(), None
    pause = 0.005
    while True:
        try:
            process.wait(timeout=pause)
            return sent, None
        except subprocess.TimeoutExpired:
            pause = min(pause * 1.5, 0.1)
        now, here = time.monotonic(), sum(os.fstat(stream).st_size for stream in said)
        if here != size:
            size, since, spent, asked = here, now, processorseconds(process.pid), None
        if (asked is not None and now - asked > longest) or now - began > ENDLESS * longest:
            vain = WORKING if processorseconds(process.pid) - spent > patience else IDLE
            process.kill()
            process.wait()
            return sent, vain
        worked = processorseconds(process.pid)
        if (worked - spent > patience or worked - busy > BUSY or now - since > RESTING or size - heard > TALKATIVE
                or now - began > ENDLESS * longest / 2) and process.poll() is None:
            process.send_signal(signal.SIGINT)
            sent, heard, busy, asked = sent + 1, size, worked, asked or now
            time.sleep(BETWEEN)


def perform(binary, text, options=(), patience=PATIENCE, longest=LONGEST, files=None):
    """A run of the text; once more where the sanitizer fell over its own report, as it may at the end of the process stack."""
    given = (binary, text, options, patience, longest, files or {})
    run = performonce(*given)
    return performonce(*given) if NESTED in run.errors else run


def performonce(binary, text, options, patience, longest, files):
    """A run in a folder of its own, a few levels down in what is removed afterwards."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        place = pathlib.Path(scratch) / "outer" / "middle" / "inner"
        (place / "d").mkdir(parents=True)
        (place / "f1").write_bytes(b"1 2 3 .\n")
        (place / "f2").write_bytes(b": 1 + ; @a SET (1 2 (3 'x')) @b SET 'ab' .\n")
        for name, content in files.items():
            (place / name).write_bytes(content)
        with tempfile.TemporaryFile() as given, tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
            given.write(text)
            given.seek(0)
            limits(binary)  # which is remembered: the child does not read the binary anew
            with subprocess.Popen([binary, "-q", *options], stdin=given, stdout=out, stderr=errors, cwd=place,
                                  env=variables(scratch, True), preexec_fn=lambda: lower(binary)) as process:
                interrupted, vain = watch(process, (out.fileno(), errors.fileno()), patience,
                                          min(longest, DEAF) if maybedeaf(binary) else longest)
            streams = []
            for stream in (out, errors):
                stream.seek(0)
                streams.append(stream.read())
        # In files of their own, reports have room when the errors have reached the limit of a file.
        streams[1] += b"".join(path.read_bytes() for path in pathlib.Path(scratch).glob(REPORTS + ".*"))
        deaf = vain == WORKING and maybedeaf(binary)
        return Run(process.returncode, *streams, interrupted, vain is not None and not deaf, deaf)


def calledforever(run):
    """Did the process stack end under calls of the language?"""
    if SANITIZER_STACK in run.errors:
        return len(CALLS.findall(run.errors)) > 5
    return STOPPED in run.errors


def fault(run):
    """What is wrong with a run, in a line, or nothing."""
    if run.hung:
        return "took no interrupt"
    if run.deaf or calledforever(run):
        return ""
    if run.status != 0:
        frames = TRACE.findall(run.errors)
        return "status %d: %s" % (run.status, " < ".join(frame.decode() for frame in frames[:4])
                                  or run.errors[-160:].decode("latin-1"))
    if not CLOSING.search(run.out) and len(run.out) < FILE_BYTES:
        return "no closing line"
    for said in FAULTS:
        if said in run.errors or (said.startswith(b"BRRR") and said in run.out):
            return "said: " + said.decode()
    impossible = IMPOSSIBLE.search(run.errors)
    if impossible:
        return "impossible: " + impossible.group()[-80:].decode("latin-1")
    return ""


def iscomparable(run):
    """Not where it was interrupted, nor where storage ended, which the threads' own stacks bring nearer."""
    return not run.interrupted and not any(end in run.errors for end in (STACK_ENDS, *NO_STORAGE))


def compared(binary, text, poolings):
    """Where a run with each of these options differs from one without, or its own fault, and the run without, where it could be
    compared."""
    serial = perform(binary, text, patience=PATIENT)
    wrong = fault(serial)
    if wrong or not iscomparable(serial):
        return wrong, None
    for pooling in poolings:
        shared = perform(binary, text, (pooling,), PATIENT)
        wrong = fault(shared)
        if wrong:
            return pooling + " " + wrong, serial
        if not iscomparable(shared):
            continue
        for name, one, other in (("output", serial.out, shared.out), ("messages", serial.errors, shared.errors)):
            if CLOSING.sub(b"", one) != CLOSING.sub(b"", other):
                return "%s differs in %s" % (pooling, name), serial
    return "", serial
