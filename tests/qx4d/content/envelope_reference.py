#!/usr/bin/env python3
"""Reference values for EnvelopeTest.cpp, computed from the written rules of the envelope
curve with Python doubles, rounding each named intermediate to a 32-bit float. Run it to
print the expected values that the tests hold."""
import math
import struct


def f(x):
    """Round to the nearest 32-bit float."""
    return struct.unpack('<f', struct.pack('<f', x))[0]


TCB, HERMITE, NONE, LINEAR, STEPPED, BEZIER = range(6)


class Key:
    def __init__(self, value, time, shape, *params):
        self.value, self.time, self.shape = f(value), f(time), shape
        self.params = [f(p) for p in params] + [0.0] * (6 - len(params))


def out_tangent(keys, a, b):
    ka, kb = keys[a], keys[b]
    p = keys[a - 1] if a > 0 else None
    d = f(kb.value - ka.value)
    ratio = f((kb.time - ka.time) / (kb.time - p.time)) if p else 0.0
    T, C, B = ka.params[:3]
    if ka.shape == TCB:
        if p:
            return f(((ka.value - p.value) * (1 - T) * (1 + C) * (1 + B) + (1 - T) * (1 - C) * (1 - B) * d) * ratio)
        return f((1 - T) * (1 - C) * (1 - B) * d)
    if ka.shape == HERMITE:
        return f(ka.params[1] * ratio) if p else ka.params[1]
    if ka.shape == LINEAR:
        return f((ka.value - p.value + d) * ratio) if p else d
    if ka.shape == BEZIER:
        span = kb.time - ka.time
        if abs(ka.params[2]) <= f(1e-5):
            return f(span * ka.params[3] * 100000.0)
        return f(span * ka.params[3] / ka.params[2])
    return 0.0


def in_tangent(keys, a, b):
    ka, kb = keys[a], keys[b]
    n = keys[b + 1] if b + 1 < len(keys) else None
    d = f(kb.value - ka.value)
    ratio = f((kb.time - ka.time) / (n.time - ka.time)) if n else 0.0
    T, C, B = kb.params[:3]
    if kb.shape == TCB:
        if n:
            return f(((n.value - kb.value) * (1 - T) * (1 + C) * (1 - B) + (1 - T) * (1 - C) * (1 + B) * d) * ratio)
        return f((1 - T) * (1 - C) * (1 + B) * d)
    if kb.shape == HERMITE:
        return f(kb.params[0] * ratio) if n else kb.params[0]
    if kb.shape == LINEAR:
        return f((n.value - kb.time + d) * ratio) if n else d
    if kb.shape == BEZIER:
        span = kb.time - ka.time
        if abs(kb.params[0]) <= f(1e-5):
            return f(span * kb.params[1] * 100000.0)
        return f(span * kb.params[1] / kb.params[0])
    return 0.0


def cubic(p0, p1, p2, p3, u):
    c = f(3 * (p1 - p0))
    b = f(3 * (p2 - p1) - c)
    a = f(p3 - p0 - c - b)
    return f(a * u * u * u + b * u * u + c * u + p0)


def bezier(keys, a, b, t):
    ka, kb = keys[a], keys[b]
    x0 = ka.time
    x1 = f(ka.time + ka.params[2]) if ka.shape == BEZIER else f(ka.time + (kb.time - ka.time) / 3)
    x2, x3 = f(kb.time + kb.params[0]), kb.time
    lo, hi = 0.0, 1.0
    while True:
        mid = f(lo + (hi - lo) * 0.5)
        x = cubic(x0, x1, x2, x3, mid)
        if abs(t - x) <= f(1e-4):
            u = mid
            break
        if t < x:
            hi = mid
        else:
            lo = mid
    y0 = ka.value
    y1 = f(ka.value + ka.params[3]) if ka.shape == BEZIER else f(ka.value + ka.params[1] / 3)
    y2, y3 = f(kb.value + kb.params[1]), kb.value
    return cubic(y0, y1, y2, y3, u)


def wrap(keys, t):
    first, last = keys[0].time, keys[-1].time
    span = f(last - first)
    w = f(t - math.floor((t - first) / span) * span)
    c = f(round((t - w) / span))  # Python's round: ties to even
    return w, c


def segment(keys, t):
    i = 1
    while keys[i].time < t:
        i += 1
    ka, kb = keys[i - 1], keys[i]
    if kb.shape in (TCB, HERMITE):
        u = f((t - ka.time) / (kb.time - ka.time))
        h2 = f(3 * u * u - 2 * u * u * u)
        h1 = f(1 - h2)
        h4 = f(u * u * u - u * u)
        h3 = f(h4 - u * u + u)
        return h1 * ka.value + h2 * kb.value + h3 * out_tangent(keys, i - 1, i) + h4 * in_tangent(keys, i - 1, i)
    if kb.shape == LINEAR:
        u = f((t - ka.time) / (kb.time - ka.time))
        return ka.value + (kb.value - ka.value) * u
    if kb.shape == STEPPED:
        return ka.value
    if kb.shape == BEZIER:
        return bezier(keys, i - 1, i, t)
    return 0.0


