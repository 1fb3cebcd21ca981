"""C and C++ targets, built with the compilers of the machine."""

import json
import os
import re
import shutil
import subprocess
from pathlib import Path

from harness import (HANGS, ProgramTest, SETTINGS, needs, on_system, posix_only, wait_until,
                     windows_only)

CROSS = "x86_64-w64-mingw32"
EXE = ".exe" if SETTINGS.windows else ""

# A registry as --find-compilers writes it; each test has its own, so that none of them has to look.
NATIVE = """
    gcc { tool_type = "gnu-gcc" toolchain_name = "GCC 12.2.0" toolchain_path = P"(/usr/bin)"
          toolchain_version = "12.2.0" toolchain_target = "x86_64-linux-gnu"
          toolchain_default = "machine" }
    clang { tool_type = "llvm-clang" toolchain_name = "Clang 14.0.6" toolchain_path = P"(/usr/bin)"
            toolchain_version = "14.0.6" toolchain_target = "x86_64-pc-linux-gnu"
            toolchain_default = "family" }
"""
# Its name comes first, so that it would win by the alphabet.
FOREIGN = f"""
    a_cross {{ tool_type = "gnu-gcc" toolchain_name = "GCC 12" toolchain_path = P"(/usr/bin)"
              toolchain_prefix = "{CROSS}-" toolchain_target = "{CROSS}" }}
"""


class ToolchainTest(ProgramTest):
    tools = NATIVE + FOREIGN

    def setUp(self):
        super().setUp()
        # A blank, an apostrophe and a letter beyond ASCII: every command has to survive them.
        self.dir = self.base / "wörk's dir"
        self.dir.mkdir()
        self.registry(self.tools)

    def registry(self, tools):
        super().registry("tools {" + tools + "}\n")

    def start(self, *arguments, env=None, **options):
        env = {"APPDATA": on_system(self.base / "data"), **(env or {})}
        return super().start(*arguments, env=env, **options)

    def output_of(self, program, *arguments):
        command = [*SETTINGS.wine, self.dir / (program + EXE), *arguments]
        return subprocess.run(command, cwd="/", capture_output=True, text=True, check=True,
                              timeout=HANGS).stdout

    def compiled(self, out):
        """The sources that a run compiled."""
        words = (line.split() for line in out.splitlines() if " -c " in line)
        return [line[line.index("-c") + 1] for line in words]


class GnuTest(ToolchainTest):
    """With the system's compilers; under Wine with a GNU toolchain for Windows, in a directory with
    characters that the interpreter trips over."""

    compilers = ("GCC",) if SETTINGS.windows else ("GCC", "Clang")

    def setUp(self):
        super().setUp()
        self.bin = self.base / "C & tools (x86)" / "bin"
        if SETTINGS.windows:
            for program in ("gcc", "g++", "ar", "ld", "objcopy"):
                self.bridge(self.bin / program)
            self.registry(f"""
                gcc {{ tool_type = "gnu-gcc" toolchain_name = "GCC 12"
                      toolchain_path = P"({on_system(self.bin)})" toolchain_target = "{CROSS}" }}
                """)


