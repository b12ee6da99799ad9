"use strict";
// What all parts of the page share: the volume, how times and numbers are written, elements, the tool-tip.
// Whatever comes from the volume goes into the page as text, never as markup.

// Characters that do not show are made visible, "\x1b" for escape, before anything is done with the texts.
const Volume = (() => {
    const SHORT = {b: "08", t: "09", n: "0a", f: "0c", r: "0d"};
    const json = document.getElementById("volume").textContent;
    if (!/[\\\xad]/.test(json))
        return JSON.parse(json);
    return JSON.parse(json.replace(/\\(?:u00([01]\w|7f|[89]\w)|([btnfr])|.)|(\xad)/g, (whole, hex, letter, hyphen) =>
        hex || letter || hyphen ? `\\\\x${hex || SHORT[letter] || "ad"}` : whole));
})();

const Text = (() => {
    const grouped = d3.format(",");
    const general = d3.format(".6~g");
    const UNITS = [["d", 86400], ["h", 3600], ["min", 60], ["s", 1]];

    // Seconds since 1970 as UTC, exact to the 0.0001 s that SEED knows; no fraction where it is 0.
    function time(seconds) {
        if (seconds === null || seconds === undefined)
            return "open";
        const ticks = Math.round(seconds * 1e4);
        const whole = Math.floor(ticks / 1e4);
        const date = new Date(whole * 1000);
        if (isNaN(date))
            return String(seconds);
        const fraction = String(ticks - whole * 1e4).padStart(4, "0").replace(/0+$/, "");
        return date.toISOString().replace("T", " ").replace(/\..*$/, fraction && "." + fraction);
    }

    const day = seconds => time(seconds).replace(/ .*$/, "");

    // The day of the year, as the standard's readers are used to it.
    function dayOfYear(seconds) {
        const date = new Date(seconds * 1000);
        return Math.floor((date - Date.UTC(date.getUTCFullYear(), 0, 1)) / 864e5) + 1;
    }

    // Below a minute to the 0.0001 s, above in the two largest units.
    function duration(seconds) {
        if (seconds < 60)
            return `${Number(seconds.toFixed(4))} s`;
        const first = UNITS.findIndex(([, size]) => seconds >= size);
        let rest = seconds;
        const parts = UNITS.slice(first, first + 2).map(([name, size], i) => {
            const count = i === 0 ? Math.floor(rest / size) : Math.round(rest / size);
            rest -= count * size;
            return count > 0 ? `${grouped(count)} ${name}` : "";
        });
        return parts.join(" ").trim();
    }

    const number = value => value === null || value === undefined ? "" : general(value).replace("−", "-");
    const count = (n, one, many = one + "s") => `${grouped(n)} ${n === 1 ? one : many}`;
    const percent = share => `${(100 * share).toFixed(share > 0 && share < 0.001 ? 3 : 1)} %`;
    const range = (start, end) => `${day(start)} – ${end === null ? "open" : day(end)}`;
    const station = s => `${s.network}.${s.station}`;

    function channel(c) {
        const name = [c.network, c.station_code, c.location, c.channel].join(".");
        return c.subchannel ? `${name} (${c.subchannel})` : name;
    }

    return {time, day, duration, number, grouped, count, percent, range, station, channel, dayOfYear};
})();

