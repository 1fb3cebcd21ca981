// The timeline: a lane for vesk itself and one for each command that ran at the same time.

const knownColours = new Map();

/// As the style sheet has it now. Asked for once in a drawing.
function colour(name) {
  if (!knownColours.has(name)) {
    knownColours.set(name, getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim());
  }
  return knownColours.get(name);
}

/// A round step for about so many ticks.
function tickStep(span, most) {
  const rough = span / most;
  const power = 10 ** Math.floor(Math.log10(rough));
  return power * [1, 2, 5, 10].find((factor) => factor * power >= rough);
}

class Timeline {
  constructor(place) {
    this.end = Math.max(run.time, 1);
    this.from = 0;
    this.to = this.end;
    this.lanes = commands.reduce((most, command) => Math.max(most, command.lane + 1), 0);
    this.row = this.lanes > 24 ? 12 : this.lanes > 12 ? 16 : 22;
    this.top = 20;
    this.area = commands.length > 0 ? 44 : 0;
    this.byLane = Array.from({ length: this.lanes }, () => []);
    this.order = commands.map((_, number) => number).sort((a, b) => commands[a].began - commands[b].began);
    for (const number of this.order) this.byLane[commands[number].lane].push(number);
    this.chosen = null;
    this.makeElements(place);
    this.listen();
    this.draw();
  }

  makeElements(place) {
    const words = `${counted(commands.length, "command")} over ${duration(this.end)}. ` +
      "Arrow keys go from step to step, plus and minus zoom, Enter shows the target.";
    this.canvas = make("canvas", { tabindex: "0", role: "img", "aria-label": `Timeline: ${words}` });
    this.tip = make("div", { class: "tip", hidden: true });
    this.said = make("p", { "aria-live": "polite", class: "soft" }, words);
    const button = (text, label, click) => make("button", { type: "button", "aria-label": label, click }, text);
    place.append(
      make("div", { class: "tools" },
        button("+", "Zoom in", () => this.zoom(0.5)),
        button("\u2212", "Zoom out", () => this.zoom(2)),
        button("\u25c2", "Earlier", () => this.shift(-0.25)),
        button("\u25b8", "Later", () => this.shift(0.25)),
        button("Whole run", "Show the whole run", () => this.show(0, this.end)),
        data.path.length > 0 ? button("Critical path", "Choose the longest step of the critical path", () => this.chooseOnPath()) : null),
      make("div", { class: "timeline" }, this.canvas, this.tip),
      this.legend(), this.said);
  }

  legend() {
    const entry = (name, text) => make("span", {}, make("i", { style: `background: var(--${name})` }), text);
    return make("div", { class: "legend" }, entry("step", "command"), entry("path", "critical path"),
      entry("failed", "failed"), entry("read", "reading"), entry("cache", "cache"), entry("line", "visits"),
      entry("area", "how many ran at once"));
  }

