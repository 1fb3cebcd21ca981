"""The examples of a page in Markdown, and what is to be done with each.

Every block of code stands below a comment that says so, which readers do not see:

    <!-- begin -->               the next blocks belong to a new, empty directory
    <!-- file: NAME -->          the block is this file
    <!-- add to: NAME -->        the block stands at the end of this file from now on
    <!-- replace in: NAME -->   the block is a difference: lines that begin with "-" give way to those with "+"
    <!-- unit -->                begins, writes vesk.txt, and has its targets listed without a warning
    <!-- body -->                the same for what stands in the braces of a target
    <!-- project -->             writes a project file of this section and what else it needs
    <!-- run -->                 lines that begin with "$ " are typed into a shell; what stands below each is
                                 what it prints, "..." for anything; nothing there: it does not matter
    <!-- run: fails -->          the same, and the last of them fails
    <!-- run on Windows -->      lines that begin with "> " are for cmd
    <!-- needs: PROGRAM ... -->  what comes now in this directory is run where there are these programs
    <!-- not run: REASON -->     it cannot be run
    <!-- hidden file: NAME       a file that the examples need and readers do not: its lines follow, up
    -->                          to the end of the comment; it is written after the block that comes next
                                 where another comment is for that one
"""

import re
import textwrap
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COMMENT = re.compile(r"<!--\s*(begin|file|add to|replace in|unit|body|project|run on Windows|run|needs|not run|hidden file)\b"
                     r"(?::\s*([^\n]*?))?\s*(?:\n(.*?))?-->\n?", re.S)


@dataclass
class Step:
    kind: str
    argument: str
    text: str
    place: str


def pages():
    """README.md and the pages of docs/, by name."""
    return ["README.md"] + sorted(f"docs/{page.name}" for page in (ROOT / "docs").glob("*.md"))


def code_at(lines, at):
    """The block of code that begins in this line, without its fence, and the line behind it; or None."""
    line = lines[at]
    if line.startswith("```"):
        end = lines.index("```", at + 1)
        return "\n".join(lines[at + 1:end]) + "\n", end + 1
    if re.match(r" {4,}\S", line) and (at == 0 or not lines[at - 1].strip() or lines[at - 1].endswith("-->")):
        end = at
        while end < len(lines) and (lines[end].startswith("    ") or not lines[end].strip()):
            end += 1
        return textwrap.dedent("\n".join(lines[at:end])).strip("\n") + "\n", end
    return None


def examples(page):
    """The steps of a page; a block that no comment stands above gets the kind "unmarked"."""
    text = (ROOT / page).read_text(encoding="utf-8")
    lines = text.split("\n")
    at = 0
    wanted = None
    later = []
    while at < len(lines):
        comment = COMMENT.match("\n".join(lines[at:at + 400])) if lines[at].startswith("<!--") else None
        if comment:
            kind, argument, body = comment[1], comment[2] or "", comment[3] or ""
            place = f"{page}:{at + 1}"
            at += comment[0].count("\n") or 1
            if wanted and kind == "hidden file":
                later.append(Step(kind, argument, body, place))
            elif kind in ("begin", "needs", "hidden file"):
                yield Step(kind, argument, body, place)
            else:
                wanted = (kind, argument)
            continue
        block = code_at(lines, at)
        if block:
            kind, argument = wanted or ("unmarked", "")
            yield Step(kind, argument, block[0], f"{page}:{at + 1}")
            yield from later
            wanted, later = None, []
            at = block[1]
        else:
            at += 1


def commands(text, prompt="$ "):
    """The commands of a block with what stands below each."""
    found = []
    for line in text.rstrip("\n").split("\n"):
        if line.startswith(prompt):
            found.append([line[len(prompt):], []])
        elif found:
            found[-1][1].append(line)
        else:
            found.append([line, []])  # a block of commands without prompts
    return [(re.sub(r"\s{2,}#.*", "", command), "\n".join(output)) for command, output in found]


def pattern(output):
    """What an output has to fit: a line "..." stands for any lines, "..." in one for anything."""
    return "".join("(?:.*\n)*?" if line.strip() == "..." else ".*".join(map(re.escape, line.split("..."))) + "\n"
                   for line in output.split("\n"))