class Programs(GnuTest):
    def test_sources_of_one_name_defines_and_flags(self):
        for directory, number in (("a", 1), ("b b", 2)):
            self.write(f"{directory}/x.c", f"int from_{directory[0]}(void) {{ return {number}; }}\n")
        self.write("main.c", r"""
            #include <stdio.h>
            #include "number.h"
            int from_a(void);
            int from_b(void);
            int main(void) {
                printf("%d %d %d %s %s\n", from_a(), from_b(), NUMBER, TEXT, QUOTED);
                return 0;
            }
            """)
        self.write("in clude/number.h", "#define NUMBER 3\n")
        self.unit("""
            app: {
                C_FILES = ["main.c", "*/x.c"]
                C_FLAGS = R"(-O1 HERE)"
                DEFINES = [R"(TEXT="a\\tb $HOME & 'c'")"]
                INCLUDE_DIRS = ["in clude"]
            }
            """.replace("HERE", r'"-DQUOTED=\"it is\""' if SETTINGS.windows else
                        """-DQUOTED='"it is"'"""))
        out = self.build()
        self.assertEqual(self.output_of("out/app"), "1 2 3 a\tb $HOME & 'c' it is\n")
        self.assertIn("out/.obj/vesk/app/b b/x.c.o", self.files())
        self.assertRegex(out, r"\[vesk::app\] \S.*gcc\S* -O1 ")

    @posix_only("the assembler text is for the system itself")
    @needs("clang", "llvm-ar", "ld.lld")
    def test_languages_together(self):
        self.write("a.c", "int c_part(void) { return 1; }\n")
        self.write("b.S", "#define TWO $2\n.globl s_part\ns_part:\n mov TWO, %eax\n ret\n"
                          '.section .note.GNU-stack,"",@progbits\n')
        self.write("c.cpp", """
            #include <iostream>
            #include <string>
            extern "C" int c_part();
            extern "C" int s_part();
            int main() { std::cout << std::string("sum ") << c_part() + s_part() << "\\n"; }
            """)
        self.unit('app: { C_FILES="a.c" ASM_FILES="b.S" CPP_FILES="c.cpp" FLAGS="-g" }')
        for compiler in self.compilers:
            with self.subTest(compiler):
                self.build(f'toolchain_name="{compiler}"')
                self.assertEqual(self.output_of("out/app"), "sum 3\n")

    def test_only_what_an_edit_reaches_is_compiled(self):
        self.remembers = True
        for name in ("a", "b", "main"):
            self.write(f"src/{name}.c", f'#include "{name}.h"\nint {name}(void) {{ return N; }}\n')
            self.write(f"inc/{name}.h", '#include "all.h"\n')
        self.write("inc/all.h", "#define N 0\n")
        self.write("lib.c", "int lib(void) { return 0; }\n")
        self.unit("""
            unit main
            app: +lib { C_FILES = ["src/*.c"] INCLUDE_DIRS = ["inc"] C_FLAGS = "-O0" }
            lib: { C_FILES = ["lib.c"] OUTPUT_TYPE = "static" }
            """)
        everything = ["lib.c", "src/a.c", "src/b.c", "src/main.c"]
        self.assertEqual(sorted(self.compiled(self.build("-j2"))), everything)
        unit = self.read("vesk.txt")

        def gone():
            (self.dir / "inc/b.h").unlink()
            self.write("src/b.c", '#include "all.h"\nint b(void) { return N; }\n')

        for edit, sources, links in (
            (lambda: None, [], 0),
            (lambda: os.utime(self.dir / "inc/all.h"), [], 0),
            (lambda: self.write("inc/a.h", '#include "all.h"\nint new(void);\n'), ["src/a.c"], 0),
            (lambda: self.write("inc/all.h", "#define N 1 - 1\n"), everything[1:], 0),
            (lambda: self.write("inc/all.h", "#define N 2\n"), everything[1:], 1),
            (gone, ["src/b.c"], 0),
            (lambda: self.write("src/new.c", "int fresh(void) { return 1; }\n"), ["src/new.c"], 1),
            (lambda: self.write("lib.c", "int lib(void) { return 5; }\n"), ["lib.c"], 2),
            (lambda: self.write("vesk.txt", unit.replace("-O0", "-O1")),
             ["src/a.c", "src/b.c", "src/main.c", "src/new.c"], 1),
            (lambda: (self.dir / f"out/app{EXE}").unlink(), [], 1),
        ):
            edit()
            out = self.build("-j2")
            self.assertEqual(sorted(self.compiled(out)), sources, out)
            self.assertEqual(len(re.findall(r"gcc\S* -o out/app| rcs ", out)), links, out)
            self.assertEqual(self.compiled(self.build()), [])

    def test_a_header_that_is_found_earlier(self):
        self.remembers = True
        unit = '''
            app: {
                C_FILES = ["src/main.c"]
                C_FLAGS = "-iquote quoted"
                INCLUDE_DIRS = ["one", "two"]
                toolchain_name ?= "HERE"
            }
            '''
        for compiler in self.compilers:
            for earlier in ("src/sub/n.h", "quoted/sub/n.h", "one/sub/n.h"):
                with self.subTest(compiler, earlier=earlier):
                    for directory in ("src", "quoted", "one", "two", "out"):
                        shutil.rmtree(self.dir / directory, ignore_errors=True)
                    self.write("src/main.c", '#include "sub/n.h"\nint main(void) { return N; }\n')
                    self.write("two/sub/n.h", "#define N 2\n")
                    self.write("one/other.h", "")
                    self.unit(unit.replace("HERE", compiler))
                    self.build()
                    self.assertEqual(self.compiled(self.build()), [])
                    # Other names there do not matter.
                    self.write(Path(earlier).parent / "m.h", "#define N 0\n")
                    self.write("vesk.txt.bak", "")
                    self.assertEqual(self.compiled(self.build()), [])
                    self.assertEqual(self.compiled(self.build()), [])
                    self.write(earlier, "#define N 1\n")
                    self.assertEqual(self.compiled(self.build()), ["src/main.c"])
                    self.assertEqual(self.compiled(self.build()), [])
                    (self.dir / earlier).unlink()
                    self.assertEqual(self.compiled(self.build()), ["src/main.c"])

    def test_names_that_look_like_options(self):
        for name in ("-x", "@y"):
            self.write(f"{name}.c", f"int f{name[1]}(void) {{ return 1; }}\n")
        self.write("main.c", "int fx(void);\nint fy(void);\n"
                             "int main(void) { return fx() + fy() - 2; }\n")
        self.write("obj.c", "int obj;\n")
        self.unit('''
            app: +lib {
                C_FILES = ["main.c"] OUTPUT_DIR = "." OUTPUT_NAME = "-app" OBJ_FILES = ["-o.o"]
                LIB_FILES = ["@lib.a"]
            }
            lib: object { C_FILES = ["@y.c"] OUTPUT_TYPE = "static" OUTPUT_DIR = "." OUTPUT_NAME = "@lib.a" }
            object: { C_FILES = ["-x.c"] OUTPUT_TYPE = "relocatable" OUTPUT_DIR = "." OUTPUT_NAME = "-o" }
            '''.replace("object { C_FILES = [\"@", "+object { C_FILES = [\"@"))
        for compiler in self.compilers:
            self.build(f'toolchain_name="{compiler}"')
        self.output_of("-app")

    def test_a_new_source_is_seen_when_runs_are_repeated(self):
        self.remembers = True
        self.write("main.c", "int main(void) { return 0; }\n")
        self.unit('app: { C_FILES = ["*.c"] }')
        kept = self.dir / ".vesk_cache.snapshot"
        self.build()
        wait_until(lambda: self.build() and kept.exists() and kept.stat().st_size > 0)
        written = kept.stat().st_mtime_ns
        self.assertEqual(self.compiled(self.build()), [])
        self.assertEqual(kept.stat().st_mtime_ns, written)
        self.write("new.c", "int fresh(void) { return 1; }\n")
        self.assertEqual(self.compiled(self.build()), ["new.c"])

    def test_compilation_database(self):
        self.remembers = True
        self.write("a.c", "int main(void) { return 0; }\n")
        self.unit('app: { C_FILES = ["a.c"] DEFINES = [R"(T="x y")"] }')
        for _ in ("built", "fresh"):
            self.build("--compile-commands=db.json")
            entry, = json.loads(self.read("db.json"))
            self.assertEqual(entry["directory"], on_system(self.dir))
            self.assertEqual(entry["file"], on_system(self.dir / "a.c"))
            if not SETTINGS.windows:
                subprocess.run(entry["command"], shell=True, cwd=entry["directory"], check=True)
            os.unlink(self.dir / "db.json")

    def test_the_database_of_a_project(self):
        """Of all targets that can be visited, and behind them what other profiles have left."""
        self.remembers = True
        for name in "app", "lib", "other", "first":
            self.write(name + ".c", f"int {'main' if name == 'app' else name}(void) {{ return 0; }}\n")
        self.unit("""
            app: +lib { C_FILES = ["app.c"] }
            lib: { C_FILES = ["lib.c"] OUTPUT_TYPE = "static" }
            other: { C_FILES = ["other.c"] OUTPUT_TYPE = "static" }
            no_tool_fits: { something = "else" }
            any(file): { C_FILES = [file] OUTPUT_TYPE = "static" }
            """)
        self.write(".vesk_project.txt", """
            name p
            units { main { "vesk.txt" } }
            profiles { default { COMPILE_COMMANDS = "db/kept.json" } release { C_FLAGS = "-O2" } }
            """)
        (self.dir / "db").mkdir()

        def entries(name):
            return [f"{Path(entry['file'].replace(chr(92), '/')).name}{' -O2' * ('-O2' in entry['command'])}"
                    for entry in json.loads(self.read(name))]

        plain, fast = ["lib.c", "app.c", "other.c"], ["lib.c -O2", "app.c -O2", "other.c -O2"]
        self.build("lib")
        self.assertEqual(entries("db/kept.json"), plain)
        self.build("release")
        self.assertEqual(entries("db/kept.json"), fast + plain)
        before = (self.dir / "db/kept.json").stat()
        self.build("release")
        self.build("release", "-n")
        self.assertEqual((self.dir / "db/kept.json").stat(), before)
        os.unlink(self.dir / "other.c")
        self.unit(self.read("vesk.txt").replace('C_FILES = ["other.c"]', 'C_FILES = ["oth*.c"]'))
        self.build("lib")
        self.assertEqual(entries("db/kept.json"), plain[:2] + fast[:2])
        self.build("--compile-commands=all.json")
        self.assertEqual(entries("all.json"), plain[:2])
        self.build("lib", "--compile-commands=all.json")
        self.assertEqual(entries("all.json"), ["lib.c"])
        self.write("all.json", "{ this is something else")
        self.build("lib", "--compile-commands=all.json")
        self.assertEqual(entries("all.json"), ["lib.c"])
        for keep in (None, "check"):  # it is left as it is until what it depends on changes
            for text in ("int lib;\n", "int more;\n"):
                self.write("lib.c", text)
                self.build("lib", env={"VESK_KEEP": keep})
                self.assertEqual(entries("db/kept.json"), plain[:2] + fast[:2])
            self.write("other.c", "int other;\n")
            self.build("lib", env={"VESK_KEEP": keep})
            self.assertEqual(entries("db/kept.json"), plain + fast[:2])
            self.write("db/kept.json", "[]")
            self.build("lib", env={"VESK_KEEP": keep})
            self.assertEqual(entries("db/kept.json"), plain)
            os.unlink(self.dir / "other.c")
            self.build("release", env={"VESK_KEEP": keep})
            self.build("lib", env={"VESK_KEEP": keep})

    @posix_only("it is the system's own clangd")
    @needs("clangd")
    def test_the_database_is_as_clangd_wants_it(self):
        """The source compiles only with the directory and the macro of its target."""
        self.remembers = True
        self.write("ä b/a.c", '#include "only here.h"\nint number = HERE + DEFINED;\n')
        self.write("ä b/in clude/only here.h", "#define HERE 1\n")
        self.unit("""
            objects: {
                C_FILES = ["ä b/*.c"] OUTPUT_TYPE = "object"
                INCLUDE_DIRS = ["ä b/in clude"] DEFINES = ["DEFINED=2"]
            }
            """)
        database = self.dir / "db/compile_commands.json"
        database.parent.mkdir()

        def faults():
            clangd = subprocess.run(
                ["clangd", f"--check={self.dir / 'ä b/a.c'}", "--log=error",
                 f"--compile-commands-dir={database.parent}"],
                env={**os.environ, "XDG_CONFIG_HOME": str(self.base), "HOME": str(self.base)},
                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=HANGS)
            self.assertEqual(clangd.returncode == 0, clangd.stderr == "", clangd.stderr)
            return clangd.stderr

        for compiled in (["ä b/a.c"], []):
            out = self.build(f"--compile-commands={database}")
            self.assertEqual(out.count(" -c 'ä b/a.c'"), len(compiled), out)
            self.assertEqual(faults(), "")
            database.unlink()
        database.write_text("[]")
        self.assertIn("'only here.h' file not found", faults())

    def test_a_toolchain_that_there_is_not(self):
        self.unit('app: { C_FILES = ["a.c"] toolchain_name = "Gnu" }')
        error = self.error()
        self.assertIn("\n  it asks for toolchain_name 'Gnu'\n  registered are ", error)
        self.assertIn("GCC", error)

    def test_an_error_is_the_compilers_own(self):
        self.write("bad.c", "int main(void) { return missing; }\n")
        self.unit('app: { C_FILES = ["bad.c"] }')
        result = self.run_vesk()
        self.assertEqual(result.status, 1)
        self.assertIn("bad.c:1:25: error:", result.err)
        self.assertIn("Build failed.", result.err)

    def test_many_objects_go_through_a_response_file(self):
        names = [f"source_{'x' * 75}_{number}" for number in range(36)]
        for name in names:
            self.write(f"{'d' * 90}/{name}.c", f"int {name}(void) {{ return 1; }}\n")
        calls = "".join(f"    sum += {name}();\n" for name in names)
        declarations = "".join(f"int {name}(void);\n" for name in names)
        self.write("main.c", f"#include <stdio.h>\n{declarations}int main(void) {{\n    int sum = 0;\n"
                             f'{calls}    printf("%d\\n", sum);\n    return 0;\n}}\n')
        self.unit("""
            app: +lib { C_FILES = ["main.c"] OUTPUT_NAME = "a p" }
            whole: objects { C_FILES = ["main.c"] OBJ_FILES = objects.OBJECTS OUTPUT_NAME = "w h" }
            lib: objects { OBJ_FILES = objects.OBJECTS OUTPUT_TYPE = "static" }
            objects: { C_FILES = ["d*/*.c"] OUTPUT_TYPE = "object" }
            """)
        self.remembers = True
        out = self.build("-j", "2") + self.build("whole", "-j", "2")
        self.assertEqual(self.output_of("out/a p"), "36\n")
        self.assertEqual(self.output_of("out/w h"), "36\n")
        self.assertLess(max(map(len, out.splitlines())), 7200)
        self.assertEqual(len([name for name in self.files() if name.endswith(".rsp")]), 2)


