"""Commands that run at the same time, and builds that somebody stops."""

import os
import pty
import signal
import subprocess
import time

from harness import SETTINGS, ProgramTest, dedented, on_system, posix_only, windows_only

CTRL_C = b"\x03"
ENDED_BY_CTRL_C = 0xC000013A  # the exit code of a Windows process


def wait_until(condition):
    limit = time.monotonic() + 60
    while not condition():
        if time.monotonic() > limit:
            raise AssertionError("it did not happen within a minute")
        time.sleep(0.005)


class Parallel(ProgramTest):
    def test_all_start_before_any_ends(self):
        """Each command waits for the files of the two others."""
        self.unit("""
            t: { cmdline = ["child meet a b c", "child meet b a c", "child meet c a b"] }
            """)
        for jobs in ("1", "2"):
            with self.subTest(jobs=jobs):
                result = self.run_vesk("-j", jobs)
                self.assertEqual((result.err, result.status), ("", 0))
                lines = result.out.splitlines()
                self.assertEqual(lines[3:6], ["[vesk::t] Starting build job"] * 3)
                self.assertEqual(lines[-1], "[vesk::t] Build done")
                for name in "abc":
                    (self.dir / name).unlink()

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
        self.assertNotIn("Build done", result.out)

    def test_many(self):
        commands = ", ".join(f'"child touch f{n}"' for n in range(60))
        self.unit(f"t: {{ cmdline = [{commands}] }}")
        self.printed()
        self.assertEqual(len(self.files()), 61)

    def test_targets_come_one_after_the_other(self):
        self.unit("""
            all: one two { NO_TOOL }
            one: { cmdline = "child touch one" }
            two: { cmdline = "child copy one two" }
            """)
        self.printed("-j", "8")
        self.assertEqual(self.read("two"), "one\n")


class InterruptedBuild(ProgramTest):
    def write_build(self, commands):
        """`here` is the test's directory, so that its children can be told from others."""
        self.unit("""
            all: inner { cmdline = "child touch never" }
            inner: { cmdline = %s  here = PROJECT_ROOT }
            """ % commands)

    def alive(self):
        """Processes that have the name of this test's directory on their command line."""
        found = subprocess.run(["pgrep", "-f", self.base.name], stdout=subprocess.PIPE, text=True)
        return found.stdout.split()


@posix_only("a program under the emulator gets no signals")
class Interruption(InterruptedBuild):
    def start_build(self, commands):
        self.write_build(commands)
        process = self.start("all", stderr=subprocess.STDOUT)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.kill)
        return process

    def test_first_request_ends_the_children(self):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)):
            with self.subTest(number=number):
                process = self.start_build('["child linger ${here}/started", '
                                           '"child linger ${here}/too"]')
                wait_until(lambda: {"started", "too"} <= set(self.files()))
                process.send_signal(number)
                output = self.plain(process.communicate(timeout=60)[0])
                self.assertEqual(process.returncode, status, output)
                self.assertEqual(self.alive(), [])
                self.assertTrue(output.endswith("Interrupted.\n"), output)
                self.assertEqual(self.files(), ["started", "too", "vesk.txt"])
                (self.dir / "started").unlink()
                (self.dir / "too").unlink()

    def test_second_request_ends_at_once(self):
        """The child takes the first request as it comes and stays."""
        process = self.start_build('"child linger ${here}/started asked"')
        wait_until(lambda: "started" in self.files())
        process.send_signal(signal.SIGINT)
        wait_until(lambda: "asked" in self.files())
        self.assertIsNone(process.poll())
        while process.poll() is None:
            process.send_signal(signal.SIGINT)
            time.sleep(0.02)
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130)
        wait_until(lambda: self.alive() == [])

    def test_commands_that_ended_well_do_not_hide_it(self):
        """A command that ends with status 0 when it is told to: the build still stops."""
        loop = "while :; do sleep 0.01; done"
        process = self.start_build(f'"trap \'exit 0\' INT; touch started; {loop}"')
        wait_until(lambda: "started" in self.files())
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=60)
        self.assertEqual((process.returncode, self.files()), (130, ["started", "vesk.txt"]))


@windows_only("about the console of Windows")
class ConsoleInterruption(InterruptedBuild):
    """Ctrl-C, pressed on the terminal that the emulator shows as the console."""

    def setUp(self):
        super().setUp()
        self.keyboard, self.terminal = pty.openpty()
        self.addCleanup(os.close, self.keyboard)
        self.addCleanup(os.close, self.terminal)

    def test_second_request_ends_at_once(self):
        """The command stands in for the interpreter too: that of the emulator ends at the first."""
        self.write_build('"linger ${here}/started asked"')
        process = self.start("all", stdin=self.terminal, stderr=subprocess.STDOUT, env={
            "COMSPEC": on_system(SETTINGS.children / "bin" / "child.exe")})
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.kill)
        wait_until(lambda: "started" in self.files())
        os.write(self.keyboard, CTRL_C)
        wait_until(lambda: "asked" in self.files())
        self.assertIsNone(process.poll())
        while process.poll() is None:
            os.write(self.keyboard, CTRL_C)
            time.sleep(0.1)
        self.assertEqual(process.returncode, ENDED_BY_CTRL_C & 0xFF)
        wait_until(lambda: self.alive() == [])
        self.assertEqual(self.files(), ["asked", "started", "vesk.txt"])

    def test_first_request_ends_what_the_interpreter_left(self):
        """The emulator's interpreter ends at once, while its program stays."""
        self.write_build('"child linger ${here}/started asked"')
        process = self.start("all", stdin=self.terminal, stderr=subprocess.STDOUT)
        self.addCleanup(process.kill)
        wait_until(lambda: "started" in self.files())
        os.write(self.keyboard, CTRL_C)
        output = self.plain(process.communicate(timeout=60)[0])
        self.assertEqual(process.returncode, 130, output)
        self.assertTrue(output.endswith("Interrupted.\n"), output)
        wait_until(lambda: self.alive() == [])
