"""Checks of windows of all kinds, of phones and paper, and of what plots are made of."""
from measures import BARS, CONTRAST, count, equal, silent, text


def check_outputs(browser):
    """Velocity into displacement is a factor of 2 pi f and a quarter of a turn; curves are saved with their numbers."""
    browser.evaluate("Responses.show(0)")
    browser.settle()
    values = browser.evaluate("(c => { const t = Output.turn(c, 1); const i = c.frequency.findIndex(f => f >= 1);"
                              " return [t.amplitude[i] / c.amplitude[i], t.phase[i] - c.phase[i], c.frequency[i]]; })(Curves.overall(0))")
    assert abs(values[0] / (2 * 3.14159265 * values[2]) - 1) < 1e-6, values
    assert min(abs(values[1] - 90), abs(values[1] + 270)) < 1e-6, values
    pieces = browser.evaluate("FrequencyPlot.draw({width: 600, sensitivity: null, nyquist: null, unit: '', label: '', tell: () => {},"
                              " curves: [{name: '', style: '', frequency: [1, 2, 3, 4], amplitude: [1, 1, 1, 1], phase: [170, 179, -179, -170]}]})"
                              ".querySelector('path.phase').getAttribute('d').split('M').length - 1")
    equal("pieces of a phase that goes over the edge", pieces, 2)
    lines = browser.evaluate("Export.csv([Curves.overall(0)], 'COUNTS per M/S')").splitlines()
    equal("lines of the CSV", len(lines) - 1, browser.evaluate("Curves.overall(0).frequency.length"))
    equal("its head", lines[0], "curve,frequency (Hz),amplitude (COUNTS per M/S),phase (degrees)")
    drawing = browser.evaluate("Export.svg(document.querySelector('.frequency-plot'))")
    assert drawing.startswith("<?xml") and 'stroke="rgb' in drawing, drawing[:200]


def check_ticks(browser):
    """Never fewer than two, never one over another, whatever the range."""
    for low, high in ((1, 9), (2.1e8, 2.4e8), (1e-12, 1e14), (0.9, 1.1), (3, 3.0001)):
        ticks = browser.evaluate(f"PlotAxes.ticks(d3.scaleLog().domain([{low}, {high}]).range([0, 300]), 24, true)"
                                 ".map(t => [t.at, Page.textWidth(t.text)])")
        assert len(ticks) >= 2, (low, high, ticks)
        for (a, width), (b, other) in zip(ticks, ticks[1:]):
            assert b - a >= (width + other) / 2, (low, high, ticks)


def check_phone(browser, page):
    """One finger scrolls, what is touched has 24 pixels."""
    browser.resize(390, 800, True)
    browser.open(page)
    small = browser.evaluate("[...document.querySelectorAll('button, select, input, summary, g.row .back')]"
                             ".map(e => [e.getBoundingClientRect(), e.outerHTML.slice(0, 80)])"
                             ".filter(([box]) => box.width > 0 && box.height < 24).map(([, shown]) => shown)")
    equal("small targets", small, [])
    browser.call("Emulation.setTouchEmulationEnabled", enabled=True, maxTouchPoints=2)
    for selector, view in ((".rows-scroll", "JSON.stringify(document.querySelector('.rows-scroll').dataset)"),
                           ("svg.map", "document.querySelector('.graticule').getAttribute('d')")):
        browser.box(selector)
        browser.settle()
        before, top = browser.evaluate(view), browser.evaluate("scrollY")
        browser.touch(selector, [0], [(0, -10)])
        equal(f"{selector} under one finger", browser.evaluate(view), before)
        assert browser.evaluate("scrollY") > top + 40, f"a finger on {selector} does not scroll the page"
        before = browser.evaluate(view)
        browser.touch(selector, [-20, 20], [(-6, 0), (6, 0)])
        assert browser.evaluate(view) != before, f"two fingers do not move {selector}"
    equal("messages", browser.messages, [])
    browser.call("Emulation.setTouchEmulationEnabled", enabled=False)
    browser.resize(1280, 900)


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
        assert min(browser.evaluate(BARS)) >= 3, f"{scheme}: {browser.evaluate(BARS)}"
    browser.resize(1280, 900)
    browser.media("light", "print")
    browser.evaluate("window.dispatchEvent(new Event('beforeprint'))")
    browser.settle()
    hidden = browser.evaluate("[...document.querySelectorAll('.controls, #nav')].filter(e => e.offsetHeight).length")
    equal("controls on paper", hidden, 0)
    assert count(browser, ".timeline-paper .still .back") > 0 and count(browser, "#tables table") > 3
    equal("axes on paper", count(browser, ".timeline-paper .axis text.lower") > 0, True)
    equal("rows that scroll on paper", browser.evaluate("document.querySelector('.rows-scroll').offsetHeight"), 0)
    browser.evaluate("window.dispatchEvent(new Event('afterprint'))")
    browser.media()
