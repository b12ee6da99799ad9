// The responses of channel epochs, one or several over each other, shown as curves, poles and zeros, and a table of stages.

const Responses = (() => {
    const MOST = 14; // curves over each other
    const PRINTED = 100;
    const part = {};
    let chosen = []; // indexes of epochs, the first is the one that all is told of
    let listed = []; // those that the search leaves
    let shownUnit = "";

    const current = () => chosen.length ? chosen[0] : -1;
    const {label} = Chooser;

    const kind = () => part.kind.querySelector("input:checked").value;

    function sensitivityOf(epoch) {
        const {sensitivity: value, sensitivity_frequency: frequency} = epoch;
        return value > 0 && frequency > 0 ? {value, frequency} : null;
    }

    function styled(curve, i) {
        const epoch = Volume.epochs[chosen[i]];
        return Object.assign({}, curve, {style: `over s${i % 7} d${i % 3}`,
            name: `${Text.channel(Volume.channels[epoch.channel])} from ${Text.day(epoch.start)}`});
    }

    // The curves of what is chosen, as the kind of output that is asked for.
    function curvesOf(indexes) {
        const wanted = kind();
        const turned = (index, curve) => Output.turn(curve, Output.steps(Curves.stages(index), wanted));
        const [first] = indexes;
        const whole = Curves.overall(first);
        if (!whole)
            return [];
        if (indexes.length > 1)
            return indexes.map((index, i) => Curves.overall(index) && styled(turned(index, Curves.overall(index)), i)).filter(Boolean);
        return [turned(first, whole), ...(part.byStage.checked ? Curves.byStage(first) : [])];
    }

    function why(index) {
        const {error} = Curves.response(index);
        const reason = error === undefined ? "There is no frequency below Nyquist to draw." : `No curve: ${error}`;
        return Page.element("p", {class: "warning"}, reason);
    }

    function plotOf(indexes, width, tell) {
        const curves = curvesOf(indexes);
        if (curves.length === 0)
            return null;
        const [first] = indexes;
        const stages = Curves.stages(first);
        const isAsStated = Output.steps(stages, kind()) === 0;
        shownUnit = Output.unit(stages, kind());
        const svg = FrequencyPlot.draw({width, curves, unit: shownUnit, tell,
            sensitivity: indexes.length === 1 && isAsStated ? sensitivityOf(Volume.epochs[first]) : null,
            nyquist: Curves.nyquist(first), label: `Response of ${indexes.map(label).join(", ")}`});
        return {svg, curves};
    }

    function drawPlot() {
        const values = Page.element("p", {class: "values", "aria-live": "polite"}, "Point at the curves, or use the arrow keys, for values.");
        const made = plotOf(chosen, Math.max(280, part.plot.clientWidth), lines => values.replaceChildren(
            ...lines.map(line => Page.element("span", {}, line))));
        if (!made) {
            part.plot.replaceChildren(why(current()));
            return;
        }
        const numbers = Page.element("details", {class: "numbers"}, Page.element("summary", {}, "Numbers as a table"));
        numbers.addEventListener("toggle", () => numbers.open && numbers.children.length < 2 &&
            numbers.append(Page.element("div", {class: "scroll", tabindex: 0, role: "region", "aria-label": "Numbers of the curves"},
                StageTable.numbers(made.curves, shownUnit))));
        part.made = made;
        part.plot.replaceChildren(made.svg, made.curves.length > 1 ? legend(made.curves) : "", values, numbers);
    }

    function legend(curves) {
        return Page.element("ul", {class: "curves"}, ...curves.map(curve => {
            const svg = d3.create("svg").attr("width", 26).attr("height", 10).attr("aria-hidden", "true");
            svg.append("path").attr("class", `curve ${curve.style}`).attr("d", "M0 5H26");
            return Page.element("li", {}, svg.node(), ` ${curve.name}`);
        }));
    }

    // How far the response is from what is stated.
    function sensitivityText(epoch) {
        if (epoch.sensitivity === null)
            return "";
        const stated = `sensitivity ${Text.number(epoch.sensitivity)} at ${Text.number(epoch.sensitivity_frequency)} Hz`;
        if (epoch.computed === null)
            return stated;
        const off = 100 * (epoch.computed / Math.abs(epoch.sensitivity) - 1);
        const shown = Math.abs(off) < 0.005 ? "0.00 %"
            : Math.abs(off) < 1000 ? `${off < 0 ? "−" : "+"}${Math.abs(off).toFixed(2)} %`
            : `${Text.number(1 + off / 100)} times as much`;
        return `${stated}; response there ${Text.number(epoch.computed)} (${shown})`;
    }

    function drawHead(index) {
        const epoch = Volume.epochs[index];
        const facts = [Text.range(epoch.start, epoch.end), epoch.instrument, epoch.sample_rate && `${Text.number(epoch.sample_rate)} Hz`,
            sensitivityText(epoch)];
        const {same} = Volume.responses[index];
        if (same !== undefined)
            facts.push(`same response as ${label(same)}`);
        const {station} = Volume.channels[epoch.channel];
        part.head.replaceChildren(Page.element("h3", {}, Text.channel(Volume.channels[epoch.channel])),
            Page.element("p", {}, facts.filter(Boolean).join(" · "), " ",
                Page.element("a", {href: `#timeline-${epoch.channel}`}, "timeline"), " ",
                Page.element("a", {href: `#epoch-${index}`}, "table"), " ",
                Page.element("a", {href: `#site-${station}`}, "station")));
    }

    function drawSoon() {
        part.body.hidden = chosen.length === 0;
        part.none.hidden = chosen.length > 0;
        if (chosen.length === 0) {
            delete part.view.dataset.epoch;
            return;
        }
        const index = current();
        const stages = Curves.stages(index);
        part.kind.hidden = !Output.motion(Output.inputOf(stages));
        drawHead(index);
        drawPlot();
        part.poles.replaceChildren(...Curves.polesAndZeros(index).map(PolePlot.draw));
        part.stages.replaceChildren(...StageTable.draw(stages));
        part.view.dataset.epoch = index;
    }

    const draw = Page.onFrame(drawSoon);

    // A choice of the user's.
    function take(indexes) {
        chosen = indexes.slice(0, MOST);
        Chooser.mark(chosen);
        if (chosen.length)
            Address.set({place: `response-${chosen[0]}`, with: chosen.slice(1).join(",")});
        draw();
    }

    function buildControls() {
        part.byStage = Page.element("input", {type: "checkbox", id: "by-stage"});
        part.kind = Page.element("span", {class: "kinds", role: "radiogroup", "aria-label": "Output"}, ...["", ...Output.KINDS].map(kind =>
            Page.element("label", {}, Page.element("input", {type: "radio", name: "output", value: kind}), ` ${kind || "as in the volume"}`)));
        setKind("");
        part.paper = Page.element("input", {type: "checkbox"});
        const name = () => `response ${label(current())}`;
        part.byStage.addEventListener("change", draw);
        part.kind.addEventListener("change", () => {
            Address.set({as: kind()});
            draw();
        });
        const act = (text, title, run) => Page.button(text, title, () => current() >= 0 && run());
        return Page.element("div", {class: "controls control"},
            Page.element("label", {class: "control"}, part.byStage, " stage by stage"),
            part.kind,
            act("Components", "The components of this instrument over each other", () => take(Chooser.components(current()))),
            act("Epochs", "All epochs of this channel over each other", () => take(Chooser.epochsOf(current()))),
            act("CSV", "Save the curves as CSV", () => part.made && Export.saveCsv(name(), part.made.curves, shownUnit)),
            act("SVG", "Save the picture as SVG", () => part.made && Export.saveSvg(name(), part.made.svg)),
            Page.element("label", {class: "control"}, part.paper, " all of them on paper"));
    }

    function build(box) {
        part.view = box;
        part.head = Page.element("div", {class: "response-head"});
        part.plot = Page.element("div", {class: "plot"});
        part.poles = Page.element("div", {class: "pole-plots"});
        part.stages = Page.element("div", {class: "scroll stages", tabindex: 0, role: "region", "aria-label": "Stages"});
        part.printed = Page.element("div", {class: "printed"});
        part.none = Page.element("p", {class: "muted"}, "Nothing found: no response to show.");
        part.body = Page.element("div", {class: "response"}, part.head, buildControls(),
            Page.element("div", {class: "plots"}, part.plot, part.poles), part.stages);
        box.append(Chooser.build(take), Page.element("div", {}, part.none, part.body), part.printed);
        let width = 0;
        new ResizeObserver(Page.onFrame(() => {
            if (width !== part.plot.clientWidth && chosen.length)
                drawPlot();
            width = part.plot.clientWidth;
        })).observe(part.plot);
    }

    // What is shown is always one of those that are listed.
    function find(matches) {
        if (!part.view)
            return;
        listed = Chooser.find(matches, chosen);
        const left = chosen.filter(index => matches(index));
        if (left.length === chosen.length && left.length > 0)
            return;
        chosen = left.length ? left : listed.slice(0, 1);
        Chooser.mark(chosen);
        draw();
    }

    function show(index, others = []) {
        if (!part.view)
            return;
        if (!listed.includes(index))
            listed = Chooser.find(() => true, [index]);
        chosen = [index, ...others.filter(i => Volume.epochs[i] && i !== index)].slice(0, MOST);
        Chooser.mark(chosen);
        draw();
        part.view.parentNode.scrollIntoView({block: "start"});
        Chooser.focus();
    }

    // What a row of a table leads to, beside it.
    function choose(index) {
        if (!part.view)
            return;
        chosen = [index];
        Chooser.mark(chosen);
        draw();
    }

    // A stage of an epoch's response.
    function showStage(index, stage) {
        show(index);
        drawSoon();
        StageTable.show(part.stages, stage);
    }

    function setKind(wanted) {
        if (!part.kind)
            return;
        const known = Output.KINDS.includes(wanted) ? wanted : "";
        for (const input of part.kind.querySelectorAll("input"))
            input.checked = input.value === known;
        draw();
    }

    // On paper what is chosen, or all that the search leaves.
    function print(isPrinted) {
        if (!part.view)
            return;
        const isAll = isPrinted && part.paper.checked;
        part.body.classList.toggle("replaced", isAll);
        part.printed.replaceChildren(...(isAll ? listed.slice(0, PRINTED).map(index => {
            const made = plotOf([index], 900, () => {});
            return Page.element("figure", {}, Page.element("figcaption", {}, label(index)), made ? made.svg : why(index));
        }) : []));
    }

    function start(box) {
        if (Volume.epochs.length === 0) {
            box.append(Page.element("p", {class: "muted"}, "The volume describes no channel."));
            return;
        }
        build(box);
        listed = Chooser.find(() => true, []);
        const first = listed.find(i => Curves.overall(i));
        chosen = [first === undefined ? listed[0] : first];
        Chooser.mark(chosen);
        drawSoon();
    }

    return {start, find, show, showStage, choose, setKind, print};
})();
