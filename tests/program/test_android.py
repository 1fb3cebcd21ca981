"""Android packages, made with the tools of Debian's packages and verified by them."""

import functools
import os
import re
import shutil
import subprocess
import tempfile
import threading
import zipfile
from pathlib import Path

from harness import HANGS, SETTINGS, needs, on_system, posix_only
from test_toolchains import ToolchainTest

DEBIAN = Path("/usr/lib/android-sdk/build-tools/debian")
CHILDREN = Path(__file__).parent / "children"
ONCE = threading.RLock()

# What manifests of the tests use, with the numbers that Android gives these attributes.
ATTRIBUTES = {"label": 0x01010001, "name": 0x01010003, "hasCode": 0x0101000C,
              "exported": 0x01010010, "value": 0x01010024,
              "minSdkVersion": 0x0101020C, "versionCode": 0x0101021B, "versionName": 0x0101021C,
              "targetSdkVersion": 0x01010270}
MANIFEST = """
    <manifest xmlns:android="http://schemas.android.com/apk/res/android" package="org.demo">
      <application android:label="@string/title" android:hasCode="false"/>
    </manifest>
    """
STRINGS = '<resources><string name="title">{}</string></resources>'
APP = 'app: { MANIFEST = "AndroidManifest.xml" RES_DIRS = ["res"]'
MACHINES = {"arm64-v8a": (2, 183), "armeabi-v7a": (1, 40), "x86_64": (2, 62)}


def once(function):
    """Tests run side by side; what all of them need is made by the first."""
    cached = functools.lru_cache(None)(function)

    def call(*arguments):
        with ONCE:
            return cached(*arguments)
    return call


@once
def android_jar():
    """A platform that knows the attributes above and no classes."""
    with tempfile.TemporaryDirectory() as name:
        base = Path(name)
        (base / "res/values").mkdir(parents=True)
        (base / "AndroidManifest.xml").write_text('<manifest package="android"/>')
        (base / "res/values/attrs.xml").write_text("<resources>" + "".join(
            f'<public type="attr" name="{name}" id="{number:#010x}"/>'
            f'<attr name="{name}" format="string|reference|integer|boolean"/>'
            for name, number in ATTRIBUTES.items()) + "</resources>")
        for command in (["compile", "--dir", "res", "-o", "res.zip"],
                        ["link", "-x", "--manifest", "AndroidManifest.xml", "-o", "android.jar",
                         "res.zip"]):
            subprocess.run(["aapt2", *command], cwd=base, check=True, timeout=HANGS)
        return (base / "android.jar").read_bytes()


@once
def d8_jar():
    with tempfile.TemporaryDirectory() as name:
        subprocess.run(["javac", "-d", name, CHILDREN / "D8.java"], check=True, timeout=HANGS)
        archive = Path(name) / "d8.jar"
        with zipfile.ZipFile(archive, "w") as jar:
            for file in Path(name).rglob("*.class"):
                jar.write(file, file.relative_to(name))
        return archive.read_bytes()


@once
def debug_key():
    """As vesk makes one, which takes a second or more."""
    with tempfile.TemporaryDirectory() as name:
        subprocess.run(["keytool", "-genkeypair", "-keystore", Path(name) / "key", "-storepass",
                        "android", "-keypass", "android", "-alias", "androiddebugkey", "-keyalg",
                        "RSA", "-dname", "CN=Test"], check=True, capture_output=True, timeout=HANGS)
        return (Path(name) / "key").read_bytes()


def library(abi):
    """The beginning of a shared library, as far as it tells its machine."""
    size, machine = MACHINES[abi]
    return b"\x7fELF" + bytes([size, 1, 1]) + bytes(9) + bytes([3, 0, machine, 0]) + b"code" * 20


