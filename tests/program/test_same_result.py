"""A build with many jobs leaves the files and the cache that one after the other leaves."""

import re
import shutil

from harness import EXAMPLES, SETTINGS, ProgramTest, needs, posix_only, wait_until
from test_toolchains import CROSS, GnuTest

ROOT = EXAMPLES.parent
STAND_INS = ROOT / "tests/program/children/compiler"


class Commands(ProgramTest):
    """Targets of the static tools, which overlap because they are told to."""

    def setUp(self):
        super().setUp()
        self.write_unit()
        self.write("hand", "by hand")

    def write_unit(self, held=None):
        """The target `held` waits for a file `go`, and fails then."""
        copies = "".join(f"""
            {name}: {needs} {{ FROM = P"({source})" ^TO = P"({made})"
                cmdline = "{'child meet held go -- 3 && ' * (name == held)}child copy ${{FROM}} ${{TO}}" }}
            """ for name, needs, source, made in (("c0", "first", "first", "t0"),
                                                  ("c1", "first", "first", "t1"),
                                                  ("c2", "c0", "t0", "t2"), ("c3", "", "hand", "t3")))
        self.unit("""
            all: c0 c1 c2 c3 last { NO_TOOL = 1 }
            first: { WRITE_FILE FILENAME = P"(first)" TEXT = "one" ^MADE = P"(first)" }
            last: c1 c2 c3 { ^N = "end" cmdline = "child copy t2 last" }
            """ + copies)

    def built(self, *arguments):
        return lambda jobs: self.printed(jobs, 'SIDE_BY_SIDE="yes"', "all", *arguments)

    def test_built_and_built_again(self):
        self.same_with_many_jobs(
            self.built("-o", "outputs"),
            self.built(),
            lambda jobs: (self.write("hand", "another"), self.built("-o", "outputs")(jobs)),
            lambda jobs: ((self.dir / "t0").unlink(), self.built()(jobs)),
            self.built("--rebuild"))

    def test_a_failure_in_the_middle(self):
        def fails(jobs):
            result = self.run_vesk(jobs, "-k", 'SIDE_BY_SIDE="yes"', "all")
            self.assertEqual(result.status, 1)

        def mended(jobs):
            self.write("hand", "by hand")
            self.built()(jobs)

        (self.dir / "hand").unlink()
        self.same_with_many_jobs(fails, mended)

    @posix_only("killed processes are the same there, but cannot be killed from here")
    def test_killed(self):
        def killed_and_finished(jobs):
            for held in ("c0", "c1", "c2", "c3"):
                self.write_unit(held)
                process = self.start(jobs, 'SIDE_BY_SIDE="yes"', "all")
                wait_until(lambda: "held" in self.files())
                self.kill(process)
                self.write("go", "")
                self.wait_for_orphans()
                (self.dir / "held").unlink()
                (self.dir / "go").unlink()
            self.write_unit()
            self.built()(jobs)

        self.same_with_many_jobs(killed_and_finished)


class Examples(GnuTest):
    """Those that need no further programs; the others' own tests do the same."""

    def same(self, name, *arguments, printed=""):
        static = ['LINK_FLAGS="-static -Wl,--no-insert-timestamp"'] if SETTINGS.windows else []
        self.take_example(name)

        def build(jobs, *more):
            return self.build(jobs, *arguments, *more, *static)

        def whole(jobs, *more):
            self.assertIn(printed, build(jobs, *more))

        def edited(jobs):
            source = min(self.dir.glob("src/*.c*"))
            source.write_text(source.read_text() + "int edited;\n")
            build(jobs)

        self.same_with_many_jobs(whole, edited, lambda jobs: whole(jobs, "--rebuild"))

    def test_c_program(self):
        self.same("c_program", "run", printed="\n3 words, 11 letters\n")

    def test_cpp_library(self):
        self.same("cpp_library", "test", printed="\nall tests passed\n")

    def test_generated_code(self):
        self.same("generated_code", "run", printed="\n2 3 5 7 11 13 17 19 23 29 \n")

    @posix_only("it needs a C compiler on the system itself")
    def test_demo(self):
        self.same("demo", 'SIDE_BY_SIDE="yes"', printed="\nHello, world! (demo 1.0, made by vesk)\n")

    @posix_only("there it is no cross build")
    @needs(CROSS + "-gcc")
    def test_cross_build(self):
        self.same("cross_build", "windows")
        self.assertEqual((self.dir / "out/windows/hello.exe").read_bytes()[:2], b"MZ")
        self.build()
        self.assertEqual(self.output_of("out/hello"), "Hello from here\n")

    def test_workspace(self):
        self.take_example("workspace")
        for project in ("lib", "tool"):
            self.build("-r", cwd=self.dir / project)
        self.same_with_many_jobs(
            lambda jobs: self.build(jobs, 'SIDE_BY_SIDE="yes"', cwd=self.dir / "suite"),
            lambda jobs: self.build(jobs, 'SIDE_BY_SIDE="yes"', "friendly", cwd=self.dir / "tool"))


