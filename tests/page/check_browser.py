#!/usr/bin/python3
"""Opens pages of quarl-html in a headless Chromium and uses them as people do: looks, zooms, sorts, finds.

usage: check_browser.py quarl-html compose_volume
"""
import contextlib
import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
REAL = SOURCE.parent / "shared" / "volumes"
sys.path.insert(0, str(HERE))
from browser import Browser, program  # noqa: E402

IDENTIFIER = "records 4096\nheader V\n010  2.4|12|2023,001~2024,001~2024,003~Org~Label~\n"
DICTIONARIES = ("header A\n030 Steim2~|0001|050|00\n033 001|Net~\n033 002|Seismometer~\n034 001|M/S~Velocity~\n"
                "034 002|V~Volts~\n034 003|COUNTS~Counts~\nheader S\n")
RESPONSE = ("053 A|01|001|002|+1.00000E+00|+1.00000E+00|001| 0.00000E+00|{0}|{0}|{0}|002|-3.70000E-02|+3.70000E-02"
            "|{0}|{0}|-3.70000E-02|-3.70000E-02|{0}|{0}\n058 01|+1.50000E+03|+1.00000E+00|00\n"
            "054 D|02|002|003|0000|0000\n057 02|2.0000E+01|00001|00000|+0.0000E+00|+0.0000E+00\n"
            "058 02|+4.00000E+05|+1.00000E+00|00\n").format("+0.00000E+00")


def station(code, latitude, longitude):
    return f"050 {code:5}|{latitude:10.6f}|{longitude:11.6f}| 1850.0|0001|001|Site {code}~001|3210|10|2020,001~~N|XX\n"


def channel(location, code, latitude, longitude, sensitivity):
    return (f"052 {location:2}|{code}|0000|002|~001|002|{latitude:10.6f}|{longitude:11.6f}| 1850.0|000.0|000.0|-90.0|0001|09|"
            f"2.0000E+01|1.0000E-04|0000|CG~2020,001~~N\n{RESPONSE}058 00|{sensitivity:+.5E}|+1.00000E+00|00\n")


def year_with_a_gap():
    """A year of records of nine hours, and one second that is missing in its middle; an overlap at its end."""
    lines = [IDENTIFIER, DICTIONARIES, station("GAP", 10, 179.9), channel("00", "LHZ", 10, 179.9, 6e8)]
    start = datetime.datetime(2023, 1, 1)
    for i in range(970):
        at = start + datetime.timedelta(hours=9 * i, seconds=(i >= 485) - 2 * (i == 969))
        lines.append(f"data sta=GAP loc=00 chan=LHZ net=XX time={at:%Y,%j,%H:%M:%S}.0000 samples=32400 rate=1,1 b1000=11,1,9\n")
    return "".join(lines)


def thousand_epochs():
    lines = [IDENTIFIER, DICTIONARIES]
    for i in range(100):
        latitude, longitude = -60 + 1.2 * i, -170 + 3.4 * i
        lines.append(station(f"S{i:03}", latitude, longitude))
        lines += [channel(f"{k:02}", "BHZ", latitude, longitude, 6e8 + 10 * i + k) for k in range(10)]
    return "".join(lines)


class Pages:
    """Makes pages of volumes."""

    def __init__(self, quarl_html, compose, directory):
        self.quarl_html, self.compose, self.directory = quarl_html, compose, pathlib.Path(directory)

    def of(self, volume, name):
        page = self.directory / f"{name}.html"
        environment = dict(os.environ, QUARL_PFPATH=str(SOURCE / "etc"))
        done = subprocess.run([self.quarl_html, "-o", page, volume], env=environment, stderr=subprocess.DEVNULL, check=False)
        assert done.returncode in (0, 1), (name, done.returncode)
        return page

    def composed(self, recipe, name):
        volume = self.directory / f"{name}.seed"
        if not isinstance(recipe, pathlib.Path):
            text, recipe = recipe, self.directory / f"{name}.txt"
            recipe.write_text(text, encoding="utf-8")
        subprocess.run([self.compose, recipe, volume], check=True)
        return self.of(volume, name)


def count(browser, selector):
    return browser.evaluate(f"document.querySelectorAll({json.dumps(selector)}).length")


def text(browser, selector):
    return browser.evaluate(f"document.querySelector({json.dumps(selector)}).textContent")


def equal(what, value, expected):
    assert value == expected, f"{what}: {value!r}, expected {expected!r}"


