// Amplitude and phase over frequency, in two panels above each other, with a cross-hair.

const FrequencyPlot = (() => {
    const LEFT = 62;
    const RIGHT = 14;
    const TOP = 22;
    const BETWEEN = 26;
    const BOTTOM = 38;
    const RAISED = {"-": "⁻", 0: "⁰", 1: "¹", 2: "²", 3: "³", 4: "⁴", 5: "⁵", 6: "⁶", 7: "⁷", 8: "⁸", 9: "⁹"};

    const power = value => `10${[...String(Math.round(Math.log10(value)))].map(c => RAISED[c]).join("")}`;

    // Whole powers of ten in a range, as many as there is room for.
    function decades([low, high], most) {
        const all = d3.range(Math.ceil(Math.log10(low) - 1e-9), Math.floor(Math.log10(high) + 1e-9) + 1);
        const step = Math.max(1, Math.ceil(all.length / most));
        return all.filter(n => n % step === 0).map(n => 10 ** n);
    }

    function gridLine(svg, d) {
        svg.append("path").attr("class", "grid").attr("d", d);
    }

    function frame(svg, title, top, height, width) {
        svg.append("rect").attr("class", "panel").attr("x", LEFT).attr("y", top).attr("width", width).attr("height", height);
        svg.append("text").attr("class", "axis-title").attr("x", LEFT).attr("y", top - 7).text(title);
    }

    function drawAxes(svg, box, x, yAmplitude, yPhase) {
        const {width, amplitude, phase} = box;
        for (const f of decades(x.domain(), width / 45)) {
            const at = Math.round(x(f)) + 0.5;
            for (const {top, height} of [amplitude, phase])
                gridLine(svg, `M${at} ${top}v${height}`);
            svg.append("text").attr("class", "tick middle").attr("x", at).attr("y", phase.top + phase.height + 15)
                .text(f >= 1e-3 && f <= 1e4 ? Number(f.toPrecision(3)) : power(f));
        }
        const ticks = decades(yAmplitude.domain(), amplitude.height / 22);
        for (const a of ticks.length > 1 ? ticks : yAmplitude.ticks(4)) {
            const at = Math.round(yAmplitude(a)) + 0.5;
            gridLine(svg, `M${LEFT} ${at}h${width}`);
            svg.append("text").attr("class", "tick end").attr("x", LEFT - 6).attr("y", at + 4)
                .text(ticks.length > 1 ? power(a) : Text.number(a));
        }
        for (const degrees of [-180, -90, 0, 90, 180]) {
            const at = Math.round(yPhase(degrees)) + 0.5;
            gridLine(svg, `M${LEFT} ${at}h${width}`);
            svg.append("text").attr("class", "tick end").attr("x", LEFT - 6).attr("y", at + 4).text(`${degrees}°`);
        }
        svg.append("text").attr("class", "axis-title middle").attr("x", LEFT + width / 2)
            .attr("y", phase.top + phase.height + 32).text("Frequency (Hz)");
    }

    // Lines are broken where there is no value, and phases where they wrap around.
    function drawCurve(svg, curve, x, yAmplitude, yPhase) {
        const points = d3.range(curve.frequency.length);
        const amplitude = d3.line().defined(i => Curves.isDrawn(curve.amplitude[i]))
            .x(i => x(curve.frequency[i])).y(i => yAmplitude(curve.amplitude[i]));
        svg.append("path").attr("class", `curve amplitude ${curve.style}`).attr("clip-path", "url(#amplitude-clip)")
            .attr("data-name", curve.name).attr("d", amplitude(points));
        let d = "";
        let before = null;
        for (const i of points) {
            const value = curve.phase[i];
            const is = typeof value === "number" && isFinite(value);
            if (is)
                d += `${before !== null && Math.abs(value - before) <= 180 ? "L" : "M"}${x(curve.frequency[i]).toFixed(1)} ${yPhase(value).toFixed(1)}`;
            before = is ? value : null;
        }
        svg.append("path").attr("class", `curve phase ${curve.style}`).attr("data-name", curve.name).attr("d", d);
    }

    function drawNyquist(svg, box, x, nyquist) {
        if (nyquist === null)
            return;
        const at = x(nyquist);
        for (const {top, height} of [box.amplitude, box.phase])
            svg.append("path").attr("class", "nyquist").attr("d", `M${at} ${top}v${height}`);
        svg.append("text").attr("class", "note end").attr("x", at - 4).attr("y", box.phase.top + box.phase.height - 6)
            .text(`Nyquist ${Text.number(nyquist)} Hz`);
    }

    // The text stands above the mark, as far to its right as there is room.
    function drawSensitivity(svg, box, x, y, sensitivity) {
        if (!sensitivity)
            return;
        const [cx, cy] = [x(sensitivity.frequency), y(sensitivity.value)];
        svg.append("circle").attr("class", "sensitivity").attr("r", 5).attr("cx", cx).attr("cy", cy);
        const text = `sensitivity ${Text.number(sensitivity.value)} at ${Text.number(sensitivity.frequency)} Hz`;
        const right = LEFT + box.width - 4;
        const isAbove = cy > box.amplitude.top + 24;
        svg.append("text").attr("class", "note").attr("x", Math.min(cx + 6, right - Page.textWidth(text)))
            .attr("y", isAbove ? cy - 10 : cy + 20).text(text);
    }

    function valueText(curve, at) {
        const [amplitude, phase] = [curve.amplitude[at], curve.phase[at]];
        return Curves.isDrawn(amplitude) ? `${curve.name}: ${Text.number(amplitude)}, ${phase.toFixed(2)}°`
            : `${curve.name}: no value`;
    }

    // Follows the pointer or the arrow keys from frequency to frequency and tells the values there.
    function listen(svg, box, x, curves, tell) {
        const hair = svg.append("path").attr("class", "hair");
        const {frequency} = curves[0];
        let at = null;
        function show(i) {
            at = Math.min(Math.max(i, 0), frequency.length - 1);
            hair.attr("d", `M${x(frequency[at])} ${box.amplitude.top}V${box.phase.top + box.phase.height}`);
            tell([`${Text.number(frequency[at])} Hz`, ...curves.map(curve => valueText(curve, at))]);
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

    // curves: at least one; sensitivity: {value, frequency} or null; nyquist in Hz or null; tell: hears lines of text.
    function draw({width, curves, sensitivity, nyquist, unit, label, tell}) {
        const box = layout(width);
        const {frequency} = curves[0];
        const right = Math.max(frequency[frequency.length - 1], nyquist || 0) * 1.12;
        const x = d3.scaleLog().domain([Math.min(frequency[0], sensitivity ? sensitivity.frequency : Infinity), right])
            .range([LEFT, LEFT + box.width]);
        const y = d3.scaleLog().domain(Curves.amplitudeRange(curves, sensitivity ? [sensitivity.value] : []))
            .range([box.amplitude.top + box.amplitude.height, box.amplitude.top]);
        const yPhase = d3.scaleLinear().domain([-190, 190]).range([box.phase.top + box.phase.height, box.phase.top]);
        const svg = d3.create("svg").attr("class", "frequency-plot").attr("width", width).attr("height", box.height)
            .attr("viewBox", `0 0 ${width} ${box.height}`)
            .attr("tabindex", 0).attr("role", "img").attr("aria-label", label);
        svg.append("clipPath").attr("id", "amplitude-clip").append("rect").attr("x", LEFT).attr("y", box.amplitude.top)
            .attr("width", box.width).attr("height", box.amplitude.height);
        frame(svg, `Amplitude (${unit})`, box.amplitude.top, box.amplitude.height, box.width);
        frame(svg, "Phase", box.phase.top, box.phase.height, box.width);
        drawAxes(svg, box, x, y, yPhase);
        drawNyquist(svg, box, x, nyquist);
        curves.forEach(curve => drawCurve(svg, curve, x, y, yPhase));
        drawSensitivity(svg, box, x, y, sensitivity);
        listen(svg, box, x, curves, tell);
        return svg.node();
    }

    return {draw};
})();
