#include "cache/cache_text.h"

#include <algorithm>
#include <charconv>

#include "base/attempt.h"
#include "cache/literal_text.h"
#include "grammar/loaders.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

void appendHead(std::string& out, char form, const Assignment& assignment) {
    out += form;
    out += ' ';
    out += std::to_string(static_cast<unsigned>(assignment.op));
    out += ' ';
    out += std::to_string(static_cast<unsigned>(assignment.modifier));
    out += '\n';
}

void appendStringForm(std::string& out, char form, const Assignment& assignment,
                      std::string_view text) {
    appendHead(out, form, assignment);
    appendText(out, assignment.name.str());
    appendText(out, text);
}

bool takeLine(std::string_view& text, std::string_view& line) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return false;
    }
    line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return true;
}

bool wholeNumber(std::string_view text, std::uint64_t& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty();
}

/// From "S 1 0": operators are 1 to 4, modifiers 0 to 3.
bool readHead(std::string_view line, char& form, AssignOperator& op, AssignModifier& modifier) {
    if (line.size() != 5 || line[1] != ' ' || line[3] != ' ' ||
        std::string_view("ARS").find(line[0]) == std::string_view::npos || line[2] < '1' ||
        line[2] > '4' || line[4] < '0' || line[4] > '3') {
        return false;
    }
    form = line[0];
    op = static_cast<AssignOperator>(line[2] - '0');
    modifier = static_cast<AssignModifier>(line[4] - '0');
    return true;
}

std::optional<Assignment> parsed(std::string_view source, const std::filesystem::path& base) {
    const std::string text = withRawPathLiterals(source);
    if (auto assignment = readPlainAssignment(text)) {
        return assignment;
    }
    std::optional<Assignment> result;
    if (!succeeds([&] { result = parseAssignment(text, base); })) {
        return std::nullopt;  // such as text that is not UTF-8, for which the parser's runtime
                              // throws
    }
    return result;
}

}  // namespace

void appendNumber(std::string& out, std::uint64_t number) {
    out += std::to_string(number);
    out += '\n';
}

void appendText(std::string& out, std::string_view text) {
    appendNumber(out, text.size());
    out += text;
    out += '\n';
}

void appendTextAssignment(std::string& out, std::string_view name, std::string_view text) {
    out += "S 1 0\n";
    appendText(out, name);
    appendText(out, text);
}

bool appendAssignment(std::string& out, const Assignment& assignment) {
    const VeskValue* value = assignment.value.get();
    const auto* string = valueAs<VeskBaseString>(value);
    if (string != nullptr && valueAs<VeskPathString>(string) == nullptr) {
        const bool raw = valueAs<VeskRawString>(string) != nullptr;
        appendStringForm(out, raw ? 'R' : 'S', assignment, string->text);
        return true;
    }
    std::string source;
    if (!appendPlainAssignment(source, assignment) || withRawPathLiterals(source) != source) {
        return false;
    }
    appendHead(out, 'A', assignment);
    appendText(out, source);
    return true;
}

void appendComparableAssignment(std::string& out, const Assignment& assignment) {
    if (!appendAssignment(out, assignment)) {
        appendStringForm(out, 'S', assignment,
                         assignment.value ? assignment.value->toDisplayString() : "");
    }
}

// Equivalent to replacing the regular expression P\"(?!\()([^\"\r\n]*)\" by P"($1)".
std::string withRawPathLiterals(std::string_view text) {
    std::string result;
    for (;;) {
        const std::size_t start = text.find("P\"");
        if (start == std::string_view::npos) {
            return result += text;
        }
        const std::size_t content = start + 2;
        result += text.substr(0, content);
        text.remove_prefix(content);
        if (text.starts_with('(')) {
            continue;
        }
        const std::size_t end = text.find_first_of("\"\r\n");
        if (end == std::string_view::npos || text[end] != '"') {
            continue;
        }
        result += '(';
        result += text.substr(0, end);
        result += ")\"";
        text.remove_prefix(end + 1);
    }
}

bool CacheReader::line(std::string_view& content) {
    return takeLine(text_, content);
}

bool CacheReader::number(std::uint64_t& number) {
    std::string_view content;
    return takeLine(text_, content) && wholeNumber(content, number);
}

bool CacheReader::text(std::string_view& content) {
    std::uint64_t length = 0;
    if (!number(length) || length >= text_.size() || text_[length] != '\n') {
        return false;
    }
    content = text_.substr(0, length);
    text_.remove_prefix(length + 1);
    return true;
}

bool CacheReader::raw(Raw& raw) {
    std::string_view head;
    return line(head) && readHead(head, raw.form, raw.op, raw.modifier) && text(raw.first) &&
           (raw.form == 'A' || text(raw.second));
}

std::optional<Assignment> CacheReader::assignment(const std::filesystem::path& base) {
    Raw read;
    if (!raw(read)) {
        return std::nullopt;
    }
    std::optional<Assignment> result;
    if (read.form == 'A') {
        result = parsed(read.first, base);
    } else {
        result.emplace();
        result->name = CiString(std::string(read.first));
        std::string text(read.second);
        if (read.form == 'R') {
            result->value = std::make_shared<VeskRawString>(std::move(text));
        } else {
            result->value = std::make_shared<VeskString>(std::move(text));
        }
    }
    if (result) {
        result->op = read.op;
        result->modifier = read.modifier;
        result->state = ResolveState::Resolved;
    }
    return result;
}

bool CacheReader::skipAssignment() {
    Raw read;
    return raw(read) && (read.form != 'A' || parsed(read.first, {}).has_value());
}

bool CacheReader::stepOverAssignment() {
    Raw read;
    return raw(read);
}

}  // namespace Vesk
