// How a build ends without success.
#pragma once

#include "base/exception.h"

namespace Vesk {

/// Commands of a target failed; messages have said which.
class BuildFailed : public VeskException {
  public:
    BuildFailed() : VeskException("Build failed.") {}
};

/// A target is visited again and again on one way down, each time with new arguments.
class EndlessVisits : public VeskException {
    using VeskException::VeskException;
};

}  // namespace Vesk
