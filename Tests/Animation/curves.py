#!/usr/bin/env python3
"""Prints a table of the easing curves, computed here in double precision.

Each line: raw value of the curve, number of frames, source, amount, frame, the
curve's value, and how far from it a single-precision evaluation may be.

The last figure is not chosen but carried along (running error analysis): every
operation passes on the errors of its operands and adds half a unit in the last
place of its own, unless operands and result are exact; the library's power, sine
and cosine add a whole unit, which is what they promise.
"""
import math
import struct

HALF_UNIT = 2.0**-24  # of a single-precision number, relative
SMALLEST = 2.0**-149  # what rounding may cost near zero


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


def is_single(value):
    return math.isnan(value) or abs(value) < 1e38 and single(value) == value


class Rounded:
    """A value, and how far a single-precision computation of it may be off."""

    def __init__(self, value, error=0.0, half_units=1):
        if error > 0 or half_units > 1 or not is_single(value):
            error += half_units * ((abs(value) + error) * HALF_UNIT + SMALLEST)
        self.value = value
        self.error = error

    @staticmethod
    def of(number):
        return number if isinstance(number, Rounded) else Rounded(single(number))

    def __neg__(self):
        result = Rounded(0.0)
        result.value, result.error = -self.value, self.error  # exact
        return result

    def __add__(self, other):
        other = Rounded.of(other)
        return Rounded(self.value + other.value, self.error + other.error)

    def __sub__(self, other):
        return self + -Rounded.of(other)

    def __mul__(self, other):
        other = Rounded.of(other)
        return Rounded(
            self.value * other.value,
            abs(self.value) * other.error + abs(other.value) * self.error
            + self.error * other.error)

    def __truediv__(self, other):
        other = Rounded.of(other)
        value = self.value / other.value
        return Rounded(value, (self.error + abs(value) * other.error)
                       / (abs(other.value) - other.error))

    __radd__ = __add__

    def __rsub__(self, other):
        return Rounded.of(other) - self

    def __rmul__(self, other):
        return Rounded.of(other) * self

    def __lt__(self, other):
        # Decided on the rounded number, as the curve does.
        return single(self.value) < Rounded.of(other).value

    def __eq__(self, other):
        return single(self.value) == Rounded.of(other).value

    def whole(self):
        return int(self.value)


def sqrt(x):
    if x.value < 0:
        return Rounded(math.nan)
    value = math.sqrt(x.value)
    return Rounded(value, max(math.sqrt(x.value + x.error) - value,
                              value - math.sqrt(max(0.0, x.value - x.error))))


def power_of_two(x):
    value = 2.0**x.value
    return Rounded(value, value * (2.0**x.error - 1), half_units=2)


def sin(x):
    return Rounded(math.sin(x.value), x.error, half_units=2)


def cos(x):
    return Rounded(math.cos(x.value), x.error, half_units=2)


PI = Rounded.of(math.pi)
CURVES = {}


def curve(function):
    def evaluate(frame, b, c, frames):
        return function(Rounded.of(frame), Rounded.of(frames), b, c)

    CURVES[function.__name__] = evaluate
    return evaluate


def out_in(family):
    def evaluate(frame, b, c, frames):
        half = c / 2
        if frame < int(frames / 2):
            return CURVES["easeOut" + family](2 * frame, b, half, frames)
        return CURVES["easeIn" + family](2 * frame - frames, b + half, half, frames)

    CURVES["easeOutIn" + family] = evaluate


@curve
def easeNone(t, d, b, c):
    return c * t / d + b


def power_family(name, exponent, out_bias, second_half):
    """The shapes that differ between the polynomial families in two places only."""

    def power(x, n):
        return x if n == 1 else power(x, n - 1) * x

    def ease_in(t, d, b, c):
        return c * power(t / d, exponent) + b

    def ease_in_out(t, d, b, c):
        s = t / (d / 2)
        if s < 1:
            return c / 2 * power(s, exponent) + b
        return second_half(s, b, c, power)

    ease_in.__name__ = "easeIn" + name
    ease_in_out.__name__ = "easeInOut" + name
    curve(ease_in)
    curve(ease_in_out)
    if out_bias:
        def ease_out(t, d, b, c):
            return c * (power(t / d - 1, exponent) + out_bias) + b

        ease_out.__name__ = "easeOut" + name
        curve(ease_out)
    out_in(name)


def rising_half(exponent):
    return lambda s, b, c, power: c / 2 * (power(s - 2, exponent) + 2) + b


power_family("Quad", 2, None,
             lambda s, b, c, power: -c / 2 * ((s - 1) * (s - 1 - 2) - 1) + b)
power_family("Cubic", 3, 1, rising_half(3))
power_family("Quart", 4, 1, rising_half(4))
power_family("Quint", 5, 1, rising_half(5))


@curve
def easeOutQuad(t, d, b, c):
    return b - c * (t / d) * (t / d - 2)


@curve
def easeInSine(t, d, b, c):
    return c - c * cos(t / d * PI / 2) + b


