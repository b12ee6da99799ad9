// The axis of time: at each zoom with the date and the day of the year.

const TimeAxis = (() => {
    const HEIGHT = 38;
    const APART = 96; // pixels between two ticks, about

    const scaleOf = view => d3.scaleUtc().domain([view.start * 1000, view.end * 1000]).range([0, view.width]);
    const ticks = view => scaleOf(view).ticks(Math.max(3, Math.floor(view.width / APART)));

    // The time of day where ticks are closer than days.
    function clock(date) {
        const format = d3.utcSecond(date) < date ? "%H:%M:%S.%L" : d3.utcMinute(date) < date ? "%H:%M:%S" : "%H:%M";
        return d3.utcFormat(format)(date);
    }

    const date = d3.utcFormat("%Y-%m-%d");
    const dayOf = time => `day ${Text.dayOfYear(time / 1000)}`;

    // Two lines for each tick: time and, where the day changes, the date; or date and day of the year.
    function labels(view) {
        const all = ticks(view);
        const isFine = all.some(time => d3.utcDay(time) < time);
        let shown = "";
        return all.map(time => {
            const day = `${date(time)} · ${Text.dayOfYear(time / 1000)}`;
            const isNew = day !== shown;
            shown = day;
            return {x: scaleOf(view)(time), upper: isFine ? clock(time) : date(time),
                lower: isFine ? (isNew ? day : "") : dayOf(time)};
        });
    }

    // Texts that would lie over the ones before are left out; the two of a date go together.
    function draw(g, view) {
        g.selectAll("*").remove();
        let [upperEnd, lowerEnd] = [-Infinity, -Infinity];
        for (const {x, upper, lower} of labels(view)) {
            g.append("path").attr("d", `M${x.toFixed(1)} ${HEIGHT - 6}v6`);
            const half = Page.textWidth(upper) / 2;
            const wide = Page.textWidth(lower) / 2;
            const inside = size => Math.min(Math.max(x, size - view.label + 2), view.width + view.margin - size - 2);
            if (inside(half) - half < upperEnd + 6)
                continue;
            upperEnd = inside(half) + half;
            g.append("text").attr("class", "middle upper").attr("x", inside(half).toFixed(1)).attr("y", 11).text(upper);
            if (lower === "" || inside(wide) - wide < lowerEnd + 6)
                continue;
            lowerEnd = inside(wide) + wide;
            g.append("text").attr("class", "middle lower").attr("x", inside(wide).toFixed(1)).attr("y", 25).text(lower);
        }
    }

    const gridPath = (view, height) => ticks(view)
        .map(time => `M${Math.round(view.label + scaleOf(view)(time)) + 0.5} 0V${height}`).join("");

    return {HEIGHT, draw, gridPath};
})();
