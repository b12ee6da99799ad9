// The Earth behind a map: its land as shapes of D3, and a small globe that shows where something lies.

const Land = (() => {
    const STEP = 0.02; // degrees that the numbers of COAST stand for

    function ring(steps) {
        const points = [];
        let [x, y] = [0, 0];
        for (let i = 0; i < steps.length; i += 2) {
            x += steps[i];
            y += steps[i + 1];
            points.push([x * STEP, y * STEP]);
        }
        points.push(points[0]);
        return points;
    }

    // A ring around what is not land lies the other way round.
    const polygons = COAST.map(steps => [ring(steps)]);
    const isLake = polygon => d3.geoArea({type: "Polygon", coordinates: polygon}) > 2 * Math.PI;
    const of = list => ({type: "MultiPolygon", coordinates: list});
    const shape = of(polygons.filter(polygon => !isLake(polygon)));
    const lakes = of(polygons.filter(isLake).map(([points]) => [points.slice().reverse()]));

    // A globe that is turned to a place, which is marked in its middle.
    function globe([lon, lat], size) {
        const projection = d3.geoOrthographic().rotate([-lon, -lat]).fitExtent([[2, 2], [size - 2, size - 2]], {type: "Sphere"});
        const path = d3.geoPath(projection);
        const svg = d3.create("svg").attr("class", "globe").attr("width", size).attr("height", size).attr("role", "img")
            .attr("aria-label", `Globe, ${Math.abs(lat).toFixed(1)}°${lat < 0 ? "S" : "N"} ${Math.abs(lon).toFixed(1)}°${lon < 0 ? "W" : "E"} in its middle`);
        svg.append("path").attr("class", "sea").attr("d", path({type: "Sphere"}));
        svg.append("path").attr("class", "land").attr("d", path(shape));
        svg.append("path").attr("class", "lakes").attr("d", path(lakes));
        svg.append("path").attr("class", "graticule").attr("d", path(d3.geoGraticule().step([30, 30])()));
        svg.append("circle").attr("class", "here").attr("cx", size / 2).attr("cy", size / 2).attr("r", 4);
        return svg.node();
    }

    return {shape, lakes, globe};
})();