@needs("aapt2", "zipalign", "apksigner", "keytool", "javac")
class AndroidTest(ToolchainTest):
    def setUp(self):
        super().setUp()
        self.sdk = self.base / "S d k"
        self.env = {"ANDROID_USER_HOME": on_system(self.base / "user"),
                    "APPDATA": on_system(self.base / "data")}
        if SETTINGS.windows:
            self.env["JAVA_HOME"] = on_system(self.base / "jdk")
            for program in ("java", "javac", "keytool"):
                self.program(self.base / "jdk/bin", program)
        self.build_tools("30.0.3")
        self.platform("29")
        self.registry(f'sdk {{ tool_type = "android-sdk" toolchain_path = P"({self.named()})" }}')
        self.write("AndroidManifest.xml", MANIFEST.strip())
        self.write("res/values/strings.xml", STRINGS.format("Demo"))

    def named(self):
        return on_system(self.sdk)

    def take_debug_key(self):
        (self.base / "user").mkdir()
        (self.base / "user/debug.keystore").write_bytes(debug_key())

    def program(self, directory, name):
        """A program of the system: a link, or what runs it from a Windows program."""
        if SETTINGS.windows:
            self.bridge(directory / name, name)
        else:
            directory.mkdir(parents=True, exist_ok=True)
            (directory / name).symlink_to(shutil.which(name))

    def build_tools(self, version):
        directory = self.sdk / "build-tools" / version
        self.program(directory, "aapt2")
        (directory / "lib").mkdir()
        (directory / "lib/apksigner.jar").symlink_to(DEBIAN / "apksigner.jar")
        (directory / "lib/d8.jar").write_bytes(d8_jar())

    def platform(self, version):
        directory = self.sdk / "platforms" / f"android-{version}"
        directory.mkdir(parents=True)
        (directory / "android.jar").write_bytes(android_jar())

    def build(self, *arguments, env=None):
        result = self.run_vesk(*arguments, env={**self.env, **(env or {})})
        self.assertEqual(result.status, 0, result.out + result.err)
        return result.out

    def failure(self, *arguments, env=None):
        return super().failure(*arguments, env={**self.env, **(env or {})}).replace("\\", "/")

    def steps(self, out):
        """What a build did, a word for each step."""
        found = re.findall(r"aapt2(?:\.exe)?\W* (compile|link) |(Bundling|Packing) |"
                           r"\.jar\W* (sign) |(keytool|javac)(?:\.exe)?\W* -|(r8\.D8) ", out)
        return sorted("".join(words) for words in found)

    def asked(self, *command):
        return subprocess.run(command, cwd=self.dir, capture_output=True, text=True, check=True,
                              timeout=HANGS).stdout

    def signer(self, package="out/app.apk"):
        """The certificate's owner, after the signer's own check."""
        told = self.asked("apksigner", "verify", "--verbose", "--print-certs", package)
        for scheme in ("v1 scheme (JAR signing)", "v2 scheme (APK Signature Scheme v2)"):
            self.assertIn(f"Verified using {scheme}: true", told)
        return re.search(r"certificate DN: (.*)", told)[1]

    def names(self, package="out/app.apk"):
        with zipfile.ZipFile(self.dir / package) as archive:
            self.assertIsNone(archive.testzip())
            return [name for name in archive.namelist() if not name.startswith("META-INF")]


