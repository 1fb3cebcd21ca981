"""What a build shows of itself to programs and browsers: --events, --trace, --graph, --stats,
--report."""

import html.parser
import json
import os
import re
import signal
import subprocess
import unittest
from pathlib import Path

from harness import HANGS, SETTINGS, ProgramTest, needs, posix_only, wait_until

WHOLE = 'SIDE_BY_SIDE="yes"'
# Where pictures of the page are left to be looked at.
PICTURES = Path(os.environ.get("VESK_PICTURES") or SETTINGS.children / "pictures").resolve()


class Seen(ProgramTest):
    remembers = True
    unit_text = """
        all: app note { NO_TOOL }
        base: { ^OUT = P"(base.txt)" src = P"(a.src)" cmdline = "child copy ${src} ${OUT}" }
        lib: base { ^OUT = P"(lib.txt)" from = base.OUT cmdline = "child copy ${from} ${OUT}" }
        app: lib { ^OUT = P"(app.txt)" from = lib.OUT cmdline = "child copy ${from} ${OUT}" }
        note: base say(given) { cmdline = R"(child print "<b>noted</b>: warning: odd")"  given = "x" }
        say(word): { cmdline = "child print ${word}" }
        bad: base { cmdline = "child print first && child exit 3" }
        needs: bad { NO_TOOL }
        """

    def setUp(self):
        super().setUp()
        self.write("a.src", "one")
        self.unit(self.unit_text)

    def events(self, *arguments, status=0):
        result = self.run_vesk("--events=e.jsonl", *arguments)
        self.assertEqual(result.status, status, result.err)
        return [json.loads(line) for line in self.read("e.jsonl").splitlines()]

    def outcomes(self, events):
        return {event["target"]: event["outcome"] for event in events
                if (event["event"], event.get("what")) == ("finished", "target")}


class Events(Seen):
    def test_a_build(self):
        for jobs in ("-j1", "-j4"):
            events = self.events(jobs, WHOLE, "all", "--rebuild")
            times = [event["time"] for event in events]
            self.assertEqual(times, sorted(times))
            self.assertEqual((events[0]["what"], events[0]["version"]), ("run", 1))
            self.assertEqual((events[-1]["what"], events[-1]["outcome"]), ("run", "done"))
            begun, ended = {}, {}
            for event in events:
                if event.get("what") == "command":
                    (begun if event["event"] == "started" else ended)[event["id"]] = event
            self.assertEqual((begun.keys(), len(begun)), (ended.keys(), 5))
            self.assertTrue(all(event["status"] == 0 for event in ended.values()))
            said = {begun[event["id"]]["target"]: event["text"] for event in events
                    if event["event"] == "output"}
            self.assertEqual({name: text.strip() for name, text in said.items()},
                             {"vesk::note": said["vesk::note"].strip(), "vesk::say": "x"})
            self.assertIn("noted", said["vesk::note"])
            self.assertEqual(set(self.outcomes(events).values()), {"built", "group"})

    def test_what_is_needed_and_given(self):
        events = self.events("all")
        visits = {event["visit"]: event for event in events
                  if (event["event"], event.get("what")) == ("started", "visit")}
        pairs = {(visits[event["by"]]["target"], visits[event["visit"]]["target"])
                 for event in events if event["event"] == "needed"}
        self.assertEqual(pairs, {("vesk::all", "vesk::app"), ("vesk::all", "vesk::note"),
                                 ("vesk::app", "vesk::lib"), ("vesk::lib", "vesk::base"),
                                 ("vesk::note", "vesk::base"), ("vesk::note", "vesk::say")})
        given = [visit["arguments"] for visit in visits.values() if "arguments" in visit]
        self.assertEqual(given, ['"x"'])

    def test_reasons_with_both_values(self):
        self.unit(self.unit_text.replace('cmdline = "child print ${word}"',
                                         'cmdline = "child print changed"'))
        self.write("a.src", "two")
        reasons = [event for event in self.events("all") if event["event"] == "reason"]
        texts = {(reason["target"], reason["text"]) for reason in reasons}
        self.assertIn(("vesk::base", "it has not been built before"), texts)
        self.unit(self.unit_text)
        self.write("a.src", "three")
        reasons = {event["target"]: event for event in self.events("all")
                   if event["event"] == "reason"}
        self.assertEqual(reasons["vesk::base"]["text"], "a.src has changed")
        self.assertTrue(reasons["vesk::base"]["file"].endswith("a.src"))
        say = reasons["vesk::say"]
        self.assertEqual((say["name"], say["before"], say["now"]),
                         ("cmdline", '"child print changed"', '"child print x"'), say)

    def test_failures(self):
        events = self.events("needs", status=1)
        self.assertEqual(self.outcomes(events)["vesk::bad"], "failed")
        self.assertEqual(events[-1]["outcome"], "failed")
        said = next(event["said"] for event in events if event.get("outcome") == "failed")
        self.assertIn("Command ended with status 3", said)
        events = self.events("-k", "-j2", WHOLE, "needs", status=1)
        self.assertEqual(self.outcomes(events), {"vesk::base": "fresh", "vesk::bad": "failed",
                                                 "vesk::needs": "skipped"})

    def test_kept_and_repeated_runs(self):
        self.events("app")
        self.pass_a_tick()
        events = self.events("app")
        if not any(event["event"] == "repeated" for event in events):
            kept = [event["kept"] for event in events
                    if (event["event"], event.get("what")) == ("finished", "visit")]
            self.assertEqual(len(kept), 3)
        self.assertFalse(any(event.get("what") == "command" for event in events))
        out = self.build("app", "--stats")
        self.assertIn("0 built, 3 up to date", out)

    def test_values_of_the_command_line_are_covered(self):
        self.unit('t: { cmdline = "child print ${TOKEN}" }')
        self.run_vesk("--define=TOKEN=secretive", "--events=e.jsonl", "--trace=t.json",
                      "--report=r.html", "t")
        begun = [json.loads(line) for line in self.read("e.jsonl").splitlines()]
        commands = [event["command"] for event in begun
                    if (event["event"], event.get("what")) == ("started", "command")]
        self.assertEqual(commands, ["child print ***"])
        self.assertNotIn("print secretive", self.read("t.json") + self.read("r.html"))

    def test_on_standard_output(self):
        result = self.run_vesk("--events=-", "all")
        for line in result.out.splitlines():
            json.loads(line)
        self.assertIn("Build done", result.err)
        self.assertIn("noted", result.err)


