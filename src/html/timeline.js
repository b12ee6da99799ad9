// The timeline: a row for each station and channel over time. Only rows in sight are drawn; their marks are merged by pixel.

const Timeline = (() => {
    const LEAST = 0.2; // seconds that the view is wide at least
    const TOLD = 200; // gaps of the chosen row that are told as text
    const H = TimelineRows.HEIGHT;
    // Where the next gap is looked for from: `pointed` is the row and time under the pointer, `at` the chosen time.
    const state = {rows: [], active: -1, domain: null, all: null, horizon: 0, at: null, pointed: null,
        folded: null, toggled: new Set(), matches: () => true};
    const part = {}; // elements
    const views = []; // who is told what is in view
    let zoom;

    // The time that all there is takes. Ends in the future are those of open epochs; they do not count.
    function extent() {
        const now = Date.now() / 1000;
        const times = [];
        for (const e of Volume.epochs)
            times.push(e.start, e.end);
        for (const c of Volume.channels)
            times.push(c.spans[0], c.spans[c.spans.length - 1]);
        const known = times.filter(t => typeof t === "number" && t < now);
        for (const t of [Volume.written, Volume.end])
            if (t !== null && t < now)
                known.push(t);
        const [start = 0, end = 0] = known.length ? d3.extent(known) : [];
        const margin = Math.max((end - start) * 0.02, 1);
        return [start - margin, end + margin];
    }

    function dataExtent() {
        const start = d3.min(Volume.channels, c => c.spans[0]);
        const end = d3.max(Volume.channels, c => c.spans[c.spans.length - 1]);
        if (start === undefined)
            return null;
        const margin = Math.max((end - start) * 0.02, 0.5);
        return [start - margin, end + margin];
    }

    function view() {
        const [start, end] = state.domain;
        const {width, label, margin} = state;
        return {start, end, width, label, margin, horizon: state.horizon, x: t => (t - start) / (end - start) * width};
    }

    const timeAt = x => state.domain[0] + x / state.width * (state.domain[1] - state.domain[0]);

    function drawAxis(svg, shown) {
        svg.attr("width", shown.label + shown.width + shown.margin);
        TimeAxis.draw(svg.select(".axis").attr("transform", `translate(${shown.label},0)`), shown);
        svg.select(".caption").text(shown.label > 100 ? Text.duration(shown.end - shown.start) : "");
    }

    function drawRows(svg, first, last, shown) {
        const height = (last - first) * H;
        svg.attr("width", shown.label + shown.width + shown.margin).attr("height", height);
        svg.select(".grid").attr("d", TimeAxis.gridPath(shown, height));
        const rows = svg.select(".rows");
        rows.selectAll("g.row").remove();
        for (let i = first; i < last; ++i) {
            const row = state.rows[i];
            const g = rows.append("g").attr("class", row.channel ? "row channel" : "row station-row")
                .attr("transform", `translate(0,${(i - first) * H})`).attr("data-row", i);
            g.classed("active", i === state.active);
            if (row.channel)
                g.attr("data-channel", row.index);
            TimelineRows.draw(g, row, shown);
        }
    }

    // The station of the topmost row stays in sight.
    function drawStuck(shown) {
        const top = state.rows[Math.floor(part.scroll.scrollTop / H)];
        const head = top && top.channel ? top.head : null;
        part.stuck.attr("display", head ? null : "none").attr("width", shown.label + shown.width + shown.margin);
        part.stuck.selectAll("g").remove();
        if (head)
            TimelineRows.draw(part.stuck.append("g").attr("class", "row station-row"), head, shown);
    }

    function rowsInSight() {
        const top = part.scroll.scrollTop;
        return [Math.max(0, Math.floor(top / H) - 2),
            Math.min(state.rows.length, Math.ceil((top + part.scroll.clientHeight) / H) + 2)];
    }

    function draw() {
        const [first, last] = rowsInSight();
        const shown = view();
        part.space.style.height = `${Math.max(state.rows.length, 1) * H}px`;
        part.svg.style("top", `${first * H}px`);
        part.clip.attr("width", shown.width);
        drawRows(part.svg, first, last, shown);
        drawStuck(shown);
        drawAxis(part.axis, shown);
        part.range.textContent = `${Text.time(shown.start)} – ${Text.time(shown.end)} UTC`;
        part.scroll.dataset.start = shown.start;
        part.scroll.dataset.end = shown.end;
    }

    const redraw = Page.onFrame(draw);

    // The zoom's transform is what is in view of the whole extent.
    function transformed() {
        const t = d3.zoomTransform(part.zoomed.node());
        const [start, end] = state.all;
        const {label, width} = state;
        const seconds = x => start + ((x - t.x) / t.k - label) / width * (end - start);
        state.domain = [seconds(label), seconds(label + width)];
        Overview.mark(state.domain);
        redraw();
        for (const hear of views)
            hear(view());
    }

    function setDomain([from, to]) {
        const [start, end] = state.all;
        const length = Math.min(Math.max(to - from, LEAST), end - start);
        const first = Math.min(Math.max((from + to - length) / 2, start), end - length);
        const {label, width} = state;
        const k = (end - start) / length;
        const x = label - k * (label + (first - start) / (end - start) * width);
        part.zoomed.call(zoom.transform, d3.zoomIdentity.translate(x, 0).scale(k));
    }

    const scaleBy = factor => part.zoomed.call(zoom.scaleBy, factor);

    function moveBy(share) {
        const length = state.domain[1] - state.domain[0];
        setDomain(state.domain.map(t => t + share * length));
    }

    const showAll = () => setDomain(state.all);
    const showData = () => setDomain(dataExtent() || state.all);

    function scrollToRow(i) {
        const {scroll} = part;
        if (i * H < scroll.scrollTop + 2 * H)
            scroll.scrollTop = Math.max(0, i * H - 2 * H);
        else if ((i + 1) * H > scroll.scrollTop + scroll.clientHeight)
            scroll.scrollTop = (i + 2) * H - scroll.clientHeight;
    }

    // Gaps and overlaps of a row as text.
    function tellGaps(row) {
        const {spans, overlaps} = row.channel;
        const list = d3.range(1, spans.length - 1, 2).map(i => ["gap", spans[i], spans[i + 1]])
            .concat(d3.range(0, overlaps.length, 2).map(i => ["overlap", overlaps[i], overlaps[i + 1]]))
            .sort((a, b) => a[1] - b[1]);
        const items = list.slice(0, TOLD).map(([name, from, to]) =>
            Page.element("li", {}, `${name} of ${Text.duration(to - from)}: ${Text.time(from)} – ${Text.time(to)}`));
        if (list.length > TOLD)
            items.push(Page.element("li", {}, `and ${Text.grouped(list.length - TOLD)} more`));
        part.gaps.hidden = list.length === 0;
        part.gaps.firstElementChild.textContent = `${Text.count(list.length, "gap or overlap", "gaps and overlaps")} as text`;
        part.gaps.lastElementChild.replaceChildren(...items);
    }

    function activate(i, at = null) {
        const row = state.rows[i];
        if (!row || !row.channel)
            return;
        state.active = i;
        state.at = at;
        const links = [Page.element("a", {href: `#channel-${row.index}`}, "table")];
        if (row.channel.epochs.length)
            links.push(" ", Page.element("a", {href: `#response-${row.channel.epochs[row.channel.epochs.length - 1]}`}, "response"));
        part.status.replaceChildren(Page.element("b", {}, Text.channel(row.channel)), ` ${TimelineRows.summary(row)} `, ...links);
        tellGaps(row);
        scrollToRow(i);
        redraw();
    }

    // From channel to channel, over the heads of stations.
    function step(direction) {
        state.pointed = null;
        let i = state.active + direction;
        while (state.rows[i] && !state.rows[i].channel)
            i += direction;
        activate(i);
    }

    function remake() {
        const active = state.rows[state.active];
        state.rows = TimelineRows.make(state.matches,
            (key, isMany) => (state.folded === null ? isMany : state.folded) !== state.toggled.has(key));
        state.active = active ? state.rows.findIndex(row => row.index === active.index) : -1;
        redraw();
    }

    function toggle(key) {
        if (!state.toggled.delete(key))
            state.toggled.add(key);
        remake();
    }

    function foldAll(isFolded) {
        state.folded = isFolded;
        state.toggled.clear();
        remake();
    }

    // Adds to the status line, in place of what was added last.
    function say(text) {
        part.status.querySelectorAll(".said").forEach(said => said.remove());
        part.status.append(Page.element("span", {class: "said"}, text));
    }

    // The row and the time under the pointer.
    function under(event) {
        const box = part.svg.node().getBoundingClientRect();
        const x = event.clientX - box.left - state.label;
        const isStuck = part.stuck.node().contains(event.target);
        const i = isStuck ? state.rows.indexOf(state.rows[Math.floor(part.scroll.scrollTop / H)].head)
            : Math.floor((event.clientY - part.space.getBoundingClientRect().top) / H);
        return {i, row: state.rows[i], x, time: x >= 0 && x <= state.width ? timeAt(x) : null};
    }

    function onMove(event) {
        const {i, row, x, time} = under(event);
        state.pointed = row && row.channel && time !== null ? {i, at: time} : null;
        if (!row || time === null || (!row.channel && !row.folded))
            return Tip.hide();
        Tip.show(row.channel ? TimelineRows.describe(row, timeAt(x - 2), timeAt(x + 2))
            : TimelineRows.describeGroup(row, time), event.clientX, event.clientY);
    }

    function onClick(event) {
        const {i, row, time} = under(event);
        if (!row || event.target.closest("a"))
            return;
        if (row.members) {
            toggle(row.group);
            return;
        }
        activate(i, time);
        Address.set({place: `timeline-${row.index}`});
    }

    function measure() {
        const width = part.scroll.clientWidth;
        const isNarrow = width < 600;
        state.label = isNarrow ? 84 : 150;
        state.margin = isNarrow ? 8 : 70;
        state.width = Math.max(60, width - state.label - state.margin);
    }

    function resize() {
        const {domain} = state;
        measure();
        const box = [[state.label, 0], [state.label + state.width, 1]];
        zoom.extent(box).translateExtent(box);
        Overview.resize(state);
        setDomain(domain);
    }

    // One finger scrolls the page.
    function makeZoom() {
        zoom = d3.zoom().scaleExtent([1, Math.max(1, (state.all[1] - state.all[0]) / LEAST)])
            .filter(() => {
                const e = d3.event;
                if (e.type === "wheel")
                    return e.ctrlKey || e.shiftKey || e.metaKey || part.axis.node().contains(e.target);
                return !e.touches && !e.button && !e.ctrlKey && e.target !== part.scroll; // that would be its scroll bar
            })
            .wheelDelta(() => {
                const e = d3.event; // with Shift a mouse's wheel turns sideways
                return -(e.deltaY || e.deltaX) * (e.deltaMode === 1 ? 0.05 : 0.002) * (e.ctrlKey ? 4 : 1);
            })
            .clickDistance(4)
            .on("zoom", transformed);
        part.zoomed.call(zoom).style("touch-action", "pan-x pan-y");
        Page.onTwoFingers(part.frame, (factor, dx, dy, {x}) => {
            moveBy(-dx / state.width);
            part.zoomed.call(zoom.scaleBy, factor, [x, 0]);
        });
        part.frame.addEventListener("wheel", event => {
            if (Math.abs(event.deltaX) <= Math.abs(event.deltaY) || event.shiftKey)
                return;
            event.preventDefault();
            moveBy(event.deltaX / state.width);
        }, {passive: false});
    }

    function build(box) {
        part.status = Page.element("p", {class: "status", "aria-live": "polite"},
            "Choose a row to see its numbers; point at marks for exact times.");
        part.gaps = Page.element("details", {class: "gaps"}, Page.element("summary"), Page.element("ul"));
        part.gaps.hidden = true;
        part.printed = Page.element("div", {class: "printed"});
        part.range = Page.element("output", {class: "range"});
        part.frame = Page.element("div", {class: "frame"});
        part.scroll = Page.element("div", {class: "rows-scroll", tabindex: 0, role: "group",
            "aria-label": "Timeline. Arrow keys move, plus and minus zoom, N and P go to the next and previous gap, Enter leads to the response."});
        part.space = Page.element("div", {class: "space"});
        const axis = d3.create("svg").attr("class", "time-axis").attr("height", TimeAxis.HEIGHT).attr("aria-hidden", "true");
        axis.append("text").attr("class", "caption muted").attr("x", 4).attr("y", 25);
        axis.append("g").attr("class", "axis");
        const svg = d3.create("svg").attr("class", "timeline-rows");
        part.clip = svg.append("clipPath").attr("id", "timeline-clip").append("rect").attr("height", H);
        svg.append("path").attr("class", "grid");
        svg.append("g").attr("class", "rows");
        part.axis = axis;
        part.svg = svg;
        part.stuck = d3.create("svg").attr("class", "stuck").attr("height", H).attr("aria-hidden", "true");
        part.zoomed = d3.select(part.frame);
        part.space.append(svg.node());
        part.scroll.append(part.stuck.node(), part.space);
        part.frame.append(axis.node(), part.scroll);
        box.append(TimelineKeys.controls(actions, state), Overview.build(setDomain), part.frame, part.status, part.gaps,
            TimelineKeys.legend(), part.printed);
        box.querySelector(".controls").append(part.range);
    }

    function listen() {
        part.scroll.addEventListener("scroll", redraw, {passive: true});
        part.scroll.addEventListener("mousemove", onMove);
        part.scroll.addEventListener("mouseleave", () => {
            state.pointed = null;
            Tip.hide();
        });
        part.scroll.addEventListener("click", onClick);
        part.scroll.addEventListener("keydown", event => TimelineKeys.press(event, actions, state));
        new ResizeObserver(Page.onFrame(resize)).observe(part.frame);
    }

    function find(matches) {
        if (!part.frame)
            return;
        state.matches = matches;
        remake();
        part.scroll.classList.toggle("empty", state.rows.length === 0);
    }

    function show(index) {
        if (!state.matches(index))
            state.matches = () => true;
        remake();
        const head = state.rows.find(row => row.members && row.members.some(member => member.index === index));
        if (head && head.folded)
            toggle(head.group);
        activate(state.rows.findIndex(row => row.index === index));
        part.scroll.scrollIntoView({block: "center"});
        part.scroll.focus({preventScroll: true});
    }

    // On paper nothing scrolls: the rows stand in blocks, each with the axis above it.
    function print(isPrinted) {
        if (part.frame)
            part.printed.replaceChildren(...(isPrinted ? TimelinePaper.draw(state.rows, view()) : []));
    }

    function start(box) {
        if (Volume.channels.length === 0) {
            box.append(Page.element("p", {class: "muted"}, "The volume describes and holds no channel."));
            return;
        }
        state.all = extent();
        state.horizon = state.all[1] + (state.all[1] - state.all[0]);
        state.domain = dataExtent() || state.all;
        build(box);
        makeZoom();
        remake();
        resize();
        listen();
    }

    const actions = {scaleBy, moveBy, showAll, showData, setDomain, step, activate, say, foldAll};

    // Calls `hear` whenever another time is in view.
    function follow(hear) {
        views.push(hear);
        if (state.domain && part.frame)
            hear(view());
    }

    return {start, find, show, print, extent: () => state.all, follow, setDomain, moveBy};
})();
