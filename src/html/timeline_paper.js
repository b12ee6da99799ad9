// The timeline on paper: blocks of rows, each with the axis of time above it, as wide as the page.

const TimelinePaper = (() => {
    const WIDTH = 1000;
    const LABEL = 150;
    const MARGIN = 70;
    const ROWS = 36; // of a block, which fits on a page
    const MOST = 1080;

    function drawBlock(rows, view) {
        const height = TimeAxis.HEIGHT + rows.length * TimelineRows.HEIGHT;
        const svg = d3.create("svg").attr("class", "timeline-paper").attr("viewBox", `0 0 ${WIDTH} ${height}`)
            .attr("width", "100%");
        svg.append("clipPath").attr("id", "paper-clip").append("rect").attr("width", view.width).attr("height", TimelineRows.HEIGHT);
        TimeAxis.draw(svg.append("g").attr("class", "axis").attr("transform", `translate(${LABEL},0)`), view);
        const below = svg.append("g").attr("transform", `translate(0,${TimeAxis.HEIGHT})`);
        below.append("path").attr("class", "grid").attr("d", TimeAxis.gridPath(view, rows.length * TimelineRows.HEIGHT));
        rows.forEach((row, i) => {
            const g = below.append("g").attr("class", "still").attr("transform", `translate(0,${i * TimelineRows.HEIGHT})`);
            TimelineRows.draw(g, row, view);
            g.selectAll("[clip-path]").attr("clip-path", "url(#paper-clip)");
        });
        return svg.node();
    }

    function draw(rows, shown) {
        const width = WIDTH - LABEL - MARGIN;
        const {start, end, horizon} = shown;
        const view = {start, end, horizon, width, label: LABEL, margin: MARGIN,
            x: t => (t - start) / (end - start) * width};
        const blocks = [Page.element("p", {}, `${Text.time(start)} – ${Text.time(end)} UTC`)];
        for (let i = 0; i < Math.min(rows.length, MOST); i += ROWS)
            blocks.push(drawBlock(rows.slice(i, Math.min(i + ROWS, MOST)), view));
        if (rows.length > MOST)
            blocks.push(Page.element("p", {}, `The first ${MOST} of ${Text.grouped(rows.length)} rows.`));
        return blocks;
    }

    return {draw};
})();
