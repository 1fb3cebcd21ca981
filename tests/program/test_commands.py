"""How commands are started: quoting, their environment, and what can be missing."""

from harness import ProgramTest, SETTINGS, on_system, posix_only, windows_only

FAILED = "[vesk::t] Build of t failed. Exiting..\nError: Build failed.\n"


class Quoting(ProgramTest):
    def test_arguments(self):
        texts = ("plain", "two words", "100%", "a & b", "semi;colon", "(brackets)", "a,b", "%",
                 "grüße 世界", "it's", "star*", "a^b", "x|y", "<in>", "~home", "#hash", "")
        commands = ",\n".join(f'"child args ${{q}}{text}${{q}} and  more"' for text in texts)
        self.unit("t: { q = ascii[34] cmdline = [" + commands + "] }")
        self.assertEqual(sorted(self.printed().split("[and]\n[more]\n")),
                         sorted(["", *(f"[{text}]\n" for text in texts)]))

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
        for name in ("with blank", "grüße 世界", "it's & co", "50% (x86)"):
            with self.subTest(name=name):
                self.write(f"{name}/{name}.txt", f"""
                    t: copy {{ cmdline = "child copy ${{q}}${{copy.FILE}}${{q}} done"
                              q = ascii[34] cwd = P"(.)" }}
                    copy: {{ WRITE_FILE FILENAME = P"(made {name})" TEXT = "content" }}
                    """)
                self.printed("-f", f"{name}.txt", cwd=self.dir / name)
                self.assertEqual(self.read(f"{name}/done"), "content")
                self.assertTrue((self.dir / name / "out").is_dir())


class Status(ProgramTest):
    def test_it_comes_back(self):
        for status in (1, 127, 255):
            with self.subTest(status=status):
                self.unit(f't: {{ cmdline = "child exit {status}" }}')
                self.check("-v", "7", status=1, err=f"[vesk::t] Command ended with status "
                           f"{status}: child exit {status}\n" + FAILED)

    @posix_only("about signals")
    def test_killed_by_a_signal(self):
        self.unit('t: { cmdline = "kill -9 $$" }')
        self.assertIn("status 137", self.error())

    @windows_only("the other interpreter has no such limit")
    def test_too_long_for_the_interpreter(self):
        self.unit('t: { cmdline = "child args ' + "x" * 8200 + '" }')
        self.assertIn("at most 8191", self.error())


class Missing(ProgramTest):
    def test_working_directory(self):
        self.write("file", "")
        for cwd, message in (("no/such", "Working directory 'no/such' does not exist."),
                             ("file", "Working directory 'file' is not a directory.")):
            self.unit(f't: {{ cmdline = "child print never" cwd = "{cwd}" }}')
            self.assertEqual(self.error(), f"[vesk::t] {message}\n" + FAILED)

    @posix_only("Windows always has one")
    def test_powershell(self):
        self.unit("t: { pwsh = \"Write-Output 'never'\" }")
        self.assertEqual(self.error(env={"PATH": "/usr/bin:/bin"}),
                         "[vesk::t] PowerShell 'pwsh' could not be started: No such file or "
                         "directory (code 2). Is it installed and in PATH?\n" + FAILED)

    @windows_only("COMSPEC names the interpreter there only")
    def test_interpreter(self):
        self.unit('t: { cmdline = "args x" }')
        self.assertIn("Command interpreter 'C:\\nowhere\\cmd.exe' could not be started",
                      self.error(env={"COMSPEC": "C:\\nowhere\\cmd.exe"}))
        # What stands in COMSPEC gets /D /C and the text.
        child = on_system(SETTINGS.children / "bin" / "child.exe")
        self.assertEqual(self.printed(env={"COMSPEC": child}), "[x]\n")
        self.prints('t: { cmdline = "child print hello" }', "hello\n", env={"COMSPEC": ""})


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


class OutputDirectory(ProgramTest):
    def test_places(self):
        root = on_system(self.dir).replace("\\", "/")
        for body, place in (
            ('OUTPUT_DIR = "made/here/"', "made/here"),
            (f'OUTPUT_DIR = "{root}/absolute"', "absolute"),
            ('OUTPUT_DEF_DIR = "with blank/grün"', "with blank/grün"),
        ):
            with self.subTest(body=body):
                self.unit('t: { cmdline = "child exit 0" ' + body + " }")
                self.assertIn(f"Output dir: {{DIR}}/{place}\n", self.run_vesk().out)
                self.assertTrue((self.dir / place).is_dir())

    def test_place_that_is_taken(self):
        self.write("out", "a file")
        self.unit('t: { cmdline = "child print never" }')
        self.assertRegex(self.error(), "create_directories.*{DIR}/out")
