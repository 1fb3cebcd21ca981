"""Projects: units, profiles, tools, imports, the registry, a new project file."""

import re

from harness import ProgramTest, TIMEOUT, on_system, posix_only

PROJECT = """
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
    """


class DemoProject(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write(".vesk_project.txt", PROJECT)
        self.write("vesk.txt", """
            unit main
            app: other::lib {
                DESCRIPTION = "the program"
                cmdline = "child args ${other.lib.W} ${MODE} ${PROFILE} ${FLAGS}"
            }
            tool: { cmdline = "child print tool" }
            """)
        self.write("sub/one.txt", "unit other\nlib: { cmdline = [] ^W = \"w\" }")
        self.write("sub/two.txt", "unit other\nextra: lib { cmdline = \"child print ${lib.W}\" }")


class Lists(DemoProject):
    def test_profiles_and_units(self):
        self.check("-p", out="debug\ndefault\nrelease\n")
        self.check("-u", out="main\nother\n")
        self.check("-u", out="main\nother\n", cwd=self.dir / "sub")

    def test_targets(self):
        for unit, names in (("1", ["app", "tool"]), ("main", ["app", "tool"]),
                            ("other", ["lib", "extra"])):
            with self.subTest(unit=unit):
                result = self.run_vesk("-l", unit)
                self.assertEqual([line.split()[0] for line in result.out.splitlines()], names)
        lines = self.run_vesk("-l", "1").out.splitlines()
        self.assertRegex(lines[0], r"^ *app +the program$")
        self.assertRegex(self.run_vesk("-l", "other").out.splitlines()[1], r"^ *extra +lib$")

    def test_unknown_unit(self):
        self.check_error("-l", "othr", err="Error: Unit 'othr' not found. (did you mean "
                         "'other'?)\n")


class Building(DemoProject):
    def test_profiles(self):
        for arguments, expected in (
            ([], "[w]\n[plain]\n[-Wall]\n"),
            (["release"], "[w]\n[fast]\n[release]\n[-Wall]\n[-O2]\n"),
            (["app", "DEBUG"], "[w]\n[plain]\n[debug]\n[-Wall]\n[-g]\n"),
            (["release", 'MODE="mine"'], "[w]\n[mine]\n[release]\n[-Wall]\n[-O2]\n"),
        ):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.printed(*arguments), expected)

    def test_any_target_from_anywhere(self):
        for request, expected in (("tool", "tool\n"), ("main::tool", "tool\n"),
                                  ("1::tool", "tool\n"), ("other::extra", "w\n"),
                                  ("demo/other::extra", "w\n")):
            with self.subTest(request=request):
                self.assertEqual(self.printed(request, cwd=self.dir / "sub"), expected)

    def test_output_directory_has_the_profiles_name(self):
        self.assertIn("Output dir: {DIR}/out\n", self.run_vesk("tool").out)
        self.assertIn("Output dir: {DIR}/out/release\n", self.run_vesk("tool", "release").out)

    def test_second_profile(self):
        self.check_error("release", "debug", out="",
                         err="Error: Profile already set to 'release'. It can only be set once.\n")

    def test_unit_without_a_project(self):
        """-f and -c look for no project."""
        self.assertEqual(self.printed("-f", "sub/two.txt", "lib", "-f", "sub/one.txt"), "")
        self.check("-f", "sub/one.txt", "-u", status=0xFF,
                   err="No file to list. You need .vesk_project.txt.\n")

    def test_messages_of_the_search(self):
        out = self.run_vesk("-v", "1", "tool", cwd=self.dir / "sub").out
        self.assertEqual(out.splitlines()[:3], [
            "Found a project file at {DIR}",
            "Setting project root to {DIR}",
            "Loading project file {DIR}/.vesk_project.txt",
        ])


