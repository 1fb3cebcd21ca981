// An installed Android SDK: the versions of its build tools and platforms.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/remembered.h"

namespace Vesk {

/// One of several versions that are installed side by side.
struct SdkPart {
    std::string version;    ///< "34.0.0"; of a platform "34", "34-ext8"
    std::string directory;  ///< absolute, with forward slashes
};

class AndroidSdk {
  public:
    /// Looks into the directories `build-tools` and `platforms` of an SDK. Incomplete parts, such
    /// as those left after a removal, do not count.
    explicit AndroidSdk(std::string root);

    const std::string& root() const noexcept { return root_; }

    /// Newest first.
    const std::vector<SdkPart>& buildTools() const noexcept { return buildTools_; }
    const std::vector<SdkPart>& platforms() const noexcept { return platforms_; }

    /// The newest version, or the newest that fits the requested one: "34" fits 34.0.0. Null if
    /// there is none.
    const SdkPart* findBuildTools(std::string_view asked) const;
    const SdkPart* findPlatform(std::string_view asked) const;

    /// The same for callers who need one. Throws VeskException that lists what is installed.
    const SdkPart& requireBuildTools(std::string_view asked) const;
    const SdkPart& requirePlatform(std::string_view asked) const;

  private:
    std::string root_;
    std::vector<SdkPart> buildTools_;
    std::vector<SdkPart> platforms_;
};

/// The SDKs examined so far in this run. Used on the driver's thread only.
class AndroidSdks {
  public:
    const AndroidSdk& at(const std::string& root);

  private:
    platform::Remembered<AndroidSdk> known_;
};

/// A program of the build tools: "aapt2", on Windows "aapt2.exe".
std::string buildToolPath(const SdkPart& tools, std::string_view name);

/// The archive of Java classes in the build tools, "apksigner.jar"; empty if they have none.
std::string buildToolJar(const SdkPart& tools, std::string_view name);

/// The script that runs it: "apksigner", on Windows "apksigner.bat".
std::string buildToolScript(const SdkPart& tools, std::string_view name);

/// The classes and resources of a platform, which packages are built against.
std::string platformJar(const SdkPart& platform);

/// Whether version `a` is preferred to `b`: the higher number; of two with the same number the
/// plain one, such as 34.0.0 before 34.0.0-rc1; and any number before a name.
bool isNewerSdkVersion(std::string_view a, std::string_view b) noexcept;

}  // namespace Vesk
