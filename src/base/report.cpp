#include "base/report.h"

#include "base/console.h"

namespace Vesk {

void reportError(const VeskException& error) {
    console::write(console::level::kError, console::colour::kError, "Error: " + error.text(),
                   error.notes());
}

void reportError(const std::exception& error) {
    const auto* noted = dynamic_cast<const Noted*>(&error);
    console::write(console::level::kError, console::colour::kError, error.what(),
                   noted != nullptr ? noted->notes() : std::vector<std::string>{});
}

void reportWarning(const std::string& text, const std::vector<std::string>& notes) {
    console::write(console::level::kWarning, console::colour::kWarning, text, notes);
}

}  // namespace Vesk
