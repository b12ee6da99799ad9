// The grid of a map: parallels and meridians that suit what is in view, their labels at the edges, the scale bar.

const MapGrid = (() => {
    const EARTH = 6371.0088; // kilometres
    const STEPS = [45, 30, 20, 10, 5, 2, 1, 0.5, 0.2, 0.1, 0.05, 0.02, 0.01, 0.005, 0.002, 0.001, 5e-4, 2e-4, 1e-4, 0];
    const APART = 110; // pixels between two lines, about

    // The position at a pixel; null outside of the globe.
    function invert(projection, point) {
        const position = projection.invert(point);
        if (!position || !position.every(isFinite) || Math.abs(position[1]) > 90)
            return null;
        const back = projection(position);
        return back && Math.hypot(back[0] - point[0], back[1] - point[1]) < 0.5 ? position : null;
    }

    // Longitudes are counted from the map's middle, so that the antimeridian is like any other line.
    const relative = (lon, middle) => ((lon - middle + 540) % 360 + 360) % 360 - 180;

    function kilometresPerPixel(projection, width, height) {
        const left = invert(projection, [width / 2 - 20, height / 2]);
        const right = invert(projection, [width / 2 + 20, height / 2]);
        return left && right ? d3.geoDistance(left, right) * EARTH / 40 : NaN;
    }

    // What is in view, in degrees: longitudes from the middle one, latitudes.
    function bounds(projection, width, height, middle) {
        const lons = [];
        const lats = [];
        for (let i = 0; i <= 24; ++i)
            for (let j = 0; j <= 24; ++j) {
                const position = invert(projection, [width * i / 24, height * j / 24]);
                if (position) {
                    lons.push(relative(position[0], middle));
                    lats.push(position[1]);
                }
            }
        const box = {west: d3.min(lons), east: d3.max(lons), south: d3.min(lats), north: d3.max(lats), pole: false};
        for (const pole of [90, -90]) {
            const [x, y] = projection([middle, pole]) || [NaN, NaN];
            if (x >= 0 && x <= width && y >= 0 && y <= height)
                Object.assign(box, {west: -180, east: 180, pole: true}, pole > 0 ? {north: 90} : {south: -90});
        }
        return box;
    }

    // The least step of those that are not much closer.
    const stepNear = degrees => STEPS[Math.max(0, STEPS.findIndex(step => step < 0.7 * degrees) - 1)] || STEPS[0];

    function steps(projection, width, height, box) {
        const perPixel = kilometresPerPixel(projection, width, height) / (EARTH * Math.PI / 180);
        const middle = (box.south + box.north) / 2;
        const lat = stepNear((perPixel || (box.north - box.south) / height) * APART);
        const lon = box.pole ? 30 : stepNear(lat / Math.max(Math.cos(middle * Math.PI / 180), 0.05));
        return {lat, lon};
    }

    // Whole multiples of a step inside a range that is made a bit wider.
    const multiples = (from, to, step) => d3.range(Math.floor(from / step) - 1, Math.ceil(to / step) + 2).map(i => i * step);

    function lines(box, step, middle) {
        const south = Math.max(-89.999, box.south - step.lat);
        const north = Math.min(89.999, box.north + step.lat);
        const west = Math.max(-180, box.west - step.lon);
        const east = Math.min(180, box.east + step.lon);
        const along = (from, to) => d3.range(61).map(i => from + (to - from) * i / 60);
        const first = middle + west;
        const meridians = multiples(first, middle + east, step.lon).map(lon => along(south, north).map(lat => [lon, lat]));
        const parallels = multiples(south, north, step.lat).filter(lat => Math.abs(lat) < 90)
            .map(lat => along(first, middle + east).map(lon => [lon, lat]));
        return {type: "MultiLineString", coordinates: meridians.concat(parallels)};
    }

    // Where an edge, given by points, crosses whole multiples of the step.
    function crossings(projection, points, coordinate, step, middle) {
        const found = [];
        let before = null;
        for (const point of points) {
            const position = invert(projection, point);
            const value = position === null ? null : coordinate === 1 ? position[1] : middle + relative(position[0], middle);
            if (before !== null && value !== null && Math.abs(value - before) < step) {
                const line = Math.round((value + before) / 2 / step);
                if (Math.sign(before - line * step) !== Math.sign(value - line * step))
                    found.push({point, value: line * step});
            }
            before = value;
        }
        return found.filter((mark, i) => i === 0 || Math.hypot(mark.point[0] - found[i - 1].point[0],
            mark.point[1] - found[i - 1].point[1]) > 30);
    }

    function degrees(value, step, letters) {
        const digits = Math.max(0, Math.ceil(-Math.log10(step) - 1e-9));
        const size = Math.abs(value).toFixed(digits);
        return `${size}°${Number(size) === 0 || Number(size) === 180 ? "" : letters[value < 0 ? 1 : 0]}`;
    }

    // Meridians are labelled at the bottom, parallels at the left; through the middle where the edges see no globe.
    function labels(projection, width, height, step, middle) {
        const across = y => d3.range(30, width - 20, 2).map(x => [x, y]);
        const down = x => d3.range(10, height - 20, 2).map(y => [x, y]);
        const first = (...tries) => tries.find(list => list.length > 0) || [];
        const lon = first(crossings(projection, across(height - 3), 0, step.lon, middle),
            crossings(projection, across(height / 2), 0, step.lon, middle));
        const lat = first(crossings(projection, down(3), 1, step.lat, middle), crossings(projection, down(width / 2), 1, step.lat, middle));
        const normal = value => relative(value, 0);
        return lon.map(({point, value}) => ({x: point[0] + 3, y: point[1] - 2, text: degrees(normal(value), step.lon, "EW")}))
            .concat(lat.map(({point, value}) => ({x: point[0] + 2, y: point[1] - 3, text: degrees(value, step.lat, "NS")})));
    }

    // A round number of kilometres (metres when zoomed far in), at most 120 pixels long.
    function scaleBar(projection, width, height) {
        const perPixel = kilometresPerPixel(projection, width, height);
        if (!(perPixel > 0))
            return null;
        const most = perPixel * 120;
        const power = 10 ** Math.floor(Math.log10(most));
        const length = [5, 2, 1].find(n => n * power <= most) * power;
        return {pixels: length / perPixel, text: length < 1 ? `${Math.round(length * 1000)} m` : `${Text.grouped(length)} km`};
    }

    return {bounds, steps, lines, labels, scaleBar};
})();
