// The tokens of each start condition, the longest match and its fallbacks.
#include <gtest/gtest.h>

#include <string>

#include "frontend/tokens.h"
#include "frontend/window.h"
#include "unit/scan_tokens.h"

using namespace morvik;

namespace {

Tokens initial(const std::string &text) {
  return tokensof(text);
}

Scanned name(const std::string &rest) {
  return scantext(rest, Condition::NAME);
}

}  // namespace

TEST(Scanner, ATextOfNumbersAndWords) {
  EXPECT_EQ(initial("1 2 + .\n"), (Tokens{"INTEGER 1", "INTEGER 2", "KEYWORD +", "ENDOFTEXT .\n"}));
  EXPECT_EQ(initial(": 1 + ; @inc SET 4 inc ! ."),
            (Tokens{"OPENFUNCTION :", "INTEGER 1", "KEYWORD +", "CLOSEFUNCTION ;", "ADDRESS @", "NAMESTART i",
                    "NAMEPART nc", "NAMEEND", "KEYWORD SET", "INTEGER 4", "NAMESTART i", "NAMEPART nc", "NAMEEND",
                    "KEYWORD !", "ENDOFTEXT ."}));
  EXPECT_EQ(scantext("1\t\r 2").echo, "");
}

TEST(Scanner, AKeywordEndsAtABoundary) {
  for (const char *boundary : {" ", "\n", "("}) EXPECT_EQ(initial(std::string("SIN") + boundary)[0], "KEYWORD SIN");
  EXPECT_EQ(initial("SINX "), (Tokens{"NAMESTART S", "NAMEPART INX", "NAMEEND"}));
  EXPECT_EQ(initial("SIN_ "), (Tokens{"NAMESTART S", "NAMEPART IN_", "NAMEEND"}));
  EXPECT_EQ(initial("SIN2 "), (Tokens{"NAMESTART S", "NAMEPART IN2", "NAMEEND"}));
  EXPECT_EQ(initial("SIN\n"), (Tokens{"KEYWORD SIN", "LINEFEED \n"}));
  EXPECT_EQ(initial("SIN\xAF"), (Tokens{"KEYWORD SIN", "NAMESTART \xAF"}));
}

TEST(Scanner, TheEndOfInputIsNoBoundary) {
  EXPECT_EQ(initial("ADD"), (Tokens{"NAMESTART A", "NAMEPART DD"}));
  EXPECT_EQ(initial("T"), (Tokens{"NAMESTART T"}));
  EXPECT_EQ(initial("#PI"), (Tokens{"NAMESTART #", "NAMEPART PI"}));
  EXPECT_EQ(initial("END"), (Tokens{"NAMESTART E", "NAMEPART ND"}));
  EXPECT_EQ(initial("FUNCTION"), (Tokens{"NAMESTART F", "NAMEPART UNCTION"}));
  EXPECT_EQ(initial("~"), (Tokens{"NAMESTART ~"}));
  EXPECT_EQ(initial("+"), (Tokens{"KEYWORD +"}));
  EXPECT_EQ(initial("."), (Tokens{"ENDOFTEXT ."}));
}

