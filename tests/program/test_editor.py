"""The language server, over pipes, as an editor talks to it."""

import json
import os
import subprocess
import sys
import threading
import time
from pathlib import Path
from queue import Empty, Queue
from urllib.parse import quote

from harness import EXAMPLES, HANGS, SETTINGS, ProgramTest, needs, on_system, posix_only
from test_format import sources

EDITORS = EXAMPLES.parent / "editors"


def uri_of(file):
    path = on_system(file).replace("\\", "/")
    return "file://" + quote(path if path.startswith("/") else "/" + path, safe="/:")


class Client:
    """A session. `request` waits for the answer; what the server says by itself is kept."""

    def __init__(self, test, profile=None, encodings=("utf-16",), root=None):
        self.test = test
        self.process = test.start("--language-server", stdin=subprocess.PIPE)
        self.received = Queue()
        threading.Thread(target=self.read, daemon=True).start()
        self.number = 0
        self.notified = []
        self.versions = {}
        self.hello = self.request("initialize", {
            "processId": None, "rootUri": root,
            "capabilities": {"general": {"positionEncodings": list(encodings)}},
            "initializationOptions": {"profile": profile} if profile else None})["result"]
        self.notify("initialized", {})

    def read(self):
        out = self.process.stdout
        while header := out.readline():
            length = int(header.split(b":")[1])
            assert out.readline() == b"\r\n"
            self.received.put(json.loads(out.read(length)))
        self.received.put(None)

    def send_bytes(self, body):
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(body) + body)
        self.process.stdin.flush()

    def send(self, **message):
        self.send_bytes(json.dumps({"jsonrpc": "2.0", **message}).encode())

    def next(self):
        return self.received.get(timeout=HANGS)

    def request(self, method, params=None):
        self.number += 1
        self.send(id=self.number, method=method, params=params or {})
        return self.answer(self.number)

    def answer(self, number):
        while (message := self.next()) is not None:
            if message.get("id") == number and "method" not in message:
                return message
            self.notified.append(message)
        raise AssertionError("the server has ended")

    def notify(self, method, params):
        self.send(method=method, params=params)

    # --- documents

    def uri(self, name):
        return uri_of(self.test.dir / name)

    def open(self, name, text=None):
        if text is not None:
            self.test.write(name, text)
        self.versions[name] = 1
        self.notify("textDocument/didOpen", {"textDocument": {
            "uri": self.uri(name), "languageId": "vesk", "version": 1,
            "text": self.test.read(name)}})

    def change(self, name, *changes):
        self.versions[name] += 1
        self.notify("textDocument/didChange", {
            "textDocument": {"uri": self.uri(name), "version": self.versions[name]},
            "contentChanges": [
                change if isinstance(change, dict) else {"text": change} for change in changes]})

    def ask(self, what, name, line=0, character=0, **more):
        message = self.request("textDocument/" + what, {
            "textDocument": {"uri": self.uri(name)},
            "position": {"line": line, "character": character}, **more})
        return message["result"] if "result" in message else message["error"]

    def diagnostics(self, name):
        """Those that come next."""
        while True:
            for index, message in enumerate(self.notified):
                if message.get("params", {}).get("uri") == self.uri(name):
                    return self.notified.pop(index)["params"]["diagnostics"]
            self.notified.append(self.next())

    def labels(self, name, line, character):
        return [item["label"] for item in self.ask("completion", name, line, character)]

    def end(self):
        self.test.assertEqual(self.request("shutdown")["result"], None)
        self.notify("exit", {})
        status = self.process.wait(timeout=HANGS)
        self.process.stdin.close()
        self.process.stderr.close()
        return status


def place(line, begin, end):
    return {"start": {"line": line, "character": begin}, "end": {"line": line, "character": end}}


def edit(line, begin, end, text):
    return {"range": place(line, begin, end), "text": text}


