// Values and the names of variables.
#include <fmt/format.h>

#include "grammar/literals.h"
#include "grammar/tree_parts.h"
#include "grammar/visitor.h"
#include "platform/files.h"
#include "types/context/context.h"
#include "types/context/context_value.h"
#include "types/values/identifier_path.h"
#include "types/values/identifier_value.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

/// The content of R"(...)" or P"(...)".
std::string rawContent(const antlr4::Token* token) {
    return stripped(token->getText(), 3, 2);
}

/// Whether a path's text begins with a reference, which may turn out to be an absolute path.
bool beginsWithReference(const std::string& text) {
    return text.starts_with("${") || text.starts_with("#{");
}

}  // namespace

// The first token decides. Asking for each alternative in turn would search the children each time.
antlrcpp::Any VeskVisitorImpl::visitValueNode(Parser::ValueNodeContext* tree) {
    switch (tree->start->getType()) {
        case Parser::STRING:
            return ValuePtr(std::make_shared<VeskString>(stripped(tree->start->getText(), 1, 1)));
        case Parser::RAW_STRING:
            return ValuePtr(std::make_shared<VeskRawString>(rawContent(tree->start)));
        case Parser::PATH_STRING:
            return pathValue(rawContent(tree->start));
        case Parser::NUMBER:
            return integerValue(tree);
        case Parser::LSQUARE:
            return visitList(partOf<Parser::ListContext>(*tree));
        case Parser::LBRACE:
            return nestedContext(partOf<Parser::ContextContext>(*tree));
        default:
            return ValuePtr(std::make_shared<VeskIdentifier>(
                taken<IdentifierPath>(visitIdentifier(partOf<Parser::IdentifierContext>(*tree)))));
    }
}

ValuePtr VeskVisitorImpl::integerValue(Parser::ValueNodeContext* tree) const {
    const std::string text = tree->start->getText();
    const auto number = integerLiteral(text);
    if (!number) {
        fail(tree, fmt::format("Invalid or out-of-range integer literal '{}'.", text));
    }
    return std::make_shared<VeskInt>(*number);
}

antlrcpp::Any VeskVisitorImpl::visitList(Parser::ListContext* tree) {
    auto list = std::make_shared<VeskList>();
    const auto elements = partsOf<Parser::ValueNodeContext>(*tree);
    list->items.reserve(elements.size());
    for (auto* element : elements) {
        list->items.push_back(taken<ValuePtr>(visitValueNode(element)));
    }
    return ValuePtr(std::move(list));
}

ValuePtr VeskVisitorImpl::nestedContext(Parser::ContextContext* tree) {
    if (kind_ != FileKind::Unit) {
        fail(tree, fmt::format("'{}' in {} has a nested context as its value; only unit "
                               "files may have one.",
                               key_, name_));
    }
    const auto source = taken<TemplatePtr>(visitContext(tree));
    return std::make_shared<VeskContext>(instantiated(*source, tree));
}

ValuePtr VeskVisitorImpl::pathValue(std::string text) const {
    if (kind_ == FileKind::Project && !beginsWithReference(text)) {
        const std::filesystem::path path = platform::pathFromUtf8(text);
        if (!path.is_absolute() && !platform::isAbsolutePath(text)) {
            text = platform::pathToUtf8(baseDirectory_ / path);
        }
    }
    return std::make_shared<VeskPathString>(std::move(text), baseDirectory_);
}

antlrcpp::Any VeskVisitorImpl::visitIdentifier(Parser::IdentifierContext* tree) {
    IdentifierPath path;
    for (auto* segment : partsOf<Parser::SegmentContext>(*tree)) {
        path.segments.push_back(taken<IdentifierSegment>(visitSegment(segment)));
    }
    return path;
}

antlrcpp::Any VeskVisitorImpl::visitSegment(Parser::SegmentContext* tree) {
    IdentifierSegment segment;
    segment.name = tree->identifierName()->getText();
    for (auto* index : partsOf<Parser::IndexContext>(*tree)) {
        segment.keys.push_back(taken<PathIndex>(visitIndex(index)));
    }
    return segment;
}

antlrcpp::Any VeskVisitorImpl::visitIndex(Parser::IndexContext* tree) {
    return visitIndexExpr(tree->indexExpr());
}

antlrcpp::Any VeskVisitorImpl::visitIndexExpr(Parser::IndexExprContext* tree) {
    if (auto* token = tree->NUMBER()) {
        const std::string text = token->getText();
        const auto number = indexLiteral(text);
        if (!number) {
            fail(tree, fmt::format("Invalid or out-of-range index literal '{}'.", text));
        }
        return PathIndex(*number);
    }
    if (auto* token = tree->INDEX_NAME()) {
        return PathIndex(PathName{stripped(token->getText(), 1, 1)});
    }
    if (auto* identifier = tree->identifier()) {
        auto path = taken<IdentifierPath>(visitIdentifier(identifier));
        return PathIndex(std::make_shared<const IdentifierPath>(std::move(path)));
    }
    if (auto* range = tree->range()) {
        return visitRange(range);
    }
    if (auto* regex = tree->regex()) {
        return visitRegex(regex);
    }
    return {};
}

antlrcpp::Any VeskVisitorImpl::visitRange(Parser::RangeContext* tree) {
    const auto start = indexLiteral(tree->NUMBER(0)->getText());
    const auto end = indexLiteral(tree->NUMBER(1)->getText());
    if (!start || !end) {
        fail(tree, "Invalid or out-of-range index range.");
    }
    return PathIndex(PathRange{*start, *end});
}

antlrcpp::Any VeskVisitorImpl::visitRegex(Parser::RegexContext* tree) {
    return PathIndex(PathRegex{rawContent(tree->start)});
}

}  // namespace Vesk
