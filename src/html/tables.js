// Tables that sort by their heads and show what is searched for. Of long ones only the rows in sight are in the page.

const Tables = (() => {
    const collator = new Intl.Collator("en", {numeric: true});
    const LONG = 100; // rows from which only those in sight are drawn
    const MORE = 12; // rows above and below them
    const all = []; // tables
    const places = new Map(); // rows by the ids in them, since rows out of sight are in no document
    const texts = new WeakMap();

    function cellValue(row, column, isNumber) {
        const text = row.cells[column] ? row.cells[column].textContent.trim() : "";
        return isNumber ? parseFloat(text.replace(/,/g, "")) : text;
    }

    const isNumberColumn = (rows, column) =>
        rows.some(row => row.cells[column] && row.cells[column].classList.contains("n"));

    // Rows with nothing in the column stay last, whatever the direction.
    function compare(a, b, isNumber, sign) {
        const aEmpty = isNumber ? isNaN(a) : a === "";
        const bEmpty = isNumber ? isNaN(b) : b === "";
        if (aEmpty || bEmpty)
            return aEmpty - bEmpty;
        return sign * (isNumber ? a - b : collator.compare(a, b));
    }

    function sort(table, head) {
        const column = head.cellIndex;
        const isNumber = isNumberColumn(table.rows, column);
        const descending = head.getAttribute("aria-sort") === "ascending";
        const keyed = table.rows.map(row => [cellValue(row, column, isNumber), row]);
        keyed.sort((a, b) => compare(a[0], b[0], isNumber, descending ? -1 : 1));
        table.rows = keyed.map(([, row]) => row);
        for (const other of table.node.tHead.rows[0].cells)
            other.removeAttribute("aria-sort");
        head.setAttribute("aria-sort", descending ? "descending" : "ascending");
        refresh(table);
    }

    // The head's text becomes a button, so that it is reached and pressed by keys, too.
    function makeSortable(table) {
        for (const head of table.node.tHead.rows[0].cells) {
            if (head.classList.contains("go"))
                continue;
            const button = Page.element("button", {type: "button"}, ...head.childNodes);
            button.addEventListener("click", () => sort(table, head));
            head.append(button);
        }
    }

    function timesOf(row) {
        const [, epoch] = /^epoch-(\d+)$/.exec(row.id) || [];
        return epoch ? [Volume.epochs[epoch].start, Volume.epochs[epoch].end] : [];
    }

    function textOf(row) {
        if (!texts.has(row))
            texts.set(row, [...row.cells].map(cell => cell.textContent).join(" ").toLowerCase());
        return texts.get(row);
    }

    const matches = (row, words) => words.length === 0 || Words.match(words, textOf(row), timesOf(row));

    // Reads what can be searched while nothing else is to be done, so that the first search is as fast as others.
    function readAhead() {
        const rows = all.flatMap(table => table.rows);
        let next = 0;
        const work = deadline => {
            while (next < rows.length && deadline.timeRemaining() > 1)
                textOf(rows[next++]);
            if (next < rows.length)
                requestIdleCallback(work);
        };
        requestIdleCallback(work);
    }

    // The rows that are shown, in their order.
    function refresh(table) {
        table.shown = table.words.length ? table.rows.filter(row => matches(row, table.words)) : table.rows;
        const [found, rows] = [table.shown.length, table.rows.length];
        table.found.textContent = table.words.length ? ` ${Text.grouped(found)} of ${Text.grouped(rows)} found` : "";
        table.block.classList.toggle("empty", found === 0 && table.words.length > 0);
        table.node.setAttribute("aria-rowcount", found + 1);
        draw(table, true);
    }

    const spacer = height => {
        const row = Page.element("tr", {class: "spacer", "aria-hidden": "true"}, Page.element("td", {colspan: 100}));
        row.style.height = `${height}px`;
        return row;
    };

    // First and last of the rows in sight.
    function inSight(table) {
        if (!table.isLong || table.isPrinted)
            return [0, table.shown.length];
        const {scrollTop, clientHeight} = table.block;
        const first = Math.min(Math.floor(scrollTop / table.height), Math.max(0, table.shown.length - 1));
        return [first, Math.min(table.shown.length, first + Math.ceil((clientHeight || 600) / table.height) + 1)];
    }

    function draw(table, isNew = false) {
        const sight = inSight(table);
        if (!isNew && sight[0] >= table.first && sight[1] <= table.last)
            return;
        table.first = Math.max(0, sight[0] - MORE);
        table.last = Math.min(table.shown.length, sight[1] + MORE);
        const rows = table.shown.slice(table.first, table.last);
        if (!table.isLong) {
            table.body.replaceChildren(...rows);
            return;
        }
        rows.forEach((row, i) => row.setAttribute("aria-rowindex", table.first + i + 2));
        table.body.replaceChildren(spacer(table.first * table.height), ...rows,
            spacer((table.shown.length - table.last) * table.height));
    }

    // Columns keep their width while rows come and go: that of the longest text of the columns that are shown.
    function keepWidths(table) {
        const heads = [...table.node.tHead.rows[0].cells];
        heads.slice(0, 12).forEach((head, i) => {
            let most = 0;
            for (const row of table.rows)
                most = Math.max(most, row.cells[i] ? row.cells[i].textContent.length : 0);
            if (!head.classList.contains("go"))
                head.style.minWidth = `${Math.min(most, 46) * 0.58}em`;
        });
    }

    function measure(table) {
        const row = table.body.querySelector("tr:not(.spacer)");
        const height = row ? row.getBoundingClientRect().height : 0;
        if (height > 0 && Math.abs(height - table.height) > 0.01) {
            table.height = height;
            draw(table, true);
        }
    }

    // The columns behind the first ones fold away.
    function fold(table) {
        const button = Page.element("button", {type: "button", class: "fold", "aria-expanded": "false"}, "All columns");
        button.addEventListener("click", () => {
            const isFolded = table.node.classList.toggle("folded");
            button.setAttribute("aria-expanded", String(!isFolded));
            button.textContent = isFolded ? "All columns" : "First columns";
            measure(table);
        });
        table.node.classList.add("folded");
        table.node.caption.append(" ", button);
    }

    function take(node) {
        const body = node.tBodies[0];
        const rows = [...body.rows];
        const table = {node, body, rows, shown: rows, words: [], block: node.closest(".block"), height: 27,
            isLong: rows.length > LONG, first: 0, last: 0, isPrinted: false,
            found: node.caption.appendChild(Page.element("span", {class: "found"}))};
        for (const row of rows)
            for (const place of [row, row.cells[0]])
                if (place && place.id)
                    places.set(place.id, {table, row});
        all.push(table);
        makeSortable(table);
        if (node.id === "channels-table")
            fold(table);
        if (!table.isLong)
            return;
        node.classList.add("long");
        keepWidths(table);
        draw(table, true);
        table.block.addEventListener("scroll", Page.onFrame(() => draw(table)), {passive: true});
        new ResizeObserver(Page.onFrame(() => {
            measure(table);
            draw(table);
        })).observe(table.block);
    }

    function find(words) {
        for (const table of all) {
            table.words = words;
            table.block.scrollTop = 0;
            refresh(table);
        }
    }

    // Marks a row and brings it into sight; one that the search hides is shown. Whether there is such a row.
    function show(id) {
        const {table, row} = places.get(id) || {};
        if (!row)
            return false;
        for (const marked of document.querySelectorAll("tr.current"))
            marked.classList.remove("current");
        row.classList.add("current");
        if (!table.shown.includes(row))
            table.shown = table.rows.filter(each => each === row || table.shown.includes(each));
        if (table.isLong) {
            table.block.scrollTop = Math.max(0, table.shown.indexOf(row) * table.height - table.block.clientHeight / 2);
            draw(table, true);
        } else {
            table.body.replaceChildren(...table.shown);
        }
        row.scrollIntoView({block: "center"});
        row.setAttribute("tabindex", "-1");
        row.focus({preventScroll: true});
        return true;
    }

    // Rows of a table, with what they say: for who shows a part of them.
    const rowsOf = id => (all.find(table => table.node.id === id) || {rows: []}).rows;

    function start() {
        document.querySelectorAll("table.sortable").forEach(take);
        if (window.requestIdleCallback)
            readAhead();
    }

    // On paper all rows stand.
    function print(isPrinted) {
        for (const table of all) {
            table.isPrinted = isPrinted;
            draw(table, true);
        }
    }

    return {start, find, show, print, rowsOf};
})();
