// Collecting what a thread writes, to show it in one piece; and the prefix of messages.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/console.h"

namespace Vesk::console {

/// Sets the text that stands before every message, and returns the previous one.
std::string exchangePrefix(std::string prefix);

/// Sets another prefix for its own lifetime.
class PrefixScope {
  public:
    explicit PrefixScope(std::string prefix) : before_(exchangePrefix(std::move(prefix))) {}
    ~PrefixScope() { exchangePrefix(std::move(before_)); }
    PrefixScope(const PrefixScope&) = delete;
    PrefixScope& operator=(const PrefixScope&) = delete;

  private:
    std::string before_;
};

/// During its lifetime, what its thread writes is collected instead of shown, so that another
/// thread can show it in one piece later. Does not nest.
class Collector {
  public:
    explicit Collector(std::string prefix);
    ~Collector();
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    /// What has been written so far, in the form that `repeat` takes.
    std::string take();

    const std::string& prefix() const noexcept { return prefix_; }

    /// Lines of vesk's own, and the output of a command. A message starts on a new line.
    void addMessage(platform::Stream stream, std::string_view lines);
    void addOutput(platform::Stream stream, std::string_view bytes);

  private:
    void endLine();

    std::string prefix_;
    std::string collected_;
    char openStream_ = 0;  ///< the stream in which a command's last line is still unfinished
};

/// The bytes of a transcript, regardless of their stream.
std::string transcriptText(std::string_view transcript);

/// Whether this thread's messages are collected.
bool collects() noexcept;

/// Adds a command's output to what is collected. A message after it starts on a new line. If
/// nothing is collected, the output is written immediately.
void writeOutput(platform::Stream stream, std::string_view bytes);

}  // namespace Vesk::console
