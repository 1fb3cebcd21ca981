"""Projects: units, profiles, tools, imports, the registry, a new project file."""

import re

from harness import HANGS, SETTINGS, ProgramTest, on_system, posix_only


class DemoProject(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write(".vesk_project.txt", """
            name demo
            units {
                main { "vesk.txt" }
                other { "sub/one.txt" "sub/two.txt" }
            }
            profiles {
                default { FLAGS = ["-Wall"] MODE = "plain" }
                release { FLAGS += "-O2" MODE = "fast" }
                debug { FLAGS += "-g" }
            }
            """)
        self.write("vesk.txt", """
            unit main
            app: other::lib {
                DESCRIPTION = "the ${MODE} program"
                cmdline = "child args ${other.lib.W} ${MODE} ${PROFILE} ${FLAGS}"
            }
            tool: { cmdline = "child print tool" }
            late: other::lib { NO_TOOL DESCRIPTION = other.lib.W }
            """)
        self.write("sub/one.txt", "unit other\nlib: { cmdline = [] ^W = \"w\" }")
        self.write("sub/two.txt", "unit other\nextra: lib { cmdline = \"child print ${lib.W}\" }")

    def test_lists(self):
        self.check("-p", out="debug\ndefault\nrelease\n", cwd=self.dir / "sub")
        self.check("-u", out="main\nother\n")
        for profile, mode in (("debug", "plain"), ("release", "fast")):
            self.check("-l", "1", profile,
                       out=f"app   the {mode} program\ntool\nlate  other.lib.W\n")
        self.check("-l", "other", out="lib\nextra  lib\n")
        self.check_error("-l", "othr",
                         err="Error: Unit 'othr' not found.\n  did you mean 'other'?\n")

    def test_profiles(self):
        for arguments, expected in (
            ([], "[w]\n[plain]\n[-Wall]\n"),
            (["app", "DEBUG"], "[w]\n[plain]\n[debug]\n[-Wall]\n[-g]\n"),
            (["release", 'MODE="mine"'], "[w]\n[mine]\n[release]\n[-Wall]\n[-O2]\n"),
        ):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.printed(*arguments), expected)
        self.assertIn("Output dir: {DIR}/out/release\n", self.run_vesk("tool", "release").out)
        dump = self.run_vesk("-d", "RELEASE").out
        self.assertIn('\nMODE = "fast"\n', dump)
        self.assertIn('\nPROFILE = "release"\n', dump)
        self.assertEqual(self.error("release", "debug"), "Error: Profile already set to 'release'."
                         " It can only be set once.\n")

    def test_any_target_from_anywhere(self):
        for request, expected in (("tool", "tool\n"), ("1::tool", "tool\n"),
                                  ("other::extra", "w\n"), ("demo/other::extra", "w\n")):
            with self.subTest(request=request):
                self.assertEqual(self.printed(request, cwd=self.dir / "sub"), expected)
        out = self.run_vesk("-v", "1", "tool", cwd=self.dir / "sub").out
        self.assertEqual(out.splitlines()[:3], [
            "Found a project file at {DIR}",
            "Setting project root to {DIR}",
            "Loading project file {DIR}/.vesk_project.txt",
        ])

    def test_unit_without_a_project(self):
        """-f and -c look for no project."""
        self.assertEqual(self.printed("-f", "sub/two.txt", "lib", "-f", "sub/one.txt"), "")
        self.check("-f", "sub/one.txt", "-u", status=0xFF,
                   err="No file to list. You need .vesk_project.txt.\n")


