// Names of variables: dotted and indexed paths such as lib.FLAGS, files[0], opts['x y'].
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "types/values/errors.h"

namespace Vesk {

class IdentifierPath;

struct PathRange {
    std::int64_t start = 0;
    std::int64_t end = 0;
};

struct PathName {
    std::string name;
};

struct PathRegex {
    std::string pattern;
};

/// An index in square brackets. The nested path is an index whose value another variable gives.
using PathIndex = std::variant<std::int64_t, PathRange, PathName,
                               std::shared_ptr<const IdentifierPath>, PathRegex>;

struct IdentifierSegment {
    std::string name;
    std::vector<PathIndex> keys;
};

class IdentifierPath {
  public:
    IdentifierPath() = default;
    explicit IdentifierPath(std::vector<IdentifierSegment> parts) : segments(std::move(parts)) {}

    /// The path that consists of one plain name.
    static IdentifierPath ofName(std::string name);

    /// The path as it is written: names joined with ".", each followed by its keys in brackets.
    std::string toDisplayString() const;

    /// Each segment's text with its keys, for messages that point at one of them.
    std::vector<std::string> elementTexts() const;

    std::vector<IdentifierSegment> segments;  ///< never empty after a successful parse
};

/// Index brackets may be nested this deep inside strings.
inline constexpr std::size_t kMaxIndexNesting = 1000;

/// Reads a path from the start of `text`. True on success; `end`, if given, is set to the number of
/// bytes that the path takes (the caller decides whether more may follow). False otherwise, with
/// `error` filled in.
bool parseIdentifierPath(std::string_view text, IdentifierPath& path, ParseError& error,
                         std::size_t* end = nullptr);

/// Where the names of the path's segments begin in `text`, as far as it can be read.
std::vector<std::size_t> segmentPlaces(std::string_view text);

/// The path that makes up the whole of `text`. Throws ParseError, also if anything follows the
/// path.
IdentifierPath identifierPathFrom(std::string_view text);

}  // namespace Vesk
