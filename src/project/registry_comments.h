// The comments of a registry file, by the line of the written form that they belong to.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// What can have comments: each line of the file as it is written has one anchor.
namespace anchor {
std::string sectionStart(std::string_view section);
std::string sectionEnd(std::string_view section);
std::string project(std::string_view name);
std::string toolStart(std::string_view tool);
std::string toolEnd(std::string_view tool);
std::string variable(std::string_view tool, std::string_view name);
std::string condition(std::string_view tool, std::size_t index);  ///< the tool's n-th, from 0
}  // namespace anchor

struct Comments {
    std::vector<std::string> before;  ///< each on a line of its own, or standing inside the line
    std::vector<std::string> behind;  ///< at the end of the line
};

class RegistryComments {
  public:
    /// Of the text of a registry file, which may be empty. Text that is not a registry file gives
    /// comments without a place.
    explicit RegistryComments(const std::string& text);

    /// The comments of that line; the next call for it gives none.
    Comments take(const std::string& lineAnchor);

    /// The comments at the head of the file, before everything.
    std::vector<std::string> takeHead();

    /// Those that nobody took, in the order of the old file.
    std::vector<std::string> takeRest();

  private:
    class Reader;

    struct Placed {
        std::size_t order = 0;
        Comments comments;
    };

    std::map<std::string, Placed> placed_;
    std::vector<std::string> head_;
    std::vector<std::string> tail_;
};

}  // namespace Vesk
