// The curves of an epoch's response out of the volume's data, with what `same` refers to put in its place.

const Curves = (() => {
    const FLOOR = 1e-10; // of a curve's largest amplitude: what is drawn of it at least

    // Where the data of an epoch's response stand: its own index, or that of the equal one.
    function source(index) {
        const {same} = Volume.responses[index];
        return same === undefined ? index : same;
    }

    const response = index => Volume.responses[source(index)];
    const stages = index => (Volume.epochs[index].stages || []).map(i => Volume.stages[i]);
    const filterOf = stage => stage.filter === null || stage.filter === undefined ? null : Volume.filters[stage.filter];

    function overall(index) {
        const {frequency, amplitude, phase, error} = response(index);
        return error === undefined && frequency && frequency.length
            ? {name: "overall", style: "overall", frequency, amplitude, phase} : null;
    }

    const place = frequency => 20 * Math.log10(frequency) + 60;

    // A filter's curve is given at some places, with straight lines between them: of the amplitude's logarithm and
    // of the phase, which goes on beyond 180 degrees where the curve does.
    function atFrequencies(filter, frequencies) {
        const {at} = filter;
        const amplitude = [];
        const phase = [];
        let n = 0;
        for (const frequency of frequencies) {
            const x = place(frequency);
            while (n + 1 < at.length && at[n + 1] <= x + 1e-4)
                ++n;
            const isOn = Math.abs(at[n] - x) < 1e-3 || n + 1 === at.length;
            const part = isOn ? 0 : (x - at[n]) / (at[n + 1] - at[n]);
            const [a, b] = isOn ? [filter.amplitude[n], filter.amplitude[n]] : filter.amplitude.slice(n, n + 2);
            const [p, q] = isOn ? [filter.phase[n], filter.phase[n]] : filter.phase.slice(n, n + 2);
            amplitude.push(a === null || b === null ? NaN : a > 0 && b > 0 ? a ** (1 - part) * b ** part : a + (b - a) * part);
            phase.push(p === null || q === null ? NaN : p + (q - p) * part);
        }
        return {amplitude, phase};
    }

    // A stage's gain times its filter's curve; a gain alone is a flat line.
    function ofStage(stage, position, frequency) {
        const filter = filterOf(stage);
        if (filter && !filter.at)
            return null;
        const gain = stage.gain === undefined ? 1 : stage.gain;
        const turned = gain < 0 ? 180 : 0;
        const curve = filter ? atFrequencies(filter, frequency)
            : {amplitude: frequency.map(() => 1), phase: frequency.map(() => 0)};
        return {
            name: `stage ${stage.stage}`, style: `s${position % 7} d${Math.floor(position / 7) % 3}`, frequency,
            amplitude: curve.amplitude.map(value => Math.abs(gain) * value),
            phase: curve.phase.map(value => Output.wrap(value + turned)),
        };
    }

    function byStage(index) {
        const whole = overall(index);
        return whole ? stages(index).map((stage, i) => ofStage(stage, i, whole.frequency)).filter(Boolean) : [];
    }

    // Amplitude and phase of a curve at any frequency, on the lines between its points; null beyond its ends.
    function at(curve, frequency) {
        const all = curve.frequency;
        const i = d3.bisectLeft(all, frequency * (1 - 1e-9));
        if (i === all.length || (i === 0 && all[0] > frequency * (1 + 1e-6)))
            return null;
        if (i === 0 || all[i] <= frequency * (1 + 1e-9))
            return {amplitude: curve.amplitude[i], phase: curve.phase[i]};
        const part = Math.log(frequency / all[i - 1]) / Math.log(all[i] / all[i - 1]);
        const [a, b] = [curve.amplitude[i - 1], curve.amplitude[i]];
        const turned = Output.wrap(curve.phase[i] - curve.phase[i - 1]);
        return {amplitude: a ** (1 - part) * b ** part, phase: Output.wrap(curve.phase[i - 1] + part * turned)};
    }

    const isDrawn = value => typeof value === "number" && isFinite(value) && value > 0;

    // From the least to the largest amplitude that is drawn; zeros of a filter do not stretch it beyond measure.
    function amplitudeRange(curves, more) {
        let [low, high] = [Infinity, 0];
        for (const {amplitude, style} of curves) {
            const most = d3.max(amplitude.filter(isDrawn)) || 0;
            const floor = most * (style === "overall" ? FLOOR : 1e-5);
            high = Math.max(high, most);
            low = Math.min(low, d3.min(amplitude.filter(a => isDrawn(a) && a >= floor)) || Infinity);
        }
        for (const value of more.filter(isDrawn))
            [low, high] = [Math.min(low, value), Math.max(high, value)];
        return high > 0 ? [low / 1.6, high * 2.5] : [0.1, 10];
    }

    function nyquist(index) {
        const rate = Volume.epochs[index].sample_rate;
        return rate > 0 ? rate / 2 : null;
    }

    // Poles and zeros of analog stages, with how often each occurs.
    function polesAndZeros(index) {
        return stages(index).map(stage => ({stage, filter: filterOf(stage)}))
            .filter(({filter}) => filter && filter.poles && (filter.type === "A" || filter.type === "B"))
            .map(({stage, filter}) => ({stage: stage.stage, unit: filter.type === "A" ? "rad/s" : "Hz",
                poles: counted(filter.poles), zeros: counted(filter.zeros)}));
    }

    function counted(list) {
        const found = new Map();
        for (let i = 0; i + 1 < list.length; i += 2) {
            const [re, im] = [list[i], list[i + 1]];
            if (typeof re !== "number" || typeof im !== "number")
                continue;
            const key = `${re} ${im}`;
            found.set(key, {re, im, count: (found.has(key) ? found.get(key).count : 0) + 1});
        }
        return [...found.values()];
    }

    return {at, response, stages, filterOf, overall, byStage, amplitudeRange, isDrawn, nyquist, polesAndZeros};
})();
