#include "app/seen_run.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/graph_file.h"
#include "app/report_file.h"
#include "app/run_history.h"
#include "app/version.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/report.h"
#include "events/events.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "report/html_report.h"
#include "report/run_recorder.h"
#include "report/stats.h"
#include "report/trace.h"

namespace Vesk {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

/// Standard output takes one thing.
void refuseTwoOnOutput(const SeeSettings& see) {
    const std::array files = {&see.trace, &see.events, &see.graph, &see.report};
    auto count = std::ranges::count(files, "-", [](const auto* file) { return *file; });
    count += see.stats == StatsForm::Json ? 1 : 0;
    if (count > 1) {
        VeskException error("Two options want standard output for themselves.");
        error.addNote("give one of them a file; --stats=json and '-' need standard output");
        throw error;
    }
}

template <class File, class... Arguments>
std::unique_ptr<File> opened(const std::string& path, Arguments... arguments) {
    return path.empty() ? nullptr : std::make_unique<File>(arguments..., path);
}

class SeenRun {
  public:
    explicit SeenRun(const Settings& settings)
        : settings_(settings),
          trace_(opened<ReportFile>(settings.see.trace, "trace", ReportFile::Use::AtEnd)),
          events_(opened<ReportFile>(settings.see.events, "events", ReportFile::Use::Along)),
          graph_(opened<GraphFile>(settings.see.graph)),
          report_(opened<ReportFile>(settings.see.report, "report", ReportFile::Use::AtEnd)),
          writer_(events_.get()) {
        if (settings.see.stats == StatsForm::Json) {
            console::keepOutputFree();
        }
        std::vector<events::Listener*> listeners;
        if (events_) {
            listeners.push_back(&writer_);
        }
        if (trace_ || settings.see.aboutTargets()) {
            listeners.push_back(&recorder_);
        }
        listening_ = std::make_unique<events::Listening>(std::move(listeners));
        events::emit(events::RunStarted{kVersion,
                                        platform::pathToUtf8(std::filesystem::current_path()),
                                        settings.jobCount, settings.dryRun});
    }

    void finish(events::RunOutcome outcome) {
        events::emit(events::RunFinished{outcome});
        listening_.reset();
        const report::RunRecord run = recorder_.finished();
        if (events_) {
            events_->close();
        }
        if (trace_) {
            trace_->write(report::traceOf(run));
            trace_->close();
        }
        if (settings_.see.compares()) {
            compare(run);
        }
        if (graph_) {
            graph_->write(run);
        }
    }

    /// Another error is on its way to the user already.
    void finishAfterError(events::RunOutcome outcome) {
        try {
            finish(outcome);
        } catch (const VeskException& error) {
            reportError(error);
        }
    }

  private:
    void compare(const report::RunRecord& run) const {
        std::vector<report::PastRun> earlier = earlierRuns(settings_);
        if (settings_.see.stats == StatsForm::Json) {
            console::writeData(report::statsJson(run, earlier));
        } else if (settings_.see.stats == StatsForm::Text) {
            for (const std::string& line : report::statsLines(run, earlier)) {
                console::writeAnswer(line);
            }
        }
        const std::int64_t now = platform::fileClock() / kNanoseconds;
        if (report_) {
            report_->write(report::htmlReport(run, earlier, now));
        }
        keepRun(settings_, report::summaryOf(run, now), std::move(earlier));
        if (report_) {
            report_->close();
        }
    }

    const Settings& settings_;
    std::unique_ptr<ReportFile> trace_;
    std::unique_ptr<ReportFile> events_;
    std::unique_ptr<GraphFile> graph_;
    std::unique_ptr<ReportFile> report_;
    report::EventWriter writer_;
    report::RunRecorder recorder_;
    std::unique_ptr<events::Listening> listening_;
};

}  // namespace

int runSeen(const Settings& settings, const std::function<int()>& work) {
    if (!settings.see.any()) {
        return work();
    }
    refuseTwoOnOutput(settings.see);
    SeenRun run(settings);
    int status = 0;
    try {
        status = work();
    } catch (...) {
        run.finishAfterError(platform::interruptSignal() != 0 ? events::RunOutcome::Interrupted
                                                              : events::RunOutcome::Failed);
        throw;
    }
    run.finish(status == 0 ? events::RunOutcome::Done : events::RunOutcome::Failed);
    return status;
}

}  // namespace Vesk
