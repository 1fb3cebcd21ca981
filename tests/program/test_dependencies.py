"""Targets that need others: order, outputs, aliases, parameters, dynamic dependencies."""

from harness import ProgramTest, dedented


class Order(ProgramTest):
    def test_depth_first_and_once(self):
        self.prints("""
            app: lib tool { cmdline = "child print app" }
            tool: lib base { cmdline = "child print tool" }
            lib: base { cmdline = "child print lib" }
            base: { cmdline = "child print base" }
            other: { cmdline = "child exit 1" }
            """, "base\nlib\ntool\napp\n")

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
        count = 20000
        lines = [f"t{n}: t{n + 1} {{ NO_TOOL }}" for n in range(count)]
        self.unit("\n".join([*lines, f't{count}: {{ cmdline = "child print end" }}']))
        self.assertEqual(self.printed("t0"), "end\n")

    def test_cycles_are_found_before_anything_is_built(self):
        self.unit("""
            app: a { NO_TOOL }
            a: b first { NO_TOOL }
            b: a { NO_TOOL }
            first: { cmdline = "child touch built" }
            """)
        self.assertTrue(self.error("app").startswith(dedented("""
            Error: Loop detected! Causing term: 'vesk::a'
              loop goes as follows: vesk::a <- vesk::b <- vesk::a
            """)))
        self.assertEqual(self.files(), ["vesk.txt"])


class Outputs(ProgramTest):
    def test_names(self):
        self.prints("""
            app: lib lib => other two +> both three +> both {
                pair = "${both.W[1]} ${both.W}"
                word = "${lib.W} ${lib.W}"
                cmdline = ["child args ${word} ${other.W} ${LIB.w} ${pair} ${lib.result}"]
            }
            lib: { cmdline = [] ^W = "w" }
            two: { cmdline = [] ^W = "2" }
            three: { cmdline = [] ^W = "3" }
            """, "[w]\n[w]\n[w]\n[w]\n[3]\n[2]\n[3]\n[0]\n")

    def test_only_outputs_are_seen(self):
        self.unit("""
            app: lib { cmdline = "child args [${lib.hidden}]" }
            lib: { cmdline = [] hidden = "h" }
            """)
        self.check("-v", "6", out="[[]]\n",
                   err="[vesk::app] Variable 'lib.hidden' does not exist.\n")

    def test_merging_brings_usage_requirements(self):
        self.prints("""
            app: +lib {
                FLAGS = "-O2"
                NAME = "app"
                cmdline = "child args ${FLAGS} ${NAME} ${ROOT}"
            }
            lib: +base { cmdline = [] FLAGS = "-internal" ^FLAGS += "-Ilib" ^ROOT = "lib" }
            base: { cmdline = [] ^FLAGS += "-Ibase" }
            """, "[-O2]\n[-Ilib]\n[-Ibase]\n[app]\n[lib]\n")

    def test_collisions_are_warned_about(self):
        why = "Names are case-insensitive; this may make dependency output ambiguous."
        for target, warnings in (
            ('app: lib { w = 1 cmdline = [] }', []),
            ('app: lib => ALIAS { alias = 1 cmdline = [] }',
             ["alias 'ALIAS' collides with an existing context variable."]),
            ('app: lib => n lib +> n { cmdline = [] }',
             ["alias 'n' collides with an existing context variable."]),
            ('app: +lib +run(a) { a = 1 cmdline = [] }\nrun(n): { cmdline = [] ^W = n }',
             ["'W' collides with an existing context variable."]),
            ('app: lib +> X say(a) +> X { a = 1 cmdline = [] }\nsay(n): { NO_TOOL }', []),
            ('app: +lib { w = 1 cmdline = [] }',
             ["'W' collides with an existing context variable."]),
            ('app: say(a) say(b) { a = 1 b = 2 cmdline = [] }\nsay(n): { NO_TOOL }', []),
            ('app: run(a) run(b) { a = 1 b = 2 cmdline = [] }\nrun(n): { cmdline = [] ^V = n }',
             ["'run::result' collides with an existing dependency output.",
              "'run::V' collides with an existing dependency output."]),
            ('app: lib { LIB = 1 cmdline = [] }',
             ["'vesk::lib' collides with existing context variable 'vesk'."]),
        ):
            with self.subTest(target=target):
                self.unit(target + '\nlib: { cmdline = [] ^W = "w" }')
                self.check("-v", "6", err="".join(f"[vesk::app] Dependency output {each} {why}\n"
                                                  for each in warnings))


    def test_the_last_one_stands(self):
        self.unit("""
            app: +lib { W = "own" cmdline = "child args ${W}" }
            lib: { cmdline = [] ^W = "w" }
            """)
        self.assertEqual(self.run_vesk("-v", "6").out, "[w]\n")

    def test_they_are_copies(self):
        self.unit("""
            app: s u other { NO_TOOL }
            s: a => n b +> n { cmdline = "child args ${n.X}" }
            u: a a::t => t b => a { cmdline = "child args ${a.X}" }
            other: a a::t { cmdline = "child args ${a.X} ${a.t.X}" }
            a: { cmdline = [] ^X = "xa" }
            b: { cmdline = [] ^X = "xb" }
            """)
        self.write("a.txt", 'unit a t: { cmdline = [] ^X = "xt" }')
        self.write(".vesk_project.txt",
                   'name demo units { vesk { "vesk.txt" } a { "a.txt" } }')
        self.assertEqual(self.run_vesk("-v", "6").out, "[xa]\n[xb]\n[xb]\n[xa]\n[xt]\n")