class Options(ProgramTest):
    def project(self, options):
        self.write(".vesk_project.txt", f"""
            name demo
            units {{ main {{ "vesk.txt" }} }}
            profiles {{
                default {{ OPTIONS = "--summary"  if os_family = "none" {{ OPTIONS = "-p" }} }}
                more {{ OPTIONS {options} }}
            }}
            """)
        self.write("vesk.txt", """
            unit main
            a: { cmdline = ["child exit 2", "child print more"] }
            all: a b { NO_TOOL }
            b: { cmdline = "child print b" }
            """)

    def test_those_of_the_profile_hold_for_its_builds(self):
        self.project('+= "-k --max-commands=1 --progress=plain"')
        result = self.run_vesk("b")
        self.assertIn("1 target built, 0 up to date", result.out)
        self.assertNotIn("[1/1]", result.out)
        result = self.run_vesk("all", "more")
        self.assertEqual(result.out.count("Starting build job"), 2)
        self.assertRegex(result.out, r"(?m)^\[\d/\d\] 0:\d\d main::b$")
        self.assertIn("  failed: main::a\n", result.err)
        for given in ({"env": {"VESK_OPTIONS": "--progress=none"}}, {}):
            arguments = [] if given else ["--progress=none"]
            self.assertNotIn("[1/", self.run_vesk("b", "more", *arguments, **given).out)

    def test_what_a_project_cannot_give(self):
        for options, error in (
                ('= "-j 2 -p"', "A project cannot give the option '-p'."),
                ('= "--test"', "A project cannot give the option '--test'."),
                ('= "-k app"', "'app' is not an option."),
                ("""= "-k 'x" """, "A quote is not closed: 'x")):
            self.project(options)
            self.assertRegex(self.error("b", "more"), rf"^Error: {error}\n(?:.*\n)?  "
                             r"\{DIR\}/.vesk_project.txt:5:12\n.*\n +\^\n  in OPTIONS of project 'demo'\n")
        self.project('= "--sumary"')
        self.assertIn("Unknown option '--sumary' of the project.\n  did you mean '--summary'?\n",
                      self.run_vesk("b", "more").err)
        self.project('= "--strict"')
        self.assertIn("Error: Unknown option '--bogus'.", self.failure("b", "more", "--bogus"))


class Layers(ProgramTest):
    def test_each_value_stays_in_its_layer(self):
        self.write(".vesk_project.txt", """
            name demo units { main { "vesk.txt" } } profiles {
                default {
                    K = "k"  w = "w"
                    D = w  E = w  F = "a"  G = "a"  H = "a"
                    I += "over"
                    if K {
                        A = "if"  B = "if"  C = "if"  I += "if"  J = "if"  K2 = "k2"
                        if K2 { A += "inner" }
                    }
                }
                release { B = "selected"  D += "x"  E += "x"  F ?= "q"  F += "x"  G  G += "x" }
            }
            """)
        self.prints("""
            unit main
            t: {
                A = "own"  D += "y"  E = "own"  H += "b"  I = "own"
                if K { H += "c"  I = "then" }
                cmdline = "child args ${A} ${B} ${C} / ${D} / ${E} / ${F} / ${G} / ${H} / ${I} / ${J}"
            }
            """, "".join(f"[{word}]\n" for word in
                         "own selected line / w x y / own / a x / x / a b c / then over if / if".split()),
            "release", 'C="line"')

    def seen(self, underneath, unit, *arguments):
        """What the target `t` hands on as `seen`, with these assignments under all targets."""
        self.write(".vesk_project.txt",
                   f'name demo units {{ main {{ "vesk.txt" }} }} profiles {{ default {{ {underneath} }} }}')
        self.unit("unit main\n" + unit)
        result = self.run_vesk("-v", "1", "-o", "outputs", *arguments, "t")
        self.assertEqual((result.err, result.status), ("", 0))
        self.said = [line for line in result.out.splitlines() if "Second try" in line]
        return re.search('(?m)^seen = (.*)$', self.read("outputs"))[1].strip()

    def test_each_operator_in_each_layer(self):
        for underneath, own, expected in (
            ('X = "a"', "", "a"), ('X = "a"', 'X += "b"', "a b"), ('X = "a"', 'X = "b"', "b"),
            ('X = "a"', 'X ?= "b"', "a"), ('X = "a"', 'X ?= "b" X += "c"', "a c"),
            ('X += "z"', 'X = "b"', "b z"), ('X += "z"', "", "z"), ('X += "z"', 'X ?= "b"', "b z"),
            ('X = "a" X += "z"', 'X = "b"', "b"), ('Y = "y" X += Y', 'X = "b"', "b y"),
            ('Y = "y" X = Y', 'X += "b"', "y b"),
            ('X = "a"', 'if X = "a" { X += "c" } X += "b"', "a b"),
            ('X = "a"', 'if X = "a b" { X += "c" } X += "b"', "a b c"),
            ('X = ["a"]', 'X += "b" X += "c" ^seen2 = X[2]', "a b c"),
            ('Y = "y" X = "a"', "X += Y", "a y"), ("", 'X = ["a", "b"] X += "c"', "a b c"),
        ):
            with self.subTest(underneath=underneath, own=own):
                unit = "t: { " + own + ' ^seen = "${X}" cmdline = [] }'
                self.assertEqual(self.seen(underneath, unit), expected)

    def test_what_refers_to_outputs_waits(self):
        """It lies under the target's own then; appends are made to what a dependency brings."""
        self.assertEqual(self.seen("FLAGS = lib.FLAGS", """
            lib: { ^FLAGS = "-Ilib" cmdline = [] }
            t: lib { FLAGS ?= "none" FLAGS += "-own" ^seen = "${FLAGS}" cmdline = [] }
            """), "-Ilib -own")
        self.assertEqual(self.said, [
            f"[main::{target}] Second try adding implicit assignment FLAGS = lib.FLAGS."
            for target in ("lib", "t")])
        self.assertEqual(self.seen('FLAGS += "-g"', """
            lib: { NAME = "n" ^FLAGS = "-lib" cmdline = [] }
            t: +lib { ^seen = FLAGS cmdline = [] }
            """), "-lib -g -g")
        self.assertEqual(self.said,
                         ['[main::t] Second try adding implicit append FLAGS += "-g".'])

    def test_what_comes_on_several_ways_stands_in_a_list_once(self):
        self.assertEqual(self.seen("", """
            base: { cmdline = [] ^DIRS += ["base"] }
            left: +base { cmdline = [] ^DIRS += ["left"] }
            right: +base { cmdline = [] ^DIRS += ["right"] }
            t: +left +right { cmdline = [] DIRS = ["own"] ^seen = "${DIRS}" }
            """), "own left right base", "each in its last place")


