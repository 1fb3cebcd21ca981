// The targets: a map where it can be read, and one target with what is around it.

const neededBy = visits.map(() => []);
visits.forEach((visit, number) => visit.needs.forEach((below) => neededBy[below].push(number)));

const kMostOnMap = 150;
const kMostAround = 30;
const kBox = { width: 170, height: 40, across: 70, down: 14 };

/// For each target how far it is from the request, at most.
function layersOfTargets() {
  const depth = visits.map(() => 0);
  const waiting = visits.map((_, number) => neededBy[number].length);
  const ready = visits.map((_, number) => number).filter((number) => waiting[number] === 0);
  for (let i = 0; i < ready.length; ++i) {
    for (const below of visits[ready[i]].needs) {
      depth[below] = Math.max(depth[below], depth[ready[i]] + 1);
      if (--waiting[below] === 0) ready.push(below);
    }
  }
  const layers = [];
  for (const number of ready) (layers[depth[number]] ||= []).push(number);
  return layers.filter(Boolean);
}

/// Puts each target near those that need it, and that it needs.
function orderLayers(layers) {
  const row = visits.map(() => 0);
  const place = () => layers.forEach((layer) => layer.forEach((number, at) => { row[number] = at - layer.length / 2; }));
  const middle = (numbers, own) => numbers.length === 0 ? own : numbers.reduce((sum, number) => sum + row[number], 0) / numbers.length;
  place();
  for (let round = 0; round < 6; ++round) {
    const around = round % 2 === 0 ? neededBy : visits.map((visit) => visit.needs);
    for (const layer of round % 2 === 0 ? layers : [...layers].reverse()) {
      const key = new Map(layer.map((number) => [number, middle(around[number], row[number])]));
      layer.sort((a, b) => key.get(a) - key.get(b));
      layer.forEach((number, at) => { row[number] = at - layer.length / 2; });
    }
  }
}

function clipped(text, most) {
  return text.length > most ? `${text.slice(0, most - 1)}\u2026` : text;
}

class TargetMap {
  constructor(place) {
    const layers = layersOfTargets();
    orderLayers(layers);
    const tallest = Math.max(...layers.map((layer) => layer.length));
    const width = layers.length * (kBox.width + kBox.across) - kBox.across + 40;
    const height = tallest * (kBox.height + kBox.down) + 30;
    this.at = new Map();
    layers.forEach((layer, column) => layer.forEach((number, row) => this.at.set(number, {
      x: 20 + column * (kBox.width + kBox.across),
      y: height / 2 + (row - layer.length / 2) * (kBox.height + kBox.down) + kBox.down / 2,
    })));
    const svg = makeSvg("svg", { width, height, role: "group", "aria-label": "Map of the targets" });
    visits.forEach((visit, number) => visit.needs.forEach((below) => svg.append(this.line(number, below))));
    this.nodes = visits.map((visit, number) => this.node(visit, number));
    svg.append(...this.nodes);
    place.append(make("div", { class: "map", tabindex: "0", role: "region", "aria-label": "Map of the targets" }, svg));
  }

  line(from, to) {
    const a = this.at.get(from);
    const b = this.at.get(to);
    const x = a.x + kBox.width;
    const y = a.y + kBox.height / 2;
    const end = b.y + kBox.height / 2;
    const bend = Math.max((b.x - x) / 2, 20);
    return makeSvg("path", { d: `M${x},${y} C${x + bend},${y} ${b.x - bend},${end} ${b.x},${end}` });
  }

  node(visit, number) {
    const { x, y } = this.at.get(number);
    const time = timeOf(visit);
    const words = [outcomeWords[visit.outcome], time > 0 ? duration(time) : "", visit.tool].filter(Boolean).join(", ");
    const text = makeSvg("text", { x: x + 10, y: y + 17 });
    text.textContent = clipped(titleOf(visit), 24);
    const small = makeSvg("text", { x: x + 10, y: y + 32, class: "small" });
    small.textContent = clipped(words, 28);
    const box = makeSvg("rect", { x, y, width: kBox.width, height: kBox.height, rx: visit.outcome === "failed" ? 1 : 6 });
    const link = makeSvg("a", { class: outcomeClass(visit.outcome), tabindex: "0", role: "button", "aria-label": `${titleOf(visit)}: ${words}` }, box, text, small);
    link.addEventListener("click", () => showTarget(number, false));
    link.addEventListener("keydown", (event) => {
      if (event.key === "Enter" || event.key === " ") {
        event.preventDefault();
        showTarget(number, false);
      }
    });
    return link;
  }

  mark(number) {
    this.nodes.forEach((node, other) => node.classList.toggle("chosen", other === number));
  }
}

function boxOf(number) {
  const visit = visits[number];
  return make("button", { class: `box ${outcomeClass(visit.outcome)}`, type: "button", click: () => showTarget(number, false) },
    titleOf(visit), " ", outcomeTag(visit.outcome));
}

function listAround(title, numbers) {
  const list = make("ul", {}, ...numbers.slice(0, kMostAround).map((number) => make("li", {}, boxOf(number))));
  if (numbers.length > kMostAround) {
    const more = make("button", { type: "button" }, `Show ${(numbers.length - kMostAround).toLocaleString("en")} more`);
    const item = make("li", {}, more);
    more.addEventListener("click", () => {
      item.replaceWith(...numbers.slice(kMostAround).map((number) => make("li", {}, boxOf(number))));
      linkBoxes();
    });
    list.append(item);
  }
  const none = numbers.length === 0 ? make("p", { class: "soft" }, "none") : null;
  return make("div", {}, make("h3", {}, `${title} (${numbers.length.toLocaleString("en")})`), none, list);
}

