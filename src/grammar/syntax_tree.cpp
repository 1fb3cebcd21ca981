#include "grammar/syntax_tree.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>

#include "base/ci_string.h"
#include "base/exception.h"
#include "grammar/recognisers.h"
#include "grammar/syntax_hints.h"
#include "grammar/text_stream.h"
#include "grammar/utf8.h"

namespace Vesk {
namespace {

using Tokens = grammar::CommonLexer;
using Parser = grammar::VeskTopParser;

using RuleNumber = std::pair<std::size_t, SyntaxRule>;

constexpr RuleNumber kRules[] = {
    {Parser::RuleUnit_name, SyntaxRule::UnitName},
    {Parser::RuleTarget, SyntaxRule::Target},
    {Parser::RuleParameter_name, SyntaxRule::Parameter},
    {Parser::RuleDependency, SyntaxRule::Dependency},
    {Parser::RuleDirect_dependency, SyntaxRule::DirectDependency},
    {Parser::RuleDependency_macro, SyntaxRule::Macro},
    {Parser::RuleDependency_parameter, SyntaxRule::Argument},
    {Parser::RuleContext, SyntaxRule::Context},
    {Parser::RuleCond_context, SyntaxRule::ConditionalContext},
    {Parser::RuleCondition, SyntaxRule::Condition},
    {Parser::RuleAssignment, SyntaxRule::Assignment},
    {Parser::RuleValueNode, SyntaxRule::Value},
    {Parser::RuleList, SyntaxRule::List},
    {Parser::RuleIdentifier, SyntaxRule::Identifier},
    {Parser::RuleSegment, SyntaxRule::Segment},
    {Parser::RuleIndex, SyntaxRule::Index},
    {Parser::RuleProj_name, SyntaxRule::ProjectName},
    {Parser::RuleProj_import_section, SyntaxRule::Imports},
    {Parser::RuleProj_path_import, SyntaxRule::PathImport},
    {Parser::RuleProj_registry_import, SyntaxRule::RegistryImport},
    {Parser::RuleProj_source_profile, SyntaxRule::SourceProfile},
    {Parser::RuleProj_import_profile, SyntaxRule::ImportedProfile},
    {Parser::RuleBuild_tools, SyntaxRule::Tools},
    {Parser::RuleBuild_tool, SyntaxRule::Tool},
    {Parser::RuleUnits, SyntaxRule::Units},
    {Parser::RuleUnit, SyntaxRule::UnitEntry},
    {Parser::RuleProfiles, SyntaxRule::Profiles},
    {Parser::RuleProfile, SyntaxRule::Profile},
    {Parser::RuleProjects, SyntaxRule::Projects},
    {Parser::RuleProject, SyntaxRule::ProjectEntry},
};

std::optional<SyntaxRule> ruleOf(std::size_t index) {
    const auto* const found = std::ranges::find(kRules, index, &RuleNumber::first);
    return found == std::end(kRules) ? std::nullopt : std::optional(found->second);
}

TokenClass classOf(std::size_t type) {
    switch (type) {
        case Tokens::STRING:
            return TokenClass::String;
        case Tokens::RAW_STRING:
            return TokenClass::RawString;
        case Tokens::PATH_STRING:
            return TokenClass::PathString;
        case Tokens::INDEX_NAME:
            return TokenClass::IndexName;
        case Tokens::NUMBER:
            return TokenClass::Number;
        case Tokens::IDENTIFIER:
            return TokenClass::Name;
        case Tokens::LINE_COMMENT:
            return TokenClass::LineComment;
        case Tokens::BLOCK_COMMENT:
            return TokenClass::BlockComment;
        default:
            return type >= Tokens::UNIT_STR && type <= Tokens::NAME_STR ? TokenClass::Keyword
                                                                        : TokenClass::Punctuation;
    }
}

/// From the runtime's code points to bytes.
class Places {
  public:
    explicit Places(std::string_view text) : size_(text.size()) {
        if (isAscii(text) || wellFormedUtf8(text) < text.size()) {
            return;  // the stream counts bytes, too
        }
        for (std::size_t byte = 0; byte < text.size(); ++byte) {
            if ((static_cast<unsigned char>(text[byte]) & 0xC0U) != 0x80) {
                starts_.push_back(static_cast<std::uint32_t>(byte));
            }
        }
    }

