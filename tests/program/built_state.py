"""What builds leave behind, compared without what differs from run to run."""

import re
import shutil

MANY = "-j16"
# In a cache file: how long a recipe took, stamps of targets without outputs, seals and hashes of
# records that hold such things, the times and numbers of files.
CHANGING = (
    (r"S 1 0\n19\nbuild: milliseconds\n\d+\n\d+\n", ""),
    (r"\d+\n[0-9a-f]+-[0-9a-f]+-\d+\n", "STAMP\n"),
    (r"\d+\n[0-9a-f]{24,32}\n", "HASH\n"),
    (r"\b[0-9a-f]{32}\b", "HASH"),
    (r"\d{12,}", "TIME"),
    (r"(files: states\n)\d+", r"\1"),
    # A file that was young when its state was taken is marked so.
    (r"(?m)^[fr?] [0-9a-f]+ [0-9a-f]+ (\d+ TIME)", r"f \1"),
    (r"(?m)^([a-z]) [0-9a-f]+ [0-9a-f]+ (\d+ TIME)", r"\1 \2"),
)


class CacheReader:
    """Takes the records of a cache file apart."""

    def __init__(self, data):
        self.data, self.at = data, 0

    def line(self):
        start, self.at = self.at, self.data.index(b"\n", self.at) + 1
        return self.data[start:self.at - 1]

    def text(self):
        size = int(self.line())
        start, self.at = self.at, self.at + size + 1
        return self.data[start:self.at - 1]

    def assignments(self):
        for _ in range(int(self.line())):
            self.assignment()

    def assignment(self):
        for _ in range(1 if self.line().startswith(b"A") else 2):
            self.text()

    def record(self):
        start = self.at
        for _ in range(int(self.line())):
            for _ in range(int(self.line())):
                self.assignment()
                if self.line() == b"1":
                    self.assignment()
            self.assignments()
        self.assignments()
        return self.data[start:self.at]

    def records(self):
        """By key, behind two lines of a header."""
        self.line()
        self.line()
        records = {}
        while self.at < len(self.data):
            key = self.text()
            records[key] = self.record()
        return records


def records_of(cache):
    """With those that were appended since it was written."""
    records = CacheReader(cache.read_bytes()).records()
    changes = cache.with_name(cache.name + ".changes")
    if changes.exists():
        records.update(CacheReader(changes.read_bytes()).records())
    return b"".join(key + b"\n" + record for key, record in records.items())


def lasting(cache):
    for pattern, text in CHANGING:
        cache = re.sub(pattern, text, cache)
    return cache


def state_of(directory):
    """The files below a directory, names with contents, and its caches, names with texts."""
    files, caches = {}, {}
    for path in sorted(directory.rglob("*")):
        name = path.relative_to(directory).as_posix()
        if path.name == ".vesk_cache":
            caches[name] = lasting(records_of(path).decode(errors="surrogateescape"))
        elif path.is_file() and not path.name.startswith(".vesk_cache."):
            files[name] = path.read_bytes()
    return files, caches


class SameResult:
    """For a ProgramTest: builds with many jobs leave what builds with one leave."""

    def same_with_many_jobs(self, *steps, others=(MANY,)):
        """Each step is a function that gets the option for the jobs; they are done in turn in the
        test's directory, which begins as it is now for each of the options."""
        self.remembers = True
        beginning = self.base / "beginning"
        shutil.copytree(self.dir, beginning, symlinks=True)
        expected = self.states(beginning, "-j1", steps)
        for jobs in others:
            for number, (alone, many) in enumerate(zip(expected,
                                                       self.states(beginning, jobs, steps))):
                self.same_state(alone, many, f"{jobs}, step {number}")

    def states(self, beginning, jobs, steps):
        shutil.rmtree(self.dir)
        shutil.copytree(beginning, self.dir, symlinks=True)
        found = []
        for step in steps:
            step(jobs)
            found.append(state_of(self.dir))
        return found

    def same_state(self, first, second, what):
        files, caches = zip(first, second)
        self.assertEqual(*map(sorted, files), what)
        self.assertEqual([name for name in files[0] if files[0][name] != files[1][name]], [], what)
        self.assertEqual(*map(sorted, caches), what)
        self.assertTrue(caches[0], "there is a cache to compare")
        for name, text in caches[0].items():
            self.assertMultiLineEqual(text, caches[1][name], f"{what}: {name}")
