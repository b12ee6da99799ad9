#!/usr/bin/env python3
"""Evaluates the responses of real volumes, from their bytes on, and compares with those in the pages of
quarl-html.

usage: check_responses.py quarl-html folder
Exits with 77 when the folder is not there."""
import cmath, gzip, json, math, pathlib, re, subprocess, sys


class Refused(Exception):
    pass


class Text:
    """The fields of one blockette."""

    def __init__(self, text):
        self.text, self.at = text, 0

    def raw(self, width):
        self.at += width
        return self.text[self.at - width:self.at]

    def variable(self):
        end = self.text.find("~", self.at)
        self.at, text = end + 1, self.text[self.at:end]
        return text.strip()

    def number(self, width):
        return float(self.raw(width).strip() or 0)

    def count(self, width):
        return int(self.number(width))

    def list(self, count, width, keep, of):
        """`count` groups of `of` fields, the first `keep` of each."""
        return [[self.number(width) for _ in range(of)][:keep] for _ in range(count)]


def blockettes(data):
    """Types and texts of all control blockettes."""
    size = 1 << int(re.search(rb"010[ \d]{5}\d\.\d(\d\d)", data[:8192]).group(1))
    records = [data[at:at + size] for at in range(0, len(data), size)]
    text = b"".join(r[8:] for r in records if r[6:7] in b"VAST").decode("latin-1")
    at = 0
    while match := re.compile(r"\s*(\d{3})([ \d]{4})").match(text, at):
        start, length = match.start(1), int(match.group(2))
        yield int(match.group(1)), Text(text[start + 7:start + length])
        at = start + length


def filter_part(kind, t):
    """A filter from behind its stage or key on: kind, type, content."""
    if kind == 53:
        a0, fn = t.number(12), t.number(12)
        zeros = [complex(*z) for z in t.list(t.count(3), 12, 2, 4)]
        return kind, a0, fn, zeros, [complex(*p) for p in t.list(t.count(3), 12, 2, 4)]
    if kind == 54:
        above = [c for c, in t.list(t.count(4), 12, 1, 2)]
        return kind, above, [c for c, in t.list(t.count(4), 12, 1, 2)]
    if kind == 55:
        return kind, [(f, a, p) for f, a, _, p, _ in t.list(t.count(4), 12, 5, 5)]
    return kind, [c for c, in t.list(t.count(4), 14, 1, 1)]


def part(kind, t):
    """Stage number, type letter and content of a response blockette."""
    letter = t.raw(1) if kind in (53, 54, 62) else ""
    stage = t.count(2)
    if kind == 57:
        rate, _, _, delay, correction = (t.number(w) for w in (10, 5, 5, 11, 11))
        return stage, "", (57, rate, correction)
    if kind == 58:
        return stage, "", (58, t.number(12), t.number(12))
    if kind == 61:
        t.variable()
        letter = t.raw(1)
    t.raw(6)
    if kind == 62:
        t.raw(62)
        return stage, letter, (62, [c for c, in t.list(t.count(3), 12, 1, 2)])
    return stage, letter, filter_part(kind, t)


def epochs(data):
    """Name, sample rate and stages (number, [(letter, content)...]) of each channel epoch."""
    found = []
    station = ""
    for kind, t in blockettes(data):
        if kind == 50:
            station = t.raw(5).strip()
        elif kind == 52:
            location, channel, _ = t.raw(2).strip(), t.raw(3).strip(), t.raw(7)
            t.variable()
            t.raw(6 + 10 + 11 + 7 + 5 + 5 + 5 + 4 + 2)
            rate = t.number(10)
            t.raw(14)
            t.variable()
            found.append((f"{station}.{location}.{channel},{t.variable()}", rate, []))
        elif kind == 60:
            found[-1][2].append((-1, []))  # its dictionary is not read here
        elif kind in (53, 54, 55, 57, 58, 61, 62):
            stage, letter, content = part(kind, t)
            stages = found[-1][2]
            if not stages or stages[-1][0] != stage:
                stages.append((stage, []))
            stages[-1][1].append((letter, content))
    return found


def product(factors):
    result = 1
    for factor in factors:
        result *= factor
    return result


