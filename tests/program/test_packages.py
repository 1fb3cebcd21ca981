"""PACKAGES: installed libraries, as the machine's pkg-config knows them."""

import shutil
import subprocess
import time

from harness import ProgramTest, needs, posix_only

TOOL = """
    gcc { tool_type = "gnu-gcc" toolchain_name = "GCC" toolchain_path = P"(/usr/bin)"
          toolchain_target = "x86_64-linux-gnu" toolchain_default = "machine" }
"""
CROSS = "x86_64-w64-mingw32"
UNIT = """
    app: +lib { C_FILES = ["main.c"] }
    lib: { C_FILES = ["lib.c"] OUTPUT_TYPE = "static" PACKAGES = ["answer >= 1.5"] }
"""


@posix_only("pkg-config is the system's")
@needs("pkg-config", "gcc", "ar")
class PackagesTest(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.registry("tools {" + TOOL + "}\n")
        self.install()
        # One that tells when it was called.
        self.calls = self.base / "calls"
        self.counting = self.script(self.base / "bin/pkg-config",
                                    f'echo "$*" >> {self.calls}\nexec /usr/bin/pkg-config "$@"\n')
        self.path = f"{self.base}/bin:/usr/bin:/bin"

    def install(self):
        """The package "answer", which is compiled with what its own package "base" says."""
        self.prefix = self.base / "the prefix"
        self.pc("base", "1", "Cflags: -DBASE=40")
        self.pc("answer", "1.6", "Requires.private: base", f"Cflags: -I{self.escaped}/include",
                f"Libs: -L{self.escaped}/lib -lanswer")
        (self.prefix / "include").mkdir()
        (self.prefix / "lib").mkdir()
        (self.prefix / "include/answer.h").write_text("int more(void);\n")
        source = self.write("more.c", "int more(void) { return 2; }\n")
        subprocess.run(["gcc", "-c", source, "-o", self.base / "more.o"], check=True)
        subprocess.run(["ar", "rcs", self.prefix / "lib/libanswer.a", self.base / "more.o"],
                       check=True)
        self.write("lib.c", "#include <answer.h>\nint answer(void) { return BASE + more(); }\n")
        self.write("main.c", "#include <stdio.h>\nint answer(void);\n"
                             'int main(void) { printf("%d\\n", answer()); return 0; }\n')
        self.unit(UNIT)

    @property
    def escaped(self):
        return str(self.prefix).replace(" ", "\\ ")

    def pc(self, name, version, *lines, directory="pkgconfig"):
        file = self.prefix / directory / f"{name}.pc"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("\n".join([f"Name: {name}", "Description: of a test", f"Version: {version}",
                                   *lines, ""]))

    def start(self, *arguments, env=None, **options):
        dirs = ":".join(str(self.prefix / name) for name in ("first", "pkgconfig"))
        return super().start(*arguments, env={"PKG_CONFIG_PATH": dirs, "PATH": self.path,
                                              **(env or {})}, **options)

    def asked(self):
        calls = self.calls.read_text().splitlines() if self.calls.exists() else []
        self.calls.unlink(missing_ok=True)
        return calls

    def answer(self):
        return subprocess.run([self.dir / "out/app"], capture_output=True, text=True).stdout

    def test_compiled_linked_and_handed_on(self):
        out = self.build()
        self.assertEqual(self.answer(), "42\n")
        self.assertEqual(self.asked(), ["--variable=pc_path pkg-config", "--cflags answer >= 1.5",
                                        "--libs answer >= 1.5"])
        self.assertIn(f"'-L{self.prefix}/lib' -lanswer", out)
        self.nothing_to_do()
        self.build("-n", "--define=LINK_FLAGS=-static")
        self.assertIn("--static --libs answer >= 1.5", self.asked())

    def settle(self):
        """Builds until a run is repeated, which asks nobody."""
        for _ in range(200):
            self.nothing_to_do()
            if not self.asked():
                return
            time.sleep(0.02)
        self.fail("pkg-config is asked in every run")

    def test_what_changes_the_answer_is_noticed(self):
        self.build()
        for what, change, answer in (
                ("a required package", lambda: self.pc("base", "1", "Cflags: -DBASE=10"), "12\n"),
                ("one that is found earlier",
                 lambda: self.pc("base", "1", "Cflags: -DBASE=20", directory="first"), "22\n"),
                ("one that is not installed yet",
                 lambda: self.pc("base-uninstalled", "1", "Cflags: -DBASE=30",
                                                                  directory="first"), "32\n")):
            with self.subTest(what):
                self.settle()
                change()
                self.build()
                self.assertEqual(self.answer(), answer)
        with self.subTest("a library"):
            self.settle()
            shutil.copy(self.dir / "out/liblib.a", self.prefix / "lib/libanswer.a")
            self.assertIn("more", self.failure())
        with self.subTest("the environment"):
            self.assertIn("'answer >= 1.5' is missing", self.failure(env={"PKG_CONFIG_PATH": ""}))

    def test_what_is_not_there(self):
        def refused(packages, *parts, **options):
            self.unit(f'app: {{ C_FILES = ["main.c"] PACKAGES = {packages} }}')
            error = self.error(**options)
            for part in (*parts, "\n  in target vesk::app ({DIR}/vesk.txt:1)\n"):
                self.assertIn(part, error)

        for package, said in (("no-such-thing", "not found"), ("answer > 2", "1.6")):
            refused(f'["answer", "{package}"]', f"Error: The package '{package}' is missing.\n",
                    "\n  pkg-config: ", said, "\n  install its development files (")
        for text, named in (('["a;b"]', "a;b"), ('["answer >="]', "answer >= "),
                            ('["--libs"]', "--libs")):
            refused(text, f"""Error: PACKAGES = "{text[2:-2]}": '{named}' is not a package.\n""",
                    '  write names, with a version if need be: PACKAGES = ["zlib", "gtk4 >= 4.8"]\n')
        (self.base / "tools").mkdir()
        for program in ("gcc", "ar"):
            (self.base / "tools" / program).symlink_to(f"/usr/bin/{program}")
        self.registry("tools {" + TOOL.replace("/usr/bin", f"{self.base}/tools") + "}\n")
        refused('["answer"]', "Error: PACKAGES needs pkg-config, which is not in PATH.\n"
                "  install it: ", env={"PATH": str(self.base / "tools")})

    def test_for_another_machine(self):
        gcc = self.script(self.base / "cross" / f"{CROSS}-gcc", "exit 1\n")
        self.registry(f"""
            tools {{ cross {{ tool_type = "gnu-gcc" toolchain_path = P"({gcc.parent})"
                              toolchain_prefix = "{CROSS}-" toolchain_target = "{CROSS}" }} }}
            """)
        self.unit('app: { C_FILES = ["main.c"] PACKAGES = ["answer"] toolchain_target = "windows" }')
        self.assertIn(f"PACKAGES needs a pkg-config for {CROSS}: '{CROSS}-pkg-config'",
                      self.failure("-n"))
        self.assertIn("-lanswer", self.build("-n", env={"PKG_CONFIG_LIBDIR": "/none"}))
        self.script(gcc.parent / f"{CROSS}-pkg-config", "echo -D$1\n")
        self.assertIn("-D--cflags -MMD", self.build("-n"))
