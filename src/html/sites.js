// One station: where it is, what it recorded, its channels by epoch as a table of what changed, comments.

const Sites = (() => {
    const part = {};
    let current = -1;
    let isSeen = false;

    const cell = (text, name = "td") => Page.element(name, name === "th" ? {scope: "row"} : {}, text);
    const head = names => Page.element("thead", {}, Page.element("tr", {}, ...names.map(n => Page.element("th", {scope: "col"}, n))));
    const table = (title, names, rows) => Page.element("div", {class: "scroll", tabindex: 0, role: "region", "aria-label": title},
        Page.element("table", {}, Page.element("caption", {}, title), head(names), Page.element("tbody", {}, ...rows)));
    const degrees = value => value === null ? "" : `${Text.number(value)}°`;
    const metres = value => value === null ? "" : `${Text.number(value)} m`;

    // What an epoch says, in words, for a comparison with the one before.
    function facts(index) {
        const e = Volume.epochs[index];
        return [["rate", `${Text.number(e.sample_rate)} Hz`], ["sensor", e.instrument],
            ["sensitivity", e.sensitivity === null ? "" : `${Text.number(e.sensitivity)} ${Output.unit(Curves.stages(index), "")} at ${Text.number(e.sensitivity_frequency)} Hz`],
            ["azimuth", degrees(e.azimuth)], ["dip", degrees(e.dip)], ["depth", metres(e.depth)],
            ["latitude", degrees(e.latitude)], ["longitude", degrees(e.longitude)], ["elevation", metres(e.elevation)]];
    }

    const sourceOf = index => Volume.responses[index].same === undefined ? index : Volume.responses[index].same;

    function changes(index, before) {
        const now = facts(index);
        if (before === null)
            return now.slice(0, 6).filter(([, value]) => value).map(([name, value]) => `${name} ${value}`).join(" · ");
        const old = facts(before);
        const parts = now.map(([name, value], i) => value === old[i][1] ? "" : `${name} ${old[i][1] || "none"} → ${value || "none"}`).filter(Boolean);
        if (sourceOf(index) !== sourceOf(before) && !parts.some(text => text.startsWith("sensitivity")))
            parts.push("response changed");
        return parts.join(" · ") || "nothing that is shown here";
    }

    function channelRows(station) {
        const channels = station.channels.slice().sort((a, b) => d3.ascending(Text.channel(Volume.channels[a]), Text.channel(Volume.channels[b])));
        return channels.flatMap(c => {
            const epochs = Volume.channels[c].epochs.slice().sort((a, b) => Volume.epochs[a].start - Volume.epochs[b].start);
            return epochs.map((index, i) => Page.element("tr", {}, cell(i === 0 ? Text.channel(Volume.channels[c]) : "", i === 0 ? "th" : "td"),
                cell(Text.day(Volume.epochs[index].start)), cell(Volume.epochs[index].end === null ? "open" : Text.day(Volume.epochs[index].end)),
                Page.element("td", {class: i === 0 ? "" : "changed"}, changes(index, i === 0 ? null : epochs[i - 1])),
                Page.element("td", {}, Page.element("a", {href: `#response-${index}`}, "response"), " ",
                    Page.element("a", {href: `#timeline-${c}`}, "timeline"))));
        });
    }

    const epochRows = station => station.epochs.map(e => Page.element("tr", {}, cell(Text.day(e.start), "th"),
        cell(e.end === null ? "open" : Text.day(e.end)), cell(e.name), cell(degrees(e.latitude)), cell(degrees(e.longitude)),
        cell(metres(e.elevation))));

    // Those of the station and of its channels, as the table of all comments has them.
    function commentRows(station) {
        const name = Text.station(station);
        return Tables.rowsOf("comments-table").filter(row => {
            const of = row.cells[0].textContent;
            return of === name || of.startsWith(`${name}.`);
        }).map(row => Page.element("tr", {}, cell(row.cells[0].textContent, "th"), cell(row.cells[1].textContent),
            cell(row.cells[2].textContent), cell(row.cells[4].textContent)));
    }

    function timeline(station) {
        const width = Math.max(300, part.box.clientWidth);
        const label = width < 600 ? 84 : 150;
        const margin = width < 600 ? 8 : 70;
        const [start, end] = Timeline.extent();
        const view = {start, end, width: width - label - margin, label, margin, horizon: 2 * end - start};
        view.x = t => (t - start) / (end - start) * view.width;
        const rows = TimelineRows.make(index => station.channels.includes(index), () => false).filter(row => row.channel);
        const height = TimeAxis.HEIGHT + rows.length * TimelineRows.HEIGHT;
        const svg = d3.create("svg").attr("class", "site-timeline").attr("width", width).attr("height", height)
            .attr("role", "group").attr("aria-label", `Timeline of ${Text.station(station)}`);
        svg.append("clipPath").attr("id", "site-clip").append("rect").attr("width", view.width).attr("height", TimelineRows.HEIGHT);
        TimeAxis.draw(svg.append("g").attr("class", "axis").attr("transform", `translate(${label},0)`), view);
        rows.forEach((row, i) => {
            const g = svg.append("g").attr("class", "still").attr("transform", `translate(0,${TimeAxis.HEIGHT + i * TimelineRows.HEIGHT})`);
            TimelineRows.draw(g, row, view);
            g.selectAll("[clip-path]").attr("clip-path", "url(#site-clip)");
        });
        return svg.node();
    }

    function describe(station) {
        const last = station.epochs[station.epochs.length - 1];
        const data = station.channels.filter(c => Volume.channels[c].spans.length);
        const records = d3.sum(data, c => Volume.channels[c].records);
        const parts = [last && last.name, last && last.latitude !== null ? `${degrees(last.latitude)}, ${degrees(last.longitude)}, ${metres(last.elevation)}` : "no position",
            Text.count(station.channels.length, "channel"),
            data.length ? `data of ${Text.count(data.length, "channel")} in ${Text.count(records, "record")}` : "no data in this volume"];
        return parts.filter(Boolean).join(" · ");
    }

    function draw(index) {
        const station = Volume.stations[index];
        current = index;
        part.list.value = index;
        const at = StationMap.positionOf(index);
        const place = Page.element("div", {class: "site-place"});
        if (at)
            place.append(StationMap.region(at, 260), Land.globe(at, 120));
        const comments = commentRows(station);
        part.box.replaceChildren(
            Page.element("h3", {}, Text.station(station)), Page.element("p", {}, describe(station), " ",
                Page.element("a", {href: `#station-${index}`}, "table")), place,
            table("Epochs of the station", ["Start", "End", "Site", "Latitude", "Longitude", "Elevation"], epochRows(station)),
            table("Channels by epoch, and what changed", ["Channel", "Start", "End", "What it is, then what changed", "Show"], channelRows(station)),
            ...(comments.length ? [table("Comments", ["Of", "Start", "End", "Comment"], comments)] : []));
        if (station.channels.length)
            part.box.append(timeline(station));
        part.box.dataset.station = index;
    }

    function show(index) {
        if (!part.box)
            return;
        draw(index);
        StationMap.show(index);
        part.view.parentNode.scrollIntoView({block: "start"});
        part.list.focus({preventScroll: true});
    }

    // What nobody sees is drawn when it comes into sight.
    function drawInSight() {
        if (isSeen && current >= 0 && part.box.dataset.station !== String(current))
            draw(current);
    }

    function watch() {
        new IntersectionObserver(entries => {
            isSeen = entries[entries.length - 1].isIntersecting;
            drawInSight();
        }, {rootMargin: "400px"}).observe(part.view);
        addEventListener("beforeprint", () => draw(current));
    }

    function fill(indexes) {
        part.list.replaceChildren(...indexes.map(i => Page.element("option", {value: i}, Text.station(Volume.stations[i]))));
        part.list.value = current;
    }

    const sorted = matches => d3.range(Volume.stations.length).filter(matches)
        .sort((a, b) => d3.ascending(Text.station(Volume.stations[a]), Text.station(Volume.stations[b])));

    // What is shown is one of the stations that the search leaves.
    function find(matches) {
        if (!part.box)
            return;
        const left = sorted(matches);
        fill(left);
        if (!left.includes(current) && left.length) {
            current = left[0];
            drawInSight();
        }
        part.view.classList.toggle("empty", left.length === 0);
    }

    function start(view) {
        if (!view || Volume.stations.length === 0) {
            for (const part of document.querySelectorAll("#site, #nav a[href='#site']"))
                part.hidden = true;
            return;
        }
        part.view = view;
        part.list = Page.element("select", {"aria-label": "Station"});
        part.box = Page.element("div", {class: "site"});
        view.append(Page.element("div", {class: "controls"}, Page.element("label", {}, "Station ", part.list)), part.box);
        part.list.addEventListener("change", () => {
            draw(Number(part.list.value));
            Address.set({place: `site-${current}`});
        });
        const all = sorted(() => true);
        fill(all);
        current = all[0];
        watch();
    }

    return {start, show, find};
})();
