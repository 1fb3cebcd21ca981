// The page: figures on top, then a section for each question.

function figure(label, value, note) {
  return make("li", {}, make("span", { class: "label" }, label), make("span", { class: "value" }, value), make("span", { class: "note" }, note || "\u00a0"));
}

/// The last run with the same request.
function runBefore() {
  return [...earlier].reverse().find((past) => past.target === run.target && past.profile === (run.profile || "")) || null;
}

function comparedWith(before) {
  if (!before || before.seconds === 0) return "";
  const change = Math.round((run.time / 1e6 / before.seconds - 1) * 100);
  const words = change === 0 ? "as long as" : `${Math.abs(change)} % ${change < 0 ? "less than" : "more than"}`;
  return `${words} the run before`;
}

function drawTop() {
  const words = { done: run.dry_run ? "Dry run" : "Build", failed: "Failed build", interrupted: "Interrupted build" };
  const when = new Date(run.when * 1000).toLocaleString();
  const parts = [run.profile ? `profile ${run.profile}` : "", `-j${run.jobs}`, when, run.directory];
  document.getElementById("title").textContent = `${words[run.outcome]} of ${run.target || "nothing"}`;
  document.getElementById("subtitle").textContent = parts.filter(Boolean).join(" \u00b7 ");
  const pathTime = data.path.reduce((sum, number) => sum + commands[number].time, 0);
  const troubles = [[totals.failed, "failed"], [totals.skipped, "skipped"], [totals.not_begun, "not begun"]]
    .filter(([count]) => count > 0).map(([count, word]) => `${count} ${word}`).join(", ");
  document.getElementById("figures").append(
    figure("Time", duration(run.time), comparedWith(runBefore())),
    figure(run.dry_run ? "Targets to build" : "Targets built", totals.built.toLocaleString("en"),
      [`${totals.fresh.toLocaleString("en")} up to date`, troubles].filter(Boolean).join(", ")),
    figure("Commands", commands.length.toLocaleString("en"), `${duration(totals.processor_time)} of processor time`),
    figure("At once", totals.running_time > 0 ? (totals.command_time / totals.running_time).toFixed(1) : "0", `on average, ${totals.most_at_once} at most`),
    figure("Critical path", percent(pathTime, run.time), `${duration(pathTime)} in ${counted(data.path.length, "step")}`),
    figure("Saved", duration(totals.kept_time), `${counted(totals.kept_commands, "command")} kept`));
}

function drawFailures() {
  const failed = visits.map((visit, number) => ({ visit, number })).filter(({ visit }) => visit.outcome === "failed");
  document.getElementById("failures").hidden = failed.length === 0;
  bodyOf("failures").append(...failed.slice(0, 50).map(({ visit, number }) =>
    make("div", {}, make("h3", {}, targetButton(number), " ", outcomeTag("failed")), make("pre", {}, visit.said || "nothing was said"))));
}

/// For how long so many commands ran at once.
function drawAtOnce(place) {
  const times = new Map();
  data.running.forEach(([time, running], i) => {
    const end = i + 1 < data.running.length ? data.running[i + 1][0] : run.time;
    times.set(running, (times.get(running) || 0) + end - time);
  });
  const before = data.running.length > 0 ? data.running[0][0] : run.time;
  times.set(0, (times.get(0) || 0) + before);
  const most = Math.max(...times.values());
  const rows = [...times.entries()].sort((a, b) => a[0] - b[0]).flatMap(([running, time]) => [
    make("span", {}, running === 0 ? "none" : String(running)),
    make("span", { class: "bar", style: `width: ${(time / most) * 100}%`, "aria-hidden": "true" }),
    make("span", {}, `${duration(time)}, ${percent(time, run.time)}`)]);
  place.append(make("h3", {}, "How many commands ran at once"), make("div", { class: "bars" }, ...rows));
}

