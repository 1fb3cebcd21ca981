"""Targets of the built-in tools: commands, PowerShell, nothing at all, files."""

from harness import ProgramTest, SETTINGS, dedented, on_system


class Commands(ProgramTest):
    def test_text_and_list(self):
        self.prints('t: { cmdline = "child print one" }', "one\n")
        self.prints('t: { cmdline = ["child print one"] }', "one\n")
        self.prints("t: { cmdline = [] }", "")

    def test_list_of_references(self):
        self.unit("""
            t: {
                first = "child touch a b"
                cmdline = [first, "child touch c"]
            }
            """)
        self.printed()
        self.assertEqual(self.files(), ["a", "b", "c", "vesk.txt"])

    def test_one_command_for_each_element(self):
        self.unit("""
            t: {
                names = ["a", "b", "c"]
                cmdline = ["child touch #{names}.txt"]
            }
            """)
        self.printed()
        self.assertEqual(self.files(), ["a.txt", "b.txt", "c.txt", "vesk.txt"])

    def test_working_directory(self):
        self.write("sub/deep/file", "")
        for cwd in ('"sub/deep"', 'P"(sub/deep)"', "where where = R\"(sub/deep)\""):
            with self.subTest(cwd=cwd):
                self.prints(f't: {{ cmdline = "child cwd" cwd = {cwd} }}', "deep\n")

    def test_working_directory_is_the_current_one(self):
        self.write("sub/vesk.txt", 't: { cmdline = "child cwd" }')
        self.assertEqual(self.printed("-f", "sub/vesk.txt"), "work\n")

    def test_the_interpreter_runs_it(self):
        both = "child print one& child print two" if SETTINGS.windows else \
            "child print one; child print two"
        self.prints(f't: {{ cmdline = "{both}" }}', "one\ntwo\n")
        self.unit('t: { cmdline = "child print out> file.txt" }')
        self.printed()
        self.assertEqual(self.read("file.txt"), "out\n")

    def test_result_is_an_output(self):
        self.unit('t: { cmdline = "child exit 0" ^own = "x" }')
        self.printed("-o", "outputs")
        self.assertEqual(self.read("outputs"), "own = x\nresult = 0\n")


class Conditions(ProgramTest):
    def test_they_decide_the_tool(self):
        unit = """
            t: {
                if kind = "quiet" { NO_TOOL }
                if kind = "loud" { cmdline = "child print loud" }
                if kind = "file" { WRITE_FILE FILENAME = "f" TEXT = "text" }
            }
            """
        for kind, tool in (("quiet", "default_no_tool"), ("loud", "default_basic"),
                           ("file", "default_file_writer")):
            with self.subTest(kind=kind):
                self.unit(unit)
                out = self.run_vesk("-v", "t", f'kind="{kind}"').out
                self.assertIn(f"[vesk::t] Registered : {tool}\n", out)
        self.assertEqual(self.read("f"), "text")

    def test_the_system(self):
        self.prints("""
            t: {
                if os_family = "windows" { cmdline = "child print windows" }
                if os_family = "unix" { cmdline = "child print unix" }
            }
            """, "windows\n" if SETTINGS.windows else "unix\n")

    def test_settings_of_the_tool(self):
        self.write(".vesk_project.txt", """
            name demo
            tools { runner { tool_type = "command" greeting = "hello" } }
            units { main { "vesk.txt" } }
            """)
        self.prints("""
            unit main
            t: {
                cmdline = "child print none"
                if greeting = "hello" { cmdline = "child print ${greeting}" }
            }
            """, "hello\n")


class NoTool(ProgramTest):
    def test_runs_nothing(self):
        self.unit('t: { NO_TOOL cmdline = "child print never" cwd = "nowhere" }')
        self.check(out="""
            Starting build
            [vesk::t] Visiting target
            [vesk::t] Build done
            """)
        self.assertFalse((self.dir / "out").exists())


