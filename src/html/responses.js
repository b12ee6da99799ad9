// The response of one channel epoch: chosen from a list, shown as curves, poles and zeros, and a table of stages.

const Responses = (() => {
    const part = {};
    let epochs; // indexes in the order of the list
    let current = -1;

    const label = index => {
        const epoch = Volume.epochs[index];
        const error = Curves.response(index).error === undefined ? "" : "  ⚠";
        return `${Text.channel(Volume.channels[epoch.channel])}  ${Text.range(epoch.start, epoch.end)}${error}`;
    };

    function inOrder(matches) {
        return d3.range(Volume.epochs.length).filter(matches).sort((a, b) => {
            const [x, y] = [Volume.epochs[a], Volume.epochs[b]];
            return d3.ascending(Text.channel(Volume.channels[x.channel]), Text.channel(Volume.channels[y.channel])) ||
                x.start - y.start;
        });
    }

    function fillList() {
        const list = document.createDocumentFragment();
        for (const index of epochs) {
            const option = Page.element("option", {value: index}, label(index));
            option.selected = index === current;
            list.append(option);
        }
        part.list.replaceChildren(list);
        part.count.textContent = Text.count(epochs.length, "epoch");
    }

    // What the curve's numbers are: counts of the last stage per unit of the first.
    function unitOf(stages) {
        const first = stages.find(s => s.input_units);
        const last = stages.slice().reverse().find(s => s.output_units);
        return first && last ? `${last.output_units} per ${first.input_units}` : "as in the volume";
    }

    function sensitivityOf(epoch) {
        const {sensitivity: value, sensitivity_frequency: frequency} = epoch;
        return value > 0 && frequency > 0 ? {value, frequency} : null;
    }

    function drawPlot(index) {
        const curve = Curves.overall(index);
        if (!curve) {
            const {error} = Curves.response(index);
            const reason = error === undefined ? "There is no frequency below Nyquist to draw." : `No curve: ${error}`;
            part.plot.replaceChildren(Page.element("p", {class: "warning"}, reason));
            return;
        }
        const curves = [curve, ...(part.byStage.checked ? Curves.byStage(index) : [])];
        const values = Page.element("p", {class: "values", "aria-live": "polite"}, "Point at the curves, or use the arrow keys, for values.");
        const epoch = Volume.epochs[index];
        const svg = FrequencyPlot.draw({width: Math.max(280, part.plot.clientWidth), curves,
            sensitivity: sensitivityOf(epoch), nyquist: Curves.nyquist(index), unit: unitOf(Curves.stages(index)),
            label: `Response of ${label(index)}`, tell: lines => values.replaceChildren(
                ...lines.map(line => Page.element("span", {}, line)))});
        part.plot.replaceChildren(svg, curves.length > 1 ? legend(curves) : "", values);
    }

    function legend(curves) {
        return Page.element("ul", {class: "curves"}, ...curves.map(curve => {
            const svg = d3.create("svg").attr("width", 26).attr("height", 10).attr("aria-hidden", "true");
            svg.append("path").attr("class", `curve ${curve.style}`).attr("d", "M0 5H26");
            return Page.element("li", {}, svg.node(), ` ${curve.name}`);
        }));
    }

    const HEADS = ["Stage", "Filter", "Input", "Output", "Gain", "at (Hz)", "Input rate (Hz)", "Factor",
        "Output rate (Hz)", "Delay (s)", "Correction (s)", "Name"];

    function filterText(filter) {
        if (!filter)
            return "gain only";
        const size = filter.poles ? `${filter.poles.length / 2} poles, ${filter.zeros.length / 2} zeros`
            : filter.coefficients ? Text.grouped(filter.coefficients) : "";
        return [filter.kind, filter.type, size && `(${size})`].filter(Boolean).join(" ");
    }

    function stageRow(stage) {
        const number = value => Page.element("td", {class: "n"}, Text.number(value));
        const text = value => Page.element("td", {}, value || "");
        return Page.element("tr", {}, number(stage.stage), text(filterText(Curves.filterOf(stage))),
            text(stage.input_units), text(stage.output_units), number(stage.gain), number(stage.gain_frequency),
            number(stage.input_rate), number(stage.factor), number(stage.output_rate), number(stage.delay),
            number(stage.correction), text(stage.name));
    }

    function drawStages(index) {
        const stages = Curves.stages(index);
        part.stages.replaceChildren();
        if (stages.length === 0)
            return;
        part.stages.append(Page.element("table", {}, Page.element("caption", {}, "Stages"),
            Page.element("thead", {}, Page.element("tr", {}, ...HEADS.map(h => Page.element("th", {scope: "col"}, h)))),
            Page.element("tbody", {}, ...stages.map(stageRow))));
    }

    function drawHead(index) {
        const epoch = Volume.epochs[index];
        const facts = [Text.range(epoch.start, epoch.end), epoch.instrument, epoch.sample_rate && `${Text.number(epoch.sample_rate)} Hz`];
        const {same} = Volume.responses[index];
        if (same !== undefined)
            facts.push(`same response as ${label(same)}`);
        part.head.replaceChildren(Page.element("h3", {}, Text.channel(Volume.channels[epoch.channel])),
            Page.element("p", {}, facts.filter(Boolean).join(" · "), " ",
                Page.element("a", {href: `#timeline-${epoch.channel}`}, "timeline"), " ",
                Page.element("a", {href: `#epoch-${index}`}, "table")));
    }

    function drawSoon() {
        if (current < 0)
            return;
        drawHead(current);
        drawPlot(current);
        part.poles.replaceChildren(...Curves.polesAndZeros(current).map(PolePlot.draw));
        drawStages(current);
        part.view.dataset.epoch = current;
    }

    const draw = Page.onFrame(drawSoon);

    function choose(index) {
        current = index;
        for (const option of part.list.options)
            option.selected = Number(option.value) === index;
        draw();
    }

    function build(box) {
        part.view = box;
        part.list = Page.element("select", {size: 14, "aria-label": "Channel epoch"});
        part.count = Page.element("span", {class: "muted"});
        part.byStage = Page.element("input", {type: "checkbox", id: "by-stage"});
        part.head = Page.element("div", {class: "response-head"});
        part.plot = Page.element("div", {class: "plot"});
        part.poles = Page.element("div", {class: "pole-plots"});
        part.stages = Page.element("div", {class: "scroll stages", tabindex: 0, role: "region", "aria-label": "Stages"});
        box.append(Page.element("div", {class: "chooser"}, part.list, part.count),
            Page.element("div", {class: "response"}, part.head,
                Page.element("label", {class: "control"}, part.byStage, " stage by stage"),
                Page.element("div", {class: "plots"}, part.plot, part.poles), part.stages));
        part.list.addEventListener("change", () => choose(Number(part.list.value)));
        part.byStage.addEventListener("change", draw);
        let width = 0;
        new ResizeObserver(Page.onFrame(() => {
            if (width !== part.plot.clientWidth)
                drawPlot(current);
            width = part.plot.clientWidth;
        })).observe(part.plot);
    }

    function find(matches) {
        epochs = inOrder(matches);
        fillList();
    }

    function show(index) {
        if (!epochs.includes(index))
            epochs = inOrder(() => true);
        current = index;
        fillList();
        draw();
        part.view.scrollIntoView({block: "start"});
        part.list.focus({preventScroll: true});
    }

    function start(box) {
        if (Volume.epochs.length === 0) {
            box.append(Page.element("p", {class: "muted"}, "The volume describes no channel."));
            return;
        }
        build(box);
        epochs = inOrder(() => true);
        current = epochs.find(i => Curves.overall(i)) === undefined ? epochs[0] : epochs.find(i => Curves.overall(i));
        fillList();
        drawSoon();
    }

    return {start, find, show, choose};
})();
