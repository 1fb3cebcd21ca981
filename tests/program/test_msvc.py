"""Targets for MSVC, built with LLVM's and GNU's programs under the names of Microsoft's, in directories
laid out as Visual Studio and the Windows kits lay out theirs."""

import re
import shutil
import subprocess
import sys

import test_toolchains
from harness import EXAMPLES, HANGS, SETTINGS, alone, needs, on_system, posix_only, windows_only

STAND_IN = EXAMPLES.parent / "tests/program/children/msvc/standin.py"
LLVM = "/usr/lib/llvm-14/bin/"
needs_llvm = needs(LLVM + "clang-cl", LLVM + "lld-link", LLVM + "llvm-rc")
ENDING = ".exe" if SETTINGS.windows else ""
PROGRAMS = "Program Files (x86)"
STUDIO = PROGRAMS + "/Microsoft Visual Studio/"
KITS = PROGRAMS + "/Windows Kits/10"
KIT = "10.0.22621.0"
FREESTANDING = 'SUBSYSTEM = "console" ENTRY = "start" LINK_FLAGS = "/nodefaultlib"'


class MsvcTest(test_toolchains.ToolchainTest):
    tools = ""

    def setUp(self):
        super().setUp()
        self.log = self.base / "log"
        self.env = {"APPDATA": on_system(self.base / "data"), "VESK_TEST_LOG": str(self.log),
                    "ProgramFiles(x86)": on_system(self.base / PROGRAMS),
                    "ProgramFiles": on_system(self.base / "none"), "ProgramW6432": ""}

    def place(self, name, content=""):
        """A file beside the test's own directory."""
        path = self.base / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content)
        return path

    def program(self, directory, name):
        """A stand-in under the name."""
        if SETTINGS.windows:
            self.bridge(self.base / directory / name, f"'{sys.executable}' '{STAND_IN}' {name}")
        else:
            self.script(self.base / directory / name,
                        f"exec '{sys.executable}' '{STAND_IN}' {name} \"$@\"\n")

    def tool_set(self, version, studio="2022/BuildTools", machines=("x64",)):
        directory = f"{STUDIO}{studio}/VC/Tools/MSVC/{version}"
        for machine in machines:
            for name in ("cl", "link", "lib"):
                self.program(f"{directory}/bin/Hostx64/{machine}", name)
        self.place(f"{directory}/include/vcruntime.h", "#define FROM_TOOL_SET 1\n")
        return self.base / directory

    def kit(self, version=KIT, drivers=False):
        self.place(f"{KITS}/Include/{version}/um/windows.h", "#define FROM_SDK 2\n")
        for name in ("rc", "mc", "signtool"):
            self.program(f"{KITS}/bin/{version}/x64", name)
        if drivers:
            self.program(f"{KITS}/bin/{version}/x86", "inf2cat")
            self.place(f"{KITS}/Include/{version}/km/wdm.h", "#define FROM_WDK 4\n")
            self.place(f"{KITS}/Include/wdf/kmdf/1.9/wdf.h")
            self.place(f"{KITS}/Include/wdf/kmdf/1.31/wdf.h", "#define FROM_KMDF 8\n")

    def library(self, directory, *names, code=None):
        """Libraries with this code, or with a function of the first one's name."""
        code = code or f"int {names[0]}(void) {{ return 16; }}\n"
        source = self.place("made/made.c", code)
        subprocess.run([LLVM + "clang-cl", "/c", "made.c"], cwd=source.parent, check=True)
        for name in names:
            (self.base / directory).mkdir(parents=True, exist_ok=True)
            subprocess.run([LLVM + "llvm-lib", f"/out:{self.base / directory}/{name}.lib", "made.obj"],
                           cwd=source.parent, check=True)

    def declare(self, directory, more=""):
        target = "" if SETTINGS.windows else 'toolchain_default = "machine"'
        self.registry(f"""
            msvc {{ tool_type = "msvc" toolchain_path = P"({on_system(directory)})" {target}
                   winsdk_path = P"({on_system(self.base / KITS)})" {more} }}
            """)

    def built(self, *arguments, **options):
        # On Linux it must be asked for, as every compiler for another system.
        asked = [] if SETTINGS.windows else ['toolchain_target="x64"']
        self.log.unlink(missing_ok=True)
        return self.build(*arguments, *asked, env=self.env, **options)

    def calls(self, *names):
        """What the stand-ins were told since the last build, paths below the directory from there."""
        text = self.log.read_text().replace(str(self.dir), "{DIR}") if self.log.exists() else ""
        lines = text.splitlines()
        return sorted(line for line in lines if line.split()[0] in names) if names else lines

    def check_program(self, name, status):
        """A program is one, and where it can be run gives its status."""
        self.assertEqual((self.dir / name).read_bytes()[:2], b"MZ")
        if SETTINGS.windows:
            ended = subprocess.run([*SETTINGS.wine, self.dir / name], timeout=HANGS)
            self.assertEqual(ended.returncode, status)


