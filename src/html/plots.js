// Amplitude and phase over frequency, in two panels above each other, with a cross-hair.

const FrequencyPlot = (() => {
    const LEFT = 74;
    const RIGHT = 14;
    const TOP = 24;
    const BETWEEN = 30;
    const BOTTOM = 40;
    let made = 0; // clips need names of their own

    function gridLine(svg, d) {
        svg.append("path").attr("class", "grid").attr("d", d);
    }

    // The note stands beside the title, where no curve is.
    function frame(svg, title, note, {top, height}, width) {
        svg.append("rect").attr("class", "panel").attr("x", LEFT).attr("y", top).attr("width", width).attr("height", height);
        svg.append("text").attr("class", "axis-title").attr("x", 4).attr("y", top - 8).text(title);
        if (note && Page.textWidth(title) + Page.textWidth(note) < LEFT + width)
            svg.append("text").attr("class", "note end").attr("x", LEFT + width).attr("y", top - 8).text(note);
    }

    function drawAxes(svg, box, x, yAmplitude, yPhase) {
        const {width, amplitude, phase} = box;
        for (const {at, text} of PlotAxes.ticks(x, 48, true)) {
            for (const {top, height} of [amplitude, phase])
                gridLine(svg, `M${Math.round(at) + 0.5} ${top}v${height}`);
            svg.append("text").attr("class", "tick middle").attr("x", at).attr("y", phase.top + phase.height + 15).text(text);
        }
        for (const {at, text} of PlotAxes.ticks(yAmplitude, 24, false)) {
            gridLine(svg, `M${LEFT} ${Math.round(at) + 0.5}h${width}`);
            svg.append("text").attr("class", "tick end").attr("x", LEFT - 6).attr("y", at + 4).text(text);
        }
        for (const degrees of [-180, -90, 0, 90, 180]) {
            const at = Math.round(yPhase(degrees)) + 0.5;
            gridLine(svg, `M${LEFT} ${at}h${width}`);
            svg.append("text").attr("class", "tick end").attr("x", LEFT - 6).attr("y", at + 4).text(`${degrees}°`);
        }
        svg.append("text").attr("class", "axis-title middle").attr("x", LEFT + width / 2)
            .attr("y", phase.top + phase.height + 33).text("Frequency (Hz)");
    }

    // A phase that goes over an edge comes in again at the other one: no line crosses the panel.
    function phasePath(curve, x, y) {
        let d = "";
        let before = null;
        curve.phase.forEach((value, i) => {
            if (typeof value !== "number" || !isFinite(value)) {
                before = null;
                return;
            }
            const at = x(curve.frequency[i]);
            if (before !== null && Math.abs(value - before.value) > 180) {
                const edge = before.value > value ? 180 : -180;
                const part = (edge - before.value) / (value + 2 * edge - before.value);
                const over = (before.at + part * (at - before.at)).toFixed(1);
                d += `L${over} ${y(edge).toFixed(1)}M${over} ${y(-edge).toFixed(1)}`;
            }
            d += `${before === null ? "M" : "L"}${at.toFixed(1)} ${y(value).toFixed(1)}`;
            before = {value, at};
        });
        return d;
    }

    // Lines are broken where there is no value.
    function drawCurve(svg, curve, x, yAmplitude, yPhase, clip) {
        const points = d3.range(curve.frequency.length);
        const amplitude = d3.line().defined(i => Curves.isDrawn(curve.amplitude[i]))
            .x(i => x(curve.frequency[i])).y(i => yAmplitude(curve.amplitude[i]));
        svg.append("path").attr("class", `curve amplitude ${curve.style}`).attr("clip-path", `url(#${clip})`)
            .attr("data-name", curve.name).attr("d", amplitude(points));
        svg.append("path").attr("class", `curve phase ${curve.style}`).attr("data-name", curve.name)
            .attr("d", phasePath(curve, x, yPhase));
    }

    function drawNyquist(svg, box, x, nyquist) {
        if (nyquist === null)
            return;
        for (const {top, height} of [box.amplitude, box.phase])
            svg.append("path").attr("class", "nyquist").attr("d", `M${x(nyquist)} ${top}v${height}`);
    }

    function drawSensitivity(svg, x, y, sensitivity) {
        if (sensitivity)
            svg.append("circle").attr("class", "sensitivity").attr("r", 5).attr("cx", x(sensitivity.frequency))
                .attr("cy", y(sensitivity.value));
    }

    function valueText(curve, frequency) {
        const value = Curves.at(curve, frequency);
        return value && Curves.isDrawn(value.amplitude)
            ? `${curve.name}: ${Text.number(value.amplitude)}, ${value.phase.toFixed(2)}°` : `${curve.name}: no value`;
    }

    // Follows the pointer or the arrow keys from frequency to frequency and tells the values there.
    function listen(svg, box, x, curves, tell) {
        const hair = svg.append("path").attr("class", "hair");
        const {frequency} = curves[0];
        let at = null;
        function show(i) {
            at = Math.min(Math.max(i, 0), frequency.length - 1);
            hair.attr("d", `M${x(frequency[at])} ${box.amplitude.top}V${box.phase.top + box.phase.height}`);
            tell([`${Text.number(frequency[at])} Hz`, ...curves.map(curve => valueText(curve, frequency[at]))]);
        }
        function near(px) {
            const f = x.invert(px);
            const i = d3.bisectLeft(frequency, f);
            return i > 0 && (i === frequency.length || f / frequency[i - 1] < frequency[i] / f) ? i - 1 : i;
        }
        svg.on("mousemove touchstart", function () {
            show(near((d3.event.touches ? d3.touches(this)[0] : d3.mouse(this))[0]));
        });
        svg.on("keydown", () => {
            const steps = {ArrowLeft: -1, ArrowRight: 1, PageDown: -20, PageUp: 20};
            if (!steps[d3.event.key])
                return;
            d3.event.preventDefault();
            show(at === null ? Math.floor(frequency.length / 2) : at + steps[d3.event.key]);
        });
    }

    function layout(width) {
        const height = Math.min(Math.max(width * 0.36, 190), 300);
        const amplitude = {top: TOP, height};
        const phase = {top: TOP + height + BETWEEN, height: Math.round(height * 0.5)};
        return {width: width - LEFT - RIGHT, amplitude, phase, height: phase.top + phase.height + BOTTOM};
    }

    function scales(box, curves, sensitivity, nyquist) {
        const lows = curves.map(curve => curve.frequency[0]);
        const highs = curves.map(curve => curve.frequency[curve.frequency.length - 1]);
        const place = sensitivity ? [sensitivity.frequency] : [];
        const x = d3.scaleLog().domain([d3.min(lows.concat(place)), d3.max(highs.concat(place, nyquist || 0)) * 1.12])
            .range([LEFT, LEFT + box.width]);
        const y = d3.scaleLog().domain(Curves.amplitudeRange(curves, sensitivity ? [sensitivity.value] : []))
            .range([box.amplitude.top + box.amplitude.height, box.amplitude.top]);
        const yPhase = d3.scaleLinear().domain([-190, 190]).range([box.phase.top + box.phase.height, box.phase.top]);
        return [x, y, yPhase];
    }

    const sensitivityText = sensitivity => sensitivity
        ? `○ sensitivity ${Text.number(sensitivity.value)} at ${Text.number(sensitivity.frequency)} Hz` : "";

    // curves: at least one; sensitivity: {value, frequency} or null; nyquist in Hz or null; tell: hears lines of text.
    function draw({width, curves, sensitivity, nyquist, unit, label, tell}) {
        const box = layout(width);
        const [x, y, yPhase] = scales(box, curves, sensitivity, nyquist);
        const svg = d3.create("svg").attr("class", "frequency-plot").attr("width", width).attr("height", box.height)
            .attr("viewBox", `0 0 ${width} ${box.height}`)
            .attr("tabindex", 0).attr("role", "img").attr("aria-label", label);
        const clip = `amplitude-clip-${++made}`;
        svg.append("clipPath").attr("id", clip).append("rect").attr("x", LEFT).attr("y", box.amplitude.top)
            .attr("width", box.width).attr("height", box.amplitude.height);
        frame(svg, `Amplitude (${unit})`, sensitivityText(sensitivity), box.amplitude, box.width);
        frame(svg, "Phase (degrees)", nyquist === null ? "" : `┆ Nyquist ${Text.number(nyquist)} Hz`, box.phase, box.width);
        drawAxes(svg, box, x, y, yPhase);
        drawNyquist(svg, box, x, nyquist);
        curves.forEach(curve => drawCurve(svg, curve, x, y, yPhase, clip));
        drawSensitivity(svg, x, y, sensitivity);
        listen(svg, box, x, curves, tell);
        return svg.node();
    }

    return {draw};
})();
