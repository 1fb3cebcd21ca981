"""What vesk says about faulty units, unknown names and files that are none."""

import os
import shutil

from harness import ProgramTest, SETTINGS, TIMEOUT, dedented, posix_only


class Names(ProgramTest):
    UNIT = """
        app: library { cmdline = "child print ${message}" message = "hi" }
        library: { NO_TOOL }
        """

    def first_line(self, *arguments):
        result = self.run_vesk("-v", "6", *arguments)
        self.assertEqual((result.status, result.out), (1, ""))
        return result.err.splitlines()[0]

    def test_unknown_unit(self):
        self.unit(self.UNIT)
        self.assertEqual(self.first_line("vesl::app"),
                         "Error: Unit 'vesl' not found. (did you mean 'vesk'?)")
        self.assertEqual(self.first_line("faraway::app"), "Error: Unit 'faraway' not found.")

    def test_unknown_project(self):
        self.unit(self.UNIT)
        self.assertEqual(self.first_line("faraway/vesk::app"),
                         "Error: Project 'faraway' not found.")

    def test_unknown_target(self):
        self.unit(self.UNIT)
        self.assertEqual(self.first_line("vesk::libary"),
                         "Error: Target 'vesk::libary' not found. (did you mean 'library'?)")

    def test_malformed_request(self):
        self.unit(self.UNIT)
        for text, message in (
            ("::app", "Dependency string has empty prefix or target: ::app"),
            ("vesk::", "Dependency string has empty prefix or target: vesk::"),
            ("/vesk::app", "Dependency string has empty ns or unit: /vesk::app"),
        ):
            with self.subTest(text=text):
                self.assertEqual(self.first_line(text), message)

    def test_unknown_dependency_says_who_asked(self):
        self.unit("app: libary { NO_TOOL }\nlibrary: { NO_TOOL }")
        self.check("-v", "6", status=1, err="""
            Error: Target 'vesk::libary' not found. (did you mean 'library'?)
              needed by target vesk::app ({*}vesk.txt:1)
            """)

    def test_unknown_variable(self):
        self.unit("app: {\n  cmdline = [messaeg]\n  message = \"hi\"\n}")
        result = self.run_vesk("-v", "6")
        self.assertEqual(result.status, 1)
        first, *notes = result.err.splitlines()
        self.assertTrue(first.startswith("Error: Assignment 'messaeg' not found."), first)
        self.assertIn("did you mean 'message'?", first)
        self.assertIn("  in variable 'cmdline', line 2", notes)

    def test_unknown_variable_in_a_text(self):
        self.unit('app: { cmdline = "child print [${messaeg}]" message = "hi" }')
        result = self.run_vesk("-v", "6")
        self.assertEqual(result.out, "[]\n")
        self.assertTrue(result.err.startswith("[vesk::app] Variable 'messaeg' does not exist."),
                        result.err)

    def test_dotted_names(self):
        for body, message in (
            ("x = nothing.inner", "invalid map<K, T> key"),
            ('word = "w" x = word.inner', "Error: Identifier part must be context."),
            ("ctx = { a = 1 } x = ctx.b", "Error: Assignment 'b' not found."),
            ('list = ["a"] x = list[1]', 'Error: Variable [ "a" ] cannot be indexed with [1]'),
            ("x = ascii[128]", "Error: Variable ascii cannot be indexed with [128]"),
        ):
            with self.subTest(body=body):
                self.unit("app: { cmdline = [] " + body + " }")
                result = self.run_vesk("-v", "6")
                self.assertTrue(result.err.startswith(message), result.err)
                self.assertIn("in variable 'x'", result.err)
                self.assertEqual(result.status, 1)


