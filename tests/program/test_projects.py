"""Projects: units, profiles, tools, imports, the registry, a new project file."""

import re

from harness import HANGS, ProgramTest, on_system, posix_only


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
        self.project('t { tool_type = "nosuch" }')
        self.check("-v", "6",
                   err="Project 'demo' tool 't' has unknown tool_type 'nosuch'. Skipping.\n")


class FaultyProjects(ProgramTest):
    def test_messages(self):
        self.unit("unit main t: { cmdline = [] }")
        units = 'units { main { "vesk.txt" } }'
        for text, message in (
            ("name demo", "Error: Project 'demo' does not list any units."),
            ("name demo units { main { } }", "Error: Project unit 'main' has no files."),
            ('name demo units { lib { "vesk.txt" } }', r"Error: Unit name mismatch in .*vesk\.txt: "
             "expected 'lib'."),
            ('name demo units { main { "gone.txt" } }', r"Error: Unable to open file!\n.*gone\.txt: "),
            (units + " name demo", r"Error: .*\.vesk_project\.txt\(1,30\): 'name' "),
            ('name demo import { "nowhere" ; } ' + units, r"Error: .*nowhere"),
            ("name demo import { unknown ; } " + units, "Error: Regist.* 'unknown' not found."),
            ("name demo import { gone: unknown ; } " + units,
             r"Error: Profile 'gone' not found in .*\.vesk_project\.txt"),
        ):
            with self.subTest(text=text):
                self.write(".vesk_project.txt", text)
                self.assertRegex(self.error(), "^" + message)


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

    def test_diamond_is_loaded_once(self):
        self.project("base", "base", targets='base: { cmdline = "child print base" }')
        self.project("left", "left", '"../base";', "left: base/main::base { NO_TOOL }")
        self.project("right", "right", '"../base";', "right: base/main::base { NO_TOOL }")
        self.project("top", "top", '"../left"; "../right";',
                     "top: left/main::left right/main::right { NO_TOOL }")
        self.assertEqual(self.printed(cwd=self.dir / "top"), "base\n")

    def test_cycle_and_conflict(self):
        self.project("a", "a", '"../b";')
        self.project("b", "b", '"../a";')
        self.assertRegex(self.error(cwd=self.dir / "a"), "^Error: Import cycle: .* -> .* -> ")
        self.project("c", "c", profiles="x { } y { }")
        self.project("b", "b", '"../c" (x);')
        self.project("a", "a", '"../b"; "../c" (y);')
        self.assertRegex(self.error(cwd=self.dir / "a"),
                         "^Error: Conflicting project profiles: .* versus ")


    def test_lists_load_imports_too(self):
        self.project("lib", "lib", profiles="p { }")
        self.project("twin", "lib")
        self.project("loop", "loop", '"../app";')
        for imports, message in (
            ('"../gone";', "Error: Project file '{DIR}/gone' not found."),
            ("gone;", "Error: Registered project 'gone' not found."),
            ('"../lib" (q);', "Error: Profile 'q' not found in {DIR}/lib/.vesk_project.txt"),
            ('"../lib"; "../lib" b (p);', "Error: Conflicting project profiles: "),
            ('"../lib" a; "../lib" a;', "Error: Duplicate active import alias 'a' in "),
            ('"../lib"; "../twin" b;', "Error: Duplicate project name 'lib': "),
            ('"../loop";', "Error: Import cycle: app -> loop -> app\n"),
        ):
            self.project("app", "app", imports)
            for mode in (["-p"], ["-u"], ["-l", "1"]):
                with self.subTest(imports=imports, mode=mode):
                    error = self.error(*mode, cwd=self.dir / "app", env=self.env)
                    self.assertEqual(error[:len(message)], message)
        self.project("app", "app", '"../lib";')
        self.check("-u", cwd=self.dir / "app", env={"APPDATA": None, "HOME": None}, out="main\n")


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
                   'broken { } strange { tool_type = "none_such" } }')
        self.project("one", "one", "", 't: { KIND = R"(say "k")" }\n'
                     'c: { cmdline = [] IF = "condition" }')
        one = {"cwd": self.dir / "one", "env": self.env}
        skipped = ("Registry tool 'broken' has no 'tool_type'. Skipping.\n"
                   "Unable to create Registry tool 'strange' for 'none_such'.\n")
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

    def test_names_that_cannot_be_identifiers(self):
        for directory in ("2 - grün", "import", "a/same", "b/same"):
            self.write(f"{directory}/vesk.txt", 't: { cmdline = "child print one" }')
        self.assertEqual(self.run_vesk("--create-project").status, 0)
        units = self.run_vesk("-u").out.split()
        self.assertEqual(len(set(units)), 4)
        for unit in units:
            self.assertEqual(self.printed(f"{unit}::t"), "one\n")

    def test_old_file_is_kept(self):
        self.unit("t: { NO_TOOL }")
        self.write(".vesk_project.txt", "name precious\n")
        result = self.run_vesk("--create-project")
        self.assertEqual(result.status, 0, result.err)
        kept = [name for name in self.files() if re.match(r"\.vesk_project(?!\.txt$)", name)]
        self.assertEqual([self.read(name) for name in kept], ["name precious\n"])
        self.assertIn(kept[0], result.out + result.err)

    @posix_only("the emulator makes no links")
    def test_links_into_a_loop(self):
        self.unit("t: { NO_TOOL }")
        (self.dir / "sub").mkdir()
        (self.dir / "sub" / "up").symlink_to(self.dir)
        self.assertEqual(self.run_vesk("--create-project").status, 0)
        self.assertEqual(self.read(".vesk_project.txt").count("vesk.txt"), 1)
