#include <array>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "CommonLexer.h"
#include "VeskTopParser.h"

namespace Vesk::grammar {
namespace {

struct Token {
    const char* symbol;
    /// As error messages show it; tokens without fixed text show their symbol.
    const char* display;
};

// Token types are the positions in this table, from 1; cache files and messages rely on them.
constexpr std::array<Token, 43> kTokens = {{
    {"WS", "WS"},
    {"LINE_COMMENT", "LINE_COMMENT"},
    {"BLOCK_COMMENT", "BLOCK_COMMENT"},
    {"COLON", "':'"},
    {"DCOLON", "'::'"},
    {"ALIAS", "'=>'"},
    {"MERGE_ALIAS", "'+>'"},
    {"LBRACE", "'{'"},
    {"RBRACE", "'}'"},
    {"LBRACKET", "'('"},
    {"RBRACKET", "')'"},
    {"EQUALS", "'='"},
    {"NEQUALS", "'!='"},
    {"GREATER", "'>'"},
    {"LESSER", "'<'"},
    {"APPEND", "'+='"},
    {"ASSIGNEMPTY", "'\\u003F='"},
    {"STRING", "STRING"},
    {"INDEX_NAME", "INDEX_NAME"},
    {"RAW_STRING", "RAW_STRING"},
    {"PATH_STRING", "PATH_STRING"},
    {"NUMBER", "NUMBER"},
    {"LSQUARE", "'['"},
    {"RSQUARE", "']'"},
    {"PLUS", "'+'"},
    {"AT", "'@'"},
    {"UP", "'^'"},
    {"MUST", "'!'"},
    {"HINT", "'\\u003F'"},
    {"SLASH", "'/'"},
    {"COMMA", "','"},
    {"DDOT", "'..'"},
    {"DOT", "'.'"},
    {"SEMICOLON", "';'"},
    {"UNIT_STR", "'unit'"},
    {"IF_STR", "'if'"},
    {"IMPORT_STR", "'import'"},
    {"UNITS_STR", "'units'"},
    {"PROFILES_STR", "'profiles'"},
    {"PROJECTS_STR", "'projects'"},
    {"TOOLS_STR", "'tools'"},
    {"NAME_STR", "'name'"},
    {"IDENTIFIER", "IDENTIFIER"},
}};

void expectVocabulary(const antlr4::dfa::Vocabulary& vocabulary) {
    ASSERT_EQ(vocabulary.getMaxTokenType(), kTokens.size());
    for (size_t i = 0; i < kTokens.size(); ++i) {
        EXPECT_EQ(vocabulary.getSymbolicName(i + 1), kTokens[i].symbol);
        EXPECT_EQ(vocabulary.getDisplayName(i + 1), kTokens[i].display);
    }
}

TEST(GeneratedVocabulary, LexerAndParserNumberAndNameTheTokensAlike) {
    antlr4::ANTLRInputStream input("");
    CommonLexer lexer(&input);
    antlr4::CommonTokenStream tokens(&lexer);
    VeskTopParser parser(&tokens);
    expectVocabulary(lexer.getVocabulary());
    expectVocabulary(parser.getVocabulary());
    EXPECT_EQ(static_cast<size_t>(CommonLexer::IDENTIFIER), kTokens.size());
    EXPECT_EQ(static_cast<size_t>(VeskTopParser::IDENTIFIER), kTokens.size());
}

struct Lexed {
    const char* text;
    /// Symbolic names and texts of the tokens.
    const char* tokens;

    friend void PrintTo(const Lexed& lexed, std::ostream* out) { *out << lexed.text; }
};

class TokenBoundary : public testing::TestWithParam<Lexed> {};

TEST_P(TokenBoundary, SplitsAsDescribed) {
    antlr4::ANTLRInputStream input(GetParam().text);
    CommonLexer lexer(&input);
    lexer.removeErrorListeners();
    std::string found;
    for (const auto& token : lexer.getAllTokens()) {
        found +=
            lexer.getVocabulary().getSymbolicName(token->getType()) + "<" + token->getText() + "> ";
    }
    EXPECT_EQ(found, GetParam().tokens);
}

INSTANTIATE_TEST_SUITE_P(
    Lexer, TokenBoundary,
    testing::Values(Lexed{"R\"(a)b)\"", "RAW_STRING<R\"(a)b)\"> "},
                    Lexed{"R\"()\"x", "RAW_STRING<R\"()\"> IDENTIFIER<x> "},
                    Lexed{"R\"(f(x))\" y", "RAW_STRING<R\"(f(x))\"> IDENTIFIER<y> "},
                    Lexed{"R\"(f(g(x)))\" \"z)\"", "RAW_STRING<R\"(f(g(x)))\"> STRING<\"z)\"> "},
                    Lexed{"P\"(C:/Program Files (x86))\"",
                          "PATH_STRING<P\"(C:/Program Files (x86))\"> "},
                    Lexed{"R\"()))\")\"", "RAW_STRING<R\"()))\"> RBRACKET<)> "},
                    Lexed{"R\"(a\"b\n\\c)d)\"", "RAW_STRING<R\"(a\"b\n\\c)d)\"> "},
                    Lexed{"R\"x\"", "IDENTIFIER<R> STRING<\"x\"> "},
                    Lexed{"\"C:\\dir\"", "STRING<\"C:\\dir\"> "},
                    Lexed{"a-b a - b", "IDENTIFIER<a-b> IDENTIFIER<a> IDENTIFIER<b> "},
                    Lexed{"-12 -0x1F 0x", "NUMBER<-12> NUMBER<-0x1F> NUMBER<0> IDENTIFIER<x> "},
                    Lexed{"units units2 if iffy",
                          "UNITS_STR<units> IDENTIFIER<units2> IF_STR<if> "
                          "IDENTIFIER<iffy> "},
                    Lexed{":: ?= ? => +> += .. // x",
                          "DCOLON<::> ASSIGNEMPTY<?=> HINT<?> ALIAS<=>> "
                          "MERGE_ALIAS<+>> APPEND<+=> DDOT<..> "},
                    Lexed{"/* a /* b */ c */", "IDENTIFIER<c> SLASH</> "},
                    Lexed{"'a b' 'c\nd", "INDEX_NAME<'a b'> IDENTIFIER<d> "}));

}  // namespace
}  // namespace Vesk::grammar
