#include "build/cache/dependency_file.h"

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

}  // namespace
}  // namespace Vesk::test