    std::uint32_t byte(std::size_t codePoint) const {
        if (starts_.empty()) {
            return static_cast<std::uint32_t>(std::min(codePoint, size_));
        }
        return codePoint < starts_.size() ? starts_[codePoint] : static_cast<std::uint32_t>(size_);
    }

    TextSpan of(const antlr4::Token& token) const {
        const std::uint32_t begin = byte(token.getStartIndex());
        return {begin, std::max(begin, byte(token.getStopIndex() + 1))};
    }

  private:
    std::size_t size_;
    std::vector<std::uint32_t> starts_;  ///< of code points; empty when each is a byte
};

/// Keeps errors in the form that editors show.
class ErrorCollector : public antlr4::BaseErrorListener {
  public:
    ErrorCollector(std::string_view text, const Places& places, std::vector<SyntaxError>& errors)
        : text_(text), places_(places), errors_(errors) {}

    void syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending, std::size_t,
                     std::size_t, const std::string& message, std::exception_ptr) override {
        TextSpan span;
        if (offending != nullptr) {
            span = places_.of(*offending);
        } else if (auto* const lexer = dynamic_cast<antlr4::Lexer*>(recognizer)) {
            span = lexicalSpan(lexer->tokenStartCharIndex);
        }
        std::string hint = hintFor(recognizer, offending, text_.substr(span.begin));
        const bool lexical = offending == nullptr;
        errors_.push_back({span, shortened(message, lexical), std::move(hint), lexical});
    }

  private:
    /// To the end of the word or, where it is none, of the character.
    TextSpan lexicalSpan(std::size_t codePoint) const {
        const std::uint32_t begin = places_.byte(codePoint);
        const std::size_t stop = text_.find_first_of(" \t\r\n", begin);
        const std::size_t end = stop == std::string_view::npos ? text_.size() : stop;
        return {begin, static_cast<std::uint32_t>(std::max<std::size_t>(end, begin))};
    }

    /// The lexer's messages show all that follows.
    static std::string shortened(const std::string& message, bool lexical) {
        const std::size_t colon = message.find(" at: ");
        return lexical && colon != std::string::npos ? "nothing can begin like this" : message;
    }

    std::string_view text_;
    const Places& places_;
    std::vector<SyntaxError>& errors_;
};

/// Copies the runtime's tree.
class TreeCopier {
  public:
    TreeCopier(antlr4::CommonTokenStream& tokens, const Places& places, SyntaxTree& tree)
        : tree_(tree) {
        for (const antlr4::Token* token : tokens.getTokens()) {
            ours_.push_back(static_cast<std::uint32_t>(tree_.tokens.size()));
            if (token->getType() != antlr4::Token::EOF) {
                tree_.tokens.push_back({classOf(token->getType()), places.of(*token)});
            }
        }
        ours_.push_back(static_cast<std::uint32_t>(tree_.tokens.size()));
    }

    void copy(antlr4::ParserRuleContext& from) {
        tree_.root.end = static_cast<std::uint32_t>(tree_.tokens.size());
        addChildren(from, tree_.root);
    }

  private:
    void addChildren(antlr4::ParserRuleContext& from, SyntaxNode& to) const {
        for (antlr4::tree::ParseTree* child : from.children) {
            auto* const part = dynamic_cast<antlr4::ParserRuleContext*>(child);
            if (part == nullptr) {
                continue;
            }
            const auto rule = ruleOf(part->getRuleIndex());
            SyntaxNode node = rule ? nodeOf(*part, *rule) : SyntaxNode{};
            if (!rule) {
                addChildren(*part, to);
            } else if (!node.isEmpty()) {
                addChildren(*part, node);
                to.children.push_back(std::move(node));
            }
        }
    }

    /// After an error a part may have no tokens at all.
    SyntaxNode nodeOf(antlr4::ParserRuleContext& part, SyntaxRule rule) const {
        const antlr4::Token* const start = part.getStart();
        const antlr4::Token* const stop = part.getStop();
        if (start == nullptr || stop == nullptr || stop->getTokenIndex() < start->getTokenIndex()) {
            return {};
        }
        return {rule, ours_.at(start->getTokenIndex()), ours_.at(stop->getTokenIndex() + 1), {}};
    }

