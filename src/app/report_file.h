// A file about the run, which is opened before the run begins.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/files.h"
#include "report/event_lines.h"

namespace Vesk {

class ReportFile : public report::ByteSink {
  public:
    /// `what`: as messages call it: "trace". `path`: as given; "-" is standard output, on which
    /// nothing else is written then. Throws VeskException for a file that cannot be opened.
    ReportFile(std::string what, const std::string& path);

    const std::string& path() const noexcept { return path_; }

    /// After the first failure nothing more is written.
    void write(std::string_view bytes) noexcept override;

    /// Throws VeskException when not all has been written.
    void close();

  private:
    [[noreturn]] void throwFault(const std::error_code& error) const;

    std::string what_;
    std::string path_;
    std::optional<platform::FileWriter> writer_;  ///< none for standard output
    std::error_code fault_;
};

}  // namespace Vesk
