// A file about the run. That it can be written is known before the run begins.
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
    /// When the file is written: all the time, or only at the end. What is in its place stays until
    /// then.
    enum class Use { Along, AtEnd };

    /// `what`: as messages call it: "trace". `path`: as given; "-" is standard output, on which
    /// nothing else is written then. Throws VeskException for a file that cannot be opened.
    ReportFile(std::string what, Use use, const std::string& path);
    ~ReportFile() override;
    ReportFile(const ReportFile&) = delete;
    ReportFile& operator=(const ReportFile&) = delete;

    const std::string& path() const noexcept { return path_; }

    /// After the first failure nothing more is written.
    void write(std::string_view bytes) noexcept override;

    /// Throws VeskException when not all has been written.
    void close();

  private:
    [[noreturn]] void throwFault(const std::error_code& error) const;
    void open(platform::Append append);

    std::string what_;
    std::string path_;
    std::optional<platform::FileWriter> writer_;  ///< none for standard output
    std::error_code fault_;
    bool untouched_ = false;    ///< nothing has been written yet, and what was there is still there
    bool onlyForTest_ = false;  ///< there is a file only because it was tried to write one
};

}  // namespace Vesk
