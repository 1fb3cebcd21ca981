// What is known of a unit file without parsing it again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/content_hash.h"
#include "grammar/text_slices.h"

namespace Vesk {

struct KnownTarget {
    TextSlice slice;   ///< of the file's text
    ContentHash hash;  ///< as in Target
    std::string_view name;
    std::vector<std::string_view> parameters;
};

/// Of a file without errors. All texts belong to somebody else.
struct UnitOutline {
    ContentHash text;       ///< of the file's bytes
    std::string_view name;  ///< empty without a `unit` line
    bool nameDeclared = false;
    std::vector<KnownTarget> targets;
};

/// As bytes that begin with the hash of the file's.
std::string encoded(const UnitOutline& outline);

/// Refers to the bytes. Nothing for bytes that are no outline.
std::optional<UnitOutline> decodedOutline(std::string_view bytes);

/// Outlines that are kept from run to run.
class UnitOutlines {
  public:
    virtual ~UnitOutlines() = default;

    /// Of a file, by its canonical path; it stays good until the next `put`.
    virtual std::optional<std::string_view> find(const std::string& file) = 0;
    virtual void put(const std::string& file, std::string_view outline) = 0;
};

}  // namespace Vesk
