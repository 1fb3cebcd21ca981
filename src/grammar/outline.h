// What a unit file names, found without its grammar: in a small part of the time that the parser
// takes, and in files that are just being written too.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

struct OutlinedTarget {
    std::string name;
    bool hasParameters = false;
    bool isTest = false;      ///< TEST = "yes" stands in its block
    std::string description;  ///< the text of DESCRIPTION as it is written; may be empty
};

/// The targets of a unit file's text in their order. Text that is none of the language is passed
/// over: a header such as `name:` begins a target even where a brace before it is missing.
std::vector<OutlinedTarget> targetOutline(std::string_view text);

}  // namespace Vesk
