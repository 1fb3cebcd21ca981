"""Targets of the built-in tools: commands, PowerShell, nothing at all, files."""

from harness import ProgramTest, SETTINGS, dedented


class Commands(ProgramTest):
    def test_texts_and_lists(self):
        self.prints('t: { cmdline = "child print one" }', "one\n")
        self.prints("t: { cmdline = [] }", "")
        self.unit("""
            t: {
                first = "child touch a b"
                names = ["c", "d"]
                cmdline = [first, "child touch #{names}.txt"]
            }
            """)
        self.printed()
        self.assertEqual(self.files(), ["a", "b", "c.txt", "d.txt", "vesk.txt"])

    def test_working_directory(self):
        self.write("sub/deep/file", "")
        for cwd in ('cwd = P"(sub/deep)"', "cwd = where where = R\"(sub/deep)\""):
            with self.subTest(cwd=cwd):
                self.prints(f't: {{ cmdline = "child cwd" {cwd} }}', "deep\n")
        self.write("sub/vesk.txt", 't: { cmdline = "child cwd" }')
        self.assertEqual(self.printed("-f", "sub/vesk.txt"), "work\n")

    def test_the_interpreter_runs_it(self):
        self.prints('t: { cmdline = "child print one&& child print two> file.txt" }', "one\n")
        self.assertEqual(self.read("file.txt"), "two\n")

    def test_conditions_decide_the_tool(self):
        self.unit("""
            t: {
                if kind = "quiet" { NO_TOOL }
                if kind = "loud" { cmdline = "child print loud" }
                if kind = "file" { WRITE_FILE FILENAME = "f" TEXT = "text" }
                if os_family = "none" { cmdline = "child print none" }
            }
            """)
        for kind, tool in (("quiet", "default_no_tool"), ("loud", "default_basic"),
                           ("file", "default_file_writer")):
            with self.subTest(kind=kind):
                out = self.run_vesk("-v", "t", f'kind="{kind}"').out
                self.assertIn(f"[vesk::t] Registered : {tool}\n", out)
        self.assertEqual(self.read("f"), "text")

    def test_no_tool_runs_nothing(self):
        self.unit('t: { NO_TOOL cmdline = "child print never" cwd = "nowhere" }')
        self.check(out="""
            Starting build
            [vesk::t] Visiting target
            [vesk::t] Build done
            """)
        self.assertFalse((self.dir / "out").exists())


class PowerShell(ProgramTest):
    def test_command_line(self):
        self.unit("""
            t: { pwsh = R"(Write-Output 'say "hi" & it''s \\ 100%')" }
            """)
        env = {"POWERSHELL_LOG": "log"}
        self.assertEqual(self.printed(env=env), "say \"hi\" & it's \\ 100%\n")
        text = "Write-Output 'say \"hi\" & it''s \\ 100%'"
        options = "-NoProfile -NonInteractive -ExecutionPolicy Bypass -Command"
        if SETTINGS.windows:
            quoted = text.replace('"', '\\"')
            self.assertEqual(self.read("log"), f'"powershell.exe" {options} "{quoted}"\n')
        else:
            marked = " ".join(f"<{word}>" for word in [*options.split(), text])
            self.assertEqual(self.read("log"), marked + "\n")

    def test_list_directory_and_status(self):
        self.write("sub dir/a", "content")
        self.unit("""
            t: {
                pwsh = ["Copy-Item -LiteralPath 'a' -Destination 'b' -Force", "exit 7"]
                cwd = "sub dir"
            }
            """)
        self.assertIn("[vesk::t] Command ended with status 7: exit 7\n", self.error())
        self.assertEqual(self.read("sub dir/b"), "content")


class FileWriter(ProgramTest):
    def test_text_forms_and_modes(self):
        self.write("f", "old\n")
        for text, expected in (
            ('"a" MODE = "Append"', "old\na"),
            ('"b" MODE = "CREATE"', "b"),
            ('""', ""),
            ('R"(a "b" ${c})"', 'a "b" ${c}'),
            ('["one", 2, ["x", "#{l}"]] l = ["y", "z"]', "one\n2\nx y z"),
            ('[]', ""),
            ('["a", "b"] SEPARATOR = ", "', "a, b"),
            ('["a", "b"] SEPARATOR = "${ascii[\'CR\']}${ascii[10]}"', "a\r\nb"),
            ('{ b = 2 a = "x" }', '{\na = "x"\nb = 2\n}'),
            ('"grüße 世界"', "grüße 世界"),
        ):
            with self.subTest(text=text):
                self.unit(f't: {{ WRITE_FILE FILENAME = "f" TEXT = {text} }}')
                self.printed()
                self.assertEqual(self.read("f"), expected)

    def test_file_and_text_are_outputs(self):
        """The path is relative to the unit."""
        self.write("sub/vesk.txt", """
            t: { WRITE_FILE FILENAME = P"(a b.txt)" TEXT = "x" }
            """)
        self.printed("-f", "sub/vesk.txt", "-o", "outputs")
        self.assertEqual(self.files(), ["outputs", "sub/a b.txt", "sub/vesk.txt"])
        self.assertEqual(self.plain(self.read("outputs").encode()),
                         "FILE = {DIR}/sub/a b.txt\nTEXT = x\n")

    def test_errors(self):
        self.write("directory/file", "")
        cases = [
            ('FILENAME = "no/such/f" TEXT = "x"',
             "File writer parent directory does not exist: 'no/such'.\n"
             "  the file writer makes no directories; "),
            ('FILENAME = "f" TEXT = "x" MODE = "overwrite"',
             "File writer variable 'MODE' must be either 'create' or 'append', got 'overwrite'."),
            ('FILENAME = ["f"] TEXT = "x"',
             "File writer variable 'FILENAME' must be a string or path."),
            ('FILENAME = "f" TEXT = 5',
             "File writer variable 'TEXT' must be a string, list, or context."),
            ('FILENAME = "directory" TEXT = "x"',
             "File writer could not open 'directory' for writing."),
        ]
        if not SETTINGS.windows:
            cases.append(('FILENAME = "/dev/full" TEXT = "x"',
                          "File writer could not write to '/dev/full'.\n  No space left on device"))
        for body, message in cases:
            with self.subTest(body=body):
                self.unit("t: { WRITE_FILE " + body + " }")
                self.assertTrue(self.error().startswith("Error: " + message), self.error())
                self.assertEqual(self.files(), ["directory/file", "vesk.txt"])


