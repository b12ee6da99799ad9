#!/usr/bin/python3
"""Opens pages of quarl-html in a headless Chromium and uses them as people do: looks, zooms, sorts, finds.

usage: check_browser.py quarl-html compose_volume
"""
import base64
import contextlib
import json
import pathlib
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
REAL = SOURCE.parent / "shared" / "volumes"
sys.path.insert(0, str(HERE))
from browser import Browser, program  # noqa: E402
from measures import STEEPEST, count, equal, rows, silent, text  # noqa: E402
from made_pages import Pages, thousand_epochs, year_with_a_gap  # noqa: E402
from view_checks import check_outputs, check_phone, check_ticks, check_windows  # noqa: E402


def look(browser, page):
    """What is drawn is what the page's data say."""
    seconds = browser.open(page)
    silent(browser, page)
    data = browser.evaluate("JSON.parse(document.getElementById('volume').textContent)")
    equal("findings", count(browser, "#findings li"), len(data["findings"]))
    alone = sum(not c["epochs"] for c in data["channels"])
    equal("rows of the table", rows(browser, "channels-table"), len(data["epochs"]) + alone)
    equal("stations of the table", rows(browser, "stations-table"), sum(len(s["epochs"]) for s in data["stations"]))
    placed = [s for s in data["stations"] if any(e["latitude"] is not None and abs(e["latitude"]) <= 90
                                                 and abs(e["longitude"]) <= 360 for e in s["epochs"])]
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
        assert browser.evaluate(STEEPEST) < 0.55, f"the phase of epoch {index} is drawn across a jump"
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
    browser.mouse("mouseMoved", left + width / 4, top + height / 2)
    browser.settle()
    browser.press("n")
    near = domain(browser)
    assert near[0] < spans[1] < spans[2] < near[1] and near[1] - near[0] < 60, near
    assert mark_boxes(browser, "gap")[0][1] > 20, "a second is wide in a view of seconds"
    browser.press("n")
    assert "no later gap" in text(browser, "#timeline-view .status"), "the next gap is not looked for from this one"
    assert "2023-07-01" in text(browser, ".time-axis") and "182" in text(browser, ".time-axis"), text(browser, ".time-axis")
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
    equal("where a station leads", browser.evaluate("[location.hash, document.querySelector('.site').dataset.station]"),
          ["#site-99", "99"])
    equal("land", browser.evaluate("document.querySelector('path.land').getAttribute('d').length > 1000"), True)
    equal("without a position", count(browser, ".unplaced"), 0)


def steps_of(waves):
    """The steps of a channel as the manual explains them: place, least and most."""
    packed = base64.b64decode(waves["values"])
    at = 0

    def number():
        nonlocal at
        value = shift = 0
        while True:
            byte = packed[at]
            at += 1
            value |= (byte & 127) << shift
            shift += 7
            if byte < 128:
                return value

    steps, place, low = [], 0, 0
    while at < len(packed):
        place += number()
        for _ in range(number()):
            difference = number()
            low += -(difference + 1) // 2 if difference % 2 else difference // 2
            high = low + number() if waves["paired"] else low
            steps.append((place, waves["least"] + low * waves["scale"], waves["least"] + high * waves["scale"]))
            place += 1
    return steps


def drawn_samples(browser, number):
    """Pixels of a strip in the colour of samples: columns with any, and whether steps are samples."""
    return browser.evaluate(f"""(() => {{
        const canvas = document.querySelectorAll('canvas.wave')[{number}];
        const {{width, height}} = canvas;
        const {{data}} = canvas.getContext('2d').getImageData(0, 0, width, height);
        const colour = getComputedStyle(canvas).outlineColor.match(/\\d+/g).map(Number);
        let columns = 0;
        for (let x = 0; x < width; ++x)
            for (let y = 0; y < height; ++y)
                if ([0, 1, 2].every(i => Math.abs(data[4 * (y * width + x) + i] - colour[i]) < 40)) {{
                    ++columns;
                    break;
                }}
        return [columns, canvas.dataset.samples === 'true', Number(canvas.dataset.steps)];
    }})()""")


