#include "types/values/errors.h"

#include <utility>

#include "base/text.h"

namespace Vesk {

BadConversion::BadConversion(std::string fromType, std::string valueText, std::string toType)
    : fromType_(std::move(fromType)),
      valueText_(std::move(valueText)),
      toType_(std::move(toType)) {}

std::string BadConversion::text() const {
    return "Cannot convert " + fromType_ + " " + valueText_ + " to " + toType_;
}

IndexException::IndexException(std::string valueText, Key key)
    : valueText_(std::move(valueText)), key_(std::move(key)) {}

std::string IndexException::text() const {
    return "Variable " + valueText_ + " cannot be indexed with " + keyToString(key_);
}

// Most callers give a fixed line and signature instead of the compiler's own, so that the same
// fault reads the same in every build and version of vesk, and reports of it can be compared.
InternalError::InternalError(std::string file, int line, std::string function)
    : file_(std::move(file)), line_(line), function_(std::move(function)) {}

std::string InternalError::text() const {
    return "Internal: " + file_ + "(" + std::to_string(line_) + ") " + function_;
}

NotFoundException::NotFoundException(std::string kind, std::string name, std::string note)
    : kind_(std::move(kind)), name_(std::move(name)) {
    addNote(std::move(note));
}

std::string NotFoundException::text() const {
    return kind_ + " '" + name_ + "' not found.";
}

LoopFoundException::LoopFoundException(std::string term, std::vector<std::string> chain)
    : term_(std::move(term)), chain_(std::move(chain)) {}

std::string LoopFoundException::text() const {
    return "Loop detected! Causing term: '" + term_ +
           "'\n  loop goes as follows: " + joined(chain_, " <- ");
}

IdentifierError::IdentifierError(std::vector<std::string> elements, std::size_t position)
    : elements_(std::move(elements)), position_(position) {}

std::string IdentifierError::text() const {
    std::vector<std::string> marked = elements_;
    if (position_ < marked.size()) {
        marked[position_] += " <<";
    }
    return "Identifier cannot be resolved: " + joined(marked, ", ");
}

AssignmentException::AssignmentException(std::string oldText, std::string newText)
    : oldText_(std::move(oldText)), newText_(std::move(newText)) {}

std::string AssignmentException::text() const {
    return "Attempted to modify assignment: " + oldText_ + " with " + newText_;
}

MissingVariable::MissingVariable(std::string name)
    : std::out_of_range("invalid map<K, T> key"), name_(std::move(name)) {
    addNote("there is no variable '" + name_ + "'");
}

}  // namespace Vesk
