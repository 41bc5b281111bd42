"""The text form of an expectation: streams as lines with C-like escapes, and placeholders for what varies."""
import re

PLACEHOLDERS = {
    "<time>": r"\d\d:\d\d:\d\d\.\d{6}",
    "<path>": r"[^ \n]+",
    "<number>": r"-?\d+(?:\.\d+)?(?:e[-+]?\d+)?",
    "<word>": r"[^ \n]+",
    "<figure>": r" *(?:(?:\d+:)?\d+\.\d+|inf) *[A-Za-z:/%]+,? *",
    "<any>": r"[^\n]*",
}
PLACEHOLDER = re.compile("|".join(map(re.escape, PLACEHOLDERS)))
CLOSING = re.compile(r"^--- Spent: \d\d:\d\d:\d\d\.\d{6} ---$")
CLOSING_TEXT = "--- Spent: <time> ---"
SECTION = "=== "
NAMED_ESCAPES = {"\\": "\\\\", "\t": "\\t", "\r": "\\r", "\0": "\\0", "\a": "\\a", "\b": "\\b"}
ESCAPE = re.compile(r"\\(?:x([0-9A-F]{2})|([\\tr0ab]))")
UNNAMED = {text[1]: byte for byte, text in NAMED_ESCAPES.items()}


class Malformed(Exception):
    """An expectation that does not follow the format."""


def escape(byte):
    if byte in NAMED_ESCAPES:
        return NAMED_ESCAPES[byte]
    return byte if " " <= byte <= "~" else "\\x%02X" % ord(byte)


def encodeline(line):
    """One line of a stream, without its line feed, as an expectation has it."""
    text = "".join(map(escape, line))
    if text.endswith(" "):
        text = text[:-1] + "\\x20"
    if text.startswith(SECTION):
        text = "\\x3D" + text[1:]
    return PLACEHOLDER.sub(lambda match: "\\x3C" + match.group()[1:], text)


def decodetext(text):
    """The bytes that an escaped piece of text without placeholders stands for."""

    def byte(match):
        return chr(int(match.group(1), 16)) if match.group(1) else UNNAMED[match.group(2)]

    if "\\" in ESCAPE.sub("", text):
        raise Malformed("unknown escape in: " + text)
    return ESCAPE.sub(byte, text)


def linepattern(text):
    """The regular expression, for latin-1 text, that an expected line stands for."""
    pattern, start = "", 0
    for match in PLACEHOLDER.finditer(text):
        pattern += re.escape(decodetext(text[start : match.start()])) + PLACEHOLDERS[match.group()]
        start = match.end()
    return pattern + re.escape(decodetext(text[start:]))


def isunfinished(line):
    """Does the stream end with this expected line, without a line feed? A lone backslash at its end says so."""
    return (len(line) - len(line.rstrip("\\"))) % 2 == 1


def alignment(old, lines):
    """Which old line each line still is: the longest common run of lines, an old line standing for all it matches."""
    patterns = [re.compile(linepattern(mask[:-1] if isunfinished(mask) else mask)) for mask in old]
    common = [[0] * (len(lines) + 1) for _ in range(len(old) + 1)]
    for i in reversed(range(len(old))):
        for j in reversed(range(len(lines))):
            same = patterns[i].fullmatch(lines[j])
            common[i][j] = 1 + common[i + 1][j + 1] if same else max(common[i + 1][j], common[i][j + 1])
    kept, i, j = {}, 0, 0
    while i < len(old) and j < len(lines):
        if patterns[i].fullmatch(lines[j]):
            kept[j] = old[i]
            i, j = i + 1, j + 1
        elif common[i + 1][j] >= common[i][j + 1]:
            i += 1
        else:
            j += 1
    return kept


def encodestream(data, old=()):
    """A stream as expected lines. A line that was in the old expectation keeps its placeholders."""
    lines = data.decode("latin-1").split("\n")
    kept = alignment(old, lines) if any(map(PLACEHOLDER.search, old)) else {}
    result = []
    for number, line in enumerate(lines):
        end = "\\" if number == len(lines) - 1 else ""
        text = kept.get(number, CLOSING_TEXT if CLOSING.match(line) else encodeline(line))
        if isunfinished(text):
            text = text[:-1]
        result.append(text + end)
    if not lines[-1]:
        result.pop()
    return result


def matches(expected, data):
    """Does a stream hold what the expected lines say, byte for byte outside placeholders?"""
    pattern = ""
    for number, line in enumerate(expected):
        if number == len(expected) - 1 and isunfinished(line):
            pattern += linepattern(line[:-1])
        else:
            pattern += linepattern(line) + "\n"
    return re.fullmatch(pattern, data.decode("latin-1")) is not None


def readexpectation(text):
    """An expectation as a dictionary from section title to its lines."""
    sections, current = {}, None
    for line in text.split("\n")[:-1]:
        if line.startswith(SECTION):
            title = line[len(SECTION) :]
            if title in sections:
                raise Malformed("section twice: " + title)
            current = sections[title] = []
        elif current is None:
            raise Malformed("text before the first section")
        else:
            current.append(line)
    return sections


def writeexpectation(sections):
    return "".join(SECTION + title + "\n" + "".join(line + "\n" for line in lines)
                   for title, lines in sections.items())


def checksanything(sections):
    """Is there anything that a change of behaviour could break: text beside the closing line and placeholders?"""
    if any(title.startswith(("status", "file")) for title in sections):
        return True
    for lines in sections.values():
        for line in lines:
            if line != CLOSING_TEXT and PLACEHOLDER.sub("", line).strip(" \\"):
                return True
    return False
