// What a thread writes, collected to be shown in one piece; and whose name stands before messages.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/console.h"

namespace Vesk::console {

/// Sets the text that stands before every message, and returns the one before.
std::string exchangePrefix(std::string prefix);

/// Another prefix for as long as it lives.
class PrefixScope {
  public:
    explicit PrefixScope(std::string prefix) : before_(exchangePrefix(std::move(prefix))) {}
    ~PrefixScope() { exchangePrefix(std::move(before_)); }
    PrefixScope(const PrefixScope&) = delete;
    PrefixScope& operator=(const PrefixScope&) = delete;

  private:
    std::string before_;
};

/// While it lives, what its thread writes is collected instead of shown, so that it can be shown in
/// one piece later, on another thread. Does not nest.
class Collector {
  public:
    explicit Collector(std::string prefix);
    ~Collector();
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    /// What has been written so far, as bytes for `repeat`.
    std::string take();

    const std::string& prefix() const noexcept { return prefix_; }

    /// Lines of ours, and bytes of a command's. A message begins a new line.
    void addMessage(platform::Stream stream, std::string_view lines);
    void addOutput(platform::Stream stream, std::string_view bytes);

  private:
    void endLine();

    std::string prefix_;
    std::string collected_;
    char openStream_ = 0;  ///< where the output of a command has not ended its last line
};

/// The bytes of a transcript, whatever stream they were for.
std::string transcriptText(std::string_view transcript);

/// Whether this thread's messages are collected.
bool collects() noexcept;

/// Adds bytes that a command wrote to what is collected; a message after them begins a new line.
void writeOutput(platform::Stream stream, std::string_view bytes);

}  // namespace Vesk::console