class Libraries(GnuTest):
    def test_static_libraries_in_linking_order(self):
        self.write("base/base.c", "int base(void) { return 1; }\n")
        self.write("base/include/base.h", "int base(void);\n")
        for side in ("left", "right"):
            self.write(f"{side}.c", f'#include "base.h"\nint {side}(void) {{ return base() + 1; }}\n')
        self.write("main.c", """
            #include <math.h>
            #include <stdio.h>
            #include "base.h"
            int left(void);
            int right(void);
            int main(int argc, char** argv) {
                printf("%d %g\\n", left() + right(), pow(base() + argc, 2));
                return 0;
            }
            """)
        self.unit("""
            app: +base +left +right { C_FILES = ["main.c"] }
            left: +base { C_FILES = ["left.c"] OUTPUT_TYPE = "static" }
            right: +base { C_FILES = ["right.c"] OUTPUT_TYPE = "static" }
            base: {
                C_FILES = ["base/*.c"]
                OUTPUT_TYPE = "static"
                LIBS = ["m"]
                ^INCLUDE_DIRS += P"(base/include)"
            }
            """)
        out = self.build()
        self.assertEqual(self.output_of("out/app"), "4 4\n")
        self.assertIn(" out/libleft.a out/libright.a out/libbase.a -lm\n", out)
        # Libraries that only hand on what has changed have nothing to do.
        self.remembers = True
        self.write("base/base.c", "int base(void) { return 2; }\n")
        out = self.build("-v", "1")
        self.assertEqual(re.findall(r"Cache claimed for '\w+::(\w+)'", out), ["base", "app"])
        self.assertEqual(self.output_of("out/app"), "6 9\n")

    def test_an_archive_forgets_what_is_gone(self):
        self.write("a.c", "int a(void) { return 1; }\n")
        self.write("b.c", "int b(void) { return 1; }\n")
        self.unit('lib: { C_FILES = ["*.c"] OUTPUT_TYPE = "static" }')

        def members():
            return subprocess.run(["ar", "t", self.dir / "out/liblib.a"], capture_output=True,
                                  text=True, check=True).stdout.split()

        self.build()
        self.assertEqual(members(), ["a.c.o", "b.c.o"])
        (self.dir / "b.c").unlink()
        self.build()
        self.assertEqual(members(), ["a.c.o"])

    def test_libraries_and_files_of_flags_are_noticed(self):
        self.remembers = True
        self.write("f.c", "int f(void) { return N; }\n")
        self.write("main.c", "int f(void);\nint main(void) { return f(); }\n")
        made = 'f: { C_FILES = ["f.c"] DEFINES = ["N=HERE"] OUTPUT_DIR = "lib" OUTPUT_TYPE = "static" }'
        users = (
            'C_FILES = ["main.c"] LIB_DIRS = ["lib"] LIBS = ["f"]',
            'C_FILES = ["main.c"] LIB_DIRS = ["lib"] LIBS = [":libf.a"]',
            'C_FILES = ["main.c"] LIBS = ["lib/libf.a"]',
            'C_FILES = ["main.c"] LINK_FLAGS = "lib/libf.a"',
            'OBJ_FILES = objs.OBJECTS OUTPUT_TYPE = "relocatable" LIB_DIRS = ["lib"] LIBS = ["f"]',
            'OBJ_FILES = objs.OBJECTS OUTPUT_TYPE = "static" AR_FLAGS = "@lib/list"',
        )
        self.write("lib/list", "")
        for body in users:
            with self.subTest(body):
                for number in (1, 2):
                    self.unit(made.replace("HERE", str(number)) +
                              "\nobjs: { C_FILES = [\"main.c\"] OUTPUT_TYPE = \"object\" }")
                    self.build("f")
                    self.write("lib/list", "\n" * number)
                    self.unit(f'app: {"objs" if "objs" in body else ""} {{ {body} }}\n'
                              'objs: { C_FILES = ["main.c"] OUTPUT_TYPE = "object" }')
                    self.assertIn("out/app" if "static" not in body else "out/libapp",
                                  "\n".join(line for line in self.build().splitlines()
                                            if "Starting" not in line))
                    self.nothing_to_do()

    def test_shared_libraries_are_found_at_run_time(self):
        self.write("inner.c", "int inner(void) { return 6; }\n")
        self.write("outer.c", "int inner(void);\nint outer(void) { return inner() + 1; }\n")
        self.write("main.c", "#include <stdio.h>\nint outer(void);\n"
                             'int main(void) { printf("%d\\n", outer()); return 0; }\n')
        text = """
            app: +outer { C_FILES = ["main.c"] OUTPUT_NAME = "bin/app" }
            outer: +inner { C_FILES = ["outer.c"] OUTPUT_TYPE = "shared" OUTPUT_NAME = "lib/outer" }
            inner: { C_FILES = ["inner.c"] OUTPUT_TYPE = "shared" OUTPUT_NAME = "lib/deep/inner" }
            """
        # Windows looks beside the program.
        self.unit(re.sub('NAME = ".*/', 'NAME = "bin/', text) if SETTINGS.windows else text)
        self.build()
        self.assertEqual(self.output_of("out/bin/app"), "7\n")
        shutil.move(self.dir / "out", self.dir / "moved")
        self.assertEqual(self.output_of("moved/bin/app"), "7\n")

    def test_a_c_program_with_a_cpp_library(self):
        self.write("lib.cpp", '#include <string>\nextern "C" int length() '
                              '{ return std::string("four").size(); }\n')
        self.write("main.c", '#include <stdio.h>\nint length(void);\n'
                             'int main(void) { printf("%d\\n", length()); return 0; }\n')
        self.unit("""
            app: +middle { C_FILES = ["main.c"] LINK_FLAGS = "-static" }
            middle: +lib { C_FILES = [] OUTPUT_TYPE = "static" }
            lib: { CPP_FILES = ["lib.cpp"] OUTPUT_TYPE = "static" }
            """)
        self.build()
        self.assertEqual(self.output_of("out/app"), "4\n")

    @needs(*() if SETTINGS.windows else ("clang", "llvm-ar", "ld.lld"))
    def test_steps_as_targets_of_their_own(self):
        self.write("a.c", "int a(void) { return 40; }\n")
        self.write("b.c", "int b(void) { return 2; }\n")
        self.write("main.c", "#include <stdio.h>\nint a(void);\nint b(void);\n"
                             'int main(void) { printf("%d\\n", a() + b()); return 0; }\n')
        self.unit("""
            app: lib whole { C_FILES = ["main.c"] LIB_FILES = [lib.LIBRARY] OBJ_FILES = [whole.OUTPUT] }
            lib: objs_a { OBJ_FILES = objs_a.OBJECTS OUTPUT_TYPE = "static" }
            whole: objs_b { OBJ_FILES = objs_b.OBJECTS OUTPUT_TYPE = "relocatable" }
            objs_a: { C_FILES = ["a.c"] OUTPUT_TYPE = "object" }
            objs_b: { C_FILES = ["b.c"] OUTPUT_TYPE = "object" }
            image: objs_a {
                OBJCOPY_INPUT = objs_a.OBJECTS
                OBJCOPY_FORMAT = "binary"
                OBJCOPY_SECTIONS = [".text"]
            }
            """)
        for compiler in self.compilers:
            with self.subTest(compiler):
                self.build(f'toolchain_name="{compiler}"')
                self.assertEqual(self.output_of("out/app"), "42\n")
                self.build("image", f'toolchain_name="{compiler}"')
                code = (self.dir / "out/image.bin").read_bytes()
                self.assertIn(b"\xb8\x28\x00\x00\x00", code)  # mov $40, %eax