def check_strips(browser, data):
    """Samples are drawn for each channel that has some, zoomed with the timeline, found by the search."""
    with_samples = [c for c in data["channels"] if c["waves"]]
    equal("strips", count(browser, "figure.strip"), len(with_samples))
    waves = with_samples[0]["waves"]
    steps = steps_of(waves)
    if waves["samples_per_step"] == 1:
        equal("samples", len(steps), waves["samples"])
    equal("least", min(s[1] for s in steps), waves["least"])
    equal("most", max(s[2] for s in steps), waves["most"])
    browser.evaluate("document.getElementById('data').scrollIntoView()")
    browser.settle()
    columns, _, shown = drawn_samples(browser, 0)
    assert columns > 3 and shown > 0, (columns, shown)
    start = waves["start"] + steps[0][0] * waves["step"]
    browser.evaluate(f"Timeline.setDomain([{start}, {start} + {20 * waves['step']}])")
    browser.settle()
    columns, are_samples, shown = drawn_samples(browser, 0)
    equal("single samples", are_samples, True)
    assert 15 <= shown <= 25 and columns > 100, (columns, shown)
    before = browser.evaluate("document.querySelector('.rows-scroll').dataset.start")
    browser.evaluate("""document.querySelector('canvas.wave').dispatchEvent(
        new MouseEvent('dblclick', {clientX: 600, bubbles: true}))""")
    browser.settle()
    assert browser.evaluate("document.querySelector('.rows-scroll').dataset.start") > before, "not zoomed"


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
    assert text(browser, "#nav output").startswith("10 channels"), text(browser, "#nav output")
    equal("found epochs", count(browser, "#responses-view option"), 10)
    shown = browser.evaluate("Number(document.getElementById('responses-view').dataset.epoch)")
    assert 420 <= shown < 430, f"epoch {shown} is shown, which was not found"
    for words, found in (("XX_S042_03_BHZ", 1), ("xx.s042.03.bhz", 1), ("xx s042 bh? 03", 1), ("2021-05-05", 1000),
                         ("2019,300", 0), ("s042 error", None), ("nothing-has-this", 0)):
        search(browser, words)
        if found is not None:
            equal(f"found by {words}", count(browser, "#responses-view option"), found)
    equal("said of nothing", text(browser, "#nav output"), "nothing found")
    equal("no response is left", browser.evaluate("document.querySelector('.response').hidden"), True)
    search(browser, "")
    equal("all again", browser.evaluate("document.querySelector('#channels-table').getAttribute('aria-rowcount')"),
          str(len(data["epochs"]) + 1))
    assert 0 < count(browser, "#channels-table tbody tr") < 100, "rows out of sight are drawn"
    check_speed(browser)
    browser.evaluate("Address.go('timeline-2')")
    browser.settle()
    equal("the row that a link leads to", count(browser, "g.row.active[data-channel='2']"), 1)
    equal("the station of its row", text(browser, "g.station-row text.group"), "XX.S000")


def search(browser, words):
    browser.evaluate(f"(s => (s.value = {json.dumps(words)}, s.dispatchEvent(new Event('input'))))(document.getElementById('search'))")
    browser.evaluate("new Promise(done => setTimeout(done, 300))")
    browser.settle()


def check_speed(browser):
    """A thousand rows are sorted and searched at once."""
    for act in ("document.querySelector('#channels-table th:nth-child(6) button').click()", "Tables.find(Words.make('s04'))",
                "Tables.find([])", "document.querySelector('#channels-table th:nth-child(2) button').click()"):
        took = browser.evaluate(f"(() => {{ const begin = performance.now(); {act}; document.body.offsetHeight;"
                                f" return performance.now() - begin; }})()")
        assert took < 500, f"{act} took {took:.0f} ms"


def check_findings(browser, data):
    """Counted at the top, folded beyond 50, and leading to what they are about."""
    severities = [data["rules"][f["rule"]]["severity"] for f in data["findings"]]
    for name in ("error", "warning", "note"):
        told = f"{severities.count(name):,} {name}"
        assert (told in text(browser, "#verdict")) == (name in severities), (told, text(browser, "#verdict"))
    rest = browser.evaluate("[...document.querySelectorAll('#findings .rest')].map(r => [r.open, r.querySelectorAll('li').length])")
    many = [n - 50 for n in (sum(f["rule"] == i for f in data["findings"]) for i in range(len(data["rules"]))) if n > 50]
    equal("folded findings", sorted(rest), sorted([False, n] for n in many))


def check_station_row(browser):
    """A station stays in sight while its channels scroll."""
    browser.evaluate("[...document.querySelectorAll('#timeline-view .controls button')].find(b => /unfold/.test(b.textContent)).click()")
    browser.settle()
    browser.evaluate("document.querySelector('.rows-scroll').scrollTop = 24 * 16")
    browser.settle()
    browser.settle()
    equal("the station above", text(browser, ".stuck text.group"), "XX.S001")


def check_links(browser, page):
    browser.open(page, "#response-7")
    equal("epoch of a deep link", browser.evaluate("document.getElementById('responses-view').dataset.epoch"), "7")
    browser.open(page, "#channel-5")
    equal("row of a deep link", count(browser, "#channels-table tr.current #channel-5"), 1)
    browser.open(page, "#response-7&with=8,9&find=s000&as=acceleration")
    equal("curves of a deep link", count(browser, ".plot path.curve.amplitude"), 3)
    equal("what it searches for", browser.evaluate("document.getElementById('search').value"), "s000")
    assert "per M/S**2" in text(browser, ".frequency-plot"), "no acceleration"
    browser.evaluate("Address.go('site-3')")
    equal("a station by a link", browser.evaluate("document.querySelector('.site').dataset.station"), "3")
    browser.evaluate("history.back()")
    browser.evaluate("new Promise(done => setTimeout(done, 200))")
    equal("back", browser.evaluate("[location.hash, document.getElementById('responses-view').dataset.epoch]"),
          ["#response-7&with=8,9&find=s000&as=acceleration", "7"])


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
        check_strips(browser, look(browser, sample))
        check_windows(browser, sample)
        check_phone(browser, sample)
        check_hostile(browser, pages.composed(SOURCE / "tests" / "page" / "hostile.txt", "hostile"))
        data = look(browser, pages.composed(year_with_a_gap(), "gap"))
        check_timeline(browser, data)
        check_stages(browser, data)
        check_outputs(browser)
        check_ticks(browser)
        many = pages.composed(thousand_epochs(), "thousand")
        data = look(browser, many)
        equal("epochs", len(data["epochs"]), 1000)
        check_tables(browser, data)
        check_map(browser)
        check_findings(browser, data)
        check_station_row(browser)
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
