"""Compilers on other machines: distcc, with daemons on the loopback."""

import os
import shutil
import socket
import subprocess
import tempfile
from pathlib import Path

from harness import needs, posix_only, wait_until
from test_toolchains import NATIVE, ToolchainTest

# What the daemons run as the compiler. One that DYING names waits in it until it is gone; the others
# wait for each other at their first source, which each does only if both have one at the same time.
COMPILER = """
wait_for() {
    for tenth in $(seq 600); do
        [ ! -e "$1" ] || return 0
        sleep 0.1
    done
    touch HERE/nobody_came
}
if [ -n "$MACHINE" ]; then
    touch "HERE/$MACHINE"
    wait_for "HERE/$WAITS_FOR"
fi
exec /usr/bin/gcc "$@"
"""


def listens(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


@posix_only("it is the system's own distcc")
@needs("distcc", "distccd")
class Distcc(ToolchainTest):
    tools = NATIVE

    def setUp(self):
        super().setUp()
        (self.base / "distcc").mkdir()
        # Started as root the daemon works as another user.
        self.shared = Path(tempfile.mkdtemp(prefix="vesk-distcc-"))
        self.addCleanup(shutil.rmtree, self.shared, ignore_errors=True)
        self.shared.chmod(0o777)

    def daemon(self, **environment):
        """Starts a daemon on a free port. Returns its port, its log and a function that ends it."""
        while True:
            with socket.socket() as probe:
                probe.bind(("127.0.0.1", 0))
                port = probe.getsockname()[1]
            log = self.shared / f"log{port}"
            # One process, which ends by itself should this one be killed.
            daemon = subprocess.Popen(
                ["distccd", "--daemon", "--no-detach", "--no-fork", "--lifetime", "300", "--listen",
                 "127.0.0.1", "--port", str(port), "--allow", "127.0.0.1", "--enable-tcp-insecure",
                 f"--log-file={log}", "--log-level=info"],
                env={**os.environ, "TMPDIR": str(self.shared), **environment},
                stderr=subprocess.DEVNULL)
            self.addCleanup(daemon.wait)
            self.addCleanup(daemon.kill)
            wait_until(lambda: daemon.poll() is not None or listens(port))
            if daemon.poll() is None:
                return port, log, lambda: (daemon.kill(), daemon.wait())
            self.assertIn("Address already in use", log.read_text())

    def hosts(self, *ports):
        return {"DISTCC_HOSTS": " ".join(f"127.0.0.1:{port}/2" for port in ports),
                "DISTCC_DIR": str(self.base / "distcc"), "DISTCC_PAUSE_TIME_MSEC": "50"}

    def test_only_there(self):
        self.write("a.c", "int a(void) { return 1; }\n")
        self.write("main.c", "int a(void);\nint main(void) { return a() - 1; }\n")
        self.unit("""
            app: { C_FILES = ["*.c"] LAUNCHER = "distcc" ENV = { DISTCC_FALLBACK = "0" } }
            """)
        port, log, end = self.daemon()
        self.build(env=self.hosts(port))
        self.assertEqual(self.output_of("out/app"), "")
        wait_until(lambda: log.read_text().count("COMPILE_OK") == 2)
        end()
        self.assertEqual(self.run_vesk(env=self.hosts(port)).status, 1,
                         "nothing compiles without the daemon")

    def test_libraries_side_by_side_and_a_machine_that_dies(self):
        """Each library has one source, so that three machines work only if libraries overlap."""
        compiler = self.script(self.shared / "bin/gcc", COMPILER.replace("HERE", str(self.shared)))
        compiler.parent.chmod(0o755)
        (compiler.parent / "ar").symlink_to(shutil.which("ar"))
        self.registry(f"""
            gcc {{ tool_type = "gnu-gcc" toolchain_name = "GCC" toolchain_default = "machine"
                  toolchain_path = P"({compiler.parent})" }}
            """)
        names = [f"n{number}" for number in range(8)]
        for name in names:
            self.write(f"{name}.c", f"int {name}(void) {{ return 1; }}\n")
        self.write("main.c", "".join(f"int {name}(void);\n" for name in names) +
                   f"int main(void) {{ return {' + '.join(f'{name}()' for name in names)} - 8; }}\n")
        self.unit(f'app: {" ".join("+" + name for name in names)} {{ C_FILES = ["main.c"] }}\n' +
                  "".join(f'{name}: {{ C_FILES = ["{name}.c"] OUTPUT_TYPE = "static" '
                          'LAUNCHER = "distcc" }\n' for name in names))
        one, log, _ = self.daemon(MACHINE="one", WAITS_FOR="two")
        two, _, _ = self.daemon(MACHINE="two", WAITS_FOR="one")
        three, _, end = self.daemon(MACHINE="three", WAITS_FOR="gone")
        process = self.start("-j3", "app", env=self.hosts(one, two, three))
        self.addCleanup(process.kill)
        wait_until(lambda: (self.shared / "three").exists() or process.poll() is not None)
        end()
        (self.shared / "gone").touch()
        out, err = map(self.plain, process.communicate())
        self.assertEqual(process.returncode, 0, out + err)
        self.assertIn("server provided no answer", err)
        self.assertEqual(self.output_of("out/app"), "")
        self.assertIn("COMPILE_OK", log.read_text())
        self.assertFalse((self.shared / "nobody_came").exists())
        self.remembers = True
        self.nothing_to_do("-j3", "app")