class Parameters(ProgramTest):
    def test_binding_and_visits(self):
        """The same arguments are one visit."""
        self.prints("""
            app: greet(mine, lists.second) => one greet(mine, mine) => two greet(same, mine) => k {
                mine = "m"
                same = "m"
                lists = { second = ["a", "b"] }
                NO_TOOL
            }
            greet(who, what): { cmdline = "child args ${who} ${what}" }
            """, "[m]\n[a]\n[b]\n[m]\n[m]\n")

    def test_are_copies(self):
        for arguments, expected in (((), "[Z]\n[w]\n"), (('q+="p"',), "[Z]\n[w]\n[p]\n")):
            self.prints("""
                app: p(v) { v = "Z" NO_TOOL }
                p(q): { q += "w" cmdline = "child args ${q}" }
                """, expected, *arguments)
        self.unit("app: { NO_TOOL }\np(q, Q): { NO_TOOL }")
        self.assertEqual(self.error().splitlines()[0],
                         "Error: Target 'p' has two parameters named 'q'.")

    def test_errors(self):
        for use, message in (
            ("say", "Target 'vesk::say' takes 2 parameters (a, b), but gets 0 arguments."),
            ("say(x)", "Target 'vesk::say' takes 2 parameters (a, b), but gets 1 argument."),
            ("say(x, worde)", "Assignment 'worde' not found.\n  did you mean 'word'?"),
        ):
            with self.subTest(use=use):
                self.unit("app: " + use + ' { x = 1 word = 1 NO_TOOL }\nsay(a, b): { NO_TOOL }')
                error = self.error()
                self.assertTrue(error.startswith(f"Error: {message}\n"), error)
                self.assertIn("target vesk::app", error)

    def test_visits_that_go_ever_deeper(self):
        for unit, way, line in (
            ("""
             t: a(x) { x = "" NO_TOOL }
             a(q): b(r) { r = "${q}x" NO_TOOL }
             b(q): a(q) { NO_TOOL }
             """, "vesk::a -> vesk::b -> vesk::a\n  needed by target vesk::b", 3),
            ("""
             t: @d(.) { d = "a" NO_TOOL }
             a(q): @d(.) { d = "a" NO_TOOL }
             """, "vesk::a -> vesk::a\n  needed by target vesk::a", 2),
        ):
            self.unit(unit)
            self.assertEqual(self.error("t"), dedented("""
                Error: Target 'vesk::a' is needed by itself, each time with other arguments; 1000 visits deep that ends here.
                  the way from one visit to the next: """) + f"{way} ({{DIR}}/vesk.txt:{line})\n")


class Dynamic(ProgramTest):
    def test_lists_and_texts(self):
        for deps, group, expected in (
            ('"a"', '["a", "b"]', "[a]\n[a]\n[b]\n"),
            ('"vesk::b"', '"a  b "', "[b]\n[a]\n[b]\n"),
            ('"p(word)"', '["p( word )", "b"]', "[p1]\n[p1]\n[b]\n"),
        ):
            with self.subTest(deps=deps):
                self.prints("""
                    app: @deps => one @group.deps +> many {
                        word = "1"  deps = %s  group = { deps = %s }
                        cmdline = "child args ${one.W} ${many.W}"
                    }
                    a: { cmdline = [] ^W = "a" }
                    b: { cmdline = [] ^W = "b" }
                    p(x): { cmdline = [] ^W = "p${x}" }
                    """ % (deps, group), expected)

    def test_source_parameter(self):
        self.prints("""
            app: @deps(.) => one @other.deps(.) => two @other['deps'](.) => three {
                deps = "say"  N = "1"
                other = { deps = ["say"]  N = "2" }
                NO_TOOL
            }
            say(from): { cmdline = "child print ${from.N}" }
            """, "1\n2\n")

    def test_empty_ones_are_skipped(self):
        for value in ("deps = []", 'deps = "  "', "", "deps"):
            with self.subTest(value=value):
                self.unit("app: @deps { " + value + ' cmdline = "child print built" }')
                self.check("-v", "6", out="built\n", err="[vesk::app] Dynamic dependency 'deps' is "
                           "empty and will be skipped.\n")

    def test_errors(self):
        combined = "Error: cannot combine {} with parameters from the resolved dependency value"
        for use, value, message in (
            ("@deps", "a(", "Error: Invalid dynamic dependency 'a(': unterminated parameter list"),
            ("@deps", "vesk::", "Dependency string has empty prefix or target: vesk::"),
            ("@deps => x", "a b( )", "Error: Invalid dynamic dependency 'a b( )': empty parameter list"),
            ("@deps(w) => x", "a b(w)", combined.format("macro parameters")),
            ("@deps => x", "a b", "Error: single output alias cannot be used when a macro expands "
                                  "to multiple dependencies"),
            ("@deps(.)", "a(w)", combined.format("source-parameterized macro")),
            ("@deps(w)", "a(w)", combined.format("macro parameters")),
        ):
            with self.subTest(use=use, value=value):
                self.unit(f'app: {use} {{ deps = "{value}" w = 1 NO_TOOL }}\na: {{ NO_TOOL }}')
                self.assertEqual(self.error().splitlines()[0], message)
