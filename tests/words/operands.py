"""Operands of each kind for the trial of words. Each is a text that leaves one value on the stack."""

# A kind, and values of it: a scalar first, then vectors of one, of two and of three elements, a matrix, and odd ones.
KINDS = {
    "character": ["'a'", "'ab'", "'abc'", "'abcd'[2 2]"],
    "integer": ["2", "T", "0", "-1", "(1)", "(1 0)", "(1 0 1)", "(1 2 3 4)", "(1 2 3 4)[2 2]", "9223372036854775807"],
    "real": ["0.5", "2.5", "-1.5", "2.0", "(1.5)", "(1.5 2.5)", "(1.5 2.5 3.5)", "(1.5 2.5 3.5 4.5)[2 2]"],
    "complex": ["1i2", "0i1", "d2p90", "2i0", "(1i2)", "(1i2 2i3)", "(1i2 2i3 3i4)"],
    "quaternion": ["1j2", "0k1", "2j0", "(1j2)", "(1j2 2j3)", "(1j2 2j3 3j4)"],
    "octonion": ["1l2", "2l0", "(1l2)", "(1l2 2l3)", "(1l2 2l3 3l4)"],
    "FILE": ["'f1' 0 OPEN"],
    "function": [": ;", "NILADIC ;", "MONADIC ;", "DYADIC DISCARD ;", "TRIADIC DISCARD DISCARD ;", "VARS 1 MONADIC ;"],
    "address": ["@known", "@unknown"],
    "nested": ["((1 2) (3 4))", "((1 2) (3 4) (5 6))", "((1 2) 3)", "((1 2) (1 2 3))", "(1.5 (2 3) 2)", "(1 2) ENCLOSE"],
    "empty": ["#NIL", "''"],
}
# The one of each kind where a word takes three operands.
ONE = {"character": "'abc'", "integer": "(1 0 1)", "real": "(1.5 2.5 3.5)", "complex": "(1i2 2i3 3i4)",
       "quaternion": "(1j2 2j3 3j4)", "octonion": "(1l2 2l3 3l4)", "FILE": "'f1' 0 OPEN", "function": "MONADIC ;",
       "address": "@known", "nested": "((1 2) (3 4) (5 6))", "empty": "#NIL"}
# What stands before each text: the names that operands speak of.
KNOWN = "1 @known SET 1 @a SET 1 @ab SET 1 @abc SET"
# Values that would wait, or run without end, under a word of this name; these stand in their place.
TAMED = {
    "SLEEP": {"integer": ["0", "-1", "(0)", "(0 0)"], "real": ["0.001", "-1.5", "(0.001)", "(0.001 0.001)"]},
    "JUMP": {"integer": ["0", "500", "-1", "(500)", "(500 1)"]},
    "LOOP": {"integer": ["2", "0", "-1", "(1)", "(1 0)"]},
    "REPEAT": {"integer": ["2", "0", "-1", "(1)", "(1 0)"]},
    # A function of two arguments is accepted, and does nothing.
    "EACH": {"function": [": ;", "NILADIC ;", "MONADIC ;", "TRIADIC DISCARD DISCARD ;", "VARS 1 MONADIC ;"]},
}
FILENAMES = ["'f1'", "'x'", "'ab'", "'nosuch/name'", "'../name'", "'abcd'[2 2]"]
for _word in ("READ", "TEXTREAD", "LOAD", "SAVE", "DUMPSTACK", "REMEMBER", "WRITE", "APPEND", "TEXTWRITE", "TEXTAPPEND", "OPEN",
              "LSBOPEN"):
    TAMED[_word] = {"character": FILENAMES}

# Texts that make a word raise what no operand above makes it raise.
MORE = {
    "INTERVAL": ["5000000000 ..", "(1 2.5 'c') ..", "[. 'a' 5 .] ..", ": 1 ; 5 COLLECT ..", "(1 5 -2) ..", "(1 2i3) .."],
    "RESHAPE": ["(1 2) 'ab' RESHAPE", "(1 2) ((1) 2) RESHAPE", "#NIL 3 RESHAPE", "(1 2) (100000 100000) RESHAPE"],
    "FACTORIAL": ["0 @#CT SET -2i0 FACTORIAL 1E-13 @#CT SET"],
    "BINOMIAL": ["0 @#CT SET -2i0 3i0 BINOMIAL 1E-13 @#CT SET"],
    "TRANSPOSE": ["(1 2)[1 1 1 1 1 1 1 1 2] TRANSPOSE"],
    "ENCAPSULATE": ["((1 2) 3 2.5) ENCAPSULATE"],
    "COLLECTFROMMARK": ["1 2 COLLECTFROMMARK"],
    "IF_YES": ["5 ADD IF_YES", "1 CHECK : ; IF_YES", "5 IF_YES"],
    "IF_NO": ["5 ADD IF_NO"],
    "CONTEXT": ["CLEAR CONTEXT"],
    "EDIT": ["CLEAR EDIT"],
    "TEXTEDIT": ["CLEAR TEXTEDIT"],
    "REDUCE": ["(1 2) NAND REDUCE", "5 REDUCE"],
    "REDUCELASTAXIS": ["(1 2) NAND REDUCELASTAXIS", "5 REDUCELASTAXIS"],
    "PARALLEL": ["8 PARALLEL"],
    "MASK": ["(1 2 3) (1 1) MONADIC ; MASK", "(1 2 3) (1 1 1)[3 1] MONADIC ; MASK", "(1 2 3) (1 1 1) DYADIC ; MASK",
             "(1 2 3) (1 1 1) 5 MASK", "(1 2 3) (1 1 1) MONADIC DISCARD MARK ; MASK"],
    "DEAL": ["3.5 1 DEAL"],
    "WRAP": ["WRAP 5"],
    "REFLECT": ["REFLECT 5"],
    "LOOP": ["0 2 DYADIC ; LOOP"],
    "INPUT": ["INPUT .\n1 2"],
}
