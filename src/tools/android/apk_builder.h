// Builds Android packages.
#pragma once

#include <memory>
#include <string>

#include "tools/android/android_sdk.h"
#include "tools/builder.h"

namespace Vesk {

/// Makes a signed package from a manifest and what belongs to it; see apk_recipes.h.
class AndroidApkBuilder : public Builder {
  public:
    /// `sdkPath`: the declared toolchain_path; references are not resolved yet.
    AndroidApkBuilder(ValuePtr sdkPath, std::shared_ptr<AndroidSdks> sdks);

    std::string name() const override { return "android_apk"; }
    RecipeSet createRecipes(TargetContext& target) override;

    /// The exit code as the output "result".
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;

  private:
    ValuePtr sdkPath_;
    std::shared_ptr<AndroidSdks> sdks_;
};

/// The SDK's directory, absolute. References in the declared path are resolved in the target.
std::string sdkDirectory(const ValuePtr& declared, Context& target);

}  // namespace Vesk
