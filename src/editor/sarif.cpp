#include "editor/sarif.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "editor/uri.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson regionOf(const Document& document, TextSpan span) {
    const auto place = [&document](std::uint32_t byte) {
        return document.lines().placeOf(document.text(), byte, ColumnUnit::Utf16);
    };
    const LinePlace begin = place(span.begin);
    const LinePlace end = place(span.end);
    return {{"startLine", begin.line + 1},
            {"startColumn", begin.column + 1},
            {"endLine", end.line + 1},
            {"endColumn", end.column + 1}};
}

/// Relative names stay so: they are relative to where vesk was run.
OrderedJson artifactOf(const FileFindings& file) {
    const std::filesystem::path path = platform::pathFromUtf8(file.name);
    std::string name = file.name;
    std::ranges::replace(name, '\\', '/');
    return {{"uri", path.is_absolute() ? uriOf(path) : percentEncoded(name)}};
}

OrderedJson fixOf(const FileFindings& file, const Fix& fix) {
    OrderedJson replacements = OrderedJson::array();
    for (const Edit& edit : fix.edits) {
        replacements.push_back({{"deletedRegion", regionOf(*file.document, edit.span)},
                                {"insertedContent", {{"text", edit.text}}}});
    }
    const OrderedJson change = {{"artifactLocation", artifactOf(file)},
                                {"replacements", std::move(replacements)}};
    return {{"description", {{"text", fix.title}}},
            {"artifactChanges", OrderedJson::array({change})}};
}

OrderedJson resultOf(const FileFindings& file, const Diagnostic& diagnostic) {
    std::string message = diagnostic.message;
    for (const std::string& note : diagnostic.notes) {
        message += "\n" + note;
    }
    const OrderedJson place = {{"artifactLocation", artifactOf(file)},
                               {"region", regionOf(*file.document, diagnostic.span)}};
    OrderedJson location = OrderedJson::object();
    location["physicalLocation"] = place;
    OrderedJson result = {{"ruleId", diagnostic.rule},
                          {"level", levelOf(diagnostic.severity)},
                          {"message", OrderedJson::object({{"text", std::move(message)}})},
                          {"locations", OrderedJson::array({location})}};
    for (const Fix& fix : diagnostic.fixes) {
        result["fixes"].push_back(fixOf(file, fix));
    }
    return result;
}

}  // namespace

std::string_view levelOf(Severity severity) noexcept {
    switch (severity) {
        case Severity::Error:
            return "error";
        case Severity::Warning:
            return "warning";
        case Severity::Hint:
            break;
    }
    return "note";
}

std::string sarifReport(const std::vector<FileFindings>& files, const std::string& version) {
    OrderedJson rules = OrderedJson::array();
    for (const Rule& each : kRules) {
        rules.push_back({{"id", each.name}, {"shortDescription", {{"text", each.meaning}}}});
    }
    OrderedJson results = OrderedJson::array();
    for (const FileFindings& file : files) {
        for (const Diagnostic& diagnostic : file.found) {
            results.push_back(resultOf(file, diagnostic));
        }
    }
    const OrderedJson driver = {
        {"name", "vesk"}, {"version", version}, {"rules", std::move(rules)}};
    OrderedJson run = OrderedJson::object();
    run["tool"]["driver"] = driver;
    run["columnKind"] = "utf16CodeUnits";
    run["results"] = std::move(results);
    const OrderedJson report = {{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                                {"version", "2.1.0"},
                                {"runs", OrderedJson::array({run})}};
    return report.dump(2) + "\n";
}

}  // namespace Vesk::editor
