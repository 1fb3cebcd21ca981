// The graph of a run in the form that its file's name asks for.
#pragma once

#include <cstdint>
#include <string>

#include "app/report_file.h"
#include "report/run_record.h"

namespace Vesk {

class GraphFile {
  public:
    /// ".dot" or "-": for Graphviz, ".svg": laid out by Graphviz, ".json". Throws VeskException for
    /// another one, for a file that cannot be opened, and where Graphviz is needed and not found.
    explicit GraphFile(const std::string& path);

    /// Throws VeskException when it cannot be written, or not be laid out.
    void write(const report::RunRecord& run);

  private:
    enum class Form : std::uint8_t { Dot, Svg, Json };

    static Form formFor(const std::string& path);
    std::string laidOut(const std::string& dot) const;

    Form form_;
    ReportFile file_;
};

}  // namespace Vesk
