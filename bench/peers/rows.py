"""The rows of the table of peers: what each does in Morvik and in other languages, what it must answer, and its goal.

In a programme <n> is how often the work is done, and <size> how much there is of it. What a programme does before its work is
taken off by a run of it with n = 1, so that only the work must grow with n.
"""
import dataclasses
import pathlib
import re
import typing

LIBRARIES = pathlib.Path(__file__).resolve().parents[2] / "lib"
NANOSECONDS, MILLISECONDS, SECONDS = ("ns", 1e-9), ("ms", 1e-3), ("s", 1.0)
MEGABYTES = "MB"


@dataclasses.dataclass
class Row:
    title: str
    answer: typing.Callable  # n, size: what every programme prints
    programmes: dict  # language: text
    unit: tuple = NANOSECONDS
    each: typing.Callable = lambda size: 1  # how many of what is counted are in one of n
    goal: object = None  # a number in the unit, the name of a peer, or a word
    then: object = None  # what comes after that goal
    size: int = 1
    tiny: int = 1  # the size that is enough for the answer
    least: int = 2  # n, which is raised where the work takes too little time
    runs: int = 15
    files: typing.Callable = lambda n, size: {}  # name: bytes, what the programmes find in their folder
    memory: object = None  # the goal of the row that follows with the peak of memory, in MB; "" for a row without one


def living(rounds, size):
    """How many cells of Life live after so many rounds. A board is one number, a bit for each cell, with an empty bit behind
    each row and an empty row at each end."""
    stride = size + 1
    inside = sum(((1 << size) - 1) << (row * stride) for row in range(1, size + 1))
    lives = (divmod(i - 1, size) for i in range(1, size * size + 1) if i * i % 65521 % 5 < 2)
    board = sum(1 << ((row + 1) * stride + column) for row, column in lives)
    for _ in range(rounds):
        ones = twos = fours = 0
        for shift in (1, stride - 1, stride, stride + 1):
            for neighbour in (board << shift, board >> shift):
                carry, ones = ones & neighbour, ones ^ neighbour
                fours, twos = fours | (twos & carry), twos ^ carry
        board = (ones | board) & twos & ~fours & inside
    return board.bit_count()


SENTENCE = "The quick brown fox jumps over the lazy dog, and a hundred more\n"


