"""What vesk says about faulty units, unknown names and files that are none."""

import os
import subprocess

from harness import HANGS, ProgramTest, SETTINGS, posix_only


class Names(ProgramTest):
    UNIT = """
        app: library { cmdline = "child print ${message}" message = "hi" }
        library: { NO_TOOL }
        """

    def test_unknown_ones_on_the_command_line(self):
        self.unit(self.UNIT)
        for name, message in (
            ("vesl::app", "Error: Unit 'vesl' not found."),
            ("faraway::app", "Error: Unit 'faraway' not found."),
            ("faraway/vesk::app", "Error: Project 'faraway' not found."),
            ("vesk::libary", "Error: Target 'vesk::libary' not found."),
            ("vesk::", "Dependency string has empty prefix or target: vesk::"),
        ):
            with self.subTest(name=name):
                self.assertEqual(self.error(name).splitlines()[0], message)

    def test_unknown_dependency_says_who_asked(self):
        self.unit("app: libary { NO_TOOL }\nlibrary: { NO_TOOL }")
        self.check("-v", "6", status=1, err="""
            Error: Target 'vesk::libary' not found.
              did you mean 'library'?
              {DIR}/vesk.txt:1:6
              app: libary { NO_TOOL }
                   ^
              needed by target vesk::app ({*}vesk.txt:1)
            """)

    GROWING = 'nested40 = "x" ' + " ".join(
        f"nested{i} = {{ a = [nested{i + 1}] b = [nested{i + 1}] }}" for i in range(40))

    def test_variables(self):
        for value, message in (
            ("messaeg", "Error: Assignment 'messaeg' not found.\n  did you mean 'message'?\n"
             '  text needs double quotes: "messaeg"'),
            ("nothing.inner", "invalid map<K, T> key\n  there is no variable 'nothing'\n"
             '  text needs double quotes: "nothing.inner"'),
            ("message.inner", "Error: Identifier part must be context."),
            ("message.inner.x", 'Error: Variable "hi" cannot be indexed with inner'),
            ('"${ctx.}"', "Error: Expected identifier segment after '.'\n  in 'ctx.' at byte 5"),
            ("nested0", "Error: A value grows beyond 64 MiB.\n"
                        "  does it refer to itself through other variables?"),
            ("ctx.b", "Error: Assignment 'b' not found."),
            ("list[1]", 'Error: Variable [ "a" ] cannot be indexed with [1]'),
        ):
            with self.subTest(value=value):
                self.unit("dep: app { NO_TOOL }\napp: {\n  cmdline = [" + value + "]\n"
                          '  message = "hi" ctx = { a = 1 } list = ["a"] ' + self.GROWING + '}')
                error = self.error()
                self.assertTrue(error.startswith(message + "\n  {DIR}/vesk.txt:"), error)
                self.assertRegex(error, r"\n  in target vesk::app \(.*vesk\.txt:2\)\n$")