class Scores(ToolchainTest):
    """How well a toolchain fits that is the only one."""

    native, foreign, word = ((CROSS, "x86_64-linux-gnu", "linux") if SETTINGS.windows else
                             ("x86_64-linux-gnu", CROSS, "windows"))

    def score(self, tool, asked, kind="gnu-gcc"):
        self.registry(f'tool {{ tool_type = "{kind}" {tool} }}')
        self.unit('app: { C_FILES = ["a.c"] ' + asked + " }")
        found = re.search(r"Best registered tool: tool, score: (\d+)",
                          self.run_vesk("-v", "2", "-n").out)
        return int(found[1]) if found else None

    def gcc(self, version, triple, default, more=""):
        return (f'toolchain_name = "GCC {version}" toolchain_version = "{version}" '
                f'toolchain_path = P"(/opt/gcc/bin)" toolchain_target = "{triple}" '
                f'toolchain_default = "{default}" {more}')

    def test_by_what_the_target_asks_for(self):
        machines = self.gcc("12.2.0", self.native, "machine")
        other = self.gcc("9.1.0", self.native, "no")
        foreign = self.gcc("12.2.0", self.foreign, "machine", 'toolchain_prefix = "cross-"')
        no = None
        for asked, *scores in (
            ("", 3, 2, no), ("toolchain_version = 12", 5, no, no),
            ('toolchain_version = "9.1"', no, 4, no), ('w = "9" ?toolchain_version = w', 3, 4, no),
            ('w = "7" ?toolchain_version = w', 3, 2, no), ('toolchain_min_version = "10"', 5, no, no),
            ('toolchain_min_version = "9"', 5, 4, no), ('toolchain_name = "gcc"', 5, 4, no),
            ('toolchain_name = "GCC 9.1.0"', no, 4, no), ('toolchain_name = "Clang"', no, no, no),
            ('w = "clang" ?toolchain_name = w', 3, 2, no), ('tool_type = "llvm-clang"', no, no, no),
            ('tool_type = "gnu-gcc"', 5, 4, no), (f'toolchain_target = "{self.word}"', no, no, 6),
            ('toolchain_target = "native"', 5, 4, no),
            (f'w = "{self.foreign}" ?toolchain_target = w', 3, 2, 5),
            (f'TARGET_TRIPLE = "{self.foreign}"', no, no, 5),
            ('toolchain_prefix = "cross-"', no, no, 5),
            ('cmdline = "gcc a.c"', no, no, no), ("NO_TOOL", no, no, no),
        ):
            with self.subTest(asked=asked):
                self.assertEqual([self.score(tool, asked) for tool in (machines, other, foreign)],
                                 scores)

    def test_by_how_it_was_declared(self):
        opt = "C:/opt" if SETTINGS.windows else "/opt"
        by_hand = f'toolchain_path = P"({opt}/gcc/bin)"'
        cross = by_hand + ' toolchain_prefix = "arm-none-eabi-"'
        family = self.gcc("14.0.6", self.native, "family")
        for tool, asked, score in (
            (by_hand, "", 4),
            (by_hand, 'toolchain_version = "14"', 3),  # one whose version is known goes first
            (by_hand, f'toolchain_path = P"({opt}/./gcc/bin)"', 6),
            (cross, "", None), (cross, 'toolchain_target = "arm-none-eabi"', 6),
            (family, "", 2), (family, 'toolchain_name = "GCC"', 5),
        ):
            with self.subTest(tool=tool, asked=asked):
                self.assertEqual(self.score(tool, asked), score)
        # LLVM's compiler is one for every machine.
        self.assertEqual(self.score(family, 'TARGET_TRIPLE = "arm-none-eabi"', "llvm-clang"), 2)