function pathTable() {
  const row = (number) => {
    const command = commands[number];
    return [numberCell(duration(command.began)), numberCell(duration(command.time)), textCell(targetButton(command.visit)), textCell(make("span", { class: "code" }, clipped(stepName(command), 200)))];
  };
  return growingTable("The critical path: each step needs the one before it, so no number of workers makes the build shorter than that",
    [{ text: "From", class: "number" }, { text: "Time", class: "number" }, { text: "Target" }, { text: "Step" }], data.path, row, 12);
}

function drawTime() {
  const place = bodyOf("time");
  new Timeline(place);
  place.append(make("p", {}, `vesk itself: ${duration(totals.reading_time)} reading, ${duration(totals.cache_time)} in the cache.`));
  if (commands.length === 0) return;
  place.append(make("details", { open: data.path.length <= 12 }, make("summary", {}, "The critical path as a table"), pathTable()));
  drawAtOnce(place);
}

function drawSlowest() {
  const place = bodyOf("slowest");
  if (commands.length === 0) {
    place.append(make("p", { class: "soft" }, "No command ran."));
    return;
  }
  const numbers = commands.map((_, number) => number).sort((a, b) => commands[b].time - commands[a].time);
  const row = (number) => {
    const command = commands[number];
    return [numberCell(duration(command.time)), numberCell(percent(command.time, run.time), "optional"), textCell(targetButton(command.visit)),
      textCell(make("span", { class: "code" }, clipped(stepName(command), 200)), " ", onPath.has(number) ? make("span", { class: "tag path" }, "critical path") : null),
      numberCell(duration(command.processor), "optional"), numberCell(size(command.memory), "optional")];
  };
  place.append(growingTable("All commands, the longest first", [{ text: "Time", class: "number" }, { text: "Of the run", class: "number optional" },
    { text: "Target" }, { text: "Step" }, { text: "Processor", class: "number optional" }, { text: "Memory", class: "number optional" }], numbers, row, 15));
}

function whyTable(wanted, outcome) {
  const chosen = visits.map((_, number) => number).filter((number) =>
    (outcome === "all" || visits[number].outcome === outcome) && titleOf(visits[number]).toLowerCase().includes(wanted));
  const row = (number) => {
    const visit = visits[number];
    const reasons = visit.reasons.map((reason) => make("div", {}, reasonText(reason)));
    return [textCell(targetButton(number)), make("td", {}, outcomeTag(visit.outcome)),
      textCell(...(reasons.length > 0 ? reasons : [visit.outcome === "skipped" ? visit.said : ""])),
      numberCell(visit.commands.length > 0 ? duration(timeOf(visit)) : "")];
  };
  return growingTable(`${counted(chosen.length, "target")}`, [{ text: "Target" }, { text: "Outcome" }, { text: "Why" }, { text: "Time", class: "number" }], chosen, row, 20);
}

function drawWhy() {
  const place = make("div");
  const input = make("input", { type: "search", placeholder: "Filter by name", "aria-label": "Filter targets by name" });
  const present = [...new Set(visits.map((visit) => visit.outcome))];
  const select = make("select", { "aria-label": "Outcome" }, make("option", { value: "all" }, "all outcomes"),
    ...present.map((outcome) => make("option", { value: outcome, selected: outcome === "built" }, outcomeWords[outcome])));
  const update = () => place.replaceChildren(whyTable(input.value.toLowerCase(), select.value));
  input.addEventListener("input", update);
  select.addEventListener("change", update);
  bodyOf("why").append(make("div", { class: "tools" }, input, select), place);
  update();
}

function drawKept() {
  const kept = visits.map((_, number) => number).filter((number) => visits[number].kept_commands > 0)
    .sort((a, b) => visits[b].kept_time - visits[a].kept_time);
  const place = bodyOf("kept");
  place.append(make("p", {}, `${counted(totals.kept_commands, "command")} did not have to run; when they last did, they took ${duration(totals.kept_time)}. ` +
    `${counted(totals.kept_visits, "target")} did not even have to be visited.`));
  if (kept.length === 0) return;
  const row = (number) => [numberCell(duration(visits[number].kept_time)), textCell(targetButton(number)), numberCell(visits[number].kept_commands.toLocaleString("en"))];
  place.append(growingTable("What saved most", [{ text: "Saved", class: "number" }, { text: "Target" }, { text: "Commands", class: "number" }], kept, row, 8));
}