class Tools(ProgramTest):
    def project(self, tools):
        self.write(".vesk_project.txt",
                   "name demo tools { " + tools + ' } units { main { "vesk.txt" } }')

    def test_declared_tools_compete(self):
        self.project("""
            plain { tool_type = "command" }
            open { tool_type = "command" LANG }
            pinned { tool_type = "command" LANG = "c" }
            supplied { tool_type = "command" !cmdline = "child print supplied" KIND = "s" }
            """)
        self.unit("""
            unit main
            c: { cmdline = [] LANG = "c" }
            d: { cmdline = [] LANG = "d" }
            none: { cmdline = [] }
            s: { KIND = "s" }
            """)
        for target, tool in (("c", "pinned, score: 2"), ("d", "open, score: 1"),
                             ("none", "open, score: 0"), ("s", "supplied, score: 2")):
            self.assertIn(f"Best registered tool: {tool}\n", self.run_vesk("-v", target).out)

    def test_their_settings_reach_the_target(self):
        self.project("""
            runner { tool_type = "command" if PROFILE = "" { greeting = "hello" } }
            writer { tool_type = "file_writer" separator = "+" }
            """)
        self.prints("""
            unit main
            t: file {
                cmdline = "child print none"
                if greeting = "hello" { cmdline = "child print ${greeting}" }
            }
            file: { WRITE_FILE FILENAME = "f" TEXT = ["a", "b"] }
            """, "hello\n")
        self.assertEqual(self.read("f"), "a+b")

    def test_faulty_declarations(self):
        self.unit("unit main t: { cmdline = [] }")
        for tool, message in (
            ("t { }", "Build tool 't' has no 'tool_type'."),
            ('t { tool_type = "" }', "Build tool 't' has empty 'tool_type'."),
            ('t { tool_type = "command" Tool_Type = "command" }',
             "Build tool 't' has multiple 'tool_type' assignments."),
        ):
            with self.subTest(tool=tool):
                self.project(tool)
                self.assertIn(message, self.error())


