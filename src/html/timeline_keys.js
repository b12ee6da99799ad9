// Buttons, keys and legend of the timeline, and the way from gap to gap.

const TimelineKeys = (() => {
    function activeSpans(state) {
        const row = state.rows[state.active];
        return row ? row.channel.spans : [];
    }

    // Where the search for a gap begins: under the pointer, at the gap that was shown last or the time that was chosen,
    // else in the middle of the view.
    function origin(actions, state) {
        if (state.pointed) {
            const {i, at} = state.pointed;
            state.pointed = null; // from there on it goes from gap to gap
            actions.activate(i, at);
        } else if (state.active < 0) {
            actions.step(1);
        }
        return state.at === null ? (state.domain[0] + state.domain[1]) / 2 : state.at;
    }

    // Centres the view on the next (or previous) gap of the row, wide enough to see the data beside it.
    function toGap(actions, state, direction) {
        const from = origin(actions, state);
        const spans = activeSpans(state);
        const middleOf = ([start, end]) => (start + end) / 2;
        const gaps = d3.range(1, spans.length - 1, 2).map(i => [spans[i], spans[i + 1]]);
        const ahead = gaps.filter(gap => direction * (middleOf(gap) - from) > 1e-5);
        const gap = direction > 0 ? ahead[0] : ahead[ahead.length - 1];
        if (!gap) {
            actions.say(`no ${direction > 0 ? "later" : "earlier"} gap`);
            return;
        }
        state.at = middleOf(gap);
        const length = Math.max((gap[1] - gap[0]) * 12, 10);
        actions.setDomain([state.at - length / 2, state.at + length / 2]);
        actions.say(`gap of ${Text.duration(gap[1] - gap[0])}: ${Text.time(gap[0])} – ${Text.time(gap[1])}`);
    }

    function openResponse(state) {
        const row = state.rows[state.active];
        if (row && row.epochs.length)
            Address.go(`response-${row.channel.epochs[row.channel.epochs.length - 1]}`);
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
            make("gap ›", "Next gap of the chosen row", () => toGap(actions, state, 1)),
            make("▸ fold", "Fold stations", () => actions.foldAll(true)),
            make("▾ unfold", "Unfold stations", () => actions.foldAll(false)));
    }

    function legend() {
        const item = (name, text) => {
            const svg = d3.create("svg").attr("width", 22).attr("height", 14).attr("aria-hidden", "true");
            if (name !== "span")
                svg.append("rect").attr("class", "epoch").attr("y", 1).attr("width", 22).attr("height", 12);
            if (name !== "epoch")
                svg.append("rect").attr("class", "span").attr("y", 4).attr("width", 22).attr("height", 6);
            if (name === "gap")
                svg.append("rect").attr("class", "halo").attr("x", 8.5).attr("width", 5).attr("height", 14);
            if (name === "gap")
                svg.append("rect").attr("class", "gap").attr("x", 10).attr("width", 2).attr("height", 14);
            if (name === "overlap")
                svg.append("rect").attr("class", "overlap").attr("x", 8).attr("y", 10).attr("width", 6).attr("height", 4);
            return Page.element("li", {}, svg.node(), ` ${text}`);
        };
        return Page.element("div", {class: "legend"},
            Page.element("ul", {}, item("epoch", "epoch of the headers"), item("span", "data"), item("gap", "gap"),
                item("overlap", "overlap")),
            Page.element("p", {class: "muted hint"}, "Drag to move, Ctrl + wheel to zoom (wheel alone on the axis), or two fingers; a station folds its channels; keys: ",
                "arrows, + −, 0 for all, N and P for gaps, Enter for the response."));
    }

    return {press, controls, legend};
})();