class Trace(Seen):
    def test_its_schema(self):
        self.build("-j4", WHOLE, "--trace=t.json", "all")
        trace = json.loads(self.read("t.json"))
        self.assertEqual(trace["displayTimeUnit"], "ms")
        lanes = {}
        for event in trace["traceEvents"]:
            self.assertIn(event["ph"], "XMC")
            self.assertIsInstance(event["pid"], int)
            self.assertIsInstance(event["name"], str)
            if event["ph"] == "X":
                self.assertIsInstance(event["ts"], int)
                self.assertGreaterEqual(event["dur"], 0)
                lanes.setdefault(event["tid"], []).append(event)
        self.assertTrue(lanes[0])
        for stretches in lanes.values():
            self.check_nesting(stretches)
        commands = [event for event in trace["traceEvents"] if event.get("cat") == "command"]
        self.assertEqual(len(commands), 5)
        for command in commands:
            self.assertEqual(command["args"]["status"], 0)
            self.assertGreaterEqual(command["args"]["processor_seconds"], 0)
            if not SETTINGS.windows:
                self.assertGreater(command["args"]["memory_bytes"], 100_000)
        self.assertEqual({event["cat"] for event in lanes[0]}, {"reading", "visit", "cache"})

    def check_nesting(self, stretches):
        """Those of a lane are inside one another or apart."""
        around = []
        for event in stretches:
            while around and around[-1] <= event["ts"]:
                around.pop()
            end = event["ts"] + event["dur"]
            self.assertTrue(not around or end <= around[-1], event)
            around.append(end)

    def test_after_a_failure(self):
        self.assertEqual(self.run_vesk("--trace=t.json", "needs").status, 1)
        trace = json.loads(self.read("t.json"))
        self.assertEqual(trace["otherData"]["outcome"], "failed")
        self.assertIn("terrible", [event.get("cname") for event in trace["traceEvents"]])


