"""Commands that run at the same time, and builds that somebody stops."""

import fcntl
import os
import pty
import signal
import subprocess
import termios
import time

from harness import (HANGS, SETTINGS, ProgramTest, dedented, on_system, posix_only, wait_until,
                     windows_only)

CTRL_C = b"\x03"
ENDED_BY_CTRL_C = 0xC000013A  # the exit code of a Windows process


class Parallel(ProgramTest):
    def test_all_start_before_any_ends(self):
        """Each command waits for the files of the two others."""
        self.unit("""
            t: { cmdline = ["child meet a b c", "child meet b a c", "child meet c a b"] }
            """)
        result = self.run_vesk("-j", "1")
        self.assertEqual((result.err, result.status), ("", 0))
        lines = result.out.splitlines()
        self.assertEqual(lines[3:6], ["[vesk::t] Starting build job"] * 3)
        self.assertEqual(lines[-1], "[vesk::t] Build done")

    def test_second_of_three_fails(self):
        """The third is waited for: it ends only after the second has failed."""
        self.unit("""
            t: { cmdline = ["child meet a b", "child meet b a c -- 3", "child meet c b"] }
            after: t { cmdline = "child touch never" }
            """)
        result = self.run_vesk("after")
        self.assertEqual(result.err, dedented("""
            [vesk::t] Command ended with status 3: child meet b a c -- 3
            [vesk::t] Build of t failed. Exiting..
            Error: Build failed.
            """))
        self.assertEqual((result.status, self.files()), (1, ["a", "b", "c", "vesk.txt"]))

    def test_many(self):
        commands = ", ".join(f'"child touch f{n}"' for n in range(60))
        self.unit(f"t: {{ cmdline = [{commands}] }}")
        self.printed()
        self.assertEqual(len(self.files()), 61)


class InterruptedBuild(ProgramTest):
    def start_build(self, commands, **options):
        """`here` is the test's directory, so that its children can be told from others."""
        self.unit("""
            all: inner { cmdline = "child touch never" }
            inner: { cmdline = %s  here = PROJECT_ROOT }
            """ % commands)
        process = self.start("all", stderr=subprocess.STDOUT, **options)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.kill)
        return process

    def expect_interrupted(self, process, status):
        output = self.plain(process.communicate(timeout=HANGS)[0])
        self.assertEqual(process.returncode, status, output)
        self.assertTrue(output.endswith("Interrupted.\n"), output)
        self.assertNotIn("never", self.files())

    def expect_end_at_second_request(self, process, ask, status):
        """The child takes the first request as it comes and stays."""
        wait_until(lambda: "started" in self.files())
        ask()
        wait_until(lambda: "asked" in self.files())
        self.assertIsNone(process.poll())

        def ended_when_asked_again():
            ask()
            time.sleep(0.1)
            return process.poll() is not None

        wait_until(ended_when_asked_again)
        self.assertEqual(process.returncode, status)
        self.wait_for_orphans()


@posix_only("a program under the emulator gets no signals")
class Interruption(InterruptedBuild):
    def test_first_request_ends_the_children(self):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)):
            with self.subTest(number=number):
                process = self.start_build('["child linger ${here}/started", '
                                           '"child linger ${here}/too; exit 0"]')
                wait_until(lambda: {"started", "too"} <= set(self.files()))
                process.send_signal(number)
                self.expect_interrupted(process, status)
                self.wait_for_orphans()
                (self.dir / "started").unlink()
                (self.dir / "too").unlink()

    def test_second_request_ends_at_once(self):
        process = self.start_build('"child linger ${here}/started asked"')
        self.expect_end_at_second_request(process, lambda: process.send_signal(signal.SIGINT), 130)

    def test_an_ignored_one_stays_ignored(self):
        """As a script does with what it starts in the background."""
        process = self.start_build('"child meet here go"', preexec_fn=lambda: signal.signal(
            signal.SIGINT, signal.SIG_IGN))
        wait_until(lambda: "here" in self.files())
        process.send_signal(signal.SIGINT)
        (self.dir / "go").touch()
        output = process.communicate(timeout=60)[0]
        self.assertEqual((process.returncode, "never" in self.files()), (0, True), output)

    def test_commands_that_ended_well_do_not_hide_it(self):
        """A command that ends with status 0 when it is told to: the build still stops."""
        loop = "while :; do sleep 0.01; done"
        process = self.start_build(f'"trap \'exit 0\' INT; touch started; {loop}"')
        wait_until(lambda: "started" in self.files())
        process.send_signal(signal.SIGINT)
        self.expect_interrupted(process, 130)


class ControlC(InterruptedBuild):
    """Pressed on the terminal, which the emulator shows as the console."""

    def start_on_terminal(self, commands, **options):
        self.keyboard, terminal = pty.openpty()
        self.addCleanup(os.close, self.keyboard)
        self.addCleanup(os.close, terminal)
        if not SETTINGS.windows:
            options["preexec_fn"] = lambda: fcntl.ioctl(0, termios.TIOCSCTTY)
        return self.start_build(commands, stdin=terminal, **options)

    def press(self):
        os.write(self.keyboard, CTRL_C)

    def test_first_one_ends_the_children(self):
        """On Windows the command stands in for the interpreter too: that of the emulator ends as if
        all were well, which may be seen before the Ctrl-C itself."""
        if SETTINGS.windows:
            process = self.start_on_terminal('"linger ${here}/started"', env={
                "COMSPEC": on_system(SETTINGS.children / "bin" / "child.exe")})
        else:
            process = self.start_on_terminal('"child linger ${here}/started"')
        wait_until(lambda: "started" in self.files())
        self.press()
        self.expect_interrupted(process, 130)
        self.wait_for_orphans()

    @windows_only("signals are counted there")
    def test_second_one_ends_at_once(self):
        """The command stands in for the interpreter too: that of the emulator ends at the first."""
        process = self.start_on_terminal('"linger ${here}/started asked"', env={
            "COMSPEC": on_system(SETTINGS.children / "bin" / "child.exe")})
        self.expect_end_at_second_request(process, self.press, ENDED_BY_CTRL_C & 0xFF)