class LanguageServer(ProgramTest):
    def client(self, **options):
        client = Client(self, **options)

        def stop():
            client.process.kill()
            client.process.wait()
            for stream in (client.process.stdin, client.process.stdout, client.process.stderr):
                stream.close()
        self.addCleanup(stop)
        return client

    def test_life(self):
        client = self.client()
        self.assertEqual(client.hello["capabilities"]["positionEncoding"], "utf-16")
        self.assertEqual(client.request("nonsense")["error"]["code"], -32601)
        self.assertEqual(client.request("textDocument/hover")["error"]["code"], -32602)
        client.send_bytes(b"{ this is no JSON")
        self.assertEqual(client.answer(None)["error"]["code"], -32700)
        client.send_bytes(b"[]")
        self.assertEqual(client.answer(None)["error"]["code"], -32600)
        client.notify("$/nonsense", {})
        self.assertEqual(client.end(), 0)

    def test_an_end_without_goodbye(self):
        client = self.client()
        client.process.stdin.close()
        self.assertEqual(client.process.wait(timeout=HANGS), 1)

    def test_before_and_after(self):
        client = self.client()
        self.assertEqual(client.request("initialize")["error"]["code"], -32600)
        client.request("shutdown")
        self.assertEqual(client.request("textDocument/hover")["error"]["code"], -32600)

    def test_a_cancelled_request(self):
        client = self.client()
        unit = "".join(f't{n}: {{ cmdline = "echo {n}" }}\n' for n in range(300))
        client.open("vesk.txt", unit)
        at = {"textDocument": {"uri": client.uri("vesk.txt")}}
        requests = b""
        for number in range(1000, 1040):
            body = json.dumps({"jsonrpc": "2.0", "id": number, "params": at,
                               "method": "textDocument/documentSymbol"}).encode()
            requests += b"Content-Length: %d\r\n\r\n" % len(body) + body
        body = json.dumps({"jsonrpc": "2.0", "method": "$/cancelRequest",
                           "params": {"id": 1039}}).encode()
        client.process.stdin.write(requests + b"Content-Length: %d\r\n\r\n" % len(body) + body)
        client.process.stdin.flush()
        last = client.answer(1039)
        # Either it was still waiting, or all forty had been answered before.
        self.assertTrue("result" in last or last["error"]["code"] == -32800)

    def test_diagnostics_follow_edits(self):
        client = self.client()
        client.open("vesk.txt", 'lib: { NO_TOOL }\napp: lib { cmdline = "x" }\n')
        self.assertEqual(client.diagnostics("vesk.txt"), [])
        client.change("vesk.txt", edit(1, 7, 8, "x"))
        (found,) = client.diagnostics("vesk.txt")
        self.assertEqual((found["message"], found["code"], found["range"]),
                         ("There is no target 'lix'.\ndid you mean 'lib'?", "unknown-name",
                          place(1, 5, 8)))
        (action,) = client.request("textDocument/codeAction", {
            "textDocument": {"uri": client.uri("vesk.txt")}, "range": place(1, 6, 6),
            "context": {"diagnostics": []}})["result"]
        self.assertEqual(action["title"], "Change to 'lib'")
        self.assertEqual(action["edit"]["changes"][client.uri("vesk.txt")],
                         [{"range": place(1, 5, 8), "newText": "lib"}])
        client.change("vesk.txt", edit(1, 5, 8, "lib"), edit(0, 5, 6, ""))
        found = client.diagnostics("vesk.txt")
        self.assertEqual({each["range"]["start"]["line"] for each in found}, {0})
        self.assertIn("syntax", {each["code"] for each in found})
        # What opens here is closed in another target: that is seen in a longer pause.
        client.change("vesk.txt", "a: { NO_TOOL }\nb: { NO_TOOL }\n/* */\n")
        self.assertEqual(client.diagnostics("vesk.txt"), [])
        client.change("vesk.txt", edit(0, 0, 0, "/* "))
        self.assertEqual({each["code"] for each in client.diagnostics("vesk.txt")}, {"syntax"})
        self.assertEqual(client.diagnostics("vesk.txt"), [])

    def test_columns(self):
        text = 'lib: { ^OUT = "x" NO_TOOL }\napp: lib { A = "ä𝄞${lib.OUT}" cmdline = "${A}" }\n'
        for encodings, column in ((("utf-16",), 26), (("utf-8", "utf-16"), 29)):
            client = self.client(encodings=encodings)
            client.open("dir with ä/vesk.txt", text.replace("\n", "\r\n"))
            (found,) = client.ask("definition", "dir with ä/vesk.txt", 1, column)
            self.assertEqual(found, {"uri": client.uri("dir with ä/vesk.txt"),
                                     "range": place(0, 8, 11)})
            client.change("dir with ä/vesk.txt", edit(1, column, column + 1, "T"))
            self.assertEqual(client.ask("hover", "dir with ä/vesk.txt", 1, column)["range"]["start"]
                             ["line"], 1)

    def test_completion(self):
        client = self.client()
        self.registry('tools { gcc { tool_type = "gnu-gcc" toolchain_path = P"(/usr/bin)" } }')
        self.write("src/main.c", "int main(void) { return 0; }\n")
        client.open("vesk.txt", """
            unit u
            lib: { ^FLAG = "1" NO_TOOL }
            run(who): { cmdline = "echo ${who}" }
            app: l lib {
                C_FILES = ["src/"]
                OUTPUT_TYPE = ""
                mine = lib.
                X = "${m}"

            }
            """)
        self.assertTrue({"lib", "run"} <= set(client.labels("vesk.txt", 3, 6)))
        self.assertEqual(client.labels("vesk.txt", 4, 20), ["main.c"])
        self.assertTrue({"executable", "static"} <= set(client.labels("vesk.txt", 5, 19)))
        self.assertIn("FLAG", client.labels("vesk.txt", 6, 15))
        self.assertTrue({"mine", "lib", "os_family"} <= set(client.labels("vesk.txt", 7, 12)))
        names = {item["label"]: item for item in client.ask("completion", "vesk.txt", 8, 0)}
        self.assertTrue({"C_FLAGS", "if", "DESCRIPTION"} <= set(names))
        self.assertNotIn("MANIFEST", names)
        self.assertIn("default", names["OUTPUT_TYPE"]["documentation"]["value"])

    def take_workspace(self, **options):
        self.take_example("workspace")
        return self.client(root=uri_of(self.dir / "tool"), **options)

    def test_hover_under_a_profile(self):
        client = self.take_workspace(profile="formal")
        client.open("lib/vesk.txt")
        line = self.read("lib/vesk.txt").splitlines().index(
            '    cmdline = "echo ${GREETING}> ${QUOTE}${FILE}${QUOTE}"')
        told = client.ask("hover", "lib/vesk.txt", line, 24)["contents"]["value"]
        self.assertIn("Good day", told)
        self.assertIn("from profile 'default', profile 'formal'", told)
        told = client.ask("hover", "lib/vesk.txt", line, 5)["contents"]["value"]
        self.assertIn("**cmdline**: string, list", told)
        client.request("workspace/executeCommand",
                       {"command": "vesk.selectProfile", "arguments": ["friendly"]})
        told = client.ask("hover", "lib/vesk.txt", line, 24)["contents"]["value"]
        self.assertIn("Hi there", told)

    def test_names_across_imports(self):
        client = self.take_workspace()
        client.open("tool/vesk.txt")
        lines = self.read("tool/vesk.txt").splitlines()
        line = next(n for n, text in enumerate(lines) if text.startswith("message"))
        (found,) = client.ask("definition", "tool/vesk.txt", line, lines[line].index("text"))
        self.assertEqual(found["uri"], client.uri("lib/vesk.txt"))
        found = client.ask("references", "lib/vesk.txt", 3, 1, context={"includeDeclaration": True})
        self.assertEqual([each["uri"].rsplit("/", 2)[1] for each in found], ["lib", "tool"])
        changes = client.ask("rename", "lib/vesk.txt", 3, 1, newName="words")["changes"]
        self.assertEqual({uri: [each["newText"] for each in edits] for uri, edits in changes.items()},
                         {client.uri("lib/vesk.txt"): ["words"], client.uri("tool/vesk.txt"): ["words"]})
        symbols = client.request("workspace/symbol", {"query": "msg"})["result"]
        self.assertEqual([each["name"] for each in symbols], ["message"])

    def test_rename(self):
        client = self.client()
        client.open("vesk.txt", """
            lib: { x = "1" ^out = "${x}" NO_TOOL }
            use(p): lib { x = p cmdline = "${p} ${lib.out} ${x}" }
            """)
        def renamed(line, character, name):
            result = client.ask("rename", "vesk.txt", line, character, newName=name)
            if "changes" not in result:
                return result["message"]
            edits = result["changes"][client.uri("vesk.txt")]
            return [(each["range"]["start"]["line"], each["range"]["start"]["character"])
                    for each in edits]
        self.assertEqual(renamed(0, 7, "y"), [(0, 7), (0, 25)])
        self.assertEqual(renamed(0, 16, "y"), [(0, 16), (1, 42)])
        self.assertEqual(renamed(1, 4, "q"), [(1, 4), (1, 18), (1, 33)])
        self.assertEqual(renamed(0, 1, "core"), [(0, 0), (1, 8), (1, 38)])
        self.assertIn("is read inside of a string", renamed(0, 1, "my-lib"))
        self.assertIn("cannot be a name", renamed(0, 1, "a b"))
        self.assertIn("There is a 'use' already.", renamed(0, 1, "use"))
        self.assertIn("is a variable that tools know", renamed(1, 21, "z"))

    def test_names_in_texts_of_macros(self):
        client = self.client()
        client.open("vesk.txt", """
            use(p): { cmdline = "${p}" }
            all: @goals +> made { goals = ["use(x)", "nothing"] x = "1" cmdline = "${made.result}" }
            """)
        (found,) = client.diagnostics("vesk.txt")
        self.assertEqual((found["message"].splitlines()[0], found["range"]),
                         ("There is no target 'nothing'.", place(1, 42, 49)))
        changes = client.ask("rename", "vesk.txt", 0, 1, newName="apply")["changes"]
        self.assertEqual([each["range"] for each in changes[client.uri("vesk.txt")]],
                         [place(0, 0, 3), place(1, 32, 35)])

    def test_shapes(self):
        client = self.client()
        client.open("vesk.txt", "// one\n// two\na: {\n  ^X = [\n    1\n  ]\n}\nb:  a{NO_TOOL}\n")
        self.assertEqual([(each["name"], [child["name"] for child in each["children"]])
                          for each in client.ask("documentSymbol", "vesk.txt")],
                         [("a", ["X"]), ("b", [])])
        self.assertEqual([(each["startLine"], each["endLine"])
                          for each in client.ask("foldingRange", "vesk.txt")],
                         [(0, 1), (2, 5), (3, 4)])
        lenses = client.ask("codeLens", "vesk.txt")
        self.assertEqual([(each["command"]["command"], each["command"]["arguments"][0]["target"])
                          for each in lenses],
                         [("vesk.build", "vesk::a"), ("vesk.why", "vesk::a"),
                          ("vesk.build", "vesk::b"), ("vesk.why", "vesk::b")])
        (change,) = client.ask("formatting", "vesk.txt", options={"tabSize": 4})
        self.assertIn("\n\nb: a { NO_TOOL ", change["newText"])

    def test_a_large_unit(self):
        """An edit is answered soon. The limit is far above what is measured, for slow machines."""
        client = self.client()
        count = 2000
        client.open("vesk.txt", "".join(
            f't{n}: t{n - 1 if n else 1} {{\n    x = "${{os_family}}"\n    cmdline = "echo ${{x}} {n}"\n}}\n'
            if n > 1 else f't{n}: {{ NO_TOOL }}\n' for n in range(count)))
        client.diagnostics("vesk.txt")
        took = []
        for n in range(10):
            began = time.monotonic()
            client.change("vesk.txt", edit(2 + 4 * 900 + 1, 4, 5, "yx"[n % 2]))
            hover = client.ask("hover", "vesk.txt", 2 + 4 * 900 + 1, 4)
            took.append(time.monotonic() - began)
            self.assertIn("**" + "yx"[n % 2] + "**", hover["contents"]["value"])
        print(f"an edit in {count} targets is answered in {min(took) * 1000:.1f} ms, "
              f"at most {max(took) * 1000:.1f} ms", flush=True)