class Graph(Seen):
    def test_as_json(self):
        self.run_vesk("--graph=g.json", "-k", "-j2", WHOLE, "needs")
        graph = json.loads(self.read("g.json"))
        names = {target["id"]: target["target"] for target in graph["targets"]}
        self.assertEqual({(names[edge["from"]], names[edge["to"]]) for edge in graph["needs"]},
                         {("vesk::needs", "vesk::bad"), ("vesk::bad", "vesk::base")})
        self.assertEqual({target["target"]: target["outcome"] for target in graph["targets"]},
                         {"vesk::needs": "skipped", "vesk::bad": "failed", "vesk::base": "built"})

    def test_for_a_pipe(self):
        result = self.run_vesk("-n", "--graph=-", "all")
        self.assertTrue(result.out.startswith("digraph vesk {\n"), result.out)
        self.assertTrue(result.out.endswith("}\n"))
        self.assertIn("to build", result.out)
        self.assertIn("child copy", result.err)

    def test_of_what_is_kept(self):
        self.build("all")
        for _ in range(2):
            self.pass_a_tick()
            self.build("--graph=g.json", "all")
            graph = json.loads(self.read("g.json"))
            self.assertEqual(len(graph["targets"]), 6)
            self.assertEqual(len(graph["needs"]), 6)
            self.assertEqual({target["outcome"] for target in graph["targets"]},
                             {"fresh", "group"})

    @needs("dot")
    @posix_only("Graphviz is the system's own")
    def test_laid_out(self):
        self.build("--graph=g \u00e4.svg", "all")
        text = self.read("g \u00e4.svg")
        self.assertIn("</svg>", text)
        for name in ("app", "lib", "base", "note", "say", "all"):
            self.assertIn(f"vesk::{name}", text)
        self.assertNotIn("g \u00e4.svg.dot", self.files())

    @posix_only("PATH is the harness's")
    def test_without_graphviz(self):
        self.check("--graph=g.svg", "all", env={"PATH": str(SETTINGS.children / "bin")},
                   out="", status=1, err="""
            Error: Graphviz, which lays out 'g.svg', was not found.
              install it, so that its program 'dot' is in PATH, or write --graph=FILE.dot or FILE.json, which need no layout
            """)

    def test_names_that_say_no_form(self):
        self.check_error("--graph=g.png", "all", out="", err="""
            Error: The graph's file 'g.png' has a name that says no form.
              write --graph=FILE.dot, FILE.svg or FILE.json, or '-' for DOT on standard output
            """)


class Stats(Seen):
    def lines(self, *arguments):
        return self.run_vesk("--stats", "-v", "6", *arguments).out.splitlines()

    def test_lines(self):
        lines = self.lines("-j2", WHOLE, "all", "--rebuild")
        stats = lines[lines.index("Request         vesk::all, -j2"):]
        self.assertLessEqual(len(stats), 22)
        names = [line[:15].strip() for line in stats]
        self.assertEqual([name for name in names if name and name != "Most memory"],
                         ["Request", "Run", "Targets", "Kept", "Commands", "At once",
                          "Vesk itself", "Critical path", "Slowest", "Warnings"])
        for line in ("Targets         5 built, 0 up to date", "Kept            0 visits, 0 commands",
                     "Commands        5 ran, {*} in all, {*} of processor time",
                     "At once         {*} on average, {*} at most",
                     "Critical path   {*} in {*} commands, {*} % of the run",
                     "Warnings        1 line of 1 target"):
            name = line[:15].strip()
            self.same(stats[names.index(name)], line, name)
        self.assertIn("The run before", "\n".join(self.lines("all")))

    def test_for_programs(self):
        self.build("all")
        result = self.run_vesk("--stats=json", "all")
        stats = json.loads(result.out)
        self.assertEqual(stats["targets"]["fresh"], 5)
        self.assertEqual(stats["kept"]["commands"], 5)
        self.assertEqual(stats["commands"]["ran"], 0)
        self.assertIn("Build done", result.err)

    def test_the_critical_path(self):
        """The chain of copies; what is printed beside it is not on it."""
        stats = json.loads(self.run_vesk("--stats=json", "-j8", WHOLE, "app").out)
        self.assertEqual([step["target"] for step in stats["critical_path"]],
                         ["vesk::base", "vesk::lib", "vesk::app"])

    def test_twenty_runs_are_kept(self):
        for _ in range(21):
            self.run_vesk("--stats", "base")
        self.run_vesk("--stats", "app")
        runs = json.loads(self.read(".vesk_cache.runs"))["runs"]
        self.assertEqual(len(runs), 20)
        self.assertEqual(runs[-1]["target"], "vesk::app")
        self.write(".vesk_cache.runs", "{ damaged")
        self.build("--stats", "app")
        self.assertEqual(len(json.loads(self.read(".vesk_cache.runs"))["runs"]), 1)

    def test_tests_too(self):
        self.unit('t: { TEST = "yes" cmdline = "child print tested" }')
        stats = json.loads(self.run_vesk("--test", "--stats=json").out)
        self.assertEqual((stats["commands"]["ran"], stats["run"]["outcome"]), (1, "done"))


