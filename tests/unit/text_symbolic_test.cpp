// The printer on symbolic Points and functions, what others call of it, and Points by their fields.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "failures.h"
#include "points.h"
#include "text/flags.h"
#include "text/printer.h"
#include "text/text.h"

using namespace morvik;

namespace {

using namespace points;

// ---- Symbolic Points.

TEST(TextSymbolic, Variables) {
  using namespace instructions;
  EXPECT_EQ(source(variable("x", SGIG, ISVARIABLE | ISOPERATOR)), "\nx");
  EXPECT_EQ(source(variable("x", SAIG)), "\n _x");
  EXPECT_EQ(source(variable("x", SAIL)), "\n $x");
  EXPECT_EQ(source(variable("x", SLIL)), "\n .x");
  EXPECT_EQ(display(variable("x", SGIG, ISVARIABLE | ISOPERATOR)), " . GLOBAL VARIABLE:\tx");
  EXPECT_EQ(display(variable("x", SGIG)), " . VARIABLE:\tx");
  EXPECT_EQ(display(variable("x", SAIG)), " . SAIG VARIABLE:\t_x");
  EXPECT_EQ(display(variable("x", SAIL)), " . SAIL VARIABLE:\t$x");
  EXPECT_EQ(display(variable("x", SLIL)), " . LOCAL VARIABLE:\t.x");
}

TEST(TextSymbolic, AnIndentMakesSource) {
  Point p = variable("x", instructions::SAIL);
  EXPECT_EQ(print(p, false, 2), "\n       $x");
  drop(p);
}

TEST(TextSymbolic, Addresses) {
  using namespace instructions;
  const auto address = [](std::uint16_t scope, std::uint32_t type) { return symbol(ranks::ADDRESS, type, "x", scope); };
  EXPECT_EQ(source(address(SGIG, ISADDRESS | ISOPERATOR)), " @x");
  EXPECT_EQ(source(address(SAIG, ISADDRESS)), " @_x");
  EXPECT_EQ(source(address(SAIL, ISADDRESS)), " @$x");
  EXPECT_EQ(source(address(SLIL, ISADDRESS)), " @.x");
  EXPECT_EQ(display(address(SGIG, ISADDRESS | ISOPERATOR)), " . GLOBAL ADDRESS:\tx");
  EXPECT_EQ(display(address(SGIG, ISADDRESS)), " . ADDRESS:\tx");
  EXPECT_EQ(display(address(SAIG, ISADDRESS)), " . SAIG ADDRESS:\t_x");
  EXPECT_EQ(display(address(SAIL, ISADDRESS)), " . SAIL ADDRESS:\t$x");
  EXPECT_EQ(display(address(SLIL, ISADDRESS)), " . LOCAL ADDRESS:\t.x");
}

TEST(TextSymbolic, NamesThatOnlyBracketsHold) {
  using namespace instructions;
  EXPECT_EQ(source(variable("two words", SGIG)), "\n\2two words\3");
  EXPECT_EQ(source(variable("a.b", SGIG)), "\n\2a.b\3");
  EXPECT_EQ(source(variable("vector", SGIG)), "\n\2vector\3");
  EXPECT_EQ(source(variable("a+b", SGIG)), "\na+b");
  EXPECT_EQ(source(variable("+", SGIG)), "\n+");
  EXPECT_EQ(source(variable("..", SGIG)), "\n..");
  EXPECT_EQ(source(variable("Infx", SGIG)), "\n\2Infx\3");  // numbers need no boundary
  EXPECT_EQ(source(variable("nano", SGIG)), "\n\2nano\3");
  EXPECT_EQ(source(variable("In", SGIG)), "\nIn");
  EXPECT_EQ(source(variable("two words", SAIG)), "\n _\2two words\3");
  EXPECT_EQ(source(symbol(ranks::ADDRESS, 4, "a;b", SGIG)), " @\2a;b\3");
  EXPECT_EQ(source(symbol(ranks::ADDRESS, 4, "vector", SGIG)), " @vector");
  EXPECT_EQ(source(symbol(ranks::ADDRESS, 4, "!", SGIG)), " @!");
}

TEST(TextSymbolic, LabelsAndLocals) {
  EXPECT_EQ(source(symbol(ranks::LABEL, 4, "%here")), "\n @%here");
  EXPECT_EQ(display(symbol(ranks::LABEL, 4, "%here")), " . LABEL:\t\t%here");
  EXPECT_EQ(source(local(ranks::LOCAL_VARIABLE, 0)), " &1");
  EXPECT_EQ(display(local(ranks::LOCAL_VARIABLE, 1)), " . STACK VARIABLE:\t&2");
  EXPECT_EQ(source(local(ranks::LOCAL_ADDRESS, 2)), " @&3");
  EXPECT_EQ(display(local(ranks::LOCAL_ADDRESS, 2)), " . STACK ADDRESS:\t&3");
}

TEST(TextSymbolic, APlaceOnTheStackHasNoText) {
  Point slot{}, p{};
  p.rank = ranks::ADDRESS;
  p.type = ISADDRESS | ISLOCAL;
  p.elements = 1;
  p.target = &slot;
  EXPECT_EQ(print(p, true), "");
  EXPECT_EQ(print(p, false), " . ADDRESS:\t");
}

TEST(TextSymbolic, UnusedAndEmpty) {
  EXPECT_EQ(display(symbol(ranks::UNUSED, 0, nullptr)), " . Unused name!\n");
  EXPECT_EQ(display(symbol(ranks::INVALID, 0, nullptr)), " . Unused symbol!\n");
  EXPECT_EQ(source(symbol(ranks::UNUSED, 0, nullptr)), "");
  Point p = symbol(ranks::ADDRESS, ISEMPTY, nullptr);
  EXPECT_EQ(print(p, false), ".\n");
  EXPECT_EQ(print(p, true), "#NIL\n");
  EXPECT_EQ(print(p, false, 1), "   #NIL\n");
}

TEST(TextOperators, NamesAndNumbers) {
  EXPECT_EQ(source(operation(instructions::ADD, "+")), " +");
  EXPECT_EQ(display(operation(instructions::ADD, "+")), " . OPERATOR:\t\t+");
  EXPECT_EQ(source(operation(instructions::ADD, nullptr)), " ADD");
  EXPECT_EQ(display(operation(instructions::CATENATE, nullptr)), " . OPERATOR:\t\tCATENATE");
  EXPECT_EQ(source(operation(instructions::POWER, "")), " ");
}

TEST(TextOperators, AFormShowsPeopleWhatItReduces) {
  EXPECT_EQ(source(operation(instructions::REDUCE, "+ //", instructions::ADD)), " + //");
  EXPECT_EQ(display(operation(instructions::REDUCE, "+ //", instructions::ADD)), " . OPERATOR:\t\tADD");
  for (const std::uint16_t form : {191, 193, 194, 195, 196, 197, 198, 199, 200, 201})
    EXPECT_EQ(display(operation(form, "x", instructions::MULTIPLY)), " . OPERATOR:\t\tMULTIPLY") << form;
  EXPECT_EQ(display(operation(instructions::INNERPRODUCT, "x", instructions::ADD)), " . OPERATOR:\t\tx");
  EXPECT_EQ(display(operation(instructions::COMPRESS, "x", instructions::ADD)), " . OPERATOR:\t\tx");
}

TEST(TextOperators, SpecialEnds) {
  EXPECT_EQ(display(operation(instructions::PRINT, "PRINT", instructions::PRINT)), " . OPERATOR:\t\tPRINT\n");
  EXPECT_EQ(source(operation(instructions::PRINT, "PRINT", instructions::PRINT)), " PRINT");
  Point check = operation(instructions::CHECK, "CHECK"), jump = operation(instructions::JUMP, "JUMP");
  EXPECT_EQ(print(check, true), " CHECK\n");
  EXPECT_EQ(print(jump, true, 2), " JUMP\n      ");
  EXPECT_EQ(print(jump, false), " . OPERATOR:\t\tJUMP");
  drop(check);
  drop(jump);
}

TEST(TextOperators, CommentsAndLabels) {
  using namespace instructions;
  EXPECT_EQ(source(operation(NOOP, "a note", CONTEXT)), " \"a note\"\n");
  EXPECT_EQ(display(operation(NOOP, "a note", CONTEXT)), " . COMMENT:\t\ta note");
  EXPECT_EQ(source(operation(NOOP, "NOOP")), " NOOP");
  Point label = operation(NOOP, "%here");
  EXPECT_EQ(print(label, true, 1), "\n    %here");
  EXPECT_EQ(print(label, false), " . LOCAL LABEL:\t%here");
  drop(label);
}

TEST(TextOperators, Decisions) {
  using namespace instructions;
  Point p = operation(IF_YES, "+ // ?Y", REDUCE);
  p.elements = ADD;
  EXPECT_EQ(print(p, true), " + // ?Y");
  EXPECT_EQ(print(p, false), " . OPERATOR:\t\t+ // ?Y");
  drop(p);
  p = operation(IF_NO, nullptr, REDUCE);
  p.elements = ADD;
  EXPECT_EQ(print(p, true), " ADD REDUCE");
  EXPECT_EQ(print(p, false), " . OPERATOR:\t\t ADD REDUCE");
  p.elements = 0;
  EXPECT_EQ(print(p, true), " REDUCE");
  drop(p);
  EXPECT_EQ(source(operation(IF_NO, "?N", BARE)), " ?N");
  p = operation(IF_YES, "so be it ?Y", NOOP);
  p.elements = CONTEXT;
  EXPECT_EQ(print(p, true), " \"so be it\" ?Y");
  drop(p);
}

// ---- Functions.

TEST(TextFunctions, HeadsByArguments) {
  EXPECT_EQ(source(function({})), "\n : ;\n");
  EXPECT_EQ(source(function({}, -1, 0, "NEADIC")), "\n NEADIC ;\n");
  EXPECT_EQ(source(function({}, 0)), "\n NILADIC\n    ;\n");
  EXPECT_EQ(source(function({}, 1)), "\n MONADIC\n    ;\n");
  EXPECT_EQ(source(function({}, 2)), "\n DYADIC\n    ;\n");
  EXPECT_EQ(source(function({}, 3)), "\n TRIADIC\n    ;\n");
  EXPECT_EQ(source(function({}, 4)), "\n ARGS 4 FUNCTION\n    ;\n");
  EXPECT_EQ(source(function({}, 2, 3)), "\n VARS 3 DYADIC\n    ;\n");
  EXPECT_EQ(source(function({}, 12, 300)), "\n VARS 300 ARGS 12 FUNCTION\n    ;\n");
}

TEST(TextFunctions, DisplayIsSourceToo) {
  EXPECT_EQ(display(function({scalar(real(0.1)), operation(instructions::ADD, "+")})),
            "\n : 0.10000000000000001 + ;\n");
}

TEST(TextFunctions, Bodies) {
  using namespace instructions;
  EXPECT_EQ(source(function({scalar(whole(1)), operation(ADD, "+"), variable("x", SGIG), operation(EXECUTE, "!")})),
            "\n : 1 +\n   x ! ;\n");
  EXPECT_EQ(source(function({operation(CHECK, "CHECK"), scalar(whole(1)), operation(NOOP, "done", CONTEXT)}, 1)),
            "\n MONADIC\n    CHECK\n    1 \"done\"\n ;\n");
}

TEST(TextFunctions, NestedFunctionsAreIndented) {
  EXPECT_EQ(source(function({function({scalar(whole(1)), variable("x", instructions::SAIL)}, 2)})),
            "\n :\n    DYADIC\n       1\n       $x ;\n    ;\n");
}

TEST(TextFunctions, OperatorFunctions) {
  EXPECT_EQ(source(function({}, -1, 0, nullptr, ISFUNCTION | ISOPERATOR)), "\n : ; OPERATOR\n");
}

TEST(TextFunctions, ConditionalPointsBearTheirMark) {
  using namespace instructions;
  Point yes = scalar(whole(1)), no = variable("x", SAIG);
  yes.type |= CONDITIONAL | YES;
  no.type |= CONDITIONAL;
  Point bare = operation(IF_YES, "?Y", BARE);
  bare.type = ISFUNCTION | CONDITIONAL | YES;
  EXPECT_EQ(source(function({yes, no, function({}), bare})), "\n : 1 ?Y\n    _x ?N\n    : ;\n    ?Y ;\n");
}

TEST(TextFunctions, AValueOnTheStackBearsNone) {
  Point p = scalar(whole(1));
  p.type |= CONDITIONAL | YES;
  EXPECT_EQ(source(p), " 1");
}

TEST(TextFunctions, ALiteralWithAnEmptyBracketIsOneAgain) {
  Point literal = numbers({1, 2}), nil = empty();
  literal.type |= INOUT;
  nil.type |= INOUT;
  EXPECT_EQ(
      source(function({literal, operation(instructions::NOOP, ")[]"), nil, operation(instructions::NOOP, ")[]")})),
      "\n : ( 1 2 )[] ()[] ;\n");
}

TEST(TextFunctions, ATextThatEndedTheFunctionDoesNotEndTheNext) {
  Point p = function({scalar(whole(1))});
  release(p.programme[2].name);
  p.programme[2].name = stringdup(".");
  EXPECT_EQ(source(p), "\n : 1 ;\n");
}

// ---- What others call of the printer.

TEST(TextOutput, PrefixAndPrintOut) {
  Point p = scalar(whole(3));
  EXPECT_EQ(written([&](std::FILE *stream) { disass(stream, "\n\n", &p, 0, 0); }), "\n\n 3");
  printing = 1;
  EXPECT_EQ(written([&](std::FILE *stream) { dump(stream, "title\n", &p); }), "title\n 3");
  EXPECT_EQ(printing, 0);
  drop(p);
}

TEST(TextOutput, Dumpstack) {
  Point stack[] = {{}, scalar(whole(1)), text("two"), scalar(real(3.5))};
  EXPECT_EQ(written([&](std::FILE *stream) { dumpstack(stream, stack + 1, stack + 3); }), " 1\n 'two'\n 3.5\n.\n");
  EXPECT_EQ(written([&](std::FILE *stream) { dumpstack(stream, stack + 1, stack); }), ".\n");
  for (int i = 1; i < 4; ++i) drop(stack[i]);
}

// A stream that notes an interrupt with the first bytes that it is given.
struct Noting {
  std::string bytes;
};
ssize_t note(void *cookie, const char *bytes, std::size_t length) {
  static_cast<Noting *>(cookie)->bytes.append(bytes, length);
  interrupted = SIGINT;
  return static_cast<ssize_t>(length);
}

TEST(TextOutput, AnInterruptCutsALongPrintShort) {
  Point p = vector(Elements(50000, whole(7)));
  const std::string full = print(p, false);
  Noting noting;
  std::FILE *stream = fopencookie(&noting, "w", {nullptr, note, nullptr, nullptr});
  std::setvbuf(stream, nullptr, _IONBF, 0);
  testing::internal::CaptureStdout();
  EXPECT_NE(failures::landingof([&] { dump(stream, "", &p); }), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n\n** User interrupt. **\n");
  std::fclose(stream);
  printing = pendingproblem = 0;
  interrupted = 0;
  // What was printed up to the safe point has left the buffer, all of it.
  EXPECT_LT(noting.bytes.size(), full.size());
  EXPECT_EQ(noting.bytes, full.substr(0, noting.bytes.size()));
  EXPECT_EQ((full.size() / 2 + noting.bytes.size() / 2) % SLOW_POLL_INTERVAL, 0u);
  EXPECT_EQ(print(p, false), full);  // and nothing is left of it
  drop(p);
}

template <typename Body>
std::string output(Body body) {
  testing::internal::CaptureStdout();
  body();
  return testing::internal::GetCapturedStdout();
}

TEST(TextFlags, NamesInBitOrderAndOperatorLast) {
  EXPECT_EQ(output([] { writeflags(0); }), " END");
  EXPECT_EQ(output([] { writeflags(ISSCALAR | HASINTEGER); }), " HASINTEGER ISSCALAR");
  EXPECT_EQ(output([] { detail_type("flags:", ISVARIABLE | ISOPERATOR); }), " flags: ISVARIABLE ISOPERATOR");
  EXPECT_EQ(output([] { writeflags(ISOPERATOR | CONDITIONAL | YES | GLOBALCHANGE); }),
            " CONDITIONAL YES GLOBALCHANGE ISOPERATOR");
  EXPECT_EQ(output([] { writeflags(CONDITIONAL | GLOBAL); }), " CONDITIONAL NO GLOBAL");
  EXPECT_EQ(output([] { writeflags(0x0C000000); }), "");
  EXPECT_EQ(output([] { writeflags(~0u); }),
            " ISVARIABLE ISLOCAL ISADDRESS ISFUNCTION INOUT COMPLEXED STRUCTURED HASASCII HASUNICODE HASINTEGER "
            "HASREAL HASCOMPLEX HASQUATERNION HASOCTONION HASFUNCTION ISSCALAR ISONEELEMENT ISVECTOR ISARRAY "
            "ISSTRUCTURE ISEMPTY HASFILE ISPROBABLE SAMERANK LEFTSCALAR CONDITIONAL YES GLOBAL GLOBALCHANGE "
            "ISOPERATOR");
}

TEST(TextFlags, PointsWhole) {
  const auto whole_ = [](Point p) {
    const std::string text = output([&] { writefields(&p); });
    drop(p);
    return text;
  };
  EXPECT_EQ(whole_(scalar(whole(1))),
            " HASINTEGER ISSCALAR SCALAR depth 0, elements 1  shape: [ ] refr(data_pointer) 1, refr(shape_pointer) "
            "-777\n");
  EXPECT_EQ(whole_(numbers({1, 2, 3, 4}, {2, 2})),
            " HASINTEGER ISARRAY rank 2 depth 1, elements 4  shape: [ 2 2 ] refr(data_pointer) 1, "
            "refr(shape_pointer) 1\n");
  EXPECT_EQ(whole_(empty()),
            " ISVECTOR ISEMPTY ARRAY depth 1, elements 0  shape: [ 0 ] refr(data_pointer) -777, refr(shape_pointer) "
            "1\n");
  EXPECT_EQ(whole_(function({}, 2, 3, "VARS 3 DYADIC")),
            " ISFUNCTION FUNCTION arguments 2, locals 3, elements 2 VARS 3 DYADIC refr(data_pointer) 1, "
            "refr(shape_pointer) 1\n");
}

TEST(TextTimes, MinutesSecondsAndFractions) {
  EXPECT_EQ(output([] { writetime(0); }), "\tät = 00.00 000mS 000uS\n");
  EXPECT_EQ(output([] { writetime(61.234567); }), "\tät = 01.01 234mS 567uS\n");
  EXPECT_EQ(output([] { writetime(7200.5); }), "\tät = 120.00 500mS 000uS\n");
  EXPECT_EQ(output([] { writetime(-1); }), "\tät = 00.00 000mS 000uS\n");
  EXPECT_EQ(output([] { writetime(std::nan("")); }), "\tät = 00.00 000mS 000uS\n");
}

TEST(TextInstructions, Lengths) {
  initinstrlens();
  for (int i = 0; i < instructions::NAMELESS; ++i)
    EXPECT_EQ(Instructionlengths[i], std::strlen(Instructions[i]) + 1) << i;
}

}  // namespace