    SyntaxTree& tree_;
    std::vector<std::uint32_t> ours_;  ///< numbers of the runtime's tokens
};

antlr4::ParserRuleContext* runRule(Parser& parser, FileKind kind) {
    switch (kind) {
        case FileKind::Project:
            return parser.projFile();
        case FileKind::Registry:
            return parser.registryFile();
        case FileKind::Unit:
            break;
    }
    return parser.unitFile();
}

/// Nearly all texts have no errors, and the fast attempt is several times as fast.
antlr4::ParserRuleContext* fastTree(Recognisers& recognisers, FileKind kind) {
    makeFast(recognisers);
    try {
        auto* const tree = runRule(recognisers.parser, kind);
        return recognisers.lexer.getNumberOfSyntaxErrors() == 0 ? tree : nullptr;
    } catch (const antlr4::ParseCancellationException&) {
        return nullptr;
    }
}

/// Lexes a text, and parses it if `kind` is given.
class Reading {
  public:
    Reading(std::string_view text, std::uint32_t firstLine)
        : text_(text), places_(text), input_(text, {}), firstLine_(firstLine) {}

    SyntaxTree run(std::optional<FileKind> kind) {
        try {
            if (!kind || !copyFast(*kind)) {
                copyReporting(kind);
            }
        } catch (const VeskException& error) {
            tree_ = {};
            tree_.errors.push_back({{0, 0}, error.text(), {}, true});
        }
        return std::move(tree_);
    }

  private:
    bool copyFast(FileKind kind) {
        Recognisers recognisers(&input_, CheckingLexer::Purpose::ForEditors);
        auto* const found = fastTree(recognisers, kind);
        if (found != nullptr) {
            TreeCopier(recognisers.tokens, places_, tree_).copy(*found);
        }
        return found != nullptr;
    }

    void copyReporting(std::optional<FileKind> kind) {
        input_.seek(0);
        Recognisers recognisers(&input_, CheckingLexer::Purpose::ForEditors);
        recognisers.lexer.setLine(firstLine_);
        ErrorCollector collector(text_, places_, tree_.errors);
        for (antlr4::Recognizer* each : {static_cast<antlr4::Recognizer*>(&recognisers.lexer),
                                         static_cast<antlr4::Recognizer*>(&recognisers.parser)}) {
            each->removeErrorListeners();
            each->addErrorListener(&collector);
        }
        recognisers.tokens.fill();
        auto* const found = kind ? runRule(recognisers.parser, *kind) : nullptr;
        TreeCopier copier(recognisers.tokens, places_, tree_);
        if (found != nullptr) {
            copier.copy(*found);
        }
    }

    std::string_view text_;
    Places places_;
    TextStream input_;
    std::uint32_t firstLine_;
    SyntaxTree tree_;
};

}  // namespace

SyntaxTree parseSyntax(std::string_view text, FileKind kind, std::uint32_t firstLine) {
    return Reading(text, firstLine).run(kind);
}

SyntaxTree lexSyntax(std::string_view text) {
    return Reading(text, 1).run(std::nullopt);
}

FileKind kindOfText(std::string_view text) {
    TextStream input(text, {});
    CheckingLexer lexer(&input);
    lexer.removeErrorListeners();
    switch (lexer.nextToken()->getType()) {
        case Tokens::NAME_STR:
        case Tokens::IMPORT_STR:
        case Tokens::UNITS_STR:
        case Tokens::PROFILES_STR:
        case Tokens::TOOLS_STR:
            return FileKind::Project;
        case Tokens::PROJECTS_STR:
            return FileKind::Registry;
        default:
            return FileKind::Unit;
    }
}

std::vector<std::string> keywords() {
    TextStream nothing("", {});
    const grammar::CommonLexer lexer(&nothing);
    std::vector<std::string> words;
    for (std::size_t type = Tokens::UNIT_STR; type <= Tokens::NAME_STR; ++type) {
        const std::string quoted = lexer.getVocabulary().getLiteralName(type);
        words.push_back(quoted.substr(1, quoted.size() - 2));
    }
    return words;
}

}  // namespace Vesk