@posix_only("stand-ins are scripts of the system itself")
class Vesk(ProgramTest):
    """vesk's own unit files, with stand-ins for the compiler and the generator."""

    def setUp(self):
        super().setUp()
        for directory in ("src", "units", "tests/program/children", "cmake"):
            shutil.copytree(ROOT / directory, self.dir / directory, ignore=shutil.ignore_patterns(
                "out", ".vesk_cache*", "__pycache__"))
        tools = self.base / "tools"
        shutil.copytree(STAND_INS, tools)
        (tools / "ar").symlink_to(shutil.which("ar"))
        (tools / "gcc").symlink_to("g++")
        # Scripts of cmake change files in place, or make the one that they are told as OUT.
        (tools / "cmake").write_text("#!/bin/sh\nfor each; do\n"
                                     "case $each in -DOUT=*) : > \"${each#-DOUT=}\";; esac\n"
                                     "done\n")
        (tools / "cmake").chmod(0o755)
        self.compilers(tools)
        self.path = f"{tools}:/usr/bin:/bin"

    def compilers(self, directory):
        self.registry(f"""
            tools {{ gcc {{ tool_type = "gnu-gcc" toolchain_path = P"({directory})"
                          toolchain_name = "GCC" toolchain_default = "machine" }} }}
            """)

    def start(self, *arguments, **options):
        options.update(cwd=self.dir / "units", env={"PATH": self.path})
        return super().start(*arguments, **options)

    def sources(self):
        return sorted(path.relative_to(self.dir).as_posix() for path in self.dir.glob("src/**/*.cpp")
                      if "windows" not in path.parts)

    def compiled(self, out):
        return sorted(re.findall(r" -c \S*?/(src/\S+\.cpp)\b", out))

    def test_built_edited_and_built_again(self):
        def edit(name):
            path = self.dir / "src" / name
            path.write_text(path.read_text() + "// edited\n")

        def everything(jobs):
            out = self.build(jobs, "--compile-commands=db.json", "-o", "outputs")
            self.assertEqual(self.compiled(out), self.sources())

        def one_source(jobs):
            edit("types/context/context.cpp")
            self.assertEqual(self.compiled(self.build(jobs)), ["src/types/context/context.cpp"])

        def one_header(jobs):
            edit("types/context/context.h")
            out = self.build(jobs, "--compile-commands=db.json")
            self.assertIn("src/types/context/merging.cpp", self.compiled(out))
            self.assertNotIn("src/driver/driver.cpp", self.compiled(out))

        self.same_with_many_jobs(everything, self.nothing_to_do, one_source, one_header,
                                 self.nothing_to_do)

    def test_killed(self):
        def killed(objects, jobs):
            process = self.start(jobs, "types")
            wait_until(lambda: len(list((self.dir / "units").rglob("*.o"))) >= objects)
            self.kill(process)
            self.wait_for_orphans()

        def whole(jobs):
            for objects in () if jobs == "-j1" else (1, 10, 30):
                killed(objects, jobs)
            self.build(jobs, "types")
            self.nothing_to_do(jobs, "types")

        self.same_with_many_jobs(whole)

    @needs("g++", "ar", "antlr4")
    def test_with_the_real_compiler_it_would_build_every_source(self):
        self.compilers("/usr/bin")
        self.path = None
        self.assertEqual(self.compiled(self.build("-n", "vesk")), self.sources())
        self.assertIn("children/powershell.cpp", self.build("-n", "children"))
