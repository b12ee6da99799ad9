// The rows of the timeline: what they are, how one is drawn, what a point of it means.

const TimelineRows = (() => {
    const HEIGHT = 20;
    const BAND = [4, 12]; // top and height: epochs of the headers
    const DATA = [7, 6]; // data, on top of them
    const WIDE_GAP = 6; // pixels from which a gap is empty but for a thin line

    const epochsOf = channel => channel.epochs.map(i => Volume.epochs[i]);

    // Stations and channels in the order of their names, each station's channels below it.
    function make(matches) {
        const groups = d3.nest().key(({channel}) => `${channel.network}.${channel.station_code}`)
            .entries(Volume.channels.map((channel, index) => ({channel, index})).filter(({index}) => matches(index)));
        const rows = [];
        for (const group of groups.sort((a, b) => d3.ascending(a.key, b.key))) {
            const first = group.values[0].channel;
            const station = first.station === null ? null : Volume.stations[first.station];
            rows.push({group: group.key, station: first.station,
                name: station && station.epochs.length ? station.epochs[0].name : "not described by headers"});
            group.values.sort((a, b) => d3.ascending(a.channel.location, b.channel.location) ||
                d3.ascending(a.channel.channel, b.channel.channel) || a.index - b.index);
            for (const {channel, index} of group.values)
                rows.push({channel, index, epochs: epochsOf(channel)});
        }
        return rows;
    }

    // Epochs as [start, end, …]; an open one ends behind the right edge of all there is.
    const epochMarks = (row, view) => row.epochs.filter(e => e.start !== null)
        .flatMap(e => {
            const end = e.end === null ? view.horizon : Math.min(e.end, view.horizon);
            const left = Math.max(view.x(e.start), -8);
            const right = Math.min(view.x(end), view.width + 8);
            return right < -4 || left > view.width ? [] : [left, Math.max(left + 1, right - 1)];
        });

    function drawGroup(g, row, view) {
        g.append("rect").attr("class", "group-back").attr("width", view.label + view.width + view.margin)
            .attr("height", HEIGHT);
        const label = g.append("a").attr("tabindex", -1).append("text").attr("class", "group").attr("x", 4).attr("y", 14);
        label.text(row.group);
        if (row.station !== null)
            label.node().parentNode.setAttribute("href", `#station-${row.station}`);
        const after = 12 + Page.textWidth(row.group, 15.5); // it is bold
        g.append("text").attr("class", "muted").attr("x", after).attr("y", 14)
            .text(Page.clipped(row.name, Math.floor((view.label + view.width - after) / 7)));
    }

    function drawChannel(g, row, view) {
        const {channel} = row;
        const code = [channel.location, channel.channel].filter(text => text.trim() !== "").join(".");
        g.append("rect").attr("class", "back").attr("width", view.label + view.width + view.margin)
            .attr("height", HEIGHT);
        g.append("a").attr("tabindex", -1).attr("href", `#channel-${row.index}`)
            .append("text").attr("x", 14).attr("y", 14).text(code + (channel.subchannel ? ` (${channel.subchannel})` : ""));
        const marks = g.append("g").attr("transform", `translate(${view.label},0)`)
            .attr("clip-path", "url(#timeline-clip)");
        const add = (name, list, shape) =>
            list.length && marks.append("path").attr("class", name).attr("d", Spans.path(list, shape));
        add("epoch", epochMarks(row, view), () => BAND);
        add("span", Spans.bars(channel.spans, view), () => DATA);
        add("gap", Spans.gaps(channel.spans, view), width => width < WIDE_GAP ? [3, 14] : [9.25, 1.5]);
        add("overlap", Spans.overlaps(channel.overlaps, view), () => [13, 4]);
        const gaps = Spans.gapCount(channel.spans);
        if (view.margin > 20 && gaps > 0)
            g.append("text").attr("class", "muted end").attr("x", view.label + view.width + view.margin - 6)
                .attr("y", 14).text(Text.count(gaps, "gap"));
    }

    function draw(g, row, view) {
        if (row.channel)
            drawChannel(g, row, view);
        else
            drawGroup(g, row, view);
    }

    // Lines that tell of several gaps or overlaps under the pointer.
    function describeMarks(name, list) {
        const lines = [];
        for (let i = 0; i < list.length && i < 6; i += 2)
            lines.push(`${name} ${Text.duration(list[i + 1] - list[i])}: ${Text.time(list[i])} – ${Text.time(list[i + 1])}`);
        if (list.length > 6)
            lines.push(`and ${Text.count(list.length / 2 - 3, "more " + name, "more " + name + "s")} under the pointer`);
        return lines;
    }

    // What a channel has from `start` to `end`, a few pixels around the pointer.
    function describe(row, start, end) {
        const {channel} = row;
        const middle = (start + end) / 2;
        const lines = [Text.channel(channel), `${Text.time(middle)} UTC`];
        lines.push(...describeMarks("gap", Spans.gapsWithin(channel.spans, start, end)));
        lines.push(...describeMarks("overlap", Spans.within(channel.overlaps, start, end)));
        const data = Spans.within(channel.spans, middle, middle);
        if (data.length)
            lines.push(`data ${Text.time(data[0])} – ${Text.time(data[1])} (${Text.duration(data[1] - data[0])})`);
        for (const e of row.epochs)
            if (e.start !== null && e.start <= middle && (e.end === null || e.end >= middle))
                lines.push(`epoch ${Text.time(e.start)} – ${Text.time(e.end)}, ` +
                    `${Text.number(e.sample_rate)} Hz${e.instrument ? ", " + Page.clipped(e.instrument, 50) : ""}`);
        if (channel.records)
            lines.push(`in all ${Text.count(channel.records, "record")}, ${Text.count(channel.samples, "sample")}`);
        return lines;
    }

    // One line on a whole channel.
    function summary(row) {
        const {channel} = row;
        const parts = [Text.count(row.epochs.length, "epoch")];
        if (channel.spans.length) {
            const {spans} = channel;
            const length = spans[spans.length - 1] - spans[0];
            parts.push(Text.count(channel.records, "record"), Text.count(channel.samples, "sample"),
                Text.count(Spans.gapCount(spans), "gap"), Text.count(channel.overlaps.length / 2, "overlap"));
            if (length > 0)
                parts.push(`${Text.percent(Spans.covered(spans) / length)} between first and last sample`);
        } else {
            parts.push("no data in this volume");
        }
        return parts.join(" · ");
    }

    return {HEIGHT, make, draw, describe, summary};
})();
