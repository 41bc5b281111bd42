#!/usr/bin/env python3
"""The hunter with random programmes itself: is what it writes the same for the same seed, and does it cover the vocabulary?
Does it see each kind of fault that is planted, thin out what shows it, and leave alone what is in order? Does the walk over
allocations that fail go to the last of them?"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

FUZZ = pathlib.Path(__file__).resolve().parents[1] / "fuzz"
sys.path.append(str(FUZZ))
import minimise  # noqa: E402
import programmes  # noqa: E402

CLOSING = r"printf ' 2\n--- Spent: 00:00:00.000123 ---\n\n'; "
GUILTY = "grep -aq 'REVERSE' && "


class Hunting(unittest.TestCase):
    def hunt(self, script, *options):
        """Hunts for a few sessions, with a shell script as the binary. Returns what was said, nothing for a pass, and what
        was kept."""
        with tempfile.TemporaryDirectory() as scratch:
            binary = pathlib.Path(scratch) / "binary"
            binary.write_text("#!/bin/sh\n" + script)
            binary.chmod(0o755)
            run = subprocess.run([sys.executable, "-B", str(FUZZ / "hunt.py"), "--sessions", "3", "--texts", "40", "--jobs", "2",
                                  "--keep", scratch + "/kept", *options, str(binary)],
                                 capture_output=True, text=True, check=False)
            kept = [path.read_bytes() for path in pathlib.Path(scratch).glob("kept/*.morvik")]
        self.assertEqual(run.stderr, "")
        self.assertEqual(run.returncode == 0, "3 sessions of 40 texts" in run.stdout and " 0 findings" in run.stdout)
        return run.stdout if run.returncode else "", kept

    def test_peace(self):
        self.assertEqual(self.hunt("cat >/dev/null; " + CLOSING), ("", []))
        self.assertEqual(self.hunt("cat >/dev/null; " + CLOSING, "--pool", "2,4"), ("", []))

    def test_each_fault_is_seen_and_thinned_out(self):
        for script, said in ((GUILTY + "exit 99; " + CLOSING, "status 99"), (GUILTY + "exit 0; " + CLOSING, "no closing line"),
                             (GUILTY + "kill -6 $$; " + CLOSING, "status -6"),
                             (GUILTY + "echo 'x.cpp:1: runtime error' >&2; " + CLOSING, "runtime error"),
                             (GUILTY + r"printf '991 - x\n\nInstruction:\n . OPERATOR:\t\tFIRST' >&2; " + CLOSING, "impossible")):
            shown, kept = self.hunt(script)
            self.assertIn(said, shown, script)
            self.assertEqual(kept, [b"REVERSE"], script)

    def test_what_only_the_pool_shows(self):
        shown, kept = self.hunt(GUILTY + "echo $2; " + CLOSING, "--pool", "2")
        self.assertIn("-c2 differs in output", shown)
        self.assertEqual(kept, [b"REVERSE"])

    def test_who_takes_no_interrupt(self):
        shown, _ = self.hunt(GUILTY + "{ trap '' INT; while :; do sleep 0.1; done; }; " + CLOSING, "--longest", "2", "--asked", "3")
        self.assertIn("took no interrupt", shown)

    def test_what_the_thread_sanitizer_makes_deaf(self):
        """It hands interrupts over at calls of the library: who works may be deaf, who waits may not."""
        working = "# __tsan_\n" + GUILTY + "{ trap '' INT; while :; do :; done; }; " + CLOSING
        self.assertEqual(self.hunt(working, "--longest", "2"), ("", []))
        waiting = "# __tsan_\n" + GUILTY + "{ trap '' INT; sleep 60; }; " + CLOSING
        shown, _ = self.hunt(waiting, "--longest", "2", "--asked", "1")
        self.assertIn("took no interrupt", shown)

    def test_reports_have_room_beside_the_errors(self):
        """The process stack ends under calls, as it may, after as much was said as a file may hold."""
        talk = "trap '' XFSZ INT; head -c 17000000 /dev/zero >&2; "
        report = r"for i in 1 2 3 4 5 6; do printf '#%d 0x1 in morvik::machine(' $i; done; echo Sanitizer: stack-overflow; "
        log = "log=${ASAN_OPTIONS#*log_path=}; "
        self.assertEqual(self.hunt(GUILTY + "{ " + talk + log + "{ " + report + "} >${log%%:*}.1; exit 98; }; " + CLOSING), ("", []))
        shown, _ = self.hunt(GUILTY + "{ " + talk + report + "exit 98; }; " + CLOSING, "--asked", "1")
        self.assertIn("status 98", shown)

    def test_who_takes_one(self):
        # The shell's own sleep takes it with the shell.
        script = GUILTY + "{ trap 'echo taken' INT; sleep 60 & wait $!; kill $!; }; " + CLOSING
        self.assertEqual(self.hunt(script), ("", []))

    def test_sessions_hang_on_the_seed_alone(self):
        self.assertEqual(programmes.session(5, 30), programmes.session(5, 30))
        self.assertNotEqual(programmes.session(5, 30), programmes.session(6, 30))

    def test_no_text_to_compare_ends_in_its_middle(self):
        """What the main thread did ahead of a failure may stay, and each text begins by clearing it away."""
        tokens = [token for seed in range(60) for text in programmes.session(seed, 100, True) for token in text[:-1]]
        points = {token for token in tokens if token.startswith(b".") and not token[1:2].isalpha()}
        self.assertEqual(points - {word for row in programmes.WORDS for word in row.spellings}, set())
        self.assertIn(b".fun", tokens)

    def test_every_word_is_written(self):
        written = {token for seed in range(150) for text in programmes.session(seed, 100) for token in text}
        self.assertEqual([word.name for word in programmes.WORDS if written.isdisjoint(word.spellings)], [])

    def test_thinning_keeps_what_shows(self):
        self.assertEqual(minimise.thin(list(range(100)), lambda some: {7, 42, 43} <= set(some)), [7, 42, 43])


class Walking(unittest.TestCase):
    """The walk over allocations that fail, with a shell script as the binary."""

    def walk(self, notices, *options):
        script = ("#!/bin/sh\ncat >/dev/null; n=${MORVIK_FAIL_ALLOCATION:-1000}; message='27 - out of main storage.'\n"
                  "case $n in %s esac\n" % notices + CLOSING)
        with tempfile.TemporaryDirectory() as scratch:
            binary, programme = pathlib.Path(scratch) / "binary", pathlib.Path(scratch) / "programme"
            binary.write_text(script)
            binary.chmod(0o755)
            programme.write_text("1 .\n")
            run = subprocess.run([sys.executable, "-B", str(FUZZ.parent / "storage" / "run.py"), *options, str(binary),
                                  str(programme)], capture_output=True, text=True, check=False)
        self.assertEqual(run.stderr, "")
        return run.stdout

    def test_the_walk_goes_to_the_last_allocation(self):
        noticed = "?|1?|3?) echo $message >&2 ;;"
        self.assertEqual(self.walk(noticed), "programme: 40 allocations failed in turn, 0 faults\n")

    def test_a_sample_of_the_allocations(self):
        noticed = "?|1?|3?) echo $message >&2 ;;"
        self.assertEqual(self.walk(noticed, "--every", "7"), "programme: 6 allocations failed in turn, 0 faults\n")

    def test_a_fault_that_is_no_call_without_end(self):
        shown = self.walk("4) echo SEGMENTATION VIOLATION >&2 ;; ?) echo $message >&2 ;;")
        self.assertIn("allocation 4: a fault", shown)

    def test_a_fault_behind_failures_that_go_unnoticed(self):
        shown = self.walk("?|1?) echo $message >&2 ;; 35) exit 99 ;; 4?) echo $message >&2 ;;")
        self.assertIn("50 allocations failed in turn, 1 faults", shown)
        self.assertIn("allocation 35: status 99", shown)


if __name__ == "__main__":
    unittest.main()
