#include "cache/file_states.h"

#include <gtest/gtest.h>

#include "cache/tracked_path.h"
#include "platform/support.h"

namespace Vesk::test {
namespace {

using Comparison = FileStates::Comparison;
namespace fs = std::filesystem;

class FileStatesTest : public testing::Test {
  protected:
    std::string path(const char* name) const { return trackedPath(directory / name); }

    /// A file that was last changed long enough ago for its times to tell.
    std::string settledFile(const char* name, const char* content) {
        write(directory / name, content);
        const FileState state = FileStates().current(path(name));
        while (state.kind == FileState::Kind::Recent && !FileStates::isSettled(path(name), state)) {
        }
        return path(name);
    }

    static FileState stateOf(const std::string& file) { return FileStates().current(file); }

    TempDir directory;
};

TEST_F(FileStatesTest, WhatCountsAsChanged) {
    const std::string file = settledFile("a", "one");
    const FileState before = stateOf(file);
    EXPECT_EQ(before.kind, FileState::Kind::File);
    EXPECT_EQ(FileStates().compare(file, before), Comparison::Same);

    FileState replaced = before;
    ++replaced.number;
    EXPECT_EQ(FileStates().compare(file, replaced), Comparison::SameContent) << "another file";
    replaced.hash.low ^= 1;
    EXPECT_EQ(FileStates().compare(file, replaced), Comparison::Changed) << "of the same times";

    fs::last_write_time(directory / "a",
                        fs::last_write_time(directory / "a") + std::chrono::hours(1));
    EXPECT_EQ(FileStates().compare(file, before), Comparison::SameContent) << "touched";

    write(directory / "a", "two");
    EXPECT_EQ(FileStates().compare(file, before), Comparison::Changed);
    write(directory / "a", "three");
    EXPECT_EQ(FileStates().compare(file, before), Comparison::Changed);
    fs::remove(directory / "a");
    EXPECT_EQ(FileStates().compare(file, before), Comparison::Missing);
    fs::create_directory(directory / "a");
    EXPECT_EQ(FileStates().compare(file, before), Comparison::Changed);

    const FileState missing = stateOf(path("none"));
    EXPECT_EQ(FileStates().compare(path("none"), missing), Comparison::Same);
    write(directory / "none", "");
    EXPECT_EQ(FileStates().compare(path("none"), missing), Comparison::Changed) << "it appeared";
    FileState unknown = stateOf(path("none"));
    unknown.kind = FileState::Kind::Unknown;
    EXPECT_EQ(FileStates().compare(path("none"), unknown), Comparison::Changed);
}

TEST_F(FileStatesTest, AnEditWithItsOldTimePutBackIsNoticed) {
    const std::string file = settledFile("a", "one");
    const FileState before = stateOf(file);
    const auto time = fs::last_write_time(directory / "a");
    write(directory / "a", "two");
    fs::last_write_time(directory / "a", time);
    EXPECT_EQ(FileStates().compare(file, before), Comparison::Changed);
}

// Two changes within one tick of the file system's clock carry the same time.
TEST_F(FileStatesTest, ARecentFileIsComparedByContent) {
    write(directory / "a", "one");
    FileState state = stateOf(path("a"));
    if (state.kind == FileState::Kind::File) {
        GTEST_SKIP() << "this machine was too busy to look at the file at once";
    }
    EXPECT_EQ(state.kind, FileState::Kind::Recent);
    FileState forged = state;
    forged.hash.low ^= 1;
    EXPECT_EQ(FileStates().compare(path("a"), forged), Comparison::Changed)
        << "same size and times, other content";
    while (!FileStates::isSettled(path("a"), state)) {}
    EXPECT_EQ(FileStates().current(path("a")).kind, FileState::Kind::File);
}

TEST_F(FileStatesTest, WhatCommandsReadIsRememberedFromBeforeTheyBegan) {
    const std::string file = settledFile("a", "one");
    FileStates states;
    const FileState before = states.current(file);
    const std::int64_t start = platform::fileClock();
    EXPECT_EQ(states.afterReading(file, start).hash, before.hash);
    write(directory / "a", "two");
    EXPECT_EQ(states.afterReading(file, start).kind, FileState::Kind::Unknown)
        << "edited while the command ran";

    while (platform::fileClock() == start) {}
    write(directory / "found", "x");
    EXPECT_EQ(FileStates().afterReading(path("found"), start).kind, FileState::Kind::Unknown)
        << "nobody looked before, and it is newer than the command";
    states.written(path("found"));
    EXPECT_NE(states.afterReading(path("found"), start).kind, FileState::Kind::Unknown)
        << "made by a command of this build";
}

TEST_F(FileStatesTest, AFileIsExaminedOnceUntilItIsWritten) {
    const std::string file = settledFile("a", "one");
    FileStates states;
    const FileState first = states.current(file);
    write(directory / "a", "other");
    EXPECT_EQ(states.current(file).size, first.size);
    states.written(file);
    EXPECT_EQ(states.current(file).size, 5u);
}

TEST_F(FileStatesTest, TheNamesInADirectory) {
    fs::create_directory(directory / "d");
    write(directory / "d/a", "one");
    const std::string names = namesPath(path("d"));
    const FileState before = stateOf(names);
    EXPECT_EQ(before.kind, FileState::Kind::Names);
    write(directory / "d/a", "two");
    write(directory / "d/.vesk_cache.tmp", "");
    EXPECT_EQ(FileStates().compare(names, before), Comparison::Same);
    FileStates states;
    EXPECT_EQ(states.compare(names, before), Comparison::Same);
    write(directory / "d/b", "");
    states.written(path("d/b"));
    EXPECT_EQ(states.compare(names, before), Comparison::Changed);
    fs::remove_all(directory / "d");
    EXPECT_EQ(FileStates().compare(names, before), Comparison::Changed);
    EXPECT_EQ(stateOf(names).kind, FileState::Kind::Missing);
}

TEST_F(FileStatesTest, ReadingAheadOnSeveralThreadsGivesTheSameStates) {
    std::vector<std::string> files;
    for (int i = 0; i < 60; ++i) {
        const std::string name = "f" + std::to_string(i % 50);
        write(directory / name, name);
        files.push_back(path(name.c_str()));
    }
    files.push_back(path("missing"));
    FileStates ahead;
    ahead.readAhead(files, 8);
    for (const std::string& file : files) {
        EXPECT_EQ(ahead.current(file).hash, stateOf(file).hash) << file;
    }
}

TEST_F(FileStatesTest, StateLinesComeBack) {
    FileState state;
    state.kind = FileState::Kind::Recent;
    state.device = ~0ULL;
    state.number = 7;
    state.size = ~0ULL;
    state.modified = -5;
    state.changed = 1'234'567'890'123'456'789;
    state.hash = {~0ULL, 1};
    std::string table;
    appendStateLine(table, state, "a b/ä.c");
    std::string_view rest = table;
    FileState read;
    std::string_view name;
    ASSERT_TRUE(takeStateLine(rest, read, name));
    EXPECT_EQ(name, "a b/ä.c");
    EXPECT_EQ(read.device, state.device);
    EXPECT_EQ(read.number, state.number);
    EXPECT_EQ(read.size, state.size);
    EXPECT_EQ(read.modified, state.modified);
    EXPECT_EQ(read.hash, state.hash);
    EXPECT_TRUE(rest.empty());
    for (const char* bad : {"", "x 1 1 1 1 1 1 1 a\n", "f 1 1 1 1 1 1 a\n", "f 1 1 1 1 1 1 1 a",
                            "f 1 1 -1 1 1 1 1 a\n"}) {
        std::string_view text = bad;
        EXPECT_FALSE(takeStateLine(text, read, name)) << bad;
    }
}

}  // namespace
}  // namespace Vesk::test