TEST(Scanner, WhatTheFirstByteDecides) {
  EXPECT_EQ(initial("vector "), (Tokens{"KEYWORD v", "NAMESTART e", "NAMEPART ctor", "NAMEEND"}));
  EXPECT_EQ(initial("a+b "), (Tokens{"NAMESTART a", "NAMEPART +b", "NAMEEND"}));
  EXPECT_EQ(initial("a +b "), (Tokens{"NAMESTART a", "NAMEEND", "KEYWORD +", "NAMESTART b", "NAMEEND"}));
  EXPECT_EQ(initial("\xB0 "), (Tokens{"NAMESTART \xB0", "NAMEEND"}));
  EXPECT_EQ(initial("\xB0+ "), (Tokens{"KEYWORD \xB0+"}));
  EXPECT_EQ(initial("Foo "), (Tokens{"NAMESTART F", "NAMEPART oo", "NAMEEND"}));
  EXPECT_EQ(initial("ENDING "), (Tokens{"NAMESTART E", "NAMEPART NDING", "NAMEEND"}));
  EXPECT_EQ(initial("-"), (Tokens{"KEYWORD -"}));
  EXPECT_EQ(initial("::+"), (Tokens{"BUILTIN ::", "KEYWORD +"}));
  EXPECT_EQ(initial(":::"), (Tokens{"BUILTIN ::", "OPENFUNCTION :"}));
  EXPECT_EQ(initial(":x "), (Tokens{"OPENFUNCTION :", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial(";;"), (Tokens{"CLOSEFUNCTION ;", "CLOSEFUNCTION ;"}));
  EXPECT_EQ(initial(") "), (Tokens{"NAMESTART )", "NAMEEND"}));
  // Each byte that begins nothing else begins a name.
  for (int byte = 1; byte < 256; ++byte) {
    const std::string text = {static_cast<char>(byte), 'q', ' '};
    const bool complete = std::string("\x02\t\n\r \"'(*+-./0123456789:;@^v|\xBC").find(text[0]) != std::string::npos;
    const bool sigil = text[0] == '_' || text[0] == '$' || text[0] == '%';
    EXPECT_EQ(initial(text)[0] == "NAMESTART " + text.substr(0, 1), !complete && !sigil) << byte;
  }
}

TEST(Scanner, LongestMatch) {
  EXPECT_EQ(initial(",[] "), (Tokens{"KEYWORD ,[]"}));
  EXPECT_EQ(initial(",[.] "), (Tokens{"KEYWORD ,[.]"}));
  EXPECT_EQ(initial("FUNCTIONEND "), (Tokens{"CLOSEFUNCTION FUNCTIONEND"}));
  EXPECT_EQ(initial("FUNCTION "), (Tokens{"OPENFUNCTION FUNCTION"}));
  EXPECT_EQ(initial("**"), (Tokens{"KEYWORD **"}));
  EXPECT_EQ(initial("***"), (Tokens{"KEYWORD **", "KEYWORD *"}));
  EXPECT_EQ(initial("!~^!~v"), (Tokens{"KEYWORD !~^", "KEYWORD !~v"}));
  EXPECT_EQ(initial("\xC5% "), (Tokens{"KEYWORD \xC5%"}));
  EXPECT_EQ(initial("?\xC5 "), (Tokens{"KEYWORD ?\xC5"}));
  EXPECT_EQ(initial("-#PI "), (Tokens{"CONSTANT -#PI"}));
  EXPECT_EQ(initial("#PI_2 "), (Tokens{"CONSTANT #PI_2"}));
  EXPECT_EQ(initial("#1_PI "), (Tokens{"CONSTANT #1_PI"}));
  EXPECT_EQ(initial("# "), (Tokens{"KEYWORD #"}));
  EXPECT_EQ(initial("#3i4"), (Tokens{"COMPLEX #3i4"}));
  EXPECT_EQ(initial("#-3i4"), (Tokens{"COMPLEX #-3i4"})) << "longer than # and its boundary";
  EXPECT_EQ(initial("#-3 "), (Tokens{"KEYWORD #", "INTEGER -3"}));
}

TEST(Scanner, AnUnfinishedFormFallsBack) {
  EXPECT_EQ(initial(",[x "), (Tokens{"KEYWORD ,", "NAMESTART [", "NAMEPART x", "NAMEEND"}));
  EXPECT_EQ(initial(",[.x "), (Tokens{"KEYWORD ,", "NAMESTART [", "NAMEEND", "SIGILNAME .x"}));
  EXPECT_EQ(initial("/../x "), (Tokens{"KEYWORD /", "KEYWORD ..", "KEYWORD /", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("/-/3 "), (Tokens{"KEYWORD /", "KEYWORD -", "KEYWORD /", "INTEGER 3"}));
  EXPECT_EQ(initial("//x "), (Tokens{"KEYWORD /", "KEYWORD /", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("//[]x "), (Tokens{"KEYWORD //", "NAMESTART [", "NAMEPART ]x", "NAMEEND"}));
  EXPECT_EQ(initial("~^x "), (Tokens{"KEYWORD ~", "KEYWORD ^", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("##5 "), (Tokens{"KEYWORD #", "NAMESTART #", "NAMEPART 5", "NAMEEND"}));
  EXPECT_EQ(initial("!x "), (Tokens{"NAMESTART !", "NAMEPART x", "NAMEEND"}));
  EXPECT_EQ(initial("?Yes "), (Tokens{"NAMESTART ?", "NAMEPART Yes", "NAMEEND"}));
  EXPECT_EQ(initial("FUNCTIONENDS "), (Tokens{"NAMESTART F", "NAMEPART UNCTIONENDS", "NAMEEND"}));
  EXPECT_EQ(initial("-#PIx "), (Tokens{"KEYWORD -", "NAMESTART #", "NAMEPART PIx", "NAMEEND"}));
  EXPECT_EQ(initial("-#SIN "), (Tokens{"KEYWORD -", "CONSTANT #SIN"}));
}

TEST(Scanner, EndsOfText) {
  EXPECT_EQ(initial(". "), (Tokens{"ENDOFTEXT ."}));
  EXPECT_EQ(initial(".\n\n"), (Tokens{"ENDOFTEXT .\n", "LINEFEED \n"}));
  EXPECT_EQ(initial("END\n\n"), (Tokens{"ENDOFTEXT END\n", "LINEFEED \n"}));
  EXPECT_EQ(initial("END 1"), (Tokens{"ENDOFTEXT END", "INTEGER 1"}));
  EXPECT_EQ(initial("END.\n"), (Tokens{"ENDOFTEXT END", "ENDOFTEXT .\n"}));
  EXPECT_EQ(initial("x."), (Tokens{"NAMESTART x", "NAMEEND", "ENDOFTEXT ."}));
  EXPECT_EQ(initial(".. "), (Tokens{"KEYWORD .."}));
  EXPECT_EQ(initial("..]"), (Tokens{"KEYWORD ..", "NAMESTART ]"})) << "the end of input is no boundary";
  EXPECT_EQ(initial(".]1"), (Tokens{"ENDOFTEXT .", "NAMESTART ]", "NAMEPART 1"}));
  EXPECT_EQ(initial(".][. "), (Tokens{"KEYWORD .][."}));
  EXPECT_EQ(initial(".][x "), (Tokens{"KEYWORD .]", "NAMESTART [", "NAMEPART x", "NAMEEND"}));
}

TEST(Scanner, FunctionOpenings) {
  for (const char *text : {":",
                           "NEADIC",
                           "FUNCTION",
                           "NILADIC",
                           "MONADIC",
                           "DYADIC",
                           "TRIADIC",
                           "ARGS 3 FUNCTION",
                           "ARGS-3 FUNCTION",
                           "ARGS3 FUNCTION",
                           "ARGS3FUNCTION",
                           "ARGS\t\r\n 12 \n\t\rFUNCTION",
                           "ARGS \xAF"
                           "3 FUNCTION",
                           "VARS 2 NEADIC",
                           "VARS 2 NILADIC",
                           "VARS\t2\rMONADIC",
                           "VARS2DYADIC",
                           "VARS -2 TRIADIC",
                           "ARGS 1 VARS 2 FUNCTION",
                           "ARGS \n1\n VARS\n2   FUNCTION",
                           "VARS 1 ARGS 2 FUNCTION",
                           "ARGS1VARS2FUNCTION",
                           "VARS1ARGS-2FUNCTION"}) {
    EXPECT_EQ(initial(text + std::string(" ")), (Tokens{std::string("OPENFUNCTION ") + text}));
    EXPECT_EQ(initial(text + std::string("(")), (Tokens{std::string("OPENFUNCTION ") + text, "OPENVECTOR ("}));
    if (std::string(text) != ":") {
      for (const char *next : {"", "x", "1", "_"})
        EXPECT_NE(initial(text + std::string(next))[0], std::string("OPENFUNCTION ") + text) << next;
    }
  }
}

TEST(Scanner, WhatIsNoFunctionOpeningIsGivenBack) {
  EXPECT_EQ(initial("VARS "), (Tokens{"KEYWORD VARS"}));
  EXPECT_EQ(initial("VARS ."), (Tokens{"KEYWORD VARS", "ENDOFTEXT ."}));
  EXPECT_EQ(initial("FNS\n"), (Tokens{"KEYWORD FNS", "LINEFEED \n"}));
  EXPECT_EQ(initial("VARS 2 x "), (Tokens{"KEYWORD VARS", "INTEGER 2", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("VARS 2 FUNCTION "), (Tokens{"KEYWORD VARS", "INTEGER 2", "OPENFUNCTION FUNCTION"}));
  EXPECT_EQ(initial("VARS 2 NILADICS "),
            (Tokens{"KEYWORD VARS", "INTEGER 2", "NAMESTART N", "NAMEPART ILADICS", "NAMEEND"}));
  EXPECT_EQ(initial("VARS 1 ARGS 2 x "), (Tokens{"KEYWORD VARS", "INTEGER 1", "NAMESTART A", "NAMEPART RGS", "NAMEEND",
                                                 "INTEGER 2", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("VARS - NILADIC "), (Tokens{"KEYWORD VARS", "KEYWORD -", "OPENFUNCTION NILADIC"}));
  EXPECT_EQ(initial("VARS2 "), (Tokens{"NAMESTART V", "NAMEPART ARS2", "NAMEEND"}));
  EXPECT_EQ(initial("ARGS 3 MONADIC "),
            (Tokens{"NAMESTART A", "NAMEPART RGS", "NAMEEND", "INTEGER 3", "OPENFUNCTION MONADIC"}));
  // Two counts: no tab or carriage return, and before the last word no line feed.
  for (const char *text : {"VARS\t1 ARGS 2 FUNCTION ", "VARS 1\tARGS 2 FUNCTION ", "VARS 1 ARGS\t2 FUNCTION ",
                           "VARS 1 ARGS 2\nFUNCTION ", "VARS\r1 ARGS 2 FUNCTION "})
    EXPECT_EQ(initial(text)[0], "KEYWORD VARS") << text;
  // However much was looked at.
  const std::string blanks(100000, ' ');
  EXPECT_EQ(initial("VARS" + blanks + "2" + blanks + "x "),
            (Tokens{"KEYWORD VARS", "INTEGER 2", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("VARS" + blanks + "2" + blanks + "NILADIC "),
            (Tokens{"OPENFUNCTION VARS" + blanks + "2" + blanks + "NILADIC"}));
}

TEST(Scanner, Sigils) {
  EXPECT_EQ(initial("_x $y1 .z_ %l &3 "),
            (Tokens{"SIGILNAME _x", "SIGILNAME $y1", "SIGILNAME .z_", "LABEL %l", "LOCAL &3"}));
  EXPECT_EQ(initial("__ "), (Tokens{"SIGILNAME __"}));
  EXPECT_EQ(initial("_a+"), (Tokens{"SIGILNAME _a", "KEYWORD +"}));
  EXPECT_EQ(initial("&-3 &\xAF"
                    "3"),
            (Tokens{"LOCAL &-3",
                    "LOCAL &\xAF"
                    "3"}));
  EXPECT_EQ(initial("_ "), (Tokens{"NAMESTART _", "NAMEEND"}));
  EXPECT_EQ(initial("$1 "), (Tokens{"NAMESTART $", "NAMEPART 1", "NAMEEND"}));
  EXPECT_EQ(initial("%1 "), (Tokens{"NAMESTART %", "NAMEPART 1", "NAMEEND"}));
  EXPECT_EQ(initial("&x "), (Tokens{"NAMESTART &", "NAMEPART x", "NAMEEND"}));
  EXPECT_EQ(initial(".END "), (Tokens{"SIGILNAME .END"}));
  EXPECT_EQ(initial(".5"), (Tokens{"REAL .5"}));
  EXPECT_EQ(initial("\x02"), (Tokens{"BRACKETNAME \x02"}));
  EXPECT_EQ(initial("_\x02"), (Tokens{"BRACKETNAME _\x02"}));
  EXPECT_EQ(initial("$\x02"), (Tokens{"BRACKETNAME $\x02"}));
  EXPECT_EQ(initial(".\x02"), (Tokens{"BRACKETNAME .\x02"}));
  EXPECT_EQ(initial("%\x02"), (Tokens{"NAMESTART %", "NAMEPART \x02"}));
}

TEST(Scanner, ABracketedNameIsReadByTheAction) {
  scanfrom(nullptr, "_\2a b\3 7");
  const Token token = scan(Condition::INITIAL);
  EXPECT_EQ(token.rule, Rule::BRACKET_NAME);
  std::string name;
  for (int byte; (byte = input()) != 3;) name += static_cast<char>(byte);
  EXPECT_EQ(name, "a b");
  EXPECT_STREQ(token.text, "_\2") << "the text stays good";
  EXPECT_STREQ(scan(Condition::INITIAL).text, "7");
  scandone();
}

TEST(Scanner, Names) {
  EXPECT_EQ(name("ab1+-*/,<=>[]:@#\xAF\xFF~^v x").tokens[0], "NAMEPART ab1+-*/,<=>[]:@#\xAF\xFF~^v");
  for (const char *delimiter : {"\t", "\n", "\r", " ", "!", ".", ";"})
    EXPECT_EQ(name(std::string("a") + delimiter).tokens[1], "NAMEEND") << delimiter;
  EXPECT_EQ(name(" ").tokens, (Tokens{"NAMEEND"}));
  EXPECT_EQ(name("a\"(|)b "), (Scanned{{"NAMEPART a", "NAMEPART b", "NAMEEND"}, "\"(|)"}));
  EXPECT_EQ(scantext("x(1) "), (Scanned{{"NAMESTART x", "NAMEPART 1", "NAMEEND"}, "()"}));
  EXPECT_EQ(scantext("x(").echo, "(");
  EXPECT_EQ(scantext("x!y "), (Scanned{{"NAMESTART x", "NAMEEND", "NAMESTART !", "NAMEPART y", "NAMEEND"}, ""}));
}

TEST(Scanner, Addresses) {
  EXPECT_EQ(initial("@x "), (Tokens{"ADDRESS @", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("@x!y;"), (Tokens{"ADDRESS @", "NAMESTART x", "NAMEPART !y", "NAMEEND", "CLOSEFUNCTION ;"}));
  EXPECT_EQ(initial("@_x @$y @.z @%l @&2 "),
            (Tokens{"ADDRESS @", "SIGILNAME _x", "ADDRESS @", "SIGILNAME $y", "ADDRESS @", "SIGILNAME .z", "ADDRESS @",
                    "LABEL %l", "ADDRESS @", "LOCAL &2"}));
  EXPECT_EQ(initial("@\x02"), (Tokens{"ADDRESS @", "BRACKETNAME \x02"}));
  // Every keyword can be a name: also those of one byte, and those that are complete as they are.
  EXPECT_EQ(initial("@SIN SET"),
            (Tokens{"ADDRESS @", "NAMESTART S", "NAMEPART IN", "NAMEEND", "NAMESTART S", "NAMEPART ET"}));
  for (const char *word : {"+", "-", "!", "\"", "(", "|", "v", "5", "@", "."})
    EXPECT_EQ(initial("@" + std::string(word) + " "),
              (Tokens{"ADDRESS @", std::string("NAMESTART ") + word, "NAMEEND"}));
  EXPECT_EQ(initial("@vector "), (Tokens{"ADDRESS @", "NAMESTART v", "NAMEPART ector", "NAMEEND"}));
  EXPECT_EQ(scantext("@ \n\tx "), (Scanned{{"ADDRESS @", "NAMESTART x", "NAMEEND"}, " \n\t"}));
}

TEST(Scanner, Vectors) {
  EXPECT_EQ(scantext("(1 -2.5\n\t\r3i4)"),
            (Scanned{{"OPENVECTOR (", "INTEGER 1", "REAL -2.5", "COMPLEX 3i4", "CLOSEVECTOR )"}, ""}));
  EXPECT_EQ(initial("(T F #PI -#PI)"),
            (Tokens{"OPENVECTOR (", "CONSTANT T", "CONSTANT F", "CONSTANT #PI", "CONSTANT -#PI", "CLOSEVECTOR )"}));
  EXPECT_EQ(initial("(1 (2 'a'))"), (Tokens{"OPENVECTOR (", "INTEGER 1", "OPENVECTOR (", "INTEGER 2", "OPENSTRING '",
                                            "CHARACTERS a", "CLOSESTRING '", "CLOSEVECTOR )", "CLOSEVECTOR )"}));
  EXPECT_EQ(initial("`(1 2)`"), (Tokens{"OPENSTRUCTURE `(", "INTEGER 1", "INTEGER 2", "CLOSESTRUCTURE )`"}));
  EXPECT_EQ(initial("`(1)"), (Tokens{"OPENSTRUCTURE `(", "INTEGER 1", "CLOSEVECTOR )"}));
  EXPECT_EQ(initial("(`(1)`)"),
            (Tokens{"OPENVECTOR (", "OPENSTRUCTURE `(", "INTEGER 1", "CLOSESTRUCTURE )`", "CLOSEVECTOR )"}));
  EXPECT_EQ(initial("(0#101 `0#1|1`)"),
            (Tokens{"OPENVECTOR (", "BINARYNUMBER 0#101", "BINARYCHARACTER `0#1|1`", "CLOSEVECTOR )"}));
  EXPECT_EQ(initial("(1)[]"), (Tokens{"OPENVECTOR (", "INTEGER 1", "CLOSETONOOP )[]"}));
  EXPECT_EQ(initial("(1) [] "), (Tokens{"OPENVECTOR (", "INTEGER 1", "CLOSEVECTOR )", "KEYWORD []"}));
  for (const char *close : {")[", ")`[", ")\t["})
    EXPECT_EQ(initial("(1" + std::string(close) + "2]"),
              (Tokens{"OPENVECTOR (", "INTEGER 1", std::string("CLOSETOSHAPE ") + close, "EXTENT 2", "CLOSESHAPE ]"}));
  EXPECT_EQ(initial("(1)\tx "), (Tokens{"OPENVECTOR (", "INTEGER 1", "CLOSEVECTOR )", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("(1)\t"), (Tokens{"OPENVECTOR (", "INTEGER 1", "CLOSEVECTOR )"}));
}

TEST(Scanner, WhatIsNoMemberIsEchoed) {
  EXPECT_EQ(scantext("(1 x+\"2 - -3 \xFF .)"),
            (Scanned{{"OPENVECTOR (", "INTEGER 1", "INTEGER 2", "INTEGER -3", "CLOSEVECTOR )"}, "x+\"-\xFF."}));
  EXPECT_EQ(scantext("(T1 Tx #NIL)"), (Scanned{{"OPENVECTOR (", "INTEGER 1", "CLOSEVECTOR )"}, "TTx#NIL"}));
  EXPECT_EQ(scantext("(ADD)"), (Scanned{{"OPENVECTOR (", "CLOSEVECTOR )"}, "ADD"}));
  EXPECT_EQ(scantext("(`0#2`)"), (Scanned{{"OPENVECTOR (", "INTEGER 0", "INTEGER 2", "CLOSEVECTOR )"}, "`#`"}));
  EXPECT_EQ(scantext("(12abc)"), (Scanned{{"OPENVECTOR (", "INTEGER 12", "CLOSEVECTOR )"}, "abc"}));
  EXPECT_EQ(scantext("(#SIN -#SIN)"),
            (Scanned{{"OPENVECTOR (", "CONSTANT #SIN", "CONSTANT #SIN", "CLOSEVECTOR )"}, "-"}));
}

TEST(Scanner, Shapes) {
  EXPECT_EQ(scantext("3 2\n\t\r-4\xAF"
                     "5]",
                     Condition::SHAPE),
            (Scanned{{"EXTENT 3", "EXTENT 2", "EXTENT -4",
                      "EXTENT \xAF"
                      "5",
                      "CLOSESHAPE ]"},
                     ""}));
  EXPECT_EQ(scantext("3.5x2 - ]", Condition::SHAPE),
            (Scanned{{"EXTENT 3", "EXTENT 5", "EXTENT 2", "CLOSESHAPE ]"}, ".x-"}));
  EXPECT_EQ(scantext("3 2\n]", Condition::SUBSHAPE), (Scanned{{"EXTENT 3", "EXTENT 2", "CLOSESHAPE ]"}, " \n"}));
  EXPECT_EQ(scantext("2E3]", Condition::SHAPE), (Scanned{{"EXTENT 2", "EXTENT 3", "CLOSESHAPE ]"}, "E"}));
}

TEST(Scanner, Strings) {
  EXPECT_EQ(scantext("'hello' "), (Scanned{{"OPENSTRING '", "CHARACTERS hello", "CLOSESTRING '"}, ""}));
  EXPECT_EQ(initial("'' "), (Tokens{"OPENSTRING '", "CLOSESTRING '"}));
  EXPECT_EQ(initial("'''' "), (Tokens{"OPENSTRING '", "QUOTEDQUOTE ''", "CLOSESTRING '"}));
  EXPECT_EQ(initial("'a''[b' "),
            (Tokens{"OPENSTRING '", "CHARACTERS a", "QUOTEDQUOTE ''", "CHARACTERS [b", "CLOSESTRING '"}));
  EXPECT_EQ(scantext("'a\"b\" ' "),
            (Scanned{{"OPENSTRING '", "CHARACTERS a", "CHARACTERS b", "CHARACTERS  ", "CLOSESTRING '"}, "\"\""}));
  EXPECT_EQ(initial("'a\n\t\x01\xFF.' "), (Tokens{"OPENSTRING '", "CHARACTERS a\n\t\x01\xFF.", "CLOSESTRING '"}));
  EXPECT_EQ(initial("'ab'[2]"),
            (Tokens{"OPENSTRING '", "CHARACTERS ab", "STRINGTOSHAPE '[", "EXTENT 2", "CLOSESHAPE ]"}));
  EXPECT_EQ(initial("'ab'\t[2]"),
            (Tokens{"OPENSTRING '", "CHARACTERS ab", "STRINGTOSHAPE '\t[", "EXTENT 2", "CLOSESHAPE ]"}));
  EXPECT_EQ(initial("'ab'\tx "), (Tokens{"OPENSTRING '", "CHARACTERS ab", "CLOSESTRING '", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(initial("'a`0#101`b' "),
            (Tokens{"OPENSTRING '", "CHARACTERS a", "BINARYCHARACTER `0#101`", "CHARACTERS b", "CLOSESTRING '"}));
  EXPECT_EQ(initial("'a`0#12`' "),
            (Tokens{"OPENSTRING '", "CHARACTERS a", "CHARACTERS `0#12", "CHARACTERS `", "CLOSESTRING '"}));
}

TEST(Scanner, Comments) {
  EXPECT_EQ(initial("\"a '(1\n\" 2"),
            (Tokens{"OPENCOMMENT \"", "COMMENTTEXT a '(1\n", "CLOSECOMMENT \"", "INTEGER 2"}));
  EXPECT_EQ(initial("\xBC"
                    "a\" 2"),
            (Tokens{"OPENCOMMENT \xBC", "COMMENTTEXT a", "CLOSECOMMENT \"", "INTEGER 2"}));
  EXPECT_EQ(initial("\"a\xBC 2"), (Tokens{"OPENCOMMENT \"", "COMMENTTEXT a", "CLOSECOMMENT \xBC", "INTEGER 2"}));
  EXPECT_EQ(initial("\"\""), (Tokens{"OPENCOMMENT \"", "CLOSECOMMENT \""}));
}

TEST(Scanner, Masks) {
  EXPECT_EQ(scantext("WRAP \t MASK "), (Scanned{{"KEYWORD WRAP", "KEYWORD MASK"}, ""}));
  EXPECT_EQ(scantext("REFLECT\n STENCIL "), (Scanned{{"KEYWORD REFLECT", "KEYWORD STENCIL"}, "\n"}));
  EXPECT_EQ(initial("WRAP 5"), (Tokens{"KEYWORD WRAP", "UNMASKED", "INTEGER 5"}));
  EXPECT_EQ(initial("WRAP MASKED "), (Tokens{"KEYWORD WRAP", "UNMASKED", "NAMESTART M", "NAMEPART ASKED", "NAMEEND"}));
  EXPECT_EQ(initial("WRAP MASK"), (Tokens{"KEYWORD WRAP", "UNMASKED", "NAMESTART M", "NAMEPART ASK"}));
  EXPECT_EQ(initial("MASK "), (Tokens{"KEYWORD MASK"}));
}

TEST(Scanner, EveryConditionEndsWithTheInput) {
  for (int condition = 0; condition <= static_cast<int>(Condition::ADDRESSNAME); ++condition) {
    EXPECT_EQ(tokensof("", static_cast<Condition>(condition)), Tokens{});
    scanfrom(nullptr, "");
    for (int again = 0; again < 3; ++again)
      EXPECT_EQ(scan(static_cast<Condition>(condition)).rule, Rule::END_OF_INPUT) << "and stays at its end";
    scandone();
    EXPECT_EQ(scan(static_cast<Condition>(condition)).rule, Rule::END_OF_INPUT) << "nothing is read any more";
  }
}

TEST(Scanner, Boundaries) {
  EXPECT_FALSE(isboundary(EOF));
  for (int byte = 0; byte < 256; ++byte) {
    const bool word = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
    EXPECT_EQ(isboundary(byte), byte != 0 && byte != '_' && !word) << byte;
  }
}

TEST(Scanner, LongRunsComeInPieces) {
  const std::size_t length = 1 << 20;
  const std::string run(length, 'n');
  for (const Condition condition : {Condition::NAME, Condition::ADDRESSNAME, Condition::QUOTED, Condition::COMMENT}) {
    std::string whole;
    scanfrom(nullptr, run.c_str());
    for (Token token; (token = scan(condition)).rule != Rule::END_OF_INPUT;) {
      EXPECT_LE(token.length, window::LONGEST_RUN);
      whole.append(token.text, token.length);
    }
    scandone();
    EXPECT_EQ(whole == run, true);
  }
}

TEST(Scanner, ALongNumberIsOneToken) {
  const std::string digits(1 << 20, '7');
  EXPECT_EQ(initial(digits + " 1") == (Tokens{"INTEGER " + digits, "INTEGER 1"}), true);
  EXPECT_EQ(initial("1i" + digits + "j 1") == (Tokens{"COMPLEX 1i" + digits, "NAMESTART j", "NAMEEND", "INTEGER 1"}),
            true);
  // A prefix without a letter after it is a name.
  const Tokens tokens = initial("r" + digits + " ");
  EXPECT_EQ(tokens[0], "NAMESTART r");
  EXPECT_EQ(tokens.back(), "NAMEEND");
}