MESSAGES = """
    MessageIdTypedef=int

    MessageId=0x7
    SymbolicName=MSG_HELLO
    Language=English
    Hello
    .
    """


@needs_llvm
class Programs(MsvcTest):
    def setUp(self):
        super().setUp()
        self.vs = self.tool_set("14.38.33130")
        self.kit()
        self.declare(self.vs)

    @needs("x86_64-w64-mingw32-windmc")
    def test_all_kinds_of_products_together(self):
        self.library(f"{KITS}/Lib/{KIT}/um/x64", "from_kit")
        self.write("area/area.c", "int area(int side) { return side * side; }\n")
        self.write("area/in clude/area.h", "int area(int side);\n")
        self.write("plus.c", "__declspec(dllexport) int plus(int n) { return n + 1; }\n")
        self.write("ä/main.cpp", """
            #include <area.h>
            #include <windows.h>
            #include <vcruntime.h>
            #include "events.h"
            extern "C" int area(int);
            extern "C" __declspec(dllimport) int plus(int);
            extern "C" int from_kit();
            extern "C" int start() {
                return area(SIDE) + plus(MSG_HELLO) + from_kit() + FROM_SDK + FROM_TOOL_SET;
            }
            """.replace("#include <area.h>\n", ""))
        self.write("res/app.rc", '#include "numbers.h"\nNUMBER RCDATA { 1, 2 }\nBLOB RCDATA "b.bin"\n')
        self.write("res/numbers.h", "#define NUMBER 5\n")
        self.write("res/b.bin", b"\0\1\2")
        self.write("events.mc", MESSAGES)
        self.unit(f"""
            unit main
            app: +area +plus {{
                CPP_FILES = ["ä/main.cpp"]
                RC_FILES = ["res/app.rc"]
                MC_FILES = ["events.mc"]
                DEFINES = ["SIDE=3"]
                LIBS = ["m", "from_kit"]
                {FREESTANDING}
                PDB = "yes"
            }}
            area: {{
                C_FILES = ["area/*.c"]
                OUTPUT_TYPE = "static"
                ^INCLUDE_DIRS += P"(area/in clude)"
            }}
            plus: {{ C_FILES = ["plus.c"] OUTPUT_TYPE = "shared" LINK_FLAGS = "/noentry /nodefaultlib" }}
            """)
        out = self.built()
        self.check_program("out/app.exe", 9 + 8 + 16 + 2 + 1)
        for name in ("area.lib", "plus.dll", "plus.lib", "app.pdb"):
            self.assertIn(f"out/{name}", self.files())
        self.assertIn(b"\0\1\2", (self.dir / "out/app.exe").read_bytes())
        self.assertIn("H\0e\0l\0l\0o\0".encode(), (self.dir / "out/app.exe").read_bytes())
        link, = [line for line in self.calls("link") if "app.exe" in line]
        self.assertNotIn("m.lib", link)
        self.assertNotIn("INCLUDE", out)

    def test_a_command_that_is_too_long(self):
        for number in range(36):
            self.write(f"{'s' * 90}/ö{'x' * 80}_{number}.c",
                       f"int f{number}(void) {{ return {number}; }}\n")
        self.write("main.c", "int f35(void);\nint start(void) { return f35(); }\n")
        self.unit(f'app: {{ C_FILES = ["main.c", "s*/*.c"] {FREESTANDING} }}')
        self.built("-j2")
        self.check_program("out/app.exe", 35)
        file, = [name for name in self.files() if name.endswith(".rsp")]
        self.assertEqual((self.dir / file).read_bytes()[:4], b"\xff\xfe/\0")

    def test_resources_alone(self):
        self.write("a.rc", "1 RCDATA { 1 }\n")
        self.write("main.c", "int start(void) { return 3; }\n")
        self.unit(f"""
            app: +res {{ C_FILES = ["main.c"] {FREESTANDING} }}
            res: {{ RC_FILES = ["a.rc"] }}
            dll: {{ RC_FILES = ["a.rc"] OUTPUT_TYPE = "shared" }}
            """)
        self.built()
        self.check_program("out/app.exe", 3)
        self.assertIn("a.rc.res", self.calls("link")[0])
        self.built("dll")
        self.assertIn("out/dll.dll", self.files())

    def test_an_error_is_the_compilers_own(self):
        self.write("bad.c", "int start(void) { return missing; }\n")
        self.unit(f'app: {{ C_FILES = ["bad.c"] {FREESTANDING} }}')
        asked = [] if SETTINGS.windows else ['toolchain_target="x64"']
        result = self.run_vesk(*asked, env=self.env)
        self.assertEqual(result.status, 1)
        self.assertIn("bad.c(1,26): error:", result.err)