class Syntax(ProgramTest):
    def test_errors_are_all_shown(self):
        self.unit("""
            app: {
                a = = 1
            }
            lib: { b = 1 ] }
            """)
        error = self.error()
        self.assertTrue(error.startswith("line 2:8 "), error)
        self.assertIn("\nline 4:13 ", error)
        self.assertRegex(error, r"\nError: .*vesk\.txt Parsing failed due to syntax errors\.\n$")

    def test_errors_of_the_lexer_alone_do_not_reject_a_file(self):
        """They are said again in each run, also where nothing is to be done."""
        self.remembers = True
        self.unit('app: { # cmdline = "child print \N{SNOWMAN}" $ } /* open')
        for out in ("\N{SNOWMAN}\n", "", ""):
            self.check("-v", "6", out=out, err="""
                line 1:7 token recognition error at: '#'
                  {DIR}/vesk.txt:1:8
                  app: { # cmdline = "child print \N{SNOWMAN}" $ } /* open
                         ^
                  a comment begins with '//'
                line 1:35 token recognition error at: '$'
                  {DIR}/vesk.txt:1:36
                  app: { # cmdline = "child print \N{SNOWMAN}" $ } /* open
                                                     ^
                line 1:39 token recognition error at: '/* open'
                  {DIR}/vesk.txt:1:40
                  app: { # cmdline = "child print \N{SNOWMAN}" $ } /* open
                                                         ^
                """)

    def test_habits_of_other_languages(self):
        for body, hint in (
                (r'a = "-DX=\"1\""', 'a string has no escapes: a double quote in it is ${ascii[34]}, '
                                     'or write the whole as R"(...)"'),
                ('; said', "a comment begins with '//'"),
                ('if a == "b" { }', "one '=' compares"),
                ('if a = "b" { } else { }', "there is no 'else': write a second 'if' with '!=' for '='"),
                ('if a = "b" and c = "d" { }', "a condition is one comparison: "),
                ('if a = "b" && c = "d" { }', "a condition is one comparison: "),
                ('if not a { }', "a condition compares with '=', '!=', '<' or '>'"),
                ('a = ["b", "c",]', "leave out the comma before ']'"),
                ('a = ["b" "c"]', "commas separate the elements of a list"),
                ('a = ("b", "c")', 'write a list in square brackets: ["a", "b"]'),
                ('a = {"b", "c"}', 'write a list in square brackets: ["a", "b"]'),
                ('a = "b", c = "d"', "blanks separate assignments"),
                ('a = "b";', "values and names need no ';' after them: leave it out"),
                ('a: "b"', "'=' gives a variable its value: a = ..."),
                ('a = src/a.c', 'write text in double quotes: "src/a.c"'),
                ('a = [../b/a.c, c]', 'write text in double quotes: "../b/a.c"'),
                ('a = [*.c]', 'write text in double quotes: "*.c"'),
                ('a = -O2', 'write text in double quotes: "-O2"'),
                ("a = 'b c'", 'write text in double quotes: "b c"'),
                ('a = 1.5', 'numbers are whole; write text in double quotes: "1.5"'),
                ('a = [ "b" ', "the '[' on line 2 is not closed"),
                ('a = "b', "the string is not closed: '\"' is missing")):
            with self.subTest(body=body):
                self.unit("app: {\n%s\n}" % body)
                self.assertIn("\n  " + hint, self.error())
        for text, hint in (("app { }", "put a ':' after the target's name: app: { ... }"),
                           ("app: far/lib { }", "a target of another project is named with its unit: "
                                                "far/unit::lib"),
                           ("app: { }\nlib: app, app { }", "blanks separate dependencies"),
                           ('a = "b"', "put variables into the braces of a target or a profile"),
                           ('unit "main"', "write the unit's name without quotes"),
                           ("app: {\n", "the '{' on line 1 is not closed")):
            with self.subTest(text=text):
                self.unit(text)
                self.assertIn("\n  " + hint, self.error())

    def test_errors_of_a_project_file_show_their_place(self):
        self.write(".vesk_project.txt", "name p\nprofiles { debug { a = 1; } }")
        self.assertIn("""
  {DIR}/.vesk_project.txt:2:25
  profiles { debug { a = 1; } }
                          ^
  values and names need no ';' after them: leave it out
""", self.error())

    def test_forms(self):
        for text in ("app { }", "app: ", "unit a unit b", "app: { a = 1 } }", "app: { /* open }",
                     "app: { a - 1 }", "2app: { }", "app: { if { } }", "app(): { }", "app: { ! }"):
            with self.subTest(text=text):
                self.unit(text)
                self.assertIn("vesk.txt Parsing failed due to syntax errors.", self.error())

    def test_files_without_a_target(self):
        for content in (b"", b"// nothing\n", b"\xef\xbb\xbfunit empty"):
            self.write("vesk.txt", content)
            self.assertTrue(self.error().startswith("Error: Unit"), self.error())


class Files(ProgramTest):
    def refused(self, reason, *arguments):
        error = self.error(*arguments)
        self.assertRegex(error, reason)
        self.assertLess(len(error), 2000)

    def test_missing(self):
        self.check_error("-v", "6", err="""
            Error: Standalone unit path is not a file: {DIR}/vesk.txt
              no .vesk_project.txt was found in {DIR} or above either
              name a unit file with -f, or make a project of the unit files below the current \
directory with --create-project
            """)
        self.refused(r"Standalone unit path is not a file: .*other\.txt", "-f", "other.txt")
        (self.dir / "vesk.txt").mkdir()
        self.refused(r"vesk\.txt")

    def test_not_text(self):
        for content, place in ((b"\x7fELF\x02\x01\x00\x00\xff" * 99, r"vesk\.txt\(1,6\)"),
                               (b"t: {\n a = \"\xe9\" }", r"vesk\.txt\(2,6\)"),
                               ("t: { }".encode("utf-16"), r"vesk\.txt\(1,3\)")):
            with self.subTest(content=content[:8]):
                self.write("vesk.txt", content)
                self.refused(place + r": .*Save the file as UTF-8\.")

    def test_deep_nesting(self):
        for text in ("t: " + "{ a = " * 10_000 + "1" + " }" * 10_000,
                     "t: { " + "if a { " * 10_000 + "} " * 10_000 + "}",
                     "t: { a = " + "b[" * 10_000 + "1" + "]" * 10_000 + " }",
                     "t: { a = " + "[" * 10_000):
            with self.subTest(text=text[:12]):
                self.unit(text)
                self.refused(r"vesk\.txt\(1,\d+\): more than 1000 braces and brackets")
        self.unit("t: { cmdline = [] a = " + "[" * 998 + "]" * 998 + " }")
        self.assertEqual(self.printed(), "")

    @posix_only("the emulator shows no permissions")
    def test_unreadable(self):
        """By somebody else if need be: root may read everything."""
        self.unit("t: { }").chmod(0)
        options = {}
        if os.geteuid() == 0:
            self.base.chmod(0o777)
            # By a process of its own: a child that another test starts meanwhile would keep a file
            # that is open for writing here, and that cannot be run.
            program = self.base / "vesk"
            subprocess.run(["cp", SETTINGS.vesk, program], check=True)
            options = {"executable": program, "user": "nobody", "group": "nogroup",
                       "extra_groups": []}
        process = self.start("-v", "6", **options)
        out, err = process.communicate(timeout=HANGS)
        self.assertEqual((process.returncode, out), (1, b""))
        self.assertRegex(err.decode(), r"Unable to open file!(\x1b\[0m)?\n.*vesk\.txt: Permission denied")
