// The list of channel epochs from which responses are chosen: one, or several over each other.

const Chooser = (() => {
    const part = {};
    const options = [];
    let marked = [];
    let order = null; // all epochs, by name and time
    let epochs = []; // those that the search leaves

    const label = index => {
        const epoch = Volume.epochs[index];
        const error = Curves.response(index).error === undefined ? "" : "  ⚠";
        return `${Text.channel(Volume.channels[epoch.channel])}  ${Text.range(epoch.start, epoch.end)}${error}`;
    };

    function inOrder() {
        if (!order) {
            const names = Volume.epochs.map(epoch => Text.channel(Volume.channels[epoch.channel]));
            order = d3.range(Volume.epochs.length).sort((a, b) => names[a] < names[b] ? -1 : names[a] > names[b] ? 1
                : Volume.epochs[a].start - Volume.epochs[b].start);
        }
        return order;
    }

    // Options are made once: the search takes them out and puts them in again.
    function optionOf(index) {
        if (!options[index])
            options[index] = Page.element("option", {value: index}, label(index));
        return options[index];
    }

    function fill(chosen) {
        const list = document.createDocumentFragment();
        for (const index of epochs)
            list.append(optionOf(index));
        part.list.replaceChildren(list);
        part.count.textContent = epochs.length ? Text.count(epochs.length, "epoch") : "nothing found";
        mark(chosen);
    }

    // Scrolls the list alone, never the page.
    const reveal = Page.onFrame(() => {
        const option = options[marked[0]];
        if (option && option.parentNode && (option.offsetTop < part.list.scrollTop ||
                option.offsetTop > part.list.scrollTop + part.list.clientHeight - 20))
            part.list.scrollTop = Math.max(0, option.offsetTop - part.list.clientHeight / 2);
    });

    function mark(chosen) {
        for (const option of part.list.selectedOptions.length === marked.length ? marked.map(optionOf) : [...part.list.options])
            option.selected = false;
        for (const index of chosen)
            optionOf(index).selected = true;
        marked = chosen;
        reveal();
    }

    function find(matches, chosen) {
        epochs = inOrder().filter(matches);
        fill(chosen);
        return epochs;
    }

    // Other components of the same instrument at the same time.
    function components(index) {
        const epoch = Volume.epochs[index];
        const channel = Volume.channels[epoch.channel];
        const isLike = c => c.network === channel.network && c.station_code === channel.station_code &&
            c.location === channel.location && c.channel.slice(0, 2) === channel.channel.slice(0, 2);
        return inOrder().filter(i => {
            const other = Volume.epochs[i];
            return isLike(Volume.channels[other.channel]) && (other.end === null || epoch.start === null || other.end > epoch.start) &&
                (epoch.end === null || other.start === null || other.start < epoch.end);
        });
    }

    const epochsOf = index => Volume.channels[Volume.epochs[index].channel].epochs;

    function build(act) {
        part.list = Page.element("select", {size: 14, multiple: "", "aria-label": "Channel epochs"});
        part.count = Page.element("span", {class: "muted"});
        part.list.addEventListener("change", () => act([...part.list.selectedOptions].map(option => Number(option.value))));
        return Page.element("div", {class: "chooser"}, part.list, part.count,
            Page.element("p", {class: "muted hint"}, "Several with Ctrl or Shift lie over each other."));
    }

    return {build, find, mark, components, epochsOf, label, focus: () => part.list.focus({preventScroll: true})};
})();
