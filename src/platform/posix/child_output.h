// What a child writes, read while it runs.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "platform/posix/descriptor.h"
#include "platform/process.h"

namespace Vesk::platform {

/// The channels from a child's two streams to us: one for both when ours lead to the same place, so
/// that the order of what is written to them is kept.
class ChildOutput {
  public:
    /// Opens the channels: a pseudo-terminal where our stream is a terminal, a pipe elsewhere.
    /// False when the system has no more of them; the child has to inherit our streams then.
    bool open();

    /// What the child's stream has to be.
    int theirEnd(Stream stream) const noexcept;

    /// Hands over what is written until the child has ended or closed its streams. Call when it has
    /// been started.
    void read(pid_t child, const OutputSink& sink);

  private:
    struct Channel {
        Stream stream;
        Descriptor ours;
        Descriptor theirs;
        bool isTerminal;
    };

    bool add(Stream stream);
    bool anyOpen() const noexcept;
    bool readReady(int timeoutMilliseconds, int ended, const OutputSink& sink);
    void readLast(const OutputSink& sink);

    std::vector<Channel> channels_;
    std::string buffer_;
};

}  // namespace Vesk::platform