class PowerShell(ProgramTest):
    def log(self):
        return self.read("log").replace(on_system(self.dir), "{DIR}")

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

    def test_list_and_directory(self):
        self.write("sub dir/a", "content")
        self.unit("""
            t: {
                pwsh = ["Copy-Item -LiteralPath 'a' -Destination 'b' -Force",
                        "New-Item -ItemType Directory -Force -Path 'c/d' | Out-Null"]
                cwd = "sub dir"
            }
            """)
        self.printed()
        self.assertEqual(self.read("sub dir/b"), "content")
        self.assertTrue((self.dir / "sub dir/c/d").is_dir())

    def test_status(self):
        self.unit('t: { pwsh = "exit 7" }')
        self.check("-v", "6", err="""
            [vesk::t] Command ended with status 7: exit 7
            [vesk::t] Build of t failed. Exiting..
            Error: Build failed.
            """, status=1)

    def test_both_kinds_of_command(self):
        """Of two tools of equal score the first by name is taken."""
        self.prints("""
            t: { cmdline = "child print plain" pwsh = "Write-Output 'power'" }
            """, "plain\n")


class FileWriter(ProgramTest):
    def write_with(self, body):
        self.unit("t: { WRITE_FILE " + body + " }")
        self.printed()

    def test_text_forms(self):
        for text, expected in (
            ('"one"', "one"),
            ('""', ""),
            ('R"(a "b" ${c})"', 'a "b" ${c}'),
            ('["one", "two", "three"]', "one\ntwo\nthree"),
            ('["one", 2, ["x", "y"]]', "one\n2\nx y"),
            ('[]', ""),
            ('["a", "#{l}"] l = ["x", "y"]', "a\nx\ny"),
            ('["a", "b"] SEPARATOR = ", "', "a, b"),
            ('["a", "b"] SEPARATOR = "${ascii[\'CR\']}${ascii[10]}"', "a\r\nb"),
            ('{ b = 2 a = "x" }', '{\na = "x"\nb = 2\n}'),
            ('"grüße 世界"', "grüße 世界"),
        ):
            with self.subTest(text=text):
                self.write_with(f'FILENAME = "f" TEXT = {text}')
                self.assertEqual(self.read("f"), expected)

    def test_modes(self):
        self.write("f", "old\n")
        self.write_with('FILENAME = "f" TEXT = "a" MODE = "Append"')
        self.assertEqual(self.read("f"), "old\na")
        self.write_with('FILENAME = "f" TEXT = "b" MODE = "CREATE"')
        self.assertEqual(self.read("f"), "b")
        self.unit('t: { FILE_WRITER FILENAME = "f" TEXT = "c" }')
        self.printed()
        self.assertEqual(self.read("f"), "c")

    def test_path_is_relative_to_the_unit(self):
        self.write("sub/vesk.txt", """
            t: { WRITE_FILE FILENAME = P"(a b.txt)" TEXT = "x" }
            """)
        self.printed("-f", "sub/vesk.txt", "-o", "outputs")
        self.assertEqual(self.files(), ["outputs", "sub/a b.txt", "sub/vesk.txt"])
        self.assertEqual(self.plain(self.read("outputs").encode()),
                         "FILE = {DIR}/sub/a b.txt\nTEXT = x\n")

    def test_outputs(self):
        self.unit("""
            user: file { cmdline = "child copy ${file.FILE} copy" }
            file: { WRITE_FILE FILENAME = "f" TEXT = ["1", "2"] }
            """)
        self.printed()
        self.assertEqual(self.read("copy"), "1\n2")

    def test_errors(self):
        self.write("directory/file", "")
        for body, message in (
            ('FILENAME = "no/such/f" TEXT = "x"',
             "File writer parent directory does not exist: 'no/such'."),
            ('FILENAME = "f" TEXT = "x" MODE = "overwrite"',
             "File writer variable 'MODE' must be either 'create' or 'append', got 'overwrite'."),
            ('FILENAME = ["f"] TEXT = "x"',
             "File writer variable 'FILENAME' must be a string or path."),
            ('FILENAME = "f" TEXT = 5',
             "File writer variable 'TEXT' must be a string, list, or context."),
            ('FILENAME = "directory" TEXT = "x"',
             "File writer could not open 'directory' for writing."),
        ):
            with self.subTest(body=body):
                self.unit("t: { WRITE_FILE " + body + " }")
                result = self.run_vesk("-v", "6")
                self.assertTrue(result.err.startswith("Error: " + message), result.err)
                self.assertEqual((result.status, self.files()), (1, ["directory/file", "vesk.txt"]))


