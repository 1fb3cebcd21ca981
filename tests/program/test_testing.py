"""vesk --test: choosing tests, running them, and what is said of them."""

import os
import re
import signal
import xml.etree.ElementTree as ElementTree

from harness import ProgramTest, SETTINGS, dedented, posix_only, wait_until
from test_toolchains import GnuTest

UNIT = """
    app: { ^FILE = P"(app.txt)"  cmdline = "child touch ${FILE}" }
    good: app { TEST = "yes"  FILE = app.FILE  cmdline = "child copy ${FILE} good.txt" }
    bad: app { TEST = "yes"  cmdline = "child print this is bad && child exit 3" }
    needy: broken { TEST = "yes"  cmdline = "child print never" }
    broken: { cmdline = "child exit 4" }
    plain: { cmdline = "child print plain" }
    all: good group { NO_TOOL }
    group: bad { NO_TOOL }
    """
TIME = re.compile(r"[0-9]+\.[0-9][0-9] s")
ROW = re.compile(r"(?m)^(passed|failed|timed out|skipped|not built) +(?:[0-9.]+ s)? +(\S+::\S+.*)$")


class Tests(ProgramTest):
    remembers = True

    def rows(self, *arguments, status, **options):
        """What became of each test, by the lines."""
        result = self.run_vesk("--test", *arguments, **options)
        self.assertEqual(result.status, status, result.out + result.err)
        return [" ".join(row) for row in ROW.findall(result.out)]

    def test_all_are_built_and_run(self):
        self.unit(UNIT)
        for jobs in ("-j1", "-j4"):
            with self.subTest(jobs):
                result = self.run_vesk("--test", jobs)
                self.assertEqual(result.status, 1)
                self.assertCountEqual([" ".join(row) for row in ROW.findall(result.out)],
                                      ["not built vesk::needy", "passed vesk::good",
                                       "failed vesk::bad"])
                self.assertEqual(self.read("good.txt"), self.read("app.txt"))
                end = result.out[result.out.index("---"):]
                echo = "child print this is bad && child exit 3"
                self.assertEqual(TIME.sub("T", end), dedented(f"""
                    --- vesk::bad: Command ended with status 3: {echo}
                    [vesk::bad] {echo}
                    this is bad
                    3 tests: 1 passed, 1 failed, 1 not built (T)
                    """))
                self.assertTrue(result.err.endswith(dedented(f"""
                    2 of 3 tests did not pass.
                      vesk::bad: Command ended with status 3: {echo}
                      vesk::needy: what it needs could not be built
                    """)), result.err)
                self.assertNotIn("plain", result.out)
                self.assertIn("\nskipped: vesk::needy (needs vesk::broken)\n", result.out)
        result = self.run_vesk("--test=good", "--summary", "--progress=plain")
        self.assertRegex(result.out, r"(?m)^\[1/1\] 0:\d\d vesk::good$")
        self.assertRegex(result.out, r"\n1 step in 0:\d\d\n0 targets built, 1 up to date, in ")

    def test_choosing(self):
        self.write(".vesk_project.txt", """
            name demo
            units {
                main { "vesk.txt" }
                other { "other.txt" }
            }
            profiles {
                quick { QUICK = "yes" }
            }
            """)
        self.write("vesk.txt", "unit main\n" + dedented(UNIT))
        self.write("other.txt", """
            unit other
            good: { TEST = "yes"  DESCRIPTION = "of other"  cmdline = "child print other" }
            long: { if QUICK != "yes" { TEST = "yes" }  QUICK ?= "no"  cmdline = "child print long" }
            with(x): { TEST = "yes"  cmdline = "child print ${x}" }
            """)
        tests = ["main::good", "main::bad", "main::needy", "other::good", "other::long"]
        for arguments, expected in (
                ([], tests),
                (["quick"], tests[:-1]),
                (["all"], ["main::good", "main::bad"]),
                (["group"], ["main::bad"]),
                (["bad"], ["main::bad"])):
            with self.subTest(arguments):
                names = self.printed("--list-tests", "-v", "5", *arguments).splitlines()
                self.assertEqual([name.split()[0] for name in names], expected)
        for pattern, expected in (("GOOD", ["main::good", "other::good"]),
                                  ("*o*d", ["main::good", "other::good"]),
                                  ("b?d", ["main::bad"]),
                                  ("other::*", ["other::good", "other::long"])):
            with self.subTest(pattern):
                names = self.printed(f"--list-tests={pattern}", "-v", "5").splitlines()
                self.assertEqual([name.split()[0] for name in names], expected)
        self.assertIn("other::good  of other\n", self.run_vesk("--list-tests").out)
        self.assertEqual(self.error("--test=nothing*"), dedented("""
            Error: No test fits 'nothing*'.
              a pattern is for the target's name, or for 'unit::target'; vesk --list-tests lists them
            """))
        self.assertIn("There are no tests here.", self.error("--test", "broken"))
        self.assertFalse(self.files().count("app.txt"))

    def test_changed(self):
        """What passed and is fresh is skipped, also when it was built as a target."""
        self.unit("""
            a: { TEST = "yes"  FILE = P"(a.txt)"  cmdline = "child print a" }
            b: { TEST = "yes"  ALWAYS = "yes"  cmdline = "child print b" }
            c: { TEST = "yes"  cmdline = "child exit 2" }
            """)
        self.write("a.txt", "1")
        self.assertEqual(self.rows(status=1), ["passed vesk::a", "passed vesk::b", "failed vesk::c"])
        skipped = "skipped vesk::a (nothing has changed since it passed)"
        for _ in range(2):
            self.assertEqual(self.rows("--changed", status=1),
                             [skipped, "passed vesk::b", "failed vesk::c"])
        self.write("a.txt", "2")
        self.run_vesk("a")
        self.assertEqual(self.rows("--changed", "a", status=0), [skipped])
        self.write("a.txt", "3")
        self.assertEqual(self.rows("--changed", "a", status=0), ["passed vesk::a"])
        self.assertEqual(self.rows("a", status=0), ["passed vesk::a"])

    def test_one_that_takes_too_long_is_killed_with_its_children(self):
        """The command ends only when the one that it has started ends."""
        limit = 20 if SETTINGS.windows else 5  # long enough for "begun" on a busy machine
        self.unit("""
            hangs: { TEST = "yes"  TEST_TIMEOUT = LIMIT  cmdline = "child begun && child linger started" }
            list: { TEST = "yes"  TEST_TIMEOUT = LIMIT
                    cmdline = ["child linger one || child print over", "child print quick"] }
            none: { TEST = "yes"  TEST_TIMEOUT = 0  cmdline = "child print none" }
            wrong: { TEST = "yes"  TEST_TIMEOUT = "soon"  cmdline = "child print wrong" }
            """.replace("child begun", "child print begun").replace("LIMIT", str(limit)))
        result = self.run_vesk("--test", "-j4")
        self.assertEqual(result.status, 1)
        self.assertCountEqual([" ".join(row) for row in ROW.findall(result.out)],
                              ["not built vesk::wrong", "timed out vesk::hangs",
                               "timed out vesk::list", "passed vesk::none"])
        self.assertIn('Error: Variable \'TEST_TIMEOUT\' is "soon"; write a number of seconds, or 0 '
                      "for no limit.\n", result.err)
        self.assertIn(f"vesk::hangs: It ran longer than {limit} s and was killed.\n", result.err)
        self.assertIn("\nbegun\n", result.out)
        self.assertNotIn("\nover\n", result.out)

    def test_they_run_side_by_side(self):
        """Each waits for the other, without being told that they may overlap."""
        self.unit("""
            a: { TEST = "yes"  cmdline = "child meet a b" }
            b: { TEST = "yes"  cmdline = "child meet b a" }
            """)
        self.assertCountEqual(self.rows("-j2", status=0), ["passed vesk::a", "passed vesk::b"])

    def test_repeat(self):
        """`race` fails in its second run: the first one takes away what it needs."""
        self.unit("""
            race: { TEST = "yes"  cmdline = "child move one two" }
            good: { TEST = "yes"  cmdline = "child print good" }
            """)
        self.write("one", "1")
        self.assertEqual(self.rows("--repeat=3", status=1),
                         ["failed vesk::race (run 2)", "passed vesk::good (3 runs)"])
        self.assertEqual(self.error("--test", "--repeat=many"), dedented("""
            Error: Option '--repeat' takes a number from 1: '--repeat=10'.
            """))

    def test_junit(self):
        self.unit(UNIT + """
            odd: { TEST = "yes"  cmdline = "child bytes" }
            """)
        self.run_vesk("--test", "--junit=results.xml")
        root = ElementTree.fromstring(self.read("results.xml"))
        self.assertEqual({key: root.get(key) for key in ("tests", "failures", "errors", "skipped")},
                         {"tests": "4", "failures": "1", "errors": "1", "skipped": "0"})
        cases = {case.get("name"): case for case in root.iter("testcase")}
        self.assertEqual([case.get("classname") for case in cases.values()], ["vesk"] * 4)
        self.assertIn("this is bad", cases["bad"].find("failure").text)
        self.assertIn("status 3", cases["bad"].find("failure").get("message"))
        self.assertIsNotNone(cases["needy"].find("error"))
        # ESC [31m red, a lone byte 0xFF, a NUL, "]]>" and "<&" and U+FFFF.
        self.assertIn("red \ufffd\ufffd ]]> <& \ufffd", cases["odd"].find("system-out").text)

    def test_dry_run(self):
        self.unit(UNIT)
        result = self.run_vesk("-n", "--test", "all", "--junit=no.xml")
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertIn("[vesk::app] child touch", result.out)
        self.assertIn("[vesk::good] child copy", result.out)
        self.assertEqual(self.files(), ["vesk.txt"])

    def test_ctrl_c_ends_all(self):
        self.unit("""
            a: { TEST = "yes"  cmdline = "child linger a.started" }
            b: { TEST = "yes"  cmdline = "child linger b.started" }
            c: { TEST = "yes"  cmdline = "child print c" }
            """)
        process = self.start("--test", "-j2")
        wait_until(lambda: (self.dir / "a.started").exists() and (self.dir / "b.started").exists())
        if SETTINGS.windows:
            self.kill(process)
            self.skipTest("the emulator has no console to send a Ctrl-C")
        os.kill(process.pid, signal.SIGINT)
        out, _ = process.communicate()
        self.assertEqual(process.returncode, 130)
        self.assertNotIn(b"vesk::c\n", out)

    @posix_only("the background is a shell's")
    def test_nothing_stays_in_the_background(self):
        """A shell's background process does not hear Ctrl-C, and outlives the shell."""
        command = "sh -c 'echo $$ > pid && exec child linger started' & wait"
        for limit, interrupts in ((1, False), (0, True), (1000, True)):
            with self.subTest(limit):
                (self.dir / "started").unlink(missing_ok=True)
                self.unit(f't: {{ TEST = "yes"  TEST_TIMEOUT = {limit}  cmdline = "{command}" }}')
                process = self.start("--test")
                wait_until((self.dir / "started").exists)
                if interrupts:
                    os.kill(process.pid, signal.SIGINT)
                process.communicate()
                self.assertEqual(process.returncode, 130 if interrupts else 1)
                pid = int(self.read("pid"))
                wait_until(lambda: not os.path.exists(f"/proc/{pid}"))

    def test_a_dependency_that_is_a_test(self):
        """Its dependant gets it as a target; it may run for that and as a test."""
        self.unit("""
            first: { TEST = "yes"  cmdline = "child touch first.txt" }
            second: first { TEST = "yes"  cmdline = "child copy first.txt second.txt" }
            """)
        self.assertEqual(self.rows("second", status=0), ["passed vesk::second", "passed vesk::first"])
        self.assertTrue((self.dir / "second.txt").exists())


class TestPrograms(GnuTest):
    def test_one_that_only_compiles_is_refused(self):
        self.write("t.c", "int main(void) { return 0; }\n")
        self.unit('t: { C_FILES = ["t.c"] TEST = "yes" }')
        result = self.run_vesk("--test")
        self.assertEqual(result.status, 1)
        self.assertIn("Error: 'vesk::t' makes a program; TEST runs commands.\n", result.err)
        self.unit('t: { C_FILES = ["t.c"] } run_t: t { cmdline = "${ascii[34]}${t.OUTPUT}${ascii[34]}" TEST = "yes" }')
        self.assertIn("1 test: 1 passed", self.run_vesk("--test").out)
