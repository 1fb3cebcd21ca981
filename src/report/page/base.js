// What all parts of the page use: the data, making elements, texts.

const data = JSON.parse(document.getElementById("data").textContent);
const { run, totals, visits, commands, activities, warnings, earlier } = data;
const onPath = new Set(data.path);

/// A new element. `attributes` may hold functions, which are listeners.
function make(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (typeof value === "function") {
      element.addEventListener(key, value);
    } else if (value !== false && value !== undefined) {
      element.setAttribute(key, value === true ? "" : value);
    }
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}

function makeSvg(name, attributes = {}, ...children) {
  const element = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) {
    element.setAttribute(key, value);
  }
  element.append(...children);
  return element;
}

const bodyOf = (section) => document.querySelector(`#${section} > .body`);

/// Microseconds, as people say it.
function duration(time) {
  const seconds = time / 1e6;
  if (seconds < 1) return `${Math.round(seconds * 1000)} ms`;
  if (seconds < 60) return `${seconds.toFixed(seconds < 10 ? 2 : 1)} s`;
  const whole = Math.round(seconds);
  const two = (number) => String(number).padStart(2, "0");
  const minutes = Math.floor(whole / 60);
  return minutes < 60
    ? `${minutes}:${two(whole % 60)} min`
    : `${Math.floor(minutes / 60)}:${two(minutes % 60)}:${two(whole % 60)} h`;
}

function size(bytes) {
  if (!bytes) return "";
  const units = ["B", "kB", "MB", "GB", "TB"];
  let unit = 0;
  for (; bytes >= 1000 && unit + 1 < units.length; ++unit) bytes /= 1000;
  return `${bytes.toFixed(unit > 2 ? 1 : 0)} ${units[unit]}`;
}

const counted = (count, what) => `${count.toLocaleString("en")} ${what}${count === 1 ? "" : "s"}`;
const percent = (part, whole) => `${whole > 0 ? Math.round((part / whole) * 100) : 0} %`;

/// Paths in the run's directory are shown from there.
function shortPath(path) {
  const inside = run.directory && path.startsWith(run.directory) && /[\\/]/.test(path[run.directory.length] || "");
  return inside ? path.slice(run.directory.length + 1) : path;
}

const outcomeWords = {
  built: run.dry_run ? "to build" : "built",
  fresh: "up to date",
  group: "group",
  failed: "failed",
  skipped: "skipped",
  "not begun": "not begun",
};

function outcomeClass(outcome) {
  return outcome === "not begun" ? "skipped" : outcome;
}

function outcomeTag(outcome) {
  return make("span", { class: `tag ${outcomeClass(outcome)}` }, outcomeWords[outcome] || outcome);
}

function titleOf(visit) {
  return visit.arguments ? `${visit.target}(${visit.arguments})` : visit.target;
}

/// What a step is called: the file that it makes, or its command.
function stepName(command) {
  const inside = new RegExp(`${run.directory.replace(/[.*+?^${}()|[\]\\]/g, "\\$&")}[\\\\/]`, "g");
  return command.makes ? shortPath(command.makes) : command.command.replace(inside, "");
}

function timeOf(visit) {
  return visit.commands.reduce((sum, number) => sum + commands[number].time, 0);
}

/// A button that leads to a target.
function targetButton(number, text = titleOf(visits[number])) {
  return make("button", { class: "name", type: "button", click: () => showTarget(number, true) }, text);
}

/// A table that grows on demand: `row` makes the cells of an item.
function growingTable(caption, heads, items, row, first = 25) {
  const rows = make("tbody");
  const more = make("button", { type: "button" });
  let shown = 0;
  const grow = (count) => {
    const next = items.slice(shown, shown + count);
    rows.append(...next.map((item) => make("tr", {}, ...row(item))));
    shown += next.length;
    more.hidden = shown >= items.length;
    more.textContent = `Show ${Math.min(500, items.length - shown).toLocaleString("en")} more of ${(items.length - shown).toLocaleString("en")}`;
  };
  more.addEventListener("click", () => grow(500));
  grow(first);
  const table = make("table", {}, make("caption", {}, caption), make("thead", {}, make("tr", {}, ...heads.map((head) => make("th", { scope: "col", class: head.class }, head.text)))), rows);
  return make("div", {}, make("div", { class: "scroll", tabindex: "0", role: "region", "aria-label": caption }, table), more);
}

const textCell = (...content) => make("td", { class: "text" }, ...content);
const numberCell = (text, extra = "") => make("td", { class: `number ${extra}` }, text);