def behave(keys, behavior, before, t, out):
    """Returns (done, t, out)."""
    first, last = keys[0], keys[-1]
    end = first if before else last
    if behavior == 0:
        return True, t, out
    if behavior == 1:
        return True, t, f(out + end.value)
    if behavior in (2, 3, 4):
        t, c = wrap(keys, t)
        if behavior == 3 and c % 2 != 0:
            t = f(first.time + last.time - t)
        if behavior == 4:
            out = f(out + c * (last.value - first.value))
        return False, t, out
    if behavior == 5:
        n = len(keys)
        if before:
            slope = f(out_tangent(keys, 0, 1) / (keys[1].time - keys[0].time))
            return True, t, f(out + first.value + (t - first.time) * slope)
        slope = f(in_tangent(keys, n - 2, n - 1) / (last.time - keys[n - 2].time))
        return True, t, f(out + last.value + (t - last.time) * slope)
    return False, t, out


def evaluate(keys, t, pre=1, post=1, modifiers=()):
    t = f(t)
    s = 0.0
    for m in modifiers:
        s = f(s + m(t))
    if len(keys) < 2:
        return f(s + keys[0].value) if keys else s
    out = s
    if not t > keys[0].time:
        done, t, out = behave(keys, pre, True, t, out)
        if done:
            return out
    elif not t < keys[-1].time:
        done, t, out = behave(keys, post, False, t, out)
        if done:
            return out
    t = min(t, keys[-1].time)
    return f(out + segment(keys, t))


def oscillator(frequency, amplitude, phase, damping, offset, start, end):
    frequency, amplitude, phase, damping, offset, start, end = map(
        f, (frequency, amplitude, phase, damping, offset, start, end))

    def apply(t):
        if t < start or t > end:
            return 0.0
        x = f((t - start) * frequency)
        wave = f(math.sin(x * 6.2831854820251465 + phase) * amplitude)
        if damping > 0:
            wave = f(wave * (1 - damping) ** x)
        elif damping < 0:
            wave = f(wave * (1 / (damping + 1)) ** x)
        return f(offset + wave)
    return apply


CASES = {
    'tcb': ([Key(0, 0, TCB), Key(10, 1, TCB, 0.5, 0, 0), Key(4, 3, TCB, 0, -0.5, 0.3), Key(8, 4, TCB, -0.2, 0.4, -0.6)],
            [0.25, 0.5, 1.5, 2.0, 2.75, 3.5]),
    'hermite': ([Key(0, 0, HERMITE, 1, 2), Key(5, 2, HERMITE, 3, -1), Key(2, 5, HERMITE, 0.5, 0.5)],
                [0.5, 1.0, 3.0, 4.5]),
    'linear': ([Key(1, 0, LINEAR), Key(3, 2, LINEAR), Key(-1, 4, LINEAR)], [0.5, 1.0, 3.0, 3.9]),
    'bezier': ([Key(0, 0, BEZIER, -0.3, 0, 0.5, 2), Key(10, 2, BEZIER, -0.5, -1, 0.4, 0), Key(4, 3, BEZIER, -0.25, 3, 0, 0)],
               [0.1, 0.7, 1.3, 1.9, 2.5]),
    'bezier_after_tcb': ([Key(0, 0, TCB, 0, 3, 0), Key(6, 3, BEZIER, -1, 0.5)], [0.4, 1.5, 2.6]),
    'tcb_into_bezier_handle': ([Key(1, 0, BEZIER, 0, 0, 0.5, 1.5), Key(3, 2, TCB, 0, 0, 0), Key(2, 3, BEZIER, 0.5, 0.25)],
                               [0.5, 1.5, 2.5]),
}

BEHAVIOR_KEYS = [Key(2, 1, TCB), Key(6, 3, LINEAR), Key(4, 4, TCB, 0.3, 0, 0)]
BEHAVIOR_TIMES = [-2.5, 0.0, 1.0, 4.0, 5.5, 7.25, 9.0]


def main():
    for name, (keys, times) in CASES.items():
        print(name, ', '.join('%.9g' % evaluate(keys, t) for t in times))
    for behavior in range(6):
        print('behaviour', behavior,
              ', '.join('%.9g' % evaluate(BEHAVIOR_KEYS, t, behavior, behavior) for t in BEHAVIOR_TIMES))
    osc = oscillator(0.5, 2.0, 0.25, 0.5, 1.0, 1.0, 9.0)
    osc_neg = oscillator(2.0, 1.5, 0.0, -0.5, 0.0, 0.0, 4.0)
    osc_none = oscillator(1.0, 3.0, 1.0, 0.0, -1.0, 2.0, 3.0)
    times = [0.5, 1.0, 2.3, 5.0, 9.0, 9.5]
    print('osc damped', ', '.join('%.9g' % osc(f(t)) for t in times))
    print('osc negative', ', '.join('%.9g' % osc_neg(f(t)) for t in [0.0, 0.3, 1.1, 4.0, 4.01]))
    print('osc undamped', ', '.join('%.9g' % osc_none(f(t)) for t in [1.99, 2.0, 2.2, 3.0]))
    print('two oscillators over linear', ', '.join(
        '%.9g' % evaluate([Key(0, 0, LINEAR), Key(4, 2, LINEAR)], t, modifiers=(osc, osc_neg)) for t in [0.5, 1.5, 3.0]))


if __name__ == '__main__':
    main()
