"""Elementary functions to 60 decimal digits, and their correctly rounded binary values.

The tables must be the same bits wherever they are generated, so nothing here goes through the C library.
"""

from decimal import Decimal, getcontext
from fractions import Fraction
import math
import struct

getcontext().prec = 60


def _pi():
    # Machin: pi = 16 arctan(1/5) - 4 arctan(1/239).
    def arctan_of_inverse(n):
        x = Decimal(1) / n
        square, power, total, k = x * x, x, Decimal(0), 0
        while abs(power) > Decimal(10) ** -58:
            total += power / (2 * k + 1) * (-1) ** k
            power *= square
            k += 1
        return total

    return 16 * arctan_of_inverse(5) - 4 * arctan_of_inverse(239)


PI = _pi()


def sin(x):
    """Sine of a Decimal of moderate size, by its power series."""
    term, total, k = x, Decimal(0), 1
    while abs(term) > Decimal(10) ** -58:
        total += term
        term *= -x * x / ((k + 1) * (k + 2))
        k += 2
    return total


def cos(x):
    return sin(x + PI / 2)


def power_of_two(numerator, denominator):
    """2 ** (numerator / denominator)."""
    return Decimal(2) ** (Decimal(numerator) / Decimal(denominator))


def four_thirds_power(n):
    """n ** (4/3)."""
    return Decimal(n) ** (Decimal(4) / Decimal(3)) if n else Decimal(0)


def as_double(x):
    """C++ literal of the double nearest to x."""
    return float(x).hex()


def as_float(x):
    """C++ literal of the single nearest to x, rounded once."""
    exact = Fraction(x)
    guess = struct.unpack('<f', struct.pack('<f', float(x)))[0]
    bits = struct.unpack('<i', struct.pack('<f', abs(guess)))[0]
    near = [struct.unpack('<f', struct.pack('<i', b))[0] for b in (max(bits - 1, 0), bits, bits + 1)]
    best = min((math.copysign(v, guess) for v in near), key=lambda v: abs(Fraction(v) - exact))
    return best.hex() + 'f'