class FaultyProjects(ProgramTest):
    def test_messages(self):
        self.write("vesk.txt", "t: { cmdline = [] }")
        self.write("other.txt", "unit other t: { }")
        file = "{DIR}/.vesk_project.txt"
        units = 'units { main { "vesk.txt" } }'
        for text, message in (
            ("name demo", f"Error: Project 'demo' does not list any units.\n  in {file}\n"),
            ("name demo units { main { } }", f"Error: Project unit 'main' has no files.\n  in {file}:1\n"),
            ('name demo units {\nlib { "other.txt" } }',
             "Error: Unit name mismatch in {DIR}/other.txt: expected 'lib'.\n"
             f"  unit 'lib' is listed in {file}:2\n"),
            ('name demo units {\nmain { "gone.txt" } }',
             "Error: Unable to open file!\n  {DIR}/gone.txt: {*}\n"
             f"  unit 'main' is listed in {file}:2\n"),
            (units, f"Error: A stored project requires a primary name: {file}\n"
                    "  give the project file a first line such as: name my_project\n"),
            (units + " name demo", f"Error: {file}(1,30): 'name' {{*}}\n  {file}:1:31\n  {units} name demo\n" +
                                   " " * 32 + "^\n"),
            ('name demo import { "nowhere" ; } ' + units,
             "Error: Project file '{DIR}/nowhere' not found.\n"
             f"  imported by project 'demo' in {file}:1\n"),
            ("name demo import { unknown ; } " + units,
             "Error: Registered project 'unknown' not found.\n"
             f"  imported by project 'demo' in {file}:1\n"),
            ("name demo\nimport { gone: unknown ; } " + units,
             f"Error: Profile 'gone' not found in {file}\n  named by an import in {file}:2\n"),
            ('name demo tools { cc { tool_type = "a" Tool_Type = "b" } } ' + units,
             "Error: Build tool 'cc' has multiple 'tool_type' assignments.\n"
             f"  in {file}:1\n"),
            (f"name demo {units} profiles {{ a {{ }}\nA {{ }} }}",
             f"Error: Duplicate profile 'A' in {file}:2: the first is in line 1.\n"),
        ):
            with self.subTest(text=text):
                self.write(".vesk_project.txt", text)
                self.same(self.error(), message, text)

    def test_tools_that_do_not_count(self):
        self.write("vesk.txt", "unit main t: { cmdline = [] }")
        self.write(".vesk_project.txt", """
            name demo
            tools { cc { tool_type = "command" } odd { tool_type = "x" } CC { tool_type = "command" } }
            units { main { "vesk.txt" } }
            """)
        self.check("-v", "6", err="""
            Project 'demo' tool 'odd' has unknown tool_type 'x'. Skipping.
            Duplicate tool 'CC' in project 'demo'.
            """)

    def test_the_nearest_project_file_above_counts(self):
        self.write(".vesk_project.txt", 'name demo units { main { "vesk.txt" } }')
        self.unit("unit main")
        (self.dir / "b/.vesk_project.txt").mkdir(parents=True)
        (self.dir / "b/c").mkdir()
        self.check("-u", cwd=self.dir / "b/c", out="main\n")


class SeveralProjects(ProgramTest):
    def setUp(self):
        super().setUp()
        self.env = {"APPDATA": on_system(self.base / "registry data")}
        self.file = self.base / "registry data" / "vesk" / ".vesk_registry.txt"

    def project(self, directory, name, imports="", targets="t: { NO_TOOL }", profiles=""):
        self.write(f"{directory}/.vesk_project.txt", f'name {name} import {{ {imports} }} units '
                   f'{{ main {{ "vesk.txt" }} }} profiles {{ {profiles} }}')
        self.write(f"{directory}/vesk.txt", "unit main\n" + targets)

    def registered(self):
        return self.plain(self.file.read_bytes())

    def register(self, directory):
        result = self.run_vesk("-r", cwd=self.dir / directory, env=self.env)
        self.assertEqual((result.err, result.status), ("", 0))
        self.assertRegex(result.out, r"^Updated file '.*\.vesk_registry\.txt'\.\n$")

    def given(self, text):
        self.file.parent.mkdir(parents=True)
        self.file.write_text(text)


