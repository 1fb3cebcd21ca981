#include "platform/recorder.h"

#include <functional>
#include <gtest/gtest.h>
#include <xxhash.h>

#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/question_list.h"
#include "platform/remembered.h"
#include "platform/support.h"

namespace Vesk::platform {
namespace {

namespace fs = std::filesystem;
using test::TempDir;

/// Waits until what was just written can no longer be written again without a trace.
void letAge(const fs::path& file) {
    while (isRecent(fileStatus(file).value())) {}
}

std::optional<std::string> notesOf(const std::function<void()>& asks) {
    startRecording();
    asks();
    return takeRecording();
}

struct Case {
    const char* name;
    std::function<void()> asks;
    std::function<void()> changes;
};

TEST(Questions, AChangedAnswerIsNoticed) {
    const TempDir dir;
    const fs::path file = dir / "a file ö";
    const fs::path directory = dir / "directory";
    const fs::path missing = dir / "missing";
    std::error_code error;
    const auto appears = [&] { test::write(missing, "x"); };
    const auto grows = [&] { test::write(file, "longer"); };
    const std::vector<Case> cases = {
        {"status", [&] { fileStatus(file); }, grows},
        {"status of none", [&] { fileStatus(missing); }, appears},
        {"a file", [&] { isFile(missing); }, appears},
        {"a directory", [&] { isDirectory(directory); }, [&] { fs::remove(directory); }},
        {"is there", [&] { platform::exists(missing, error); }, appears},
        {"content", [&] { readWholeFile(file, error); }, grows},
        {"no content", [&] { readWholeFile(missing, error); }, appears},
        {"which file it is", [&] { isSameFile(file, missing); }, appears},
        {"start", [&] { readStart(file, 1, error); }, grows},
        {"pieces", [&] { readPieces(file, [](std::string_view) {}); }, grows},
        {"nothing to remove", [&] { removeFile(missing, error); }, appears},
        {"no directory to make", [&] { makeDirectories(directory, error); },
         [&] { fs::remove(directory); }},
        {"entries", [&] { listDirectory(dir.path(), error); }, appears},
        {"kind of an entry", [&] { listDirectory(dir.path(), error); },
         [&] { fs::remove(directory), test::write(directory, "now a file"); }},
        {"entries of none", [&] { listDirectory(missing, error); },
         [&] { fs::create_directory(missing); }},
        {"variable", [] { environmentVariable("VESK_TEST_ASKED"); },
         [] { setEnvironmentVariable("VESK_TEST_ASKED", ""); }},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        fs::remove_all(directory);
        fs::remove_all(missing);
        fs::create_directory(directory);
        test::write(file, "short");
        letAge(file);
        const auto notes = notesOf(one.asks);
        ASSERT_TRUE(notes && !notes->empty());
        EXPECT_TRUE(stillValid(*notes));
        one.changes();
        EXPECT_FALSE(stillValid(*notes));
    }
    removeEnvironmentVariable("VESK_TEST_ASKED");
}

TEST(Questions, ARunThatDidSomethingIsNotRepeatable) {
    const TempDir dir;
    const fs::path file = dir / "file";
    const fs::path other = dir / "other";
    std::error_code error;
    const std::vector<std::pair<const char*, std::function<void()>>> deeds = {
        {"write", [&] { writeWholeFile(file, "x", Append::no, error); }},
        {"a recent file", [&] { test::write(file, "y"), fileStatus(file); }},
        {"writer", [&] { FileWriter(file, Append::yes).close(); }},
        {"copy", [&] { copyFile(file, other, error); }},
        {"replace", [&] { replaceFile(other, file, error); }},
        {"remove", [&] { removeFile(file, error); }},
        {"directories", [&] { makeDirectories(dir / "a/b", error); }},
        {"tree", [&] { removeTree(dir / "a", error); }},
        {"process",
         [] {
             runProcess(test::childRequest({"exit", "0"}));
         }},
        {"shell",
         [] {
             captureShellOutput(test::childCommand({"exit", "0"}));
         }},
        {"whole environment", [] { environmentEntries(); }},
    };
    for (const auto& [name, deed] : deeds) {
        EXPECT_EQ(notesOf(deed), std::nullopt) << name;
    }
    EXPECT_EQ(notesOf([] {}), "");
}

TEST(Questions, AnswersFromElsewhere) {
    const TempDir dir;
    const fs::path file = dir / "a file ö";
    const std::string missing = pathToUtf8(dir / "missing");
    test::write(file, "short");
    QuestionList status;
    status.addStatusNow(file);
    QuestionList content;
    content.addContent(pathToUtf8(file), XXH3_128bits("short", 5).low64);
    QuestionList none;
    none.addStatus(missing, std::nullopt);
    QuestionList all;
    for (const QuestionList* list : {&status, &content, &none, &status, &none}) {
        EXPECT_TRUE(stillValid(list->recording()));
        EXPECT_TRUE(all.add(list->recording()));
    }
    EXPECT_EQ(all.recording(), status.recording() + content.recording() + none.recording());
    test::write(file, "shirt");  // the times may be the same
    EXPECT_FALSE(stillValid(content.recording()));
    test::write(dir / "missing", "x");
    EXPECT_FALSE(stillValid(none.recording()));
    fs::remove(file);
    EXPECT_FALSE(stillValid(status.recording()));
    EXPECT_FALSE(all.add("no recording"));
}

TEST(Questions, ScopesTellWhatWasAskedInThem) {
    const TempDir dir;
    const fs::path file = dir / "file";
    Remembered<bool> known;
    const auto isThere = [&] { return known.get("file", [&] { return isFile(file); }); };
    Questions outer;
    Questions inner;
    Questions again;
    {
        const QuestionScope scope(outer);
        environmentVariable("VESK_TEST_ASKED");
        const QuestionScope within(inner);
        EXPECT_FALSE(isThere());
    }
    fileStatus(dir.path());
    {
        const QuestionScope scope(again);
        EXPECT_FALSE(isThere());
    }
    EXPECT_EQ(again.recording, inner.recording) << "what is remembered was asked as well";
    test::write(file, "x");
    EXPECT_TRUE(stillValid(outer.recording));
    EXPECT_FALSE(stillValid(inner.recording));
    const QuestionScope scope(outer);
    std::error_code error;
    removeFile(file, error);
    EXPECT_FALSE(outer.repeatable);
    EXPECT_TRUE(inner.repeatable);
}

TEST(Questions, WhatIsNoNotesIsNeverTheSame) {
    const auto notes = notesOf([] { environmentVariable("VESK_TEST_ASKED"); });
    ASSERT_TRUE(notes && stillValid(*notes));
    for (std::size_t size = 1; size < notes->size(); ++size) {
        EXPECT_FALSE(stillValid(std::string_view(*notes).substr(0, size))) << size;
    }
    EXPECT_FALSE(stillValid("?" + notes->substr(1)));
}

}  // namespace
}  // namespace Vesk::platform