class Tools(ProgramTest):
    def report(self, *arguments):
        out = self.run_vesk("-v", *arguments).out
        return re.search(r"Best registered tool: (\S+), score: (\d+)", out).groups()

    def test_declared_tools_compete(self):
        self.write(".vesk_project.txt", """
            name demo
            tools {
                plain { tool_type = "command" }
                open { tool_type = "command" LANG }
                pinned { tool_type = "command" LANG = "c" }
                supplied { tool_type = "command" !cmdline = "child print supplied" KIND = "s" }
            }
            units { main { "vesk.txt" } }
            """)
        self.unit("""
            unit main
            c: { cmdline = [] LANG = "c" }
            d: { cmdline = [] LANG = "d" }
            none: { cmdline = [] }
            s: { KIND = "s" }
            """)
        self.assertEqual(self.report("c"), ("pinned", "2"))
        self.assertEqual(self.report("d"), ("open", "1"))
        self.assertEqual(self.report("none"), ("open", "0"))
        self.assertEqual(self.report("s"), ("supplied", "2"))

    def test_faulty_declarations(self):
        for tool, message in (
            ("t { }", "Build tool 't' has no 'tool_type'."),
            ('t { tool_type = "" }', "Build tool 't' has empty 'tool_type'."),
            ('t { tool_type = "command" Tool_Type = "command" }',
             "Build tool 't' has multiple 'tool_type' assignments."),
        ):
            with self.subTest(tool=tool):
                self.write(".vesk_project.txt", "name demo tools { " + tool + " } units { main { "
                           '"vesk.txt" } }')
                self.unit("unit main t: { cmdline = [] }")
                result = self.run_vesk("-v", "6")
                self.assertIn(message, result.err)
                self.assertEqual(result.status, 1)

    def test_unknown_type_is_skipped(self):
        self.write(".vesk_project.txt",
                   'name demo tools { t { tool_type = "nosuch" } } units { main { "vesk.txt" } }')
        self.unit("unit main t: { cmdline = \"child print built\" }")
        self.check("-v", "6", out="built\n",
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
            ('name demo units { main { "vesk.txt" } main { "vesk.txt" } }',
             "Error: Duplicate unit 'main'."),
            ('name demo units { main { "gone.txt" } }', r".*gone\.txt"),
            ("name demo units { main { vesk } }", r"Error: .*\.vesk_project\.txt\(1,25\): 'vesk' "),
            (units + " name demo", r"Error: .*\.vesk_project\.txt\(1,30\): 'name' "),
            ('name demo import { "nowhere" ; } ' + units, r"Error: .*nowhere"),
            ("name demo import { unknown ; } " + units, "Error: Regist.* 'unknown' not found."),
            ("name demo import { gone: unknown ; } " + units,
             r"Error: Profile 'gone' not found in .*\.vesk_project\.txt"),
        ):
            with self.subTest(text=text):
                self.write(".vesk_project.txt", text)
                result = self.run_vesk("-v", "6")
                self.assertEqual((result.status, result.out), (1, ""))
                self.assertRegex(result.err, "^" + message)


class Imports(ProgramTest):
    def project(self, folder, name, imports, targets, more=""):
        self.write(f"{folder}/.vesk_project.txt",
                   f'name {name} import {{ {imports} }} units {{ main {{ "vesk.txt" }} }} {more}')
        self.write(f"{folder}/vesk.txt", "unit main\n" + targets)

    def test_by_path_with_alias_and_profile(self):
        profiles = 'profiles { fast { WORD = "fast" } slow { WORD = "slow" } }'
        self.project("the lib", "lib", "", """
            lib: { cmdline = "child cwd" cwd = PROJECT_ROOT ^W = "${WORD}" ^R = PROJECT_ROOT }
            """, profiles)
        self.project("app", "app", 'on: "../the lib" l (fast); off: "../the lib" l (slow);', """
            app: l/main::lib => lib { cmdline = "child args ${lib.W}" }
            """, "profiles { on { } off { } }")
        app = self.dir / "app"
        self.assertEqual(self.printed("on", cwd=app), "the lib\n[fast]\n")
        self.assertEqual(self.printed("off", cwd=app), "the lib\n[slow]\n")
        self.assertEqual(self.printed("l/main::lib", "on", cwd=app), "the lib\n")
        result = self.run_vesk("-v", "6", cwd=app)
        self.assertEqual(result.status, 1)
        self.assertTrue(result.err.startswith("Error: Project 'l' not found."), result.err)

    def test_diamond_is_loaded_once(self):
        self.project("base", "base", "", 'base: { cmdline = "child print base" }')
        self.project("left", "left", '"../base";', "left: base/main::base { NO_TOOL }")
        self.project("right", "right", '"../base";', "right: base/main::base { NO_TOOL }")
        self.project("top", "top", '"../left"; "../right";',
                     "top: left/main::left right/main::right { NO_TOOL }")
        self.assertEqual(self.printed(cwd=self.dir / "top"), "base\n")

    def test_cycle_and_conflict(self):
        self.project("a", "a", '"../b";', "a: { NO_TOOL }")
        self.project("b", "b", '"../a";', "b: { NO_TOOL }")
        result = self.run_vesk("-v", "6", cwd=self.dir / "a")
        self.assertRegex(result.err, "^Error: Import cycle: .* -> .* -> ")
        profiles = "profiles { x { } y { } }"
        self.project("c", "c", "", "c: { NO_TOOL }", profiles)
        self.project("b", "b", '"../c" (x);', "b: { NO_TOOL }")
        self.project("a", "a", '"../b"; "../c" (y);', "a: { NO_TOOL }")
        result = self.run_vesk("-v", "6", cwd=self.dir / "a")
        self.assertRegex(result.err, "^Error: Conflicting project profiles: .* versus ")