@needs_llvm
@posix_only("pkg-config is the system's")
@needs("pkg-config")
class Packages(MsvcTest):
    remembers = True

    def test_what_pkg_config_says_is_translated(self):
        self.kit()
        self.declare(self.tool_set("14.38.33130"))
        prefix = self.base / "the prefix"
        self.library("the prefix/lib", "answer")
        self.place("the prefix/include/answer.h", "int answer(void);\n")
        escaped = str(prefix).replace(" ", "\\ ")
        self.place("the prefix/answer.pc", f"""
            Name: answer
            Description: of a test
            Version: 1
            Cflags: -I{escaped}/include -DMORE=2 -pthread
            Libs: -L{escaped}/lib -lanswer -lm -pthread
            """.replace("            ", ""))
        self.env |= {"PKG_CONFIG_LIBDIR": str(prefix)}
        self.write("lib.c", "#include <answer.h>\nint lib(void) { return answer() + MORE; }\n")
        self.write("main.c", "int lib(void);\nint start(void) { return lib(); }\n")
        self.unit(f"""
            app: +lib {{ C_FILES = ["main.c"] {FREESTANDING} }}
            lib: {{ C_FILES = ["lib.c"] OUTPUT_TYPE = "static" PACKAGES = ["answer"] }}
            """)
        self.built()
        self.check_program("out/app.exe", 18)
        compiled = [line for line in self.calls("cl") if line.endswith("lib.c")]
        self.assertIn(f"/I{prefix}/include /DMORE=2 /sourceDependencies", compiled[0])
        self.assertTrue(self.calls("link")[0].endswith("the prefix/lib answer.lib"), self.calls("link"))
        self.built()
        self.assertEqual(self.calls(), [])
        self.library("the prefix/lib", "answer", code="int answer(void) { return 17; }\n")
        self.built()
        self.assertEqual([line.split()[0] for line in self.calls()], ["link"])