@posix_only("it needs compilers of the system itself")
class Choice(ToolchainTest):
    def setUp(self):
        super().setUp()
        self.write("main.c", "int main(void) { return 0; }\n")
        self.unit('app: { C_FILES = ["main.c"] }')

    def chosen(self, *arguments):
        out = self.run_vesk("-v", "3", "-n", *arguments).out
        lines = [line for line in out.splitlines() if "Registered : " in line]
        return lines[0].split(": ")[-1] if lines else "none"

    @needs("clang", "llvm-ar", "ld.lld")
    def test_among_several(self):
        for asked, tool in (
                ("", "gcc"), ('toolchain_name="clang"', "clang"), ('toolchain_version="12.3"', "none"),
                ('toolchain_min_version="13"', "clang"), ('toolchain_target="windows"', "a_cross"),
                ('TARGET_TRIPLE="aarch64-linux-gnu"', "clang")):
            with self.subTest(asked):
                self.assertEqual(self.chosen(*filter(None, [asked])), tool)

    def test_a_cross_compiler_is_not_taken_by_accident(self):
        self.registry(FOREIGN)
        result = self.run_vesk()
        self.assertEqual(result.status, 1)
        self.assertIn("No tool to build vesk::app", result.err)
        self.unit('all: app lib { NO_TOOL }  app: { C_FILES = ["main.c"] }  lib: app { C_FILES = ["main.c"] }')
        for jobs in ("-j1", "-j4"):
            said = self.run_vesk("-k", jobs, "all").err
            self.assertEqual(said.count("no registered toolchain fits it"), 1, said)
            self.assertIn("  failed: vesk::app\n  failed like vesk::app: vesk::lib\n"
                          "  skipped: vesk::all (needs vesk::app)\n", said)

    @needs(CROSS + "-gcc")
    def test_cross_build(self):
        self.build('toolchain_target="windows"')
        self.assertEqual((self.dir / "out/app.exe").read_bytes()[:2], b"MZ")

    def test_a_broken_declaration(self):
        self.registry('broken { tool_type = "gnu-gcc" }'
                      'lost { tool_type = "gnu-gcc" toolchain_path = P"(/no/where)" }')
        result = self.run_vesk()
        self.assertEqual(result.status, 1)
        self.assertIn("Unable to create Registry tool 'broken' for 'gnu-gcc': GNUMatcher requires "
                      "want variable 'toolchain_path'.", result.err)
        self.assertIn("There is no compiler 'gcc' in '/no/where'", result.err)