@curve
def easeOutSine(t, d, b, c):
    return c * sin(t / d * PI / 2) + b


@curve
def easeInOutSine(t, d, b, c):
    return b + c / -2 * (cos(PI * t / d) - 1)


@curve
def easeInExpo(t, d, b, c):
    return b if t == 0 else c * power_of_two(10 * (t / d - 1)) + b


@curve
def easeOutExpo(t, d, b, c):
    return b + c if t == d else c * (1 - power_of_two(-10 * t / d)) + b


@curve
def easeInOutExpo(t, d, b, c):
    if t == 0:
        return b
    if t == d:
        return b + c
    s = t / d / 2
    if s < 1:
        return c / 2 * power_of_two(10 * (s - 1)) + b
    return c / 2 * (2 - power_of_two(-10 * (s - 1))) + b


@curve
def easeInCirc(t, d, b, c):
    return b - c * (sqrt(1 - t / d * (t / d)) - 1)


@curve
def easeOutCirc(t, d, b, c):
    v = t / d - 1
    return c * sqrt(1 - v * v) + b


@curve
def easeInOutCirc(t, d, b, c):
    s = t / (d / 2)
    if s < 1:
        return -c / 2 * (sqrt(1 - s * s) - 1) + b
    r = s - 2
    return c / 2 * (sqrt(1 - r * r) + 1) + b


@curve
def easeInElastic(t, d, b, c):
    if t == 0:
        return b
    u = t / d
    if u == 1:
        return b + c
    p = d * 0.3
    v = u - 1
    return -(c * power_of_two(10 * v) * sin((v * d - p / 4) * (2 * PI) / p)) + b


@curve
def easeOutElastic(t, d, b, c):
    if t == 0:
        return b
    u = t / d
    if u == 1:
        return b + c
    p = d * 0.3
    return c * power_of_two(-10 * u) * sin((u * d - p / 4) * (2 * PI) / p) + c + b


@curve
def easeInOutElastic(t, d, b, c):
    if t == 0:
        return b
    s = t / (d / 2)
    if s == 2:
        return b + c
    p = d * 0.45000002
    v = s - 1
    wave = sin((v * d - p / 4) * 2 * PI / p)
    if s < 1:
        return -0.5 * (c * power_of_two(10 * v) * wave) + b
    return c * power_of_two(-10 * v) * wave * 0.5 + c + b


@curve
def easeInBack(t, d, b, c):
    u = t / d
    return c * u * u * (2.70158 * u - 1.70158) + b


@curve
def easeOutBack(t, d, b, c):
    v = t / d - 1
    return c * (v * v * (2.70158 * v + 1.70158) + 1) + b


@curve
def easeInOutBack(t, d, b, c):
    s = t / (d / 2)
    if s < 1:
        return c / 2 * (s * s * (3.5949094 * s - 2.5949094)) + b
    r = s - 2
    return c / 2 * (r * r * (3.5949094 * r + 2.5949094) + 2) + b


@curve
def easeOutBounce(t, d, b, c):
    u = t / d
    if u < 1 / 2.75:
        return c * (7.5625 * u * u) + b
    for end, offset, height in ((2, 1.5, 0.75), (2.5, 2.25, 0.9375), (9, 2.625, 0.984375)):
        if u < end / 2.75 or end == 9:
            r = u - offset / 2.75
            return c * (7.5625 * r * r + height) + b


@curve
def easeInBounce(t, d, b, c):
    rest = (d - t).whole()
    return c - CURVES["easeOutBounce"](rest, Rounded(0.0), c, d.whole()) + b


@curve
def easeInOutBounce(t, d, b, c):
    none = Rounded(0.0)
    if t < d / 2:
        return CURVES["easeInBounce"]((t * 2).whole(), none, c, d.whole()) * 0.5 + b
    return CURVES["easeOutBounce"]((t * 2 - d).whole(), none, c, d.whole()) * 0.5 + c * 0.5 + b


for family in ("Sine", "Expo", "Circ", "Elastic", "Back", "Bounce"):
    out_in(family)

FAMILIES = ("Quad", "Cubic", "Quart", "Quint", "Sine", "Expo", "Circ", "Elastic", "Back",
            "Bounce")
NAMES = (["easeNone"]
         + [way + family for family in FAMILIES
            for way in ("easeIn", "easeOut", "easeInOut", "easeOutIn")]
         + ["easeNone"])
LENGTHS = (1, 2, 3, 4, 5, 7, 11, 24, 60, 101)
RUNS = ((0, 1), (10, -4), (-0.5, 1000.25))
OUTSIDE = 3  # frames before the first and after the last

for raw, name in enumerate(NAMES):
    for frames in LENGTHS:
        for source, amount in RUNS:
            for frame in range(-OUTSIDE, frames + OUTSIDE + 1):
                result = CURVES[name](frame, Rounded.of(source), Rounded.of(amount), frames)
                print(raw, frames, source, amount, frame, result.value.hex(), result.error.hex())
