// The timeline: one row per channel over time. Only rows in sight are drawn; their marks are merged by pixel.

const Timeline = (() => {
    const LEAST = 0.2; // seconds that the view is wide at least
    const PRINTED_ROWS = 400;
    const PRINTED_WIDTH = 690;
    const H = TimelineRows.HEIGHT;
    const state = {rows: [], active: -1, domain: null, all: null, horizon: 0};
    const part = {}; // elements
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

    // Hours in 24, days with their month, as the standard's readers are used to.
    function tickText(date) {
        const format = d3.utcSecond(date) < date ? ".%L" : d3.utcMinute(date) < date ? ":%S"
            : d3.utcDay(date) < date ? "%H:%M" : d3.utcMonth(date) < date ? "%b %d"
            : d3.utcYear(date) < date ? "%b" : "%Y";
        return d3.utcFormat(format)(date);
    }

    function drawAxis(svg, shown) {
        const scale = d3.scaleUtc().domain([shown.start * 1000, shown.end * 1000]).range([0, shown.width]);
        const axis = d3.axisTop(scale).ticks(Math.max(2, shown.width / 90)).tickFormat(tickText).tickSizeOuter(0);
        svg.attr("width", shown.label + shown.width + shown.margin);
        svg.select(".axis").attr("transform", `translate(${shown.label},23)`).call(axis);
        svg.select(".caption").text(`${Text.duration(shown.end - shown.start)} UTC`);
    }

    function drawGrid(svg, shown, height) {
        const scale = d3.scaleUtc().domain([shown.start * 1000, shown.end * 1000]).range([0, shown.width]);
        const d = scale.ticks(Math.max(2, shown.width / 90)).map(t => `M${Math.round(shown.label + scale(t)) + 0.5} 0V${height}`);
        svg.select(".grid").attr("d", d.join(""));
    }

    function drawRows(svg, first, last, shown) {
        const height = (last - first) * H;
        svg.attr("width", shown.label + shown.width + shown.margin).attr("height", height);
        drawGrid(svg, shown, height);
        const rows = svg.select(".rows");
        rows.selectAll("g.row").remove();
        for (let i = first; i < last; ++i) {
            const row = state.rows[i];
            const g = rows.append("g").attr("class", row.channel ? "row channel" : "row")
                .attr("transform", `translate(0,${(i - first) * H})`).attr("data-row", i);
            g.classed("active", i === state.active);
            if (row.channel)
                g.attr("data-channel", row.index);
            TimelineRows.draw(g, row, shown);
        }
    }

    function rowsInSight() {
        if (state.isPrinted)
            return [0, Math.min(state.rows.length, PRINTED_ROWS)];
        const top = part.scroll.scrollTop;
        return [Math.max(0, Math.floor(top / H) - 2),
            Math.min(state.rows.length, Math.ceil((top + part.scroll.clientHeight) / H) + 2)];
    }

    function draw() {
        const [first, last] = rowsInSight();
        const shown = view();
        part.space.style.height = `${Math.max(state.isPrinted ? last : state.rows.length, 1) * H}px`;
        part.svg.style("top", `${first * H}px`);
        part.clip.attr("width", shown.width);
        drawRows(part.svg, first, last, shown);
        drawAxis(part.axis, shown);
        part.range.textContent = `${Text.time(shown.start)} – ${Text.time(shown.end)}`;
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
        if (i * H < scroll.scrollTop + H)
            scroll.scrollTop = Math.max(0, i * H - 2 * H);
        else if ((i + 1) * H > scroll.scrollTop + scroll.clientHeight)
            scroll.scrollTop = (i + 2) * H - scroll.clientHeight;
    }

    function activate(i) {
        const row = state.rows[i];
        if (!row || !row.channel)
            return;
        state.active = i;
        const links = [Page.element("a", {href: `#channel-${row.index}`}, "table")];
        if (row.channel.epochs.length)
            links.push(" ", Page.element("a", {href: `#response-${row.channel.epochs[row.channel.epochs.length - 1]}`}, "response"));
        part.status.replaceChildren(Page.element("b", {}, Text.channel(row.channel)), ` ${TimelineRows.summary(row)} `, ...links);
        scrollToRow(i);
        redraw();
    }

    // From channel to channel, over the heads of stations.
    function step(direction) {
        let i = state.active + direction;
        while (state.rows[i] && !state.rows[i].channel)
            i += direction;
        activate(i);
    }

    // Adds to the status line, in place of what was added last.
    function say(text) {
        part.status.querySelectorAll(".said").forEach(said => said.remove());
        part.status.append(Page.element("span", {class: "said"}, text));
    }

    // The row and the time under the pointer.
    function under(event) {
        const box = part.svg.node().getBoundingClientRect();
        const i = Math.floor((event.clientY - part.space.getBoundingClientRect().top) / H);
        return {i, row: state.rows[i], x: event.clientX - box.left - state.label};
    }

    function onMove(event) {
        const {row, x} = under(event);
        if (!row || !row.channel || x < 0 || x > state.width)
            return Tip.hide();
        Tip.show(TimelineRows.describe(row, timeAt(x - 2), timeAt(x + 2)), event.clientX, event.clientY);
    }

    function measure() {
        const width = state.isPrinted ? PRINTED_WIDTH : part.scroll.clientWidth;
        const isNarrow = width < 600;
        state.label = isNarrow ? 84 : 130;
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

    function makeZoom() {
        zoom = d3.zoom().scaleExtent([1, Math.max(1, (state.all[1] - state.all[0]) / LEAST)])
            .filter(() => {
                const e = d3.event;
                if (e.type === "wheel")
                    return e.ctrlKey || e.shiftKey || e.metaKey || part.axis.node().contains(e.target);
                return !e.button && !e.ctrlKey && e.target !== part.scroll; // that would be its scroll bar
            })
            .wheelDelta(() => {
                const e = d3.event; // with Shift a mouse's wheel turns sideways
                return -(e.deltaY || e.deltaX) * (e.deltaMode === 1 ? 0.05 : 0.002) * (e.ctrlKey ? 4 : 1);
            })
            .clickDistance(4)
            .on("zoom", transformed);
        part.zoomed.call(zoom).style("touch-action", "pan-y");
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
        part.printed = Page.element("p", {class: "muted"});
        part.range = Page.element("output", {class: "range"});
        part.frame = Page.element("div", {class: "frame"});
        part.scroll = Page.element("div", {class: "rows-scroll", tabindex: 0, role: "group",
            "aria-label": "Timeline. Arrow keys move, plus and minus zoom, N and P go to the next and previous gap, Enter leads to the response."});
        part.space = Page.element("div", {class: "space"});
        const axis = d3.create("svg").attr("class", "time-axis").attr("height", 24).attr("aria-hidden", "true");
        axis.append("text").attr("class", "caption muted").attr("x", 4).attr("y", 16);
        axis.append("g").attr("class", "axis");
        const svg = d3.create("svg").attr("class", "timeline-rows");
        part.clip = svg.append("clipPath").attr("id", "timeline-clip").append("rect").attr("height", H);
        svg.append("path").attr("class", "grid");
        svg.append("g").attr("class", "rows");
        part.axis = axis;
        part.svg = svg;
        part.zoomed = d3.select(part.frame);
        part.space.append(svg.node());
        part.scroll.append(part.space);
        part.frame.append(axis.node(), part.scroll);
        box.append(TimelineKeys.controls(actions, state), Overview.build(setDomain), part.frame, part.status,
            TimelineKeys.legend(), part.printed);
        box.querySelector(".controls").append(part.range);
    }

    function listen() {
        part.scroll.addEventListener("scroll", redraw, {passive: true});
        part.scroll.addEventListener("mousemove", onMove);
        part.scroll.addEventListener("mouseleave", Tip.hide);
        part.scroll.addEventListener("click", event => activate(under(event).i));
        part.scroll.addEventListener("keydown", event => TimelineKeys.press(event, actions, state));
        new ResizeObserver(Page.onFrame(resize)).observe(part.frame);
    }

    function find(matches) {
        const active = state.rows[state.active];
        state.rows = TimelineRows.make(matches);
        state.active = active ? state.rows.findIndex(row => row.index === active.index) : -1;
        part.scroll.classList.toggle("empty", state.rows.length === 0);
        redraw();
    }

    function show(index) {
        activate(state.rows.findIndex(row => row.index === index));
        part.scroll.scrollIntoView({block: "center"});
        part.scroll.focus({preventScroll: true});
    }

    // On paper nothing scrolls: the first rows stand there all, at the width of a page.
    function print(isPrinted) {
        if (!part.frame)
            return;
        state.isPrinted = isPrinted;
        resize();
        draw();
        part.printed.textContent = isPrinted && state.rows.length > PRINTED_ROWS
            ? `The first ${PRINTED_ROWS} of ${Text.grouped(state.rows.length)} rows.` : "";
    }

    function start(box) {
        if (Volume.channels.length === 0) {
            box.append(Page.element("p", {class: "muted"}, "The volume describes and holds no channel."));
            return;
        }
        state.rows = TimelineRows.make(() => true);
        state.all = extent();
        state.horizon = state.all[1] + (state.all[1] - state.all[0]);
        state.domain = dataExtent() || state.all;
        build(box);
        makeZoom();
        resize();
        listen();
    }

    const actions = {scaleBy, moveBy, showAll, showData, setDomain, step, say};
    return {start, find, show, print};
})();