def fir(letter, c, dt, correction):
    """u(f) of a FIR filter."""
    mirrored = letter != "B" and letter != "C" and c == c[::-1]
    if letter not in ("B", "C"):
        if abs(sum(c) - 1) > 0.02:
            c = [x / sum(c) for x in c]
        if not mirrored:
            return lambda f: cmath.exp(2j * math.pi * f * correction) * sum(
                x * cmath.exp(-2j * math.pi * f * k * dt) for k, x in enumerate(c))
        letter, c = "B" if len(c) % 2 else "C", c[:(len(c) + 1) // 2]
    outwards, shift = c[::-1], 0 if letter == "B" else 0.5
    return lambda f: complex(sum(
        (1 if j == 0 and letter == "B" else 2) * x * math.cos(2 * math.pi * f * (j + shift) * dt)
        for j, x in enumerate(outwards)))


def u_of(filters, decimation):
    """u(f) of a stage's filter blockettes, None for those without effect."""
    (letter, first), *more = filters
    kind = first[0]
    if (kind == 53 and letter not in "ABD") or (kind == 54 and letter != "D"):
        raise Refused("unexpected filter type")
    digital = kind in (54, 61) or letter == "D"
    if digital and not decimation:
        raise Refused("no 057")
    dt = 1 / decimation[1] if digital and decimation[1] else 0
    if kind == 53:
        _, a0, fn, zeros, poles = first
        at = {"A": lambda f: 2j * math.pi * f, "B": lambda f: 1j * f,
              "D": lambda f: cmath.exp(2j * math.pi * f * dt)}[letter]
        ratio = lambda f: product(at(f) - z for z in zeros) / product(at(f) - p for p in poles)
        if more:
            raise Refused("053 continued")
        return ratio if zeros or poles or letter != "D" else None
    if kind == 54 and first[2]:
        if more:
            raise Refused("IIR continued")
        poly = lambda c, f: sum(x * cmath.exp(-2j * math.pi * f * k * dt) for k, x in enumerate(c))
        return lambda f: poly(first[1], f) / poly(first[2], f)
    if any(l != letter or content[0] != kind for l, content in more):
        raise Refused("two kinds")
    if kind == 55:
        raise Refused("no real volume here has one")
    coefficients = [c for _, content in filters for c in content[1]]
    return fir(letter, coefficients, dt, decimation[2]) if coefficients else None


def stage_of(number, parts, fs):
    """h(f)."""
    gain = next((content for _, content in parts if content[0] == 58), None)
    decimation = next((content for _, content in parts if content[0] == 57), None)
    filters = [(letter, content) for letter, content in parts if content[0] not in (57, 58)]
    if filters and filters[0][1][0] == 62:
        c = filters[0][1][1]
        if len(c) > 2:
            raise Refused("polynomial")
        return lambda f: 1 / c[1] if len(c) == 2 else 1
    if decimation and (not filters or not gain):
        raise Refused("057 alone")
    u = u_of(filters, decimation) if filters else None
    value = gain[1] if gain else 1
    if number == 0:
        value = 1
    if u is None:
        return lambda f: value
    roots = filters[0][1] if filters[0][1][0] == 53 else None
    if not gain or gain[2] == fs and (not roots or roots[2] == fs):
        return lambda f: value * (roots[1] if roots else 1) * u(f)
    here, there = abs(u(gain[2])), abs(u(fs))
    if here == 0 or there == 0:
        raise Refused("zero at the gain's frequency")
    return lambda f: value * u(f) / here


def evaluate(stages, grid):
    gains = [(n, c) for n, parts in stages for _, c in parts if c[0] == 58]
    sensitivity = next((c for n, c in gains if n == 0), None)
    polynomial = any(c[0] == 62 for _, parts in stages for _, c in parts)
    if len(stages) == 1 and not gains and not polynomial:
        raise Refused("no gain")
    if any(c[1] == 0 for n, c in gains) and not polynomial:
        raise Refused("gain 0")
    fs = sensitivity[2] if sensitivity else 0
    fs = fs or next((c[2] for n, c in reversed(gains) if n and c[2]), 0)
    if len(stages) == 1 and stages[0][0] == 0 and not polynomial:
        return [sensitivity[1]] * len(grid)
    factors = [stage_of(n, parts, fs) for n, parts in stages]
    return [product(h(f) for h in factors) for f in grid]


def page_data(program, path):
    """The data of a volume's page; name and response of each epoch in it."""
    page = subprocess.run([program, path], capture_output=True, check=True).stdout.decode()
    data = json.loads(re.search(r'id="volume">(.*?)</script>', page, re.DOTALL).group(1))
    named = [(f"{r['station']}.{r['location']}.{r['channel']},{r['start']}",
              data["responses"][r["same"]] if "same" in r else r) for r in data["responses"]]
    return data, named


def difference(expected, amplitude, phase, top):
    """Of amplitudes, relative, and of phases in degrees. Sums of a filter's many terms that cancel each other are
    compared with the curve's top."""
    if abs(expected) < 1e-9 * top:
        return abs(abs(expected) - amplitude) / top, 0
    turn = abs(math.degrees(cmath.phase(expected)) - phase)
    return abs(amplitude / abs(expected) - 1), min(turn, 360 - turn)


def check_frequencies(found, rate):
    """A grid up to half the rate, and more."""
    end = rate / 2
    assert found == sorted(set(found)) and abs(found[-1] / end - 1) < 1e-7, "does not end at half the rate"
    for f in (10 ** (k / 20) for k in range(-60, 140)):
        assert f >= end * (1 - 1e-6) or any(abs(g / f - 1) < 1e-7 for g in found), f"not at {f} Hz"


def check_lines(stages, response):
    """Lines between points are within 0.5 % and half a degree of what is in their middle."""
    frequency, amplitude, phase = (response[key] for key in ("frequency", "amplitude", "phase"))
    middles = [math.sqrt(a * b) for a, b in zip(frequency, frequency[1:])]
    top = max(amplitude)
    for i, value in enumerate(evaluate(stages, middles)):
        if abs(value) < 1e-4 * top:
            continue
        line = math.sqrt(amplitude[i] * amplitude[i + 1])
        half = phase[i] + math.remainder(phase[i + 1] - phase[i], 360) / 2
        turn = math.remainder(half - math.degrees(cmath.phase(value)), 360)
        assert abs(math.log(line / abs(value))) < 0.005 and abs(turn) < 0.5, f"lines at {middles[i]} Hz"


def check_stage_lines(stages, epoch, data):
    """Those of the filters' curves too, at any point."""
    sensitivity = [c for n, parts in stages if n == 0 for _, c in parts if c[0] == 58]
    parts_of = dict(stages)
    for stage in (data["stages"][i] for i in epoch["stages"]):
        curve = data["filters"][stage["filter"]] if stage["filter"] is not None else {}
        if "at" not in curve or not sensitivity:
            continue
        value = stage_of(stage["stage"], parts_of[stage["stage"]], sensitivity[-1][2])
        top = max(curve["amplitude"])
        points = list(zip(curve["at"], curve["amplitude"], curve["phase"]))
        for (at, a, p), (to, b, q) in zip(points, points[1:]):
            for share in (0.3, 0.5, 0.8):
                exact = value(10 ** ((at + share * (to - at) - 60) / 20)) / stage.get("gain", 1)
                if abs(exact) < 1e-4 * top:
                    continue
                turn = math.remainder(p + share * (q - p) - math.degrees(cmath.phase(exact)), 360)
                assert abs(math.log(a ** (1 - share) * b ** share / abs(exact))) < 0.005 and abs(turn) < 0.5, \
                    f"stage {stage['stage']}, place {at} to {to}"


def check_epoch(rate, stages, response):
    """The largest differences; None for an epoch that neither side evaluates."""
    if any(number == -1 for number, _ in stages):
        return None
    grid = response.get("frequency", [rate / 4])
    try:
        values = evaluate(stages, grid)
    except Refused as reason:
        assert "error" in response, f"not refused: {reason}"
        return None
    assert "error" not in response, response["error"]
    check_frequencies(grid, rate)
    check_lines(stages, response)
    top = max(response["amplitude"])
    curve = [difference(*at, top) for at in zip(values, response["amplitude"], response["phase"])]
    return [max(d) for d in zip((0, 0), *curve)]


def main(program, folder):
    compared, worst = 0, [0, 0]
    for path in sorted(pathlib.Path(folder).glob("*.seed*")):
        data = (gzip.open if path.suffix == ".gz" else open)(path, "rb").read()
        page, theirs = page_data(program, path)
        ours = epochs(data)
        assert [n for n, _ in theirs] == [n for n, _, _ in ours], f"{path}: other epochs"
        for (name, rate, stages), (_, response), epoch in zip(ours, theirs, page["epochs"]):
            try:
                found = check_epoch(rate, stages, response)
                assert not found or (found[0] < 1e-6 and found[1] < 1e-4), found
                if found:
                    check_stage_lines(stages, epoch, page)
            except AssertionError as reason:
                sys.exit(f"{path} {name}: {reason}")
            if found:
                compared, worst = compared + 1, [max(w) for w in zip(worst, found)]
    print(f"{compared} epochs, largest differences: amplitude {worst[0]:.1e}, "
          f"phase {worst[1]:.1e} degrees")
    return 0 if compared >= 10 else "fewer than 10 epochs"


if __name__ == "__main__":
    if not pathlib.Path(sys.argv[2]).is_dir():
        print(f"skipped: no real volumes at {sys.argv[2]}")
        sys.exit(77)
    sys.exit(main(sys.argv[1], sys.argv[2]))