@posix_only("it needs compilers of the system itself")
class OwnTools(ToolchainTest):
    def test_programs_and_scripts_decide(self):
        self.remembers = True
        programs = {name: f'#!/bin/sh\nexec {name} "$@"\n' for name in ("gcc", "ld")}
        for name, text in programs.items():
            self.write(f"bin/{name}", text).chmod(0o755)
        self.registry(f'own {{ tool_type = "gnu-gcc" toolchain_path = P"({self.dir}/bin)" }}')
        script = "SECTIONS { .text : { *(.text) } }\n"
        self.write("app.ld", script)
        self.write("a.c", "int a(void) { return 1; }\n")
        self.unit("""
            image: objects { OBJ_FILES = objects.OBJECTS LINKER_SCRIPT = "app.ld" }
            objects: { C_FILES = ["a.c"] OUTPUT_TYPE = "object" }
            """)
        for name, text, ran in (("app.ld", script, ["gcc", "ld"]), ("app.ld", script + "\n", ["ld"]),
                                ("bin/ld", programs["ld"] + "\n", ["ld"]),
                                ("bin/gcc", programs["gcc"] + "\n", ["gcc"]), ("app.ld", script, ["ld"])):
            self.write(name, text)
            self.assertEqual(re.findall(r"/bin/(\w+)'? -", self.build()), ran, name)