class Imports(SeveralProjects):
    def test_by_path_with_alias_and_profile(self):
        self.project("the lib", "lib", targets="""
            lib: { cmdline = "child cwd" cwd = PROJECT_ROOT ^W = "${WORD}" }
            """, profiles='fast { WORD = "fast" } slow { WORD = "slow" }')
        self.project("app", "app", 'on: "../the lib" l (fast); off: "../the lib" l (slow);', """
            app: l/main::lib => lib { cmdline = "child args ${lib.W}" }
            """, "on { } off { }")
        app = self.dir / "app"
        self.assertEqual(self.printed("on", cwd=app), "the lib\n[fast]\n")
        self.assertEqual(self.printed("off", cwd=app), "the lib\n[slow]\n")
        self.assertEqual(self.printed("l/main::lib", "on", cwd=app), "the lib\n")
        self.assertIn("Error: Project 'l' not found.", self.error(cwd=app))

    def test_under_their_profile(self):
        self.project("lib", "lib", targets='all: { cmdline = "child print lib ${PROFILE}" }',
                     profiles="fast { } small { }")
        self.project("util", "util", targets='all: { cmdline = "child print util" }')
        self.file.parent.mkdir(parents=True)
        self.file.write_text(f'projects {{ reg_lib "{on_system(self.dir / "lib")}" reg_util '
                             f'"{on_system(self.dir / "util/.vesk_project.txt")}" }}')
        both = 'debug: "../lib" (fast); RELEASE: "../lib" (small); reg_util;'
        for imports, profile, alias, printed in (
            ('"../lib/.vesk_project.txt";', "debug", "lib", "lib"),
            ('"../lib/";', "debug", "lib", "lib"),
            ('"../lib" other;', "debug", "other", "lib"),
            ('"../lib" other (FAST);', "debug", "other", "lib fast"),
            ("reg_lib(small); reg_util;", "debug", "reg_lib", "lib small"),
            ("reg_lib(small); reg_util;", "debug", "reg_util", "util"),
            (both, "Release", "lib", "lib small"),
            (both, "DEBUG", "lib", "lib fast"),
            (both, "debug", "reg_util", "util"),
            ("", "debug", "reg_lib", "lib"),  # known because the command line names it
        ):
            with self.subTest(imports=imports, alias=alias):
                self.project("app", "app", imports, profiles="debug { } release { }")
                out = self.printed(profile, f"{alias}/main::all", cwd=self.dir / "app", env=self.env)
                self.assertEqual(out.split(), printed.split())

    def test_diamond_is_loaded_once(self):
        """By its directory, however that is spelled; where names have no case in any case."""
        again = "BÄSE" if SETTINGS.windows else "bäse"
        self.project("bäse", "base", targets='base: { cmdline = "child print base" }',
                     profiles="x { }")
        self.project("left", "left", '"../bäse" (x);', "left: base/main::base { NO_TOOL }")
        self.project("right", "right", f'"../left/../{again}/" (X);',
                     "right: base/main::base { NO_TOOL }")
        self.project("top", "top", '"../left"; "../right";',
                     "top: left/main::left right/main::right { NO_TOOL }")
        self.assertEqual(self.printed(cwd=self.dir / "top"), "base\n")
        out = self.run_vesk("-v", "1", cwd=self.dir / "top").out
        self.assertEqual(out.count("Loading project file {DIR}/bäse/.vesk_project.txt\n"), 1, out)

    def test_that_cannot_be(self):
        """Of project top with the profile p, which imports mid and base with the profiles x and y."""
        by_top = "  imported by project 'top' in {DIR}/top/.vesk_project.txt:1\n"
        by_mid = "  imported by project 'mid' in {DIR}/mid/.vesk_project.txt:1\n"
        base = "{DIR}/base/.vesk_project.txt"
        for directory in ("base", "copy"):
            self.project(directory, "base", profiles="x { } y { }")
        for top, mid, message in (
            ('"../mid";', '"../top";', "Import cycle: top -> mid -> top\n" + by_mid),
            ('".";', "", "Import cycle: top -> top\n" + by_top),
            ('"../base" (x); "../mid";', '"../base" (y);',
             f"Conflicting project profiles: project 'base' ({base}) with profile 'x' versus "
             f"project 'base' ({base}) with profile 'y'\n  the first is " + by_top.lstrip() +
             "  a build loads a project once; name one profile in all its imports\n" + by_mid),
            ('"../base" x; "../mid" x;', "",
             "Duplicate active import alias 'x' in {DIR}/top/.vesk_project.txt\n" + by_top),
            ('"../base"; "../copy" other;', "",
             f"Duplicate project name 'base': {base} versus {{DIR}}/copy/.vesk_project.txt\n" + by_top),
            ('"../base" (xx);', "", f"Profile 'xx' not found in {base}\n  its profiles are: x, y\n" + by_top),
            ('"../gone";', "", "Project file '{DIR}/gone' not found.\n" + by_top),
        ):
            with self.subTest(top=top):
                self.project("mid", "mid", mid)
                self.project("top", "top", top, profiles="p { }")
                self.same(self.error("p", cwd=self.dir / "top"), "Error: " + message, top)

    def test_a_long_chain_and_a_wide_fan(self):
        length, width = 1000, 100
        for number in range(length):
            self.project(f"p{number}", f"p{number}", f'"../p{number + 1}";' * (number + 1 < length))
        self.project("top", "top", " ".join(f'"../p{number}";' for number in range(width)))
        self.check("-u", cwd=self.dir / "top", env=self.env, out="main\n")

    def test_targets_of_one_name(self):
        self.project("lib", "lib", targets='t: { cmdline = "child exit 1" }\nn(p, q): t { NO_TOOL }')
        self.project("app", "app", '"../lib" other;',
                     "t: other/main::t { NO_TOOL }\nu: other/main::n(a, b) { NO_TOOL a = 1 b = 2 }")
        result = self.run_vesk(cwd=self.dir / "app", env=self.env)
        self.assertIn("[main::t] Visiting target\n[lib/main::t] Visiting target\n", result.out)
        self.assertIn("[lib/main::t] Command ended with status 1: child exit 1\n", result.err)
        self.assertIn("\n[main::t] Visiting target\n",
                      self.run_vesk(cwd=self.dir / "lib", env=self.env).out)
        for unit in ("other/main", "lib/1", "LIB/"):
            self.check("-l", unit, cwd=self.dir / "app", env=self.env, out="t\nn(p, q)  t\n")
        self.check("-l", "lob/1", status=1, out=None, cwd=self.dir / "app", env=self.env,
                   err="Error: Project 'lob' not found.\n  did you mean 'lib'?\n")
        self.check("-l", "lib/man", status=1, out=None, cwd=self.dir / "app", env=self.env,
                   err="Error: Unit 'man' not found.\n  did you mean 'main'?\n")

    def test_lists_load_imports_too(self):
        self.project("lib", "lib", profiles="p { }")
        self.project("loop", "loop", '"../app";')
        for imports, message in (
            ("gone;", "Error: Registered project 'gone' not found."),
            ('"../lib" (q);', "Error: Profile 'q' not found in {DIR}/lib/.vesk_project.txt"),
            ('"../loop";', "Error: Import cycle: app -> loop -> app\n"),
        ):
            self.project("app", "app", imports)
            for mode in (["-p"], ["-u"], ["-l", "1"]):
                with self.subTest(imports=imports, mode=mode):
                    error = self.error(*mode, cwd=self.dir / "app", env=self.env)
                    self.assertEqual(error[:len(message)], message)
        self.project("app", "app", '"../lib";')
        self.check("-u", cwd=self.dir / "app", env={"APPDATA": None, "HOME": None}, out="main\n")


