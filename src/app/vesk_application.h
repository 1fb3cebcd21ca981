// The application: settings and run modes.
#pragma once

#include <string>
#include <vector>

#include "app/settings.h"

namespace Vesk {

/// One run of vesk, from arguments to exit status. What concerns the process as a whole (handlers,
/// the console, errors that end the run) is its caller's.
class VeskApplication {
  public:
    /// Fills the settings: from the environment variable of options, then from the arguments, which
    /// win. Throws as parseOptionsVariable and parseCommandLine.
    void parse(const std::vector<std::string>& arguments);

    const Settings& settings() const noexcept { return settings_; }

    /// Runs the mode that the settings name and returns the exit status. Throws what goes wrong.
    int run() const;

  private:
    Settings settings_;
};

}  // namespace Vesk
