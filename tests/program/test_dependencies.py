"""Targets that need others: order, outputs, aliases, parameters, dynamic dependencies."""

from harness import ProgramTest, dedented


def visited(out):
    """The targets of a build in the order in which they were done."""
    done = (line for line in out.splitlines() if line.endswith("] Build done"))
    return [line[1:line.index("]")].replace("vesk::", "") for line in done]


class Order(ProgramTest):
    def test_depth_first_and_once(self):
        self.unit("""
            app: lib tool { NO_TOOL }
            tool: lib base { NO_TOOL }
            lib: base { NO_TOOL }
            base: { cmdline = "child print base" }
            other: { cmdline = "child exit 1" }
            """)
        out = self.run_vesk("app").out
        self.assertEqual(visited(out), ["base", "lib", "tool", "app"])
        self.assertEqual(out.splitlines().count("base"), 1)

    def test_dependencies_come_before_the_input_context(self):
        self.unit("""
            app: lib { NO_TOOL }
            lib: { NO_TOOL }
            """)
        out = self.run_vesk("-v", "app").out
        self.assertLess(out.index("[vesk::lib] Build done"), out.index("[vesk::app] Input context"))

    def test_failure_stops_the_dependants(self):
        self.unit("""
            app: bad never { cmdline = "child touch app" }
            bad: { cmdline = "child exit 2" }
            never: { cmdline = "child touch never" }
            """)
        self.check("-v", "6", "app", err="""
            [vesk::bad] Command ended with status 2: child exit 2
            [vesk::bad] Build of bad failed. Exiting..
            Error: Build failed.
            """, status=1)
        self.assertEqual(self.files(), ["vesk.txt"])

    def test_long_chain(self):
        count = 3000
        lines = [f"t{n}: t{n + 1} {{ NO_TOOL }}" for n in range(count)]
        self.unit("\n".join([*lines, f't{count}: {{ cmdline = "child print end" }}']))
        self.assertEqual(self.printed("t0"), "end\n")


class Outputs(ProgramTest):
    def test_names(self):
        self.prints("""
            app: lib lib => other two +> both three +> both {
                pair = "${both.W[1]} ${both.W}"
                cmdline = "child args ${lib.W} ${other.W} ${LIB.w} ${pair} ${lib.result}"
            }
            lib: { cmdline = [] ^W = "w" hidden = "h" }
            two: { cmdline = [] ^W = "2" }
            three: { cmdline = [] ^W = "3" }
            """, "[w]\n[w]\n[w]\n[3]\n[2]\n[3]\n[0]\n")

    def test_only_outputs_are_seen(self):
        self.unit("""
            app: lib { cmdline = "child args [${lib.hidden}]" }
            lib: { cmdline = [] hidden = "h" }
            """)
        self.check("-v", "6", out="[[]]\n",
                   err="[vesk::app] Variable 'lib.hidden' does not exist.\n")

    def test_in_values(self):
        self.prints("""
            app: lib {
                cmdline = ["child print ${word}"]
                word = lib.W
                word += lib.W
            }
            lib: { cmdline = [] ^W = "w" }
            """, "w w\n")

    def test_merging_brings_usage_requirements(self):
        self.prints("""
            app: +lib +base {
                FLAGS = "-O2"
                NAME = "app"
                cmdline = "child args ${FLAGS} ${NAME} ${ROOT}"
            }
            lib: { cmdline = [] FLAGS = "-internal" ^FLAGS += "-Ilib" ^ROOT = "lib" }
            base: { cmdline = [] ^FLAGS += "-Ibase" }
            """, "[-O2]\n[-Ilib]\n[-Ibase]\n[app]\n[lib]\n")

    def test_merged_outputs_travel_on(self):
        self.prints("""
            app: +lib { cmdline = "child args ${FLAGS}" FLAGS += "-Iapp" }
            lib: +base { cmdline = [] ^FLAGS += "-Ilib" }
            base: { cmdline = [] ^FLAGS += "-Ibase" }
            """, "[-Iapp]\n[-Ilib]\n[-Ibase]\n")

    def test_collisions_are_warned_about(self):
        why = "Names are case-insensitive; this may make dependency output ambiguous."
        for target, warning in (
            ('app: lib => ALIAS { alias = 1 cmdline = [] }',
             "Dependency output alias 'ALIAS' collides with an existing context variable. "),
            ('app: +lib { w = 1 cmdline = [] }',
             "Dependency output 'W' collides with an existing context variable. "),
            ('app: say(a) say(b) { a = 1 b = 2 cmdline = [] }\nsay(n): { NO_TOOL }', ""),
            ('app: run(a) run(b) { a = 1 b = 2 cmdline = [] }\nrun(n): { cmdline = [] }',
             "Dependency output 'run::result' collides with an existing dependency output. "),
            ('app: lib { LIB = 1 cmdline = [] }',
             "Dependency output 'vesk::lib' collides with existing context variable 'vesk'. "),
        ):
            with self.subTest(target=target):
                self.unit(target + '\nlib: { cmdline = [] ^W = "w" }')
                self.check("-v", "6", err=f"[vesk::app] {warning}{why}\n" if warning else "")


