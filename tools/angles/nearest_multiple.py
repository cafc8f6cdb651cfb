#!/usr/bin/env python3
"""How near a double from 1/2 on comes to a multiple of pi/2, in units of pi/2: the least distance over all doubles.

For each exponent e the question is how near m 2^e (2/pi) comes to an integer for m below 2^53. Continued fractions give the
answer: the convergents of 2^e (2/pi) are its best approximations. The bits of 2/pi are those of core/angles/tables.inl.

usage: nearest_multiple.py TABLES [BITS]     ends with 1 where the distance is below 2^-BITS
"""
import math
import re
import sys

text = open(sys.argv[1]).read()
stored = re.search(r"two_over_pi_bits\[[^]]*\] = \{0,([^}]*)\}", text).group(1)
words = [int(w, 16) for w in re.findall(r"0x([0-9a-f]{16})u", stored)]
bits = 64 * len(words)
two_over_pi = sum(w << (bits - 64 * (k + 1)) for k, w in enumerate(words))

least, where = 1.0, None
for e in range(-53, 972):
    # 2^e (2/pi) modulo 1 as a fraction with 400 bits: enough for denominators of 53.
    shift = bits - 400 - e
    fraction = (two_over_pi >> shift if shift >= 0 else two_over_pi << -shift) % (1 << 400)
    a, b = fraction, 1 << 400  # the remainders of Euclid's algorithm for fraction : 1
    q0, q1 = 0, 1  # the denominators of the convergents
    while a != 0:
        quotient, rest = divmod(b, a)
        distance = a / (1 << 400)
        if distance < least and math.ldexp(q1, e) >= 0.5:
            least, where = distance, (q1, e)
        q0, q1 = q1, q0 + quotient * q1
        if q1 >= 1 << 53:
            break
        a, b = rest, a
print(f"{where[0]} * 2^{where[1]} lies {least:.4g} = 2^{math.log2(least):.2f} beside a multiple of pi/2, in units of pi/2")
if len(sys.argv) > 2 and least < 2.0 ** -int(sys.argv[2]):
    sys.exit(f"nearer than 2^-{sys.argv[2]}")
