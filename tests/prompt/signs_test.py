#!/usr/bin/env python3
"""Signs and bytes: there and back is the identity for every byte string, and each way does what a person expects."""
import os
import random
import subprocess
import sys
import tempfile
import unittest

from package import ROOT

from morvik import scanner, signs, vocabulary

# What opens, closes or looks like what opens and closes, and what both sides could take for something else.
PIECES = ["'", '"', "(", ")", "[", "]", " ", "\n", "ADD", "SIN", "x", "12", "@", "_", ".", ";", "!", "$", "\x02", "\x03", "\0",
          "×", "⍝", "ü", "¼", "é", "‹", "›", "‹B9›", "‹", "\ufeff", "😀"]
BYTES = [piece.encode() for piece in PIECES] + [bytes([row[0]]) for row in vocabulary.GLYPHS] + [b"\xc3", b"\xe2\x8d", b"\xff",
                                                                                               b"\xf5\x80", b"\xed\xa0\x80"]


class ThereAndBack(unittest.TestCase):
    def check_identity(self, data):
        text = signs.tosigns(data)
        text.encode("utf-8")  # it can be written to a file
        self.assertEqual(signs.tobytes(text), data, text)

    def test_every_byte_by_itself_and_after_each_piece(self):
        for piece in [b"", *BYTES]:
            for byte in range(256):
                self.check_identity(piece + bytes([byte]))

    def test_bytes_at_random(self):
        draw = random.Random(18)
        for _ in range(3000):
            self.check_identity(draw.randbytes(draw.randrange(30)))

    def test_pieces_at_random(self):
        draw = random.Random(19)
        for _ in range(6000):
            self.check_identity(b"".join(draw.choices(BYTES, k=draw.randrange(14))))

    def test_whatever_hypothesis_finds(self):
        try:
            import hypothesis
            from hypothesis import strategies
        except ImportError:
            self.skipTest("hypothesis is not installed")
        pieces = strategies.lists(strategies.one_of(strategies.sampled_from(BYTES), strategies.binary(max_size=4)))
        settings = hypothesis.settings(derandomize=True, max_examples=400, database=None, deadline=None)
        settings(hypothesis.given(pieces)(lambda parts: self.check_identity(b"".join(parts))))()

    def test_all_sources_of_the_project(self):
        for path in [*ROOT.glob("examples/*.morvik"), *ROOT.glob("tests/transcripts/*/*.morvik")]:
            self.check_identity(path.read_bytes())


class Contexts(unittest.TestCase):
    """Byte by byte, strings and comments are where the scan of the whole has them."""

    def test_pieces_at_random(self):
        draw = random.Random(21)
        for _ in range(3000):
            text = b"".join(draw.choices(BYTES, k=draw.randrange(1, 10))).decode("latin-1")
            context = scanner.Context()
            for byte in text:
                context.feed(byte)
            opened = scanner.Scan(text).opened
            inside = bool(opened) and opened[-1].what in ("string", "comment", "name")
            self.assertEqual(context.outside(), not inside, repr(text))


class ToBytes(unittest.TestCase):
    def gives(self, text, data):
        self.assertEqual(signs.tobytes(text), data)

    def test_each_sign_is_its_byte(self):
        for byte, sign, _, _ in vocabulary.GLYPHS:
            self.gives("1 2 %s " % sign, b"1 2 %c " % byte)

    def test_strings_keep_signs_as_text(self):
        self.gives("'a×b' ×", "'a×b' ".encode() + b"\xb9")
        self.gives("(1 'x×' ¯3)", "(1 'x×' ".encode() + b"\xaf3)")
        self.gives("'it''s ×' ×", "'it''s ×' ".encode() + b"\xb9")

    def test_a_quote_inside_a_name_opens_no_string(self):
        self.gives("a'b × 'c×'", b"a'b \xb9 " + "'c×'".encode())
        self.gives("SIN'×'", "SIN'×'".encode())
        self.gives("@'x × 1", b"@'x \xb9 1")

    def test_comments_keep_text_and_are_closed_by_the_sign(self):
        self.gives("⍝ × ⍝ ×", b"\xbc " + "×".encode() + b" \xbc \xb9")

    def test_nothing_in_a_comment_closes_it(self):
        for char in map(chr, [*range(0x80, 0xD800), *range(0xE000, 0x11000), 0x1F0BC, 0x1FC00]):
            if char != signs.SIGNS[signs.CLOSING]:
                self.assertNotIn(signs.CLOSING, signs.tobytes('"%s"' % char), hex(ord(char)))
        self.gives('"ü"', b'"u\xcc\x88"')

    def test_exact_bytes(self):
        self.gives("'‹9F›' ‹9F› ‹9f› ‹›", b"'\x9f' \x9f " + "‹9f› ‹›".encode())


class Shown(unittest.TestCase):
    def test_what_a_programme_prints(self):
        self.assertEqual(signs.shown(b"a \xb9 \x9f " + "×é".encode()), "a × ‹9F› ×é")

    def test_in_pieces_it_is_the_same(self):
        data = ("é×😀" * 5).encode() + b"\xb9\xe2\x8d ab \xf0\x9f"
        for size in (1, 2, 3, 5):
            shower = signs.Shower()
            parts = [shower.show(data[place:place + size]) for place in range(0, len(data), size)]
            self.assertEqual("".join(parts) + shower.show(b"", last=True), signs.shown(data))


class Filter(unittest.TestCase):
    def run_filter(self, *arguments, given=b""):
        return subprocess.run([sys.executable, "-B", ROOT / "python" / "morvik-signs", *arguments], input=given,
                              capture_output=True, check=False)

    def test_standard_input(self):
        run = self.run_filter("--to-signs", given=b"2 3 \xb9 .\n")
        self.assertEqual((run.returncode, run.stdout.decode()), (0, "2 3 × .\n"))
        run = self.run_filter("--to-bytes", given=run.stdout)
        self.assertEqual((run.returncode, run.stdout), (0, b"2 3 \xb9 .\n"))

    def test_files_one_behind_the_other_and_a_missing_one(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, data in (("a", b"\xb9"), ("b", b"\xba")):
                with open(os.path.join(folder, name), "wb") as file:
                    file.write(data)
            run = self.run_filter("--to-signs", *(os.path.join(folder, name) for name in ("a", "none", "b")))
        self.assertEqual((run.returncode, run.stdout.decode()), (1, "×÷"))
        self.assertIn(b"none: No such file", run.stderr)


if __name__ == "__main__":
    unittest.main()
