"""Values that a word may meet, the odd ones foremost. Each is a text that leaves one value on the stack."""

OPERANDS = [
    "7", "-3", "1.5", "NaN", "1i2", "1j2", "1l2", "'a'", "#PI", "T",
    "#IO", "#CT", "'f1' 0 OPEN", "MARK", "MARK @m SET m", ": 1 ;", "MONADIC DUP ;", "VARS 1 MONADIC ;", "@a", "@#IO",
    "VARS 1 NILADIC @&1 ; !", ": %here @%here ; !",
    "(1 2 3)", "(5)", "'ab'", "'f1'", "#NIL", "(())", "(1 ())", "(1 #PI)", "(1l2 3)", "(1 2.5 'c')", "(1 2 3 4)[2 2]",
    "((1 2) 3)", "((1 2) (3 (4 'x')))", "(1 2) ENCLOSE", "(1 2) ATOM", "#IO ATOM", ": 1 ; ATOM", "MARK ENCLOSE",
    "[. 1 2.5 1i1 1j1 .]", "[. 1 2.5 1i1 1j1 1l1 'a' (1 2) .]", "[. 'ab' 1 .]", "[. : a ; '' .]", "[. #IO (()) @a .]",
    "[. 'f1' 0 OPEN 1 .]", "[. 'f1' 0 OPEN 1 .] (1 2 3 4)[2 2] ,",
    "(4294967296 2)", "(65536 65536)", "#NIL (0 4000000000) RESHAPE", "9223372036854775807",
]