class Parameters(ProgramTest):
    def test_binding(self):
        self.prints("""
            app: greet(mine, lists.second) => one greet(mine, mine) => two {
                mine = "m"
                lists = { second = ["a", "b"] }
                NO_TOOL
            }
            greet(who, what): { cmdline = "child args ${who} ${what}" }
            """, "[m]\n[a]\n[b]\n[m]\n[m]\n")

    def test_same_arguments_are_one_visit(self):
        self.prints("""
            app: say(x) => one say(y) => two say(z) => three { x = "1" y = "1" z = "2" NO_TOOL }
            say(n): { cmdline = "child print ${n}" }
            """, "1\n2\n")

    def test_wrong_number(self):
        for use in ("say", "say(x)", "say(x, x, x)"):
            with self.subTest(use=use):
                self.unit("app: " + use + ' { x = "1" NO_TOOL }\nsay(a, b): { NO_TOOL }')
                result = self.run_vesk("-v", "6")
                self.assertEqual(result.status, 1)
                self.assertIn("vesk::say", result.err)
                self.assertIn("vesk::app", result.err)

    def test_unknown_argument(self):
        self.unit('app: say(worde) { word = "1" NO_TOOL }\nsay(a): { NO_TOOL }')
        result = self.run_vesk("-v", "6")
        self.assertEqual(result.status, 1)
        self.assertIn("worde", result.err)
        self.assertIn("did you mean 'word'?", result.err)
        self.assertIn("vesk::app", result.err)


class Dynamic(ProgramTest):
    UNIT = """
        app: @deps => one @group.deps +> many {{
            {0}
            cmdline = "child args ${{one.W}} ${{many.W}}"
        }}
        a: {{ cmdline = [] ^W = "a" }}
        b: {{ cmdline = [] ^W = "b" }}
        p(x): {{ cmdline = [] ^W = "p${{x}}" }}
        """

    def test_lists_and_texts(self):
        for deps, group, expected in (
            ('"a"', '["a", "b"]', "[a]\n[a]\n[b]\n"),
            ('"vesk::b"', '"a  b "', "[b]\n[a]\n[b]\n"),
            ('"p(word)"', '["p( word )", "b"]', "[p1]\n[p1]\n[b]\n"),
        ):
            with self.subTest(deps=deps):
                body = f'deps = {deps} group = {{ deps = {group} }} word = "1"'
                self.prints(self.UNIT.format(body), expected)

    def test_source_parameter(self):
        self.prints("""
            app: @deps(.) => one @other.deps(.) => two {
                deps = "say"  N = "1"
                other = { deps = ["say"]  N = "2" }
                NO_TOOL
            }
            say(from): { cmdline = "child print ${from.N}" }
            """, "1\n2\n")

    def test_empty_ones_are_skipped(self):
        for value in ("deps = []", 'deps = ""', 'deps = "  "', "", "deps"):
            with self.subTest(value=value):
                self.unit("app: @deps { " + value + ' cmdline = "child print built" }')
                self.check("-v", "6", out="built\n", err="[vesk::app] Dynamic dependency 'deps' is "
                           "empty and will be skipped.\n")

    def test_errors(self):
        invalid = "Invalid dynamic dependency '{}': {}"
        combined = "cannot combine {} with parameters from the resolved dependency value"
        for use, value, message in (
            ("@deps", "a(", invalid.format("a(", "unterminated parameter list")),
            ("@deps", "a)", invalid.format("a)", "unmatched ')'")),
            ("@deps", "a()", invalid.format("a()", "empty parameter list")),
            ("@deps", "a(c,)", invalid.format("a(c,)", "empty parameter")),
            ("@deps", "(c)", invalid.format("(c)", "empty target name")),
            ("@deps", "a(1)", invalid.format("a(1)", "invalid parameter '1'")),
            ("@deps => x", "a b", "single output alias cannot be used when a macro expands to "
                                  "multiple dependencies"),
            ("@deps(.)", "a(w)", combined.format("source-parameterized macro")),
            ("@deps(w)", "a(w)", combined.format("macro parameters")),
        ):
            with self.subTest(use=use, value=value):
                self.unit(f'app: {use} {{ deps = "{value}" w = 1 NO_TOOL }}\na: {{ NO_TOOL }}')
                result = self.run_vesk("-v", "6")
                self.assertEqual(result.err.splitlines()[0], "Error: " + message)
                self.assertEqual(result.status, 1)
        for value in ("::a", "vesk::", "/vesk::a"):
            with self.subTest(value=value):
                self.unit(f'app: @deps {{ deps = "{value}" NO_TOOL }}')
                result = self.run_vesk("-v", "6")
                self.assertIn(value, result.err)
                self.assertEqual(result.status, 1)

    def test_source_marker_in_the_wrong_place(self):
        for use, message in (
            ("a(.)", "The source parameter marker '.' can only be used with a dynamic dependency."),
            ("@a(x, .)", "The source parameter marker '.' must be the first dependency parameter."),
        ):
            with self.subTest(use=use):
                self.unit(f"app: {use} {{ NO_TOOL }}\na: {{ NO_TOOL }}")
                result = self.run_vesk("-v", "6")
                self.assertIn(message, result.err)
                self.assertEqual(result.status, 1)


class Cycles(ProgramTest):
    def test_are_found_before_anything_is_built(self):
        self.unit("""
            app: a { NO_TOOL }
            a: b first { NO_TOOL }
            b: a { NO_TOOL }
            first: { cmdline = "child touch built" }
            self: self { NO_TOOL }
            """)
        result = self.run_vesk("-v", "6", "app")
        self.assertEqual(result.err.splitlines()[:2], dedented("""
            Error: Loop detected! Causing term: 'vesk::a'
              loop goes as follows: vesk::a <- vesk::b <- vesk::a
            """).splitlines())
        self.assertEqual((result.status, self.files()), (1, ["vesk.txt"]))
        result = self.run_vesk("-v", "6", "self")
        self.assertEqual(result.err.splitlines()[1],
                         "  loop goes as follows: vesk::self <- vesk::self")