@needs_llvm
class Rebuilding(MsvcTest):
    remembers = True

    def sources(self):
        self.kit()
        for name in ("a", "main"):
            self.write(f"{name}.c", f'#include <windows.h>\n#include "{name}.h"\nint {name}_f(void) {{ return N; }}\n')
            self.write(f"in c/{name}.h", '#include "all.h"\n')
        self.write("in c/all.h", "#define N 1\n")
        self.write("app.rc", '#include "app.h"\n1 RCDATA B "x.bin"\n'.replace(" B ", " "))
        self.write("app.h", "#define X 1\n")
        self.write("x.bin", b"1")
        self.unit(f"""
            app: {{
                C_FILES = ["*.c"]
                RC_FILES = ["app.rc"]
                INCLUDE_DIRS = ["in c"]
                SUBSYSTEM = "console" ENTRY = "main_f" LINK_FLAGS = "/nodefaultlib"
            }}
            """)

    def done(self):
        """The sources compiled, the scripts compiled, whether there was a link."""
        out = self.built("-j2")
        compiled = [line.split()[-1].removeprefix("out/") for line in self.calls("cl")
                    if "/c" in line.split()]
        return sorted(compiled), len(self.calls("rc")), len(self.calls("link"))

    def check_edits(self):
        self.assertEqual(self.done(), (["a.c", "main.c"], 1, 1))
        for edit, expected in (
            (lambda: None, ([], 0, 0)),
            (lambda: self.write("in c/a.h", '#include "all.h"\nint b;\n'), (["a.c"], 0, 1)),
            (lambda: self.write("in c/all.h", "#define N 2\n"), (["a.c", "main.c"], 0, 1)),
            # Beside the source it is found before the directories are looked through.
            (lambda: self.write("a.h", '#include "all.h"\nint c;\n'), (["a.c"], 0, 1)),
            (lambda: self.write("x.bin", b"2"), ([], 1, 1)),
            (lambda: self.write("app.h", "#define X 2\n"), ([], 1, 0)),
            (lambda: self.place(f"{KITS}/Include/{KIT}/um/windows.h", "#define SDK 3\n"), ([], 0, 0)),
            (lambda: (self.dir / "out/app.exe").unlink(), ([], 0, 1)),
        ):
            edit()
            self.assertEqual(self.done(), expected)
        self.assertEqual(self.done(), ([], 0, 0))

    def test_by_the_compilers_report(self):
        self.sources()
        self.declare(self.tool_set("14.38.33130"))
        self.check_edits()
        self.assertIn("/sourceDependencies", self.read_commands())

    def test_by_notes_of_an_old_compiler(self):
        self.sources()
        self.declare(self.tool_set("14.20.27508"))
        self.check_edits()

    def test_by_clang(self):
        self.sources()
        directory = self.tool_set("14.38.33130")
        for name, role in (("clang-cl", "cl"), ("lld-link", "link")):
            bin_directory = directory / "bin/Hostx64/x64"
            for ending in (ENDING, ".native"):
                if (bin_directory / (role + ending)).exists():
                    shutil.copy(bin_directory / (role + ending), bin_directory / (name + ending))
        self.declare(directory, 'toolchain_compiler = "clang-cl"')
        self.check_edits()

    def test_libraries_and_files_of_flags(self):
        self.sources()
        self.declare(self.tool_set("14.38.33130"))
        unit = self.read("vesk.txt")
        for flags in ('LIBS = ["lib/f.lib"]', 'LIB_DIRS = ["lib"] LIBS = ["f"]',
                      'LIBS = ["/defaultlib:f"] LIB_DIRS = ["lib"]',
                      'AR_FLAGS = "@lib/list" OUTPUT_TYPE = "static"'):
            with self.subTest(flags):
                self.unit(unit.replace("SUBSYSTEM", f"{flags} SUBSYSTEM"))
                for number in (1, 2):
                    self.library(self.dir / "lib", "f",
                                 code=f"int f(void) {{ return {number}; }}\n")
                    self.write("lib/list", "\n" * number)
                    self.built()
                    self.assertEqual(len(self.calls("link", "lib")), 1, number)
                    self.built()
                    self.assertEqual(self.calls(), [])

    def read_commands(self):
        return (self.dir / ".vesk_cache").read_bytes().decode(errors="replace")

    def test_another_kit(self):
        self.sources()
        self.declare(self.tool_set("14.38.33130"))
        self.done()
        self.kit("10.0.26100.0")
        self.assertEqual(self.done()[0], ["a.c", "main.c"])
        self.built("-j2", 'winsdk_version="10.0.22621"')
        self.assertEqual(len(self.calls("cl")), 2)


