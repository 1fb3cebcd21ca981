"""What is written where, in which order and colour."""

from harness import HANGS, ProgramTest, SETTINGS, dedented, posix_only

HELLO = """
    hello: { cmdline = "child print hello" }
    bad: hello { cmdline = "child exit 3" x = "${nothing}" }
    """


def message(colour, text):
    return f"\x1b[38;5;{colour}m{text}\x1b[0m\n"


class Order(ProgramTest):
    def test_streams_in_the_order_of_events(self):
        self.unit(HELLO)
        result = self.run_vesk("bad", "hello", merged=True)
        self.assertEqual(result.out, dedented("""
            Only one target name can be specified
            Starting build
            [vesk::bad] Visiting target
            [vesk::hello] Visiting target
            [vesk::hello] Output dir: {DIR}/out
            [vesk::hello] Starting build job
            [vesk::hello] child print hello
            hello
            [vesk::hello] Build done
            [vesk::bad] Variable 'nothing' does not exist.
            [vesk::bad] Output dir: {DIR}/out
            [vesk::bad] Starting build job
            [vesk::bad] child exit 3
            [vesk::bad] Command ended with status 3: child exit 3
            [vesk::bad] Build of bad failed. Exiting..
            Error: Build failed.
            """))

    def test_trace_of_a_whole_build(self):
        self.unit("""
            app: lib { cmdline = "child print ${lib.WORD}" }
            lib: { cmdline = []  ^WORD = "word" }
            """)
        out = self.run_vesk("app", "-v", "1").out
        lines = iter(line.replace("vesk::", "") for line in out.splitlines())
        for line in dedented("""
                No project file.
                Setting project root to {DIR}
                Parsing {DIR}/vesk.txt
                Starting build
                [app] Visiting target
                [app] Best registered tool: default_basic, score: 0
                [app] Tool selection
                [app] Filtering context.
                [app] Creating dependency list.
                [lib] Visiting target
                [lib] Best registered tool: default_basic, score: 0
                [lib] Creating dependency list.
                [lib] Input context:
                [lib] Output context:
                [lib] Build done
                [app] Resolving variables.
                [app] Input context:
                [app] Cache claimed for 'app'.
                [app] Output dir: {DIR}/out
                [app] Starting build job
                [app] child print word
                word
                [app] Output context:
                [app] Build done
                """).splitlines():
            self.assertTrue(line in lines, f"'{line}' does not come where it should in\n{out}")


class Colours(ProgramTest):
    def test_of_each_kind(self):
        self.unit("""
            main: { cmdline = "child print hello ${nothing}" DESCRIPTION = "what it does" }
            bad: { cmdline = "child exit 1" }
            """)
        result = self.run_vesk("main", "-v", "1", colours=True)
        for text in (
            message(35, "Setting project root to {DIR}"),
            message(37, "[vesk::main] Visiting target"),
            message(36, "[vesk::main] Tool selection"),
            "hello\n",
        ):
            self.assertIn(text, result.out)
        self.assertEqual(result.err, message(33, "[vesk::main] Variable 'nothing' does not exist."))
        result = self.run_vesk("bad", colours=True)
        self.assertEqual(result.err.splitlines(True)[-1], message(31, "Error: Build failed."))
        result = self.run_vesk("-l", "1", colours=True)
        self.assertEqual(result.out, message(37, "main  \x1b[38;5;32mwhat it does") +
                         message(37, "bad"))

    def test_no_color(self):
        self.unit(HELLO)
        plain = self.run_vesk("bad", "-v", "0", env={"NO_COLOR": "1"}, colours=True, merged=True)
        self.assertNotIn("\x1b", plain.out)
        self.assertEqual(plain.out, self.run_vesk("bad", "-v", "0", merged=True).out)
        if not SETTINGS.windows:  # an empty variable does not exist there
            empty = self.run_vesk("hello", env={"NO_COLOR": ""}, colours=True)
            self.assertIn("\x1b", empty.out)


class ControlCharacters(ProgramTest):
    def test_are_shown_but_those_of_commands_pass(self):
        self.unit(b'a: {\n  cmdline = "child print \x1b[2Jx"  DESCRIPTION = "\x1b]0;t\x07\tu\xc2\x9b"\n}\n')
        self.assertIn("\x1b[2Jx\n", self.run_vesk(colours=True).out)
        self.assertIn(message(37, "[vesk::a] child print \\x1b[2Jx"), self.run_vesk(colours=True).out)
        self.assertEqual(self.run_vesk("-l", "1", colours=True).out,
                         message(37, "a  \x1b[38;5;32m\\x1b]0;t\\x07\tu\\x9b"))


class ClosedStreams(ProgramTest):
    @posix_only("about a device of POSIX")
    def test_full(self):
        with open("/dev/full", "wb") as full:
            for arguments in (["--version"], ["-h"], ["-c", "cmdline=[]"]):
                process = self.start(*arguments, stdout=full)
                self.assertEqual((self.plain(process.communicate()[1]), process.returncode),
                                 ("Unable to write all of standard output.\n", 1))

    def test_nobody_reads(self):
        """A reader that goes away, as with `vesk | head`, does not harm the build."""
        if SETTINGS.windows:
            self.skipTest("about POSIX pipes")
        self.unit('main: { cmdline = ["child touch one", "child touch two"] }')
        process = self.start("-v", "0")
        process.stdout.close()
        process.stderr.read()
        process.wait(HANGS)
        self.assertEqual(self.files(), ["one", "two", "vesk.txt"])
        self.assertEqual(process.returncode, 0)
        process.stderr.close()
