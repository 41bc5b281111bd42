#!/usr/bin/env python3
"""Writes docs/words.md: every word of the language, from the tables that the scanner and the machine are made from.

What each word does stands here, under one of its spellings. A word without a meaning, and a meaning without a word, is an
error.
"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TARGET = os.path.join(ROOT, "docs", "words.md")
sys.path.insert(0, os.path.join(ROOT, "tests", "lint"))
import completeness as tables  # noqa: E402

RESERVED = {"NOTIMPLEMENTED": "reserved: message 993", "RESTRICTED": "reserved: message 994",
            "NOTHING": "reserved: does nothing, and leaves its operands"}

# A title, the numbers of the instructions under it, in the order of the page, and how many operands their words ask for,
# where that tells sections apart.
NUMERIC = [(122, 132), (7, 25), (41, 73)]
SECTIONS = [
    ("The stack", [(221, 234), (239, 239)]),
    ("Names", [(4, 5), (119, 120), (216, 219), (238, 238)]),
    ("Functions, texts and control",
     [(102, 103), (114, 118), (121, 121), (220, 220), (235, 237), (240, 243), (247, 249), (259, 260)]),
    ("Numbers, two operands", NUMERIC, 2),
    ("Numbers, one operand", NUMERIC, 1),
    ("Truth and comparison", [(26, 36), (133, 148)]),
    ("Chance", [(37, 40), (177, 177)]),
    ("Arrays", [(82, 101), (104, 111), (160, 176), (178, 215)]),
    ("At the terminal", [(1, 3), (6, 6), (74, 75), (112, 113), (253, 254)]),
    ("Files", [(76, 81), (149, 159)]),
    ("The process", [(0, 0), (244, 246), (250, 252), (255, 258)]),
]

MEANINGS = {
    # The stack
    "CLEAR": "takes all values of the level away",
    "DISCARD": "takes the top away",
    "RIGHT": "takes the value below the top away",
    "SWAP": "changes the places of the two values on top",
    "MARK": "puts a mark on the stack",
    "COLLECT": "makes one vector of the values above the mark, or of all of the level; one value stays what it is",
    "COLLECTALL": "the same",
    "COLLECTFROMMARK": "the same, and asks for the mark",
    "COUNTSTACK": "how many values the level has",
    "COUNTTOMARK": "how many values stand above the mark",
    "CLEARTOMARK": "takes the values above the mark away",
    "DIP": "runs the function on top with the value below it set aside",
    "DEEP": "the same, and asks for a third value",
    "DUPLICATE": "puts the top there once more",
    # Names
    "VARIABLES": "the names that were made with `_`",
    "FUNCTIONS": "the names that were made with `.`",
    "AT": "the address of the name that a text spells",
    "GET": "the value of an address, or of the name that a text spells",
    "CONTEXT": "nothing, but reports 800 on an empty level",
    "PREVIOUSCONTEXT": "goes back by one table",
    "GLOBALCONTEXT": "pushes the global table",
    "NEWCONTEXT": "pushes a new small table",
    "NEWLARGECONTEXT": "pushes a new large table",
    "ASSIGN": "gives the name on top the value below it, which stays",
    "SET": "gives the name on top the value below it",
    "FORGET": "takes a name away",
    "WIPE": "takes all names of the present table away",
    # Functions, texts and control
    "ASSEMBLE": "makes a function of a text",
    "DISASSEMBLE": "the source text of a value",
    "FORMTEXT": "the text of a value as people read it",
    "EXECUTE": "runs a function or a text",
    "LOOP": "runs a function so many times, with the number of the round as its last argument",
    "REPEAT": "runs a function so many times",
    "RESULT": "what a function gives for its arguments, kept from its first run",
    "REEVALUATE": "runs the function again, and keeps that",
    "OPERATOR": "a function that runs as soon as it is met",
    "DO": "runs what a name means",
    "IF": "the value on top where the condition below it is true, otherwise the empty vector",
    "JUMP": "goes on at the Point of this number; 0 leaves, the empty vector does nothing",
    "CHECK": "decides what `?Y` and `?N` let run",
    "RETURN": "leaves the function",
    "YIELD": "leaves the function with the function on top as its result",
    "YIELDTO": "runs the function on top, and leaves",
    "NOOP": "nothing",
    "IF_YES": "lets what stands before it run only after a yes",
    "IF_NO": "lets what stands before it run only after a no",
    # Numbers
    "ADD": "the sum",
    "SUBTRACT": "the difference",
    "MULTIPLY": "the product; a character by a truth is itself or a blank",
    "DIVIDE": "the quotient",
    "RESIDUE": "what a whole number of divisions leaves",
    "MINIMUM": "the smaller one",
    "MAXIMUM": "the larger one",
    "POWER": "left to the power of right",
    "SQUARE": "to the power of 2",
    "CUBE": "to the power of 3",
    "SQRT": "the square root",
    "CBRT": "the cube root",
    "ROOT": "the root of left that right says",
    "LOGARITHM": "of left, to the base right",
    "CIRCULAR": "the function that right numbers, of left",
    "SIN": "the sine",
    "COS": "the cosine",
    "TAN": "the tangent",
    "ASIN": "the angle of a sine",
    "ACOS": "the angle of a cosine",
    "ATAN": "the angle of a tangent",
    "SINH": "the hyperbolic sine",
    "COSH": "the hyperbolic cosine",
    "TANH": "the hyperbolic tangent",
    "ASINH": "undoes `SINH`",
    "ACOSH": "undoes `COSH`",
    "ATANH": "undoes `TANH`",
    "BINOMIAL": "in how many ways left can be taken out of right",
    "CONJUGATE": "all parts but the first change their sign",
    "NEGATIVE": "all parts change their sign",
    "SIGNUM": "-1, 0 or 1; of numbers of several parts the direction",
    "DIRECTION": "the number over its modulus",
    "RECIPROCAL": "1 over the number",
    "MAGNITUDE": "the modulus",
    "BINARY": "prints in binary from now on",
    "NUMBER": "prints in the ordinary form from now on; of a binary character its number",
    "POLAR": "prints with modulus and angles from now on",
    "CARTESIAN": "prints with its parts from now on",
    "DEG": "radians to degrees; polar numbers show degrees from now on",
    "RAD": "degrees to radians; polar numbers show radians from now on",
    "FLOOR": "the next whole number downward",
    "CEILING": "the next whole number upward",
    "TRUNCATE": "the next whole number towards 0",
    "EXPONENTIAL": "e to this power",
    "POWE": "the same",
    "POW2": "2 to this power",
    "POW10": "10 to this power",
    "NATURALLOG": "the logarithm to the base e",
    "LOG2": "the logarithm to the base 2",
    "LOG10": "the logarithm to the base 10",
    "PITIMES": "pi times the number",
    "FACTORIAL": "the factorial",
    # Truth and comparison
    "NOT": "1 less the truth",
    "BOOLEAN": "true or false, whichever is nearer",
    "LOGICAL": "the nearest truth from 0 to 1",
    "PROBABLY": "true or false by chance, as probable as the truth",
    "CONTRADICTION": "how far the parts of a truth disagree",
    "ISBOOLEAN": "is it written as `T` or `F`?",
    "ISLOGICAL": "do all parts lie from 0 to 1?",
    "ISBINARY": "is it written in binary?",
    "ISNUMBER": "is it written in the ordinary form?",
    "ISCARTESIAN": "is it written with its parts, and without `#`?",
    "ISPOLAR": "is it written with modulus and angles?",
    "AND": "the smaller truth",
    "OR": "the larger truth",
    "NAND": "1 less the smaller truth",
    "NOR": "1 less the larger truth",
    "STRONGAND": "by how much two truths together exceed 1",
    "STRONGOR": "the sum of two truths, at most 1",
    "STRONGNAND": "1 less `STRONGAND`",
    "STRONGNOR": "1 less `STRONGOR`",
    "IDENTICAL": "exactly the same value",
    "NOTIDENTICAL": "not exactly the same value",
    "LESS": "left is less",
    "NOTGREATER": "left is not greater",
    "EQUIVALENT": "the same within `#CT`",
    "NOTLESS": "left is not less",
    "GREATER": "left is greater",
    "NOTEQUIVALENT": "not the same within `#CT`",
    # Chance
    "SEED": "starts the generators with this number",
    "RANDOMISE": "starts the generators by the clock",
    "ROLL": "of n, a whole number of the n from `#IO` on; of a real, a real below it",
    "RANDOM": "a real between 0 and the number",
    "DEAL": "so many (right) different numbers of the first ones (left) from `#IO` on",
    # Arrays
    "ENASCII": "characters of integers",
    "DEASCII": "integers of characters",
    "ENCAPSULATE": "one number of the two to eight in a vector",
    "DECAPSULATE": "the parts of a number as a vector",
    "RAVEL": "all elements as a vector",
    "ENCLOSE": "a vector of one element that holds the value; a scalar stays",
    "ATOM": "the same, also of a scalar, as one thing",
    "DISCLOSE": "what the one element holds",
    "FIRST": "the first element, or slice",
    "FIRSTELEMENT": "the first element as a vector, or what it holds",
    "REST": "all but the first element, or slice",
    "REDUCINGREST": "all but the first element, as a vector",
    "INTERVAL": "the numbers up to this one, or from one to another",
    "ENLIST": "all that is enclosed, however deep, as a vector",
    "GROUP": "reserved: message 994",
    "MIRROR": "each row backwards",
    "REVERSE": "all elements backwards",
    "TRANSPOSE": "the axes backwards",
    "SHAPE": "the extents, the fastest axis first",
    "RANK": "how many extents",
    "DEPTH": "how deep it nests",
    "RESHAPE": "the elements of left in the shape that right says",
    "CATENATE": "both joined",
    "MATCH": "how similar both are, from 0 to 1",
    "EXACTMATCH": "1 if both are the same, otherwise 0",
    "REDUCE": "after a word: puts it between the elements of each row",
    "SUM": "the sum of each row",
    "PRODUCT": "the product of each row",
    "ALL": "are all of a row true?",
    "ANY": "is any of a row true?",
    "SMALLEST": "the smallest of each row",
    "LARGEST": "the largest of each row",
    "REDUCELASTAXIS": "after a word: puts it between the slices along the slowest axis",
    "SUMROWS": "`SUM` along the slowest axis",
    "PRODUCTROWS": "`PRODUCT` along the slowest axis",
    "ALLROWS": "`ALL` along the slowest axis",
    "ANYROW": "`ANY` along the slowest axis",
    "SMALLESTROW": "`SMALLEST` along the slowest axis",
    "LARGESTROW": "`LARGEST` along the slowest axis",
    "COMPRESS": "of each row of right what stands where left is above 0",
    "COMPRESSROWS": "the slices of right where left is above 0",
    "REPLICATE": "right so many (left) times, along a new axis",
    "MASK": "the function on top for the weighted neighbours of every element",
    "EACH": "the function on top for every element",
    # At the terminal
    "INPUT": "reads a line, runs it, and leaves its value",
    "QUOTEDIN": "reads a line as characters",
    "TIME": "the clock as a Julian day",
    "OUTPUT": "writes the top and a line feed, and leaves it",
    "REVEAL": "writes the top, and leaves it",
    "PRINT": "writes the top and a line feed, and takes it away",
    "TELL": "writes the top, and takes it away",
    "SLEEP": "waits so many seconds",
    "EDIT": "the value as the editor leaves its source",
    "TEXTEDIT": "the text that the editor leaves of a value",
    # Files
    "READ": "runs a file",
    "TEXTREAD": "the bytes of a file as characters",
    "SAVE": "writes names and stack",
    "LOAD": "clears names and stack, and runs a file",
    "DUMPSTACK": "writes the stack",
    "REMEMBER": "writes the names",
    "WRITE": "writes the value below the name as source, and leaves it",
    "APPEND": "the same at the end of a file, without a line end",
    "TEXTWRITE": "writes the value below the name as people read it, and leaves it",
    "TEXTAPPEND": "the same at the end of a file",
    "OPEN": "a FILE; of a FILE, opens it again",
    "LSBOPEN": "the same, and marks the FILE",
    "CLOSE": "closes a FILE, and takes it away",
    "REWIND": "goes back to the beginning of a FILE, and takes it away",
    # The process
    "BREAK": "leaves the Inspect prompt; drops its line",
    "PARALLEL": "how many of the slots that were started work from now on",
    "SERIAL": "above how many elements they do",
    "TRACE": "shows each Point of this level before it runs",
    "TRACEALL": "the same everywhere, until `RUNALL`",
    "STEP": "stops before each Point of this level",
    "STEPALL": "the same everywhere, until `RUNALL`",
    "RUN": "ends `TRACE` and `STEP`, and an inspection",
    "RUNALL": "ends them everywhere",
    "ENDPROCESS": "ends the process; in a function, or in a text that a word runs, that alone",
    "WRAP": "stands before `MASK`, and changes nothing",
    "REFLECT": "stands before `MASK`, and changes nothing",
}

OPENING = """# Words

