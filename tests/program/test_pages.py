"""Every example of every page does what the page says."""

import re
import shutil
import subprocess
import unittest

from harness import ESCAPE, EXAMPLES, HANGS, SETTINGS, ProgramTest, on_system, posix_only, windows_only
from page_examples import commands, examples, pages, pattern

HOME = "/home/me"  # what the pages call the directories of the tests
# What stands around a section of a project file.
SECTIONS = ("import", "tools", "units", "profiles")
PROFILES = 'profiles { debug { A = "1" } release { A = "2" } }\n'
UNITS = 'units { main { "vesk.txt" } }\n'


class Page(ProgramTest):
    remembers = True

    def do_begin(self, step=None):
        """An empty directory, with none of the files before it in it or around."""
        self.dir = self.base / "pages/work"
        shutil.rmtree(self.dir.parent, ignore_errors=True)
        self.dir.mkdir(parents=True)
        self.where = self.dir
        self.missing = []

    def walk(self, page):
        self.do_begin()
        for step in examples(page):
            with self.subTest(step.place):
                getattr(self, "do_" + step.kind.replace(" ", "_"))(step)

    def do_unmarked(self, step):
        self.fail("no comment says what is to be done with this example")

    def do_not_run(self, step):
        self.assertTrue(step.argument, "the reason is missing")

    def do_needs(self, step):
        self.missing = [program for program in step.argument.split() if not shutil.which(program)]

    def do_file(self, step):
        self.write(step.argument, step.text)

    do_hidden_file = do_file

    def do_add_to(self, step):
        self.write(step.argument, self.read(step.argument) + "\n" + step.text)

    def do_replace_in(self, step):
        lines = step.text.splitlines(keepends=True)
        old, new = ("".join(line[1:] for line in lines if line[0] in signs) for signs in ("- ", "+ "))
        self.assertIn(old, self.read(step.argument))
        self.write(step.argument, self.read(step.argument).replace(old, new))

    def do_run_on_Windows(self, step):
        """Is for those tests."""


def names_a_page(page):
    return "test_" + page.removesuffix(".md").removeprefix("docs/").replace("-", "_").lower()


@posix_only("the examples are written for a POSIX shell")
class Examples(Page):
    def setUp(self):
        super().setUp()
        (self.base / "bin").mkdir()
        (self.base / "bin/vesk").symlink_to(SETTINGS.vesk)
        self.env = self.environment({"NO_COLOR": "1", "HOME": str(self.base), "APPDATA": None,
                                     "XDG_CACHE_HOME": str(self.base / "cache")})
        self.env["PATH"] = f"{self.base / 'bin'}:{self.env['PATH']}"
        self.shell("vesk --find-compilers")

    def do_unit(self, step):
        self.do_begin()
        self.write("vesk.txt", step.text)
        done = self.shell("vesk -l 1")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue(done.stdout)

    def do_body(self, step):
        self.do_begin()
        self.write("vesk.txt", "t: {\n" + step.text + "\n}\n")
        done = self.shell("vesk -l 1")
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def do_project(self, step):
        """A section alone gets a name and units around it."""
        text = step.text
        if not text.startswith("name"):
            first = text.split("{")[0].strip()
            before = SECTIONS.index(first) < SECTIONS.index("units")
            text = "name example\n" + (text + UNITS if before else UNITS + text)
            text += PROFILES if first == "import" else ""
        self.write(".vesk_project.txt", text)
        for name in re.findall(r'"([^"]*vesk\.txt|[^"]*\.txt)"', text):
            if not (self.dir / name).exists():
                self.write(name, "stub: { NO_TOOL }\n")
        done = self.shell("vesk -p")
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def do_run(self, step):
        if self.missing:
            self.skipTest(f"not installed: {' '.join(self.missing)}")
        typed = commands(step.text)
        for index, (command, output) in enumerate(typed):
            fails = step.argument == "fails" and index == len(typed) - 1
            done = self.shell(command)
            said = done.stdout + done.stderr
            said += "" if said.endswith("\n") or not said else "\n"
            self.assertEqual(done.returncode != 0, fails, f"$ {command}\n{said}")
            if output.strip():
                self.assertRegex(said, f"^(?:{pattern(output.rstrip())})$",
                                 f"$ {command}")

    def shell(self, command):
        """Runs it where the one before has ended."""
        where = self.base / "where"
        done = subprocess.run(["sh", "-c", f"{command}\nstatus=$?\npwd > '{where}'\nexit $status"],
                              cwd=getattr(self, "where", self.dir), env=self.env, text=True,
                              stdin=subprocess.DEVNULL, capture_output=True, check=False, timeout=HANGS)
        self.where = where.read_text().strip() if where.exists() else self.dir
        done.stdout, done.stderr = (ESCAPE.sub("", text).replace(str(self.dir), HOME).replace(str(self.base), HOME)
                                    for text in (done.stdout, done.stderr))
        return done


class FiveMinutes(unittest.TestCase):
    def test_readme_shows_the_example(self):
        shown = {step.argument: step.text for step in examples("README.md") if step.kind == "file"}
        files = [path for path in (EXAMPLES / "hello").rglob("*") if path.suffix in (".c", ".h", ".txt")]
        self.assertEqual(shown, {path.relative_to(EXAMPLES / "hello").as_posix(): path.read_text(encoding="utf-8")
                                 for path in files})


@windows_only("the examples are written for cmd")
class OnWindows(Page):
    """What a page says of Windows: files, and lines for cmd."""

    def do_run_on_Windows(self, step):
        env = self.environment({"NO_COLOR": "1"})
        env["WINEPATH"] += ";" + on_system(SETTINGS.vesk.parent)
        for command, output in commands(step.text, prompt="> "):
            # As a file: on its way through the emulator a command line would get more quotes.
            self.write("line.bat", f"@{command}\r\n")
            done = subprocess.run([*SETTINGS.wine, "cmd", "/D", "/C", "line.bat"], cwd=self.dir, env=env,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  check=False, timeout=HANGS)
            said = done.stdout.decode(errors="replace").replace("\r\n", "\n")
            said += "" if said.endswith("\n") else "\n"
            self.assertEqual(done.returncode, 0, f"> {command}\n{said}")
            self.assertRegex(said, f"^(?:{pattern(output.rstrip())})$", f"> {command}")

    def test_windows(self):
        self.walk("docs/windows.md")

    def test_command_line(self):
        self.walk("docs/command-line.md")

    def do_nothing(self, step):
        """Is for a POSIX shell, or tested with those."""

    do_run = do_unit = do_body = do_project = do_add_to = do_replace_in = do_nothing


for each in pages():
    setattr(Examples, names_a_page(each), lambda self, page=each: self.walk(page))
