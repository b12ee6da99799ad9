// Puts the parts together: the search in the navigation, the places that a link's hash leads to, printing.

const Search = (() => {
    // What can be searched of each channel: its names, and what its station and epochs are called.
    const channelTexts = Volume.channels.map(c => {
        const station = c.station === null ? null : Volume.stations[c.station];
        const texts = [c.network, c.station_code, c.location, c.channel, Text.channel(c)];
        for (const e of station ? station.epochs : [])
            texts.push(e.name);
        for (const i of c.epochs)
            texts.push(Volume.epochs[i].instrument);
        return texts.join(" ").toLowerCase();
    });

    function find(text) {
        const words = text.toLowerCase().split(/\s+/).filter(Boolean);
        const isFound = channelTexts.map(t => words.every(word => t.includes(word)));
        Tables.find(words);
        Timeline.find(index => isFound[index]);
        Responses.find(index => isFound[Volume.epochs[index].channel]);
        StationMap.find(index => words.length === 0 || Volume.stations[index].channels.some(c => isFound[c]));
        return words.length ? isFound.filter(Boolean).length : null;
    }

    function start(nav) {
        const field = Page.element("input", {type: "search", id: "search", autocomplete: "off", spellcheck: "false",
            "aria-label": "Search stations, channels, findings and tables"});
        const found = Page.element("output", {class: "muted", for: "search"});
        let timer = 0;
        field.addEventListener("input", () => {
            clearTimeout(timer);
            timer = setTimeout(() => {
                const count = find(field.value);
                found.textContent = count === null ? "" : Text.count(count, "channel");
            }, 120);
        });
        nav.append(Page.element("span", {class: "search"}, found,
            Page.element("label", {for: "search", class: "muted"}, "Search"), field));
    }

    return {start};
})();

(() => {
    const PLACES = {
        timeline: index => Volume.channels[index] && Timeline.show(index),
        response: index => Volume.epochs[index] && Responses.show(index),
    };

    // #timeline-3 and #response-12 are drawn; #station-3, #channel-3 and #epoch-12 stand in tables.
    function follow() {
        const [, kind, number] = /^#(station|channel|epoch|timeline|response)-(\d+)$/.exec(location.hash) || [];
        if (!kind)
            return;
        const index = Number(number);
        if (PLACES[kind]) {
            PLACES[kind](index);
            return;
        }
        const place = document.getElementById(`${kind}-${number}`);
        if (!place)
            return;
        Tables.show(place.closest("tr"));
        if (kind === "station")
            StationMap.show(index);
        if (kind === "epoch")
            Responses.choose(index);
    }

    Head.start();
    Tables.start();
    document.documentElement.classList.add("drawn");
    Search.start(document.getElementById("nav"));
    StationMap.start(document.getElementById("map-view"));
    Timeline.start(document.getElementById("timeline-view"));
    Responses.start(document.getElementById("responses-view"));
    window.addEventListener("hashchange", follow);
    // A second click on the same link leads there again.
    document.addEventListener("click", event => {
        const link = event.target.closest && event.target.closest("a[href^='#']");
        if (link && link.getAttribute("href") === location.hash)
            follow();
    });
    for (const [event, isPrinted] of [["beforeprint", true], ["afterprint", false]])
        window.addEventListener(event, () => {
            Tables.print(isPrinted);
            Timeline.print(isPrinted);
        });
    follow();
})();
