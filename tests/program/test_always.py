"""ALWAYS: commands that run in every build that asks for them."""

from harness import ProgramTest, dedented

UNIT = """
    check: stamp user {
        ALWAYS  = "yes"
        cmdline = "child print checked"
    }
    stamp: source {
        ALWAYS  = "Yes"
        TEXT    = P"(in.txt)"
        ^OUT    = P"(out.txt)"
        cmdline = "child print stamped && child copy ${TEXT} ${OUT}"
    }
    user: stamp { FILE = stamp.OUT  cmdline = "child print used" }
    source: { ^MADE = P"(made.txt)"  cmdline = "child print source && child touch ${MADE}" }
    after: check { cmdline = "child print after" }
    """


class Always(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.unit(UNIT)
        self.write("in.txt", "one")

    def test_it_runs_and_others_only_as_needed(self):
        """Its dependencies run when they are out of date, its dependants when its outputs change, or
        when one of its dependencies has run that has none."""
        everything = "source stamped used checked after".split()
        for options in (["-j1"], ["-j4"], ["-j4", 'SIDE_BY_SIDE="yes"']):
            with self.subTest(options):
                (self.dir / ".vesk_cache").unlink(missing_ok=True)
                self.assertEqual(self.printed(*options, "after").split(), everything)
                for _ in range(3):
                    self.assertEqual(self.printed(*options, "after").split(),
                                     ["stamped", "checked"])
                self.write("in.txt", f"for {options}")
                self.assertEqual(self.printed(*options, "after").split(),
                                 ["stamped", "used", "checked", "after"])

    def test_a_dependency_that_ran_is_news_for_dependants(self):
        self.unit("""
            deploy: publish { cmdline = "child print deployed" }
            publish: pack { ALWAYS = "yes"  cmdline = "child print published" }
            pack: { VERSION ?= "1"  cmdline = "child print packed ${VERSION}" }
            """)
        self.printed("deploy")
        self.assertEqual(self.printed("deploy").split(), ["published"])
        self.assertEqual(self.printed('VERSION="2"', "deploy").split(),
                         ["packed", "2", "published", "deployed"])

    def test_from_a_profile_and_why(self):
        self.write(".vesk_project.txt", """
            name p
            units { u { "vesk.txt" } }
            profiles { ci { ALWAYS = "yes" } }
            """)
        self.unit("""
            unit u
            all: a b { NO_TOOL }
            a: { cmdline = "child print a" }
            b: { ALWAYS = "no"  cmdline = "child print b" }
            """)
        self.printed("ci", "all")
        self.assertEqual(self.printed("ci", "all").split(), ["a"])
        self.assertIn("[u::a] Out of date: ALWAYS says that it runs in every build.\n",
                      self.run_vesk("-v", "3", "ci", "all").out)
        self.assertIn("[u::a] child print a\n", self.run_vesk("-n", "ci", "all").out)

    def test_a_failure_fails_the_build(self):
        self.unit('t: { ALWAYS = "yes"  cmdline = "child exit 3" }')
        for _ in range(2):
            self.assertIn("Command ended with status 3: child exit 3", self.error("t"))

    def test_neither_yes_nor_no(self):
        self.unit('t: { ALWAYS = "sometimes"  cmdline = "child print t" }')
        self.assertEqual(self.error("t"), dedented("""
            Error: Variable 'ALWAYS' is "sometimes"; write "yes" or "no".
              in target vesk::t ({DIR}/vesk.txt:1)
            """))
