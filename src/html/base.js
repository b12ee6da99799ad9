"use strict";
// What all parts of the page share: the volume, how times and numbers are written, elements, the tool-tip.
// Whatever comes from the volume goes into the page as text, never as markup.

// Characters that do not show are made visible, "\x1b" for escape, before anything is done with the texts.
const Volume = (() => {
    const SHORT = {b: "08", t: "09", n: "0a", f: "0c", r: "0d"};
    const json = document.getElementById("volume").textContent;
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

    function channel(c) {
        const name = [c.network, c.station_code, c.location, c.channel].join(".");
        return c.subchannel ? `${name} (${c.subchannel})` : name;
    }

    return {time, day, duration, number, grouped, count, percent, range, channel};
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

    return {element, button, onFrame, textWidth, clipped};
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