class Registry(ProgramTest):
    def setUp(self):
        super().setUp()
        self.data = self.base / "registry data"
        self.env = {"APPDATA": on_system(self.data)}
        self.file = self.data / "vesk" / ".vesk_registry.txt"

    def project(self, folder, name, targets="t: { NO_TOOL }", imports=""):
        self.write(f"{folder}/.vesk_project.txt",
                   f'name {name} import {{ {imports} }} units {{ main {{ "vesk.txt" }} }}')
        self.write(f"{folder}/vesk.txt", "unit main\n" + targets)

    def registered(self):
        text = self.file.read_bytes().decode().replace("\r\n", "\n")
        return self.plain(text.encode())

    def test_register_and_import(self):
        self.project("lib grün", "lib", 't: { cmdline = "child print lib" ^W = "w" }')
        result = self.run_vesk("-r", cwd=self.dir / "lib grün", env=self.env)
        self.assertEqual((result.err, result.status), ("", 0))
        self.assertRegex(result.out, r"^Updated file '.*\.vesk_registry\.txt'\.\n$")
        self.assertEqual(self.registered(), 'projects {\n  lib "{DIR}/lib grün"\n}\n')
        self.project("app", "app", 't: lib/main::t => l { cmdline = "child print ${l.W}" }', "lib;")
        self.assertEqual(self.printed(cwd=self.dir / "app", env=self.env), "lib\nw\n")
        self.assertEqual(self.printed("lib/main::t", cwd=self.dir / "app", env=self.env), "lib\n")

    def test_again_and_in_order(self):
        for folder, name in (("two", "zeta"), ("one", "alpha"), ("three", "zeta")):
            self.project(folder, name)
            self.assertEqual(self.run_vesk("-r", cwd=self.dir / folder, env=self.env).status, 0)
        self.assertEqual(self.registered(),
                         'projects {\n  alpha "{DIR}/one"\n  zeta "{DIR}/three"\n}\n')

    def test_several_at_once(self):
        names = [f"project{n}" for n in range(6)]
        for name in names:
            self.project(name, name)
        processes = [self.start("-r", cwd=self.dir / name, env=self.env) for name in names]
        for process in processes:
            process.communicate(timeout=TIMEOUT)
        self.assertEqual([process.returncode for process in processes], [0] * len(names))
        lines = "".join(f'  {name} "{{DIR}}/{name}"\n' for name in names)
        self.assertEqual(self.registered(), "projects {\n" + lines + "}\n")

    def test_tools_survive(self):
        self.file.parent.mkdir(parents=True)
        self.file.write_text('tools { mine { tool_type = "command" KIND = R"(say "k")" '
                             '!cmdline = "child print mine" dir = P"(C:\\a b)" n = 5 x } }')
        self.project("one", "one", 't: { KIND = R"(say "k")" }')
        self.assertEqual(self.printed(cwd=self.dir / "one", env=self.env), "mine\n")
        self.assertEqual(self.run_vesk("-r", cwd=self.dir / "one", env=self.env).status, 0)
        written = self.registered()
        self.assertIn('KIND = R"(say "k")"', written)
        self.assertEqual(self.printed(cwd=self.dir / "one", env=self.env), "mine\n")
        self.assertEqual(self.run_vesk("-r", cwd=self.dir / "one", env=self.env).status, 0)
        self.assertEqual(self.registered(), written)

    def test_faulty_file(self):
        self.file.parent.mkdir(parents=True)
        self.file.write_text("projects { a }\n")
        self.project("one", "one")
        result = self.run_vesk("-v", "6", cwd=self.dir / "one", env=self.env)
        self.assertEqual(result.status, 1)
        self.assertRegex(result.err, r"^Error: .*\.vesk_registry\.txt\(1,13\): '}' ")
        self.assertEqual(self.file.read_text(), "projects { a }\n")

    def test_without_a_project(self):
        self.unit("t: { NO_TOOL }")
        result = self.run_vesk("-r", env=self.env)
        self.assertEqual(result.status, 1)
        self.assertRegex(result.err, "^Error: project '.*' not found.")
        self.assertFalse(self.file.exists())

    def test_find_compilers_keeps_the_entries(self):
        self.project("one", "one")
        self.assertEqual(self.run_vesk("-r", cwd=self.dir / "one", env=self.env).status, 0)
        result = self.run_vesk("--find-compilers", env=self.env)
        self.assertEqual(result.status, 0, result.err)
        self.assertTrue(self.registered().startswith('projects {\n  one "{DIR}/one"\n}\n'))

    @posix_only("the emulator shows no permissions")
    def test_place_that_cannot_be_written(self):
        self.file.parent.mkdir(parents=True)
        self.file.mkdir()
        self.project("one", "one")
        result = self.run_vesk("-r", cwd=self.dir / "one", env=self.env)
        self.assertEqual(result.status, 1)
        self.assertIn(".vesk_registry.txt", result.err)


