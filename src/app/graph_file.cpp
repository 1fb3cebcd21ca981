#include "app/graph_file.h"

#include <chrono>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "base/ci_string.h"
#include "base/exception.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/process.h"
#include "report/graph.h"
#include "run/command_line.h"

namespace Vesk {
namespace {

/// A graph that takes longer is one that nobody can read.
constexpr std::chrono::minutes kLongestLayout{2};

/// Starts Graphviz's program.
platform::ProcessResult runDot(const std::vector<std::string>& arguments,
                               platform::OutputSink output) {
    platform::ProcessRequest request;
    request.arguments = {"dot"};
    request.commandLine = "dot";
    for (const std::string& argument : arguments) {
        request.arguments.push_back(argument);
        request.commandLine += " " + quoteArgument(argument);
    }
    request.output = std::move(output);
    request.deadline = std::chrono::steady_clock::now() + kLongestLayout;
    return platform::runProcess(request);
}

void ignore(platform::Stream /*stream*/, std::string_view /*bytes*/) {}

void requireDot(const std::string& path) {
    const platform::ProcessResult result = runDot({"-V"}, ignore);
    if (!result.started || result.status != 0) {
        VeskException error("Graphviz, which lays out '" + path + "', was not found.");
        error.addNote(
            "install it, so that its program 'dot' is in PATH, or write --graph=FILE.dot "
            "or FILE.json, which need no layout");
        throw error;
    }
}

/// The text of a graph in a file for Graphviz, as long as it lives.
class TextForDot {
  public:
    TextForDot(const std::string& path, const std::string& text)
        : path_(platform::pathFromUtf8(path + ".dot")) {
        std::error_code error;
        if (!platform::writeWholeFile(path_, text, platform::Append::no, error)) {
            throw VeskException("Unable to write '" + name() + "', from which '" + path +
                                "' is laid out: " + error.message() + ".");
        }
    }
    ~TextForDot() {
        std::error_code ignored;
        platform::removeFile(path_, ignored);
    }
    TextForDot(const TextForDot&) = delete;
    TextForDot& operator=(const TextForDot&) = delete;

    std::string name() const { return platform::pathToUtf8(path_); }

  private:
    std::filesystem::path path_;
};

}  // namespace

GraphFile::Form GraphFile::formFor(const std::string& path) {
    const std::string extension = platform::pathToUtf8(platform::pathFromUtf8(path).extension());
    if (path == "-" || equalsIgnoringCase(extension, ".dot") ||
        equalsIgnoringCase(extension, ".gv")) {
        return Form::Dot;
    }
    if (equalsIgnoringCase(extension, ".json")) {
        return Form::Json;
    }
    if (equalsIgnoringCase(extension, ".svg")) {
        requireDot(path);
        return Form::Svg;
    }
    VeskException error("The graph's file '" + path + "' has a name that says no form.");
    error.addNote(
        "write --graph=FILE.dot, FILE.svg or FILE.json, or '-' for DOT on standard output");
    throw error;
}

GraphFile::GraphFile(const std::string& path)
    : form_(formFor(path)), file_("graph", ReportFile::Use::AtEnd, path) {}

std::string GraphFile::laidOut(const std::string& dot) const {
    if (platform::interruptSignal() != 0) {
        VeskException error("The graph '" + file_.path() + "' was not written.");
        error.addNote("an interrupted run does not wait for Graphviz; --graph=FILE.dot needs none");
        throw error;
    }
    const TextForDot text(file_.path(), dot);
    std::string svg;
    std::string said;
    const platform::ProcessResult result =
        runDot({"-Tsvg", text.name()}, [&](platform::Stream stream, std::string_view bytes) {
            (stream == platform::Stream::Output ? svg : said) += bytes;
        });
    if (!result.started || result.status != 0 || svg.empty()) {
        VeskException error("Graphviz has not laid out the graph '" + file_.path() + "'.");
        error.addNote(result.timedOut  ? "it took more than two minutes; a smaller request, or "
                                         "--graph=FILE.dot with another layout program, may help"
                      : result.started ? said
                                       : platform::systemErrorText(result.status));
        throw error;
    }
    return svg;
}

void GraphFile::write(const report::RunRecord& run) {
    switch (form_) {
        case Form::Dot:
            file_.write(report::graphAsDot(run));
            break;
        case Form::Svg:
            file_.write(laidOut(report::graphAsDot(run)));
            break;
        case Form::Json:
            file_.write(report::graphAsJson(run));
            break;
    }
    file_.close();
}

}  // namespace Vesk
