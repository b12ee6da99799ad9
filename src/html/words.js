// What is searched for: words in the notations that people know, and whether a text or a time has them.

const Words = (() => {
    const DAY = 86400;

    // "2018,191", "2018-191", "2018.191", "2018-07-10", with or without a time behind: the day's start, or null.
    function dayOf(word) {
        const [, year, day] = /^(\d{4})[-.,](\d{3})(?:,|$)/.exec(word) || [];
        if (year && day >= 1 && day <= 366)
            return Date.UTC(Number(year), 0, Number(day)) / 1000;
        const date = /^\d{4}-\d\d-\d\d$/.test(word) ? Date.parse(`${word}T00:00Z`) : NaN;
        return isNaN(date) ? null : date / 1000;
    }

    // A name in the page's notation: XX_ABC_00_BHZ, XX/ABC/00/BHZ, FDSN:XX_ABC_00_B_H_Z, XX.ABC.--.BHZ.
    function named(word) {
        const [, source, band] = /^fdsn:(.*_.*_.*)_(\w?_\w?_\w?)$/.exec(word) || [];
        const name = source === undefined ? word : `${source}_${band.replace(/_/g, "")}`;
        return name.replace(/[_/]/g, ".").replace(/\.-+\./, "..").replace(/^-+$/, "");
    }

    function test(word) {
        const day = dayOf(word);
        if (day !== null) {
            const iso = Text.day(day);
            const rest = /^\d{4},\d{3},(.+)$/.exec(word);
            const whole = rest ? `${iso} ${rest[1].replace(/\.?0*$/, "")}` : iso;
            return {in: text => text.includes(whole) || text.includes(word), day};
        }
        if (/[*?]/.test(word)) {
            const escaped = named(word).replace(/[.+^${}()|[\]\\]/g, "\\$&");
            const pattern = new RegExp(`(^|[^a-z0-9])${escaped.replace(/\*/g, "[a-z0-9.]*").replace(/\?/g, "[a-z0-9]")}($|[^a-z0-9])`);
            return {in: text => pattern.test(text), day: null};
        }
        const one = /^(error|warning|note)s$/.test(word) ? word.slice(0, -1) : word;
        const name = named(one);
        return {in: text => text.includes(one) || text.includes(name), day: null};
    }

    const make = text => text.toLowerCase().split(/\s+/).filter(Boolean).map(test);

    // Whether a text has all words. Days also fit when the times, [start, end, …] with null for open ones, cover them.
    function match(words, text, times = []) {
        return words.every(word => word.in(text) || (word.day !== null && covers(times, word.day)));
    }

    function covers(times, day) {
        for (let i = 0; i < times.length; i += 2)
            if ((times[i] === null || times[i] < day + DAY) && (times[i + 1] === null || times[i + 1] >= day))
                return true;
        return false;
    }

    return {make, match};
})();
