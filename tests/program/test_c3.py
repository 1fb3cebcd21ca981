"""C3 targets. No distribution has the compiler, so one stands in that checks its command line."""

import subprocess
import sys
from pathlib import Path

from harness import HANGS, SETTINGS, on_system
from test_toolchains import NATIVE, ToolchainTest

STAND_IN = Path(__file__).parent / "children/c3c.py"


class C3(ToolchainTest):
    def setUp(self):
        super().setUp()
        self.bin = self.base / "C 3" / "bin"
        script = f"{sys.executable} {STAND_IN}"
        if SETTINGS.windows:
            self.bridge(self.bin / "c3c", f"C3C_DEFAULT=mingw-x64 {script}")
            for program in ("gcc", "ar"):
                self.bridge(self.bin / program)
            compiler = f'toolchain_path = P"({on_system(self.bin)})"'
            native = f'gcc {{ tool_type = "gnu-gcc" {compiler} toolchain_name = "GCC" }}'
            self.triple = "x86_64-w64-windows-gnu"
        else:
            self.script(self.bin / "c3c", f'exec {script} "$@"\n')
            native = NATIVE
            self.triple = "x86_64-pc-linux-gnu"
        self.tool = f"""
            c3 {{ tool_type = "c3c" toolchain_name = "C3 0.7.9" toolchain_version = "0.7.9"
                 toolchain_path = P"({on_system(self.bin)})" toolchain_target = "{self.triple}" }}
            """
        self.registry(native + self.tool)

    def status_of(self, program):
        program = f"{program}.exe" if SETTINGS.windows else program
        return subprocess.run([*SETTINGS.wine, self.dir / program], timeout=HANGS).returncode

    def commands(self, out):
        return [line.split("c3c", 1)[1].replace(".exe", "").lstrip('"\' ')
                for line in out.splitlines() if "c3c" in line and "] " in line and "-o" in line]

    def libraries(self):
        """A library in C3 of each kind, and one in C, which a program in C3 uses."""
        self.write("main.c3", """
            module main;
            extern fn int one();
            extern fn int two();
            extern fn int four();
            fn int main() { return one() + two() + four(); }
            """)
        self.write("sub/one.c3", "module one;\nfn int one() { return $feature(ONE); }\n")
        self.write("two.c3", "module two;\nfn int two() { return 2; }\n")
        self.write("four.c", "int four(void) { return 4; }\n")
        self.unit("""
            app: +one +two +four { C3_FILES = ["main.c3"] }
            one: { C3_FILES = ["sub/*.c3"] OUTPUT_TYPE = "static" C3_FEATURES = ["ONE"] }
            two: { C3_FILES = ["two.c3"] OUTPUT_TYPE = "shared" }
            four: { C_FILES = ["four.c"] OUTPUT_TYPE = "static" }
            """)

    def test_program_with_libraries_of_both_languages(self):
        self.libraries()
        self.build()
        self.assertEqual(self.status_of("out/app"), 7)
        products = (["out/app.exe", "out/libfour.a", "out/one.lib", "out/two.dll", "out/two.lib"]
                    if SETTINGS.windows else
                    ["out/app", "out/libfour.a", "out/libone.a", "out/libtwo.so"])
        self.assertEqual([name for name in self.files() if name.startswith("out/") and
                          ".obj" not in name], products)
        self.assertFalse((self.dir / "headers").exists())

    def test_only_what_an_edit_reaches_is_built(self):
        self.remembers = True
        self.libraries()
        self.build("-v", "0")
        for edit, products in (
                (lambda: None, []),
                (lambda: self.write("sub/one.c3", "module one;\nfn int one() { return 11; }\n"),
                 ["out/libone", "out/app"]),
                (lambda: self.write("four.c", "int four(void) { return 14; }\n"), ["out/app"]),
                (lambda: self.write("main.c3", self.read("main.c3") + "\n"), ["out/app"]),
                (lambda: None, [])):
            edit()
            built = [command.split(" -o ")[1].split()[0].replace("out/one", "out/libone")
                     for command in self.commands(self.build())]
            self.assertEqual(built, products)
        self.assertEqual(self.status_of("out/app"), 27)

    def test_objects(self):
        self.remembers = True
        self.write("a.c3", "module first;\nfn int a() { return 1; }\n")
        self.write("b.c3", "module main;\nextern fn int a();\nfn int main() { return a() + 4; }\n")
        self.unit("""
            app: +objs { C3_FILES = ["b.c3"] }
            objs: { C3_FILES = ["a.c3"] OUTPUT_TYPE = "object" }
            """)
        self.build()
        self.assertEqual(self.status_of("out/app"), 5)
        self.assertEqual(self.commands(self.build()), [])
        object_, = (self.dir / "out/.obj/vesk/objs/objects").glob("first.*")
        for change in (object_.unlink, lambda: object_.write_bytes(b"edited")):
            change()
            self.build()
            self.assertEqual(self.status_of("out/app"), 5)
            self.assertNotIn("c3c", self.build())
        # Objects are named after modules; that of a module which is gone is not linked.
        self.write("a.c3", "module second;\nfn int a() { return 2; }\n")
        self.build()
        self.assertEqual(self.status_of("out/app"), 6)

    def test_profile_says_machine_and_optimisation(self):
        self.write("main.c3", "module main;\nfn int main() { return 0; }\n")
        self.write(".vesk_project.txt", """
            name demo
            units { main { "vesk.txt" } }
            profiles {
                release { C3_OPT = "O3" C3_FLAGS = "-g" LINK_FLAGS = ["-s"] }
                windows { TARGET_TRIPLE = "x86_64-w64-mingw32" C3_OPT = 1 }
            }
            """)
        self.unit("""
            app: {
                C3_FILES = ["main.c3"] C3_LIB_DIRS = ["vendor"] C3_LIBS = ["json"]
                LIBS = ["m"]
            }
            """)
        rest = "--libdir vendor --lib json{} -l m"
        for profile, command in (
                ("release", "compile main.c3 -o out/release/app -O3 " + rest.format(" -g -z -s")),
                ("windows", "compile main.c3 -o out/windows/app -O1 --target mingw-x64 " +
                            rest.format(""))):
            with self.subTest(profile):
                told = self.commands(self.build(profile))
                self.assertEqual([text.replace('"', "") for text in told], [command])
        self.assertEqual((self.dir / "out/windows/app.exe").read_bytes()[:2], b"MZ")

    def test_faults(self):
        self.write("a.c3", "module a;\nfn int main() { return 1; }\n")
        self.write("broken.c3", "nothing")
        self.write("b.c", "int b;\n")
        for body, message in (
                ('C3_FILES = ["a.c3"] C_FILES = ["b.c"]', "cannot be built in one target."),
                ('C3_FILES = ["a.c3"] C3_OPT = "O9"', "C3_OPT 'O9' is not an optimisation that"),
                ('C3_FILES = ["a.c3"] OUTPUT_TYPE = "static" OUTPUT_NAME = "x.o"',
                 "OUTPUT_NAME 'x.o' is not possible"),
                ('C3_FILES = ["none/*.c3"]', "No file matches the pattern 'none/*.c3' in C3_FILES."),
                ('C3_FILES = ["broken.c3"]', "Command ended with status 1: "),
                ('C3_FILES = ["a.c3"] OUTPUT_TYPE = "relocatable"', "no relocatable objects")):
            with self.subTest(body):
                self.unit("app: { " + body + " }")
                self.assertIn(message, self.failure())

    def test_found(self):
        self.registry("")
        # A directory of its own in the path on Linux, told by a variable on Windows.
        env = {"C3C_HOME": on_system(self.bin.parent), "ANDROID_HOME": None}
        result = self.run_vesk("--find-compilers", env=env)
        found = [line for line in result.out.splitlines() if line.startswith("Registered")]
        self.assertIn(f"Registered toolchain 'c3c-0-7-9-{self.triple}'.", found)
        order = ("gcc", "clang", "msvc", "c3c", "android")
        kinds = [next(kind for kind in order if f"'{kind}" in line) for line in found]
        self.assertEqual(kinds, sorted(kinds, key=order.index))
        told = (self.base / "data/vesk/.vesk_registry.txt").read_text(encoding="utf-8")
        self.assertIn(f'toolchain_path = P"({on_system(self.bin)})"', told)
        self.assertIn('toolchain_name = R"(C3 0.7.9)"', told)

    def test_example(self):
        self.take_example("c3_program")
        self.same_with_many_jobs(self.build)
        self.assertEqual(self.status_of("out/answer"), 42)
