// Curves as CSV, drawings as SVG with their colours in them, for papers and other programs.

const Export = (() => {
    const STYLES = ["fill", "fill-opacity", "stroke", "stroke-width", "stroke-dasharray", "stroke-linejoin", "paint-order",
        "opacity", "font-family", "font-size", "font-weight", "text-anchor"];

    const field = value => /[",\n]/.test(value) ? `"${String(value).replace(/"/g, '""')}"` : String(value);

    // One row for each point of each curve.
    function csv(curves, unit) {
        const lines = [["curve", "frequency (Hz)", `amplitude (${unit})`, "phase (degrees)"].map(field).join(",")];
        for (const curve of curves)
            curve.frequency.forEach((frequency, i) => {
                const value = list => typeof list[i] === "number" && isFinite(list[i]) ? Number(list[i].toPrecision(9)) : "";
                lines.push([curve.name, frequency, value(curve.amplitude), value(curve.phase)].map(field).join(","));
            });
        return lines.join("\r\n") + "\r\n";
    }

    // A drawing that needs no style sheet.
    function svg(node) {
        const copy = node.cloneNode(true);
        const [from, to] = [node, copy].map(root => [root, ...root.querySelectorAll("*")]);
        from.forEach((element, i) => {
            const style = getComputedStyle(element);
            for (const name of STYLES)
                to[i].setAttribute(name, style.getPropertyValue(name));
            to[i].removeAttribute("tabindex");
        });
        copy.querySelectorAll(".hair").forEach(hair => hair.remove());
        const back = document.createElementNS("http://www.w3.org/2000/svg", "rect");
        back.setAttribute("width", "100%");
        back.setAttribute("height", "100%");
        back.setAttribute("fill", getComputedStyle(document.body).backgroundColor);
        copy.prepend(back);
        return `<?xml version="1.0" encoding="UTF-8"?>\n${new XMLSerializer().serializeToString(copy)}\n`;
    }

    const fileName = text => text.replace(/[^A-Za-z0-9.-]+/g, "_");

    return {
        saveCsv: (name, curves, unit) => Page.download(`${fileName(name)}.csv`, "text/csv", csv(curves, unit)),
        saveSvg: (name, node) => Page.download(`${fileName(name)}.svg`, "image/svg+xml", svg(node)),
        csv, svg,
    };
})();