function reasonText(reason) {
  if (!reason.before && !reason.now) return make("span", {}, reason.text);
  return make("span", {}, make("code", {}, reason.name), make("span", { class: "values" },
    reason.before ? make("del", { class: "code" }, reason.before) : make("span", { class: "soft" }, "nothing"), " \u2192 ",
    reason.now ? make("ins", { class: "code" }, reason.now) : make("span", { class: "soft" }, "nothing")));
}

function commandDetails(number) {
  const command = commands[number];
  const what = [duration(command.time), size(command.memory), command.status ? `status ${command.status}` : ""].filter(Boolean).join(", ");
  return make("details", {}, make("summary", {}, `${clipped(stepName(command), 90)} (${what})`),
    make("pre", {}, command.command), command.output ? make("pre", {}, command.output) : null);
}

function detailsOf(visit) {
  const list = make("dl");
  const add = (name, value) => { if (value) list.append(make("dt", {}, name), make("dd", {}, value)); };
  add("Tool", visit.tool);
  add("Unit", visit.project ? `${visit.unit} of ${visit.project}` : visit.unit);
  add("Profile", visit.profile);
  add("Parameters", visit.arguments);
  add("Written in", shortPath(visit.place));
  add("Commands", visit.commands.length > 0 ? `${visit.commands.length} ran, ${duration(timeOf(visit))}` : "");
  add("Kept", visit.kept_commands > 0 ? `${counted(visit.kept_commands, "command")}, which took ${duration(visit.kept_time)}` : "");
  add("Visit", visit.kept ? "kept from an earlier run" : "");
  add("Said", visit.said ? make("pre", {}, visit.said) : "");
  return list;
}

function centerOf(number) {
  const visit = visits[number];
  const reasons = visit.reasons.map((reason) => make("li", {}, reasonText(reason)));
  return make("div", { class: "center", tabindex: "-1", id: "chosen" },
    make("h3", {}, titleOf(visit)), outcomeTag(visit.outcome), detailsOf(visit),
    reasons.length > 0 ? make("h3", {}, "Why") : null, reasons.length > 0 ? make("ol", {}, ...reasons) : null,
    ...visit.commands.slice(0, 100).map(commandDetails),
    visit.commands.length > 100 ? make("p", { class: "soft" }, `and ${visit.commands.length - 100} more commands`) : null);
}

/// Lines from the boxes to the one in the middle.
function linkBoxes() {
  const hood = document.querySelector(".hood");
  const svg = hood.querySelector("svg");
  const frame = hood.getBoundingClientRect();
  const middle = hood.querySelector(".center").getBoundingClientRect();
  const lines = [...hood.querySelectorAll(".box")].map((box) => {
    const rect = box.getBoundingClientRect();
    const left = rect.left < middle.left;
    const x = (left ? rect.right : rect.left) - frame.left;
    const y = rect.top + rect.height / 2 - frame.top;
    const end = (left ? middle.left : middle.right) - frame.left;
    const endY = Math.min(Math.max(y, middle.top - frame.top + 24), middle.bottom - frame.top - 12);
    return makeSvg("path", { d: `M${x},${y} C${(x + end) / 2},${y} ${(x + end) / 2},${endY} ${end},${endY}`, fill: "none", stroke: "currentColor", "stroke-opacity": "0.35" });
  });
  svg.replaceChildren(...lines);
}

let targetMap = null;

function showTarget(number, travel) {
  const place = document.getElementById("around");
  place.replaceChildren(make("div", { class: "hood" }, makeSvg("svg", { "aria-hidden": "true" }),
    listAround("Needed by", neededBy[number]), centerOf(number), listAround("Needs", visits[number].needs)));
  linkBoxes();
  if (targetMap) targetMap.mark(number);
  if (travel) document.getElementById("graph").scrollIntoView();
  document.getElementById("chosen").focus({ preventScroll: !travel });
}

function searchTargets(text, place) {
  const wanted = text.toLowerCase();
  const found = [];
  for (let i = 0; i < visits.length && found.length < 40; ++i) {
    if (titleOf(visits[i]).toLowerCase().includes(wanted)) found.push(i);
  }
  place.replaceChildren(...(wanted ? found.map((number) => make("li", {}, targetButton(number))) : []));
}

function drawTargets() {
  const place = bodyOf("graph");
  if (visits.length === 0) {
    place.append(make("p", { class: "soft" }, "No target was visited."));
    return;
  }
  const found = make("ul", { "aria-label": "Targets that were found" });
  const input = make("input", { type: "search", placeholder: "Find a target", "aria-label": "Find a target", input: () => searchTargets(input.value, found) });
  place.append(make("p", { class: "soft" }, `${counted(visits.length, "target")}; choose one to see what it needs and what needs it.`),
    make("div", { class: "tools" }, input), found);
  if (visits.length <= kMostOnMap) targetMap = new TargetMap(place);
  place.append(make("div", { id: "around" }));
  const first = visits.findIndex((visit) => visit.outcome === "failed");
  showTarget(Math.max(first, 0), false);
  addEventListener("resize", linkBoxes);
  document.activeElement.blur();
}
