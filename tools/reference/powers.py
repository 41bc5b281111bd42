#!/usr/bin/env python3
"""Writes tests/unit/data/powers.inc: powers, logarithms, circular functions, factorials, gamma and binomial coefficients,
correctly rounded from 60 digits.

Needs mpmath. Run it without arguments; the same table comes out each time.
"""
import os
import random

import mpmath as mp

mp.mp.dps = 60
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
TARGET = os.path.join(ROOT, "tests", "unit", "data", "powers.inc")

P = "-0.7567002385928 11.2029121505218 5.2381653641874 -62.7275543027149 1089.094443338165 3132.869061049572 232.6453044878145"
Q = ("1 -10.3125739380508 14.3853048828456 201.4965441739693 -629.3447351061687 -1421.6453534644902 4597.142440656356 "
     "7194.088849193596")
FACTORIAL_OF_HALF = "0.886226925452758"


# ---- Reals: (name, arguments, value).

def reals(rng):
    for _ in range(60):
        base, exponent = 2.0 ** rng.uniform(-30, 30), rng.uniform(-30, 30)
        yield "POWER", (base, exponent), mp.power(base, exponent)
    for base, exponent in ((2.0, 0.5), (1e300, 0.5), (-3.0, 5.0), (-1.5, -7.0), (1 + 2.0**-52, 1e15), (1e-300, -1.0)):
        yield "POWER", (base, exponent), mp.power(base, exponent)
    for base in (-27.0, 5.0, -1e-300, 1e300):
        yield "POWER", (base, 1.0 / 3), mp.sign(base) * mp.cbrt(abs(mp.mpf(base)))
    for _ in range(40):
        x, base = 2.0 ** rng.uniform(-1000, 1000), 2.0 ** rng.uniform(-20, 20)
        yield "LOGARITHM", (x, base), mp.log(x) / mp.log(base)
    for x, base in ((1 + 2.0**-52, 10.0), (5e-324, 2.0), (1e308, 1 + 2.0**-40), (0.999, 1.001)):
        yield "LOGARITHM", (x, base), mp.log(x) / mp.log(base)
    for _ in range(20):
        x = rng.uniform(-300, 300)
        yield "POW2", (x,), mp.power(2, x)
        yield "POW10", (x,), mp.power(10, x)
        yield "POWE", (x,), mp.exp(x)
        x = 2.0 ** rng.uniform(-1000, 1000)
        yield "LD", (x,), mp.log(x, 2)
        yield "LOG10", (x,), mp.log10(x)
    for number, (function, domain) in CIRCULAR.items():
        for x in [rng.uniform(*domain) for _ in range(20)] + [d * (1 - 2.0**-30) for d in domain]:
            yield "CIRCULAR", (x, number), function(mp.mpf(x))


def root(x):
    return mp.sqrt(x)


CIRCULAR = {
    0: (lambda x: root(1 - x * x), (-1, 1)),
    1: (mp.sin, (-100, 100)),
    2: (mp.cos, (-100, 100)),
    3: (mp.tan, (-100, 100)),
    4: (lambda x: root(1 + x * x), (-1e3, 1e3)),
    5: (mp.sinh, (-50, 50)),
    6: (mp.cosh, (-50, 50)),
    7: (mp.tanh, (-5, 5)),
    -1: (mp.asin, (-1, 1)),
    -2: (mp.acos, (-1, 1)),
    -3: (mp.atan, (-50, 50)),
    -4: (lambda x: root(x * x - 1), (1.0000001, 50)),
    -5: (mp.asinh, (-50, 50)),
    -6: (mp.acosh, (1.0000001, 50)),
    -7: (mp.atanh, (-1, 1)),
}


# ---- Complex numbers, away from cuts, poles and axes: (name, parts of the arguments, value).

def complexes(rng):
    def draw(size):
        return complex(rng.uniform(-size, size), rng.uniform(-size, size))

    for _ in range(60):
        base, exponent = draw(10), draw(5)
        yield "POWER", (base.real, base.imag, exponent.real, exponent.imag), mp.power(mp.mpc(base), mp.mpc(exponent))
    for _ in range(20):
        base, exponent = draw(1e6), rng.uniform(-8, 8)
        yield "POWER", (base.real, base.imag, exponent, 0.0), mp.power(mp.mpc(base), mp.mpf(exponent))
    for _ in range(40):
        x, base = draw(100), draw(100)
        yield "LOGARITHM", (x.real, x.imag, base.real, base.imag), mp.log(mp.mpc(x)) / mp.log(mp.mpc(base))
    for number, (function, _) in CIRCULAR.items():
        for _ in range(20):
            z = draw(3)
            yield "CIRCULAR", (z.real, z.imag, float(number)), function(mp.mpc(z))


# ---- Factorials by the formula that is described, and as they are.

def horner(text, x):
    total = mp.mpf(0)
    for coefficient in text.split():
        total = total * x + mp.mpf(float(coefficient))
    return total


def factor(x):
    x = mp.mpf(x)
    if x in (0, 1):
        return mp.mpf(1)
    if x < 0:
        p, v = mp.mpf(1), x
        while v < 0:
            v += 1
            p *= v
        u, f = v, 1 / p
    else:
        f, u = x, x - 1
        while u > 1:
            f *= u
            u -= 1
        if u == 1:
            return f
    w = u - mp.mpf("0.5")
    return (w * horner(P, w) / horner(Q, w) + mp.mpf(float(FACTORIAL_OF_HALF))) * f


def factors(rng):
    arguments = [float(n) for n in range(0, 171, 10)] + [n + 0.5 for n in range(-30, 30)]
    arguments += [rng.uniform(-20, 20) for _ in range(60)] + [rng.uniform(0, 1) for _ in range(20)]
    for x in arguments:
        yield "FACTOR", (x,), (factor(x), mp.gamma(mp.mpf(x) + 1))


def binomials(rng):
    for _ in range(40):
        n = rng.randrange(-40, 60)
        k = rng.randrange(0, 40)
        value = mp.mpf(1)
        for i in range(k):
            value = value * (n - i) / (i + 1)
        yield "BINOM", (float(k), float(n)), value
    for _ in range(40):
        k, n = rng.uniform(-5, 20), rng.uniform(-5, 40)
        yield "BINOM", (k, n), factor(n) / (factor(k) * factor(mp.mpf(n - k)))


def gammas(rng):
    for _ in range(120):
        z = mp.mpc(rng.uniform(-30, 60), rng.choice((-1, 1)) * 10 ** rng.uniform(-6, 1.8))
        z = mp.mpc(float(z.real), float(z.imag))
        yield "GAMMA", (z.real, z.imag), mp.gamma(z)
        yield "LOGGAMMA", (z.real, z.imag), mp.loggamma(z)


def cell(x):
    return float(x).hex()


def line(name, arguments, value):
    if isinstance(value, mp.mpc):
        value = (value.real, value.imag)
    elif not isinstance(value, tuple):
        value = (value,)
    counts = f"{len(arguments)}, {len(value)}"
    return f'{{"{name}", {counts}, {{{", ".join(map(cell, arguments))}}}, {{{", ".join(map(cell, value))}}}}},'


def main():
    rng = random.Random(21)
    lines = ["// Made by tools/reference/powers.py: how many arguments and results, then these, the results correctly rounded; of a",
             "// factorial, the formula's and the true one."]
    for table in (reals, complexes, factors, binomials, gammas):
        lines += [line(*row) for row in table(rng)]
    with open(TARGET, "w", encoding="ascii") as table:
        table.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