@posix_only("it names compilers of the system itself")
class DryRuns(ToolchainTest):
    """Commands with everything that a target can say, and what it hands on."""

    def told(self, text, *arguments):
        """What a dry run tells of the target named, programs without their directory."""
        self.unit(text)
        out = self.run_vesk("-n", *arguments).out
        for directory in ("/usr/bin/", "{DIR}/", f"{self.dir}/"):
            out = out.replace(directory, "")
        return [line.split("] ", 1)[1] for line in out.splitlines()
                if line.startswith("[") and not line.endswith(("Visiting target", "Build done"))]

    def test_commands(self):
        sources = "-Iinclude -I/far -isystem vendor"
        self.assertEqual(self.told("""
            all: app so dll lib rel script cpp obj image strip llvm elf { NO_TOOL }
            app: {
                C_FILES = ["src/a.c", "b.inc"] CPP_FILES = "x.cpp" ASM_FILES = "s.s t.S"
                FLAGS = "-g -O2" C_FLAGS = ["-std=c11"] CPP_FLAGS = "-fno-rtti" DEFINES = ["A", "B=1"]
                INCLUDE_DIRS = ["include", P"(/far)"] SYSTEM_INCLUDE_DIRS = "vendor"
                LAUNCHER = "ccache" LINK_FLAGS = "-Wl,-s" LIB_DIRS = "lib"
                LIBS = ["m", "z", "m", "-pthread"] OBJ_FILES = "y.o"
                LIB_FILES = ["x/liba.a", "x/libb.a", "x/liba.a"]
            }
            so: { C_FILES = "a.c" OUTPUT_TYPE = "shared" LIB_FILES = ["out/sub/libx.so", "liby.a"] }
            dll: {
                C_FILES = "a.c" OUTPUT_TYPE = "shared" LIB_FILES = ["out/sub/libx.so", "liby.a"]
                toolchain_target = "windows"
            }
            lib: { OBJ_FILES = ["a.o", "b.o"] OUTPUT_TYPE = "static" AR_FLAGS = "D" }
            rel: { OBJ_FILES = ["a.o", "b.o"] OUTPUT_TYPE = "relocatable" }
            script: { OBJ_FILES = "a.o" LINKER_SCRIPT = "x.ld" LINK_FLAGS = "-N" }
            cpp: { C_FILES = "a.c" LINK_LANGUAGE = "c++" SYSROOT = P"(/sys)" LINKER = "gold" }
            obj: { C_FILES = "a.c" CPP_FILES = [] OUTPUT_TYPE = "Object" }
            image: { OBJCOPY_INPUT = "a.o" OBJCOPY_FORMAT = "binary" OBJCOPY_SECTIONS = ".text .data" }
            strip: { OBJCOPY_INPUT = "out/x" OBJCOPY_FLAGS = ["--strip-debug"] }
            llvm: { C_FILES = "a.c" TARGET_TRIPLE = "x86_64-w64-mingw32" toolchain_name = "clang" }
            elf: { OBJ_FILES = "a.o" OUTPUT_NAME = "app.elf" }
            """), [
            f"ccache gcc -g -O2 -std=c11 -DA -DB=1 {sources} -MMD -MF out/.obj/vesk/app/src/a.c.d"
            " -c src/a.c -o out/.obj/vesk/app/src/a.c.o",
            f"ccache gcc -g -O2 -std=c11 -DA -DB=1 {sources} -x c -MMD -MF out/.obj/vesk/app/b.inc.d"
            " -c b.inc -o out/.obj/vesk/app/b.inc.o",
            f"ccache g++ -g -O2 -fno-rtti -DA -DB=1 {sources} -MMD -MF out/.obj/vesk/app/x.cpp.d"
            " -c x.cpp -o out/.obj/vesk/app/x.cpp.o",
            f"ccache gcc -g -O2 -DA -DB=1 {sources} -c s.s -o out/.obj/vesk/app/s.s.o",
            f"ccache gcc -g -O2 -DA -DB=1 {sources} -MMD -MF out/.obj/vesk/app/t.S.d"
            " -c t.S -o out/.obj/vesk/app/t.S.o",
            "g++ -g -O2 -o out/app out/.obj/vesk/app/src/a.c.o out/.obj/vesk/app/b.inc.o"
            " out/.obj/vesk/app/x.cpp.o out/.obj/vesk/app/s.s.o out/.obj/vesk/app/t.S.o y.o x/libb.a"
            " x/liba.a -Wl,-s -Llib -lz -lm -pthread",
            "gcc -fPIC -MMD -MF out/.obj/vesk/so/a.c.d -c a.c -o out/.obj/vesk/so/a.c.o",
            "gcc -shared -Wl,-soname,libso.so -o out/libso.so out/.obj/vesk/so/a.c.o"
            " '-Wl,-rpath,$ORIGIN/sub' out/sub/libx.so liby.a",
            f"{CROSS}-gcc -MMD -MF out/.obj/vesk/dll/a.c.d -c a.c -o out/.obj/vesk/dll/a.c.o",
            f"{CROSS}-gcc -shared -Wl,--out-implib,out/libdll.dll.a -o out/dll.dll"
            " out/.obj/vesk/dll/a.c.o out/sub/libx.so liby.a",
            "ar rcs D out/liblib.a a.o b.o",
            "ld -r -o out/rel.o a.o b.o",
            "ld -o out/script -T x.ld a.o -N",
            "gcc --sysroot=/sys -MMD -MF out/.obj/vesk/cpp/a.c.d -c a.c -o out/.obj/vesk/cpp/a.c.o",
            "g++ --sysroot=/sys -fuse-ld=gold -o out/cpp out/.obj/vesk/cpp/a.c.o",
            "gcc -MMD -MF out/.obj/vesk/obj/a.c.d -c a.c -o out/.obj/vesk/obj/a.c.o",
            "objcopy -O binary -j .text -j .data a.o out/image.bin",
            "objcopy --strip-debug out/x out/strip",
            f"clang --target={CROSS} -MMD -MF out/.obj/vesk/llvm/a.c.d -c a.c"
            " -o out/.obj/vesk/llvm/a.c.o",
            f"clang --target={CROSS} -fuse-ld=lld -o out/llvm.exe out/.obj/vesk/llvm/a.c.o",
            "g++ -o out/app.elf a.o"])

    def test_outputs(self):
        for body, outputs in (
                ('CPP_FILES = "a.cpp" OUTPUT_TYPE = "static" LIB_FILES = ["libb.a", "libb.a"]'
                 ' LIBS = "m" OUTPUT_NAME = "sub/util"',
                 ['LIB_FILES += [ P"out/sub/libutil.a", P"libb.a" ]', 'LIBRARY = P"out/sub/libutil.a"',
                  'LIBS += [ "m" ]', 'LINK_LANGUAGE = "c++"', 'OUTPUT = P"out/sub/libutil.a"']),
                ('C_FILES = "a.c" OUTPUT_TYPE = "shared" LIB_FILES = ["x.so", "y.a"] LIBS = "m"',
                 ['LIB_FILES += [ P"out/libt.so", P"x.so" ]', 'LIBRARY = P"out/libt.so"',
                  'OUTPUT = P"out/libt.so"']),
                ('C_FILES = "a.c" OUTPUT_TYPE = "shared" toolchain_target = "windows"',
                 ['LIB_FILES += [ P"out/libt.dll.a" ]', 'LIBRARY = P"out/libt.dll.a"',
                  'OUTPUT = P"out/t.dll"']),
                ('C_FILES = "a.c" OUTPUT_TYPE = "object" OBJ_FILES = "b.o"',
                 ['OBJ_FILES += [ P"out/.obj/vesk/t/a.c.o", P"b.o" ]'])):
            with self.subTest(body):
                told = self.told("t: { " + body + " }", "-v", "3")
                told = told[told.index("Output context:") + 2:-2]
                self.assertEqual([line for line in told
                                  if not line.startswith(("DEPFILES", "OBJECTS"))], outputs)

    def test_what_cannot_be_built(self):
        for body, fault in (
                ("C_FILES = []", "There is nothing to make 'out/t' from: C_FILES, CPP_FILES, ASM_FILES "
                                 "and OBJ_FILES name no file."),
                ('C_FILES = "a.c" OUTPUT_TYPE = "statik"', "OUTPUT_TYPE 'statik' is not one of executable,"
                 " static, shared, object, relocatable.\n  did you mean 'static'?"),
                ('OBJCOPY_INPUT = "a b"', "OBJCOPY_INPUT must name one file; it names 2."),
                ('OBJCOPY_INPUT = "out/t"', "'out/t' would be overwritten by what is made of it. Give "
                                            "OUTPUT_NAME another name.")):
            with self.subTest(body):
                self.unit("t: { " + body + " }")
                self.assertIn(f"Error: {fault}\n", self.error())


