"""Runs of the binary in a scratch directory of their own."""
import glob
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import time
import unittest

BINARY = os.path.abspath(sys.argv.pop(1))
PATIENCE = 300


def limited(*limits):
    def lower():
        for kind, value in limits:
            resource.setrlimit(kind, (value, value))

    return lower


class Folder(unittest.TestCase):
    """A scratch directory, and runs of the binary in it."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="morvik-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def run_text(self, text, *arguments, limits=(), **variables):
        """Returns what both streams hold, without the closing lines. The process must end in peace."""
        run = subprocess.run([BINARY, "-q", *arguments], input=text.encode("latin-1"), capture_output=True,
                             cwd=self.folder, env={**os.environ, **variables}, preexec_fn=limited(*limits),
                             timeout=PATIENCE, check=False)
        self.assertEqual(run.returncode, 0, run.stderr[-2000:])
        out, closing, _ = run.stdout.decode("latin-1").rpartition("\n--- Spent: ")
        self.assertTrue(closing)
        return out, run.stderr.decode("latin-1")

    def give(self, name, contents):
        (self.folder / name).write_bytes(contents.encode("latin-1") if isinstance(contents, str) else contents)

    def contents(self, name):
        return (self.folder / name).read_bytes().decode("latin-1")

    def start(self, text, *arguments):
        """A run that is not waited for."""
        process = subprocess.Popen([BINARY, "-q", *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, cwd=self.folder)
        self.addCleanup(self.end, process)
        process.stdin.write(text.encode("latin-1"))
        process.stdin.flush()
        return process

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            stream.close()

    @staticmethod
    def handles(process):
        return {os.readlink(path) for path in glob.glob("/proc/%d/fd/*" % process.pid) if os.path.islink(path)}

    def wait_until(self, condition):
        end = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)


def asleep(process):
    """Does the process wait for something?"""
    with open("/proc/%d/stat" % process.pid, encoding="latin-1") as line:
        return line.read().rpartition(")")[2].split()[0] == "S"