class References(SeveralProjects):
    def test_what_they_mean(self):
        """In unit more of project app, which imports lib as mylib; both have the same units."""
        for name, imports, profiles in (("lib", "", ""), (
                "app", '"../lib" mylib; a: "../lib" some; b: "../lib" some;', "a { } b { }")):
            self.write(f"{name}/.vesk_project.txt", f"""
                name {name} import {{ {imports} }}
                units {{ main {{ "main.txt" }} more {{ "more.txt" }} empty {{ "e.txt" }} }}
                profiles {{ {profiles} }}
                """)

            def target(unit, word, name=name):
                return f'{word}: {{ cmdline = "child print {name}/{unit}::{word}" }}\n'

            self.write(f"{name}/main.txt", target("main", "first") + target("main", "all"))
            self.write(f"{name}/more.txt", target("more", "all") + target("more", f"only_{name}"))
            self.write(f"{name}/e.txt", "")
        more = self.read("app/more.txt")
        for reference, expected in (
            ("all", "app/more::all"), ("main::all", "app/main::all"),
            ("mylib/more::only_lib", "lib/more::only_lib"),
            ("lib/more::only_lib", "lib/more::only_lib"),
            ("app/more::only_app", "app/more::only_app"),
            ("first", "Error: Target 'more::first' not found.\n  {DIR}"),
            ("onli_app", "Error: Target 'more::onli_app' not found.\n  did you mean 'only_app'?"),
            ("maim::all", "Error: Unit 'maim' not found.\n  did you mean 'main'?"),
            ("mylub/more::all", "Error: Project 'mylub' not found.\n  did you mean 'mylib'?"),
            ("some/more::all", "Error: Project 'some' not found.\n"
                               "  it is imported with profile 'a' or 'b' only"),
        ):
            with self.subTest(reference=reference):
                self.write("app/more.txt", more + f"probe: {reference} {{ NO_TOOL }}\n")
                result = self.run_vesk("-v", "6", "more::probe", cwd=self.dir / "app")
                self.assertTrue((result.out + result.err).startswith(expected), result)
        self.write("app/more.txt", more)
        self.assertEqual(self.printed("mylib/1::first", cwd=self.dir / "app"), "lib/main::first\n")


