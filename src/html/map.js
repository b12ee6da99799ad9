// The map of stations. It is centred on them, so the antimeridian and the poles are places like all others.

const StationMap = (() => {
    const LEAST_RADIUS = 4; // degrees: what is shown around one station alone, so that a coast helps
    const FAR = 20; // degrees: what is seen of less has a globe beside it
    const COLOURS = 7;
    const WIDE = 60; // degrees from the middle: beyond, the whole globe is drawn
    let svg, projection, base, zoom, middle, isWide, placed, links, box, networks;
    let size = {width: 0, height: 0};

    const hasPosition = e => e && Math.abs(e.latitude) <= 90 && Math.abs(e.longitude) <= 360 &&
        e.latitude !== null && e.longitude !== null;
    const code = Text.station;

    // Each station where it stood last.
    function positions() {
        return Volume.stations.map((station, index) => {
            const epoch = station.epochs.filter(hasPosition).pop();
            return epoch && {station, index, epoch, at: [epoch.longitude, epoch.latitude],
                hasData: station.channels.some(c => Volume.channels[c].spans.length > 0)};
        }).filter(Boolean);
    }

    const networkStyle = network => {
        const at = networks.indexOf(network);
        return at < COLOURS ? `n${at}` : "n-more";
    };

    // The mean direction from the Earth's centre; any meridian when directions cancel.
    function centreOf(points) {
        const rad = Math.PI / 180;
        const x = d3.mean(points, ([lon, lat]) => Math.cos(lat * rad) * Math.cos(lon * rad));
        const y = d3.mean(points, ([lon, lat]) => Math.cos(lat * rad) * Math.sin(lon * rad));
        const z = d3.mean(points, ([, lat]) => Math.sin(lat * rad));
        return [Math.atan2(y, x) / rad, Math.atan2(z, Math.hypot(x, y)) / rad];
    }

    function fit() {
        const points = placed.map(p => p.at);
        const centre = centreOf(points);
        const radius = d3.max(points, p => d3.geoDistance(p, centre)) * 180 / Math.PI;
        isWide = radius > WIDE;
        middle = centre[0];
        projection = isWide ? d3.geoEqualEarth().rotate([-middle, 0])
            : d3.geoAzimuthalEquidistant().rotate([-middle, -centre[1]]);
        const seen = isWide ? {type: "Sphere"}
            : radius < LEAST_RADIUS ? d3.geoCircle().center(centre).radius(LEAST_RADIUS)()
            : {type: "MultiPoint", coordinates: points};
        const edge = isWide ? 8 : 46;
        projection.clipExtent(null).fitExtent([[edge, edge * 0.7], [size.width - edge, size.height - edge * 0.8]], seen);
        base = {k: projection.scale(), at: projection.translate()};
    }

    function drawGrid() {
        const {width, height} = size;
        const bounds = MapGrid.bounds(projection, width, height, middle);
        if (bounds.west === undefined)
            return;
        const step = MapGrid.steps(projection, width, height, bounds);
        const path = d3.geoPath(projection);
        svg.select(".graticule").attr("d", path(MapGrid.lines(bounds, step, middle)));
        svg.select(".land").attr("d", path(Land.shape));
        svg.select(".lakes").attr("d", path(Land.lakes));
        svg.select(".sphere").attr("d", isWide ? path({type: "Sphere"}) : null);
        const labels = svg.select(".degrees").selectAll("text").data(MapGrid.labels(projection, width, height, step, middle));
        labels.exit().remove();
        labels.enter().append("text").merge(labels).attr("x", d => d.x).attr("y", d => d.y).text(d => d.text);
        const bar = MapGrid.scaleBar(projection, width, height);
        svg.select(".scale").attr("display", bar ? null : "none");
        if (!bar)
            return;
        svg.select(".scale path").attr("d", `M${width - 12} ${height - 26}v6h${-bar.pixels}v-6`);
        svg.select(".scale text").attr("x", width - 12 - bar.pixels / 2).attr("y", height - 27).text(bar.text);
    }

    function drawStations() {
        const {width, height} = size;
        const inView = [];
        links.each(function (d) {
            const [x, y] = projection(d.at) || [NaN, NaN];
            const visible = x > -8 && x < width + 8 && y > -8 && y < height + 8;
            this.setAttribute("display", visible ? "inline" : "none");
            if (visible) {
                this.setAttribute("transform", `translate(${x.toFixed(1)},${y.toFixed(1)})`);
                inView.push({x, y, text: d.label, node: this});
            }
        });
        const places = MapLabels.place(inView, width, height);
        inView.forEach(({node}, i) => {
            const text = node.lastChild;
            text.setAttribute("display", places[i] ? "inline" : "none");
            if (places[i]) {
                text.setAttribute("x", places[i].dx.toFixed(1));
                text.setAttribute("y", places[i].dy);
            }
        });
    }

    const redraw = Page.onFrame(() => {
        const t = d3.zoomTransform(svg.node());
        projection.scale(base.k * t.k).translate([base.at[0] * t.k + t.x, base.at[1] * t.k + t.y]);
        const {width, height} = size;
        projection.clipExtent([[-40, -40], [width + 40, height + 40]]);
        drawGrid();
        drawStations();
    });

    function describe({station, epoch}) {
        return [code(station), epoch.name, `${Text.number(epoch.latitude)}°, ${Text.number(epoch.longitude)}°` +
            (epoch.elevation === null ? "" : `, ${Text.number(epoch.elevation)} m`),
            `${Text.count(station.channels.length, "channel")}, ${Text.count(station.epochs.length, "epoch")}`];
    }

    function makeStations() {
        for (const p of placed)
            p.label = Page.clipped(networks.length > 1 ? code(p.station) : p.station.station, 16);
        const anyData = placed.some(p => p.hasData);
        links = svg.select(".stations").selectAll("a").data(placed).enter().append("a")
            .attr("href", d => `#site-${d.index}`).attr("aria-label", d => describe(d).join(", "))
            .attr("class", d => `station ${networkStyle(d.station.network)}${anyData && !d.hasData ? " hollow" : ""}`);
        links.append("path").attr("d", "M0 -6L5.5 4H-5.5Z");
        links.append("text").text(d => d.label);
        links.on("mouseenter mousemove", d => Tip.show(describe(d), d3.event.clientX, d3.event.clientY))
            .on("mouseleave blur", Tip.hide)
            .on("focus", function (d) {
                const rect = this.getBoundingClientRect();
                Tip.show(describe(d), rect.right, rect.bottom);
            });
    }

    // The surroundings of a place, for a station's own page.
    function region(at, size) {
        const around = d3.geoAzimuthalEquidistant().rotate([-at[0], -at[1]])
            .fitExtent([[0, 0], [size, size]], d3.geoCircle().center(at).radius(8)());
        around.clipExtent([[0, 0], [size, size]]);
        const path = d3.geoPath(around);
        const made = d3.create("svg").attr("class", "region").attr("width", size).attr("height", size).attr("role", "img")
            .attr("aria-label", "The station's surroundings");
        made.append("path").attr("class", "land").attr("d", path(Land.shape));
        made.append("path").attr("class", "lakes").attr("d", path(Land.lakes));
        made.append("path").attr("class", "graticule").attr("d", path(d3.geoGraticule().step([5, 5])()));
        for (const {at: place, station} of placed) {
            const [x, y] = around(place) || [NaN, NaN];
            if (x >= 0 && x <= size && y >= 0 && y <= size)
                made.append("g").attr("class", `station ${networkStyle(station.network)}${place === at ? " current" : ""}`)
                    .attr("transform", `translate(${x.toFixed(1)},${y.toFixed(1)})`).append("path").attr("d", "M0 -6L5.5 4H-5.5Z");
        }
        return made.node();
    }

    const MOVES = {ArrowLeft: [60, 0], ArrowRight: [-60, 0], ArrowUp: [0, 60], ArrowDown: [0, -60]};
    const FACTORS = {"+": 1.6, "=": 1.6, "-": 1 / 1.6};

    function press(event) {
        if (event.ctrlKey || event.altKey || event.metaKey)
            return;
        if (MOVES[event.key]) {
            const {k} = d3.zoomTransform(svg.node());
            svg.call(zoom.translateBy, ...MOVES[event.key].map(d => d / k));
        } else if (FACTORS[event.key]) {
            svg.call(zoom.scaleBy, FACTORS[event.key]);
        } else if (event.key === "0" || event.key === "Home") {
            svg.call(zoom.transform, d3.zoomIdentity);
        } else {
            return;
        }
        event.preventDefault();
    }

    // A wheel scrolls the page until the map has the focus, or Ctrl is held.
    function makeZoom() {
        zoom = d3.zoom().scaleExtent([0.3, 1e5]).clickDistance(4).on("zoom", redraw)
            .filter(() => d3.event.type === "wheel"
                ? d3.event.ctrlKey || d3.event.metaKey || box.contains(document.activeElement)
                : !d3.event.button && !d3.event.ctrlKey && !d3.event.touches);
        svg.call(zoom).style("touch-action", "pan-x pan-y").on("keydown", () => press(d3.event));
        Page.onTwoFingers(svg.node(), (factor, dx, dy, {x, y}) => {
            const {k} = d3.zoomTransform(svg.node());
            svg.call(zoom.translateBy, dx / k, dy / k);
            svg.call(zoom.scaleBy, factor, [x, y]);
        });
    }

    function build() {
        const zoomBy = factor => () => svg.call(zoom.scaleBy, factor);
        box.append(Page.element("div", {class: "controls"}, Page.button("−", "Zoom out", zoomBy(1 / 1.6)),
            Page.button("+", "Zoom in", zoomBy(1.6)),
            Page.button("All", "Show all stations", () => svg.call(zoom.transform, d3.zoomIdentity))));
        svg = d3.create("svg").attr("class", "map").attr("tabindex", 0).attr("role", "group").attr("aria-label",
            "Map of stations. Arrow keys move, plus and minus zoom, 0 shows all, Tab goes from station to station.");
        svg.append("path").attr("class", "land");
        svg.append("path").attr("class", "lakes");
        svg.append("path").attr("class", "graticule");
        svg.append("path").attr("class", "sphere");
        svg.append("g").attr("class", "degrees muted");
        const scale = svg.append("g").attr("class", "scale");
        scale.append("path");
        scale.append("text");
        svg.append("g").attr("class", "stations");
        svg.append("g").attr("class", "inset");
        box.append(svg.node());
    }

    function resize() {
        const width = Math.max(200, box.clientWidth);
        size = {width, height: Math.round(Math.min(Math.max(width * 0.45, 280), 480))};
        svg.attr("width", size.width).attr("height", size.height).attr("viewBox", `0 0 ${size.width} ${size.height}`);
        fit();
        drawInset();
        redraw();
    }

    // Where on Earth what is seen lies.
    function drawInset() {
        const inset = svg.select(".inset");
        inset.selectAll("*").remove();
        const centre = centreOf(placed.map(p => p.at));
        if (isWide || size.width < 300 || d3.max(placed, p => d3.geoDistance(p.at, centre)) * 180 / Math.PI > FAR)
            return;
        const globe = Math.min(110, size.height / 3);
        inset.attr("transform", `translate(${size.width - globe - 8},8)`).node()
            .append(Land.globe(centre, globe));
    }

    function legend() {
        const counts = d3.nest().key(p => p.station.network).rollup(list => list.length).object(placed);
        return Page.element("ul", {class: "networks", "aria-label": "Networks"}, ...networks.map(network => {
            const mark = d3.create("svg").attr("width", 14).attr("height", 12).attr("aria-hidden", "true");
            mark.append("g").attr("class", `station ${networkStyle(network)}`).append("path")
                .attr("transform", "translate(7,7)").attr("d", "M0 -6L5.5 4H-5.5Z");
            return Page.element("li", {}, mark.node(), ` ${network || "no network code"} `,
                Page.element("span", {class: "muted"}, Text.grouped(counts[network])));
        }));
    }

    function note() {
        const missing = Volume.stations.length - placed.length;
        if (missing)
            box.append(Page.element("p", {class: "unplaced"}, `${Text.count(missing, "station")} without a position.`));
        box.append(legend());
        const parts = [];
        if (placed.some(p => p.hasData) && placed.some(p => !p.hasData))
            parts.push("Filled: with data in this volume; hollow: described only.");
        parts.push("Drag to move, Ctrl + wheel or two fingers to zoom; keys: arrows, + −, 0 for all. A station leads to what there is of it. Coasts: Natural Earth.");
        box.append(Page.element("p", {class: "muted hint"}, parts.join(" ")));
    }

    function find(matches) {
        if (links)
            links.classed("dimmed", d => !matches(d.index));
    }

    function show(index) {
        if (links)
            links.classed("current", d => d.index === index);
    }

    function start(view) {
        box = view;
        placed = positions();
        networks = [...new Set(placed.map(p => p.station.network))].sort();
        if (placed.length === 0) {
            box.append(Page.element("p", {class: "muted"}, Volume.stations.length
                ? `${Text.count(Volume.stations.length, "station")} without a position.` : "No station is described."));
            return;
        }
        build();
        makeStations();
        makeZoom();
        resize();
        note();
        new ResizeObserver(Page.onFrame(() => box.clientWidth !== size.width && resize())).observe(box);
    }

    return {start, find, show, region, positionOf: index => ((placed || []).find(p => p.index === index) || {}).at};
})();
