// Files are parsed in two ways; what is said about errors must be what one plain parse says.
#include <gtest/gtest.h>
#include <string>

#include "CommonLexer.h"
#include "VeskTopParser.h"

#include "base/text.h"
#include "grammar/error_listeners.h"
#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "platform/files.h"

namespace Vesk {
namespace {

class SyntaxErrors : public LoaderTest {
  protected:
    /// The messages of a parse in the runtime's default modes.
    static std::string plainMessages(const std::string& name, const std::string& text) {
        ThrowingErrorListener listener(name, text);
        antlr4::ANTLRInputStream input(text);
        grammar::CommonLexer lexer(&input);
        antlr4::CommonTokenStream tokens(&lexer);
        grammar::VeskTopParser parser(&tokens);
        lexer.removeErrorListeners();
        lexer.addErrorListener(&listener);
        parser.removeErrorListeners();
        parser.addErrorListener(&listener);
        parser.projFile();
        return joined(listener.messages(), "\n");
    }
};

TEST_F(SyntaxErrors, AreThoseOfAPlainParse) {
    for (const char* body :
         {"# { x = 1 }", "a { x = }", "a { x = 1 ] }", "a { x = [1 2] y = [,] }",
          "a { x = b[1..] y = b[..2] z = b[c. }", "a { x = 1 } } b { y = $ }",
          "a { if { x } if x = { y } }", "a { x = \"open }", "a { unit = 1 x 'a\nb' = 2 }",
          "a { x = 1 y ? z ^ }", "a { x == 1 y += += 2 }", "\u00e4 { x = 1 \u20ac }",
          "a { x = R\"(open }"}) {
        const std::string text = "name p\nprofiles {\n" + std::string(body) + "}";
        const auto path = write("p.txt", text);
        const std::string expected = plainMessages(platform::pathToUtf8(path), text);
        ASSERT_FALSE(expected.empty()) << body;
        const std::string said = outcome([&] { return parseProjectFile(path).name; });
        EXPECT_TRUE(said.starts_with(readable(expected))) << said;
    }
}

}  // namespace
}  // namespace Vesk
