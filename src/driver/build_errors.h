// How a build ends without success.
#pragma once

#include <string>
#include <utility>

#include "base/exception.h"

namespace Vesk {

/// Commands of a target failed; messages have said which.
class BuildFailed : public VeskException {
  public:
    BuildFailed() : VeskException("Build failed.") {}
};

/// No registered toolchain fits a target. Errors of one cause differ only in the target.
class NoToolchain : public VeskException {
  public:
    NoToolchain(std::string text, std::string cause)
        : VeskException(std::move(text)), cause_(std::move(cause)) {}

    const std::string& cause() const noexcept { return cause_; }

  private:
    std::string cause_;
};

/// A target is visited again and again on one way down, each time with new arguments.
class EndlessVisits : public VeskException {
    using VeskException::VeskException;
};

}  // namespace Vesk
