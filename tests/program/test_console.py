"""What is written where, in which order and colour."""

from harness import ProgramTest, SETTINGS, dedented

HELLO = """
    hello: { cmdline = "child print hello" }
    bad: hello { cmdline = "child exit 3" }
    """


def message(colour, text):
    return f"\x1b[38;5;{colour}m{text}\x1b[0m\n"


class Order(ProgramTest):
    def test_one_build(self):
        self.unit(HELLO)
        self.check("hello", out="""
            Starting build
            [vesk::hello] Visiting target
            [vesk::hello] Output dir: {DIR}/out
            [vesk::hello] Starting build job
            [vesk::hello] child print hello
            hello
            [vesk::hello] Build done
            """)
        self.assertEqual(self.files(), ["vesk.txt"])
        self.assertTrue((self.dir / "out").is_dir())

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
            [vesk::bad] Output dir: {DIR}/out
            [vesk::bad] Starting build job
            [vesk::bad] child exit 3
            [vesk::bad] Command ended with status 3: child exit 3
            [vesk::bad] Build of bad failed. Exiting..
            Error: Build failed.
            """))

    def test_warnings_and_errors_go_to_standard_error(self):
        self.unit('warn: { cmdline = "child print [${nothing}]" }')
        self.check("-v", "6", err="[vesk::warn] Variable 'nothing' does not exist.\n", out="[]\n")
        self.check("-v", "6", "other::target",
                   err="Error: Unit 'other' not found.{*}\n", status=1)

    def test_trace_of_a_whole_build(self):
        self.unit("""
            app: lib { cmdline = "child print ${lib.WORD}" }
            lib: { cmdline = []  ^WORD = "word" }
            """)
        out = self.run_vesk("app", "-v", "1").out
        wanted = dedented("""
            No project file.
            Setting project root to {DIR}
            Parsing {*}vesk.txt
            Starting build
            [vesk::app] Visiting target
            [vesk::app] Best registered tool: default_basic, score: 0
            [vesk::app] Tool selection
            [vesk::app] Filtering context.
            [vesk::app] Creating dependency list.
            [vesk::lib] Visiting target
            [vesk::lib] Best registered tool: default_basic, score: 0
            [vesk::lib] Creating dependency list.
            [vesk::lib] Input context:
            [vesk::lib] Output context:
            [vesk::lib] Build done
            [vesk::app] Resolving variables.
            [vesk::app] Input context:
            [vesk::app] Cache claimed for 'vesk::app'.
            [vesk::app] Output dir: {DIR}/out
            [vesk::app] Starting build job
            [vesk::app] child print word
            word
            [vesk::app] Output context:
            [vesk::app] Build done
            """)
        lines = iter(out.splitlines())
        for line in wanted.splitlines():
            end = line.split("{*}")[-1] if "{*}" in line else None
            found = any(seen.endswith(end) if end else seen == line for seen in lines)
            self.assertTrue(found, f"'{line}' does not come where it should in\n{out}")


class Colours(ProgramTest):
    def test_of_each_kind(self):
        self.unit("""
            main: { cmdline = "child print hello ${nothing}" }
            bad: { cmdline = "child exit 1" }
            """)
        result = self.run_vesk("main", "-v", "1", colours=True)
        for text in (
            message(35, "Setting project root to {DIR}"),
            message(37, "Starting build"),
            message(37, "[vesk::main] Visiting target"),
            message(36, "[vesk::main] Tool selection"),
            message(36, "[vesk::main] Registered : default_basic"),
            message(35, "[vesk::main] Resolving variables."),
            "hello\n",
        ):
            self.assertIn(text, result.out)
        self.assertEqual(result.err, message(33, "[vesk::main] Variable 'nothing' does not exist."))
        result = self.run_vesk("bad", colours=True)
        self.assertEqual(result.err.splitlines(True)[-1], message(31, "Error: Build failed."))

    def test_listing_has_a_second_column(self):
        self.unit("""
            app: lib { DESCRIPTION = "the program" NO_TOOL }
            lib: { NO_TOOL }
            """)
        out = self.run_vesk("-l", "1", colours=True).out
        self.assertRegex(out.splitlines()[0], r"\x1b\[38;5;37m *app.*\x1b\[38;5;32m.*the program")

    def test_every_message_ends_its_colour(self):
        self.unit(HELLO)
        for arguments in (["hello", "-v", "0"], ["bad"], ["--version"], ["-p"], ["-f"]):
            result = self.run_vesk(*arguments, colours=True)
            for line in (result.out + result.err).splitlines():
                if "\x1b" in line:
                    self.assertTrue(line.startswith("\x1b[38;5;"), line)
                    self.assertTrue(line.endswith("\x1b[0m"), line)

    def test_no_color(self):
        self.unit(HELLO)
        plain = self.run_vesk("bad", "-v", "0", env={"NO_COLOR": "1"}, colours=True, merged=True)
        self.assertNotIn("\x1b", plain.out)
        coloured = self.run_vesk("bad", "-v", "0", merged=True)
        self.assertEqual(plain.out, coloured.out)
        if not SETTINGS.windows:  # an empty variable does not exist there
            empty = self.run_vesk("hello", env={"NO_COLOR": ""}, colours=True)
            self.assertIn("\x1b", empty.out)


class ClosedStreams(ProgramTest):
    def test_nobody_reads(self):
        """A reader that goes away, as with `vesk | head`, does not harm the build."""
        if SETTINGS.windows:
            self.skipTest("about POSIX pipes")
        self.unit('main: { cmdline = ["child touch one", "child touch two"] }')
        process = self.start("-v", "0")
        process.stdout.close()
        process.stderr.read()
        process.wait(60)
        self.assertEqual(self.files(), ["one", "two", "vesk.txt"])
        self.assertEqual(process.returncode, 0)
        process.stderr.close()
