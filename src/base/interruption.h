// How work ends when the user asks to stop.
#pragma once

namespace Vesk {

/// Thrown after Ctrl-C or a termination request, once the running commands have ended. It belongs
/// to no family of errors, so code that retries or continues after an error does not catch it.
class Interrupted {
  public:
    explicit Interrupted(int signal) noexcept : signal_(signal) {}

    /// The number of the signal that asked for it.
    int signal() const noexcept { return signal_; }

  private:
    int signal_;
};

/// Throws Interrupted if the user has asked to stop. Cheap enough for inner loops.
void stopIfInterrupted();

}  // namespace Vesk
