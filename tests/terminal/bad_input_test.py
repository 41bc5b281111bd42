#!/usr/bin/env python3
"""What no careful person types: each gets its message, and the next text runs."""
import os
import random
import resource
import signal
import subprocess
import sys
import time
import unittest

BINARY = sys.argv.pop(1)
SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
MEBIBYTE = 1 << 20
AFTER = b"CLEAR 77 .\n"
CLOSED = b"\n\n 77\n--- Spent: "


def run(text, prepare=None, **streams):
    streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
    return subprocess.run([BINARY, "-q"], input=text, preexec_fn=prepare, timeout=120, check=False, **streams)


class BadInput(unittest.TestCase):
    def check(self, text, out=None, err=b"", prepare=None):
        """Runs a text and one more after it; `out` is ahead of what that one shows, where it is given."""
        ended = run(text + b"\n" + AFTER, prepare)
        self.assertEqual(ended.stderr, err, text[:80])
        self.assertIn(CLOSED, ended.stdout, text[:80])
        if out is not None:
            self.assertEqual(ended.stdout[: ended.stdout.index(CLOSED)], out, text[:80])
        self.assertEqual(ended.returncode, 0)

    def test_numbers_of_a_megabyte(self):
        zeros, ones = b"0" * MEBIBYTE, b"1" * MEBIBYTE
        self.check(ones + b" .", b"\n\n inf")
        self.check(zeros + b"7 .", b"\n\n 7")
        self.check(b"1" + zeros + b"E-%d ." % MEBIBYTE, b"\n\n 1")
        self.check(b"." + zeros + b"1E%d ." % (MEBIBYTE + 1), b"\n\n 1")
        self.check(b"1E" + b"9" * MEBIBYTE + b" .", b"\n\n inf")
        self.check(b"1E-" + b"9" * MEBIBYTE + b" .", b"\n\n 0")
        self.check(b"5 (1 " + ones + b" 2) .", b"\n\n 1 inf 2\n")

    def test_many_bits(self):
        too_long = (b"\n809 - the binary number is too long for any internal representation. Using only the first "
                    b"(leftmost) 64 binary digits, after stripping leading zeros.\n\nInstruction:\n 0#" + b"1" * 64)
        self.check(b"0#" + b"1" * 10000 + b" .", b"\n\n 0#" + b"1" * 64, too_long)
        # Of a token of more than 255 bytes the rest is cut off, and all of this are zeros that lead.
        self.check(b"0#" + b"0" * 10000 + b"1 .", b"\n\n 0#000000000")

    def test_names_and_strings_of_a_megabyte(self):
        name = b"n" * MEBIBYTE
        self.check(b"5 @" + name + b" SET " + name + b" .", b"\n\n 5")
        self.check(b"5 @$" + name + b" SET $" + name + b" .", b"\n\n 5")
        self.check(b"5 @\x02" + name + b" \x03 SET \x02" + name + b" \x03 .", b"\n\n 5")
        self.check(b"'" + name + b"' SHAPE .", b"\n\n %d\n" % MEBIBYTE)
        self.check(b'"' + name + b'" 5 .', b"\n\n 5")

    def test_a_million_numbers(self):
        self.check(b"(" + b"1.5 2 " * 500000 + b") DUP SHAPE SWAP SUM .", b"\n\n 1750000")

    def test_shapes_past_all_storage(self):
        large = b"\n1100 - A shape of an object can not be so big. Please use smaller spaces.\n"
        for shape in (b"1000000000000000000", b"10000000000 10000000000", b"9" * 400):
            for literal in (b"(1 2)[%s]", b"'ab'[%s]", b"(5 (1 2)[%s] 6)"):
                with self.subTest(literal=literal, shape=shape):
                    ended = run(literal % shape + b" .\n" + AFTER)
                    self.assertTrue(ended.stderr.startswith(large), ended.stderr)
                    self.assertIn(CLOSED, ended.stdout)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_the_largest_shape(self):
        """As many elements as a count holds are a shape, for which there is no storage here; one more are none."""
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (64 * MEBIBYTE, 64 * MEBIBYTE))

        for shape, number in ((b"65535 65537", b"27"), (b"4294967295", b"27"), (b"65536 65536", b"1100"),
                              (b"4294967296", b"1100")):
            with self.subTest(shape=shape):
                ended = run(b"5 (%s) RESHAPE .\n" % shape + AFTER, limit)
                self.assertIn(b"\n%s - " % number, ended.stderr)
                self.assertIn(CLOSED, ended.stdout)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_no_storage_for_a_literal(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (64 * MEBIBYTE, 64 * MEBIBYTE))

        numbers = b"(" + b"1 " * 2000000 + b") ."
        said = b"No more active memory available\n\n27 - out of main storage.\n"
        self.check(numbers, None, said, limit)
        self.check(b"'" + b"x" * 4 * MEBIBYTE + b"' .", None, said, limit)
        # What had been built is given back: there is memory again.
        self.check(numbers + b" (" + b"1 " * 100000 + b") SHAPE .", None, said, limit)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_no_storage_for_a_result(self):
        """The message, the recovery, and an empty vector in place of the top; or, where the stack is empty, a problem
        that the next message still shows."""
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (64 * MEBIBYTE, 64 * MEBIBYTE))

        said = b"No more active memory available\n\n27 - out of main storage.\n\nException processing:..."
        discarding = b"\n-- - Discarding the bad TOS value...\n"
        few = b"\n800 - not enough arguments on stack for the reqested operation.\n\nInstruction:\n . OPERATOR:\t\t+"
        for text, shown in ((b"1 2 4000000 .. 'not run' .\n'' DUMP .", said + discarding + b" 1\n 2\n #NIL\n"),
                            (b"5 : 4000000 .. ; ! 'not run' .\n'' DUMP .", said + discarding + b" #NIL\n"),
                            (b": 4000000 .. ; ! 'not run' .\n1 + .\n'' DUMP .",
                             said + few + b"Top of stack:\n 1" + discarding + b" #NIL\n")):
            ended = run(text + b"\n" + AFTER, limit, stderr=subprocess.STDOUT)
            self.assertTrue(ended.stdout.startswith(shown), ended.stdout)
            self.assertIn(CLOSED, ended.stdout)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_a_failed_allocation_is_forgotten(self):
        """What failed for want of storage costs the top of that text, and of no later one that fails."""
        lower = lambda: resource.setrlimit(resource.RLIMIT_DATA, (64 * MEBIBYTE, 64 * MEBIBYTE))
        ended = run(b"5 10000000 .. .\n1 nosuch .\n2 nosuch .\n'' DUMPSTACK .\n", lower)
        self.assertEqual([ended.stderr.count(said) for said in (b"\n27 - ", b"\n23 - ", b"Top of stack:")], [1, 2, 0])
        self.assertEqual(ended.stdout.count(b"Discarding the bad TOS value"), 1)
        self.assertIn(b"\n 1\n 2\n", ended.stdout)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_the_end_needs_no_storage(self):
        """With all of it used up, message 27 comes for each text, and the process ends with its input or where told to."""
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (20000 << 10, 20000 << 10))

        filling = b"0 1000000000 : ENCLOSE 'ab' SWAP , ; REPEAT .\n"
        names = b"".join(b"@v%06d .\n" % n for n in range(3000))
        for text in (filling + b"CLEAR .\n" + names, filling + names, filling + names + b"name",
                     filling + names + b"(1 2 'abc", filling + names + b": 1 2", filling + b"STEPALL .\n" + names):
            ended = run(text, limit)
            self.assertEqual(ended.returncode, 0)
            self.assertIn(b"\n27 - out of main storage.\n", ended.stderr)
            self.assertEqual(ended.stdout.count(b"\n--- Spent: "), 1)
        for ending in (b"OFF .\n", b"QUIT END ", b"ENDPROCESS\n.\n"):
            ended = run(filling + b"CLEAR .\n" + names + ending + b"'not reached' PRINT .\n" * 3, limit)
            self.assertEqual(ended.returncode, 0)
            self.assertNotIn(b"not reached", ended.stdout)
            self.assertEqual(ended.stderr.count(b"\n1 - "), 0)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_what_was_given_back_is_used_again(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (64 * MEBIBYTE, 64 * MEBIBYTE))

        filling = b"0 1000000000 : ENCLOSE 'ab' SWAP , ; REPEAT .\nCLEAR .\n"
        large = b"1000000000 : 200000 .. ; REPEAT .\nCLEAR .\n"
        for text, after in ((filling, b"0 100000 : ENCLOSE 'ab' SWAP , ; REPEAT DISCARD 'all' ."),
                            (large, b"200000 .. 200000 .. + DISCARD 'all' .")):
            ended = run(text * 5 + b"CLEAR " + after, limit)
            self.assertEqual(ended.stderr.count(b"\n27 - out of main storage.\n"), 5)
            self.assertIn(b"\n\nall\n", ended.stdout)
            self.assertEqual(ended.returncode, 0)

    def test_garbage(self):
        chance = random.Random(4)
        for _ in range(200):
            garbage = bytes(chance.randrange(1, 256) for _ in range(chance.randrange(400)))
            ended = run(garbage)
            self.assertEqual(ended.returncode, 0, garbage)
            self.assertIn(b"--- Spent: ", ended.stdout, garbage)
            self.assertNotIn(b"SEGMENTATION", ended.stderr, garbage)