class Packages(AndroidTest):
    def test_all_that_a_package_holds(self):
        self.write("more/values/strings.xml", STRINGS.format("Démo"))
        self.write("assets/deep er/ä.txt", "asset\n")
        self.write("second/b.txt", "asset\n")
        self.write("java/META/x.txt", "extra\n")
        self.write("classes.dex", b"dex\n035\0")
        for abi in ("arm64-v8a", "x86_64"):
            self.write(f"libs/{abi}/libdemo.so", library(abi))
        self.write("libs/libold.so", library("armeabi-v7a"))
        self.unit(APP[:-1] + """ "more"]
                ASSET_DIRS = ["assets", "second"]
                NATIVE_LIBS = ["libs/*/*.so", "libs/libold.so"]
                DEX_FILES = ["classes.dex"]
                EXTRA_FILES = ["java"]
                PACKAGE_NAME = "org.other"
                VERSION_CODE = 7
                VERSION_NAME = "1.2 beta"
                MIN_SDK = 21
                OUTPUT_NAME = "dé mo"
            }
            """.replace('"more"', ', "more"', 1))
        self.build()
        package = "out/dé mo.apk"
        self.assertEqual(self.signer(package), "CN=Android Debug, O=Android, C=US")
        self.assertEqual(sorted(self.names(package)), [
            "AndroidManifest.xml", "META/x.txt", "assets/b.txt", "assets/deep er/ä.txt",
            "classes.dex", "lib/arm64-v8a/libdemo.so", "lib/armeabi-v7a/libold.so",
            "lib/x86_64/libdemo.so", "resources.arsc"])
        told = self.asked("aapt2", "dump", "badging", package)
        self.assertIn("package: name='org.other' versionCode='7' versionName='1.2 beta'", told)
        for line in ("sdkVersion:'21'", "targetSdkVersion:'29'", "application-label:'Démo'",
                     "native-code: 'arm64-v8a' 'armeabi-v7a' 'x86_64'"):
            self.assertIn(line, told)
        self.asked("zipalign", "-c", "-p", "4", package)
        with zipfile.ZipFile(self.dir / package) as archive:
            for entry in archive.infolist():
                if entry.filename.endswith(".so"):
                    archive.fp.seek(entry.header_offset + 26)
                    name, extra = (int.from_bytes(archive.fp.read(2), "little") for _ in "ab")
                    data = entry.header_offset + 30 + name + extra
                    self.assertEqual((entry.compress_type, data % 16384), (0, 0), entry.filename)

    def test_only_what_an_edit_reaches_is_made_anew(self):
        self.remembers = True
        self.write("res/layout/main.xml", "<View/>")
        self.write("assets/a.txt", "a")
        self.write("lib.so", library("x86_64"))
        self.unit(APP + ' ASSET_DIRS = ["assets"] NATIVE_LIBS = ["lib.so"] }')
        package = ["Packing", "sign"]
        linked = [*package, "link"]
        self.assertEqual(self.steps(self.build()),
                         ["Bundling", "Packing", "compile", "keytool", "link", "sign"])
        for edit, steps in (
                (lambda: None, []),
                (lambda: os.utime(self.dir / "res/layout/main.xml"), []),
                (lambda: self.write("res/values/strings.xml", STRINGS.format("New")),
                 ["Bundling", *package, "compile", "link"]),
                (lambda: self.write("res/values/strings.xml", STRINGS.format("New") + "\n"),
                 ["compile"]),
                (lambda: self.write("res/values-de/strings.xml", STRINGS.format("Neu")),
                 ["Bundling", *package, "compile", "link"]),
                (lambda: shutil.rmtree(self.dir / "res/values-de"),
                 ["Bundling", "compile", *linked]),
                (lambda: self.write("assets/a.txt", "b"), linked),
                (lambda: self.write("assets/b.txt", "b"), linked),
                (lambda: self.write("lib.so", library("arm64-v8a")), package),
                (lambda: (self.dir / "out/app.apk").write_bytes(b"edited"), ["link", "sign"]),
                (lambda: (self.dir / "out/app.apk").unlink(), ["link", "sign"]),
                (lambda: (self.base / "user/debug.keystore").unlink(), ["keytool", "sign"]),
                (lambda: None, [])):
            edit()
            self.assertEqual(sorted(self.steps(self.build())), sorted(steps), steps)
        self.assertEqual(sorted(self.names()), [
            "AndroidManifest.xml", "assets/a.txt", "assets/b.txt", "lib/arm64-v8a/lib.so",
            "res/layout/main.xml", "resources.arsc"])

    def test_many_resources_take_few_processes(self):
        self.take_debug_key()
        self.remembers = True
        for number in range(150):
            self.write(f"res/layout/l{number}.xml", "<View/>")
        self.unit(APP + "}")
        first = self.steps(self.build()).count("compile")
        self.assertTrue(2 <= first <= 15, first)
        self.write("res/layout/l42.xml", "<Other/>")
        self.assertEqual(self.steps(self.build()).count("compile"), 1)
        # A new file does not move the files behind it into other batches.
        self.write("res/layout/l42b.xml", "<View/>")
        self.assertLessEqual(self.steps(self.build()).count("compile"), 2)

    def test_java_becomes_dex(self):
        self.take_debug_key()
        self.remembers = True
        self.write("AndroidManifest.xml", MANIFEST.replace(' android:hasCode="false"', "").strip())
        self.write("src/org/demo/Main.java",
                   "package org.demo; class Main { int title = R.string.title; }")
        self.unit(APP + ' JAVA_FILES = ["src/**/*.java"] MIN_SDK = 21 }')
        everything = ["Bundling", "Packing", "compile", "javac", "link", "r8.D8", "sign"]
        self.assertEqual(self.steps(self.build()), everything)
        self.assertEqual(self.names()[-1], "classes.dex")
        with zipfile.ZipFile(self.dir / "out/app.apk") as archive:
            self.assertEqual(archive.read("classes.dex").decode(),
                             "dex\n035\0org/demo/Main.class org/demo/R$string.class "
                             "org/demo/R.class")
        # Another text of a string is no other class.
        self.write("res/values/strings.xml", STRINGS.format("New"))
        self.assertEqual(self.steps(self.build()), ["Bundling", "Packing", "compile", "link",
                                                    "sign"])
        self.write("src/org/demo/Other.java", "package org.demo; class Other {}")
        self.assertEqual(self.steps(self.build()), ["Packing", "javac", "r8.D8", "sign"])

    def test_libraries_of_dependencies(self):
        self.take_debug_key()
        self.write("libdemo.so", library("arm64-v8a"))
        self.unit("app: +lib " + APP[5:] + '}\nlib: { cmdline = [] ^LIB_FILES += [P"(libdemo.so)"] }')
        self.build()
        self.assertIn("lib/arm64-v8a/libdemo.so", self.names())

    def test_faults(self):
        self.write("lib.so", library("x86_64"))
        self.write("text.so", "text")
        self.write("other/lib.so", library("x86_64"))
        for body, message in (
                ('NATIVE_LIBS = ["lib.so"] ABI = ["arm64-v8a", "x86"]',
                 "'{DIR}/lib.so' is made for x86_64, but ABI allows arm64-v8a, x86 only."),
                ('NATIVE_LIBS = { arm64-v8a = ["lib.so"] }',
                 "'{DIR}/lib.so' is made for x86_64, but named for arm64-v8a."),
                ('NATIVE_LIBS = ["text.so"]', "'{DIR}/text.so' is not a shared library for Android"),
                ('NATIVE_LIBS = ["lib.so", "other/lib.so"]',
                 "'lib/x86_64/lib.so' would be in the package twice: from '{DIR}/lib.so' and from '"),
                ('ASSET_DIRS = ["none"]', "There is no directory '{DIR}/none', which ASSET_DIRS"),
                ('DEX_FILES = ["text.so"]', "'{DIR}/text.so' in DEX_FILES is not a DEX file."),
                ('OUTPUT_NAME = "../x"', "leads out of the output directory"),
                ('build_tools_version = "28"', "no build tools that fit build_tools_version '28'. "
                                               "Installed: 30.0.3."),
                ('platform_version = 30', "no platform that fits platform_version '30'. "
                                          "Installed: 29."),
                ('java_path = P"(nowhere)"', "or its directory 'bin'. Correct java_path.")):
            with self.subTest(body):
                self.unit(APP + " " + body + " }")
                self.assertIn(message, self.failure())