class Refusals(Seen):
    def test_a_missing_directory(self):
        for option, what in (("events", "events"), ("trace", "trace"), ("report", "report")):
            self.check_error(f"--{option}=no/file.x", "all", out="", err=f"""
                Error: Unable to write the {what} 'no/file.x': {{*}}.
                  the directory 'no' does not exist; create it first
                """)
        self.assertEqual(self.files(), ["a.src", "vesk.txt"])

    def test_two_on_standard_output(self):
        self.check_error("--events=-", "--trace=-", "all", out="", err="""
            Error: Two options want standard output for themselves.
              give one of them a file; --stats=json and '-' need standard output
            """)

    @posix_only("a full disk is a device of Linux")
    @unittest.skipUnless(os.path.exists("/dev/full"), "no /dev/full")
    def test_a_full_disk(self):
        result = self.run_vesk("--trace=/dev/full", "app")
        self.assertEqual(result.status, 1)
        self.assertIn("Error: Unable to write the trace '/dev/full': No space left on device.",
                      result.err)
        self.assertTrue((self.dir / "app.txt").exists())


class Interrupted(Seen):
    @posix_only("signals are sent as on POSIX")
    def test_what_was_seen_is_written(self):
        self.unit('t: { here = P"(.)"  cmdline = "child linger ${here}/started" }')
        process = self.start("--events=e.jsonl", "--trace=t.json", "--report=r.html",
                             "--graph=g.json", "--stats")
        wait_until(lambda: (self.dir / "started").exists())
        begun = [json.loads(line) for line in self.read("e.jsonl").splitlines()]
        self.assertEqual(begun[-1]["what"], "command")  # while it still runs
        process.send_signal(signal.SIGTERM)
        out, _ = process.communicate(timeout=HANGS)
        self.assertEqual(process.returncode, 143)
        self.assertIn("interrupted in", self.plain(out))
        self.assertEqual(json.loads(self.read("e.jsonl").splitlines()[-1])["outcome"],
                         "interrupted")
        self.assertEqual(json.loads(self.read("t.json"))["otherData"]["outcome"], "interrupted")
        self.assertEqual(json.loads(self.read("g.json"))["targets"][0]["target"], "vesk::t")
        self.assertIn('"outcome":"interrupted"', self.read("r.html"))

    @posix_only("signals are sent as on POSIX")
    @needs("dot")
    def test_a_layout_is_not_waited_for(self):
        self.unit('t: { here = P"(.)"  cmdline = "child linger ${here}/started" }')
        self.write("old.svg", "old")
        for name, kept in (("old.svg", "old"), ("new.svg", None)):
            (self.dir / "started").unlink(missing_ok=True)
            process = self.start(f"--graph={name}")
            wait_until(lambda: (self.dir / "started").exists())
            process.send_signal(signal.SIGTERM)
            said = self.plain(process.communicate(timeout=HANGS)[1])
            self.assertIn(f"Error: The graph '{name}' was not written.\n  an interrupted run", said)
            self.assertEqual(self.read(name) if (self.dir / name).exists() else None, kept)


class PageText(html.parser.HTMLParser):
    """The ids of a page, and its texts."""

    def __init__(self, text):
        super().__init__()
        self.ids, self.texts = {}, []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        if "id" in attributes:
            self.ids[attributes["id"]] = attributes

    def handle_data(self, text):
        self.texts.append(text)


class Report(Seen):
    def test_needs_nothing_from_elsewhere(self):
        self.build("--report=r.html", "all")
        page = self.read("r.html")
        self.assertNotRegex(page, r'(src|href)="(?!#|data:,)')
        self.assertNotRegex(page, r"@(title|style|script|data|stats)@")
        self.assertNotIn("<b>noted", page)
        self.assertIn("Content-Security-Policy", page)

    def test_of_a_failure(self):
        self.assertEqual(self.run_vesk("--report=r.html", "needs").status, 1)
        self.assertIn('"outcome":"failed"', self.read("r.html"))


