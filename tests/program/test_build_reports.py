"""What a build says of itself: why targets are built, and how it ended."""

from harness import ProgramTest, posix_only

WHOLE = 'SIDE_BY_SIDE="yes"'


class Summary(ProgramTest):
    remembers = True
    unit_text = """
        all: needs bad other worse { NO_TOOL }
        bad: { cmdline = "child print first && child exit 3" }
        needs: bad { cmdline = "child touch never" }
        other: { cmdline = "child print other" }
        worse: bad2 { NO_TOOL }
        bad2: { WRITE_FILE  FILENAME = P"(vesk.txt/no)"  TEXT = "x" }
        """

    def after_the_error(self, *arguments):
        result = self.run_vesk(*arguments)
        self.assertEqual(result.status, 1)
        return result.err.split("Error: Build failed.\n")[1]

    def test_of_a_failure(self):
        self.unit(self.unit_text)
        for jobs in ("-j1", "-j4"):
            self.same(
                self.after_the_error(jobs, "-k", WHOLE, "all"),
                "  failed: vesk::bad, vesk::bad2\n"
                "  skipped: vesk::needs (needs vesk::bad), vesk::all (needs vesk::needs), "
                "vesk::worse (needs vesk::bad2)\n"
                f"  {'1 target built, 0' if jobs == '-j1' else '0 targets built, 1'} up to date, "
                "in {*}\n", jobs)
        self.assertEqual(self.after_the_error("all"), "")
        self.assertIn("  failed: vesk::bad\n", self.after_the_error("all", "--summary"))
        self.assertIn("  failed: vesk::bad\n", self.after_the_error("all", "-j2"))

    @posix_only("the commands are a POSIX shell's")
    def test_the_first_error_is_shown_again_when_it_is_far_away(self):
        for lines, again in ((4, False), (40, True)):
            self.write("say", "printf '\\033[1mthe fault\\033[m\\n'; exit 3\n")
            self.write("fill", f"seq {lines}\n")
            self.unit("""
                all: bad other { NO_TOOL }
                bad: { ^OUT = P"(b)" cmdline = "sh say" }
                other: bad2 { cmdline = "sh fill; exit 1" }
                bad2: { NO_TOOL }
                """)
            told = self.after_the_error("-j2", "-k", WHOLE, "all", "--max-commands=1")
            self.assertEqual("  the first error again, " in told, again, told)
            if again:
                self.assertTrue(told.endswith(
                    " lines up:\n    [vesk::bad] sh say\n    the fault\n"
                    "    Command ended with status 3: sh say\n"), told)

    def test_of_a_success(self):
        self.unit(self.unit_text)
        for counts in ("1 target built, 0", "0 targets built, 1"):
            self.same(self.build("--summary", "other").splitlines()[-1],
                      counts + " up to date, in {*}", counts)
        self.same(self.build("--summary", "-n", "--rebuild", "other").splitlines()[-1],
                  "1 target to build, 0 up to date, in {*}", "dry run")
        self.assertEqual(self.printed("--summary", "other", "--rebuild"), "other\n")


class Why(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.write("a.src", "one")
        self.unit("""
            all: app note { NO_TOOL }
            base: { ^OUT = P"(base.txt)" src = P"(a.src)" cmdline = "child copy ${src} ${OUT}" }
            lib: base { ^OUT = P"(lib.txt)" from = base.OUT cmdline = "child copy ${from} ${OUT}" }
            app: lib { ^OUT = P"(app.txt)" from = lib.OUT cmdline = "child copy ${from} ${OUT}" }
            note: app { cmdline = "child print noted" }
            after: note { NO_TOOL }
            last: after { cmdline = "child print last" }
            """)

    def says(self, *arguments, out):
        self.check("--why", *arguments, out=out)

    def test_chains(self):
        never = "because it has not been built before"
        self.says("last", out=f"""
            vesk::base {never}
            vesk::lib {never}
            vesk::app {never}
            vesk::note {never}
            noted
            vesk::last {never}
            last
            """)
        for jobs, text in (("-j1", "two"), ("-j4", "three")):
            self.says(jobs, "last", out="Nothing has to be built.\n")
            self.write("a.src", text)
            self.says("-n", "last", out="""
                vesk::base because a.src has changed
                vesk::lib perhaps, because vesk::base because a.src has changed
                vesk::app perhaps, because vesk::lib because vesk::base because a.src has changed
                vesk::note perhaps, because vesk::app because vesk::lib because vesk::base because a.src has changed
                vesk::last perhaps, because vesk::after because vesk::note because vesk::app because vesk::lib because vesk::base because a.src has changed
                """)
            self.says(jobs, "last", out="""
                vesk::base because a.src has changed
                vesk::lib because vesk::base because a.src has changed
                vesk::app because vesk::lib because vesk::base because a.src has changed
                vesk::note because vesk::app because vesk::lib because vesk::base because a.src has changed
                noted
                vesk::last because vesk::after because vesk::note because vesk::app because vesk::lib because vesk::base because a.src has changed
                last
                """)
        self.says("last", "--rebuild", "-n", out="".join(
            f"vesk::{name} because everything is to be built again\n"
            for name in ("base", "lib", "app", "note", "last")))

    def test_only_what_runs_is_named(self):
        """A touched file, and one that is made to the same content, are no reasons."""
        self.build("app")
        self.write("a.src", "one")
        self.says("app", out="Nothing has to be built.\n")
        (self.dir / "base.txt").write_text("by hand")
        self.says("app", out="""
            vesk::base because base.txt has changed
            """)

    def test_a_dry_run_marks_what_may_follow(self):
        self.build("app")
        self.write("a.src", "two")
        out = self.build("-n", "app")
        self.assertIn("[vesk::lib] May follow: vesk::base because a.src has changed\n", out)
        self.assertNotIn("lib.txt", out)
        self.assertNotIn("May follow", self.build("app"))
        self.assertNotIn("May follow", self.build("-n", "app"))
