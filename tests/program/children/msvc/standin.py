#!/usr/bin/env python3
"""Stands for the programs of Visual Studio and of the Windows kits in tests, under their names:

    standin.py NAME ARGUMENT...

LLVM's and GNU's programs of the same purpose do the work where there are any. What they lack is made
up for here: the report of headers that cl writes, and the programs for drivers, which only check
what they are told. Each call is noted in the file that VESK_TEST_LOG names.
"""

import json
import os
import re
import subprocess
import sys
from pathlib import Path

LLVM = Path("/usr/lib/llvm-14/bin")
# What clang-cl does not know and warns about.
UNKNOWN = {"/kernel", "/external:W0"}


def run(program, arguments):
    return subprocess.run([program, *arguments]).returncode


def fail(message):
    print(f"stand-in: {message}", file=sys.stderr)
    return 1


def prerequisites(makefile):
    """The files of a makefile that clang wrote, without the source."""
    text = makefile.replace("\\\n", " ").split(": ", 1)[1]
    names = re.findall(r"(?:[^\s\\]|\\.)+", text.split("\n", 1)[0])
    return [re.sub(r"\\(.)", r"\1", name) for name in names][1:]


def cl(arguments):
    arguments = [each for each in arguments if each not in UNKNOWN]
    if "/sourceDependencies" not in arguments:
        return run(LLVM / "clang-cl", arguments)
    at = arguments.index("/sourceDependencies")
    report = Path(arguments[at + 1])
    makefile = f"{report}.d"
    # As cl, and other than clang for its own headers, with those of the system.
    arguments[at : at + 2] = ["/clang:-MD", f"/clang:-MF{makefile}"]
    status = run(LLVM / "clang-cl", arguments)
    if status == 0:
        includes = [os.path.abspath(name) for name in prerequisites(Path(makefile).read_text())]
        data = {"Source": arguments[-1], "ProvidedModule": "", "Includes": includes,
                "ImportedModules": ["name.of.one"], "ImportedHeaderUnits": []}
        report.write_text(json.dumps({"Version": "1.1", "Data": data}))
    os.unlink(makefile) if os.path.exists(makefile) else None
    return status


def mc(arguments):
    return run("x86_64-w64-mingw32-windmc", arguments)


def inf2cat(arguments):
    """A catalogue with the names of what it is about."""
    options = dict(each.split(":", 1) for each in arguments if each[0] == "/" and ":" in each)
    directory = Path(options.get("/driver", ""))
    if len(options) != len(arguments) or not options.get("/os") or not directory.is_dir():
        return fail(f"inf2cat {arguments}")
    names = sorted(file.name for file in directory.iterdir() if file.suffix != ".cat")
    for inf in directory.glob("*.inf"):
        catalogue = re.search(r"^CatalogFile\s*=\s*(\S+)", inf.read_text(), re.M)
        if catalogue is None:
            return fail(f"no CatalogFile in {inf}")
        (directory / catalogue[1]).write_text("\n".join([options["/os"], *names, ""]))
    return 0


def signtool(arguments):
    """Programs are signed by osslsigncode when a certificate is there; a line is put at the end of
    all else."""
    valued = {"/fd", "/f", "/p", "/n", "/sha1", "/s", "/tr", "/td"}
    options, files = {}, []
    words = iter(arguments[1:])
    for word in words:
        if word in valued:
            options[word] = next(words)
        elif word.startswith("/") and not os.path.exists(word):
            return fail(f"signtool does not know {word}")
        else:
            files.append(Path(word))
    if arguments[0] != "sign" or "/fd" not in options or len(files) != 1:
        return fail(f"signtool {arguments}")
    file, = files
    if "/f" not in options or file.read_bytes()[:2] != b"MZ":
        with file.open("a") as signed:
            signed.write("signed by {} {}\n".format(
                *next(each for each in options.items() if each[0] in ("/f", "/n", "/sha1"))))
        return 0
    signed = file.with_suffix(".signed")
    status = run("osslsigncode", ["sign", "-pkcs12", options["/f"], "-pass", options.get("/p", ""),
                                  "-h", options["/fd"].lower(), "-in", file, "-out", signed])
    if status == 0:
        os.replace(signed, file)
    return status


def vswhere(arguments):
    """Answers what lies beside it."""
    if "json" not in arguments or "-utf8" not in arguments:
        return fail(f"vswhere {arguments}")
    print(Path(os.environ["VESK_TEST_VSWHERE"]).read_text())
    return 0


OWN = {"cl": cl, "mc": mc, "inf2cat": inf2cat, "signtool": signtool, "vswhere": vswhere}
LLVMS = {"link": "lld-link", "lib": "llvm-lib", "rc": "llvm-rc"}


def main(name, arguments):
    if log := os.environ.get("VESK_TEST_LOG"):
        with open(log, "a", encoding="utf-8") as file:
            file.write(" ".join([name, *arguments]) + "\n")
    for variable in ("INCLUDE", "LIB"):
        # Under Wine these are paths of drive Z:.
        if value := os.environ.get(variable):
            os.environ[variable] = value.replace("Z:", "").replace("\\", "/")
    if name in OWN:
        return OWN[name](arguments)
    return run(LLVM / LLVMS[name], arguments)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
