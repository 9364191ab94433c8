#!/usr/bin/env python3
"""Computes the polynomials of src/kriging/CorrelationVectorMath.h.

For each function: interpolation at the Chebyshev nodes of its interval in 60-digit arithmetic,
conversion to powers, rounding to double, and then the largest error found on a fine grid, with the
rounded coefficients evaluated exactly. Run without arguments; the output is the C++ tables.
"""
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 60
PI = Decimal("3.14159265358979323846264338327950288419716939937510582097494459")


def cosine(x):
    """cos(x) by its series, for |x| <= pi."""
    term, total, k = Decimal(1), Decimal(1), 0
    while abs(term) > Decimal(10) ** -58:
        k += 2
        term *= -x * x / ((k - 1) * k)
        total += term
    return total


def series(z, ratio):
    """Sum of terms whose quotient is z * ratio(k), starting from 1."""
    term, total, k = Decimal(1), Decimal(1), 0
    while abs(term) > Decimal(10) ** -55 or k < 4:
        k += 1
        term *= z * ratio(k)
        total += term
    return total


def exp_tail(r):
    """(exp(r) - 1 - r) / r^2."""
    return series(r, lambda k: Decimal(1) / (k + 2)) / 2


def sinc(z):
    """sin(x) / x as a function of z = x^2."""
    return series(z, lambda k: Decimal(-1) / ((2 * k) * (2 * k + 1)))


def bessel(z):
    """J0(x) as a function of z = x^2."""
    return series(z, lambda k: Decimal(-1) / (4 * k * k))


def interpolate(f, low, high, degree):
    """Powers of (z - centre), lowest first, of the interpolant at the Chebyshev nodes."""
    n = degree + 1
    centre, half = (low + high) / 2, (high - low) / 2
    angles = [PI * (2 * i + 1) / (2 * n) for i in range(n)]
    values = [f(centre + half * cosine(a)) for a in angles]
    # Chebyshev coefficients, then powers of the unit variable by the recurrence.
    table = []
    for j in range(n):
        def cos_multiple(a):
            x = (j * a) % (2 * PI)
            return cosine(x if x <= PI else 2 * PI - x)
        table.append(2 * sum(v * cos_multiple(a) for v, a in zip(values, angles)) / n)
    table[0] /= 2
    powers = [Decimal(0)] * n
    previous, current = [Decimal(1)], [Decimal(0), Decimal(1)]
    for j, c in enumerate(table):
        t = previous if j == 0 else current
        for i, v in enumerate(t):
            powers[i] += c * v
        if j >= 1:
            following = [Decimal(0)] + [2 * v for v in current]
            for i, v in enumerate(previous):
                following[i] -= v
            previous, current = current, following
    return [c / half ** i for i, c in enumerate(powers)], centre, half


def report(name, f, low, high, degree, centred):
    coefficients, centre, half = interpolate(f, low, high, degree)
    if not centred:
        assert centre == 0
    middle = Decimal(float(centre))
    if centred and middle != centre:  # expand around a centre that is a double
        coefficients, centre, half = interpolate(
            f, middle - half, middle + half, degree)
    rounded = [float(c) for c in coefficients]
    error = Fraction(0)
    steps = 400
    for i in range(steps + 1):
        w = Decimal(float(-half + 2 * half * i / steps))
        exact = Fraction(f(middle + w))
        total, power = Fraction(0), Fraction(1)
        for c in rounded:
            total += Fraction(c) * power
            power *= Fraction(w)
        error = max(error, abs(total - exact))
    growth = sum(abs(c) * float(half) ** i for i, c in enumerate(rounded))
    print(f"// {name}: centre {float(middle)!r}, half width {float(half):.6g},")
    print(f"// largest error {float(error):.2e}, sum of |terms| {growth:.3g}")
    for c in rounded:
        print(f"    {c!r},")


if __name__ == "__main__":
    ln2_half = Decimal(2).ln() / 2
    report("exp_tail", exp_tail, -ln2_half, ln2_half, 9, False)
    cut = Decimal("4.71238898038469")
    report("sinc", sinc, Decimal(0), cut * cut, 14, True)
    cut = Decimal("3.8317")
    report("bessel", bessel, Decimal(0), cut * cut, 13, True)