class Keys(AndroidTest):
    def key(self, store, owner, *passwords):
        subprocess.run(["keytool", "-genkeypair", "-keystore", self.dir / store, "-storepass",
                        passwords[0], "-keypass", passwords[0], "-alias", "release", "-keyalg",
                        "RSA", "-dname", f"CN={owner}"], check=True, capture_output=True,
                       timeout=HANGS)

    def test_release_key(self):
        self.remembers = True
        self.key("release.jks", "Owner", "hush hush")
        self.write("pass/word", "hush hush\n")
        body = ' KEYSTORE = P"(release.jks)" KEY_ALIAS = "release" KEYSTORE_PASS = "{}" }}'
        for source, env in (("env:RELEASE_PASS", {"RELEASE_PASS": "hush hush"}),
                            ("file:pass/word", {})):
            with self.subTest(source):
                self.unit(APP + body.format(source))
                out = self.build("-d", "-v", "0", "--rebuild", env=env)
                self.assertEqual(self.signer(), "CN=Owner")
                written = b"".join(file.read_bytes() for file in self.dir.rglob(".vesk*"))
                self.assertNotIn("hush", out)
                self.assertNotIn(b"hush", written)
        # What is up to date needs no password.
        self.unit(APP + body.format("env:RELEASE_PASS"))
        self.build(env={"RELEASE_PASS": "hush hush"})
        self.assertEqual(self.steps(self.build()), [])
        self.assertFalse((self.base / "user").exists())

    def test_faults(self):
        self.key("release.jks", "Owner", "hush hush")
        for body, env, message in (
                ('', {}, "KEYSTORE 'release.jks' needs KEYSTORE_PASS"),
                ('KEYSTORE_PASS = "hush hush"', {}, "KEYSTORE_PASS must say where the password is"),
                ('KEYSTORE_PASS = "env:P" SIGN_FLAGS = "--key-pass pass:hush"', {"P": "hush hush"},
                 "SIGN_FLAGS must say where the password is"),
                ('KEYSTORE_PASS = "env:NOT_SET"', {}, "'NOT_SET', which KEYSTORE_PASS names"),
                ('KEYSTORE_PASS = "file:none"', {}, "no file '{DIR}/none', which KEYSTORE_PASS"),
                ('KEYSTORE_PASS = "env:P"', {"P": "wrong"}, "Command ended with status"),
                ('KEYSTORE_PASS = "env:P" KEYSTORE = "none"', {"P": "x"},
                 "There is no keystore '{DIR}/none'.")):
            with self.subTest(body):
                self.unit(APP + ' KEYSTORE = "release.jks" ' + body + " }")
                told = self.failure(env=env)
                self.assertIn(message, told)
                self.assertNotIn("hush", told)
                self.assertNotIn("out/app.apk", self.files())

    def test_builds_at_once_make_one_debug_key(self):
        directories = [self.base / name for name in ("one", "two", "three")]
        for directory in directories:
            shutil.copytree(self.dir, directory)
            (directory / "vesk.txt").write_text(APP + "}")
        builds = [self.start(env=self.env, cwd=directory, stderr=subprocess.STDOUT)
                  for directory in directories]
        for build in builds:
            out, _ = build.communicate(timeout=HANGS)
            self.assertEqual(build.returncode, 0, out)
        told = {self.asked("apksigner", "verify", "--print-certs", str(directory / "out/app.apk"))
                for directory in directories}
        self.assertEqual(len(told), 1, told)
        self.assertEqual(sorted(path.name for path in (self.base / "user").iterdir()),
                         ["debug.keystore", "debug.keystore.vesk-lock"])


