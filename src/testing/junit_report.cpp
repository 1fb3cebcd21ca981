#include "testing/junit_report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fmt/format.h>
#include <iterator>
#include <string_view>

#include "base/collector.h"
#include "grammar/utf8.h"

namespace Vesk {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Without the sequences with which programs set colours and move the cursor: ESC [ ... letter.
std::string withoutEscapes(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\x1b' || at + 1 == text.size() || text[at + 1] != '[') {
            plain += text[at];
            continue;
        }
        at += 2;
        while (at < text.size() && (text[at] < '@' || text[at] > '~')) {
            ++at;
        }
    }
    return plain;
}

void appendAscii(std::string& xml, char c) {
    switch (c) {
        case '&':
            xml += "&amp;";
            break;
        case '<':
            xml += "&lt;";
            break;
        case '>':
            xml += "&gt;";
            break;
        case '"':
            xml += "&quot;";
            break;
        case '\r':
            break;  // XML reads one before a line feed as nothing, and so do we anywhere
        default:
            const bool allowed = static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n';
            xml += allowed ? std::string_view(&c, 1) : kReplacement;
    }
}

/// Well-formed text of a character or more.
void appendWellFormed(std::string& xml, std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        // U+FFFE and U+FFFF are characters, but none of XML's.
        if (text.substr(at).starts_with("\xEF\xBF\xBE") ||
            text.substr(at).starts_with("\xEF\xBF\xBF")) {
            xml += kReplacement;
            at += 2;
        } else if (static_cast<unsigned char>(text[at]) < 0x80) {
            appendAscii(xml, text[at]);
        } else {
            xml += text[at];
        }
    }
}

std::string escaped(std::string_view text) {
    std::string xml;
    while (!text.empty()) {
        const std::size_t good = wellFormedUtf8(text);
        appendWellFormed(xml, text.substr(0, good));
        text.remove_prefix(good);
        if (!text.empty()) {
            xml += kReplacement;
            text.remove_prefix(1);
        }
    }
    return xml;
}

std::string outputOf(const TestResult& result) {
    return escaped(withoutEscapes(console::transcriptText(result.transcript)));
}

/// What stands inside of the test's element.
std::string detailOf(const TestResult& result) {
    const std::string output = outputOf(result);
    const std::string message = escaped(result.message);
    switch (result.outcome) {
        case TestOutcome::Passed:
            break;
        case TestOutcome::Failed:
            return fmt::format("<failure message=\"{}\">{}</failure>\n", message, output);
        case TestOutcome::TimedOut:
            return fmt::format("<failure type=\"timeout\" message=\"{}\">{}</failure>\n", message,
                               output);
        case TestOutcome::Skipped:
            return fmt::format("<skipped message=\"{}\"/>\n", message);
        case TestOutcome::NotBuilt:
            return fmt::format("<error message=\"{}\">{}</error>\n", message, output);
    }
    return output.empty() ? "" : fmt::format("<system-out>{}</system-out>\n", output);
}

struct Counts {
    std::size_t tests = 0;
    std::size_t failures = 0;
    std::size_t errors = 0;
    std::size_t skipped = 0;
    double seconds = 0;

    void add(const TestResult& result) {
        ++tests;
        failures += result.outcome == TestOutcome::Failed || result.outcome == TestOutcome::TimedOut
                        ? 1
                        : 0;
        errors += result.outcome == TestOutcome::NotBuilt ? 1 : 0;
        skipped += result.outcome == TestOutcome::Skipped ? 1 : 0;
        seconds += result.seconds;
    }

    std::string attributes() const {
        return fmt::format(R"(tests="{}" failures="{}" errors="{}" skipped="{}" time="{:.3f}")",
                           tests, failures, errors, skipped, seconds);
    }
};

std::string suite(const std::string& unit, const std::vector<TestResult>& results) {
    Counts counts;
    std::string cases;
    for (const TestResult& result : results) {
        if (result.unit == unit) {
            counts.add(result);
            cases += fmt::format(
                "<testcase classname=\"{}\" name=\"{}\" time=\"{:.3f}\">\n{}"
                "</testcase>\n",
                escaped(unit), escaped(result.target), result.seconds, detailOf(result));
        }
    }
    return fmt::format("<testsuite name=\"{}\" {}>\n{}</testsuite>\n", escaped(unit),
                       counts.attributes(), cases);
}

}  // namespace

std::string junitReport(const std::vector<TestResult>& results) {
    Counts counts;
    std::vector<std::string> units;
    for (const TestResult& result : results) {
        counts.add(result);
        if (std::ranges::find(units, result.unit) == units.end()) {
            units.push_back(result.unit);
        }
    }
    std::string suites;
    for (const std::string& unit : units) {
        suites += suite(unit, results);
    }
    return fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites {}>\n{}</testsuites>\n",
        counts.attributes(), suites);
}

}  // namespace Vesk
