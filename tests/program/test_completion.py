"""What vesk answers to shells, and what the shells make of it."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import unittest
from pathlib import Path

from harness import HANGS, SETTINGS, ProgramTest, needs, on_system, posix_only

SCRIPTS = Path(__file__).resolve().parents[2] / "completions"

UNIT = """
    unit shop
    // no: {
    app(x): { C_FILES = ["no.c"] }
    till: +lib goods(a, b) => g /* not: { */ {
        if os_family = "windows" { DESCRIPTION = "not this one" }
        TEXT = R"(other: { )"
        DESCRIPTION = "takes the money"
    }
    lib: { list = ["a", "b:c"] }
    unit_check: till { TEST = "yes" cmdline = "x" }
    """
PROJECT = """
    name shop
    import { "../stock" goods; }
    tools { own { tool_type = "gnu-gcc" toolchain_path = P"(/nowhere)" toolchain_name = "Our GCC" } }
    units { shop { "vesk.txt" } net { "net.txt" } }
    profiles { default { A = "1" } debug { A = "2" } release { A = "3" } }
    """


class CompletionTest(ProgramTest):
    def answer(self, *words, **options):
        """The candidates with their descriptions; nothing else may be said."""
        result = self.run_vesk("--complete", *words, **options)
        self.assertEqual((result.err, result.status), ("", 0))
        return [tuple(line.split("\t")) for line in result.out.splitlines()]

    def words(self, *words, **options):
        return [text for text, _ in self.answer(*words, **options)]

    def project(self):
        self.unit(UNIT)
        self.write(".vesk_project.txt", PROJECT)
        self.write("net.txt", "server: { DESCRIPTION = \"listens\" cmdline = \"x\" }\n")
        self.write("../stock/.vesk_project.txt", "name stock units { main { \"vesk.txt\" } }\n")
        self.write("../stock/vesk.txt", "shelf: { cmdline = \"x\" }\n")
        self.registry(f'projects {{ json "{on_system(self.base / "stock")}" }}\n'
                      'tools { gcc { tool_type = "gnu-gcc" toolchain_path = P"(/nowhere)" '
                      'toolchain_name = "GCC 12" } }\n')

    def with_registry(self):
        return {"APPDATA": on_system(self.base / "data")}


class Answers(CompletionTest):
    def test_names(self):
        self.project()
        env = self.with_registry()
        self.assertEqual(self.answer("", env=env), [
            ("debug", "a profile"), ("goods/", "an imported project"),
            ("json/", f"a registered project, {on_system(self.base / 'stock')}"),
            ("lib", ""), ("net::", "a unit"), ("release", "a profile"), ("shop::", "a unit"),
            ("till", "takes the money"), ("unit_check", "")])
        for word, expected in (("ti", ["till"]), ("TE", ["TEST=", "TEST_TIMEOUT=", "TEXT="]),
                               ("net::", ["net::server"]), ("goods/", ["goods/main::"]),
                               ("json/main::", ["json/main::shelf"]), ("nowhere::", []),
                               ("c_fl", ["C_FLAGS="]), ("TEST=", ['TEST="no"', 'TEST="yes"']),
                               ("toolchain_name=", ['toolchain_name="GCC 12"',
                                                    'toolchain_name="Our GCC"']),
                               ('OUTPUT_TYPE="s', ['OUTPUT_TYPE="shared"', 'OUTPUT_TYPE="static"']),
                               ("--define=toolchain_name=G", ["--define=toolchain_name=GCC 12"])):
            self.assertEqual(self.words(word, env=env), expected, word)
        self.assertEqual(self.words("-l", "n", env=env), ["net"])
        for before in (["-f"], ["--format"], ["--lint", "vesk.txt"]):
            self.assertEqual(self.words(*before, "", env=env), [], before)  # the shell offers files
        self.assertEqual(self.words("-f", "net.txt", "", env=env)[-1], "server")

    def test_options(self):
        self.project()
        listed = self.run_vesk("--options").out
        for word, expected in (("--pro", ["--progress="]), ("-j", ["-j"]), ("--cl", ["--clean", "--clean="]),
                               ("--init=", ["--init=c", "--init=c++", "--init=lib"]),
                               ("--test=", ["--test=unit_check"]),
                               ("--explain=C_FI", ["--explain=C_FILES"]), ("--junit=", []),
                               ("--comp", ["--compile-commands="])):
            self.assertEqual(self.words(word), expected, word)
        for text, description in self.answer("--"):
            self.assertIn(text.rstrip("="), listed)
            self.assertIn(description, listed)

    def test_broken_files(self):
        # A target is being written, with a brace and a quote missing.
        self.unit('app: { C_FILES = ["a.c"\nlib: {\n  DESCRIPTION = "half\n')
        self.assertEqual(self.words(""), ["app", "lib"])
        self.write(".vesk_project.txt", "name x units {")
        self.registry("tools {{{")
        env = self.with_registry() | {"VESK_OPTIONS": "-v 0 word"}
        self.assertEqual(self.words("", env={"APPDATA": env["APPDATA"]}), [])
        self.assertEqual(self.words("--vers"), ["--version", "--version="])
        self.unit(b"\xff\x00 {")
        self.assertEqual(self.words("-f", "vesk.txt", ""), [])

    def test_nothing_is_left_behind(self):
        self.unit(UNIT)
        before = sorted(self.base.rglob("*"))
        for word in ("", "--", "toolchain_name=", "json/"):
            self.words(word, env={"APPDATA": on_system(self.base / "none")})
        self.assertEqual(sorted(self.base.rglob("*")), before)


@posix_only("the shells run on the system itself")
class Shells(CompletionTest):
    """Command lines with tabs are typed into each shell; `args` shows the words that come of them."""

    ARGS = ("args() { printf '\\n'; printf '<word>%s' \"$@\"; printf '\\n<end>\\n'; }; "
            "echo; echo '<ready>'")
    CASES = (("ti\t", "till"), ("net::s\t", "net::server"), ("c_fl\tx", "C_FLAGS=x"),
             ("toolchain_name=\tO\t", 'toolchain_name="Our GCC"'),
             ("'toolchain_name=\"O\t", 'toolchain_name="Our GCC"'),
             ('toolchain_name=\\"O\t', 'toolchain_name="Our GCC"'),
             ("--define=toolchain_name=O\t", "--define=toolchain_name=Our GCC"),
             ("-f ne\t ser\t", "-f<word>net.txt<word>server"))

    def setUp(self):
        super().setUp()
        self.project()
        (self.base / "bin").mkdir()
        (self.base / "bin/vesk").symlink_to(SETTINGS.vesk)
        self.env = self.environment({"TERM": "xterm", "HOME": str(self.base), "INPUTRC": "/dev/null"})
        self.env["PATH"] = f"{self.base / 'bin'}:{self.env['PATH']}"

    def typed(self, command, start, line):
        """The words that `args` is given by the line."""
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.dir)
            os.execvpe(command[0], command, self.env)
        try:
            fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 50, 400, 0, 0))
            self.enter(terminal, f"{start}; {self.ARGS}", "<ready>")
            lines = self.enter(terminal, f"args {line}", "<end>")
        finally:
            os.close(terminal)
            os.waitpid(child, 0)
        return "".join(line for line in lines if line.startswith("<word>"))

    def enter(self, terminal, text, end):
        """Types it, and gives the lines that show until one begins with `end`."""
        os.write(terminal, (text + "\n").encode())
        seen = ""
        while f"\n{end}" not in seen.replace("\r", "\n"):
            self.assertTrue(select.select([terminal], [], [], HANGS)[0], seen)
            seen += os.read(terminal, 65536).decode(errors="replace")
        return seen.replace("\r", "\n").split("\n")

    def check_cases(self, command, start):
        for line, expected in self.CASES:
            with self.subTest(line):
                self.assertEqual(self.typed(command, start, line), f"<word>{expected}")

    @needs("bash")
    def test_bash(self):
        self.check_cases(["bash", "--norc", "-i"],
                         f"PS1=; source '{SCRIPTS}/vesk.bash'; complete -o default -F _vesk args")

    @needs("zsh")
    def test_zsh(self):
        self.check_cases(["zsh", "-f", "-i"],
                         f"PROMPT=; unsetopt PROMPT_SP; fpath=('{SCRIPTS}' $fpath); "
                         "autoload -U compinit; compinit -u -D; compdef _vesk args")

    @needs("fish")
    def test_fish(self):
        """Fish can be asked what it would show."""
        for line, expected in (("ti", ["till\ttakes the money"]), ("net::", ["net::server\tlistens"]),
                               ("toolchain_name=", ['toolchain_name="GCC 12"', 'toolchain_name="Our GCC"']),
                               ("--define=toolchain_name=O", ["--define=toolchain_name=Our GCC"]),
                               ("-f ne", ["net.txt"]), ("-f net.txt ser", ["server\tlistens"])):
            shown = subprocess.run(
                ["fish", "--no-config", "-c", f"source '{SCRIPTS}/vesk.fish'; complete -C 'vesk {line}'"],
                cwd=self.dir, env=self.env, text=True, capture_output=True, check=True)
            self.assertEqual(([each.rstrip("\t") for each in shown.stdout.splitlines()], shown.stderr),
                             (expected, ""), line)


class Scripts(unittest.TestCase):
    def test_powershell(self):
        """Without a PowerShell here: its words are those of the language, its brackets match."""
        try:
            from pygments.lexers import PowerShellLexer
            from pygments.token import Comment, Error, String
        except ImportError:
            self.skipTest("not installed: pygments")
        code = ""
        for kind, text in PowerShellLexer().get_tokens((SCRIPTS / "vesk.ps1").read_text()):
            self.assertNotIn(Error, [kind], text)
            code += "" if kind in Comment or kind in String else text
        open_brackets = []
        for char in code:
            if char in "({[":
                open_brackets.append(char)
            elif char in ")}]":
                self.assertEqual(open_brackets.pop() + char in ("()", "{}", "[]"), True)
        self.assertEqual(open_brackets, [])
