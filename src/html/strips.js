// The data: a strip for each channel with samples, over the time that the timeline shows.

const Strips = (() => {
    const HEIGHT = 96;
    const FEW = 200; // strips that stand there without being asked for
    const DOTTED = 6; // pixels between samples from which each is a dot
    const part = {};
    const strips = new Map(); // of each figure: {index, canvas, isInSight}
    let shown = null; // what the timeline has in view
    let matches = () => true;
    let most = FEW;

    const number = value => Number.isInteger(value) ? Text.grouped(value).replace("−", "-") : Text.number(value);

    function figures({samples, mean, rms, least, most: largest, clipped}) {
        if (least === largest)
            return `constant ${number(least)}, ${Text.count(samples, "sample")}`;
        return [`mean ${number(mean)}`, `min ${number(least)}`, `max ${number(largest)}`, `RMS ${number(rms)}`,
            `clipped ${Text.percent(clipped)}`, Text.count(samples, "sample")].join(", ");
    }

    function scale([least, largest]) {
        const margin = Math.max((largest - least) * 0.05, Number.MIN_VALUE);
        return d3.scaleLinear().domain(least === largest ? [least - 1, largest + 1] : [least - margin, largest + margin])
            .range([HEIGHT - 6, 6]);
    }

    function drawSteps(context, seen, x, y) {
        context.beginPath();
        for (const {run, from, to} of seen.pieces)
            for (let i = from; i < to; ++i) {
                const left = x(seen.timeOf(run, i));
                const width = Math.max(1, x(seen.timeOf(run, i + 1)) - left);
                // Reaches to the step before, so that a slope has no holes.
                const top = y(i > 0 ? Math.max(run.most[i], run.least[i - 1]) : run.most[i]);
                const bottom = y(i > 0 ? Math.min(run.least[i], run.most[i - 1]) : run.least[i]);
                context.rect(left, top, width, Math.max(1, bottom - top));
            }
        context.fill();
    }

    function drawSamples(context, seen, x, y) {
        const isDotted = x(shown.start + seen.step) - x(shown.start) >= DOTTED;
        context.beginPath();
        for (const {run, from, to} of seen.pieces)
            for (let i = Math.max(0, from - 1); i < to; ++i) {
                const at = [x(seen.timeOf(run, i)), y(run.least[i])];
                if (i === Math.max(0, from - 1))
                    context.moveTo(...at);
                else
                    context.lineTo(...at);
                if (!isDotted)
                    continue;
                context.rect(at[0] - 1.5, at[1] - 1.5, 3, 3);
                context.moveTo(...at);
            }
        context.stroke();
    }

    function drawLabels(context, y, values) {
        context.textAlign = "right";
        context.textBaseline = "middle";
        for (const value of values)
            context.fillText(number(value), shown.label - 8, Math.min(Math.max(y(value), 8), HEIGHT - 8));
    }

    function draw(strip) {
        const ratio = window.devicePixelRatio || 1;
        const width = shown.label + shown.width + shown.margin;
        const {canvas, index} = strip;
        canvas.width = Math.round(width * ratio);
        canvas.height = Math.round(HEIGHT * ratio);
        canvas.style.width = `${width}px`;
        canvas.style.height = `${HEIGHT}px`;
        const context = canvas.getContext("2d");
        context.scale(ratio, ratio);
        const style = getComputedStyle(canvas);
        context.font = style.font;
        const seen = Waves.inView(index, shown.start, shown.end, (shown.end - shown.start) / shown.width / ratio);
        const range = Waves.range(seen);
        canvas.dataset.steps = d3.sum(seen.pieces, ({from, to}) => to - from);
        canvas.dataset.samples = seen.isSample;
        context.fillStyle = style.getPropertyValue("border-top-color");
        context.fillRect(shown.label, HEIGHT - 1, shown.width, 1);
        if (!range)
            return;
        const y = scale(range);
        const x = t => shown.label + shown.x(t);
        context.fillStyle = style.getPropertyValue("color");
        drawLabels(context, y, range[0] === range[1] ? [range[0]] : range);
        context.save();
        context.beginPath();
        context.rect(shown.label, 0, shown.width, HEIGHT);
        context.clip();
        context.fillStyle = context.strokeStyle = style.getPropertyValue("outline-color");
        (seen.isSample ? drawSamples : drawSteps)(context, seen, x, y);
        context.restore();
    }

    const redraw = Page.onFrame(() => {
        for (const strip of shown ? strips.values() : [])
            if (strip.isInSight)
                draw(strip);
    });

    const timeAt = (canvas, event) => {
        const x = event.clientX - canvas.getBoundingClientRect().left - shown.label;
        return shown.start + x / shown.width * (shown.end - shown.start);
    };

    function tell(strip, event) {
        const time = timeAt(strip.canvas, event);
        const reach = (shown.end - shown.start) / shown.width * 2;
        const seen = Waves.inView(strip.index, time - reach, time + reach, reach);
        const range = time >= shown.start && time <= shown.end ? Waves.range(seen) : null;
        if (!range)
            return Tip.hide();
        const values = [...new Set(range)].map(number).join(" to ");
        Tip.show([Text.channel(Volume.channels[strip.index]), Text.time(time), `${values} counts`], event.clientX, event.clientY);
    }

    // Dragged, and zoomed by Ctrl or Shift and the wheel or a double click, as the timeline is.
    function listen(strip) {
        const {canvas} = strip;
        let from = null;
        canvas.addEventListener("pointerdown", event => {
            from = event.clientX;
            canvas.setPointerCapture(event.pointerId);
        });
        canvas.addEventListener("pointerup", () => { from = null; });
        canvas.addEventListener("pointercancel", () => { from = null; });
        canvas.addEventListener("pointermove", event => {
            if (from === null)
                return tell(strip, event);
            Tip.hide();
            Timeline.moveBy((from - event.clientX) / shown.width);
            from = event.clientX;
        });
        canvas.addEventListener("pointerleave", Tip.hide);
        canvas.addEventListener("dblclick", event => zoomAt(timeAt(canvas, event), 0.5));
        canvas.addEventListener("wheel", event => {
            if (!event.ctrlKey && !event.shiftKey && !event.metaKey)
                return;
            event.preventDefault();
            zoomAt(timeAt(canvas, event), (event.deltaY || event.deltaX) < 0 ? 0.7 : 1 / 0.7);
        }, {passive: false});
    }

    function zoomAt(time, factor) {
        Timeline.setDomain([time - (time - shown.start) * factor, time + (shown.end - time) * factor]);
    }

    function make(index, sight) {
        const channel = Volume.channels[index];
        const text = figures(channel.waves);
        const canvas = Page.element("canvas", {class: "wave", role: "img", "aria-label": `Samples of ${Text.channel(channel)}: ${text}`});
        const figure = Page.element("figure", {class: "strip", "data-channel": index},
            Page.element("figcaption", {}, Page.element("b", {}, Text.channel(channel)), ` ${text}`), canvas);
        const strip = {index, canvas, isInSight: false};
        listen(strip);
        strips.set(figure, strip);
        sight.observe(figure);
        return figure;
    }

    // Puts up the strips that were found, as many as are wanted.
    function fill() {
        part.sight.disconnect();
        strips.clear();
        const found = part.channels.filter(matches);
        part.list.replaceChildren(...found.slice(0, most).map(index => make(index, part.sight)));
        part.rest.replaceChildren();
        if (found.length > most)
            part.rest.append(Page.button(`All ${Text.grouped(found.length)} channels`, "Show the strips of all channels", () => {
                most = Infinity;
                fill();
            }));
    }

    function find(isFound) {
        matches = isFound;
        if (part.list)
            fill();
    }

    function start(box) {
        part.channels = d3.range(Volume.channels.length).filter(index => Volume.channels[index].waves);
        if (part.channels.length === 0) {
            box.append(Page.element("p", {class: "muted"}, "The volume holds no samples that can be decoded."));
            return;
        }
        part.sight = new IntersectionObserver(entries => {
            for (const entry of entries) {
                const strip = strips.get(entry.target);
                if (strip)
                    strip.isInSight = entry.isIntersecting;
            }
            redraw();
        }, {rootMargin: "200px"});
        part.list = Page.element("div", {class: "strips"});
        part.rest = Page.element("p", {});
        box.append(Page.element("p", {class: "muted"}, "Least and largest sample of each step, in counts, over the time that the timeline shows; ",
            "drag to move, double click, or Ctrl and the wheel, to zoom."), part.list, part.rest);
        fill();
        Timeline.follow(view => {
            shown = view;
            redraw();
        });
        window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", redraw);
        window.addEventListener("beforeprint", () => {
            for (const strip of strips.values())
                draw(strip);
        });
    }

    return {start, find};
})();
