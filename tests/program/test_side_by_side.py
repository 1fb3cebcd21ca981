"""Targets that are built while others are: the result is that of one after the other."""

import signal

from harness import ProgramTest, dedented, posix_only, wait_until
from test_toolchains import NATIVE, ToolchainTest

WHOLE = 'SIDE_BY_SIDE="yes"'


class CommandTargets(ProgramTest):
    remembers = True

    def test_they_overlap_where_they_are_told_to(self):
        """Each waits for the file of the other; their environments and directories are their own."""
        self.unit("""
            all: a b { NO_TOOL = 1 }
            a: { SIDE_BY_SIDE = "Yes"  ENV = { N = "of a" }  cwd = "x"
                 cmdline = "child meet ../a ../b -- 0 && child env N && child cwd" }
            b: { SIDE_BY_SIDE = "yes"  ENV = { N = "of b" }  cwd = "y"
                 cmdline = "child meet ../b ../a -- 0 && child env N && child cwd" }
            """)
        (self.dir / "x").mkdir()
        (self.dir / "y").mkdir()
        lines = self.printed("-j2", "all").split()
        self.assertIn(lines, (["N=of", "a", "x", "N=of", "b", "y"],
                              ["N=of", "b", "y", "N=of", "a", "x"]))
        result = self.run_vesk("-j2", "all")
        self.assertEqual(result.out.count("Starting build job"), 0, result.out)

    def test_order_by_dependency_and_path(self):
        """`c` needs `b`'s file by its path alone; `d` writes what `e` reads."""
        self.unit("""
            all: a c b e { NO_TOOL = 1 }
            a: { ^OUT = P"(a.txt)"  cmdline = "child touch ${OUT}" }
            b: a { ^OUT = P"(b.txt)"  from = a.OUT  cmdline = "child copy ${from} ${OUT}" }
            c: b { ^OUT = P"(c.txt)"  from = P"(b.txt)"  cmdline = "child copy ${from} ${OUT}" }
            d: c { WRITE_FILE  FILENAME = P"(d.txt)"  TEXT = "written" }
            e: d { ^OUT = P"(e.txt)"  from = d.FILE  cmdline = "child copy ${from} ${OUT}" }
            """)
        for change in (None, "a.txt", "d.txt", "e.txt"):
            if change:
                (self.dir / change).unlink()
            self.printed("-j8", WHOLE, "all")
            contents = {name: self.read(name).split()[0] for name in self.files()}
            del contents["vesk.txt"]
            self.assertEqual({name: text.split("/")[-1].split("\\")[-1]
                              for name, text in contents.items()},
                             {"a.txt": "a.txt", "b.txt": "a.txt", "c.txt": "a.txt",
                              "d.txt": "written", "e.txt": "written"}, change)
            self.nothing_to_do("-j8", WHOLE, "all")

    def test_one_file_has_one_maker(self):
        self.unit("""
            all: a b { NO_TOOL = 1 }
            a: { ^OUT = P"(same.txt)"  cmdline = "child touch ${OUT}" }
            b: { ^OUT = P"(same.txt)"  cmdline = "child touch ${OUT}" }
            """)
        result = self.run_vesk("-j4", WHOLE, "all")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err, dedented("""
            Error: '{DIR}/same.txt' is made by two targets: vesk::a and vesk::b.
              in target vesk::b ({DIR}/vesk.txt:3)
            """))

    def test_a_failure_lets_the_others_end_and_begins_nothing(self):
        """`bad` fails when `good` runs, and `good` ends after that."""
        self.unit("""
            all: after good bad { NO_TOOL = 1 }
            after: good bad { cmdline = "child touch never" }
            good: { ^OUT = P"(g)"  cmdline = "child meet g b" }
            bad: { cmdline = "child meet b g -- 3" }
            """)
        result = self.run_vesk("-j2", WHOLE, "all")
        self.assertTrue(result.err.startswith(dedented("""
            [vesk::bad] Command ended with status 3: child meet b g -- 3
            [vesk::bad] Build of bad failed. Exiting..
            Error: Build failed.
              failed: vesk::bad
            """)), result.err)
        self.assertEqual((result.status, self.files()), (1, ["b", "g", "vesk.txt"]))
        self.nothing_to_do("-j1", WHOLE, "good")

    def test_keep_going_leaves_out_what_needs_the_failed_target(self):
        self.unit("""
            all: needs bad other { NO_TOOL = 1 }
            bad: { cmdline = "child exit 3" }
            needs: bad { cmdline = "child touch never" }
            other: { cmdline = "child touch other" }
            """)
        result = self.run_vesk("-j4", "-k", WHOLE, "all")
        self.same(result.err, dedented("""
            [vesk::bad] Command ended with status 3: child exit 3
            [vesk::bad] Build of bad failed. Exiting..
            Error: Build failed.
              failed: vesk::bad
              skipped: vesk::needs (needs vesk::bad), vesk::all (needs vesk::needs)
              1 target built, 0 up to date, in {*}
            """), "standard error")
        self.assertEqual((result.status, self.files()), (1, ["other", "vesk.txt"]))

    def test_what_commands_write_stays_together(self):
        count = 12
        self.unit(f"all: {' '.join(f't{n}' for n in range(count))} {{ NO_TOOL = 1 }}\n" + "".join(
            f't{n}: {{ cmdline = "child print {n}a && child print {n}b" }}\n'
            for n in range(count)))
        result = self.run_vesk("-j6", WHOLE, "all", merged=True)
        for n in range(count):
            self.assertIn(f"[vesk::t{n}] child print {n}a && child print {n}b\n{n}a\n{n}b\n",
                          result.out)

    def test_a_list_can_be_limited(self):
        """All of a list start together: with a limit the first of two would wait for ever."""
        self.unit("""
            t: { cmdline = ["child touch a", "child meet b a", "child meet c b"] }
            """)
        for limit in ("--max-commands=1", "--max-commands=2"):
            for jobs in ("-j1", "-j4"):
                self.printed(limit, jobs, WHOLE, "t", "--rebuild")

    @posix_only("a program under the emulator gets no signals")
    def test_interruption(self):
        self.unit("""
            all: done a b after { NO_TOOL = 1 }
            done: { ^OUT = P"(done)"  cmdline = "child touch ${OUT}" }
            a: done { cmdline = "child linger ${PROJECT_ROOT}/in_a" }
            b: done { cmdline = "child linger ${PROJECT_ROOT}/in_b" }
            after: a { cmdline = "child touch never" }
            """)
        process = self.start("-j4", WHOLE, "all")
        wait_until(lambda: {"in_a", "in_b"} <= set(self.files()))
        process.send_signal(signal.SIGINT)
        err = self.plain(process.communicate(timeout=60)[1])
        self.assertEqual(process.returncode, 130, err)
        self.assertTrue(err.endswith("Interrupted.\n"), err)
        self.assertNotIn("never", self.files())
        self.nothing_to_do(WHOLE, "done")


