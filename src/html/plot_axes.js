// Ticks of axes: of as many decades as there are, never fewer than two, and none over another.

const PlotAxes = (() => {
    const RAISED = {"-": "⁻", 0: "⁰", 1: "¹", 2: "²", 3: "³", 4: "⁴", 5: "⁵", 6: "⁶", 7: "⁷", 8: "⁸", 9: "⁹"};
    const power = exponent => `10${[...String(exponent)].map(c => RAISED[c]).join("")}`;

    function label(value) {
        const exponent = Math.floor(Math.log10(value) + 1e-9);
        if (exponent >= -3 && exponent <= 4)
            return Text.number(value);
        const factor = Number((value / 10 ** exponent).toPrecision(6));
        return factor === 1 ? power(exponent) : `${factor}·${power(exponent)}`;
    }

    // Whole powers of ten; where there are fewer than two, 1, 2 and 5 of each; else whatever is round.
    function values([low, high], most) {
        const exponents = d3.range(Math.ceil(Math.log10(low) - 1e-9), Math.floor(Math.log10(high) + 1e-9) + 1);
        if (exponents.length >= 2) {
            const step = Math.max(1, Math.ceil(exponents.length / most));
            return exponents.filter(n => n % step === 0).map(n => 10 ** n);
        }
        const begin = Math.floor(Math.log10(low));
        const fine = d3.range(begin, begin + 3).flatMap(n => [1, 2, 5].map(k => k * 10 ** n))
            .filter(value => value >= low && value <= high);
        return fine.length >= 2 ? fine : d3.ticks(low, high, Math.max(2, Math.min(4, most)));
    }

    // Ticks of a logarithmic scale, `apart` pixels from each other at least; `isAcross` counts the labels' width.
    function ticks(scale, apart, isAcross) {
        const [from, to] = scale.range();
        const most = Math.max(2, Math.floor(Math.abs(to - from) / apart));
        let last = -Infinity;
        return values(scale.domain(), most).map(value => ({value, text: label(value), at: scale(value)}))
            .sort((a, b) => a.at - b.at).filter(({text, at}) => {
                const room = isAcross ? Page.textWidth(text) / 2 : 6;
                if (at - room < last + 4)
                    return false;
                last = at + room;
                return true;
            });
    }

    return {ticks, label};
})();
