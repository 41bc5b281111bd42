#!/usr/bin/env python3
"""Writes tests/unit/data/elementary.inc: exponential and natural logarithm, correctly rounded from 60 digits.

Needs mpmath. Run it without arguments; the same table comes out each time.
"""
import os
import random

import mpmath

mpmath.mp.dps = 60
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
TARGET = os.path.join(ROOT, "tests", "unit", "data", "elementary.inc")


def exact(x):
    return mpmath.mpf(float(x))


def real_arguments(rng):
    exponential = [0.0, 1.0, -1.0, 0.5, 1e-300, -1e-17, 1e-8, 709.7, -708.0, 710 * 0.99, 2.0**-30]
    exponential += [rng.uniform(-700, 700) for _ in range(40)] + [rng.uniform(-1, 1) for _ in range(20)]
    logarithm = [1.0, 2.0, 10.0, 2.0**-1022, 5e-324, 1.7976931348623157e308, 1 + 2.0**-52, 1 - 2.0**-53, 0.999, 1.001]
    logarithm += [2.0 ** rng.uniform(-1000, 1000) for _ in range(40)] + [rng.uniform(0.5, 2) for _ in range(20)]
    return exponential, logarithm


def complex_arguments(rng):
    """Imaginary parts that are more than nothing beside 1, and angles whose sine and cosine are."""
    exponential = [(rng.uniform(-300, 300), rng.uniform(-20, 20)) for _ in range(40)]
    exponential += [(rng.uniform(-1, 1), rng.uniform(-1e6, 1e6)) for _ in range(20)]
    exponential += [(1e-3, 1e-9), (-740.0, 1.0), (710.0, 0.785), (710.0, -2.356), (0.0, 1.0), (-0.5, -3.0)]
    logarithm = [(rng.uniform(-10, 10), rng.uniform(-10, 10)) for _ in range(40)]
    logarithm += [(10.0 ** rng.uniform(-150, 150), 10.0 ** rng.uniform(-9, 150)) for _ in range(20)]
    logarithm += [(3e200, 4e200), (1e308, 1e308), (1.0, 1e-9), (1 + 1e-12, 1e-10), (0.6, 0.8), (0.6, -0.8), (0.0, 1.0)]
    logarithm += [(1e-200, 1e-12), (-1.0, 1e-3), (0.8, 0.6000000001), (-3.0, -1e-9)]
    return exponential, logarithm


def cell(x):
    return float(x).hex()


def rows(name, arguments, function):
    lines = []
    for argument in arguments:
        parts = argument if isinstance(argument, tuple) else (argument,)
        z = mpmath.mpc(*map(exact, parts)) if len(parts) == 2 else exact(parts[0])
        value = function(z)
        result = (value.real, value.imag) if len(parts) == 2 else (value,)
        lines.append(f"{name}({', '.join(cell(x) for x in (*parts, *result))})")
    return lines


def main():
    rng = random.Random(20)
    real_exponential, real_logarithm = real_arguments(rng)
    complex_exponential, complex_logarithm = complex_arguments(rng)
    lines = ["// Made by tools/reference/elementary.py: arguments, then correctly rounded results."]
    lines += rows("REAL_EXPONENTIAL", real_exponential, mpmath.exp)
    lines += rows("REAL_LOGARITHM", real_logarithm, mpmath.log)
    lines += rows("COMPLEX_EXPONENTIAL", complex_exponential, mpmath.exp)
    lines += rows("COMPLEX_LOGARITHM", complex_logarithm, mpmath.log)
    with open(TARGET, "w", encoding="ascii") as table:
        table.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
