// The findings: which of them the search shows, and how many there are.

const Findings = (() => {
    const texts = new WeakMap();

    function textOf(item, about) {
        if (!texts.has(item))
            texts.set(item, `${item.textContent} ${about}`.toLowerCase());
        return texts.get(item);
    }

    // Shows those that have all words; their number.
    function find(words) {
        let sum = 0;
        for (const rule of document.querySelectorAll("#findings > details")) {
            const about = rule.firstElementChild.textContent;
            let found = 0;
            for (const item of rule.querySelectorAll("li")) {
                const isFound = words.length === 0 || Words.match(words, textOf(item, about));
                if (item.hidden === isFound)
                    item.hidden = !isFound;
                found += isFound;
            }
            rule.hidden = found === 0;
            const rest = rule.querySelector(".rest");
            if (rest) {
                const left = rest.querySelectorAll("li:not([hidden])").length;
                rest.firstElementChild.textContent = `${Text.grouped(left)} more`;
                rest.hidden = left === 0;
            }
            sum += found;
        }
        return sum;
    }

    // Rules and severities of what was found of each channel, for the search.
    function byChannel() {
        const found = Volume.channels.map(() => new Set());
        for (const {rule, channel} of Volume.findings)
            if (channel !== undefined && found[channel])
                found[channel].add(`${Volume.rules[rule].rule} ${Volume.rules[rule].severity}`);
        return found;
    }

    return {find, byChannel};
})();