class Editors(ProgramTest):
    @posix_only("Neovim of this system starts vesk for it")
    @needs("nvim")
    def test_neovim(self):
        self.unit("lib: { NO_TOOL }\napp: lbi { NO_TOOL }\n")
        script = self.write("check.lua", """
            local plugin, vesk, result = arg_plugin, arg_vesk, arg_result
            vim.opt.runtimepath:append(plugin)
            vim.cmd('filetype plugin on | syntax on')
            require('vesk').setup { cmd = { vesk, '--language-server' } }
            vim.cmd('edit vesk.txt')
            local found = vim.wait(60000, function() return #vim.diagnostic.get(0) > 0 end, 50)
            local lines = { vim.bo.filetype }
            for _, each in ipairs(vim.diagnostic.get(0)) do
              table.insert(lines, (each.message:gsub('\\n', ' ')))
            end
            local row = vim.fn.search('app')
            table.insert(lines, vim.fn.synIDattr(vim.fn.synID(row, 1, 1), 'name'))
            vim.fn.writefile(lines, result)
            vim.cmd('qall!')
            """)
        values = {"arg_plugin": EDITORS / "vim", "arg_vesk": SETTINGS.vesk.resolve(),
                  "arg_result": self.dir / "result"}
        text = script.read_text()
        for name, value in values.items():
            text = text.replace(name, json.dumps(str(value)))
        script.write_text(text)
        ran = subprocess.run(["nvim", "--headless", "-u", "NONE", "-n", "-c", f"luafile {script}"], cwd=self.dir, capture_output=True, text=True,
                             timeout=HANGS, env=self.environment({"HOME": str(self.base)}), check=False)
        self.assertTrue((self.dir / "result").exists(), ran.stderr)
        lines = self.read("result").splitlines()
        self.assertEqual(lines[0], "vesk")
        self.assertIn("There is no target 'lbi'. did you mean 'lib'?", lines)
        self.assertEqual(lines[-1], "veskTarget")

    @posix_only("the tokeniser of editors runs on this system")
    @needs("npm", "node")
    def test_textmate_grammar(self):
        """The highlighting made of patterns sees what the lexer sees."""
        packages = Path(os.environ.get("XDG_CACHE_HOME", Path.home() / ".cache")) / "vesk-deps/textmate"
        if not (packages / "node_modules/vscode-oniguruma").is_dir():
            packages.mkdir(parents=True, exist_ok=True)
            got = subprocess.run(["npm", "install", "--prefix", str(packages), "--no-audit", "--no-fund",
                                  "vscode-textmate@9.3.2", "vscode-oniguruma@2.0.1"],
                                 capture_output=True, text=True, timeout=HANGS, check=False)
            if got.returncode != 0:
                self.skipTest("npm cannot install the tokeniser: " + got.stderr[-200:])
        client = Client(self)
        self.addCleanup(client.end)
        legend = client.hello["capabilities"]["semanticTokensProvider"]["legend"]["tokenTypes"]
        texts = []
        for number, (name, text) in enumerate([*sources(), ("vesk.txt", EDGES)]):
            client.open(f"{number}/{name}", text.encode())
            data = client.ask("semanticTokens/full", f"{number}/{name}")["data"]
            texts.append({"name": f"{number}/{name}", "text": text, "tokens": absolute(data, legend)})
        program = Path(__file__).parent / "textmate/check-grammar.mjs"
        told = {"grammar": str(EDITORS / "vscode/syntaxes/vesk.tmLanguage.json"), "texts": texts}
        checked = subprocess.run(["node", str(program), str(packages)], input=json.dumps(told), text=True,
                                 capture_output=True, timeout=HANGS, check=False)
        self.assertEqual(checked.stderr, "")
        *faults, count = checked.stdout.splitlines()
        self.assertEqual(faults, [])
        self.assertGreater(int(count.split()[0]), 1000)

    def test_made_of_the_grammar(self):
        made = subprocess.run([sys.executable, str(EDITORS.parent / "scripts/editor-keywords"), "--check"],
                              capture_output=True, text=True, check=False)
        self.assertEqual((made.stdout, made.returncode), ("", 0))


# What highlighting made of patterns gets wrong first.
EDGES = """
unit edges
tools_: { if-not = name-x A = -0x1F B = a.b['x y'][1..-2] /* : */ C = R"(") \\" )" D = P"(a))" }
x (p, q) : +y(p) @z.units => name_ {
    units-x = lib.name ?H ^O += "a ${p} #{q.r[0]} $ { # // no comment
      if unit" N = "" if units = 5 { E = 7 } // if unit "open
}
"""


def absolute(data, legend):
    tokens, line, column = [], 0, 0
    for begin in range(0, len(data), 5):
        lines, columns, length, meaning, _ = data[begin:begin + 5]
        line, column = line + lines, columns + (0 if lines else column)
        tokens.append([line, column, length, legend[meaning]])
    return tokens
