"""What is written where, in which order and colour."""

import fcntl
import os
import pty
import re
import struct
import termios

from harness import HANGS, ProgramTest, SETTINGS, dedented, posix_only
from test_toolchains import NATIVE, ToolchainTest

WHOLE = 'SIDE_BY_SIDE="yes"'
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


@posix_only("the emulator's console is no pseudo-terminal")
class Terminal(ToolchainTest):
    """What commands write while others run is shown in one piece, as on a terminal of their own."""

    tools = NATIVE
    coloured = "\x1b[01;35m\x1b[Kwarning: "

    def setUp(self):
        super().setUp()
        # A command that does as gcc does, and as NO_COLOR asks, with lines that could be mixed.
        self.write("talk", """
            say() {
                if [ -t 1 ] && [ -z "$NO_COLOR" ]; then printf '\\033[1m%s\\033[m\\n' "$1"; else echo "$1"; fi
            }
            for line in 1 2 3 4 5 6 7 8 9; do
                say "$1 $line"
                say "error $1 $line" >&2
            done
            """)
        names = [f"n{number}" for number in range(8)]
        for name in names:
            self.write(f"src/{name}.c", f"int {name}(void) {{ int unused; return 0; }}\n")
        self.unit(f"all: libraries {' '.join(names)} {{ NO_TOOL = 1 }}\n" + "".join(
            f'{name}: {{ SIDE_BY_SIDE = "yes" cmdline = "sh talk {name}" }}\n' for name in names) +
            'libraries: { OUTPUT_TYPE = "object" C_FILES = ["src/*.c"] C_FLAGS = ["-Wall"] }\n')

    def on_terminal(self, *arguments, stderr=None, env=None, progress="none"):
        """What vesk writes to a terminal."""
        ours, theirs = pty.openpty()
        self.addCleanup(os.close, ours)
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 60, 0, 0))
        process = self.start(f"--progress={progress}", *arguments, stdout=theirs, stderr=theirs if stderr is None else stderr,
                             env={"TERM": "xterm", **(env or {})})
        os.close(theirs)
        read = b""
        while True:
            try:
                read += os.read(ours, 65536)
            except OSError:  # nobody has the other end any more
                break
        self.assertEqual(process.wait(HANGS), 0, read)
        return self.plain(read, colours=True)

    def blocks(self, text):
        """Each command line with what stands below it."""
        parts = re.split(r"(?m)^(?:\x1b\[38;5;\d+m)?(?=\[vesk)", text)
        return sorted(part for part in parts if " -c " in part or "sh talk" in part)

    def test_colours_survive_and_nothing_is_mixed(self):
        alone = self.blocks(self.on_terminal("-j1", "all"))
        many = self.blocks(self.on_terminal("-j4", "all"))
        self.assertEqual(len(alone), 16)
        self.assertEqual(sum(self.coloured in block for block in alone), 8)
        self.assertEqual(alone, many)

    def test_none_where_nobody_sees_them(self):
        for jobs in ("-j1", "-j4"):
            blocks = self.blocks(self.run_vesk(jobs, "all", merged=True, colours=True).out)
            self.assertEqual(sum("unused variable" in block for block in blocks), 8)
            for block in blocks:
                self.assertNotIn("\x1b", block.split("\n", 1)[1])

    def test_one_stream_can_be_a_terminal_and_the_other_not(self):
        with open(self.base / "err", "wb") as err:
            out = self.on_terminal("-j4", "all", stderr=err)
        self.assertEqual(out.count("\x1b[1mn3 "), 9)
        said = (self.base / "err").read_text()
        self.assertEqual((said.count("unused variable"), said.count("error n3 ")), (8, 9))
        self.assertNotIn("\x1b", said)

    def test_no_color(self):
        """vesk writes none, and commands are told so; it is they who decide."""
        for jobs in ("-j1", "-j4"):
            out = self.on_terminal(jobs, "all", env={"NO_COLOR": "1"})
            self.assertEqual(out.count("\nn3 "), 9)
            own = [line for line in out.splitlines() if line.startswith("[vesk") or " n3 " in line]
            self.assertNotIn("\x1b", "\n".join(own))


    def shown(self, text):
        """What stands on the terminal in the end, where a line is redrawn."""
        lines = []
        for line in re.sub(r"\x1b\][^\x1b]*\x1b\\\\", "", text).split("\n"):
            cells = ""
            for part in line.split("\r"):
                cells = part + cells[len(part):]
            lines.append(cells.rstrip())
        return "\n".join(lines)

    def test_progress_is_a_line_that_goes_away(self):
        """Drawn while something takes long, cut to the width, and no byte of the messages is lost."""
        self.unit("all: a b { NO_TOOL }\n" + "".join(
            f'{name}: {{ SIDE_BY_SIDE = "yes" cmdline = "echo {name}; sleep 1" }}\n' for name in "ab"))
        arguments = ("-j2", "all", "--rebuild")
        drawn = self.on_terminal(*arguments, progress="auto", env={"NO_COLOR": "1"})
        self.assertRegex(drawn, r"\[0/2\] 0:0\d vesk::a, vesk::b\r +\r")
        *lines, time = self.shown(drawn).splitlines()
        self.assertRegex(time, r"^2 steps in 0:\d\d$")
        plain = self.on_terminal(*arguments, env={"NO_COLOR": "1"})
        self.assertEqual(sorted(lines), sorted(plain.splitlines()))
        self.assertNotIn("\r", plain)
        self.assertNotIn("\x1b", drawn)
        self.assertNotIn("[0/2]", self.run_vesk(*arguments).out)
        self.assertNotIn("[0/2]", self.on_terminal(*arguments, "-v", "6", progress="auto"))

    def test_taskbar_where_the_terminal_knows_it(self):
        self.unit('a: { SIDE_BY_SIDE = "yes" cmdline = "sleep 1" }\nb: a { cmdline = "exit 0" }\n')
        for env, has in (({}, False), ({"WT_SESSION": "1"}, True), ({"ConEmuANSI": "ON"}, True),
                         ({"WT_SESSION": "1", "NO_COLOR": "1"}, False)):
            drawn = self.on_terminal("-j2", "b", "--rebuild", progress="auto", env=env)
            self.assertEqual(drawn.count("\x1b]9;4;0;0\x1b\\"), int(has), env)


class Progress(ProgramTest):
    def test_numbered_lines(self):
        self.unit("""
            all: a b { NO_TOOL }
            a: { cmdline = "child print a" }
            b: { cmdline = "child print b" }
            """)
        for jobs in ("-j1", "-j3"):
            out = self.run_vesk("--progress=plain", jobs, WHOLE, "all").out
            self.assertRegex(out, r"(?m)^\[1/[23]\] 0:\d\d vesk::[ab]$")
            self.assertRegex(out, r"(?m)^\[2/[23]\] 0:\d\d vesk::[ab]$")
            self.assertRegex(out, r"\n2 steps in 0:\d\d\n$")

    def test_unknown_style(self):
        self.check_error("--progress=bar", out="", err="""
            Error: There is no progress 'bar'.
              write --progress=auto, line, plain or none
            """)


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