  listen() {
    this.canvas.addEventListener("mousemove", (event) => this.hover(event));
    this.canvas.addEventListener("mouseleave", () => { this.tip.hidden = true; });
    this.canvas.addEventListener("click", (event) => this.choose(this.hit(event)));
    this.canvas.addEventListener("dblclick", (event) => this.open(this.hit(event)));
    this.canvas.addEventListener("keydown", (event) => this.key(event));
    this.canvas.addEventListener("wheel", (event) => {
      if (event.ctrlKey || event.shiftKey) {
        event.preventDefault();
        this.zoom(event.deltaY > 0 || event.deltaX > 0 ? 1.25 : 0.8, this.timeAt(event.offsetX));
      }
    }, { passive: false });
    this.canvas.addEventListener("pointerdown", (event) => this.drag(event));
    new ResizeObserver(() => this.draw()).observe(this.canvas.parentElement);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.draw());
  }

  drag(start) {
    const { from, to } = this;
    const move = (event) => {
      const by = ((start.clientX - event.clientX) / this.width) * (to - from);
      this.show(from + by, to + by);
    };
    const stop = () => {
      removeEventListener("pointermove", move);
      removeEventListener("pointerup", stop);
    };
    addEventListener("pointermove", move);
    addEventListener("pointerup", stop);
  }

  show(from, to) {
    const span = Math.min(Math.max(to - from, 50), this.end);
    this.from = Math.min(Math.max(from, 0), this.end - span);
    this.to = this.from + span;
    this.draw();
  }

  zoom(factor, at = (this.from + this.to) / 2) {
    this.show(at - (at - this.from) * factor, at + (this.to - at) * factor);
  }

  shift(part) {
    const by = (this.to - this.from) * part;
    this.show(this.from + by, this.to + by);
  }

  key(event) {
    const at = this.chosen === null ? -1 : this.order.indexOf(this.chosen);
    const actions = {
      ArrowRight: () => this.choose(this.order[Math.min(at + 1, this.order.length - 1)]),
      ArrowLeft: () => this.choose(this.order[Math.max(at - 1, 0)]),
      Home: () => this.choose(this.order[0]),
      End: () => this.choose(this.order[this.order.length - 1]),
      "+": () => this.zoom(0.5),
      "=": () => this.zoom(0.5),
      "-": () => this.zoom(2),
      0: () => this.show(0, this.end),
      Enter: () => this.open(this.chosen),
    };
    if (actions[event.key]) {
      event.preventDefault();
      actions[event.key]();
    }
  }

  timeAt(x) {
    return this.from + (x / this.width) * (this.to - this.from);
  }

  x(time) {
    return ((time - this.from) / (this.to - this.from)) * this.width;
  }

  laneTop(lane) {
    return this.top + this.area + (lane + 1) * (this.row + 2) + 4;
  }

  hit(event) {
    const lane = Math.floor((event.offsetY - this.laneTop(0)) / (this.row + 2));
    const time = this.timeAt(event.offsetX);
    const slack = (this.to - this.from) / this.width;
    const found = (this.byLane[lane] || []).find((number) =>
      commands[number].began - slack <= time && time <= commands[number].began + commands[number].time + slack);
    return found === undefined ? null : found;
  }

  describe(number) {
    const command = commands[number];
    const used = command.memory ? `, ${size(command.memory)} of memory` : "";
    const ended = command.status === null ? ", did not end" : command.status === 0 ? "" : `, failed with status ${command.status}`;
    return `${visits[command.visit].target}: ${stepName(command)}, ${duration(command.time)} from ` +
      `${duration(command.began)}, ${duration(command.processor)} of processor time${used}${ended}` +
      (onPath.has(number) ? ", on the critical path" : "");
  }

  hover(event) {
    const number = this.hit(event);
    this.tip.hidden = number === null;
    if (number !== null) {
      this.tip.textContent = this.describe(number);
      this.tip.style.left = `${Math.min(event.offsetX + 12, Math.max(0, this.width - 240))}px`;
      this.tip.style.top = `${event.offsetY + 16}px`;
    }
  }

  choose(number) {
    if (number === null || number === undefined) return;
    this.chosen = number;
    const { began, time } = commands[number];
    if (began < this.from || began + time > this.to) {
      const half = Math.max((this.to - this.from) / 2, time);
      this.show(began + time / 2 - half, began + time / 2 + half);
    } else {
      this.draw();
    }
    this.said.textContent = this.describe(number);
  }

  chooseOnPath() {
    this.canvas.focus();
    this.choose(data.path.reduce((a, b) => (commands[b].time > commands[a].time ? b : a)));
  }

  open(number) {
    if (number !== null) showTarget(commands[number].visit, true);
  }

  draw() {
    knownColours.clear();
    const width = this.canvas.parentElement.clientWidth;
    const height = this.laneTop(this.lanes) + 4;
    const scale = window.devicePixelRatio || 1;
    this.width = Math.max(width, 1);
    this.canvas.style.height = `${height}px`;
    this.canvas.width = this.width * scale;
    this.canvas.height = height * scale;
    const pen = this.canvas.getContext("2d");
    pen.scale(scale, scale);
    pen.font = "11px system-ui, sans-serif";
    pen.textBaseline = "middle";
    this.drawTicks(pen, height);
    this.drawArea(pen);
    this.drawOwnLane(pen);
    this.canvas.dataset.drawn = this.drawCommands(pen);
    this.drawPath(pen);
  }

  drawTicks(pen, height) {
    const step = tickStep(this.to - this.from, this.width / 90);
    pen.strokeStyle = colour("line");
    pen.fillStyle = colour("soft");
    for (let time = Math.ceil(this.from / step) * step; time <= this.to; time += step) {
      const x = Math.round(this.x(time)) + 0.5;
      pen.beginPath();
      pen.moveTo(x, 14);
      pen.lineTo(x, height);
      pen.stroke();
      pen.fillText(duration(time), Math.min(x + 3, this.width - 40), 8);
    }
  }

  drawArea(pen) {
    const most = Math.max(totals.most_at_once, 1);
    const bottom = this.top + this.area;
    pen.fillStyle = colour("area");
    pen.beginPath();
    pen.moveTo(this.x(0), bottom);
    let last = bottom;
    for (const [time, running] of data.running) {
      const y = bottom - (running / most) * (this.area - 4);
      pen.lineTo(this.x(time), last);
      pen.lineTo(this.x(time), y);
      last = y;
    }
    pen.lineTo(this.x(this.end), bottom);
    pen.fill();
  }

  drawOwnLane(pen) {
    const y = this.laneTop(-1);
    const bar = (began, time, name, inset) => {
      const x = this.x(began);
      const end = this.x(began + time);
      if (end < 0 || x > this.width) return;
      pen.fillStyle = colour(name);
      pen.fillRect(x, y + inset, Math.max(end - x, 1), this.row - 2 * inset);
    };
    if (visits.length > 0) bar(visits[0].began, visits[0].time, "line", 0);
    for (const activity of activities) bar(activity.began, activity.time, activity.what, 3);
  }

  /// How many have been drawn. Of plain ones that fall on one pixel only the first is drawn.
  drawCommands(pen) {
    const special = (number) => commands[number].status || onPath.has(number);
    let drawn = 0;
    pen.fillStyle = colour("step");
    for (const numbers of this.byLane) {
      let last = -1;
      for (const number of numbers) {
        const end = this.x(commands[number].began + commands[number].time);
        if (special(number) || end <= last) continue;
        drawn += this.drawBar(pen, number) ? 1 : 0;
        last = Math.ceil(end);
      }
    }
    for (const [name, wanted] of [["path", (number) => !commands[number].status], ["failed", (number) => commands[number].status]]) {
      pen.fillStyle = colour(name);
      drawn += this.order.filter((number) => special(number) && wanted(number) && this.drawBar(pen, number)).length;
    }
    if (this.chosen !== null) this.drawFrame(pen, this.chosen);
    return drawn;
  }

  drawBar(pen, number) {
    const { began, time, lane } = commands[number];
    const x = this.x(began);
    const end = Math.max(this.x(began + time), x + 1);
    if (end < 0 || x > this.width) return false;
    const y = this.laneTop(lane);
    pen.fillRect(x, y, Math.max(end - x - 0.5, 1), this.row);
    this.drawName(pen, number, Math.max(x, 0), Math.min(end, this.width), y);
    return true;
  }

  drawFrame(pen, number) {
    const { began, time, lane } = commands[number];
    pen.strokeStyle = colour("ink");
    pen.lineWidth = 2;
    pen.strokeRect(this.x(began), this.laneTop(lane), Math.max(this.x(began + time) - this.x(began), 3), this.row);
    pen.lineWidth = 1;
  }

  drawName(pen, number, x, end, y) {
    if (end - x < 44 || this.row < 14) return;
    pen.save();
    pen.beginPath();
    pen.rect(x, y, end - x - 4, this.row);
    pen.clip();
    const command = commands[number];
    pen.fillStyle = command.status || onPath.has(number) ? colour("card") : colour("step-ink");
    pen.fillText(visits[command.visit].target, x + 5, y + this.row / 2 + 1);
    pen.restore();
  }

  /// Lines from each step of the critical path to the next, where they can be told apart.
  drawPath(pen) {
    const visible = data.path.filter((number) => commands[number].began <= this.to && commands[number].began + commands[number].time >= this.from);
    if (visible.length > this.width / 12) return;
    pen.strokeStyle = colour("path");
    pen.lineWidth = 1.5;
    for (let i = 1; i < data.path.length; ++i) {
      const a = commands[data.path[i - 1]];
      const b = commands[data.path[i]];
      pen.beginPath();
      pen.moveTo(this.x(a.began + a.time), this.laneTop(a.lane) + this.row / 2);
      pen.lineTo(this.x(b.began), this.laneTop(b.lane) + this.row / 2);
      pen.stroke();
    }
    pen.lineWidth = 1;
  }
}
