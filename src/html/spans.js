// Stretches of time, flat lists [start, end, start, end, …] in order, as marks on a line of pixels.
// A view has `start` and `end` in seconds, `width` in pixels and `x(seconds)`.

const Spans = (() => {
    const GAP_WIDTH = 2; // pixels that a gap or an overlap has at least, at every zoom

    // The index of the first stretch that ends behind `time`.
    function firstBehind(list, time) {
        let low = 0;
        let high = list.length / 2;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (list[2 * middle + 1] < time)
                low = middle + 1;
            else
                high = middle;
        }
        return 2 * low;
    }

    const clamp = (x, view) => Math.min(Math.max(x, -8), view.width + 8);

    // Pixels [from, to, …] of the stretches in sight; what lies less than a pixel apart becomes one.
    function merge(list, view, least, from = firstBehind(list, view.start), limit = list.length) {
        const marks = [];
        for (let i = from; i < limit && list[i] <= view.end; i += 2) {
            const left = clamp(view.x(list[i]), view);
            const right = Math.max(clamp(view.x(list[i + 1]), view), left + least);
            const last = marks.length - 1;
            if (last > 0 && left - marks[last] < 1)
                marks[last] = Math.max(marks[last], right);
            else
                marks.push(left, right);
        }
        return marks;
    }

    const bars = (list, view) => merge(list, view, 1);

    // The same list, read from its second number on, is that of the gaps. Narrow ones stand on whole pixels.
    function gaps(spans, view) {
        const first = firstBehind(spans, view.start);
        const from = Math.max(first - 1, 1);
        return merge(spans, view, GAP_WIDTH, from, spans.length - 1);
    }

    // Narrow marks with some room at both sides.
    function widened(marks, by, narrow) {
        const wide = [];
        for (let i = 0; i < marks.length; i += 2) {
            const more = marks[i + 1] - marks[i] < narrow ? by : 0;
            wide.push(marks[i] - more, marks[i + 1] + more);
        }
        return wide;
    }

    // Overlaps may contain each other, so all are looked at.
    function within(list, start, end) {
        const found = [];
        for (let i = 0; i < list.length; i += 2)
            if (list[i + 1] >= start && list[i] <= end)
                found.push(list[i], list[i + 1]);
        return found;
    }

    const overlaps = (list, view) => merge(within(list, view.start, view.end), view, GAP_WIDTH, 0);

    // A path of rectangles; `shape(width)` gives top and height.
    function path(marks, shape) {
        let d = "";
        for (let i = 0; i < marks.length; i += 2) {
            const width = marks[i + 1] - marks[i];
            const [top, height] = shape(width);
            d += `M${marks[i].toFixed(1)} ${top}h${width.toFixed(1)}v${height}H${marks[i].toFixed(1)}z`;
        }
        return d;
    }

    // The gaps that touch the time from `start` to `end`, as [from, to, …].
    function gapsWithin(spans, start, end) {
        const found = [];
        for (let i = Math.max(firstBehind(spans, start) - 1, 1); i + 1 < spans.length && spans[i] <= end; i += 2)
            if (spans[i + 1] >= start)
                found.push(spans[i], spans[i + 1]);
        return found;
    }

    const gapCount = spans => Math.max(0, spans.length / 2 - 1);

    function covered(spans) {
        let sum = 0;
        for (let i = 0; i < spans.length; i += 2)
            sum += spans[i + 1] - spans[i];
        return sum;
    }

    return {bars, gaps, widened, overlaps, path, within, gapsWithin, gapCount, covered};
})();