@needs_llvm
@needs("osslsigncode", "openssl")
class Drivers(MsvcTest):
    def setUp(self):
        super().setUp()
        self.kit(drivers=True)
        self.declare(self.tool_set("14.38.33130"))
        self.library(f"{KITS}/Lib/{KIT}/km/x64", "kernel_part", "BufferOverflowFastFailK", "ntoskrnl",
                     "hal", "wmilib")
        self.library(f"{KITS}/Lib/wdf/kmdf/x64/1.31", "framework", "WdfLdr", "WdfDriverEntry")
        self.write("driver.c", """
            #include <wdm.h>
            #include <wdf.h>
            int kernel_part(void);
            int FxDriverEntry(void) { return kernel_part() + FROM_WDK + FROM_KMDF
                                             + KMDF_VERSION_MINOR; }
            """)
        self.write("demo.inf", "[Version]\nCatalogFile = demo.cat\n")
        self.write("more.txt", "more\n")

    def certificate(self):
        def run(*arguments):
            subprocess.run(["openssl", *arguments], cwd=self.dir, check=True, capture_output=True)

        run("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", "k.pem", "-out", "c.pem",
            "-days", "30", "-subj", "/CN=test", "-addext", "extendedKeyUsage=codeSigning")
        run("pkcs12", "-export", "-inkey", "k.pem", "-in", "c.pem", "-out", "my c.pfx", "-passout",
            "pass:p&w 'x'")

    def test_package(self):
        self.remembers = True
        self.certificate()
        self.unit("""
            demo: {
                C_FILES = ["driver.c"]
                DRIVER = "kmdf"
                INF_FILE = "demo.inf"
                PACKAGE_FILES = ["more.txt"]
                SIGN_CERT = P"(my c.pfx)"
                SIGN_PASSWORD_ENV = "DEMO_SECRET"
            }
            """)
        asked = [] if SETTINGS.windows else ['toolchain_target="x64"']
        result = self.run_vesk(*asked, env=self.env)
        self.assertEqual(result.status, 1)
        self.assertIn("The command needs the environment variable 'DEMO_SECRET', which is not set.",
                      result.err)
        link, = self.calls("link")
        for option in ("/DRIVER", "/SUBSYSTEM:NATIVE", "/ENTRY:FxDriverEntry", "WdfLdr.lib"):
            self.assertIn(" " + option + " ", link + " ")
        compile_call, = self.calls("cl")
        for option in ("/kernel", "/DKMDF_VERSION_MINOR=31", "/D_AMD64_"):
            self.assertIn(" " + option + " ", compile_call)

        self.env["DEMO_SECRET"] = "p&w 'x'"
        out = self.built("-v", "0")
        package = self.dir / "out/demo.package"
        self.assertEqual(sorted(file.name for file in package.iterdir()),
                         ["demo.cat", "demo.inf", "demo.sys", "more.txt"])
        self.assertEqual((package / "demo.cat").read_text().splitlines()[:4],
                         ["10_X64", "demo.inf", "demo.sys", "more.txt"])
        self.assertIn("signed by /f", (package / "demo.cat").read_text())
        verified = subprocess.run(["osslsigncode", "verify", "-CAfile", self.dir / "c.pem",
                                   package / "demo.sys"], capture_output=True, text=True)
        self.assertIn("Signature verification: ok", verified.stdout)
        for place in (out, *(self.dir.rglob(".vesk_c*"))):
            text = place if isinstance(place, str) else place.read_text(errors="replace")
            self.assertNotIn("p&w", text)

        self.built()
        self.assertEqual(self.calls(), [])
        self.write("more.txt", "else\n")
        self.built()
        self.assertEqual([line.split()[0] for line in self.calls()], ["inf2cat", "signtool"])

    def test_certificates_of_a_store(self):
        self.write("main.c", "int start(void) { return 4; }\n")
        for settings, options in (
                ('SIGN_NAME = "My Company"', "sign /fd SHA256 /n My Company out/app.exe"),
                ('SIGN_THUMBPRINT = "AB CD" SIGN_STORE = "My" TIMESTAMP_URL = "http://t/?a&b"'
                 ' SIGN_DIGEST = "SHA384"',
                 "sign /fd SHA384 /tr http://t/?a&b /td SHA384 /sha1 ABCD /s My out/app.exe")):
            self.unit(f'app: {{ C_FILES = ["main.c"] {settings} {FREESTANDING} }}')
            self.built()
            self.assertEqual(self.calls("signtool"), ["signtool " + options])
            self.assertIn(b"signed by", (self.dir / "out/app.exe").read_bytes())

    def test_what_cannot_be(self):
        source = 'C_FILES = ["driver.c"]'
        asked = [] if SETTINGS.windows else ['toolchain_target="x64"']
        for body, fault in (
                ('SIGN_NAME = "a" SIGN_PASSWORD = "x"', "SIGN_PASSWORD would show the password"),
                ('SIGN_NAME = "a" SIGN_THUMBPRINT = "b"', "This target has several of them."),
                ('SIGN_CERT = "a.pfx" SIGN_PASSWORD_ENV = "A%B"', "which is not the name of an environment"),
                ('DRIVER = "kmd"', "DRIVER 'kmd' is not one of wdm, kmdf, umdf.\n  did you mean 'kmdf'?"),
                ('DRIVER = "kmdf" KMDF_VERSION = "1.33"', "no kmdf 1.33. It has: 1.31, 1.9."),
                ('winsdk_version = "10.0.1"', f"Installed: {KIT} (with WDK)."),
                ('RUNTIME = "MX"', "RUNTIME 'MX' is not one of MD, MDd, MT, MTd."),
                ('OUTPUT_TYPE = "relocatable"', "A static library holds several.")):
            with self.subTest(body):
                self.unit(f"t: {{ {source} {body} }}")
                result = self.run_vesk(*asked, env=self.env)
                self.assertEqual(result.status, 1)
                self.assertIn(fault, result.err)


