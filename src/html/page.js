// Puts the parts together: the search in the navigation, the places that the address leads to, printing.

const Search = (() => {
    const part = {};
    let channelTexts = null;

    // What can be searched of each channel: its names, what its station and epochs are called, and what was found of it.
    function textsOfChannels() {
        const findings = Findings.byChannel();
        return Volume.channels.map((c, index) => {
            const station = c.station === null ? null : Volume.stations[c.station];
            const texts = [c.network, c.station_code, c.location, c.channel, Text.channel(c)];
            for (const e of station ? station.epochs : [])
                texts.push(e.name);
            for (const i of c.epochs)
                texts.push(Volume.epochs[i].instrument, Text.day(Volume.epochs[i].start));
            return [...texts, ...c.formats, ...findings[index]].join(" ").toLowerCase();
        });
    }

    const timesOf = c => c.epochs.flatMap(i => [Volume.epochs[i].start, Volume.epochs[i].end])
        .concat(c.spans.length ? [c.spans[0], c.spans[c.spans.length - 1]] : []);

    function find(text) {
        const words = Words.make(text);
        channelTexts = channelTexts || (words.length ? textsOfChannels() : null);
        const isFound = Volume.channels.map((c, i) => words.length === 0 || Words.match(words, channelTexts[i], timesOf(c)));
        const isSite = index => words.length === 0 || Volume.stations[index].channels.some(c => isFound[c]);
        Tables.find(words);
        const findings = Findings.find(words);
        Timeline.find(index => isFound[index]);
        Strips.find(index => isFound[index]);
        Responses.find(index => isFound[Volume.epochs[index].channel]);
        StationMap.find(isSite);
        Sites.find(isSite);
        tell(words, isFound.filter(Boolean).length, findings);
    }

    function tell(words, channels, findings) {
        const parts = [channels && Text.count(channels, "channel"), findings && Text.count(findings, "finding")].filter(Boolean);
        const rows = document.querySelector("#tables .block:not(.empty)");
        part.found.textContent = words.length === 0 ? "" : parts.length ? parts.join(", ") : rows ? "in tables" : "nothing found";
    }

    // Shows what the address says.
    function follow(text) {
        if (part.field.value === text)
            return;
        part.field.value = text;
        find(text);
    }

    function start(nav) {
        part.field = Page.element("input", {type: "search", id: "search", autocomplete: "off", spellcheck: "false",
            "aria-label": "Search stations, channels, findings and tables", title: "Names, rules, severities, dates; * and ? stand for letters"});
        part.found = Page.element("output", {class: "muted", for: "search"});
        let timer = 0;
        part.field.addEventListener("input", () => {
            clearTimeout(timer);
            timer = setTimeout(() => {
                find(part.field.value);
                Address.set({find: part.field.value}, false);
            }, 120);
        });
        nav.append(Page.element("span", {class: "search"}, part.found,
            Page.element("label", {for: "search", class: "muted"}, "Search"), part.field));
    }

    return {start, follow};
})();

(() => {
    const PLACES = {
        timeline: index => Volume.channels[index] && Timeline.show(index),
        response: (index, state) => Volume.epochs[index] &&
            Responses.show(index, (state.with || "").split(",").filter(Boolean).map(Number)),
        site: index => Volume.stations[index] && Sites.show(index),
        stage: (index, state, stage) => Volume.epochs[index] && Responses.showStage(index, stage),
        station: index => Tables.show(`station-${index}`) && StationMap.show(index),
        channel: index => Tables.show(`channel-${index}`),
        epoch: index => Tables.show(`epoch-${index}`) && Responses.choose(index),
    };

    // #timeline-3, #response-12, #stage-12-2 and #site-3 are drawn; #station-3, #channel-3 and #epoch-12 stand in tables.
    function follow(state, isWhole) {
        if (isWhole) {
            Search.follow(state.find || "");
            Responses.setKind(state.as || "");
        }
        const [, kind, number, more] = /^([a-z]+)-(\d+)(?:-(\d+))?$/.exec(state.place) || [];
        if (PLACES[kind]) {
            PLACES[kind](Number(number), state, more);
            return;
        }
        const place = state.place && document.getElementById(state.place);
        if (place)
            place.scrollIntoView();
    }

    Head.start();
    Tables.start();
    document.documentElement.classList.add("drawn");
    Search.start(document.getElementById("nav"));
    StationMap.start(document.getElementById("map-view"));
    Timeline.start(document.getElementById("timeline-view"));
    Strips.start(document.getElementById("data-view"));
    Responses.start(document.getElementById("responses-view"));
    Sites.start(document.getElementById("site-view"));
    for (const [event, isPrinted] of [["beforeprint", true], ["afterprint", false]])
        window.addEventListener(event, () => {
            Tables.print(isPrinted);
            Timeline.print(isPrinted);
            Responses.print(isPrinted);
        });
    Address.start(follow);
})();