class Streams(unittest.TestCase):
    def test_closed_output(self):
        ended = run(b"1 2 + . (1 2 3) PRINT .\n1 + + + .\n", lambda: os.close(1), stdout=None)
        self.assertEqual(ended.returncode, 0)
        self.assertIn(b"\n800 - ", ended.stderr)

    def test_closed_errors(self):
        ended = run(b"1 + .\n" + AFTER, lambda: os.close(2), stderr=None)
        self.assertEqual(ended.returncode, 0)
        self.assertTrue(ended.stdout.startswith(CLOSED), ended.stdout)

    def test_closed_input(self):
        ended = subprocess.run([BINARY, "-q"], preexec_fn=lambda: os.close(0), capture_output=True, timeout=60, check=False)
        self.assertEqual((ended.returncode, ended.stdout[:11], ended.stderr), (0, b"\n--- Spent:", b""))

    def test_a_folder_as_input(self):
        folder = os.open("/", os.O_RDONLY)
        ended = subprocess.run([BINARY, "-q"], stdin=folder, capture_output=True, timeout=60, check=False)
        os.close(folder)
        self.assertEqual((ended.returncode, ended.stdout[:11], ended.stderr), (0, b"\n--- Spent:", b""))

    def test_nobody_reads_the_output(self):
        process = subprocess.Popen([BINARY, "-q"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdout.close()
        process.stdin.write(b"(1 2 3) .\n" * 5000 + b"CLEAR 1 + .\n")
        process.stdin.close()
        err = process.stderr.read()
        process.stderr.close()
        self.assertEqual(process.wait(60), 0)
        self.assertIn(b"\n800 - ", err)

    def test_a_text_is_read_through_an_interrupt(self):
        process = subprocess.Popen([BINARY, "-q"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdin.write(b"0 .\n(1 2.")
        process.stdin.flush()
        time.sleep(0.3)
        for number in (signal.SIGINT, signal.SIGQUIT):
            process.send_signal(number)
        time.sleep(0.1)
        out, err = process.communicate(b"5 3) .\n", timeout=60)
        self.assertEqual(out[: out.index(b"\n--- Spent")], b"\n\n 0\n\n 1 2.5 3\n")
        self.assertEqual((process.returncode, err), (0, b""))

    def test_a_byte_is_enough(self):
        """Each text is answered as soon as its last byte is there: nothing is read that is not needed."""
        process = subprocess.Popen([BINARY, "-q"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
        for text, answer in ((b"1 2 + END\n", b"\n\n 3"), (b"(1 2 3) SUM .\n", b"\n\n 6"), (b": 4 ; ! .\n", b"\n\n 4"),
                             (b"'a' 'b' , .\n", b"\n\nab\n")):
            for byte in text:
                process.stdin.write(bytes([byte]))
            shown = b""
            while len(shown) < len(answer):
                shown += process.stdout.read(len(answer) - len(shown))
            self.assertEqual(shown, answer)
        process.communicate(timeout=60)


if __name__ == "__main__":
    unittest.main()
