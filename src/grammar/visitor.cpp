#include "grammar/visitor.h"

#include <fmt/format.h>

#include "base/exception.h"
#include "types/context.h"

namespace Vesk {

VeskVisitorImpl::VeskVisitorImpl(std::filesystem::path file, std::string name, FileKind kind)
    : file_(std::make_shared<const std::filesystem::path>(std::move(file))),
      baseDirectory_(file_->parent_path()),
      name_(std::move(name)),
      kind_(kind) {}

VeskVisitorImpl::VeskVisitorImpl(std::filesystem::path base)
    : baseDirectory_(std::move(base)), kind_(FileKind::Unit) {}

std::shared_ptr<Context> VeskVisitorImpl::instantiated(const ContextTemplate& source,
                                                       std::size_t line) const {
    try {
        return source.instantiate();
    } catch (...) {
        if (name_.empty()) {
            throw;
        }
        rethrowWithNote(note(line));
    }
}

void VeskVisitorImpl::fail(std::size_t line, std::string message) const {
    VeskException error(std::move(message));
    if (std::string where = note(line); !where.empty()) {
        error.addNote(std::move(where));
    }
    throw error;
}

std::string VeskVisitorImpl::note(std::size_t line) const {
    if (name_.empty()) {
        return {};
    }
    std::string text = fmt::format("in {}:{}", name_, line);
    if (!targetName_.empty()) {
        text += fmt::format(" (target '{}')", targetName_);
    }
    return text;
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
