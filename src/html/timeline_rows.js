// The rows of the timeline: what they are, how one is drawn, what a point of it means.

const TimelineRows = (() => {
    const HEIGHT = 24;
    const BAND = [5, 14]; // top and height: epochs of the headers
    const DATA = [8, 8]; // data, on top of them
    const BASE = 16; // of texts
    const MANY = 200; // channels from which stations are folded at first
    const WIDE_GAP = 6; // pixels from which a gap is empty but for a thin line

    const epochsOf = channel => channel.epochs.map(i => Volume.epochs[i]);

    // Stations in the order of their names, with their channels.
    function groupsOf(matches) {
        const groups = d3.nest().key(({channel}) => `${channel.network}.${channel.station_code}`)
            .entries(Volume.channels.map((channel, index) => ({channel, index})).filter(({index}) => matches(index)));
        for (const group of groups)
            group.values.sort((a, b) => d3.ascending(a.channel.location, b.channel.location) ||
                d3.ascending(a.channel.channel, b.channel.channel) || a.index - b.index);
        return groups.sort((a, b) => d3.ascending(a.key, b.key));
    }

    // A row for each station and, unless it is folded, for each of its channels.
    function make(matches, isFolded) {
        const groups = groupsOf(matches);
        const isMany = groups.length > 1 && d3.sum(groups, group => group.values.length) > MANY;
        const rows = [];
        for (const group of groups) {
            const first = group.values[0].channel;
            const station = first.station === null ? null : Volume.stations[first.station];
            const folded = isFolded(group.key, isMany);
            const head = {group: group.key, station: first.station, folded, members: group.values,
                name: station && station.epochs.length ? station.epochs[0].name : "not described by headers"};
            rows.push(head);
            if (!folded)
                for (const {channel, index} of group.values)
                    rows.push({channel, index, head, epochs: epochsOf(channel)});
        }
        return rows;
    }

    // Stretches that lie over each other or touch become one.
    function union(lists) {
        const all = [];
        for (const list of lists)
            for (let i = 0; i < list.length; i += 2)
                all.push([list[i], list[i + 1]]);
        const sum = [];
        for (const [start, end] of all.sort((a, b) => a[0] - b[0]))
            if (sum.length && start <= sum[sum.length - 1])
                sum[sum.length - 1] = Math.max(sum[sum.length - 1], end);
            else
                sum.push(start, end);
        return sum;
    }

    // All epochs, data and overlaps of a station's channels as those of one.
    function summed(row) {
        if (!row.sum)
            row.sum = {epochs: row.members.flatMap(({channel}) => epochsOf(channel)),
                spans: union(row.members.map(({channel}) => channel.spans))};
        return row.sum;
    }

    // Epochs as [start, end, …]; an open one ends behind the right edge of all there is.
    const epochMarks = (row, view) => row.epochs.filter(e => e.start !== null)
        .flatMap(e => {
            const end = e.end === null ? view.horizon : Math.min(e.end, view.horizon);
            const left = Math.max(view.x(e.start), -8);
            const right = Math.min(view.x(end), view.width + 8);
            return right < -4 || left > view.width ? [] : [left, Math.max(left + 1, right - 1)];
        });

    // Epochs that lie over each other are one bar.
    function epochBars(row, view) {
        const marks = epochMarks(row, view);
        return row.members ? union([marks]) : marks;
    }

    function addMarks(g, row, view, {spans, overlaps}) {
        const marks = g.append("g").attr("transform", `translate(${view.label},0)`)
            .attr("clip-path", "url(#timeline-clip)");
        const add = (name, list, shape) =>
            list.length && marks.append("path").attr("class", name).attr("d", Spans.path(list, shape));
        add("epoch", epochBars(row, view), () => BAND);
        add("span", Spans.bars(spans, view), () => DATA);
        const gaps = Spans.gaps(spans, view);
        const shape = width => width < WIDE_GAP ? [2, 20] : [11, 2];
        add("halo", Spans.widened(gaps, 1.5, WIDE_GAP), width => width < WIDE_GAP + 3 ? [2, 20] : [7, 10]);
        add("gap", gaps, shape);
        add("overlap", Spans.overlaps(overlaps, view), () => [17, 5]);
    }

    function drawGroup(g, row, view) {
        g.append("rect").attr("class", "group-back").attr("width", view.label + view.width + view.margin)
            .attr("height", HEIGHT);
        if (row.folded)
            addMarks(g, Object.assign({members: row.members}, summed(row)), view, {spans: summed(row).spans, overlaps: []});
        g.append("text").attr("class", "fold").attr("x", 3).attr("y", BASE).text(row.folded ? "▸" : "▾");
        const label = g.append("a").attr("tabindex", -1).append("text").attr("class", "group").attr("x", 16).attr("y", BASE);
        label.text(row.group);
        if (row.station !== null)
            label.node().parentNode.setAttribute("href", `#site-${row.station}`);
        const after = row.folded ? view.label + view.width + 6 : 24 + Page.textWidth(row.group, 15.5); // it is bold
        const text = row.folded ? (view.margin > 20 ? `${row.members.length} ch.` : "")
            : Page.clipped(row.name, Math.floor((view.label + view.width - after) / 7));
        g.append("text").attr("class", "muted").attr("x", after).attr("y", BASE).text(text);
    }

    function drawChannel(g, row, view) {
        const {channel} = row;
        const code = [channel.location, channel.channel].filter(text => text.trim() !== "").join(".");
        g.append("rect").attr("class", "back").attr("width", view.label + view.width + view.margin)
            .attr("height", HEIGHT);
        g.append("a").attr("tabindex", -1).attr("href", `#channel-${row.index}`)
            .append("text").attr("x", 22).attr("y", BASE).text(code + (channel.subchannel ? ` (${channel.subchannel})` : ""));
        addMarks(g, row, view, channel);
        const gaps = Spans.gapCount(channel.spans);
        if (view.margin > 20 && gaps > 0)
            g.append("text").attr("class", "muted end").attr("x", view.label + view.width + view.margin - 6)
                .attr("y", BASE).text(Text.count(gaps, "gap"));
    }

    function draw(g, row, view) {
        g.attr("role", "img").attr("aria-label", row.channel ? `${Text.channel(row.channel)}: ${summary(row)}`
            : `${row.group} ${row.name}: ${Text.count(row.members.length, "channel")}`);
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
        const lines = [Text.channel(channel), `${Text.time(middle)} UTC, day ${Text.dayOfYear(middle)}`];
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

    // What the station has, for a bar that sums it up.
    function describeGroup(row, time) {
        const recording = row.members.filter(({channel}) => Spans.within(channel.spans, time, time).length);
        return [`${row.group} ${row.name}`, `${Text.time(time)} UTC, day ${Text.dayOfYear(time)}`,
            `${Text.count(row.members.length, "channel")}, ${recording.length} with data at this time`];
    }

    return {HEIGHT, make, draw, describe, describeGroup, summary};
})();
