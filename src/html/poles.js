// Poles and zeros of an analog stage in the s plane.

const PolePlot = (() => {
    const SIZE = 260;
    const EDGE = 30;

    const magnitudes = points => points.map(p => Math.hypot(p.re, p.im)).filter(m => m > 0);

    // Poles of one stage may be decades apart: then near zero the scale is linear and further out logarithmic.
    function scaleFor(points, isLog) {
        const sizes = magnitudes(points);
        const most = d3.max(sizes) || 1;
        const scale = isLog ? d3.scaleSymlog().constant((d3.min(sizes) || 1) / 2) : d3.scaleLinear();
        return scale.domain([-most * (isLog ? 3 : 1.15), most * (isLog ? 3 : 1.15)]);
    }

    function isSpread(points) {
        const sizes = magnitudes(points);
        return sizes.length > 0 && d3.max(sizes) / d3.min(sizes) > 30;
    }

    function ticksOf(scale, isLog) {
        const [, most] = scale.domain();
        if (!isLog)
            return scale.ticks(4).sort((a, b) => Math.abs(a) - Math.abs(b));
        const top = Math.floor(Math.log10(most));
        const low = Math.ceil(Math.log10(scale.constant()));
        const step = Math.max(1, Math.ceil((top - low + 1) / 3));
        const sizes = d3.range(top, low - 1, -step).map(n => 10 ** n);
        return [0, ...sizes, ...sizes.map(s => -s)];
    }

    function tickLabel(value) {
        const size = Math.abs(value);
        return size !== 0 && (size >= 1e4 || size < 1e-2) ? value.toExponential(0).replace("e+", "e") : Text.number(value);
    }

    // Whether a label of this width has room among those that are there.
    function isFree(taken, at, width) {
        const free = taken.every(other => Math.abs(other.at - at) >= (other.width + width) / 2);
        if (free)
            taken.push({at, width});
        return free;
    }

    function drawAxes(svg, x, y, isLog, unit) {
        svg.append("rect").attr("class", "right-half").attr("x", x(0)).attr("y", EDGE - 16).attr("width", SIZE - 8 - x(0))
            .attr("height", SIZE - 2 * EDGE + 10);
        svg.append("rect").attr("class", "panel").attr("x", EDGE + 8).attr("y", EDGE - 16).attr("width", SIZE - EDGE - 16)
            .attr("height", SIZE - 2 * EDGE + 10);
        const taken = {x: [], y: []};
        for (const t of ticksOf(x, isLog)) {
            svg.append("path").attr("class", t === 0 ? "zero-line" : "grid")
                .attr("d", `M${x(t)} ${EDGE - 16}v${SIZE - 2 * EDGE + 10}M${EDGE + 8} ${y(t)}h${SIZE - EDGE - 16}`);
            const text = tickLabel(t);
            if (isFree(taken.x, x(t), Page.textWidth(text) + 4))
                svg.append("text").attr("class", "tick middle").attr("x", x(t)).attr("y", SIZE - EDGE + 8).text(text);
            if (isFree(taken.y, y(t), 13))
                svg.append("text").attr("class", "tick end").attr("x", EDGE + 4).attr("y", y(t) + 4).text(text);
        }
        svg.append("text").attr("class", "axis-title").attr("x", 2).attr("y", 10).text(`imaginary part (${unit})`);
        svg.append("text").attr("class", "axis-title middle").attr("x", (EDGE + SIZE) / 2).attr("y", SIZE - 6)
            .text(`real part (${unit})`);
    }

    function drawPoint(svg, p, kind, x, y, unit) {
        const sign = p.im < 0 ? "−" : "+";
        const g = svg.append("g").attr("class", kind).attr("transform", `translate(${x(p.re)},${y(p.im)})`);
        if (kind === "pole")
            g.append("path").attr("d", "M-4.5 -4.5L4.5 4.5M-4.5 4.5L4.5 -4.5");
        else
            g.append("circle").attr("r", 4.5);
        if (p.count > 1)
            g.append("text").attr("x", 7).attr("y", -5).text(`×${p.count}`);
        const lines = [kind + (p.count > 1 ? ` ×${p.count}` : ""),
            `${Text.number(p.re)} ${sign} ${Text.number(Math.abs(p.im))} i ${unit}`];
        if (unit === "rad/s")
            lines.push(`${Text.number(Math.hypot(p.re, p.im) / 2 / Math.PI)} Hz`);
        g.on("mousemove", () => Tip.show(lines, d3.event.clientX, d3.event.clientY)).on("mouseleave", Tip.hide);
    }

    function drawPlane(stage, isLog) {
        const points = stage.poles.concat(stage.zeros);
        const x = scaleFor(points, isLog).range([EDGE + 8, SIZE - 8]);
        const y = x.copy().range([SIZE - EDGE - 6, EDGE - 16]);
        const svg = d3.create("svg").attr("class", "pole-plot").attr("width", SIZE).attr("height", SIZE).attr("role", "img")
            .attr("aria-label", `${Text.count(d3.sum(stage.poles, p => p.count), "pole")} and ` +
                `${Text.count(d3.sum(stage.zeros, p => p.count), "zero")} of stage ${stage.stage}`);
        drawAxes(svg, x, y, isLog, stage.unit);
        stage.zeros.forEach(p => drawPoint(svg, p, "zero", x, y, stage.unit));
        stage.poles.forEach(p => drawPoint(svg, p, "pole", x, y, stage.unit));
        return svg.node();
    }

    function draw(stage) {
        const points = stage.poles.concat(stage.zeros);
        const log = Page.element("input", {type: "checkbox"});
        log.checked = isSpread(points);
        const box = Page.element("figure", {class: "poles"}, Page.element("figcaption", {},
            Page.element("b", {}, `Stage ${stage.stage}`), ` × poles, ○ zeros (${stage.unit}) `,
            Page.element("label", {class: "control"}, log, " log scale")));
        box.append(drawPlane(stage, log.checked));
        log.addEventListener("change", () => box.lastChild.replaceWith(drawPlane(stage, log.checked)));
        return box;
    }

    return {draw};
})();