@needs("chromium")
@posix_only("the browser is the system's own")
class Browser(Seen):
    def chromium(self, *arguments):
        command = ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu",
                   "--disable-dev-shm-usage", "--hide-scrollbars", "--no-first-run",
                   "--virtual-time-budget=5000", "--enable-logging=stderr",
                   f"--user-data-dir={self.base}/browser", *arguments]
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=300, check=True, env={**os.environ, "HOME": str(self.base)})

    def page(self, name="r.html"):
        result = self.chromium("--dump-dom", f"file://{self.dir}/{name}")
        console = [line for line in result.stderr.splitlines() if "CONSOLE" in line]
        self.assertEqual(console, [])
        return PageText(result.stdout), result.stdout

    def picture(self, name, size="1280,2400", dark=False):
        """Draws the page, and leaves the picture to be looked at."""
        scheme = ["--blink-settings=preferredColorScheme=0"] if dark else []
        file = PICTURES / name
        PICTURES.mkdir(parents=True, exist_ok=True)
        self.chromium(f"--screenshot={file}", f"--window-size={size}", *scheme,
                      f"file://{self.dir}/r.html")
        content = file.read_bytes()
        self.assertTrue(content.startswith(b"\x89PNG"))
        self.assertGreater(len(content), 20_000)

    # A compiler, seen from far: each step takes its tenths of a second.
    libraries = {"text": ([], 3), "io": (["text"], 2), "version": ([], 1),
                 "parser": (["text", "grammar"], 6), "grammar": ([], 4), "types": (["text"], 3),
                 "checker": (["types", "parser"], 5), "optimizer": (["types"], 7),
                 "codegen": (["optimizer", "checker"], 4), "runtime": (["io"], 3),
                 "compiler": (["codegen", "io", "version"], 3), "docs": (["grammar"], 2),
                 "formatter": (["parser", "io"], 2)}

    def write_compiler(self):
        lines = ["unit main", "all: compiler formatter runtime docs { NO_TOOL }"]
        for name, (needs, tenths) in self.libraries.items():
            self.write(f"src/{name}.src", name)
            said = "; echo 'src/types.src:41: warning: unused rule'" if name == "types" else ""
            lines.append(f'{name}: {" ".join(needs)} {{ LEVEL ?= "1"  src = P"(src/{name}.src)" '
                         f'^OUT = P"(out/{name})" cmdline = "sleep 0.{tenths}{said}; '
                         'cat ${src} > ${OUT} # ${LEVEL}" }')
        self.unit("\n".join(lines) + "\n")

    @needs("dot")
    def test_pictures(self):
        """Those of the documentation are made with VESK_PICTURES=docs/pictures."""
        self.write_compiler()
        self.build("-j4", WHOLE, "--stats", "all")
        for name in ("types", "grammar"):
            self.write(f"src/{name}.src", "changed")
        self.write("vesk.txt", self.read("vesk.txt").replace('optimizer: types { LEVEL ?= "1"',
                                                             'optimizer: types { LEVEL ?= "2"'))
        self.build("-j4", WHOLE, "--report=r.html", "--graph=g.svg", "all")
        self.write("r.html", self.read("r.html").replace(str(self.dir), "/home/ada/compiler").encode())
        self.picture("report.png", size="1200,1500")
        self.picture("report-dark.png", size="1200,1500", dark=True)
        graph = re.sub(r"<title>[^<]*</title>|xlink:title=\"[^\"]*\"", "", self.read("g.svg"))
        (PICTURES / "graph.svg").write_text(graph)

    def test_a_build(self):
        self.build("-j4", WHOLE, "--report=r.html", "all")
        self.write("a.src", "two")
        self.build("-j4", WHOLE, "--report=r.html", "all")
        page, text = self.page()
        self.assertIn('data-ready="yes"', text)
        self.assertIn('data-drawn="', text)
        said = " ".join(page.texts)
        for words in ("Build of vesk::all", "a.src has changed", "Slowest steps", "up to date",
                      "this run", "Needed by"):
            self.assertIn(words, said)
        self.picture("report-narrow.png", size="500,2400")

    def test_a_failure(self):
        self.run_vesk("-k", "-j4", WHOLE, "--report=r.html", "needs")
        page, _ = self.page()
        self.assertNotIn("hidden", page.ids["failures"])
        self.assertIn("Command ended with status 3", " ".join(page.texts))

    def test_nothing_to_do(self):
        self.build("all")
        self.build("--report=r.html", "all")
        page, text = self.page()
        self.assertIn('data-ready="yes"', text)
        self.assertIn("No command ran.", " ".join(page.texts))
