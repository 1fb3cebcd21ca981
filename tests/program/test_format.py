"""The layout of files, and what is wrong with them: --format and --lint."""

import json
import random
import re
from pathlib import Path

from harness import EXAMPLES, ProgramTest, posix_only

ROOT = EXAMPLES.parent
# A second reading of the language, just good enough to tell texts of the same tokens: what the
# program compares must not be all that is compared.
TOKEN = re.compile(r'[RP]"\((?:.|\n)*?\)"|"[^"]*"|//[^\r\n]*|/\*(?:.|\n)*?\*/|\'[^\'\r\n]*\'|'
                   r"[A-Za-z_][\w-]*|-?\w+|::|=>|\+>|!=|\+=|\?=|\.\.|[^\s\w]")


def tokens(text):
    return [token.rstrip() for token in TOKEN.findall(text)]


def documented():
    """The blocks of the documentation that are whole units."""
    for page in sorted((ROOT / "docs").glob("*.md")):
        for block in re.findall(r"```\n(.*?)```", page.read_text(encoding="utf-8"), re.S):
            if re.match(r"(//|unit |\w+(\(.*\))?: )", block) and "..." not in block:
                yield block


def sources():
    files = [*EXAMPLES.rglob("*.txt"), *(ROOT / "units").glob("*.txt"),
             *(ROOT / "bench/projects.d").rglob("*.txt")]
    named = [file for file in files if file.name in ("vesk.txt", ".vesk_project.txt")]
    return [*((file.name, file.read_text(encoding="utf-8")) for file in sorted(named)),
            *(("vesk.txt", block) for block in documented())]


def shaken(text, chance):
    """The same tokens with other blanks, line ends and comments between them."""
    gaps = [" ", "\n", "\n\n\n", "\t", " // c\n", "/* c */", "\n/* c\n*/ ", "  "]
    parts = []
    for token in tokens(text):
        parts.append(token)
        parts.append("\n" if token.startswith("//") else chance.choice(gaps))
    return "".join(parts)


class Format(ProgramTest):
    def format_all(self, texts):
        names = []
        for number, (name, text) in enumerate(texts):
            names.append(f"{number}/{name}")
            self.write(names[-1], text.encode())
        result = self.run_vesk("--format", *names)
        self.assertEqual((result.err, result.status), ("", 0))
        self.check("--format=check", *names)
        for name, (_, text) in zip(names, texts):
            self.assertEqual(tokens(self.read(name)), tokens(text), name)
        return [self.read(name) for name in names]

    def test_all_that_there_is(self):
        texts = sources()
        self.assertGreater(len(texts), 25)
        self.format_all(texts)

    def test_shaken_texts_mean_the_same(self):
        chance = random.Random(11)
        self.format_all([(name, shaken(text, chance)) for name, text in sources()])

    def test_files(self):
        self.write("a.txt", "a:{}")
        self.write("b c.txt", "b: {}\n")
        self.check("--format=check", "a.txt", "b c.txt", out="a.txt\n", status=1)
        self.assertEqual(self.read("a.txt"), "a:{}")
        self.check("--format", "a.txt", "b c.txt", out="a.txt\n")
        self.assertEqual(self.read("a.txt"), "a: {}\n")
        self.assertEqual(self.files(), ["a.txt", "b c.txt"])

    def test_the_project_s_files(self):
        self.write(".vesk_project.txt", 'name p units { u { "x.txt" "sub/y.txt" } }')
        self.write("x.txt", "a: {}\n")
        self.write("sub/y.txt", "b:{}")
        self.check("--format", cwd=self.dir / "sub", out=None)
        self.assertEqual(self.read("sub/y.txt"), "b: {}\n")
        self.assertEqual(self.read(".vesk_project.txt"),
                         'name p\n\nunits {\n    u { "x.txt" "sub/y.txt" }\n}\n')

    def test_errors_leave_the_file(self):
        self.unit("a: {\n  X = [1\n}\n")
        self.check_error("--format", "vesk.txt", err="""
            Error: vesk.txt has syntax errors and stays as it is.
              vesk.txt:3:1
              }
              ^
              mismatched input '}' expecting {']', ','}
              the '[' on line 2 is not closed
            """)
        self.assertEqual(self.read("vesk.txt"), "a: {\n  X = [1\n}\n")
        self.assertIn("Error: Unable to read none.txt: ", self.failure("--format", "none.txt"))
        self.assertIn("takes nothing or 'check'", self.failure("--format=chekc", "vesk.txt"))

    @posix_only("links and permissions of POSIX")
    def test_links_and_permissions_stay(self):
        real = self.write("real.txt", "a:{}")
        real.chmod(0o640)
        (self.dir / "link.txt").symlink_to("real.txt")
        self.check("--format", "link.txt", out="link.txt\n")
        self.assertTrue((self.dir / "link.txt").is_symlink())
        self.assertEqual((self.read("real.txt"), real.stat().st_mode & 0o777), ("a: {}\n", 0o640))


