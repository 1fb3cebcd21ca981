// How targets that are Windows drivers are compiled and linked.
#pragma once

#include <string>
#include <vector>

#include "tools/msvc/msvc_programs.h"
#include "types/context/context.h"

namespace Vesk {

enum class DriverModel {
    None,  ///< the target is not a driver
    Wdm,   ///< a kernel driver without a framework
    Kmdf,  ///< a kernel driver with the driver framework
    Umdf,  ///< a library in its own process, with the driver framework
};

/// What DRIVER says. Throws VeskException for an unknown word.
DriverModel driverModelOf(const Context& target);

/// The settings for one target, taken from the project templates of the WDK.
class DriverSettings {
  public:
    /// KMDF_VERSION and UMDF_VERSION choose the framework, by default the newest. Throws
    /// VeskException for a framework that the kit lacks. The directories must outlive the settings.
    DriverSettings(const Context& target, DriverModel model, const MsvcDirectories& directories);

    bool kernel() const noexcept {
        return model_ == DriverModel::Wdm || model_ == DriverModel::Kmdf;
    }
    DriverModel model() const noexcept { return model_; }

    /// Options, and definitions without "/D".
    std::vector<std::string> compilerOptions() const;
    std::vector<std::string> definitions() const;

    /// `entry`: the target names its entry point itself.
    std::vector<std::string> linkerOptions(bool entry) const;
    std::vector<std::string> libraries() const;

    /// Directories of the kits, also for targets that are not drivers.
    std::vector<std::string> includeDirectories() const;
    std::vector<std::string> libraryDirectories() const;

  private:
    DriverModel model_;
    const MsvcDirectories& directories_;
    std::string framework_;  ///< "1.31"; empty if there is none
};

}  // namespace Vesk
