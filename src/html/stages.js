// The stages of a response as a table.

const StageTable = (() => {
    const HEADS = ["Stage", "Filter", "Input", "Output", "Gain", "at (Hz)", "Input rate (Hz)", "Factor",
        "Output rate (Hz)", "Delay (s)", "Correction (s)", "Name"];

    function filterText(filter) {
        if (!filter)
            return "gain only";
        const size = filter.poles ? `${filter.poles.length / 2} poles, ${filter.zeros.length / 2} zeros`
            : filter.coefficients ? Text.grouped(filter.coefficients) : "";
        return [filter.kind, filter.type, size && `(${size})`].filter(Boolean).join(" ");
    }

    function row(stage) {
        const number = value => Page.element("td", {class: "n"}, Text.number(value));
        const text = value => Page.element("td", {}, value || "");
        return Page.element("tr", {"data-stage": stage.stage},
            Page.element("th", {scope: "row", class: "n"}, Text.number(stage.stage)), text(filterText(Curves.filterOf(stage))),
            text(stage.input_units), text(stage.output_units), number(stage.gain), number(stage.gain_frequency),
            number(stage.input_rate), number(stage.factor), number(stage.output_rate), number(stage.delay),
            number(stage.correction), text(stage.name));
    }

    function draw(stages) {
        return stages.length === 0 ? [] : [Page.element("table", {}, Page.element("caption", {}, "Stages"),
            Page.element("thead", {}, Page.element("tr", {}, ...HEADS.map(h => Page.element("th", {scope: "col"}, h)))),
            Page.element("tbody", {}, ...stages.map(row)))];
    }

    // The numbers of curves, for who does not see them: a tenth of a decade from row to row.
    function numbers(curves, unit) {
        const {frequency} = curves[0];
        const step = Math.max(1, Math.round(frequency.length / 60));
        const shown = frequency.filter((_, i) => i % step === 0 || i === frequency.length - 1);
        const value = (curve, f) => {
            const at = Curves.at(curve, f);
            return at && Curves.isDrawn(at.amplitude) ? [Text.number(at.amplitude), at.phase.toFixed(2)] : ["", ""];
        };
        const cell = text => Page.element("td", {class: "n"}, text);
        const head = text => Page.element("th", {scope: "col"}, text);
        return Page.element("table", {}, Page.element("caption", {}, "Numbers of the curves"),
            Page.element("thead", {}, Page.element("tr", {}, head("Frequency (Hz)"), ...curves.flatMap(curve =>
                [head(`${curve.name}: amplitude (${unit})`), head(`${curve.name}: phase (°)`)]))),
            Page.element("tbody", {}, ...shown.map(f => Page.element("tr", {},
                Page.element("th", {scope: "row", class: "n"}, Text.number(f)),
                ...curves.flatMap(curve => value(curve, f).map(cell))))));
    }

    // Marks a stage and brings it into sight.
    function show(box, number) {
        for (const each of box.querySelectorAll("tbody tr"))
            each.classList.toggle("current", each.dataset.stage === String(number));
        const found = box.querySelector("tr.current");
        if (found) {
            found.setAttribute("tabindex", "-1");
            found.scrollIntoView({block: "center"});
            found.focus({preventScroll: true});
        }
    }

    return {draw, numbers, show};
})();