class Syntax(ProgramTest):
    def test_errors_are_all_shown(self):
        self.unit("""
            app: {
                a = = 1
            }
            lib: { b = 1 ] }
            """)
        result = self.run_vesk("-v", "6")
        self.assertEqual((result.status, result.out), (1, ""))
        lines = result.err.splitlines()
        self.assertTrue(lines[0].startswith("line 2:8 "), result.err)
        self.assertTrue(any(line.startswith("line 4:13 ") for line in lines), result.err)
        self.assertRegex(lines[-1], r"^Error: .*vesk\.txt Parsing failed due to syntax errors\.$")

    def test_forms(self):
        for text in ("app { }", "app: ", "app: { a = [1,] }", "app: { name = 1 }", "unit a unit b",
                     "app: { a = 1 } }", "app: { a = \"open }", "app: { /* open }",
                     "app: { a - 1 }",
                     "app: { a = é }", "2app: { }", "app: { if { } }", "app(): { }", "app: { ! }"):
            with self.subTest(text=text):
                self.unit(text)
                result = self.run_vesk("-v", "6")
                self.assertEqual((result.status, result.out), (1, ""))
                self.assertIn("vesk.txt Parsing failed due to syntax errors.", result.err)

    def test_empty_file_has_no_target(self):
        for text in ("", "// nothing\n", "unit empty"):
            with self.subTest(text=text):
                self.unit(text)
                result = self.run_vesk("-v", "6")
                self.assertEqual(result.status, 1)
                self.assertTrue(result.err.startswith("Error: "), result.err)

    def test_must_is_for_tools(self):
        self.unit("app: { cmdline = [] !x = 1 }")
        result = self.run_vesk("-v", "6")
        self.assertIn("'!' assignment modifier is not allowed in this context.", result.err)

    def test_target_given_twice(self):
        self.unit("app: { cmdline = [] }\nlib: { }\napp: { }")
        result = self.run_vesk("-v", "6")
        self.assertEqual(result.status, 1)
        for part in ("'app'", "vesk.txt:1", "vesk.txt:3"):
            self.assertIn(part, result.err)

    def test_byte_order_mark(self):
        self.write("vesk.txt", b"\xef\xbb\xbft: { cmdline = [] }")
        self.assertEqual(self.printed(), "")


class Files(ProgramTest):
    def refused(self, reason, *arguments):
        result = self.run_vesk("-v", "6", *arguments)
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertRegex(result.err, reason)
        self.assertLess(len(result.err), 2000)
        return result

    def test_missing(self):
        result = self.refused(r"Standalone unit path is not a file: .*vesk\.txt")
        self.assertIn("--create-project", result.err)
        self.refused(r"Standalone unit path is not a file: .*other\.txt", "-f", "other.txt")

    def test_directory(self):
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
                     "t: { a = " + "[" * 10_000 + "]" * 10_000 + " }",
                     "t: { " + "if a { " * 10_000 + "} " * 10_000 + "}",
                     "t: { a = " + "b[" * 10_000 + "1" + "]" * 10_000 + " }",
                     "t: { a = " + "[" * 10_000):
            with self.subTest(text=text[:12]):
                self.unit(text)
                self.refused(r"vesk\.txt\(1,\d+\): more than 1000 braces and brackets")

    def test_deep_nesting_inside_the_limit(self):
        self.unit("t: { cmdline = [] a = " + "[" * 998 + "]" * 998 + " }")
        self.assertEqual(self.printed(), "")

    def test_huge_file(self):
        with open(self.dir / "vesk.txt", "wb") as file:
            for _ in range(50):
                file.write(b"// one line of many\n" * (1024 * 1024 // 20))
        self.refused(r"vesk\.txt.*larger than \d+ MiB")

    @posix_only("the emulator shows no permissions")
    def test_unreadable(self):
        """By somebody else if need be: root may read everything."""
        self.unit("t: { }").chmod(0)
        options = {}
        if os.geteuid() == 0:
            self.base.chmod(0o777)
            program = shutil.copy(SETTINGS.vesk, self.base)
            options = {"executable": program, "user": "nobody", "group": "nogroup",
                       "extra_groups": []}
        process = self.start("-v", "6", **options)
        out, err = process.communicate(timeout=TIMEOUT)
        self.assertEqual((process.returncode, out), (1, b""))
        self.assertRegex(err.decode(), r"Unable to open file! '.*vesk\.txt': Permission denied\.")

    def test_current_directory_with_odd_names(self):
        for name in ("with blank", "grüße 世界", "it's & co", "50% (x86)"):
            with self.subTest(name=name):
                self.write(f"{name}/vesk.txt", 't: { cmdline = "child print hello" }')
                result = self.run_vesk(cwd=self.dir / name)
                self.assertEqual((result.err, result.status), ("", 0))
                self.assertIn(f"Output dir: {{DIR}}/{name}/out\n", result.out)
                self.assertIn("\nhello\n", result.out)


class Notes(ProgramTest):
    def test_a_chain_of_targets(self):
        self.unit("""
            app: middle { NO_TOOL }
            middle: bad { NO_TOOL }
            bad: { cmdline = [] x = nothing }
            """)
        self.check("-v", "6", status=1, err=dedented("""
            Error: Assignment 'nothing' not found.{*}
              in variable 'x', line 3
              in target vesk::bad ({*}vesk.txt:3)
            """))
