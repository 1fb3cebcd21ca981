"""How commands are started: quoting, their environment, and what can be missing."""

from harness import ProgramTest, SETTINGS, on_system, posix_only, windows_only


class Quoting(ProgramTest):
    def test_arguments(self):
        texts = ("plain", "two words", "100%", "a & b", "semi;colon", "(brackets)", "a,b", "%",
                 "grüße 世界", "it's", "star*", "a^b", "x|y", "<in>", "~home", "#hash", "")
        commands = ",\n".join(f'"child args ${{q}}{text}${{q}}"' for text in texts)
        self.unit("t: { q = ascii[34] cmdline = [" + commands + "] }")
        self.assertEqual(sorted(self.printed().splitlines()),
                         sorted(f"[{text}]" for text in texts))

    def test_several_in_one_command(self):
        self.prints("""
            t: {
                q = ascii[34]
                cmdline = "child args ${q}a b${q} c ${q}${q} ${q}d & e${q}"
            }
            """, "[a b]\n[c]\n[]\n[d & e]\n")

    def test_program_in_quotes(self):
        """The interpreter must not take the quotes of the program for its own."""
        suffix = ".exe" if SETTINGS.windows else ""
        source = SETTINGS.children / "bin" / f"child{suffix}"
        for name in ("with blank", "a & b", "(x86)", "100%", "grün"):
            with self.subTest(name=name):
                program = self.write(f"{name}/child{suffix}", source.read_bytes())
                program.chmod(0o755)
                path = on_system(program)
                self.prints(f't: {{ cmdline = R"("{path}" args "x y" z)" }}', "[x y]\n[z]\n")

    def test_echo_shows_the_command_as_it_is(self):
        self.unit('t: { cmdline = R"(child  args   "a  {b}"  {0})" }')
        self.assertIn('[vesk::t] child  args   "a  {b}"  {0}\n[a  {b}]\n[{0}]\n',
                      self.run_vesk().out)

    def test_file_names(self):
        for name in ("with blank", "grüße 世界", "it's", "a&b", "50%", "(x86)"):
            with self.subTest(name=name):
                self.write(f"{name}/{name}.txt", f"""
                    t: copy {{ cmdline = "child copy ${{q}}${{copy.FILE}}${{q}} done"
                              q = ascii[34] cwd = P"(.)" }}
                    copy: {{ WRITE_FILE FILENAME = P"(made {name})" TEXT = "content" }}
                    """)
                self.printed("-f", f"{name}/{name}.txt")
                self.assertEqual(self.read(f"{name}/done"), "content")
                self.assertTrue((self.dir / name / "out").is_dir())


class Status(ProgramTest):
    def test_it_comes_back(self):
        for status in (1, 2, 64, 127, 255):
            with self.subTest(status=status):
                self.unit(f't: {{ cmdline = "child exit {status}" }}')
                self.check("-v", "6", err=f"""
                    [vesk::t] Command ended with status {status}: child exit {status}
                    [vesk::t] Build of t failed. Exiting..
                    Error: Build failed.
                    """, status=1)

    @posix_only("about signals")
    def test_killed_by_a_signal(self):
        self.unit('t: { cmdline = "kill -9 $$" }')
        result = self.run_vesk("-v", "6")
        self.assertIn("status 137", result.err)
        self.assertEqual(result.status, 1)

    def test_unknown_program(self):
        self.unit('t: { cmdline = "no_such_program_anywhere" }')
        result = self.run_vesk("-v", "7")
        self.assertIn("no_such_program_anywhere", result.err)
        self.assertEqual(result.status, 1)

    @windows_only("the other interpreter has no such limit")
    def test_too_long_for_the_interpreter(self):
        self.unit('t: { cmdline = "child args ' + "x" * 8200 + '" }')
        result = self.run_vesk("-v", "7")
        self.assertIn("at most 8191", result.err)
        self.assertEqual(result.status, 1)


