// Android packages, "android-sdk": the build tools and platforms of an Android SDK.
#pragma once

#include <memory>

#include "tools/android/android_sdk.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterAndroidSdkMatcher;

/// Fits targets with an Android manifest. In a target of sources or objects MANIFEST means another
/// kind of manifest.
class AndroidSdkMatcher : public Matcher {
  public:
    /// Throws VeskException for a declaration without "toolchain_path".
    AndroidSdkMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;
    std::vector<CiString> comparedNames() const override;

  protected:
    MatchResult matchTool(const Context& target) const override;

  private:
    std::shared_ptr<AndroidSdks> sdks_;
};

/// The Android SDKs of this machine: those that the environment names, then the usual places of
/// installers.
std::vector<DetectedTool> detectAndroidSdks();

}  // namespace Vesk
