#include "grammar/visitor.h"

#include <fmt/format.h>

#include "base/exception.h"
#include "types/context/context.h"

namespace Vesk {

VeskVisitorImpl::VeskVisitorImpl(std::shared_ptr<const std::filesystem::path> file,
                                 std::string name, FileKind kind)
    : file_(std::move(file)),
      baseDirectory_(file_->parent_path()),
      name_(std::move(name)),
      fileNumber_(sourceFileNumber(name_)),
      kind_(kind) {}

VeskVisitorImpl::VeskVisitorImpl(std::filesystem::path base)
    : baseDirectory_(std::move(base)), kind_(FileKind::Unit) {}

std::shared_ptr<Context> VeskVisitorImpl::instantiated(const ContextTemplate& source,
                                                       const Tree* tree) const {
    try {
        return source.instantiate();
    } catch (...) {
        if (name_.empty()) {
            throw;
        }
        rethrowWithNote(fmt::format("in {}:{}", name_, lineOf(tree)));
    }
}

SourcePlace VeskVisitorImpl::placeOf(const Tree* tree) const {
    // The runtime counts columns from 0.
    return {fileNumber_, lineOf(tree),
            static_cast<std::uint32_t>(tree->start->getCharPositionInLine()) + 1};
}

void VeskVisitorImpl::fail(const Tree* tree, std::string message) const {
    VeskException error(std::move(message));
    error.addPlace(placeOf(tree));
    if (!targetName_.empty()) {
        error.addNote("in target '" + targetName_ + "'");
    }
    throw error;
}

std::uint32_t lineOf(const antlr4::ParserRuleContext* tree) {
    return static_cast<std::uint32_t>(tree->start->getLine());
}

std::string stripped(const std::string& tokenText, std::size_t front, std::size_t back) {
    if (tokenText.size() < front + back) {
        return tokenText;
    }
    return tokenText.substr(front, tokenText.size() - front - back);
}

}  // namespace Vesk