const Page = (() => {
    // An element with attributes and children; texts among the children become text nodes.
    function element(name, attributes = {}, ...children) {
        const made = document.createElement(name);
        for (const [key, value] of Object.entries(attributes))
            made.setAttribute(key, value);
        made.append(...children);
        return made;
    }

    function button(label, title, act) {
        const made = element("button", {type: "button", title, "aria-label": title}, label);
        made.addEventListener("click", act);
        return made;
    }

    // Calls `draw` once before the next frame, however often it is asked.
    function onFrame(draw) {
        let asked = false;
        return () => {
            if (asked)
                return;
            asked = true;
            requestAnimationFrame(() => {
                asked = false;
                draw();
            });
        };
    }

    // The width of text as SVG labels show it, near enough to keep them apart.
    const textWidth = (text, size = 11) => text.length * size * 0.62;

    function clipped(text, length) {
        return text.length > length ? text.slice(0, Math.max(1, length - 1)) + "…" : text;
    }

    // Two fingers move and zoom; one scrolls the page. `act` gets the factor, the movement and the place in between.
    function onTwoFingers(target, act) {
        let before = null;
        function seen(event) {
            const [a, b] = event.touches;
            const box = target.getBoundingClientRect();
            return {x: (a.clientX + b.clientX) / 2 - box.left, y: (a.clientY + b.clientY) / 2 - box.top,
                size: Math.max(Math.hypot(a.clientX - b.clientX, a.clientY - b.clientY), 1)};
        }
        target.addEventListener("touchstart", event => {
            before = event.touches.length === 2 ? seen(event) : null;
        }, {passive: true});
        target.addEventListener("touchmove", event => {
            if (!before || event.touches.length !== 2)
                return;
            if (event.cancelable)
                event.preventDefault();
            const now = seen(event);
            act(now.size / before.size, now.x - before.x, now.y - before.y, now);
            before = now;
        }, {passive: false});
        target.addEventListener("touchend", () => { before = null; }, {passive: true});
    }

    // Hands a text to the reader as a file.
    function download(name, type, text) {
        const url = URL.createObjectURL(new Blob([text], {type}));
        const link = element("a", {href: url, download: name});
        link.click();
        setTimeout(() => URL.revokeObjectURL(url), 1000);
    }

    return {element, button, onFrame, textWidth, clipped, onTwoFingers, download};
})();

// What is chosen stands in the address: "#response-12&find=bhz&as=acceleration". Each choice is a step that the browser's
// back button takes back.
const Address = (() => {
    const KEYS = ["find", "as", "with"];
    let shown = {place: ""};
    let apply = () => {};

    function read() {
        const [place, ...rest] = location.hash.slice(1).split("&");
        const state = {place};
        for (const part of rest) {
            const [key, value = ""] = part.split("=");
            try {
                if (KEYS.includes(key))
                    state[key] = decodeURIComponent(value);
            } catch (error) {
                continue; // no text of ours
            }
        }
        return state;
    }

    function write(state) {
        const parts = KEYS.filter(key => state[key]).map(key => `&${key}=${encodeURIComponent(state[key])}`);
        return `#${state.place || ""}${parts.join("")}`;
    }

    // Remembers a choice; `isStep`: one to come back from.
    function set(changes, isStep = true) {
        const state = Object.assign({}, shown, changes);
        if (write(state) === write(shown))
            return;
        shown = state;
        history[isStep ? "pushState" : "replaceState"](null, "", write(state));
    }

    // Goes to a place as a link does.
    function go(place) {
        set({place, with: ""});
        apply(shown, false);
    }

    function start(act) {
        apply = act;
        shown = read();
        addEventListener("popstate", () => {
            shown = read();
            apply(shown, true);
        });
        document.addEventListener("click", event => {
            const link = event.target.closest && event.target.closest("a[href^='#']");
            if (!link || event.ctrlKey || event.metaKey || event.shiftKey || event.button)
                return;
            event.preventDefault();
            go(link.getAttribute("href").slice(1));
        });
        apply(shown, true);
    }

    return {set, go, start, state: () => shown};
})();

// One tool-tip for all drawings: a title and lines of text beside the pointer, inside the window.
const Tip = (() => {
    const box = Page.element("div", {class: "tip", role: "tooltip"});
    box.hidden = true;
    document.body.append(box);

    function show(lines, x, y) {
        box.replaceChildren(...lines.map((line, i) => Page.element(i ? "div" : "b", {}, line)));
        box.hidden = false;
        const {width, height} = box.getBoundingClientRect();
        const left = x + 14 + width > window.innerWidth ? x - width - 14 : x + 14;
        const top = y + 14 + height > window.innerHeight ? y - height - 14 : y + 14;
        box.style.left = `${Math.max(4, left)}px`;
        box.style.top = `${Math.max(4, top)}px`;
    }

    function hide() {
        box.hidden = true;
    }

    return {show, hide};
})();
