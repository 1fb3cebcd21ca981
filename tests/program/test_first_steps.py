"""The first minutes with vesk: a first unit file, and the toolchains of the machine."""

import subprocess

from harness import ProgramTest, needs, on_system, posix_only

TOOL = """
    gcc { tool_type = "gnu-gcc" toolchain_name = "GCC" toolchain_path = P"(/usr/bin)"
          toolchain_target = "x86_64-linux-gnu" toolchain_default = "machine" }
"""
MAIN = "int main(void) { return 0; }\n"


class FirstUnit(ProgramTest):
    def start(self, *arguments, env=None, **options):
        return super().start(*arguments, env={"APPDATA": on_system(self.base / "data"),
                                              **(env or {})}, **options)

    def setUp(self):
        super().setUp()
        self.dir = self.base / "1st app"
        self.dir.mkdir()

    @posix_only("the compilers are the system's")
    @needs("gcc", "g++", "ar")
    def test_in_an_empty_directory(self):
        self.registry("tools {" + TOOL + "}\n")
        for kind, program, prints in (("", "_1st_app", "Hello\n"), ("=c", "_1st_app", "Hello\n"),
                                      ("=C++", "_1st_app", "Hello\n"), ("=lib", "example", "42\n")):
            with self.subTest(kind):
                self.dir = self.base / f"kind{kind}" / "1st app"
                self.dir.mkdir(parents=True)
                self.build("--init" + kind)
                self.build()
                out = subprocess.run([self.dir / "out" / program], capture_output=True, text=True)
                self.assertEqual(out.stdout, prints)
        self.dir = self.base / "with a test"
        for name in ("test/number-1.c", "app.c"):
            self.write(name, MAIN)
        self.build("--init")
        self.assertIn("1 test: 1 passed", self.build("--test"))

    def test_nothing_is_overwritten(self):
        self.unit("mine")
        self.check_error("--init", err="""
            Error: '{DIR}/vesk.txt' is there already; --init overwrites nothing.
              edit it, or move it away and try again
            """)
        self.assertEqual((self.read("vesk.txt"), self.files()), ("mine", ["vesk.txt"]))
        (self.dir / "vesk.txt").unlink()
        self.write("include/_1st_app.h", "mine")
        self.assertIn("_1st_app.h' is there already", self.failure("--init=lib"))
        self.assertEqual(self.files(), ["include/_1st_app.h"])
        self.assertIn("write --init, --init=c, --init=c++ or --init=lib", self.failure("--init=d"))
        self.write(".vesk_project.txt", 'name p units { main { "other.txt" } }')
        self.assertIn("list the new file there", self.build("--init"))

    def unit_for(self, files, *arguments):
        """The lines of the unit file that is written for these, without comments."""
        for name, text in files.items():
            self.write(name, text)
        self.build(*(arguments or ["--init"]))
        lines = (line.split("//")[0].rstrip() for line in self.read("vesk.txt").splitlines())
        return "\n".join(line for line in lines if line) + "\n"

    def same_unit(self, files, expected, *arguments):
        self.dir = self.base / str(len(list(self.base.iterdir()))) / "app"
        self.dir.mkdir(parents=True)
        self.assertMultiLineEqual(self.unit_for(files, *arguments), expected)

    def test_what_is_a_program(self):
        old = "int main(argc, argv)\n    int argc;\n    char *argv[];\n{ return 0; }\n"
        used = "int used(void) { return 1; }\n"
        self.same_unit({"old.c": old, "table.c": f"{used}#ifdef MAKE_TABLE\n{MAIN}#endif\n",
                        "whole.c": f"#if USE_IT\n{MAIN}#endif\n", "declared.c": "int main(void);\n" + used,
                        "both.c": f"{used}#ifdef _WIN32\n{MAIN}#else\n{MAIN}#endif\n",
                        "brace.c": f"void f(void) {{\n#ifdef A\nif (a) {{\n#else\n{{\n#endif\n}}}}\n{MAIN}"}, """\
all: both brace old whole { NO_TOOL = 1 }
both: +app_common {
    C_FILES = ["both.c"]
}
brace: +app_common {
    C_FILES = ["brace.c"]
}
old: +app_common {
    C_FILES = ["old.c"]
}
whole: +app_common {
    C_FILES = ["whole.c"]
}
app_common: {
    OUTPUT_TYPE = "static"
    C_FILES = ["*.c"]
    EXCLUDE_FILES = ["both.c", "brace.c", "old.c", "whole.c"]
}
""")

    def test_what_the_sources_tell(self):
        self.same_unit({"main.cpp": "#include <cmath>\n" + MAIN, "lib/a.c": "", "lib/in/b.c": "",
                        "build/x.c": MAIN, ".git/y.c": MAIN, "q.cc": ""}, """\
app: {
    C_FILES = ["lib/**/*.c"]
    CPP_FILES = ["*.cpp", "*.cc"]
    LIBS = ["m"]
}
""")
        self.same_unit({
            "src/main.c": MAIN, "src/a.c": '#include "app/a.h"\n#include "near.h"\n',
            "include/app/a.h": "", "src/near.h": "",
            "tools/gen.c": "int main(void);\nstatic int f(void) { return main(); }\n" + MAIN,
            "tests/a_test.c": MAIN,
            # None of these is a program.
            "src/b.c": '// int main() {}\nchar *s = "int main() {"; /*\nint main() {}\n*/\n'
                       "#define X int main() {\n",
        }, """\
all: app gen { NO_TOOL = 1 }
app: +app_common {
    C_FILES = ["src/main.c"]
}
gen: +app_common {
    C_FILES = ["tools/gen.c"]
}
app_common: {
    OUTPUT_TYPE = "static"
    C_FILES = ["src/*.c"]
    EXCLUDE_FILES = ["src/main.c"]
    ^INCLUDE_DIRS += [P"(include)"]
}
a_test: +app_common {
    C_FILES = ["tests/a_test.c"]
}
run_a_test: a_test {
    TEST = "yes"
    cmdline = "${ascii[34]}${a_test.OUTPUT}${ascii[34]}"
}
""")
        self.same_unit({
            "a.c": '#include "config.h"\n#include "part.c"\n', "part.c": "int part;\n",
            "config.h.in": "", "contrib/x/b.c": MAIN, "contrib/x/c.c": '#include "no.h"\n',
            "contrib/inc/no.h": "", "examples/gun.c": MAIN, "examples/rest.c": ""}, """\
app: {
    OUTPUT_TYPE = "static"
    C_FILES = ["*.c"]
    EXCLUDE_FILES = ["part.c"]
}
gun: +app {
    C_FILES = ["examples/gun.c"]
}
""")
        self.assertIn("// Left out: contrib (2 sources), examples without main() (1 source), what "
                      "other sources include (1 source).\n// Missing: config.h, which is made from "
                      "config.h.in", self.read("vesk.txt"))
        self.same_unit({"a.cpp": "namespace n { int main() { return 1; } }\n"}, """\
app: {
    OUTPUT_TYPE = "static"
    CPP_FILES = ["*.cpp"]
}
""", "--init")
        self.same_unit({"a.c": "", "app.c": MAIN}, """\
app_2: +app {
    C_FILES = ["app.c"]
}
app: {
    OUTPUT_TYPE = "static"
    C_FILES = ["*.c"]
    EXCLUDE_FILES = ["app.c"]
}
""", "--init=lib")


