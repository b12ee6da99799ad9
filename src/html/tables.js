// Tables that sort by their heads, and the search that hides rows and findings.

const Tables = (() => {
    const collator = new Intl.Collator("en", {numeric: true});
    const searched = new WeakMap(); // a row's text in lower case, kept from the first search on
    const MOST = 300; // rows of a table that are shown at first
    let sought = []; // words

    function cellValue(row, column, isNumber) {
        const cell = row.cells[column];
        if (!cell)
            return isNumber ? NaN : "";
        const text = cell.dataset.v === undefined ? cell.textContent.trim() : cell.dataset.v;
        if (!isNumber)
            return text;
        return text === "" ? NaN : Number(text.replace(/,/g, ""));
    }

    function isNumberColumn(rows, column) {
        const cell = rows.map(row => row.cells[column]).find(c => c && c.textContent.trim() !== "");
        return Boolean(cell) && (cell.classList.contains("n") || cell.dataset.v !== undefined);
    }

    // Rows with nothing in the column stay last, whatever the direction.
    function compare(a, b, isNumber, sign) {
        const aEmpty = isNumber ? isNaN(a) : a === "";
        const bEmpty = isNumber ? isNaN(b) : b === "";
        if (aEmpty || bEmpty)
            return aEmpty - bEmpty;
        return sign * (isNumber ? a - b : collator.compare(a, b));
    }

    function sort(table, head) {
        const body = table.tBodies[0];
        const rows = [...body.rows];
        const column = head.cellIndex;
        const isNumber = isNumberColumn(rows, column);
        const descending = head.getAttribute("aria-sort") === "ascending";
        const keyed = rows.map(row => [cellValue(row, column, isNumber), row]);
        keyed.sort((a, b) => compare(a[0], b[0], isNumber, descending ? -1 : 1));
        for (const other of table.tHead.rows[0].cells)
            other.removeAttribute("aria-sort");
        head.setAttribute("aria-sort", descending ? "descending" : "ascending");
        const sorted = document.createDocumentFragment();
        for (const [, row] of keyed)
            sorted.append(row);
        body.append(sorted);
        refresh(table);
    }

    // The head's text becomes a button, so that it is reached and pressed by keys, too.
    function makeSortable(table) {
        for (const head of table.tHead ? table.tHead.rows[0].cells : []) {
            if (head.classList.contains("go"))
                continue;
            const button = Page.element("button", {type: "button"}, ...head.childNodes);
            button.addEventListener("click", () => sort(table, head));
            head.append(button);
        }
    }

    function matches(row, words) {
        if (words.length === 0)
            return true;
        if (!searched.has(row))
            searched.set(row, [...row.cells || [row]].map(c => c.textContent).join(" ").toLowerCase());
        const text = searched.get(row);
        return words.every(word => text.includes(word));
    }

    // Shows the rows that were searched for, the first ones of many: laying out a thousand takes a second.
    function refresh(table, limit = MOST) {
        const rows = [...table.tBodies[0].rows];
        let found = 0;
        for (const row of rows) {
            found += matches(row, sought);
            row.hidden = found > limit || !matches(row, sought);
        }
        const note = table.caption.querySelector(".found") ||
            table.caption.appendChild(Page.element("span", {class: "found"}));
        note.textContent = sought.length ? ` ${Text.grouped(found)} of ${Text.grouped(rows.length)} found` : "";
        if (found > limit)
            note.append(` the first ${Text.grouped(limit)} are shown `,
                Page.button("Show all", `Show all ${Text.grouped(found)} rows`, () => refresh(table, Infinity)));
        const block = table.closest(".block");
        if (block)
            block.classList.toggle("empty", found === 0 && sought.length > 0);
    }

    function refreshAll(limit) {
        for (const table of document.querySelectorAll("#tables table"))
            refresh(table, limit);
    }

    function find(words) {
        sought = words;
        refreshAll();
        for (const rule of document.querySelectorAll("#findings details")) {
            let found = 0;
            for (const item of rule.querySelectorAll("li")) {
                item.hidden = !matches(item, words);
                found += !item.hidden;
            }
            rule.hidden = found === 0 && words.length > 0;
        }
    }

    // Marks a row and brings it into sight; a row that the search hides is shown.
    function show(row) {
        for (const marked of document.querySelectorAll("tr.current"))
            marked.classList.remove("current");
        row.classList.add("current");
        row.hidden = false;
        row.scrollIntoView({block: "center"});
        row.setAttribute("tabindex", "-1");
        row.focus({preventScroll: true});
    }

    function start() {
        document.querySelectorAll("table.sortable").forEach(makeSortable);
        refreshAll();
    }

    // On paper all rows stand.
    function print(isPrinted) {
        refreshAll(isPrinted ? Infinity : MOST);
    }

    return {start, find, show, print};
})();