class Missing(ProgramTest):
    def test_working_directory(self):
        self.write("file", "")
        for cwd, message in (("no/such", "Working directory 'no/such' does not exist."),
                             ("file", "Working directory 'file' is not a directory.")):
            with self.subTest(cwd=cwd):
                self.unit(f't: {{ cmdline = "child print never" cwd = "{cwd}" }}')
                self.check("-v", "6", err=f"""
                    [vesk::t] {message}
                    [vesk::t] Build of t failed. Exiting..
                    Error: Build failed.
                    """, status=1)

    @posix_only("Windows always has one")
    def test_powershell(self):
        self.unit("t: { pwsh = \"Write-Output 'never'\" }")
        result = self.run_vesk("-v", "6", env={"PATH": "/usr/bin:/bin"})
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err.splitlines()[0],
                         "[vesk::t] PowerShell 'pwsh' could not be started: No such file or "
                         "directory (code 2). Is it installed and in PATH?")

    @windows_only("COMSPEC names the interpreter there only")
    def test_interpreter(self):
        self.unit('t: { cmdline = "child print never" }')
        result = self.run_vesk("-v", "6", env={"COMSPEC": "C:\\nowhere\\cmd.exe"})
        self.assertEqual(result.status, 1)
        self.assertIn("Command interpreter 'C:\\nowhere\\cmd.exe' could not be started",
                      result.err)

    @windows_only("COMSPEC names the interpreter there only")
    def test_default_interpreter(self):
        self.prints('t: { cmdline = "child print hello" }', "hello\n", env={"COMSPEC": ""})

    @windows_only("COMSPEC names the interpreter there only")
    def test_other_interpreter(self):
        """What stands in COMSPEC gets /D /C and the text."""
        self.unit('t: { cmdline = "args x" }')
        child = on_system(SETTINGS.children / "bin" / "child.exe")
        result = self.run_vesk("-v", "6", env={"COMSPEC": child})
        self.assertEqual(result.out, "[x]\n")


class Environment(ProgramTest):
    def test_variables_of_a_target(self):
        self.prints("""
            app: one {
                cmdline = "child env ONE TWO THREE"
                ENV = { TWO = "app" }
            }
            one: {
                word = "w"
                cmdline = "child env ONE TWO THREE"
                ENV = { ONE = "set ${word}" TWO = "grün & 100%" THREE = ["a", "b"] }
            }
            """, """
            ONE=set w
            TWO=grün & 100%
            THREE=a b
            ONE is not set
            TWO=app
            THREE=outside
            """, env={"THREE": "outside", "TWO": "outside"})

    def test_restored_after_a_failure(self):
        self.unit("""
            all: bad after { NO_TOOL }
            bad: { cmdline = "child exit 1" ENV = { ONE = "set" } }
            after: { cmdline = "child env ONE" }
            """)
        result = self.run_vesk("-k", "-v", "6", "all")
        self.assertEqual((result.out, result.status), ("ONE is not set\n", 1))

    def test_standard_input_is_shared(self):
        self.prints('t: { cmdline = "child print fine" }', "fine\n")


class OutputDirectory(ProgramTest):
    def test_places(self):
        root = on_system(self.dir).replace("\\", "/")
        for body, place in (
            ("", "out"),
            ('OUTPUT_DIR = "made/here"', "made/here"),
            (f'OUTPUT_DIR = "{root}/absolute"', "absolute"),
            ('OUTPUT_DEF_DIR = "def"', "def"),
            ('OUTPUT_DIR = "with blank/grün"', "with blank/grün"),
        ):
            with self.subTest(body=body):
                self.unit('t: { cmdline = "child exit 0" ' + body + " }")
                self.assertIn(f"Output dir: {{DIR}}/{place}\n", self.run_vesk().out)
                self.assertTrue((self.dir / place).is_dir())

    def test_place_that_is_taken(self):
        self.write("out", "a file")
        self.unit('t: { cmdline = "child print never" }')
        result = self.run_vesk("-v", "6")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertIn("create_directories", result.err)
        self.assertIn("{DIR}/out", result.err)
