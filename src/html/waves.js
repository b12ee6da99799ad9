// The envelopes of channels: unpacked when they are drawn first, with coarser ones over them for a wider view.

const Waves = (() => {
    const COARSER = 8; // steps of one level in one of the next
    const kept = new Map();

    // Takes numbers of 7 bits in a byte, the lowest first, off the bytes.
    function reader(bytes) {
        let at = 0;
        const number = () => {
            let value = 0;
            for (let unit = 1; at < bytes.length; unit *= 128) {
                const byte = bytes.charCodeAt(at++);
                value += byte % 128 * unit;
                if (byte < 128)
                    break;
            }
            return value;
        };
        const difference = () => {
            const value = number();
            return value % 2 ? -(value + 1) / 2 : value / 2;
        };
        return {number, difference, isAtEnd: () => at >= bytes.length};
    }

    // Runs of steps that follow each other: number of the first, and the least and largest value of each.
    function unpacked({values, paired, scale, least: zero}) {
        const packed = reader(atob(values));
        const runs = [];
        let next = 0;
        let before = 0;
        while (!packed.isAtEnd()) {
            const first = next + packed.number();
            const size = packed.number();
            const least = new Float64Array(size);
            const most = new Float64Array(size);
            for (let i = 0; i < size; ++i) {
                before += packed.difference();
                least[i] = zero + before * scale;
                most[i] = zero + (before + (paired ? packed.number() : 0)) * scale;
            }
            runs.push({first, least, most});
            next = first + size;
        }
        return runs;
    }

    // The same with fewer steps. Ends of runs may share one.
    function coarser(runs) {
        return runs.map(({first, least, most}) => {
            const begin = Math.floor(first / COARSER);
            const size = Math.floor((first + least.length - 1) / COARSER) - begin + 1;
            const made = {first: begin, least: new Float64Array(size).fill(Infinity), most: new Float64Array(size).fill(-Infinity)};
            for (let i = 0; i < least.length; ++i) {
                const to = Math.floor((first + i) / COARSER) - begin;
                made.least[to] = Math.min(made.least[to], least[i]);
                made.most[to] = Math.max(made.most[to], most[i]);
            }
            return made;
        });
    }

    // The levels of a channel, the finest first: `step` is the length of a step in seconds.
    function levels(index) {
        if (!kept.has(index)) {
            const {waves} = Volume.channels[index];
            const all = [{step: waves.step, runs: unpacked(waves)}];
            const count = runs => d3.sum(runs, run => run.least.length);
            while (count(all[all.length - 1].runs) > 1500) {
                const {step, runs} = all[all.length - 1];
                const next = coarser(runs);
                if (count(next) >= count(runs))
                    break;
                all.push({step: step * COARSER, runs: next});
            }
            kept.set(index, all);
        }
        return kept.get(index);
    }

    // The pieces in view, of the level whose steps are about as long as `resolution`: steps [from, to) of a run.
    function inView(index, start, end, resolution) {
        const {waves} = Volume.channels[index];
        const all = levels(index);
        const level = all.slice().reverse().find(({step}) => step <= resolution) || all[0];
        const pieces = [];
        for (const run of level.runs) {
            const at = t => (t - waves.start) / level.step - run.first;
            const from = Math.max(0, Math.floor(at(start)));
            const to = Math.min(run.least.length, Math.ceil(at(end)) + 1);
            if (from < to)
                pieces.push({run, from, to});
        }
        const isSample = level === all[0] && waves.samples_per_step === 1;
        return {pieces, isSample, timeOf: (run, i) => waves.start + (run.first + i) * level.step, step: level.step};
    }

    // Least and largest value of the pieces.
    function range({pieces}) {
        let [least, most] = [Infinity, -Infinity];
        for (const {run, from, to} of pieces)
            for (let i = from; i < to; ++i) {
                least = Math.min(least, run.least[i]);
                most = Math.max(most, run.most[i]);
            }
        return least <= most ? [least, most] : null;
    }

    return {inView, range};
})();