def silent(browser, page):
    equal(f"{page.name}: messages", browser.messages, [])
    equal(f"{page.name}: requests", [r.split("#")[0] for r in browser.requests], [page.resolve().as_uri()])


def look(browser, page):
    """What is drawn is what the page's data say."""
    seconds = browser.open(page)
    silent(browser, page)
    data = browser.evaluate("JSON.parse(document.getElementById('volume').textContent)")
    equal("findings", count(browser, "#findings li"), len(data["findings"]))
    alone = sum(not c["epochs"] for c in data["channels"])
    equal("rows of the table", count(browser, "#channels-table tbody tr"), len(data["epochs"]) + alone)
    equal("stations of the table", count(browser, "#stations-table tbody tr"), sum(len(s["epochs"]) for s in data["stations"]))
    placed = [s for s in data["stations"] if any(abs(e["latitude"]) <= 90 and abs(e["longitude"]) <= 360 for e in s["epochs"])]
    equal("stations of the map", count(browser, "a.station"), len(placed))
    equal("choices of responses", count(browser, "#responses-view option"), len(data["epochs"]))
    if len(data["channels"]) < 20:
        equal("rows of the timeline", count(browser, "g.row.channel"), len(data["channels"]))
        equal("rows with data", count(browser, "g.row path.span"), sum(bool(c["spans"]) for c in data["channels"]))
        gaps = sum(len(c["spans"]) > 2 for c in data["channels"])
        equal("rows with gaps", count(browser, "g.row path.gap"), gaps)
    for index in range(min(len(data["epochs"]), 40)):
        look_at_response(browser, data, index)
    print(f"{page.stem}: {len(data['channels'])} channels, {len(data['epochs'])} epochs, loaded and drawn in {seconds:.2f} s")
    return data


def look_at_response(browser, data, index):
    response = data["responses"][index]
    response = data["responses"][response.get("same", index)]
    browser.evaluate(f"Responses.show({index})")
    browser.settle()
    if "error" in response:
        assert response["error"] in text(browser, "#responses-view .plot"), f"no reason for epoch {index}"
        return
    if response["frequency"]:
        equal(f"curves of epoch {index}", count(browser, ".plot path.curve.amplitude"), 1)
        drawn = browser.evaluate("document.querySelector('.plot path.curve.amplitude').getAttribute('d').split(/[ML]/).length")
        equal(f"points of epoch {index}", drawn - 1, sum((a or 0) > 0 for a in response["amplitude"]))
    equal(f"stages of epoch {index}", count(browser, ".stages tbody tr"), len(data["epochs"][index]["stages"]))


def check_stages(browser, data):
    """Stage by stage on demand, with a plane for the analog stage; the cross-hair tells values."""
    browser.evaluate("Responses.show(0)")
    browser.click("#by-stage")
    equal("curves by stage", count(browser, ".plot path.curve.amplitude"), 1 + len(data["epochs"][0]["stages"]))
    equal("planes", count(browser, ".pole-plot"), 1)
    equal("poles and zeros", (count(browser, ".pole-plot .pole"), count(browser, ".pole-plot .zero")), (2, 1))
    equal("sensitivity and Nyquist", (count(browser, "circle.sensitivity"), count(browser, "path.nyquist")), (1, 2))
    browser.evaluate("document.querySelector('.frequency-plot').focus()")
    browser.press("ArrowRight")
    assert "overall: " in text(browser, "p.values") and "stage 2: " in text(browser, "p.values")
    browser.click("#by-stage")


def domain(browser):
    return browser.evaluate("(d => [Number(d.start), Number(d.end)])(document.querySelector('.rows-scroll').dataset)")


def mark_boxes(browser, name):
    """[left, width] in the window of the rectangles that a row's path has."""
    return browser.evaluate(
        f"(p => [...p.getAttribute('d').matchAll(/M([-\\d.]+) [^h]*h([\\d.]+)/g)].map(m => "
        f"[Number(m[1]) + p.parentNode.getCTM().e + p.ownerSVGElement.getBoundingClientRect().x, Number(m[2])]))"
        f"(document.querySelector('path.{name}'))")


