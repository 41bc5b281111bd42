"""A copy of the tree in which one change after the other is planted, built and tried.

What to run comes as steps, in order: those that build and those that test. The first that fails decides.
"""
import dataclasses
import os
import pathlib
import shutil
import signal
import subprocess
import time

from schemata import choose

KILLED, SURVIVED, BROKEN, TIMEOUT = "killed", "survived", "did not compile", "timeout"
MEMORY_KIB = 6 << 20  # of any process of a step
LIMITED = 'ulimit -v "$1"; ulimit -f "$2"; ulimit -S -t "$3"; shift 3; exec "$@"'
# How many times its seconds of the processor a step may last: others may have the machine as well.
PATIENCE = 15


@dataclasses.dataclass(frozen=True)
class Step:
    name: str
    command: tuple
    seconds: int = 600     # of the processor, for each of its processes
    blocks: str = "1048576"  # the largest file that it may write
    builds: bool = False
    timed: bool = False    # looks at the clock: fails only where it fails twice


@dataclasses.dataclass(frozen=True)
class Outcome:
    passed: bool
    timeout: bool
    output: str
    processor: float  # seconds


class Workshop:
    """The folder of a worker: `tree` is the copy, `build` what is built, `scratch` for temporary files."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        self.tree, self.build, self.scratch = (self.folder / name for name in ("tree", "build", "scratch"))
        for place in (self.tree, self.build):
            place.mkdir(parents=True, exist_ok=True)

    def bring(self, root, names, texts):
        """Makes the copy agree with the files of those names, but for those of which there is a text. What agrees already
        stays untouched."""
        texts = {str(name): text for name, text in texts.items()}
        for old in [path for path in self.tree.rglob("*") if path.is_file() or path.is_symlink()]:
            if str(old.relative_to(self.tree)) not in names | texts.keys():
                old.unlink()
        for name in sorted(names | texts.keys()):
            original, copy = root / name, self.tree / name
            content = texts[name].encode() if name in texts else original.read_bytes()
            if not copy.exists() or copy.read_bytes() != content:
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.write_bytes(content)
            if original.exists():
                shutil.copymode(original, copy)

    def environment(self):
        variables = dict(os.environ, TMPDIR=str(self.scratch), CCACHE_BASEDIR=str(self.folder), CCACHE_NOHASHDIR="1")
        variables.pop("MAKEFLAGS", None)
        return variables

    def perform(self, step):
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir()
        limits = [str(limit) for limit in (MEMORY_KIB, step.blocks, step.seconds)]
        before = os.times()
        with open(self.folder / "log", "wb+") as log:
            run = subprocess.Popen(["sh", "-c", LIMITED, "sh", *limits, *map(str, step.command)], stdout=log, stderr=log,
                                   stdin=subprocess.DEVNULL, cwd=self.build, env=self.environment(),
                                   start_new_session=True)
            try:
                status, late = run.wait(PATIENCE * step.seconds), False
            except subprocess.TimeoutExpired:
                status, late = 1, True
            self.sweep(run)
            log.seek(0)
            output = log.read(1 << 24).decode(errors="replace")
        after = os.times()
        late = late or status == -signal.SIGXCPU or "did not end within" in output
        return Outcome(status == 0, late, output, after[2] + after[3] - before[2] - before[3])

    def settle(self, step):
        """Performs a step; one that looks at the clock a second time where it fails."""
        outcome = self.perform(step)
        return self.perform(step) if step.timed and not outcome.passed and not outcome.timeout else outcome

    def sweep(self, run):
        """Ends what a step left running: its session, and what moved to another but comes from this folder."""
        try:
            os.killpg(run.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        run.wait()
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if os.readlink(entry / "exe").startswith(str(self.build) + os.sep):
                    os.kill(int(entry.name), signal.SIGKILL)
            except OSError:
                pass

    def attempt(self, steps):
        """Runs steps up to the first that fails. Returns the verdict and what failed."""
        for step in steps:
            outcome = self.settle(step)
            if outcome.passed:
                continue
            if step.builds:
                return BROKEN, lastlines(outcome.output)
            return (TIMEOUT if outcome.timeout else KILLED), culprit(step, outcome.output)
        return SURVIVED, ""

    def trial(self, path, text, steps):
        """Gives a file of the copy another text, runs the steps and takes it back."""
        target = self.tree / path
        original = target.read_bytes()
        try:
            target.write_text(text)
            return self.timed(steps)
        finally:
            target.write_bytes(original)

    def chosen(self, number, binaries, steps):
        """Lets the binaries do the change of that number, runs the steps that are tests, and lets them do none."""
        try:
            for binary in binaries:
                choose(binary, number)
            return self.timed([step for step in steps if not step.builds])
        finally:
            for binary in binaries:
                choose(binary, 0)

    def timed(self, steps):
        start = time.monotonic()
        verdict, why = self.attempt(steps)
        return {"verdict": verdict, "by": why, "seconds": round(time.monotonic() - start, 1)}


def lastlines(output, count=3):
    errors = [line for line in output.splitlines() if "error:" in line]
    return "\n".join((errors or output.splitlines())[:count])


def culprit(step, output):
    """The test of a step that failed, as the step's output names it."""
    for line in output.splitlines():
        words = line.split()
        if line.startswith("[  FAILED  ] ") and len(words) > 3:
            return "%s: %s" % (step.name, words[3].rstrip(","))
        if line.startswith(("FAILED ", "FAIL: ", "ERROR: ")):
            return "%s: %s" % (step.name, words[1])
    return step.name