class Detection(MsvcTest):
    def setUp(self):
        super().setUp()
        if not SETTINGS.windows:
            self.env["PATH"] = None  # other compilers for Windows

    def found(self, **env):
        result = self.run_vesk("--find-compilers", env={**self.env, **env})
        self.assertEqual(result.status, 0)
        out = result.out + result.err
        return re.findall(r"Registered toolchain '(msvc[^']*)'", out), out

    def test_several_and_what_is_left_of_others(self):
        self.tool_set("14.9.1", "2017/Community")
        self.tool_set("14.38.33130", "2022/BuildTools", ("x64", "x86", "arm64"))
        self.tool_set("14.38.33130", "2022/Community")
        (self.base / STUDIO / "2019/Community/VC/Tools/MSVC/14.29.1/include").mkdir(parents=True)
        (self.base / STUDIO / "2022/Professional/Common7").mkdir(parents=True)
        self.kit("10.0.9.0", drivers=True)
        self.kit("10.0.10.0")
        for directory in (f"Include/10.0.9.0/km", "Lib/10.0.9.0/km/x64", "Include/10.0.30.0/ucrt"):
            (self.base / KITS / directory).mkdir(parents=True, exist_ok=True)
        names, out = self.found()
        self.assertEqual(names, ["msvc-14-38-33130-x86_64-pc-windows-msvc",
                                 "msvc-14-38-33130-i686-pc-windows-msvc",
                                 "msvc-14-38-33130-aarch64-pc-windows-msvc",
                                 "msvc-14-9-1-x86_64-pc-windows-msvc"])
        text = self.registry_text()
        for line in ('toolchain_version = R"(14.9.1)"', 'winsdk_version = R"(10.0.10.0)"',
                     'wdk_version = R"(10.0.9.0)"', f'winsdk_path = P"({{BASE}}/{KITS})"',
                     f'toolchain_path = P"({{BASE}}/{STUDIO}2022/BuildTools/VC/Tools/MSVC/14.38.33130)"'):
            self.assertIn(line, text)
        self.assertEqual(len(re.findall(r'\(Visual Studio BuildTools 2022\)', text)), 3)
        self.assertEqual(self.found()[0], names)
        self.assertEqual(self.registry_text(), text)

    def test_none(self):
        self.assertEqual(self.found()[0], [])

    def test_what_the_installer_knows(self):
        self.program(STUDIO + "Installer", "vswhere")
        elsewhere = self.tool_set("14.40.1").parents[3]
        shutil.move(elsewhere, self.base / "D ö")
        json = self.place("answer.json", '[{"installationPath": "%s", "displayName": "Studio X"}, {}]'
                          % on_system(self.base / "D ö").replace("\\", "\\\\"))
        names, out = self.found(VESK_TEST_VSWHERE=str(json))
        self.assertEqual(names, ["msvc-14-40-1-x86_64-pc-windows-msvc"])
        self.assertIn('(Studio X))"', self.registry_text())

    def test_a_developer_prompt(self):
        directory = self.tool_set("14.40.1")
        shutil.move(self.base / PROGRAMS, self.base / "else")
        directory = self.base / "else" / directory.relative_to(self.base / PROGRAMS)
        names, out = self.found(VCToolsInstallDir=on_system(directory) + ("\\" if SETTINGS.windows else "/"))
        self.assertEqual(names, ["msvc-14-40-1-x86_64-pc-windows-msvc"])
        self.assertNotIn("winsdk_version", self.registry_text())

    @alone
    @windows_only("there is a registry on Windows only")
    def test_a_kit_in_the_registry(self):
        self.tool_set("14.40.1")
        self.kit()
        shutil.move(self.base / KITS, self.base / "kits ö")
        key = r"HKLM\SOFTWARE\Microsoft\Windows Kits\Installed Roots"
        directory = on_system(self.base / "kits ö") + "\\"
        reg = [*SETTINGS.wine, "reg"]
        subprocess.run([*reg, "add", key, "/v", "KitsRoot10", "/d", directory, "/f", "/reg:32"],
                       check=True, capture_output=True)
        self.addCleanup(subprocess.run, [*reg, "delete", key, "/f", "/reg:32"], capture_output=True)
        self.found()
        self.assertIn('winsdk_path = P"({BASE}/kits ö)"', self.registry_text())

    @needs_llvm
    def test_the_newest_builds_unless_another_is_asked_for(self):
        for version in ("14.9.1", "14.38.33130"):
            self.tool_set(version, machines=("x64", "x86"))
        self.kit()
        self.found()
        self.write("a.c", "int start(void) { return 7; }\n")
        self.unit(f'app: {{ C_FILES = ["a.c"] {FREESTANDING} }}')
        target = [] if SETTINGS.windows else ['toolchain_target="windows"']
        for asked, tool in (([], "14-38-33130-x86_64"), (['toolchain_version="14.9"'], "14-9-1-x86_64"),
                            (['toolchain_min_version="14.10"'], "14-38-33130-x86_64"),
                            (['toolchain_target="x86"'], "14-38-33130-i686"),
                            (['toolchain_name="MSVC 14.9.1"'], "14-9-1-x86_64")):
            with self.subTest(asked):
                words = asked if "target" in "".join(asked) else asked + target
                out = self.run_vesk("-v", "3", "-n", *words, env=self.env).out
                self.assertIn(f"'msvc-{tool}-pc-windows-msvc'", out)
        self.build(*target, env=self.env)
        self.check_program("out/app.exe", 7)


