// The parts of the page that reports are made of: the files in page/, which the build turns into a
// source.
#pragma once

#include <string_view>

namespace Vesk::report {

/// With "@title@", "@style@", "@script@", "@data@" and "@stats@" where those come.
extern const std::string_view kPage;
extern const std::string_view kStyle;
extern const std::string_view kScript;

}  // namespace Vesk::report
