// What a child writes, read while it runs.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

#include "platform/process.h"
#include "platform/windows/handle.h"

namespace Vesk::platform {

/// Pipes from a child's two streams to us: one for both when ours lead to the same place, so that
/// the order of what is written to them is kept.
class ChildOutput {
  public:
    /// False when the system has no more of them; the child has to share our streams then.
    bool open();

    /// The child reads nothing. Call before `applyTo`.
    void takeNoInput();

    /// The child reads our own input, if we have one. The same.
    void takeOurInput();

    /// Makes the child write to the pipes, and inherit nothing else but its input.
    /// `startup` must not outlive this. False when the system refuses.
    bool applyTo(STARTUPINFOEXW& startup);

    /// Hands over what is written until the child has ended. Call when it has been started.
    void read(HANDLE child, const OutputSink& sink);

    ~ChildOutput();
    ChildOutput();
    ChildOutput(const ChildOutput&) = delete;
    ChildOutput& operator=(const ChildOutput&) = delete;

  private:
    struct Pipe {
        Stream stream;
        Handle ours;
        Handle theirs;
    };

    bool add(Stream stream);
    bool readWhatIsThere(const OutputSink& sink);

    std::vector<Pipe> pipes_;
    Handle input_{nullptr};
    std::vector<HANDLE> inherited_;
    std::string attributes_;
    std::string buffer_;
};

}  // namespace Vesk::platform