# As much of a C library and of the system as the examples need.
GUARD = "void* __security_cookie;\nvoid __security_check_cookie(void* cookie) {}\n"
C_LIBRARY = GUARD + """
    int main(void);
    int snprintf(char* to, unsigned long long size, const char* format, ...) { *to = 0; return 0; }
    int puts(const char* text) { return 0; }
    int mainCRTStartup(void) { return main(); }
    """
STDIO = "int snprintf(char*, unsigned long long, const char*, ...);\nint puts(const char*);\n"
WINDOWS = "#define NULL 0\nint LoadStringA(void*, unsigned, char*, int);\n"
KERNEL = """
    typedef int NTSTATUS; typedef void *PDRIVER_OBJECT, *PUNICODE_STRING;
    typedef NTSTATUS DRIVER_INITIALIZE(PDRIVER_OBJECT, PUNICODE_STRING);
    #define UNREFERENCED_PARAMETER(p) (void)p
    """
FRAMEWORK = """
    typedef void *WDFDRIVER, *WDFDEVICE, *PWDFDEVICE_INIT;
    typedef NTSTATUS EVT_WDF_DRIVER_DEVICE_ADD(WDFDRIVER, PWDFDEVICE_INIT);
    typedef struct { EVT_WDF_DRIVER_DEVICE_ADD* add; } WDF_DRIVER_CONFIG;
    #define WDF_NO_OBJECT_ATTRIBUTES 0
    #define WDF_NO_HANDLE 0
    #define WDF_DRIVER_CONFIG_INIT(config, function) ((config)->add = (function))
    NTSTATUS WdfDeviceCreate(PWDFDEVICE_INIT*, void*, WDFDEVICE*);
    NTSTATUS WdfDriverCreate(PDRIVER_OBJECT, PUNICODE_STRING, void*, WDF_DRIVER_CONFIG*, void*);
    """