Every word of the language. Words on one line are the same. The number is how many operands a word asks for: with fewer there
is message 800. A byte above 127 is written as `\\xB9`, by its value in base 16; source is bytes, and these are single ones.

This page is made by `tools/reference/words.py`. The other pages tell more: [the language](language.md),
[numbers](numbers.md), [arrays](arrays.md), [files](files.md), [measuring and stepping](measuring.md).
"""
CLOSING = """
## What else is spelled one way

| Words | |
| --- | --- |
| `:` `NEADIC` `FUNCTION` | begin a function that sees all of the stack |
| `NILADIC` `MONADIC` `DYADIC` `TRIADIC` | begin a function of none to three arguments |
| `ARGS n FUNCTION` | begins a function of n arguments |
| `VARS m` before one of these four, or beside `ARGS n` | gives it m locals, `&1` to `&m` |
| `;` `FUNCTIONEND` | end a function |
| `::` | makes the next word what it was born as |
| `.` `END` | end a text |
| `"` `\\xBC` | begin and end a comment |
%s"""


def shown(spelling):
    text = "".join(chr(byte) if byte < 128 else "\\x%02X" % byte for byte in spelling)
    return "`%s`" % text.replace("|", "\\|")


def operandsbyclass():
    found = {}
    for row in tables.rows("machine/classes.def", "ARGUMENTCLASS"):
        group, _, operands, _ = row.split(",")
        found[int(group)] = int(operands)
    return found


def groups():
    """(number, class, handler, hidden constant, spellings) for each different thing that a word can be."""
    instructions, found = {}, {}
    for row in tables.rows("machine/instructions.def", "INSTRUCTION"):
        number, name, group, _, handler = (part.strip() for part in row.split(",", 4))
        instructions[name] = (int(number), int(group), handler)
    for row in tables.rows("frontend/keywords.def", "KEYWORD"):
        kind, _, name, modifier, _, rest = (part.strip() for part in row.split(",", 5))
        hidden = rest.split('"')[0].strip(" ,")
        found.setdefault((*instructions[name], kind == "ROOT", modifier, hidden), []).extend(tables.spellings(row))
    return [(number, group, handler, hidden, root, spellings)
            for (number, group, handler, root, _, hidden), spellings in sorted(found.items(), key=lambda item: item[0][0])]


def meaning(handler, spellings, used):
    known = [spelling.decode("latin-1") for spelling in spellings if spelling.decode("latin-1") in MEANINGS]
    used.update(known)
    if len(known) == 1:
        return MEANINGS[known[0]]
    if known or handler not in RESERVED:
        sys.exit("%s: %d meanings" % (spellings, len(known)))
    return RESERVED[handler]


def page():
    parts, used, everything, wanted = [OPENING], set(), groups(), operandsbyclass()
    left = set(range(len(everything)))
    for title, ranges, *only in SECTIONS:
        parts.append("\n## %s\n\n| Words | | What it does |\n| --- | --- | --- |\n" % title)
        for i in [i for first, last in ranges for i, row in enumerate(everything) if first <= row[0] <= last]:
            number, group, handler, hidden, root, spellings = everything[i]
            operands = wanted.get(group, 0) - hidden.startswith("HIDDEN") + root
            if only and operands not in only:
                continue
            left.discard(i)
            parts.append("| %s | %s | %s |\n" % (" ".join(map(shown, spellings)), operands or "",
                                                meaning(handler, spellings, used)))
    if left or used != set(MEANINGS):
        sys.exit("no place: %s; no word: %s" % ([everything[i] for i in left], sorted(set(MEANINGS) - used)))
    constants = ""
    for row in tables.rows("frontend/constants.def", "CONSTANT"):
        constants += "| %s | %s |\n" % (" ".join(map(shown, tables.spellings(row))), value(row))
    return "".join(parts) + CLOSING % "" + "\n## Constants\n\n| Words | Value |\n| --- | --- |\n" + constants


def value(row):
    tag, form, bits, sign = (part.strip() for part in row.split(",", 4)[:4])
    if tag == "0":
        return "the empty vector"
    if tag == "tags::REAL":
        number = float.fromhex(real(int(bits, 16)))
        return "%.17g%s" % (number, ", also after a `-`" if sign == "SIGNED" else "")
    return bits + (", a function of `CIRCULAR`" if form == "forms::NAMED" else ", a truth")


def real(bits):
    """The double of these bits, in base 16."""
    exponent, mantissa = (bits >> 52 & 0x7FF) - 1023, bits & ((1 << 52) - 1)
    return "%s0x1.%013xp%d" % ("-" if bits >> 63 else "", mantissa, exponent)


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        with open(TARGET, encoding="utf-8") as file:
            same = file.read() == page()
        print("docs/words.md is %s" % ("up to date" if same else "not up to date: run tools/reference/words.py"))
        sys.exit(not same)
    with open(TARGET, "w", encoding="utf-8") as file:
        file.write(page())
