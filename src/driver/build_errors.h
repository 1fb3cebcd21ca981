// How a build ends without success.
#pragma once

#include "base/exception.h"

namespace Vesk {

/// Commands of a target failed; messages have said which.
class BuildFailed : public VeskException {
  public:
    BuildFailed() : VeskException("Build failed.") {}
};

/// Thrown once the running commands have ended after Ctrl-C or a termination request.
class Interrupted : public VeskException {
  public:
    explicit Interrupted(int signal) : VeskException("Interrupted."), signal_(signal) {}

    /// The number of the signal that asked for it.
    int signal() const noexcept { return signal_; }

  private:
    int signal_;
};

/// Throws Interrupted when the user has asked to stop.
void stopIfInterrupted();

}  // namespace Vesk
