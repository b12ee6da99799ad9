// Buttons, keys and legend of the timeline, and the way from gap to gap.

const TimelineKeys = (() => {
    function activeSpans(state) {
        const row = state.rows[state.active];
        return row ? row.channel.spans : [];
    }

    // Centres the view on the next (or previous) gap of the active row, wide enough to see the data beside it.
    function toGap(actions, state, direction) {
        if (state.active < 0)
            actions.step(1);
        const spans = activeSpans(state);
        const middle = (state.domain[0] + state.domain[1]) / 2;
        const gaps = d3.range(1, spans.length - 1, 2).map(i => [spans[i], spans[i + 1]]);
        const slack = (state.domain[1] - state.domain[0]) * 1e-3;
        const ahead = gaps.filter(([from, to]) => direction * ((from + to) / 2 - middle) > slack);
        const gap = direction > 0 ? ahead[0] : ahead[ahead.length - 1];
        if (!gap)
            return;
        const length = Math.max((gap[1] - gap[0]) * 12, 10);
        const centre = (gap[0] + gap[1]) / 2;
        actions.setDomain([centre - length / 2, centre + length / 2]);
        actions.say(`gap of ${Text.duration(gap[1] - gap[0])}: ${Text.time(gap[0])} – ${Text.time(gap[1])}`);
    }

    function openResponse(state) {
        const row = state.rows[state.active];
        if (row && row.epochs.length)
            location.hash = `#response-${row.channel.epochs[row.channel.epochs.length - 1]}`;
    }

    const KEYS = {
        "+": actions => actions.scaleBy(2),
        "=": actions => actions.scaleBy(2),
        "-": actions => actions.scaleBy(0.5),
        "0": actions => actions.showAll(),
        Home: actions => actions.showAll(),
        ArrowLeft: actions => actions.moveBy(-0.2),
        ArrowRight: actions => actions.moveBy(0.2),
        ArrowDown: actions => actions.step(1),
        ArrowUp: actions => actions.step(-1),
        n: (actions, state) => toGap(actions, state, 1),
        p: (actions, state) => toGap(actions, state, -1),
        Enter: (actions, state) => openResponse(state),
    };

    function press(event, actions, state) {
        const act = KEYS[event.key];
        if (!act || event.ctrlKey || event.altKey || event.metaKey || event.target.closest("a"))
            return;
        event.preventDefault();
        act(actions, state);
    }

    function controls(actions, state) {
        const make = (label, title, act) => Page.button(label, title, act);
        return Page.element("div", {class: "controls"},
            make("−", "Zoom out", () => actions.scaleBy(0.5)),
            make("+", "Zoom in", () => actions.scaleBy(2)),
            make("←", "Earlier", () => actions.moveBy(-0.5)),
            make("→", "Later", () => actions.moveBy(0.5)),
            make("All", "Show all time", () => actions.showAll()),
            make("Data", "Show the time that has data", () => actions.showData()),
            make("‹ gap", "Previous gap of the chosen row", () => toGap(actions, state, -1)),
            make("gap ›", "Next gap of the chosen row", () => toGap(actions, state, 1)));
    }

    function legend() {
        const item = (name, text) => {
            const svg = d3.create("svg").attr("width", 22).attr("height", 14).attr("aria-hidden", "true");
            if (name !== "span")
                svg.append("rect").attr("class", "epoch").attr("y", 1).attr("width", 22).attr("height", 12);
            if (name !== "epoch")
                svg.append("rect").attr("class", "span").attr("y", 4).attr("width", 22).attr("height", 6);
            if (name === "gap")
                svg.append("rect").attr("class", "gap").attr("x", 10).attr("width", 2).attr("height", 14);
            if (name === "overlap")
                svg.append("rect").attr("class", "overlap").attr("x", 8).attr("y", 10).attr("width", 6).attr("height", 4);
            return Page.element("li", {}, svg.node(), ` ${text}`);
        };
        return Page.element("div", {class: "legend"},
            Page.element("ul", {}, item("epoch", "epoch of the headers"), item("span", "data"), item("gap", "gap"),
                item("overlap", "overlap")),
            Page.element("p", {class: "muted hint"}, "Drag to move, Ctrl + wheel to zoom (wheel alone on the axis); keys: ",
                "arrows, + −, 0 for all, N and P for gaps, Enter for the response."));
    }

    return {press, controls, legend};
})();
