"""What is looked at in a page, and what scripts measure there."""
import json


def count(browser, selector):
    return browser.evaluate(f"document.querySelectorAll({json.dumps(selector)}).length")


def text(browser, selector):
    return browser.evaluate(f"document.querySelector({json.dumps(selector)}).textContent")


def rows(browser, table):
    """All of a table, in sight or not."""
    return browser.evaluate(f"Tables.rowsOf('{table}').length")


def equal(what, value, expected):
    assert value == expected, f"{what}: {value!r}, expected {expected!r}"


def silent(browser, page):
    equal(f"{page.name}: messages", browser.messages, [])
    equal(f"{page.name}: requests", [r.split("#")[0] for r in browser.requests], [page.resolve().as_uri()])


# The longest line of the phase, as a share of its panel.
STEEPEST = """(() => {
    const height = Number(document.querySelectorAll('.plot rect.panel')[1].getAttribute('height'));
    const d = document.querySelector('.plot path.curve.phase').getAttribute('d');
    return Math.max(0, ...d.split('M').slice(1).flatMap(part => {
        const y = part.split('L').map(point => Number(point.split(' ')[1]));
        return y.slice(1).map((value, i) => Math.abs(value - y[i]) / height);
    }));
})()"""

# Of texts with the page behind them.
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

# Contrasts between what lies beside each other in a row of the timeline.
BARS = """(() => {
    const light = c => { const [r, g, b] = c.match(/[\\d.]+/g).slice(0, 3).map(v => (v /= 255) <= 0.03928 ? v / 12.92
        : ((v + 0.055) / 1.055) ** 2.4); return 0.2126 * r + 0.7152 * g + 0.0722 * b + 0.05; };
    const of = name => light(getComputedStyle(document.querySelector('.legend .' + name)).fill);
    const [page, epoch, data, gap] = [light(getComputedStyle(document.body).backgroundColor), of('epoch'), of('span'), of('gap')];
    return [[page, epoch], [epoch, data], [data, gap], [gap, page]].map(pair => Math.max(...pair) / Math.min(...pair));
})()"""