LOADER = """
    int DriverEntry(void*, void*);
    int FxDriverEntry(void* a, void* b) { return DriverEntry(a, b); }
    int WdfDeviceCreate(void* a, void* b, void* c) { return 0; }
    int WdfDriverCreate(void* a, void* b, void* c, void* d, void* e) { return 0; }
    """


@needs_llvm
class Examples(MsvcTest):
    def built_alike(self, *arguments):
        """Without times in the products."""
        self.same_with_many_jobs(lambda jobs: self.built(
            jobs, 'FLAGS="/Brepro"', 'LINK_FLAGS="/Brepro"', *arguments))

    def test_program(self):
        self.take_example("msvc_program")
        directory = self.tool_set("14.38.33130")
        self.kit()
        self.declare(directory)
        (directory / "include/stdio.h").write_text(STDIO)
        self.place(f"{KITS}/Include/{KIT}/um/windows.h", WINDOWS)
        self.library((directory / "lib/x64").relative_to(self.base), "libcmt", code=C_LIBRARY)
        self.library(f"{KITS}/Lib/{KIT}/um/x64", "user32", "oldnames",
                     code="int LoadStringA(void* a, unsigned b, char* c, int d) { return 0; }\n")
        self.built_alike()
        self.check_program("out/hello.exe", 0)

    def test_driver(self):
        self.take_example("msvc_driver")
        self.kit(drivers=True)
        self.declare(self.tool_set("14.38.33130"))
        self.place(f"{KITS}/Include/{KIT}/km/ntddk.h", KERNEL)
        self.place(f"{KITS}/Include/wdf/kmdf/1.31/wdf.h", FRAMEWORK)
        self.library(f"{KITS}/Lib/{KIT}/km/x64", "BufferOverflowFastFailK", "ntoskrnl", "hal",
                     "wmilib", code=GUARD)
        self.library(f"{KITS}/Lib/wdf/kmdf/x64/1.31", "WdfLdr", "WdfDriverEntry", code=LOADER)
        self.built_alike('SIGN_NAME="Someone"')
        self.assertEqual(len(self.calls("signtool")), 2)
        self.assertIn("signed by /n Someone", self.read("out/hello.package/hello.cat"))
