"use strict";

// What is searched: sections and rows of tables, each with a title. All words asked for must be in an entry; where they are in
// the title it comes first, and first of all where they are the whole of it. A page for users weighs more than one for those
// who change the system.
function find(entries, asked, most) {
  const words = asked.trim().toLowerCase().split(/\s+/).filter(Boolean);
  const found = [];
  if (words.length === 0) return found;
  for (const entry of entries) {
    const title = entry.title.toLowerCase(), text = entry.text.toLowerCase(), names = title.split(/[\s,]+/);
    let score = 0;
    for (const word of words) {
      const points = names.includes(word) ? 100 : names.some((name) => name.startsWith(word)) ? 40
        : title.includes(word) ? 20 : text.split(/[^\w#$]+/).includes(word) ? 6 : text.includes(word) ? 2 : 0;
      score = points === 0 || score < 0 ? -1 : score + points;
    }
    if (score > 0) found.push([score + entry.weight + (title === words.join(" ") ? 100 : 0) - title.length / 1000, entry]);
  }
  return found.sort((one, other) => other[0] - one[0]).slice(0, most).map((pair) => pair[1]);
}

// A stretch of the text around the first word that is in it.
function excerpt(entry, asked) {
  const text = entry.text.replace(/\s+/g, " "), word = asked.trim().toLowerCase().split(/\s+/)[0];
  const place = Math.max(0, text.toLowerCase().indexOf(word) - 40);
  return (place > 0 ? "… " : "") + text.slice(place, place + 130) + (text.length > place + 130 ? " …" : "");
}

function setUpSearch() {
  const base = document.body.dataset.base, field = document.getElementById("search"), list = document.getElementById("found");
  let loading = false;

  // The index is a script, since a page from a file may run one but not fetch anything.
  function load() {
    if (loading) return;
    loading = true;
    const script = document.createElement("script");
    script.src = base + "/search/index.js";
    script.onload = show;
    document.head.append(script);
  }

  function show() {
    list.replaceChildren();
    list.hidden = field.value.trim() === "" || !window.searchIndex;
    if (list.hidden) return;
    const found = find(window.searchIndex, field.value, 30);
    for (const entry of found) {
      const row = document.createElement("li"), link = document.createElement("a"), said = document.createElement("small");
      link.href = base + "/" + entry.location;
      link.textContent = entry.title;
      said.textContent = entry.page + ": " + excerpt(entry, field.value);
      link.append(said);
      row.append(link);
      list.append(row);
    }
    if (found.length === 0) list.innerHTML = '<li class="none">Nothing is found.</li>';
  }

  field.addEventListener("focus", load);
  field.addEventListener("input", () => { load(); show(); });
  field.form.addEventListener("submit", (event) => {
    event.preventDefault();
    const first = list.querySelector("a");
    if (first) first.click();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "/" && document.activeElement !== field) {
      event.preventDefault();
      field.focus();
    } else if (event.key === "Escape" || (event.key === "ArrowDown" && document.activeElement === field)) {
      if (event.key === "Escape") list.hidden = true;
      else list.querySelector("a")?.focus();
    }
  });
  document.addEventListener("click", (event) => { if (!event.target.closest("form") || event.target.closest("#found a")) list.hidden = true; });
}

function setUpTheme() {
  const root = document.documentElement;
  document.getElementById("theme").addEventListener("click", () => {
    const dark = root.dataset.theme ? root.dataset.theme === "dark" : matchMedia("(prefers-color-scheme: dark)").matches;
    root.dataset.theme = dark ? "light" : "dark";
    try { localStorage.setItem("theme", root.dataset.theme); } catch (fault) { /* it holds for this page then */ }
  });
}

if (typeof document !== "undefined") {
  document.getElementById("pages").open = matchMedia("(min-width: 55rem)").matches;
  setUpSearch();
  setUpTheme();
} else {
  module.exports = { find, excerpt };
}