class NewProject(ProgramTest):
    def test_builds_without_an_edit(self):
        self.unit('app: gear::t other::o { cmdline = "child print app" }')
        self.write("gear/vesk.txt", 't: { cmdline = "child print tools" }')
        self.write("deep/er/VESK.TXT", 'unit other\no: { cmdline = "child print other" }')
        self.write("out/vesk.txt", "this is output")
        result = self.run_vesk("--create-project")
        self.assertEqual((result.err, result.status), ("", 0))
        text = self.read(".vesk_project.txt")
        self.assertTrue(text.startswith("name work\nunits\n{\n"), text)
        self.assertEqual(re.findall('"(.*)"', text),
                         ["gear/vesk.txt", "deep/er/VESK.TXT", "vesk.txt"])
        self.assertEqual(self.run_vesk("-u").out.split(), ["gear", "other", "work"])
        self.assertEqual(self.printed("work::app"), "tools\nother\napp\n")

    def test_names_that_cannot_be_identifiers(self):
        self.write("2 - grün/vesk.txt", 't: { cmdline = "child print one" }')
        self.write("import/vesk.txt", 't: { cmdline = "child print two" }')
        self.write("a/same/vesk.txt", "t: { NO_TOOL }")
        self.write("b/same/vesk.txt", "t: { NO_TOOL }")
        self.assertEqual(self.run_vesk("--create-project").status, 0)
        units = self.run_vesk("-u")
        self.assertEqual((units.err, units.status, len(set(units.out.split()))), ("", 0, 4))
        for unit in units.out.split():
            self.assertEqual(self.run_vesk(f"{unit}::t").status, 0, unit)

    def test_old_file_is_kept(self):
        self.unit("t: { NO_TOOL }")
        self.write(".vesk_project.txt", "name precious\n")
        result = self.run_vesk("--create-project")
        self.assertEqual(result.status, 0, result.err)
        kept = [name for name in self.files() if name.startswith(".vesk_project") and
                name != ".vesk_project.txt"]
        self.assertEqual([self.read(name) for name in kept], ["name precious\n"])
        self.assertIn(kept[0], result.out + result.err)

    @posix_only("the emulator makes no links")
    def test_links_into_a_loop(self):
        self.unit("t: { NO_TOOL }")
        (self.dir / "sub").mkdir()
        (self.dir / "sub" / "up").symlink_to(self.dir)
        self.assertEqual(self.run_vesk("--create-project").status, 0)
        self.assertEqual(len(re.findall("vesk.txt", self.read(".vesk_project.txt"))), 1)
