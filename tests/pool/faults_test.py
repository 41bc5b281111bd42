#!/usr/bin/env python3
"""The pool when things go wrong: slices that fail, interrupts, storage that ends, threads that cannot be had; and the
instructions that set it up."""
import os
import re
import resource
import signal
import subprocess
import sys
import time
import unittest

BINARY = sys.argv.pop(1)
SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
MEBIBYTE = 1 << 20


def run(text, *options, **more):
    return subprocess.run([BINARY, *options], input=text, capture_output=True, text=True, timeout=120, check=False,
                          **more)


def lines(text):
    return [line for line in text.splitlines() if line.strip() and "Spent" not in line]


class Faults(unittest.TestCase):
    def test_a_failed_slice_is_reported_once_at_the_join(self):
        # The last member does not conform; two values were pushed meanwhile.
        text = "4 SERIAL . (1 2 3 4 5 6 7 (1 2 3)) (1 2 3 4 5 6 7 (1 2)) + 10 20 DUP .\n'' DUMPSTACK .\n"
        done = run(text, "-q", "-c3")
        self.assertEqual(done.stderr.count("17 - dyadic function arguments are not conformable."), 1)
        self.assertEqual(done.stdout.count("Exception processing:..."), 1)
        # The right operand's slot was taken: it is gone, and the left one is back.
        self.assertIn(" ( 1 2 3 4 5 6 7 ( 1 2 3 ) )\n 10\n 20\n", done.stdout)

    def test_both_operands_are_back_where_nothing_took_their_place(self):
        text = "4 SERIAL . (1 2 3 4 5 6 7 (1 2 3)) (1 2 3 4 5 6 7 (1 2)) + .\n'' DUMPSTACK .\n"
        self.assertEqual(lines(run(text, "-q", "-c3").stdout), lines(run(text, "-q").stdout))

    def test_a_failed_slice_of_the_main_thread_drops_what_the_others_made(self):
        # Only the first members do not conform. The checking build tells of a block that is left.
        left, right = "((1 2 3)" + " (1 2)" * 8 + ")", "((1 2)" + " (1 2)" * 8 + ")"
        done = run("4 SERIAL . %s %s + .\nCLEAR 1 2 + .\n" % (left, right), "-q", "-c3")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stderr.count("17 - dyadic function arguments are not conformable."), 1)
        self.assertEqual(lines(done.stdout)[-1], " 3")

    def test_a_failure_inside_a_function_drops_what_the_function_pushed(self):
        text = ("4 SERIAL . 5 : (1 2 3 4 5 6 7 'a') 2 + 1 2 3 + CLEAR ; ! 6 .\n"
                "1 DYADIC (1 2 3 4 5 6 7 (1 2)) (1 2 3 4 5 6 7 (1 2 3)) + 4 5 FUNCTIONEND ! .\n1 2 + .\n")
        done = run(text, "-q", "-c3")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(lines(done.stdout)[-1], " 3")

    def test_storage_that_ends_in_a_slice(self):
        if SANITIZED:
            self.skipTest("the heap is the sanitizer's")
        # Two blocks of 64 MiB and the threads' stacks fit; the 80 MiB of octonions do not.
        lower = lambda: resource.setrlimit(resource.RLIMIT_DATA, (200 * MEBIBYTE, 200 * MEBIBYTE))
        text = "1000000 .. @x SET x 1l1 * .\nCLEAR 1 2 + .\nCLEAR x 1 + FIRST .\n"
        done = run(text, "-q", "-c3", preexec_fn=lower)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stderr.count("27 - out of main storage."), 1)
        self.assertEqual(lines(done.stdout)[-2:], [" 3", " 2"])

    def test_an_interrupt_while_slices_are_in_flight(self):
        for slots in (1, 3):
            with subprocess.Popen([BINARY, "-q", "-c%d" % slots], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE) as process:
                slow = b" NATURALLOG EXPONENTIAL" * 60
                process.stdin.write(b"1000000 .. @x SET 'there' PRINT 0 SLEEP x 1l1 *" + slow + b" .\n")
                process.stdin.flush()
                self.assertEqual(process.stdout.read(len(b"there\n")), b"there\n")
                time.sleep(1)
                process.send_signal(signal.SIGINT)
                began = time.monotonic()
                out, _ = process.communicate(b"CLEAR 'again' . CLEAR x DUP + FIRST .\n", timeout=120)
                self.assertIn(b"** User interrupt. **", out)
                self.assertIn(b"again", out)
                self.assertEqual(lines(out.decode())[-1], " 2")
                self.assertEqual(process.returncode, 0)
                if not SANITIZED:
                    self.assertLess(time.monotonic() - began, 20, "the slices went on")

    def test_a_fault_comes_behind_a_failure(self):
        if SANITIZED:
            self.skipTest("faults are the sanitizer's")
        limit = lambda: resource.setrlimit(resource.RLIMIT_STACK, (64 * MEBIBYTE, 64 * MEBIBYTE))
        text = "4 SERIAL . : f ! ; @f SET (1 2 3 4 5 6 7 %s) FACTORIAL f ! .\nCLEAR 1 2 + .\n"
        for last, said in (("-1", "\n36 - invalid argument to factorial.\n\nInstruction:\n . OPERATOR:\t\tFACTORIAL"),
                           ("8", "\nSEGMENTATION VIOLATION\n")):
            done = run(text % last, "-q", "-c3", preexec_fn=limit)
            self.assertEqual(done.stderr, said)
            self.assertEqual(done.stdout.count("Exception processing:..."), 1)
            self.assertEqual(lines(done.stdout)[-1], " 3")

    def test_fewer_threads_than_were_wanted(self):
        if SANITIZED:
            self.skipTest("the sanitizer needs the address space")
        lower = lambda: resource.setrlimit(resource.RLIMIT_AS, (400 * MEBIBYTE, 400 * MEBIBYTE))
        done = run("600 SERIAL . 700 .. DUP + FIRST .\n1000 PARALLEL .\n", "-c500", preexec_fn=lower)
        started = re.search(r", Succeeded to start (\d+) threads\.", done.stdout)
        self.assertIsNotNone(started, done.stdout)
        self.assertGreater(int(started.group(1)), 1)
        self.assertIn("\n 2\n", done.stdout)
        self.assertIn("started processors (%s):" % started.group(1), done.stderr)

    def test_deep_nests_stay_on_the_main_thread(self):
        if SANITIZED:
            self.skipTest("the process stack's end is the sanitizer's")
        text = "4 SERIAL . 1 60000 : ENCLOSE (1 2 3) SWAP CATENATE ; REPEAT @deep SET deep deep CATENATE deep CATENATE " \
               "NEGATIVE DEPTH .\nCLEAR 1 2 + .\n"
        done = run(text, "-q", "-c7")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(lines(done.stdout)[-1], " 3")


