#include "cache/dependency_file.h"

#include <gtest/gtest.h>

namespace Vesk::test {
namespace {

TEST(DependencyFile, Prerequisites) {
    using Names = std::vector<std::string>;
    const std::pair<const char*, Names> cases[] = {
        {"a.o: a.c a.h\n", {"a.c", "a.h"}},
        {"out/a 1.o: a.c \\\n  inc/a.h \\\r\n\tb.h\r\n", {"a.c", "inc/a.h", "b.h"}},
        {"a.o: my\\ file.c d\\#e.h f$$g.h\n", {"my file.c", "d#e.h", "f$g.h"}},
        {"C:\\out\\a.o: C:\\src\\a.c \\\n C:\\Program\\ Files\\x.h\n",
         {"C:\\src\\a.c", "C:\\Program Files\\x.h"}},
        {"a.o: a.c x.h\n\nx.h:\n", {"a.c", "x.h"}},
        {"a.o:\n", {}},
        {"a.o: \\\n a.c", {"a.c"}},
        {"", {}},
        {"no rule here", {}},
    };
    for (const auto& [text, names] : cases) {
        EXPECT_EQ(prerequisites(text), names) << text;
    }
}

TEST(DependencyFile, ReportsInJson) {
    using Names = std::optional<std::vector<std::string>>;
    const std::pair<const char*, Names> cases[] = {
        {R"({"Version": "1.0", "Data": {"Source": "c:\\a.cpp", "Includes": ["c:\\x y\\ö.h"]}})",
         {{R"(c:\x y\ö.h)"}}},
        {R"({"Data": {"PCH": "p.pch", "Includes": [], "ImportedModules": ["std.core"],
             "ImportedHeaderUnits": ["u.h"]}})",
         {{"p.pch", "u.h"}}},
        {"\xEF\xBB\xBF"
         R"({"Data": {"PCH": "", "ImportedModules": [{"Name": "m", "BMI": "m.ifc"}],
             "ImportedHeaderUnits": [{"Header": "u.h", "BMI": "u.ifc"}]}})",
         {{"m.ifc", "u.h", "u.ifc"}}},
        {R"({"Data": {}})", Names(std::in_place)},
        {R"({"Data": {"Includes": ["a.h")", std::nullopt},
        {R"({"Version": "1.0"})", std::nullopt},
        {"[]", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, names] : cases) {
        EXPECT_EQ(reportedDependencies(text), names) << text;
    }
}

TEST(DependencyFile, NotesInAnyLanguage) {
    EXPECT_EQ(includeNotes("a.c\r\nNote: including file: C:\\a b\\x.h\r\n"
                           "Hinweis: Einlesen der Datei:  d:/y.h\n"
                           "メモ: インクルード ファイル:   inc/z.h"),
              (std::vector<std::string>{"C:\\a b\\x.h", "d:/y.h", "inc/z.h"}));
}

}  // namespace
}  // namespace Vesk::test
