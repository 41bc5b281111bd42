"""Private bytes as signs, and signs as private bytes.

To signs: valid UTF-8 is text, a lone private byte is its sign, any other byte is written `‹9F›`, in base 16. To bytes:
outside strings and comments a sign is its byte; inside them all text is UTF-8, but for the sign that closes a comment. A
character whose UTF-8 would close a comment is replaced by its parts, or by its number. Wherever a sign, or a character,
would not lead back to the bytes that it came from, those are written in base 16 too: there and back changes no byte.
"""
import argparse
import re
import sys
import unicodedata

from . import vocabulary
from .scanner import Context

SIGNS = {byte: sign for byte, sign, _, _ in vocabulary.GLYPHS}
BYTES = {sign: byte for byte, sign in SIGNS.items()}
TYPED = {typed: sign for _, sign, typed, _ in vocabulary.GLYPHS}
CLOSING = 0xBC  # ends a comment, as a double quote does
OPEN, CLOSE = "‹", "›"
EXACT = re.compile("%s((?:[0-9A-F]{2})+)%s" % (OPEN, CLOSE))
UNKNOWN = "\ue000"  # stands for a character that means nothing outside strings
SEQUENCE = re.compile(rb"[\x00-\x7f]|[\xc2-\xdf][\x80-\xbf]|\xe0[\xa0-\xbf][\x80-\xbf]|[\xe1-\xec\xee\xef][\x80-\xbf]{2}"
                      rb"|\xed[\x80-\x9f][\x80-\xbf]|\xf0[\x90-\xbf][\x80-\xbf]{2}|[\xf1-\xf3][\x80-\xbf]{3}"
                      rb"|\xf4[\x80-\x8f][\x80-\xbf]{2}")
TEXT = re.compile(b"(?:%s)+" % SEQUENCE.pattern)
ONECHARACTER = {ord(sign): chr(byte) for sign, byte in BYTES.items()}


def exact(data):
    return OPEN + data.hex().upper() + CLOSE


def onecharacter(text):
    """Each character of a text as the scanner knows it: a byte, or one that it does not know."""
    if text.isascii():
        return text
    return "".join(char if char < "\x80" else ONECHARACTER.get(ord(char), UNKNOWN) for char in text)


# ---- To bytes.

def inacomment(char):
    """A character in a comment: its UTF-8, or what takes its place where that would close the comment."""
    data = char.encode("utf-8")
    if CLOSING not in data:
        return data
    parts = unicodedata.normalize("NFKD", char).encode("utf-8")
    return parts if CLOSING not in parts else b"U+%04X" % ord(char)


def characterbytes(char, context):
    if context.outside() and char in BYTES:
        return bytes([BYTES[char]])
    if context.mode != context.COMMENT:
        return char.encode("utf-8", "surrogateescape")
    return bytes([CLOSING]) if BYTES.get(char) == CLOSING else inacomment(char)


def tobytes(text):
    if text.isascii():
        return text.encode()
    context, made, place = Context(), bytearray(), 0
    while place < len(text):
        match = EXACT.match(text, place)
        data = bytes.fromhex(match.group(1)) if match else characterbytes(text[place], context)
        place = match.end() if match else place + 1
        made += data
        for byte in data:
            context.feed(chr(byte))
    return bytes(made)


# ---- To signs.

def tosigns(data):
    """The text that `tobytes` turns into these very bytes."""
    if data.isascii():
        return data.decode()
    context, made, place = Context(), [], 0
    while place < len(data):
        match = SEQUENCE.match(data, place)
        unit = match.group() if match else data[place:place + 1]
        made.append(unittext(unit, bool(match), context))
        for byte in unit:
            context.feed(chr(byte))
        place += len(unit)
    return "".join(made)


def unittext(unit, valid, context):
    text = unit.decode() if valid else SIGNS.get(unit[0], "")
    leadsback = text and text != OPEN and characterbytes(text, context) == unit
    return text if leadsback else exact(unit)


def shown(data):
    """What a programme printed, for people to read: valid UTF-8 is text wherever it stands."""
    if data.isascii():
        return data.decode()
    made, place = [], 0
    while place < len(data):
        match = TEXT.match(data, place)
        if match:
            made.append(match.group().decode())
            place = match.end()
        else:
            made.append(SIGNS.get(data[place]) or exact(data[place:place + 1]))
            place += 1
    return "".join(made)


class Shower:
    """`shown` for what comes in pieces: a character that is not whole yet waits for its rest."""

    BEGUN = re.compile(rb"(?:[\xc2-\xdf]|[\xe0-\xef][\x80-\xbf]?|[\xf0-\xf4][\x80-\xbf]{0,2})\Z")

    def __init__(self):
        self.waiting = b""

    def show(self, data, last=False):
        data = self.waiting + data
        begun = None if last else self.BEGUN.search(data)
        self.waiting = data[begun.start():] if begun else b""
        return shown(data[:begun.start()] if begun else data)


def main(arguments=None):
    parser = argparse.ArgumentParser(prog="morvik-signs", description="Turns the private bytes of Morvik source into signs "
                                     "in UTF-8, and signs into bytes. There and back changes no byte.")
    way = parser.add_mutually_exclusive_group(required=True)
    way.add_argument("--to-signs", dest="turn", action="store_const", const=lambda data: tosigns(data).encode(),
                     help="bytes in, UTF-8 out")
    way.add_argument("--to-bytes", dest="turn", action="store_const",
                     const=lambda data: tobytes(data.decode("utf-8", "surrogateescape")), help="UTF-8 in, bytes out")
    parser.add_argument("files", metavar="FILE", nargs="*", help="standard input if none is named, or for -")
    options = parser.parse_args(arguments)
    status = 0
    for name in options.files or ["-"]:
        try:
            data = sys.stdin.buffer.read() if name == "-" else open(name, "rb").read()
            sys.stdout.buffer.write(options.turn(data))
        except OSError as fault:
            print("morvik-signs: %s: %s" % (name, fault.strerror), file=sys.stderr)
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main())