class SettingUp(unittest.TestCase):
    def test_parallel_and_serial(self):
        text = "0 PARALLEL . -3 PARALLEL . 2 PARALLEL . 'a' PARALLEL .\n(1 2) SERIAL .\n9 PARALLEL .\n"
        done = run("4 SERIAL . " + text + "(1 2 3 4 5 6) 1 + .\n", "-q", "-c3")
        self.assertIn("202 - PARALLEL can be specified only by a single element integer", done.stderr)
        self.assertIn("203 - ", done.stderr)
        self.assertIn("WARNING: 204 - requested more than started processors (4):", done.stderr)
        self.assertIn(" PARALLEL will cap the number of processors/threads to this amount", done.stderr)
        self.assertIn(" 2 3 4 5 6 7", done.stdout)

    def test_every_number_of_threads_works(self):
        for slots in range(1, 65):
            done = run("2 SERIAL . 70 .. DUP * 1 - SUM .\n", "-q", "-c%d" % slots)
            self.assertEqual(lines(done.stdout)[-1], " %d" % (sum(i * i for i in range(1, 71)) - 70), slots)

    def test_the_main_thread_takes_all_signals(self):
        if SANITIZED:
            self.skipTest("the sanitizer has threads of its own")
        catchable = sum(1 << number - 1 for number in range(1, 32) if number not in (signal.SIGKILL, signal.SIGSTOP))
        process = subprocess.Popen([BINARY, "-q", "-c3"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        try:
            process.stdin.write("1 .\n")
            process.stdin.flush()
            process.stdout.readline()
            blocked = {}
            for task in os.listdir("/proc/%d/task" % process.pid):
                with open("/proc/%d/task/%s/status" % (process.pid, task), encoding="ascii") as status:
                    masks = [line.split()[1] for line in status if line.startswith("SigBlk:")]
                blocked[int(task)] = int(masks[0], 16) & catchable
            self.assertEqual(blocked.pop(process.pid), 0)
            self.assertGreaterEqual(len(blocked), 3)
            self.assertEqual(set(blocked.values()), {catchable})
        finally:
            process.communicate()

    def test_threads_per_processor(self):
        self.assertIn("Processors: 4, Threads: 9", run("", "-c4", "-th2").stdout)

    def test_each_thread_draws_its_own_stream(self):
        """Slot i begins 22925 i further on; sixteen elements over four slots are four each."""
        n, modulus = 1000, 2147483647
        expected = []
        for slot in range(4):
            state = slot * 22925 + 7
            for _ in range(4):
                state = state * 48271 % modulus
                expected.append(int(state / modulus * n) + 1)
        vector = "(" + " ".join([str(n)] * 16) + ")"
        for text in ("5 SERIAL . 7 SEED %s ROLL .\n", "5 SERIAL . 2 PARALLEL . 7 SEED . 4 PARALLEL . %s ROLL .\n"):
            done = run(text % vector, "-q", "-c3")
            self.assertEqual(lines(done.stdout)[-1].split(), [str(x) for x in expected])


if __name__ == "__main__":
    unittest.main()