@posix_only("it needs compilers of the system itself")
class Detection(ToolchainTest):
    tools = 'mine { tool_type = "gnu-gcc" toolchain_path = P"(/opt/mine)" }'

    def program(self, name, text):
        return self.script(self.dir / name, text)

    def test_what_is_a_compiler_and_what_is_not(self):
        gcc = """
            case "$1" in
            -dumpfullversion) echo 11.3.0 ;;
            -dumpmachine) echo {} ;;
            --version) echo "gcc (Vendor) 11.3.0" ;;
            esac
            """
        clang = """
            case "$1" in
            -dumpversion) echo 15.0.1 ;;
            -dumpmachine) echo x86_64-linux-gnu ;;
            -print-target-triple) echo x86_64-pc-linux-gnu ;;
            --version) echo "Vendor clang version 15.0.1-2" ;;
            *) exit 1 ;;
            esac
            """
        self.program("bin/gcc-11", gcc.format("x86_64-linux-gnu"))
        os.symlink("gcc-11", self.dir / "bin/gcc")
        self.program("bin/arm-none-eabi-gcc", gcc.format("arm-none-eabi"))
        self.program("bin/gcc-9", "exit 1\n")
        self.program("bin/ccache", gcc.format("x86_64-linux-gnu"))
        self.program("posing/gcc", clang)
        self.program("posing/clang", clang)
        (self.dir / "local").mkdir()
        os.symlink(self.dir / "bin/ccache", self.dir / "local/gcc")
        path = ":".join(str(self.dir / directory) for directory in ("local", "posing", "bin"))
        env = {"PATH": path + ":" + str(self.base / "tools")}
        (self.base / "tools").mkdir()
        os.symlink("/bin/sh", self.base / "tools/sh")

        expected = ["Registered toolchain 'gcc-11-3-0-x86_64-linux-gnu'.",
                    "Registered toolchain 'gcc-11-3-0-arm-none-eabi'.",
                    "Registered toolchain 'clang-15-0-1-x86_64-pc-linux-gnu'."]
        registries = []
        for _ in range(2):
            out = self.run_vesk("--find-compilers", env=env).out
            for line in expected:
                self.assertIn(line + "\n", out)
            found = [line for line in out.splitlines() if line.startswith("Registered")]
            # LLVM of this machine itself may be found in its own place, besides.
            self.assertEqual([line for line in found if "gcc" in line], expected[:2])
            self.assertEqual(found[:2], expected[:2], "GCC comes first")
            registries.append((self.base / "data/vesk/.vesk_registry.txt").read_text())
        self.assertEqual(registries[0], registries[1])
        self.assertIn('toolchain_path = P"(/opt/mine)"', registries[0])

    @needs("gcc", "clang")
    def test_what_is_found_builds(self):
        self.write("main.c", "int main(void) { return 0; }\n")
        self.unit('app: { C_FILES = ["main.c"] }')
        self.registry("")
        self.assertIn("Registered toolchain 'gcc-", self.build("--find-compilers"))
        self.assertIn("/gcc ", self.build())


class NamesOfOtherTools(GnuTest):
    def test_they_are_warned_of(self):
        self.write("main.c", "int main(void) { return 0; }\n")
        self.unit("""
            app: {
                C_FILES = ["main.c"]
                cflags = "-O2"
                LDFLAGS = "-s"
                INCLUDES = "include"
                LIBRARIES = mine
                mine = "m"
                LIBS = LIBRARIES
            }
            """)
        result = self.run_vesk()
        self.assertEqual(result.status, 0, result.err)
        self.assertEqual(result.err, "".join(
            f"[vesk::app] Variable '{name}' (vesk.txt:{line}) has no effect on the target.\n"
            f"  did you mean '{meant}'?\n"
            for name, line, meant in (("cflags", 3, "C_FLAGS"), ("LDFLAGS", 4, "LINK_FLAGS"),
                                      ("INCLUDES", 5, "INCLUDE_DIRS"))))


class Launchers(GnuTest):
    def setUp(self):
        super().setUp()
        self.write("a.c", "int a(void) { return 1; }\n")
        self.write("main.c", "int a(void);\nint main(void) { return a() - 1; }\n")

    def test_it_is_given_the_compilers_command(self):
        log = self.base / "launched"
        record = f'echo "$*" >>{log}'
        if SETTINGS.windows:
            launcher = self.bridge(self.bin / "launch",
                                   f"sh -c '{record}; shift 2; exec {CROSS}-gcc \"$@\"' sh")
        else:
            launcher = self.script(self.dir / "launch", f'{record}; shift; exec "$@"\n')
        self.unit(f"""
            app: {{ C_FILES = ["*.c"] LAUNCHER = [P"({on_system(launcher)})", "x y"] }}
            """)
        self.build()
        self.assertEqual(self.output_of("out/app"), "")
        calls = log.read_text().splitlines()
        for call in calls:
            self.assertRegex(call, r"^x y .*/gcc(\.exe)? -MMD ")
        self.assertEqual(sorted(self.compiled("\n".join(calls))), ["a.c", "main.c"])

    @posix_only("it is the system's own ccache")
    @needs("ccache")
    def test_ccache(self):
        self.unit('app: { C_FILES = ["*.c"] LAUNCHER = "ccache" }')
        env = {"CCACHE_DIR": str(self.base / "ccache")}
        self.build(env=env)
        shutil.rmtree(self.dir / "out")
        out = self.build(env=env)
        self.assertEqual(self.compiled(out), ["a.c", "main.c"])
        stats = subprocess.run(["ccache", "--print-stats"], capture_output=True, text=True,
                               check=True, env={**os.environ, **env}).stdout
        self.assertIn("direct_cache_hit\t2\n", stats)
        self.assertIn("out/.obj/vesk/app/a.c.d", self.files())


@windows_only("the bridge to the system's compilers is for Wine")
class OnWindows(GnuTest):
    def test_found_and_used(self):
        self.registry("")
        out = self.build("--find-compilers", env={"WINEPATH": on_system(self.bin)})
        self.assertIn("Registered toolchain 'gcc-12-x86_64-w64-mingw32'.", out)
        self.assertIn(f'toolchain_path = P"({{BASE}}/C & tools (x86)/bin)"', self.registry_text())

        self.write("lib/a b.cpp", "#include <string>\nint number() { return 6; }\n")
        self.write("lib/inc/number.h", "int number();\n")
        self.write("main.c", "#include <stdio.h>\n"
                             'int main(void) { printf("%s\\n", TEXT); return 0; }\n')
        self.write("main.cpp", """
            #include <cstdio>
            #include <number.h>
            int main() { std::printf("%d %s\\n", number(), TEXT); }
            """)
        self.unit("""
            program: +lib plain {
                CPP_FILES = ["main.cpp"]
                DEFINES = [R"(TEXT="a & b %PATH% (c) d")"]
                LINK_FLAGS = "-static"
            }
            lib: {
                CPP_FILES = ["lib/*.cpp"]
                OUTPUT_TYPE = "static"
                ^INCLUDE_DIRS += P"(lib/inc)"
            }
            plain: { C_FILES = ["main.c"] DEFINES = [R"(TEXT="plain")"] }
            """)
        self.build()
        self.assertEqual(self.output_of("out/program"), "6 a & b %PATH% (c) d\n")
        self.assertEqual(self.output_of("out/plain"), "plain\n")
        self.assertIn("out/liblib.a", self.files())