function drawWarnings() {
  const place = bodyOf("warnings");
  const groups = new Map();
  for (const warning of warnings) {
    const visit = commands[warning.command].visit;
    groups.set(visit, [...(groups.get(visit) || []), warning.text]);
  }
  if (groups.size === 0) {
    place.append(make("p", { class: "soft" }, "No command that ran in this build wrote a warning that vesk has seen."));
  }
  [...groups.entries()].slice(0, 200).forEach(([visit, lines]) => place.append(
    make("details", { open: groups.size <= 5 }, make("summary", {}, `${titleOf(visits[visit])} (${lines.length})`), make("pre", {}, lines.join("\n")), targetButton(visit, "Show the target"))));
}

function drawEarlier() {
  const place = bodyOf("earlier");
  if (earlier.length === 0) {
    place.append(make("p", { class: "soft" }, "This is the first run that is kept. Runs with --report or --stats are, the last twenty."));
    return;
  }
  const now = { when: run.when, seconds: run.time / 1e6, target: run.target, profile: run.profile || "", outcome: run.outcome, built: totals.built, fresh: totals.fresh, commands: commands.length, now: true };
  const all = [...earlier, now].reverse();
  const most = Math.max(...all.map((past) => past.seconds), 0.001);
  const row = (past) => [
    make("td", {}, past.now ? make("strong", {}, "this run") : new Date(past.when * 1000).toLocaleString()),
    textCell(past.target, past.profile ? ` (${past.profile})` : ""), numberCell(duration(past.seconds * 1e6)),
    make("td", { class: "optional", style: "width: 30%" }, make("div", { class: "bar", style: `width: ${(past.seconds / most) * 100}%; background: var(--${past.outcome === "done" ? (past.now ? "path" : "step") : "failed"})`, "aria-hidden": "true" })),
    numberCell(past.built.toLocaleString("en")), numberCell(past.fresh.toLocaleString("en"), "optional"), make("td", {}, past.outcome)];
  place.append(growingTable("The last runs that were kept, the newest first", [{ text: "When" }, { text: "Target" }, { text: "Time", class: "number" }, { text: "", class: "optional" }, { text: "Built", class: "number" }, { text: "Up to date", class: "number optional" }, { text: "Outcome" }], all, row, 21));
  drawSlower(place);
}

/// Steps that took much longer than in the run before.
function drawSlower(place) {
  const before = runBefore();
  if (!before) return;
  const known = new Map(before.slowest.map((step) => [`${step.target}\n${step.makes}`, step.seconds]));
  const slower = commands.map((command, number) => ({ number, before: known.get(`${visits[command.visit].target}\n${command.makes}`) * 1e6 }))
    .filter(({ number, before: time }) => time > 0 && commands[number].time > 1.2 * time + 1e5);
  if (slower.length === 0) return;
  const row = ({ number, before: time }) => [textCell(targetButton(commands[number].visit)), textCell(make("span", { class: "code" }, stepName(commands[number]))), numberCell(duration(time)), numberCell(duration(commands[number].time))];
  place.append(growingTable("Steps that took longer than in the run before", [{ text: "Target" }, { text: "Step" }, { text: "Before", class: "number" }, { text: "Now", class: "number" }], slower, row, 10));
}

function drawSections() {
  const links = [...document.querySelectorAll("main > section:not([hidden])")].map((section) =>
    make("a", { href: `#${section.id}` }, section.querySelector("h2").textContent));
  document.getElementById("sections").append(...links);
  document.getElementById("foot").textContent = `Written by vesk ${run.vesk}.`;
}

drawTop();
drawFailures();
drawTime();
drawSlowest();
drawWhy();
drawTargets();
drawKept();
drawWarnings();
drawEarlier();
drawSections();
document.documentElement.dataset.ready = "yes";