class ToolSelection(ProgramTest):
    def test_reports(self):
        for body, tool, score, reasons in (
            ('cmdline = [] pwsh = []', "default_basic", 0, ["no matched variables"]),
            ('cmdline = [] cwd = "."', "default_basic", 1, ["cwd partial match"]),
            ('cmdline = [] NO_TOOL', "default_no_tool", 2, ["NO_TOOL full match"]),
            ('WRITE_FILE FILENAME = "f" TEXT = "x" MODE = "CREATE" SEPARATOR = "${ascii[10]}"',
             "default_file_writer", 7, ["FILENAME full match", "MODE partial match",
                                        "SEPARATOR full match", "TEXT full match"]),
            ('pwsh = [] cwd = "."', "default_pwsh", 1, ["cwd partial match"]),
        ):
            with self.subTest(body=body):
                self.unit("t: { " + body + " }")
                out = self.run_vesk("-v").out.replace("[vesk::t] ", "")
                report = out[out.index("Best registered tool"):out.index("Input context")]
                self.same(report, dedented(f"""
                    Best registered tool: {tool}, score: {score}
                    Tool selection
                    --------------
                    Registered : {tool}
                    Tool       : {{*}}
                    Reason     :
                    """) + "".join(f"  - {reason}\n" for reason in reasons), "report")

    def test_match_lines(self):
        self.unit('t: { cmdline = [] cwd = "." ^out }')
        out = self.run_vesk("-v", "0").out
        for line in ("default_basic::match - result.note: BuildPossible",
                     "default_basic::match - PartialMatch: key='cwd'",
                     "default_pwsh::match - result.note: BuildImpossible"):
            self.assertIn(line + "\n", out)
        self.unit("t: { cmdline = [] ^cwd }")
        self.assertIn("default_basic::match - NoMatch: key='cwd'\n", self.run_vesk("-v", "0").out)

    def test_nothing_fits(self):
        self.unit('t: { TEXT = "x" FILENAME = "f" }')
        self.assertTrue(self.error().startswith("Error: No tool to build vesk::t\n"), self.error())
        for name, meant in (("C_FILE", "C_FILES"), ("cmdlines", "cmdline"), ("ABCDEF", None)):
            self.unit(f't: {{ {name} = "x" }}')
            hint = f"no tool is chosen by '{name}' (did you mean '{meant}'?)"
            self.assertEqual(hint in self.error(), meant is not None)

    def test_sources_of_a_toolchain_that_is_not_there(self):
        for name in ("C_FILES", "OBJ_FILES", "C3_FILES", "RC_FILES", "MC_FILES", "OBJCOPY_INPUT", "MANIFEST"):
            with self.subTest(name):
                self.unit(f't: {{ {name} = ["x"] }}')
                self.assertIn("\n  no registered toolchain fits it; vesk --find-compilers", self.error())

    def test_names_of_other_tools(self):
        self.unit('t: { LDFLAGS = "-s" SOURCES = ["a.c"] }')
        self.assertIn("no tool is chosen by 'SOURCES' (did you mean 'C_FILES' or 'CPP_FILES' or "
                      "'C3_FILES'?)", self.error())
        self.unit('t: { NO_TOOL }\nu: { cmdline = [] workdir = "a" ^result = 1 }')
        self.check("u", out=None, err="[vesk::u] Variable 'workdir' (vesk.txt:2) has no effect on the "
                                      "target.\n  did you mean 'cwd'?\n")

    def test_variables_that_are_nearly_right(self):
        warning = "[vesk::t] Variable 'cwdd' (vesk.txt:2) has no effect on the target.\n  did you mean 'cwd'?\n"
        for body, err in (
                ('cwdd = "src"', warning),
                ('^cwdd = "src"', ""),
                ('CWD = "."', ""),
                ('abcd = "src"', ""),
                ('cwdd = "src"\n OTHER = "${cwdd}"', ""),
                ('cwdd = "src"\n if CWDD = "src" { x = 1 }', "")):
            with self.subTest(body):
                self.unit(f't: {{ cmdline = "child print x"\n {body} }}')
                self.check(out=None, err=err)

    def test_contexts(self):
        self.unit("""
            t: dep {
                ?hint = dep
                cmdline = "child print ${dep.W}"
                ^O = 1
            }
            dep: { cmdline = [] ^W = "w" }
            """)
        block = self.run_vesk("-v", "3").out.replace("[vesk::t] ", "")
        inside = block[block.rindex("Input context:"):block.index("}\n\nOut of date")].splitlines()
        self.assertIn('cmdline = "child print w"', inside)
        self.assertFalse([line for line in inside if "hint" in line])
        self.assertTrue(block.endswith(dedented("""
            Output context:
            {
            O = 1
            result = 0
            }

            Build done
            """)), block)
