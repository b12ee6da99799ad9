// The strip above the timeline: how many channels have data (or epochs, where nothing has data) over all time,
// and a window over it that is the timeline's view.

const Overview = (() => {
    const HEIGHT = 36;
    let svg, brush, setDomain, state;

    // Stretches that count: data if there are any, epochs otherwise.
    function* stretches(all) {
        if (Volume.channels.some(c => c.spans.length > 0)) {
            for (const {spans} of Volume.channels)
                for (let i = 0; i < spans.length; i += 2)
                    yield [spans[i], spans[i + 1]];
            return;
        }
        for (const e of Volume.epochs)
            if (e.start !== null)
                yield [e.start, e.end === null ? all[1] : e.end];
    }

    // The share of each pixel that stretches cover, summed over channels.
    function density(all, bins) {
        const change = new Float64Array(bins + 2);
        const add = (x, amount) => {
            const bin = Math.floor(x);
            change[bin] += amount * (1 - (x - bin));
            change[bin + 1] += amount * (x - bin);
        };
        const bin = t => Math.min(Math.max((t - all[0]) / (all[1] - all[0]), 0), 1) * bins;
        for (const [from, to] of stretches(all)) {
            add(bin(from), 1);
            add(bin(to), -1);
        }
        let sum = 0;
        return Array.from(change.slice(0, bins), step => Math.max(0, sum += step));
    }

    function drawDensity() {
        const bins = Math.ceil(state.width);
        const heights = density(state.all, bins);
        const y = d3.scaleLinear().domain([0, d3.max(heights) || 1]).range([HEIGHT - 2, 4]);
        const area = d3.area().x((_, i) => i).y0(HEIGHT - 2).y1(y).curve(d3.curveStepAfter);
        svg.select(".density").attr("d", area(heights));
    }

    function brushed() {
        const {sourceEvent, selection} = d3.event;
        if (!sourceEvent || sourceEvent.type === "zoom" || !selection)
            return;
        const [start, end] = state.all;
        setDomain(selection.map(x => start + x / state.width * (end - start)));
    }

    // Shows the view's window; a user's own movement of the brush is left alone.
    function mark(domain) {
        const event = d3.event;
        if (event && event.type === "brush" && event.sourceEvent)
            return;
        const [start, end] = state.all;
        const x = domain.map(t => (t - start) / (end - start) * state.width);
        const middle = (x[0] + x[1]) / 2;
        const half = Math.max((x[1] - x[0]) / 2, 1);
        svg.select(".brush").call(brush.move, [Math.max(0, middle - half), Math.min(state.width, middle + half)]);
    }

    function resize(timeline) {
        state = timeline;
        svg.attr("width", state.label + state.width + state.margin);
        svg.select("g").attr("transform", `translate(${state.label},0)`);
        brush.extent([[0, 0], [state.width, HEIGHT]]);
        svg.select(".brush").call(brush);
        drawDensity();
        const years = [state.all[0], state.all[1]].map(Text.day);
        svg.select(".first").text(years[0]);
        svg.select(".last").attr("x", state.width).text(years[1]);
    }

    function build(onMove) {
        setDomain = onMove;
        svg = d3.create("svg").attr("class", "overview").attr("height", HEIGHT + 14).attr("aria-hidden", "true");
        const g = svg.append("g");
        g.append("path").attr("class", "density");
        g.append("text").attr("class", "first muted").attr("y", HEIGHT + 11);
        g.append("text").attr("class", "last muted end").attr("y", HEIGHT + 11);
        svg.append("text").attr("class", "muted").attr("x", 4).attr("y", 22).text("All time");
        brush = d3.brushX().on("brush end", brushed);
        brush.keyModifiers && brush.keyModifiers(false);
        g.append("g").attr("class", "brush");
        return svg.node();
    }

    return {build, resize, mark};
})();
