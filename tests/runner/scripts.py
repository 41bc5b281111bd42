"""What the tests of morvik-run share: a folder of its own for each test, and the run of a script in it."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

BINARY = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else ""
LIMIT = 60  # seconds
TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"


def version():
    """A line, as the sources have it."""
    return subprocess.run([TOOLS / "version"], capture_output=True, text=True, check=True).stdout


class Scripts(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)
        self.folder = pathlib.Path(self.scratch.name)

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode("latin-1"))
        return name

    def run_words(self, *words, typed="", environment=None, **more):
        """Runs morvik-run in the folder. Returns status, standard output and standard error."""
        settings = {"PATH": os.environ["PATH"], **{name: value for name, value in os.environ.items() if "SAN_" in name},
                    **(environment or {})}
        done = subprocess.run([BINARY, *words], input=typed.encode("latin-1"), cwd=self.folder, env=settings,
                              stderr=subprocess.PIPE, timeout=LIMIT, **{"stdout": subprocess.PIPE, **more})
        return done.returncode, (done.stdout or b"").decode("latin-1"), done.stderr.decode("latin-1")

    def script(self, text, *words, options=(), name="s.morvik", **more):
        self.write(name, text)
        return self.run_words(*options, name, *words, **more)

    def passes(self, text, output, *words, **more):
        """Runs the script; it is to give this output, nothing else, and status 0."""
        self.assertEqual(self.script(text, *words, **more), (0, output, ""))

    def fails(self, text, status, errors, output="", **more):
        self.assertEqual(self.script(text, **more), (status, output, errors))
