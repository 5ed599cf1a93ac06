// SPDX-License-Identifier: MIT
// The search: each entry is a name, its page, a line about it, and further words that lead to it.
"use strict";
(function () {
    const entries = /*ENTRIES*/[];
    const input = document.getElementById("search"), list = document.getElementById("found");
    let chosen = 0;

    // Best first: the name begins with what was typed, has it in the middle, the line has all words.
    function rank(entry, typed, words) {
        const name = entry[0].toLowerCase();
        if (name === typed) return 0;
        if (name.startsWith(typed)) return 1;
        if (name.includes(typed)) return 2;
        const text = entry.join(" ").toLowerCase();
        return words.every(word => text.includes(word)) ? 3 : -1;
    }

    function choose(index) {
        const links = list.querySelectorAll("a");
        chosen = links.length ? (index + links.length) % links.length : 0;
        links.forEach((link, i) => link.classList.toggle("chosen", i === chosen));
        if (links[chosen]) links[chosen].scrollIntoView({ block: "nearest" });
    }

    function show() {
        const typed = input.value.trim().toLowerCase(), words = typed.split(/\s+/);
        const found = typed === "" ? [] : entries
            .map((entry, i) => [rank(entry, typed, words), i, entry])
            .filter(item => item[0] >= 0)
            .sort((a, b) => a[0] - b[0] || a[1] - b[1])
            .slice(0, 20);
        list.replaceChildren(...found.map(([, , entry]) => {
            const item = document.createElement("li"), link = document.createElement("a"), line = document.createElement("small");
            link.href = entry[1];
            link.textContent = entry[0];
            line.textContent = entry[2];
            link.append(line);
            item.append(link);
            return item;
        }));
        list.hidden = found.length === 0;
        choose(0);
    }

    input.addEventListener("input", show);
    input.addEventListener("focus", show);
    input.addEventListener("keydown", event => {
        if (event.key === "ArrowDown") { choose(chosen + 1); event.preventDefault(); }
        if (event.key === "ArrowUp") { choose(chosen - 1); event.preventDefault(); }
        if (event.key === "Enter" && list.querySelector("a.chosen")) list.querySelector("a.chosen").click();
        if (event.key === "Escape") input.blur();
    });
    document.addEventListener("click", event => { if (!event.target.closest(".search")) list.hidden = true; });
    document.addEventListener("keydown", event => {
        if (event.key === "/" && document.activeElement !== input) { input.focus(); event.preventDefault(); }
    });
})();
