// The bars of the head: the bytes of each blockette type.

const Head = (() => {
    const SHOWN_TYPES = 8;

    function typeRow(type, largest) {
        const number = type.type === null ? "" : String(type.type).padStart(3, "0");
        const svg = d3.create("svg").attr("aria-hidden", "true");
        svg.append("rect").attr("class", type.type === null ? "data" : "parameters").attr("height", "100%")
            .attr("width", `${100 * type.bytes / largest}%`);
        return Page.element("li", {},
            Page.element("span", {class: "name", title: type.name}, Page.element("code", {}, number), ` ${type.name}`),
            svg.node(),
            Page.element("span", {class: "value"}, Text.grouped(type.bytes)),
            Page.element("span", {class: "muted value"}, `× ${Text.grouped(type.count)}`));
    }

    // The largest types as bars; the table of all, which was there before, folds behind them.
    function drawTypes(box) {
        const shown = Volume.types.filter(type => type.bytes > 0).slice(0, SHOWN_TYPES);
        if (shown.length === 0)
            return;
        const table = box.firstElementChild;
        const all = Page.element("details", {}, Page.element("summary", {},
            `All ${Text.count(Volume.types.length, "type")} as a table`));
        table.replaceWith(
            Page.element("h2", {class: "small"}, "Bytes by blockette type"),
            Page.element("ul", {class: "types"}, ...shown.map(type => typeRow(type, shown[0].bytes))), all);
        all.append(table);
    }

    function start() {
        drawTypes(document.getElementById("types"));
    }

    return {start};
})();
