// The kinds of error that values, contexts and everything above them raise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/exception.h"
#include "types/values/key.h"

namespace Vesk {

/// A value was given where only values of another type can be used.
class BadConversion : public VeskException {
  public:
    BadConversion(std::string fromType, std::string valueText, std::string toType);
    std::string text() const override;

  private:
    std::string fromType_;
    std::string valueText_;
    std::string toType_;
};

/// The operation makes no sense for this kind of value.
class BadOperation : public VeskException {
    using VeskException::VeskException;
};

/// The value has no element with that key.
class IndexException : public VeskException {
  public:
    IndexException(std::string valueText, Key key);
    std::string text() const override;

  private:
    std::string valueText_;
    Key key_;
};

/// A broken invariant: a bug in vesk itself.
class InternalError : public VeskException {
  public:
    InternalError(std::string file, int line, std::string function);
    std::string text() const override;

  private:
    std::string file_;
    int line_;
    std::string function_;
};

/// Something that was asked for by name does not exist. A `note` that is not empty says what may
/// help.
class NotFoundException : public VeskException {
  public:
    NotFoundException(std::string kind, std::string name, std::string note = {});
    std::string text() const override;
    const std::string& name() const noexcept { return name_; }

  private:
    std::string kind_;
    std::string name_;
};

/// Variables or targets that need each other. The chain starts with the term that closes the loop.
class LoopFoundException : public VeskException {
  public:
    LoopFoundException(std::string term, std::vector<std::string> chain);
    std::string text() const override;
    const std::vector<std::string>& chain() const noexcept { return chain_; }

  private:
    std::string term_;
    std::vector<std::string> chain_;
};

/// One element of an identifier path cannot be applied to what the elements before it gave.
class IdentifierError : public VeskException {
  public:
    IdentifierError(std::vector<std::string> elements, std::size_t position);
    std::string text() const override;

  private:
    std::vector<std::string> elements_;
    std::size_t position_;
};

/// A forbidden merge. Both texts are assignments in their text form.
class AssignmentException : public VeskException {
  public:
    AssignmentException(std::string oldText, std::string newText);
    std::string text() const override;

  private:
    std::string oldText_;
    std::string newText_;
};

/// A middle part of a dotted name holds a value that is not a context.
class NotAContext : public VeskException {
  public:
    NotAContext() : VeskException("Identifier part must be context.") {}
};

/// Why and where an identifier path fails to parse. The parser fills it in; string expansion throws
/// it, with notes that show the text and the place.
class ParseError : public VeskException {
  public:
    ParseError() = default;
    ParseError(std::size_t where, std::string what) : position(where), message(std::move(what)) {}

    std::string text() const override { return message; }

    std::size_t position = 0;  ///< byte offset in the parsed text
    std::string message;       ///< the parser's message
};

/// The first name of a dotted path is unknown. The text is the standard library's for a missing map
/// key.
class MissingVariable : public std::out_of_range, public Noted {
  public:
    explicit MissingVariable(std::string name);
    const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
};

/// A string refers to itself, directly or through others.
class CircularReference : public std::out_of_range {
    using std::out_of_range::out_of_range;
};

}  // namespace Vesk