@posix_only("it needs the compilers of the system itself")
class Toolchains(ToolchainTest):
    remembers = True
    tools = NATIVE

    def library(self, name, text, extra=""):
        self.write(f"src/{name}.c", text)
        return (f'{name}: {extra} {{ OUTPUT_TYPE = "static" C_FILES = ["src/{name}.c"] '
                f'INCLUDE_DIRS = ["src", "gen"] }}\n')

    def test_libraries_compile_at_the_same_time(self):
        """Each compiler waits until the other one has begun, also of the library above."""
        self.write("src/main.c", "int one(void); int main(void) { return one(); }\n")
        self.unit(self.library("one", "int two(void); int one(void) { return two(); }\n", "+two")
                  .replace("OUTPUT_TYPE", 'LAUNCHER = "child meet one two -- 0;" OUTPUT_TYPE') +
                  self.library("two", "int two(void) { return 0; }\n")
                  .replace("OUTPUT_TYPE", 'LAUNCHER = "child meet two one -- 0;" OUTPUT_TYPE') +
                  'app: +one { C_FILES = ["src/main.c"] }\n')
        self.build("-j2", "app")
        self.assertEqual(self.output_of("out/app"), "")
        self.nothing_to_do("-j2", "app")

    def test_no_more_compilers_than_asked_for(self):
        """Each notes how many there are, itself among them, and stays for a moment."""
        launcher = self.script(self.base / "launch", f"""
            cd '{self.base}' && touch running/$$ && ls running | wc -l >>counts
            sleep 0.05
            rm running/$$
            """)
        (self.base / "running").mkdir()
        for name in ("app/a", "app/b", "app/c", "app/d", "lib/e", "lib/f", "lib/g"):
            self.write(f"{name}.c", f"int {name[-1]};\n")
        self.write("app/main.c", "int main(void) { return 0; }\n")
        self.unit(f"""
            app: +lib {{ C_FILES = ["app/*.c"] LAUNCHER = "sh {launcher};" }}
            lib: {{ C_FILES = ["lib/*.c"] LAUNCHER = "sh {launcher};" OUTPUT_TYPE = "static" }}
            """)
        for jobs in (1, 3):
            self.build(f"-j{jobs}", "app", "--rebuild")
            counts = list(map(int, (self.base / "counts").read_text().split()))
            (self.base / "counts").unlink()
            self.assertEqual(len(counts), 8)
            self.assertLessEqual(max(counts), jobs)

    def test_generated_header(self):
        """Made by a program that is built first, read by a library and by the program above it."""
        self.write("src/gen.c", """
            #include <stdio.h>
            int main(int c, char** v) { FILE* f = fopen(v[1], "w");
                fprintf(f, "#define N %s\\n", v[2]); return fclose(f); }
            """)
        self.write("src/main.c", '#include <made.h>\nint lib(void); '
                                 'int main(void) { return lib() - N; }\n')
        (self.dir / "gen").mkdir()
        self.unit('''
            gen: { C_FILES = ["src/gen.c"] }
            header: gen { ^FILE = P"(gen/made.h)"  q = ascii[34]  n ?= 7
                cmdline = "${q}${gen.OUTPUT}${q} ${q}${FILE}${q} ${n}" }
            app: +lib { C_FILES = ["src/main.c"]  INCLUDE_DIRS = ["gen"] }
            ''' + self.library("lib", '#include "made.h"\nint lib(void) { return N; }\n', "header"))
        for number in ("7", "7", "8"):
            for jobs in ("-j8", "-j2"):
                out = self.build(jobs, WHOLE, f'n="{number}"', "app")
                self.assertEqual(self.output_of("out/app"), "")
        self.assertNotIn("Starting build job", out)

    def test_a_library_that_is_found_by_its_name(self):
        """Only LIBS and LIB_DIRS lead to it."""
        self.write("src/main.c", "int one(void); int main(void) { return one(); }\n")
        self.unit('all: one app { NO_TOOL = 1 }\n' +
                  self.library("one", "int one(void) { return 0; }\n") +
                  'app: { C_FILES = ["src/main.c"] LIB_DIRS = ["out"] LIBS = ["one"] }\n')
        self.build("-j4", "all")
        self.nothing_to_do("-j1", "all")
        self.write("src/one.c", "int one(void) { return 0; } int more;\n")
        self.assertIn("-o out/app", self.build("-j4", "all"))

    def test_a_failed_compiler(self):
        self.unit('all: bad good app { NO_TOOL = 1 }\n' +
                  self.library("bad", "int bad(void) { return x; }\n") +
                  self.library("good", "int good(void) { return 1; }\n") +
                  'app: +bad { C_FILES = ["src/main.c"] }\n')
        self.write("src/main.c", "int main(void) { return 0; }\n")
        result = self.run_vesk("-j2", "-k", "all")
        self.assertEqual(result.status, 1)
        self.assertRegex(result.err, r"error: .x. undeclared")
        self.assertEqual(result.err.count("Build of"), 1, result.err)
        self.assertIn("Error: Build failed.\n  failed: vesk::bad\n", result.err)
        self.assertIn("out/libgood.a", self.files())
        self.assertNotIn("out/app", self.files())
