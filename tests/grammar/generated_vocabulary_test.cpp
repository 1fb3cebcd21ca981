// Token types are positions in this list, from 1; cache files and messages rely on them.
#include <gtest/gtest.h>
#include <string>

#include "CommonLexer.h"
#include "VeskTopParser.h"

namespace Vesk::grammar {
namespace {

constexpr const char* kTokens =
    " WS LINE_COMMENT BLOCK_COMMENT COLON DCOLON ALIAS MERGE_ALIAS LBRACE RBRACE LBRACKET RBRACKET"
    " EQUALS NEQUALS GREATER LESSER APPEND ASSIGNEMPTY STRING INDEX_NAME RAW_STRING PATH_STRING"
    " NUMBER LSQUARE RSQUARE PLUS AT UP MUST HINT SLASH COMMA DDOT DOT SEMICOLON UNIT_STR IF_STR"
    " IMPORT_STR UNITS_STR PROFILES_STR PROJECTS_STR TOOLS_STR NAME_STR IDENTIFIER";

std::string symbols(const antlr4::dfa::Vocabulary& vocabulary) {
    std::string all;
    for (std::size_t type = 1; type <= vocabulary.getMaxTokenType(); ++type) {
        all += " " + std::string(vocabulary.getSymbolicName(type));
    }
    return all;
}

TEST(GeneratedVocabulary, LexerAndParserNumberTheTokensAlike) {
    antlr4::ANTLRInputStream input("");
    CommonLexer lexer(&input);
    antlr4::CommonTokenStream tokens(&lexer);
    VeskTopParser parser(&tokens);
    EXPECT_EQ(symbols(lexer.getVocabulary()), kTokens);
    EXPECT_EQ(symbols(parser.getVocabulary()), kTokens);
}

TEST(Lexer, SplitsAtTokenBoundaries) {
    const std::pair<const char*, const char*> cases[] = {
        {"R\"()\"x", "RAW_STRING<R\"()\"> IDENTIFIER<x> "},
        {"R\"(f(g(x)))\" \"z)\"", "RAW_STRING<R\"(f(g(x)))\"> STRING<\"z)\"> "},
        {"P\"(C:/Program Files (x86))\"", "PATH_STRING<P\"(C:/Program Files (x86))\"> "},
        {"R\"()))\")\"", "RAW_STRING<R\"()))\"> RBRACKET<)> "},
        {"R\"(a\"b\n\\c)d)\"", "RAW_STRING<R\"(a\"b\n\\c)d)\"> "},
        {"R\"x\"", "IDENTIFIER<R> STRING<\"x\"> "},
        {"\"C:\\dir\"", "STRING<\"C:\\dir\"> "},
        {"a-b a - b", "IDENTIFIER<a-b> IDENTIFIER<a> IDENTIFIER<b> "},
        {"-12 -0x1F 0x", "NUMBER<-12> NUMBER<-0x1F> NUMBER<0> IDENTIFIER<x> "},
        {"units units2 iffy", "UNITS_STR<units> IDENTIFIER<units2> IDENTIFIER<iffy> "},
        {":: ?= ? => +> += .. // x",
         "DCOLON<::> ASSIGNEMPTY<?=> HINT<?> ALIAS<=>> MERGE_ALIAS<+>> APPEND<+=> DDOT<..> "},
        {"/* a /* b */ c */", "IDENTIFIER<c> SLASH</> "},
        {"'a b' 'c\nd", "INDEX_NAME<'a b'> IDENTIFIER<d> "},
    };
    for (const auto& [text, expected] : cases) {
        antlr4::ANTLRInputStream input(text);
        CommonLexer lexer(&input);
        lexer.removeErrorListeners();
        std::string found;
        for (const auto& token : lexer.getAllTokens()) {
            found += std::string(lexer.getVocabulary().getSymbolicName(token->getType())) + "<" +
                     token->getText() + "> ";
        }
        EXPECT_EQ(found, expected);
    }
}

}  // namespace
}  // namespace Vesk::grammar