def prose(size):
    return (SENTENCE * (size // len(SENTENCE) + 1))[:size].encode()


def words(size):
    """How many there are in it. Not by a list of them: a child takes over this process's peak of memory."""
    return str(sum(1 for _ in re.finditer(rb"\S+", prose(size))))


def real(value):
    return "%.10g" % value


# In C++: the bare loop over records as they lie in storage. The compiler is not to see that its result is dropped.
RECORDS = """
#include <cstdio>
#include <cstdlib>
%s
struct Record { int tag; short form, marks; const void *name; Number value; %s };
static_assert(sizeof(Record) == 40);
static Record *make(Number value) {
  Record *made = static_cast<Record *>(malloc(<size> * sizeof(Record)));
  for (int i = 0; i < <size>; ++i) made[i] = {2, 0, 0, nullptr, value};
  return made;
}
static Record *work(const Record *x, const Record *y) {
  Record *z = static_cast<Record *>(malloc(<size> * sizeof(Record)));
  for (int i = 0; i < <size>; ++i) {
    z[i].tag = x[i].tag, z[i].form = 1, z[i].marks = 0, z[i].name = nullptr;
    z[i].value = x[i].value %s y[i].value;
  }
  asm volatile("" : : "r"(z) : "memory");
  return z;
}
"""
# The same over octonions, each in a block of its own, as the doubled product of quaternions.
OCTONIONS = """
#include <cstdio>
#include <cstdlib>
#include <new>
struct Quaternion { double a, b, c, d; };
static Quaternion operator+(Quaternion x, Quaternion y) { return {x.a + y.a, x.b + y.b, x.c + y.c, x.d + y.d}; }
static Quaternion operator-(Quaternion x, Quaternion y) { return {x.a - y.a, x.b - y.b, x.c - y.c, x.d - y.d}; }
static Quaternion operator*(Quaternion x, Quaternion y) {
  return {x.a * y.a - x.b * y.b - x.c * y.c - x.d * y.d, x.a * y.b + x.b * y.a + x.c * y.d - x.d * y.c,
          x.a * y.c - x.b * y.d + x.c * y.a + x.d * y.b, x.a * y.d + x.b * y.c - x.c * y.b + x.d * y.a};
}
static Quaternion mirrored(Quaternion x) { return {x.a, -x.b, -x.c, -x.d}; }
struct Octonion { Quaternion x, y; };
struct Record { int tag; short form, marks; const void *name; Octonion *value; double rest[2]; };
static Record *make(double one = 0, double l = 0) {
  Record *made = static_cast<Record *>(malloc(<size> * sizeof(Record)));
  for (int i = 0; i < <size>; ++i)
    made[i] = {2, 0, 0, nullptr, new (malloc(sizeof(Octonion))) Octonion{{one, 0, 0, 0}, {l, 0, 0, 0}}, {}};
  return made;
}
static void drop(Record *made) {
  for (int i = 0; i < <size>; ++i) free(made[i].value);
  free(made);
}
static void multiply(Record &z, const Record &x, const Record &y) {
  const Octonion l = *x.value, r = *y.value;
  *z.value = {l.x * r.x - mirrored(r.y) * l.y, r.y * l.x + l.y * mirrored(r.x)};
}
static void tell(const Record *made) {
  double one = 0, l = 0;
  for (int i = 0; i < <size>; ++i) one += made[i].value->x.a, l += made[i].value->y.a;
  printf("%.0fi0j0k0l%.0f", one, l);
}
"""


def shortadd(size, goal, then):
    return Row(
        "`x y +` of %d real%s, into a new value" % (size, "s" * (size > 1)),
        lambda n, size: real(3.75 * size),
        {"Morvik": "1.5 <size> RESHAPE @x SET 2.25 <size> RESHAPE @y SET <n> : x y + DISCARD ; REPEAT x y + SUM .",
         "C++": RECORDS % ("using Number = double;", "double rest[2];", "+") + """
int main() {
  const Record *x = make(1.5), *y = make(2.25);
  for (long i = 0; i < <n>; ++i) free(work(x, y));
  double sum = 0;
  const Record *z = work(x, y);
  for (int i = 0; i < <size>; ++i) sum += z[i].value;
  printf("%.10g", sum);
}
""",
         "CPython": """
def f():
    x, y = [1.5] * <size>, [2.25] * <size>
    for i in range(<n>): [a + b for a, b in zip(x, y)]
    return sum([a + b for a, b in zip(x, y)])
print("%.10g" % f())
""",
         "NumPy": """
import numpy
def f():
    x, y = numpy.full(<size>, 1.5), numpy.full(<size>, 2.25)
    for i in range(<n>): x + y
    return (x + y).sum()
print("%.10g" % f())
"""}, goal=goal, then=then, size=size, tiny=size)


def mention(title, size, goal):
    return Row(
        title,
        lambda n, size: str(size),
        {"Morvik": "<size> .. MONADIC DUP , ; EACH @a SET <n> : a DISCARD ; REPEAT a SHAPE FIRST .",
         "CPython": """
a = [[i, i] for i in range(<size>)]
def f():
    for i in range(<n>): a
f()
print(len(a))
"""}, goal=goal, size=size, tiny=3)


TWONAMES = "3 @a SET 4 @b SET 0 @c SET <n> : a b + @c SET ; REPEAT c ."

ROWS = [
    Row("`a b + @c SET` and its round; the peers' names are global too",
        lambda n, size: "7",
        {"Morvik": TWONAMES,
         "CPython": "a, b = 3, 4\nfor i in range(<n>): c = a + b\nprint(c)",
         "Lua": "a, b = 3, 4 for i = 1, <n> do c = a + b end print(c)",
         "gforth": "variable a 3 a ! variable b 4 b ! variable c : f <n> 0 do a @ b @ + c ! loop ; f c @ ."},
        goal="CPython", then=4.5),
    Row("the same; the peers' names are local",
        lambda n, size: "7",
        {"Morvik": TWONAMES,
         "CPython": "def f():\n    a, b = 3, 4\n    for i in range(<n>): c = a + b\n    return c\nprint(f())",
         "Lua": "local a, b, c = 3, 4 for i = 1, <n> do c = a + b end print(c)",
         "gforth": ": f 3 4 0 { a b c } <n> 0 do a b + to c loop c ; f ."},
        goal="CPython", then=4.5),
    Row("the numbers from 1 on summed by `LOOP`, a round",
        lambda n, size: str(n * (n + 1) // 2),
        {"Morvik": "0 <n> DYADIC + ; LOOP .",
         "CPython": "def f():\n    s = 0\n    for i in range(1, <n> + 1): s += i\n    return s\nprint(f())",
         "Lua": "local s = 0 for i = 1, <n> do s = s + i end print(s)",
         "gforth": ": f 0 <n> 1+ 1 do i + loop ; f ."},
        goal="Lua"),
    Row("Fibonacci of 24, by calls",
        lambda n, size: str(n * {24: 46368, 5: 5}[size]),
        {"Morvik": "MONADIC DUP 2 < CHECK RETURN ?Y DUP 1 - f ! SWAP 2 - f ! + ; @f SET 0 <n> : <size> f ! + ; REPEAT .",
         "CPython": """
def f(n): return n if n < 2 else f(n - 1) + f(n - 2)
s = 0
for i in range(<n>): s += f(<size>)
print(s)
""",
         "Lua": """
local function f(n) if n < 2 then return n end return f(n - 1) + f(n - 2) end
local s = 0 for i = 1, <n> do s = s + f(<size>) end print(s)
""",
         "gforth": """
: f dup 2 < if exit then dup 1- recurse swap 2 - recurse + ;
: go 0 <n> 0 do <size> f + loop ; go .
"""}, unit=MILLISECONDS, goal="CPython", then="Lua", size=24, tiny=5),
    Row("a function of one argument, called",
        lambda n, size: str(n),
        {"Morvik": "MONADIC 1 + ; @inc SET 0 <n> : inc ! ; REPEAT .",
         "CPython": """
def inc(x): return x + 1
def f():
    s = 0
    for i in range(<n>): s = inc(s)
    return s
print(f())
""",
         "Lua": "local function inc(x) return x + 1 end local s = 0 for i = 1, <n> do s = inc(s) end print(s)",
         "gforth": ": inc 1+ ; : f 0 <n> 0 do inc loop ; f ."},
        goal="Lua"),
    Row("a function over 10^5 elements by `EACH`, an element",
        lambda n, size: str(size * (size + 3) // 2),
        {"Morvik": "<size> .. @v SET MONADIC 1 + ; @inc SET <n> : v @inc GET EACH @w SET ; REPEAT w SUM .",
         "CPython": """
v = list(range(1, <size> + 1))
inc = lambda x: x + 1
for i in range(<n>): w = list(map(inc, v))
print(sum(w))
""",
         "Lua": """
local v, w, s = {}, {}, 0 for i = 1, <size> do v[i] = i end
local function inc(x) return x + 1 end
for n = 1, <n> do w = {} for i = 1, <size> do w[i] = inc(v[i]) end end
for i = 1, <size> do s = s + w[i] end print(s)
"""}, each=lambda size: size, goal=18, then=11.9, size=100000, tiny=10),
    shortadd(1, 37, 20),
    shortadd(10, 43, 24),
    shortadd(100, 75, None),
    Row("`x y *` of 100 complex numbers, into a new value",
        lambda n, size: "%di%d" % (5 * size, 5 * size),
        {"Morvik": "1i2 <size> RESHAPE @x SET 3i-1 <size> RESHAPE @y SET <n> : x y * DISCARD ; REPEAT x y * SUM .",
         "C++": RECORDS % ("""
struct Number { double re, im; };
static Number operator*(Number a, Number b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
""", "double rest;", "*") + """
int main() {
  const Record *x = make({1, 2}), *y = make({3, -1});
  for (long i = 0; i < <n>; ++i) free(work(x, y));
  double re = 0, im = 0;
  const Record *z = work(x, y);
  for (int i = 0; i < <size>; ++i) re += z[i].value.re, im += z[i].value.im;
  printf("%.0fi%.0f", re, im);
}
""",
         "CPython": """
def f():
    x, y = [1 + 2j] * <size>, [3 - 1j] * <size>
    for i in range(<n>): [a * b for a, b in zip(x, y)]
    return sum([a * b for a, b in zip(x, y)])
print("%di%d" % (f().real, f().imag))
""",
         "NumPy": """
import numpy
def f():
    x, y = numpy.full(<size>, 1 + 2j), numpy.full(<size>, 3 - 1j)
    for i in range(<n>): x * y
    return (x * y).sum()
print("%di%d" % (f().real, f().imag))
"""}, goal=100, size=100, tiny=10),
    Row("`o o *` of 10^4 octonions, into new blocks, an octonion",
        lambda n, size: "0i0j0k0l%d" % (2 * size),
        {"Morvik": "1l1 <size> RESHAPE @o SET <n> : o o * DISCARD ; REPEAT o o * SUM .",
         "C++": OCTONIONS + """
static Record *work(const Record *x, const Record *y) {
  Record *z = make();
  for (int i = 0; i < <size>; ++i) multiply(z[i], x[i], y[i]);
  return z;
}
int main() {
  const Record *o = make(1, 1);
  for (long i = 0; i < <n>; ++i) drop(work(o, o));
  tell(work(o, o));
}
"""},
        each=lambda size: size, goal=20, size=10000, tiny=10),
    Row("the same, `o p *` over its own blocks",
        lambda n, size: "0i0j0k0l%d" % size,
        {"Morvik": "0l1 <size> RESHAPE @p SET p <n> : p * p * p * p * ; REPEAT SUM .",
         "C++": OCTONIONS + """
int main() {
  Record *const o = make(0, 1), *const p = make(0, 1);
  for (long n = 0; n < 4 * <n>; ++n)
    for (int i = 0; i < <size>; ++i) multiply(o[i], o[i], p[i]);
  tell(o);
}
"""},
        each=lambda size: 4 * size, goal=11, size=10000, tiny=10),
    mention("a name that holds 10^2 nested members, mentioned", 100, "CPython"),
    mention("a name that holds 10^5 nested members, mentioned", 100000, "constant"),
    Row("10^5 numbers appended, `a 1 , @a SET`, a number",
        lambda n, size: str(size),
        {"Morvik": ": #NIL @a SET <size> : a 1 , @a SET ; REPEAT ; @fill SET <n> : fill ! ; REPEAT a SUM .",
         "CPython": """
def fill():
    a = []
    for i in range(<size>): a.append(1)
    return a
for i in range(<n>): a = fill()
print(sum(a))
""",
         "Lua": """
local a, s for n = 1, <n> do a = {} for i = 1, <size> do a[#a + 1] = 1 end end
s = 0 for i = 1, #a do s = s + a[i] end print(s)
"""}, each=lambda size: size, goal="constant", size=100000, tiny=10),
    Row("10^5 numbers summed from the front by `FIRST` and `REST`, a number",
        lambda n, size: str(size * (size + 1) // 2),
        {"Morvik": """
<size> .. 0 , @all SET : all @a SET 0 @s SET <size> : a FIRST s + @s SET a REST @a SET ; REPEAT ; @sum SET
<n> : sum ! ; REPEAT s .
""",
         "CPython": """
from collections import deque
def f(all):
    a, s = deque(all), 0
    for i in range(<size>): s += a.popleft()
    return s
all = list(range(1, <size> + 1)) + [0]
for i in range(<n>): s = f(all)
print(s)
""",
         "Lua": """
local all, s = {}, 0 for i = 1, <size> do all[i] = i end
for n = 1, <n> do
  local a, first = table.move(all, 1, #all, 1, {}), 1
  s = 0
  for i = 1, <size> do s = s + a[first] a[first] = nil first = first + 1 end
end
print(s)
"""}, each=lambda size: size, goal="constant", size=100000, tiny=10),
    Row("Life by `MASK`, 512 by 512 cells, 100 rounds",
        lambda n, size: str(living(n, size)),
        {"Morvik": """
<size> DUP * .. DUP * 65521 MOD 5 MOD 2 < 1 * (<size> <size>) RESHAPE @board SET
(1 1 1 1 10 1 1 1 1)[3 3] @weights SET
: board weights MONADIC RAVEL SUM ; MASK @sum SET sum 3 = sum 12 = OR sum 13 = OR 1 * @board SET ; @step SET
<n> : step ! ; REPEAT board RAVEL SUM .
""",
         "CPython": """
size = <size>
def lives(i): return int(i * i % 65521 % 5 < 2)
board = [[0] * (size + 2) for _ in range(size + 2)]
for y in range(size):
    for x in range(size): board[y + 1][x + 1] = lives(y * size + x + 1)
def step(board):
    new = [[0] * (size + 2)]
    for y in range(1, size + 1):
        columns = [a + b + c for a, b, c in zip(board[y - 1], board[y], board[y + 1])]
        around = zip(columns, columns[1:], columns[2:], board[y][1:])
        new.append([0, *[1 if a + b + c == 3 or cell and a + b + c == 4 else 0 for a, b, c, cell in around], 0])
    new.append([0] * (size + 2))
    return new
for i in range(<n>): board = step(board)
print(sum(map(sum, board)))
""",
         "NumPy": """
import numpy
size = <size>
i = numpy.arange(1, size * size + 1)
board = numpy.zeros((size + 2, size + 2), numpy.uint8)
board[1:-1, 1:-1] = (i * i % 65521 % 5 < 2).reshape(size, size)
for n in range(<n>):
    rows = board[:-2] + board[1:-1] + board[2:]
    sums = rows[:, :-2] + rows[:, 1:-1] + rows[:, 2:]
    board[1:-1, 1:-1] = (sums == 3) | ((sums == 4) & (board[1:-1, 1:-1] == 1))
print(board.sum())
""",
         "Lua": """
local size, board = <size>, {}
for y = 0, size + 1 do board[y] = {} for x = 0, size + 1 do board[y][x] = 0 end end
for y = 1, size do for x = 1, size do
  local i = (y - 1) * size + x
  if i * i % 65521 % 5 < 2 then board[y][x] = 1 end
end end
for n = 1, <n> do
  local new = {[0] = board[0], [size + 1] = board[size + 1]}
  for y = 1, size do
    local above, here, below, row = board[y - 1], board[y], board[y + 1], {[0] = 0, [size + 1] = 0}
    local left, middle = 0, above[1] + here[1] + below[1]
    for x = 1, size do
      local right = above[x + 1] + here[x + 1] + below[x + 1]
      local s = left + middle + right
      row[x] = (s == 3 or s == 4 and here[x] == 1) and 1 or 0
      left, middle = middle, right
    end
    new[y] = row
  end
  board = new
end
local s = 0 for y = 1, size do for x = 1, size do s = s + board[y][x] end end
print(s)
"""}, unit=SECONDS, each=lambda size: 0.01, goal=3.7, then=0.5, size=512, tiny=12, least=100, runs=3),
    Row("the words of a text of 10 MB counted, by where one begins",
        lambda n, size: words(n * size),
        {"Morvik": """
'prose' TEXTREAD ' ' > 8192 @width SET DUP SHAPE FIRST @size SET size width / CEILING @rows SET
0 rows width * size - RESHAPE , width rows , RESHAPE @inside SET rows .. @all SET 0 @last SET 0 @n SET
rows MONADIC
  all = inside COMPRESSLASTAXIS RAVEL @row SET
  last row , row 0 , < SUM n + @n SET row REVERSE FIRST @last SET
FUNCTIONEND LOOP n .
""",
         "CPython": "print(len(open('prose').read().split()))",
         "Lua": "local n = 0 for word in io.open('prose'):read('a'):gmatch('%S+') do n = n + 1 end print(n)"},
        unit=SECONDS, each=lambda size: 0.01, goal=0.2, memory=500, size=100000, tiny=200, least=100, runs=3,
        files=lambda n, size: {"prose": prose(n * size)}),
    Row("the words of a text of 10 MB, `text:words`",
        lambda n, size: words(n * size),
        {"Morvik": "'arrays.morvik' READ 'text.morvik' READ 'prose' TEXTREAD text:words @words SET words SHAPE FIRST .",
         "CPython": "words = open('prose').read().split()\nprint(len(words))",
         "Lua": """
local words = {} for word in io.open('prose'):read('a'):gmatch('%S+') do words[#words + 1] = word end
print(#words)
"""},
        unit=SECONDS, each=lambda size: 0.01, memory="", size=100000, tiny=200, least=100, runs=3,
        files=lambda n, size: {"prose": prose(n * size)}),
    Row("a text of 10^5 pieces, each appended, `t 'abc' , @t SET`, a piece",
        lambda n, size: str(3 * size),
        {"Morvik": ": '' @t SET <size> : t 'abc' , @t SET ; REPEAT ; @fill SET <n> : fill ! ; REPEAT t SHAPE .",
         "CPython": """
def fill():
    t = ''
    for i in range(<size>): t += 'abc'
    return t
for i in range(<n>): t = fill()
print(len(t))
""",
         "Lua": """
local t
for n = 1, <n> do
  local pieces = {} for i = 1, <size> do pieces[i] = 'abc' end
  t = table.concat(pieces)
end
print(#t)
"""}, each=lambda size: size, goal="CPython", size=100000, tiny=10),
    Row("10^5 texts made by `EACH`, and joined by `ENLIST`",
        lambda n, size: str(sum(i % 7 + 1 for i in range(1, size + 1))),
        {"Morvik": """
<size> .. @x SET 0 @all SET
<n> : x MONADIC 7 MOD 1 + 'abcdefg' SWAP RESHAPE ; EACH ENLIST @all SET ; REPEAT all SHAPE .
""",
         "CPython": """
for i in range(<n>): all = ''.join(['abcdefg'[:j % 7 + 1] for j in range(1, <size> + 1)])
print(len(all))
""",
         "Lua": """
local all
for n = 1, <n> do
  local texts = {}
  for i = 1, <size> do texts[i] = ('abcdefg'):sub(1, i % 7 + 1) end
  all = table.concat(texts)
end
print(#all)
"""}, unit=MILLISECONDS, goal="CPython", size=100000, tiny=10),
    Row("10^5 texts joined and cut again, `text:join`, `text:split`",
        lambda n, size: "%d %d" % (sum(i % 7 + 1 for i in range(1, size + 1)) + size - 1, size),
        {"Morvik": """
'arrays.morvik' READ 'text.morvik' READ
<size> .. MONADIC 7 MOD 1 + 'abcdefg' SWAP RESHAPE ; EACH @texts SET
<n> : texts ',' text:join @all SET all ',' text:split @pieces SET ; REPEAT all SHAPE pieces SHAPE , .
""",
         "CPython": """
texts = ['abcdefg'[:i % 7 + 1] for i in range(1, <size> + 1)]
for i in range(<n>):
    all = ','.join(texts)
    pieces = all.split(',')
print(len(all), len(pieces))
""",
         "Lua": """
local texts, all, pieces = {}
for i = 1, <size> do texts[i] = ('abcdefg'):sub(1, i % 7 + 1) end
for n = 1, <n> do
  all, pieces = table.concat(texts, ','), {}
  for piece in all:gmatch('[^,]+') do pieces[#pieces + 1] = piece end
end
print(#all .. ' ' .. #pieces)
"""}, unit=MILLISECONDS, goal="CPython", size=100000, tiny=10),
]