@posix_only("the programs are scripts")
class Toolchains(ProgramTest):
    def table(self, *arguments):
        env = {"PATH": f"{self.base}/bin:/usr/bin:/bin"}
        return self.build("--find-compilers", *arguments, env=env)

    def test_what_is_new_and_what_is_gone(self):
        self.script(self.base / "bin/gcc-77",
                    'case "$*" in *version*) echo 77.1.0 ;; *) echo x86_64-linux-gnu ;; esac\n')
        self.registry("""
            tools { ours { tool_type = "gnu-gcc" toolchain_name = "Ours"
                           toolchain_path = P"(/no such/gcc-9)" } }
            """)
        out = self.table()
        self.assertRegex(out, r"(?m)^  new       gcc-")
        self.assertRegex(out, r"(?m)^  gone      ours +Ours +/no such/gcc-9$")
        self.assertIn("\nvesk --remove-gone takes those that are gone out of the registry.\n", out)
        self.assertIn("ours {", self.registry_text())
        self.script(self.base / "bin/gcc-9", "exit 1\n")
        self.registry(f"""
            tools {{ ours {{ tool_type = "gnu-gcc" toolchain_path = P"({self.base}/bin)"
                             toolchain_suffix = "-9" }}
                     away {{ tool_type = "gnu-gcc" toolchain_path = P"({self.base}/bin)"
                             toolchain_suffix = "-8" }} }}
            """)
        self.assertRegex(self.table(), r"(?m)^  gone      away ")
        out = self.table("--remove-gone")
        self.assertRegex(out, r"(?m)^  found     gcc-")
        self.assertRegex(out, r"(?m)^  declared  ours ")
        self.assertIn("Removed toolchain 'away'.\n", out)
        self.assertNotIn("away", self.registry_text())
        self.assertNotIn("away", self.table())