class Lint(ProgramTest):
    def test_what_it_finds(self):
        self.unit("""
            unit u
            app: libb comp(x, y) cycle {
                x = "1"
                y = "2"
                cmdline = "echo ${x}"
                cmdlien = "echo"
                spare = "1"
            }
            lib: { NO_TOOL }
            comp(a): { cmdline = "echo ${a}" }
            cycle: other { NO_TOOL }
            other: cycle { NO_TOOL }
            lost: { FOO = P"(x)" }
            lib: { NO_TOOL }
            gives: { ^SEEN = 1 cmdline = [] }
            drops: { ^LOST = 1 NO_TOOL }
            writes: { WRITE_FILE FILENAME = "f" ^TEXT = "t" ^F = P"(f)" ^INCLUDE_DIRS += [P"(.)"] }
            """)
        result = self.run_vesk("--lint", "vesk.txt")
        self.assertEqual((result.err, result.status), ("", 1))
        found = [line for line in result.out.splitlines() if line.startswith("vesk.txt")]
        self.assertEqual(found, [
            "vesk.txt:2:6: error: There is no target 'libb'. [unknown-name]",
            "vesk.txt:2:11: error: 'comp' takes 1 argument, and is given 2. [argument-count]",
            "vesk.txt:6:5: warning: Nothing reads the variable 'cmdlien'. [misspelt-variable]",
            "vesk.txt:7:5: note: Nothing reads the variable 'spare'. [unread-variable]",
            "vesk.txt:11:8: error: Targets need each other: cycle -> other -> cycle. [cycle]",
            "vesk.txt:12:8: error: Targets need each other: other -> cycle -> other. [cycle]",
            "vesk.txt:13:1: error: No tool to build lost. [no-tool]",
            "vesk.txt:14:1: error: There is a target 'lib' already. [duplicate-name]",
            "vesk.txt:16:11: note: No dependant sees the output 'LOST'. [dropped-output]",
            "vesk.txt:17:62: note: No dependant sees the output 'INCLUDE_DIRS'. [dropped-output]",
        ])
        self.assertIn("  app: libb comp(x, y) cycle {\n       ^\n  did you mean 'lib'?\n", result.out)

    def test_syntax_errors_stay_where_they_are(self):
        self.unit('a: { X = "open }\n\nb: nothing { NO_TOOL\nc: { NO_TOOL }\nd: { cmdline = \'x\' }\n')
        lines = [line for line in self.run_vesk("--lint").out.splitlines() if "error:" in line]
        self.assertEqual({line.split(":")[1] for line in lines}, {"1", "3", "4", "5"})
        self.assertTrue(any("There is no target 'nothing'" in line for line in lines))

    def test_projects(self):
        self.write(".vesk_project.txt", """
            name p
            import { dbg: "../lib" l (relaese); "gone"; lost; }
            units { u { "u.txt" "none.txt" } v { "v.txt" } }
            profiles { debug { C_FLAG = "-g" } }
            """)
        self.write("../lib/.vesk_project.txt",
                   'name lib units { core { "c.txt" } } profiles { release { } }')
        self.write("../lib/c.txt", "all: { NO_TOOL }\n")
        self.write("u.txt", "a: v::b l/core::all l/core::al v::c w::x lost/x::y { NO_TOOL }\n")
        self.write("v.txt", "b: { NO_TOOL }\n")
        found = re.findall(r"^(\S+?):(\d+):\d+: (\w+): (.*)$", self.run_vesk("--lint").out, re.M)
        found = [(Path(file).name, line, what) for file, line, _, what in found]
        self.assertEqual([entry for entry in found if entry[0] == "u.txt"], [
            ("u.txt", "1", "There is no target 'al'. [unknown-name]"),
            ("u.txt", "1", "There is no target 'c'. [unknown-name]"),
            ("u.txt", "1", "There is no unit 'w'. [unknown-name]"),
        ])
        for what in ("There is no file 'none.txt'. [missing-file]",
                     "There is no project in 'gone'. [missing-file]",
                     "There is no registered project 'lost'; vesk -r registers the one of the current directory. "
                     "[unknown-name]",
                     "Project 'p' has no profile 'dbg'. [unknown-name]",
                     "Project 'lib' has no profile 'relaese'. [unknown-name]",
                     "Nothing reads the variable 'C_FLAG'. [misspelt-variable]"):
            self.assertIn(what, [entry[2] for entry in found if entry[0] == ".vesk_project.txt"])

    def test_sarif(self):
        self.unit('a: { NO_TOOL TEXT = "ä" }  b: lbi { NO_TOOL } lib: { NO_TOOL }\n')
        self.check("--lint", "--sarif=out.sarif", "vesk.txt", status=1, out=None)
        report = json.loads(self.read("out.sarif"))
        self.assertEqual(report["version"], "2.1.0")
        (run,) = report["runs"]
        self.assertIn("unknown-name", [rule["id"] for rule in run["tool"]["driver"]["rules"]])
        self.assertTrue(run["results"])

    def test_doubts_fail_only_when_asked(self):
        self.unit('a: { cmdline = "echo" cdw = "x" }\n')
        self.check("--lint", out=None)
        self.check("--lint", "--strict", out=None, status=1)

    @posix_only("the examples need toolchains of this system")
    def test_examples_are_clean(self):
        for name in ("demo", "workspace/lib"):
            self.take_example(name)
            self.check("--lint")
