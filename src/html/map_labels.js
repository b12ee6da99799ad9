// Where the codes of stations stand on the map, so that none covers another or a station.

const MapLabels = (() => {
    const CELL = 40; // pixels of the grid in which neighbours are looked for
    const HEIGHT = 12;

    function makeGrid() {
        const cells = new Map();
        function* around(box) {
            for (let i = Math.floor(box[0] / CELL); i <= Math.floor(box[2] / CELL); ++i)
                for (let j = Math.floor(box[1] / CELL); j <= Math.floor(box[3] / CELL); ++j)
                    yield `${i},${j}`;
        }
        const meet = (a, b) => a[0] < b[2] && b[0] < a[2] && a[1] < b[3] && b[1] < a[3];
        const isFree = (box, owner) => [...around(box)].every(cell =>
            (cells.get(cell) || []).every(other => other.owner === owner || !meet(box, other.box)));
        function add(box, owner) {
            for (const cell of around(box))
                cells.set(cell, (cells.get(cell) || []).concat({box, owner}));
        }
        return {isFree, add};
    }

    // Right of the station, else left, below, above: offsets of the text's start and its box.
    function places(x, y, width) {
        return [[9, 4], [-9 - width, 4], [-width / 2, 18], [-width / 2, -9]].map(([dx, dy]) =>
            ({dx, dy, box: [x + dx - 1, y + dy - HEIGHT + 1, x + dx + width + 1, y + dy + 3]}));
    }

    // For each point {x, y, text} the offset of its label, or null when there is no room.
    function place(points, width, height) {
        const grid = makeGrid();
        points.forEach((p, i) => grid.add([p.x - 6, p.y - 6, p.x + 6, p.y + 6], i));
        return points.map((p, i) => {
            const inside = box => box[0] >= 0 && box[1] >= 0 && box[2] <= width && box[3] <= height;
            const found = places(p.x, p.y, Page.textWidth(p.text, 11))
                .find(({box}) => inside(box) && grid.isFree(box, i));
            if (found)
                grid.add(found.box, i);
            return found || null;
        });
    }

    return {place};
})();