class Installations(AndroidTest):
    def used(self, asked):
        self.unit(APP + asked + "}")
        out = self.build("-n").replace("\\", "/")
        return (re.search(r"build-tools/([^/]*)/aapt2", out)[1],
                re.search(r"platforms/android-([^/]*)/android.jar", out)[1])

    def test_versions(self):
        for version in ("9.0.0", "31.0.0-rc2", "debian"):
            self.build_tools(version)
        for version in ("9", "29-ext8", "Tiramisu"):
            self.platform(version)
        (self.sdk / "build-tools/99.0.0").mkdir()
        (self.sdk / "platforms/android-99").mkdir()
        for asked, used in (
                ("", ("31.0.0-rc2", "29")),
                (' build_tools_version = "30"', ("30.0.3", "29")),
                (' build_tools_version = "debian" platform_version = 9', ("debian", "9")),
                (' platform_version = "android-29-ext8"', ("31.0.0-rc2", "29-ext8"))):
            with self.subTest(asked):
                self.assertEqual(self.used(asked), used)

    def test_found_where_the_environment_says(self):
        self.take_debug_key()
        self.registry("")
        other = {"LOCALAPPDATA": on_system(self.base / "local"), "HOME": str(self.base / "home")}
        standard = self.base / ("local/Android/Sdk" if SETTINGS.windows else "home/Android/Sdk")
        shutil.copytree(self.sdk, standard, symlinks=True)
        for env, root in (({"ANDROID_HOME": self.named()}, self.sdk),
                          ({"ANDROID_SDK_ROOT": self.named(), "ANDROID_HOME": None}, self.sdk),
                          ({"ANDROID_HOME": on_system(self.base / "none")}, standard)):
            with self.subTest(env):
                out = self.build("--find-compilers", env={**other, **env})
                self.assertIn("Registered toolchain 'android-sdk'.", out)
                told = (self.base / "data/vesk/.vesk_registry.txt").read_text(encoding="utf-8")
                entry = re.search(r"  android-sdk \{(.*?)\}", told, re.DOTALL)[1]
                self.assertIn(f'toolchain_path = P"({on_system(root)})"', entry)
        self.unit(APP + "}")
        self.build()

    @posix_only("it needs a compiler of the system itself")
    @needs("clang", "ld.lld")
    def test_example(self):
        self.take_debug_key()
        self.take_example("android_app")
        self.registry(self.tools +
                      f'sdk {{ tool_type = "android-sdk" toolchain_path = P"({self.named()})" }}')
        self.same_with_many_jobs(self.build)
        self.assertEqual(self.run_vesk("-n", "--rebuild", env=self.env).err, "")
        self.assertIn("native-code: 'arm64-v8a' 'x86_64'",
                      self.asked("aapt2", "dump", "badging", "out/hello.apk"))
        self.signer("out/hello.apk")