def check_timeline(browser, data):
    """One second in a year is a mark at every zoom; pointer, wheel and keys work."""
    spans = data["channels"][0]["spans"]
    equal("gaps", len(spans) // 2 - 1, 1)
    browser.click("#timeline-view .controls button:nth-child(5)")
    left, _, width, height = browser.box("g.row.channel .back")
    whole = domain(browser)
    assert whole[0] < spans[0] and whole[1] > spans[-1]
    (gap_at, gap_width), = mark_boxes(browser, "gap")
    assert 1 <= gap_width <= 4 and left < gap_at < left + width, (gap_at, gap_width)
    equal("overlaps", len(mark_boxes(browser, "overlap")), 1)
    _, top, _, height = browser.box("g.row.channel .back")
    browser.mouse("mouseMoved", gap_at + 1, top + height / 2)
    browser.settle()
    assert "gap 1 s: 2023-07-01 21:00:00 – 2023-07-01 21:00:01" in text(browser, ".tip"), text(browser, ".tip")
    browser.wheel(gap_at + 1, top + height / 2, -400, ctrl=True)
    zoomed = domain(browser)
    assert zoomed[1] - zoomed[0] < (whole[1] - whole[0]) / 2, "the wheel does not zoom"
    assert len(mark_boxes(browser, "gap")) == 1, "the gap is lost by zooming"
    browser.drag(gap_at + 1, top + height / 2, gap_at + 101, top + height / 2)
    dragged = domain(browser)
    assert dragged[0] < zoomed[0] and abs((dragged[1] - dragged[0]) / (zoomed[1] - zoomed[0]) - 1) < 1e-6, "dragging does not move"
    browser.evaluate("document.querySelector('.rows-scroll').focus()")
    browser.press("ArrowDown")
    assert "970 records" in text(browser, "#timeline-view .status"), text(browser, "#timeline-view .status")
    browser.press("n")
    near = domain(browser)
    assert near[0] < spans[1] < spans[2] < near[1] and near[1] - near[0] < 60, near
    assert mark_boxes(browser, "gap")[0][1] > 20, "a second is wide in a view of seconds"
    browser.press("-")
    assert domain(browser)[0] < near[0]
    browser.press("Enter")
    equal("where Enter leads", browser.evaluate("location.hash"), "#response-0")


def check_map(browser):
    grids = [browser.evaluate("document.querySelector('.graticule').getAttribute('d')")]
    browser.click("#map-view .controls button:nth-child(2)")
    grids.append(browser.evaluate("document.querySelector('.graticule').getAttribute('d')"))
    browser.evaluate("document.querySelector('svg.map').focus()")
    browser.press("ArrowLeft")
    grids.append(browser.evaluate("document.querySelector('.graticule').getAttribute('d')"))
    equal("different views", len(set(grids)), 3)
    assert text(browser, ".scale text").endswith("m"), "no scale"
    browser.click("#map-view .controls button:nth-child(3)")
    browser.click("a.station:last-of-type path")  # it lies above the others
    equal("where a station leads", browser.evaluate("[location.hash, document.activeElement.id]"), ["#station-99", "station-99"])


def column(browser, table, number):
    return browser.evaluate(f"[...document.querySelectorAll('#{table} tbody tr:not([hidden])')].map(r => r.cells[{number}].textContent)")


def check_tables(browser, data):
    """Sorts by name and by number, by mouse and by key; finds; links lead to drawings."""
    button = "#stations-table th:nth-child(4) button"
    browser.click(button)
    latitudes = [float(v) for v in column(browser, "stations-table", 3)]
    assert latitudes == sorted(latitudes), "not sorted"
    browser.evaluate(f"document.querySelector('{button}').focus()")
    browser.press("Enter")
    equal("sorted again", [float(v) for v in column(browser, "stations-table", 3)], latitudes[::-1])
    equal("what it tells", browser.evaluate(f"document.querySelector('{button}').parentNode.ariaSort"), "descending")
    browser.click("#search")
    for letter in "s042":
        browser.press(letter)
    browser.evaluate("new Promise(done => setTimeout(done, 300))")
    equal("found", column(browser, "stations-table", 1), ["XX.S042"])
    equal("found rows of the timeline", count(browser, "g.row.channel"), 10)
    equal("said", text(browser, "#nav output"), "10 channels")
    equal("found epochs", count(browser, "#responses-view option"), 10)
    browser.evaluate("(s => (s.value = '', s.dispatchEvent(new Event('input'))))(document.getElementById('search'))")
    browser.evaluate("new Promise(done => setTimeout(done, 300))")
    equal("first ones again", count(browser, "#channels-table tbody tr:not([hidden])"), 300)
    browser.click("#channels-table caption button")
    equal("all again", count(browser, "#channels-table tbody tr:not([hidden])"), len(data["epochs"]))
    browser.click("#channels-table tr:nth-child(3) .go a")
    equal("the row that a link leads to", count(browser, "g.row.active[data-channel='2']"), 1)


def check_links(browser, page):
    browser.open(page, "#response-7")
    equal("epoch of a deep link", browser.evaluate("document.getElementById('responses-view').dataset.epoch"), "7")
    browser.open(page, "#channel-5")
    equal("row of a deep link", count(browser, "#channels-table tr.current #channel-5"), 1)


CONTRAST = """(() => {
    const light = c => { const [r, g, b] = c.match(/[\\d.]+/g).slice(0, 3).map(v => (v /= 255) <= 0.03928 ? v / 12.92
        : ((v + 0.055) / 1.055) ** 2.4); return 0.2126 * r + 0.7152 * g + 0.0722 * b; };
    const page = light(getComputedStyle(document.body).backgroundColor);
    const found = {};
    for (const selector of ["body", "a", ".muted", ".severity", ".record", "th button", "#search"])
        for (const e of [document.querySelector(selector)].filter(Boolean)) {
            const text = light(getComputedStyle(e).color);
            found[selector] = (Math.max(text, page) + 0.05) / (Math.min(text, page) + 0.05);
        }
    return found;
})()"""


def check_windows(browser, page):
    """Narrow and wide, light and dark, paper."""
    for scheme in ("light", "dark"):
        for width in (390, 1600):
            browser.resize(width, 900)
            browser.media(scheme)
            browser.open(page)
            silent(browser, page)
            beyond = browser.evaluate("document.documentElement.scrollWidth - innerWidth")
            assert beyond <= 0, f"{beyond} pixels beyond a window of {width}"
        weak = {k: v for k, v in browser.evaluate(CONTRAST).items() if v < 4.5}
        equal(f"weak contrasts, {scheme}", weak, {})
    browser.resize(1280, 900)
    browser.media("light", "print")
    browser.evaluate("window.dispatchEvent(new Event('beforeprint'))")
    browser.settle()
    hidden = browser.evaluate("[...document.querySelectorAll('.controls, #nav')].filter(e => e.offsetHeight).length")
    equal("controls on paper", hidden, 0)
    assert count(browser, "g.row.channel") > 0 and count(browser, "#tables table") > 3
    browser.evaluate("window.dispatchEvent(new Event('afterprint'))")
    browser.media()


def check_hostile(browser, page):
    """Nothing of a text becomes markup; all of it is shown."""
    look(browser, page)
    equal("markup out of texts", count(browser, "img, u, s, #head script, main script, main style, [onclick], [onerror]"), 0)
    for shown in ("<script>alert(1)</script>", "\\x1b[31m", "<style>*{display:none}</style>Ü", "&lt;not escaped twice&gt;"):
        assert shown in text(browser, "body"), shown
    assert "<img src=x onerror=alert(4)>" in text(browser, ".response-head")
    assert "</script><b>" in text(browser, "#responses-view .stages"), text(browser, "#responses-view .stages")


def main(quarl_html, compose):
    if not program():
        print("skipped: there is no chromium here")
        return 77
    with tempfile.TemporaryDirectory(suffix=".quarl-html") as directory, Browser() as browser:
        pages = Pages(quarl_html, compose, directory)
        sample = pages.of(SOURCE / "examples" / "sample.seed", "sample")
        look(browser, sample)
        check_windows(browser, sample)
        check_hostile(browser, pages.composed(SOURCE / "tests" / "page" / "hostile.txt", "hostile"))
        data = look(browser, pages.composed(year_with_a_gap(), "gap"))
        check_timeline(browser, data)
        check_stages(browser, data)
        many = pages.composed(thousand_epochs(), "thousand")
        data = look(browser, many)
        equal("epochs", len(data["epochs"]), 1000)
        check_tables(browser, data)
        check_map(browser)
        check_links(browser, many)
        with contextlib.suppress(FileNotFoundError):
            real = sorted(REAL.iterdir(), key=lambda path: -path.stat().st_size)[:6]
            for path in real:
                look(browser, pages.of(path, path.name))
        if not REAL.is_dir():
            print("skipped: the real volumes are not here")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
