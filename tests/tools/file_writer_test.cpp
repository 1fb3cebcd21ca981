#include "tools/file_writer.h"

#include <fstream>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/tool_fixture.h"
#include "types/context_value.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

class FileWriter : public testing::Test {
  protected:
    FileWriter() {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        directory_ = fs::temp_directory_path() / (std::string("vesk \u00e9 ") + test->name());
        fs::remove_all(directory_);
        fs::create_directories(directory_);
        file = directory_ / "f.txt";
    }
    ~FileWriter() override {
        std::error_code error;
        fs::remove_all(directory_, error);
    }

    static std::shared_ptr<Builder> builderFor(const TargetContext& target) {
        return FileWriterMatcher("w", {}, {}).createBuilder(target);
    }

    /// Runs the writer; the error's text, empty for success.
    static std::string write(std::vector<Assignment> assignments) {
        const auto target = targetOf(assignments);
        try {
            builderFor(*target)->complete(*target, 0);
        } catch (const VeskException& error) {
            return error.message();
        }
        return {};
    }

    Assignment fileName() const { return var("FILENAME", path(platform::pathToUtf8(file))); }

    std::string content() const {
        std::error_code error;
        return platform::readWholeFile(file, error).value_or("<" + error.message() + ">");
    }

    fs::path directory_;
    fs::path file;
};

TEST_F(FileWriter, SerializesText) {
    const auto nested = std::make_shared<VeskContext>(contextOf({var("a", num(1))}));
    const std::vector<std::pair<ValuePtr, std::string>> cases = {
        {str("plain"), "plain"},
        {str(""), ""},
        {std::make_shared<VeskRawString>("${not} expanded"), "${not} expanded"},
        {list({}), ""},
        {list({str("one"), num(2), str("three")}), "one\n2\nthree"},
        {list({str(""), str("")}), "\n"},
        {nested, nested->toDisplayString()},
        {list({nested, list({num(1), num(2)})}), nested->toDisplayString() + "\n1 2"},
    };
    for (const auto& [value, expected] : cases) {
        SCOPED_TRACE(value->toDisplayString());
        EXPECT_EQ(write({fileName(), var("TEXT", value)}), "");
        EXPECT_EQ(content(), expected);
    }
}

TEST_F(FileWriter, WritesBytesAsTheyAre) {
    const std::string bytes("\r\n\0\x1a\xff\n", 6);
    EXPECT_EQ(write({fileName(), var("TEXT", str(bytes))}), "");
    EXPECT_EQ(content(), bytes);
}

TEST_F(FileWriter, SeparatorAndModeOfTheTarget) {
    const Assignment items = var("TEXT", list({str("a"), str("b"), str("c")}));
    EXPECT_EQ(write({fileName(), items, var("SEPARATOR", str(", "))}), "");
    EXPECT_EQ(content(), "a, b, c");
    EXPECT_EQ(write({fileName(), items, var("SEPARATOR", str("")), var("MODE", str("AppenD"))}),
              "");
    EXPECT_EQ(content(), "a, b, cabc");
    EXPECT_EQ(write({fileName(), items, var("SEPARATOR"), var("MODE", str("CREATE"))}), "");
    EXPECT_EQ(content(), "a\nb\nc");
}

TEST_F(FileWriter, SeparatorAndModeOfTheDeclaration) {
    const auto target = targetOf({fileName(), var("TEXT", list({str("a"), str("b")}))});
    const FileWriterMatcher tool("w", {}, mapOf({var("separator", str("+"))}));
    tool.createBuilder(*target)->complete(*target, 0);
    EXPECT_EQ(content(), "a+b");
}

TEST_F(FileWriter, NothingIsWrittenWhenACheckFails) {
    const Assignment text = var("TEXT", str("new"));
    const Assignment missing =
        var("FILENAME", path(platform::pathToUtf8(directory_ / "no" / "f.txt")));
    const std::string missingParent = platform::pathToUtf8((directory_ / "no"));
    ASSERT_EQ(write({fileName(), var("TEXT", str("old"))}), "");

    const std::vector<std::pair<std::vector<Assignment>, std::string>> cases = {
        {{fileName(), var("TEXT", list({str("a"), nullptr}))},
         "File writer cannot serialize an empty list item."},
        {{fileName(), var("TEXT", num(1))},
         "File writer variable 'TEXT' must be a string, list, or context."},
        {{fileName(), var("TEXT")},
         "File writer variable 'TEXT' must be a string, list, or context."},
        {{fileName(), text, var("MODE", str("overwrite"))},
         "File writer variable 'MODE' must be either 'create' or 'append', got 'overwrite'."},
        {{var("FILENAME", num(1)), text},
         "File writer variable 'FILENAME' must be a string or path."},
        {{text}, "File writer variable 'FILENAME' must be a string or path."},
        {{missing, text}, "File writer parent directory does not exist: '" + missingParent + "'."},
    };
    for (const auto& [assignments, message] : cases) {
        EXPECT_EQ(write(assignments), message);
        EXPECT_EQ(content(), "old");
    }
    EXPECT_FALSE(fs::exists(directory_ / "no"));
}

TEST_F(FileWriter, ReportsWhatTheSystemRefuses) {
    const std::string name = platform::pathToUtf8(directory_);
    const std::string error = write({var("FILENAME", path(name)), var("TEXT", str("x"))});
    const std::string expected = "File writer could not open '" + name + "' for writing.";
    EXPECT_EQ(error.substr(0, expected.size()), expected);
    EXPECT_GT(error.size(), expected.size()) << "the system's reason follows";

    if (!platform::kWindows) {
        const std::string full = "File writer could not write to '/dev/full'.";
        for (const std::size_t size : {std::size_t{1}, std::size_t{1} << 20}) {
            const std::string report = write(
                {var("FILENAME", str("/dev/full")), var("TEXT", str(std::string(size, 'x')))});
            EXPECT_EQ(report, full + " No space left on device.");
        }
    }
}

TEST_F(FileWriter, TextAndFileAreOutputs) {
    const auto target =
        targetOf({var("FILENAME", str("sub/f.txt")), var("TEXT", list({str("a"), str("b")}))});
    const RecipeSet set = builderFor(*target)->createRecipes(*target);
    EXPECT_TRUE(set.ok);
    EXPECT_TRUE(set.recipes.empty());
    ASSERT_EQ(set.assignments.size(), 2u);
    EXPECT_EQ(set.assignments[0].toDisplayString(), "TEXT = \"a\nb\"");
    EXPECT_EQ(set.assignments[1].name, CiString("FILE"));
    EXPECT_EQ(set.assignments[1].modifier, AssignModifier::Output);
    EXPECT_EQ(platform::pathFromUtf8(set.assignments[1].value->toString()),
              fs::current_path() / "sub/f.txt");
    EXPECT_TRUE(builderFor(*target)->commandRecipes(*target).empty());
    EXPECT_EQ(builderFor(*target)->name(), "file_writer");
}

TEST_F(FileWriter, AFileWithoutDirectoryGoesIntoTheCurrentOne) {
    const fs::path earlier = fs::current_path();
    fs::current_path(directory_);
    EXPECT_EQ(write({var("FILENAME", str("f.txt")), var("TEXT", str("here"))}), "");
    fs::current_path(earlier);
    EXPECT_EQ(content(), "here");
}

}  // namespace
}  // namespace Vesk::test