class Registry(SeveralProjects):
    def test_register_and_import(self):
        self.project("lib grün", "lib", "", 't: { cmdline = "child print lib" ^W = "w" }')
        self.register("lib grün")
        self.assertEqual(self.registered(), 'projects {\n  lib "{DIR}/lib grün"\n}\n')
        self.project("app", "app", "lib;", 't: lib/main::t => l { cmdline = "child print ${l.W}" }')
        self.assertEqual(self.printed(cwd=self.dir / "app", env=self.env), "lib\nw\n")
        nowhere = self.base / "nowhere"
        nowhere.mkdir()
        self.assertEqual(self.printed("--rebuild", "lib/main::t", cwd=nowhere, env=self.env), "lib\n")

    def test_again_and_in_order(self):
        for directory, name in (("two", "zeta"), ("one", "alpha"), ("three", "zeta")):
            self.project(directory, name)
            self.register(directory)
        self.assertEqual(self.run_vesk("--find-compilers", env=self.env).status, 0)
        self.assertTrue(self.registered().startswith(
            'projects {\n  alpha "{DIR}/one"\n  zeta "{DIR}/three"\n}\n'), self.registered())

    def test_several_at_once(self):
        names = [f"project{n}" for n in range(6)]
        for name in names:
            self.project(name, name)
        processes = [self.start("-r", cwd=self.dir / name, env=self.env) for name in names]
        for process in processes:
            process.communicate(timeout=HANGS)
        self.assertEqual([process.returncode for process in processes], [0] * len(names))
        lines = "".join(f'  {name} "{{DIR}}/{name}"\n' for name in names)
        self.assertEqual(self.registered(), "projects {\n" + lines + "}\n")

    def test_tools_survive_and_compete(self):
        self.given('tools { mine { tool_type = "command" KIND = R"(say "k")" '
                   '!cmdline = "child print mine" dir = P"(C:\\a b)" n = 5 x } '
                   'other { tool_type = "command" if os_family != "none" { IF = "condition" } } '
                   'broken { } near { tool_type = "comand" } none { tool_type = "" } '
                   'twice { tool_type = "command" Tool_Type = "pwsh" } }')
        self.project("one", "one", "", 't: { KIND = R"(say "k")" }\n'
                     'c: { cmdline = [] IF = "condition" }')
        one = {"cwd": self.dir / "one", "env": self.env}
        skipped = ("Registry tool 'broken' has no 'tool_type'. Skipping.\n"
                   "Unable to create Registry tool 'near' for 'comand'.\n"
                   "  did you mean 'command'?\n"
                   "Registry tool 'none' has empty 'tool_type'. Skipping.\n"
                   "Registry tool 'twice' has multiple 'tool_type' assignments. Skipping.\n")
        self.check("-v", "6", out="mine\n", err=skipped, **one)
        self.assertIn("Best registered tool: other, score: 2\n", self.run_vesk("-v", "c", **one).out)
        self.register("one")
        written = self.registered()
        self.assertIn('KIND = R"(say "k")"', written)
        self.check("-v", "6", out="mine\n", err=skipped, **one)
        self.register("one")
        self.assertEqual(self.registered(), written)
        self.write("one/.vesk_project.txt", 'name one tools { Mine { tool_type = "command" '
                   '!cmdline = "child print own" KIND = R"(say "k")" } } '
                   'units { main { "vesk.txt" } }')
        self.check("-v", "6", out="own\n", err=skipped + "Tool 'Mine' from Project 'one' overrides "
                   "an earlier tool with the same name.\n", **one)

    def test_faulty_file(self):
        self.given("projects { a }\n")
        self.project("one", "one")
        self.assertRegex(self.error(cwd=self.dir / "one", env=self.env),
                         r"^Error: .*\.vesk_registry\.txt\(1,13\): '}' ")
        self.assertEqual(self.file.read_text(), "projects { a }\n")

    @posix_only("the emulator shows no permissions")
    def test_place_that_cannot_be_written(self):
        self.file.mkdir(parents=True)
        self.project("one", "one")
        self.assertIn(".vesk_registry.txt",
                      self.error("-r", cwd=self.dir / "one", env=self.env))


