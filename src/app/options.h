// The options of the command line.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "app/settings.h"

namespace Vesk {

/// Where an option takes its argument from.
enum class ArgumentForm : std::uint8_t {
    None,
    Path,            ///< the next argument, whatever it is; "unknown switch" without one
    Unit,            ///< the next argument, which must not begin with "-"
    Number,          ///< the next argument, if it begins with a digit
    AttachedNumber,  ///< the same, or "-j8", "--jobs=8"
    Attached,        ///< "--name=value" only: an older vesk ignores it whole
    AttachedIfAny,   ///< the same, or "--name"
    Rest,            ///< all that follows, which nobody looks at
    Words,           ///< all that follows, each word with a NUL behind it
};

/// Whether a project's profile may give an option (its OPTIONS). Not where it decides which project
/// or profile is read, what is done, or for whom.
enum class FromProject : bool { no, yes };

/// To add an option, add its line to the table in options.cpp, its field to Settings, and its row
/// to docs/command-line.md.
struct Option {
    std::string_view section;    ///< the heading that it stands below in the list; empty: hidden
    std::string_view shortForm;  ///< one letter; empty when there is none
    std::string_view longForm;
    ArgumentForm form;
    std::string_view argument;  ///< what the list calls the argument; empty without one
    std::string_view meaning;   ///< in a line

    /// Takes the option over. `value` is the argument, empty where an optional one is missing.
    void (*apply)(Settings& settings, const std::string& value);

    FromProject fromProject = FromProject::no;
    std::string_view with = {};  ///< the long form of an option without which this one does nothing
};

/// All options, a section at a time.
std::span<const Option> options() noexcept;

/// "-j, --jobs [N]".
std::string synopsis(const Option& option);

}  // namespace Vesk