class ToolSelection(ProgramTest):
    def report_of(self, unit, *arguments):
        self.unit(unit)
        out = self.run_vesk("-v", *arguments).out
        begin = out.index("[vesk::t] Best registered tool")
        return out[begin:out.index("[vesk::t] Input context")].replace("[vesk::t] ", "")

    def test_reports(self):
        for body, lines in (
            ('cmdline = []', ["default_basic, score: 0", "default_basic", "no matched variables"]),
            ('cmdline = [] cwd = "."', ["default_basic, score: 1", "default_basic",
                                        "cwd partial match"]),
            ('cmdline = [] NO_TOOL', ["default_no_tool, score: 2", "default_no_tool",
                                      "NO_TOOL full match"]),
            ('WRITE_FILE FILENAME = "f" TEXT = "x" MODE = "CREATE" SEPARATOR = "${ascii[10]}"',
             ["default_file_writer, score: 7", "default_file_writer", "FILENAME full match",
              "MODE partial match", "SEPARATOR full match", "TEXT full match"]),
            ('pwsh = [] cwd = "."', ["default_pwsh, score: 1", "default_pwsh",
                                     "cwd partial match"]),
        ):
            best, registered, *reasons = lines
            with self.subTest(body=body):
                report = self.report_of("t: { " + body + " }").splitlines()
                self.assertEqual(report[:4], [f"Best registered tool: {best}", "Tool selection",
                                              "--------------", f"Registered : {registered}"])
                self.assertRegex(report[4], "^Tool       : .+")
                self.assertEqual(report[5:], ["Reason     :", *[f"  - {r}" for r in reasons]])

    def test_match_lines(self):
        self.unit('t: { cmdline = [] cwd = "." ^out }')
        out = self.run_vesk("-v", "0").out
        for line in (
            "default_basic::match - result.note: BuildPossible",
            "default_basic::match - PartialMatch: key='cwd'",
            "default_pwsh::match - result.note: BuildImpossible",
            "default_no_tool::match - result.note: BuildImpossible",
            "default_file_writer::match - result.note: BuildImpossible",
        ):
            self.assertIn(line + "\n", out)
        self.unit("t: { cmdline = [] ^cwd }")
        self.assertIn("default_basic::match - NoMatch: key='cwd'\n", self.run_vesk("-v", "0").out)

    def test_nothing_fits(self):
        self.unit('t: { TEXT = "x" FILENAME = "f" }')
        result = self.run_vesk("-v", "6")
        self.assertTrue(result.err.startswith("Error: No tool to build vesk::t\n"), result.err)
        self.assertEqual(result.status, 1)

    def test_contexts(self):
        self.unit("""
            t: dep {
                ?hint = dep
                cmdline = "child print ${dep.W}"
                ^O = 1
            }
            dep: { cmdline = [] ^W = "w" }
            """)
        out = self.run_vesk("-v", "3").out
        block = out[out.index("[vesk::t] Input context"):].replace("[vesk::t] ", "")
        inside = block[:block.index("}\n\nOutput dir")].splitlines()
        self.assertEqual(inside[:2], ["Input context:", "{"])
        self.assertIn('cmdline = "child print w"', inside)
        self.assertFalse([line for line in inside if "hint" in line])
        output = block[block.index("Output context:"):]
        self.assertEqual(output.splitlines()[-7:], dedented("""
            Output context:
            {
            O = 1
            result = 0
            }

            Build done
            """).splitlines())