class NewProject(ProgramTest):
    def test_builds_without_an_edit(self):
        self.unit('app: gear::t other::o { cmdline = "child print app" }')
        self.write("gear/vesk.txt", 't: { cmdline = "child print tools" }')
        self.write("deep/er/VESK.TXT", 'unit other\no: { cmdline = "child print other" }')
        self.write("out/vesk.txt", 'unit other\no: { cmdline = "child print lost" }')
        result = self.run_vesk("--create-project")
        self.assertEqual((result.err, result.status), (
            "Unit file 'out/vesk.txt' is left out: unit 'other' already has a target 'o' in "
            "'deep/er/VESK.TXT'; give one of the two units another name.\n", 0))
        text = self.read(".vesk_project.txt")
        self.assertTrue(text.startswith("name work\nunits\n{\n"), text)
        self.assertEqual(re.findall('"(.*)"', text),
                         ["gear/vesk.txt", "deep/er/VESK.TXT", "vesk.txt"])
        self.assertEqual(self.run_vesk("-u").out.split(), ["gear", "other", "work"])
        self.assertEqual(self.printed("work::app"), "tools\nother\napp\n")

    def test_root_is_found_as_for_a_build(self):
        self.unit("unit a\nt: { NO_TOOL }")
        self.write("sub/vesk.txt", 's: { cmdline = "child print sub" }')
        self.write("zoo/vesk.txt", 'o: { cmdline = "child print zoo" }')
        for arguments, directory, said, printed in (
            ([], ".", ["No project file.", "Setting project root to {DIR}"], ""),
            ([], "sub", ["Found a project file at {DIR}", "Setting project root to {DIR}"],
             "sub\n"),
            (["-f", "../zoo/vesk.txt"], "sub", ["Setting project root to {DIR}/zoo"], "zoo\n"),
        ):
            with self.subTest(arguments=arguments, directory=directory):
                here = self.dir / directory
                out = self.run_vesk("-v", "1", "--create-project", *arguments, cwd=here).out
                self.assertEqual(out.splitlines()[:len(said)], said)
                self.assertIn("Created file '{DIR}" + f"/{directory}/".replace("/./", "/"), out)
                self.assertEqual(self.printed(cwd=here), printed)

    def test_every_unit_file_is_listed_under_a_name(self):
        self.dir = self.base / "my app"
        for file, unit in (("vesk.txt", "start"), ("lib/Vesk.TXT", "unit core a"),
                           ("net/lib/vesk.txt", "b"), ("units/vesk.txt", "c"),
                           ("ü 7/vesk.txt", "d"), ("more/core/vesk.txt", "e"),
                           ("more/vesk.txt", "unit core f"), ("out/vesk.txt", "unit generated z"),
                           ("deep/out/vesk.txt", "g"), ("more/c/vesk.txt", "h: {")):
            self.write(file, f"{unit}: {{ cmdline = [] }}")
        self.write("other/vesk.txt.old", "broken")
        result = self.run_vesk("--create-project")
        self.assertIn("\nUnit file 'more/c/vesk.txt' is listed, but it has errors.\n  ", result.err)
        units = {"__7": ["ü 7/vesk.txt"], "c": ["more/c/vesk.txt"],
                 "core": ["lib/Vesk.TXT", "more/vesk.txt"], "generated": ["out/vesk.txt"],
                 "lib": ["net/lib/vesk.txt"], "more_core": ["more/core/vesk.txt"],
                 "my_app": ["vesk.txt"], "out": ["deep/out/vesk.txt"], "units_": ["units/vesk.txt"]}
        self.assertMultiLineEqual(self.read(".vesk_project.txt"), "name my_app\nunits\n{\n" + "".join(
            f"{unit}\n{{\n" + "".join(f'  "{file}"\n' for file in files) + "}\n"
            for unit, files in units.items()) + "}\n")
        self.write("more/c/vesk.txt", "h: { cmdline = [] }")
        for target in ("__7::d", "c::h", "core::a", "core::f", "generated::z", "lib::b",
                       "more_core::e", "my_app::start", "out::g", "units_::c"):
            self.printed(target)

    def test_units_of_one_name_get_more_of_their_path(self):
        self.dir = self.base / "p"
        for directory in ("a/x", "b/x", "x", "a_x", "p", "."):
            self.write(f"{directory}/vesk.txt", "t: { cmdline = [] }")
        self.build("--create-project")
        self.check("-u", out="a_x\nb_x\np\np_2\nx\nx_2\n")

    def test_every_old_file_is_kept(self):
        self.unit("t: { NO_TOOL }")
        self.write(".vesk_project.txt", "name precious\n")
        self.check("-v", "5", "--create-project", out="""
            The old project file is kept as '{DIR}/.vesk_project.txt.bak'.
            Created file '{DIR}/.vesk_project.txt'.
            """)
        second = self.read(".vesk_project.txt")
        self.build("--create-project")
        self.assertEqual(self.read(".vesk_project.txt.bak"), "name precious\n")
        self.assertEqual(self.read(".vesk_project.txt.bak2"), second)

    @posix_only("the emulator makes no links")
    def test_links_into_a_loop(self):
        self.unit("t: { NO_TOOL }")
        (self.dir / "sub").mkdir()
        (self.dir / "sub" / "up").symlink_to(self.dir)
        self.assertEqual(self.run_vesk("--create-project").status, 0)
        self.assertEqual(self.read(".vesk_project.txt").count("vesk.txt"), 1)
