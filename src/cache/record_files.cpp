#include "cache/record_files.h"

#include <charconv>
#include <set>

#include "cache/cache_text.h"

namespace Vesk {
namespace {

/// Steps over an assignment. Gives its name and text if it is one of the cache's own fields.
bool takeField(CacheReader& reader, std::string_view& name, std::string_view& text) {
    CacheReader ahead = reader;
    std::string_view head;
    if (!ahead.line(head)) {
        return false;
    }
    name = {};
    if (head == "S 1 0" && ahead.text(name) && ahead.text(text)) {
        reader = ahead;
        return true;
    }
    return reader.stepOverAssignment();
}

}  // namespace

std::vector<RecordFile> filesWritten(const RecordText& record) {
    const RecordText::Layout layout = record.layout();
    const auto files = filesOf(layout.parts).value_or(std::vector<RecordFile>());
    std::set<std::size_t> written;
    for (const RecordText::Part& part : layout.parts) {
        const auto numbers = fileNumbers(part, recordField::kWrites, files.size());
        if (numbers) {
            written.insert(numbers->begin(), numbers->end());
        }
    }
    std::vector<RecordFile> result;
    for (const std::size_t number : written) {
        result.push_back(files[number]);
    }
    return result;
}

std::string_view fieldOf(const RecordText::Part& part, std::string_view field) {
    CacheReader reader(part.outputs);
    std::uint64_t count = 0;
    reader.number(count);
    for (; count > 0; --count) {
        std::string_view name;
        std::string_view text;
        if (!takeField(reader, name, text)) {
            return {};
        }
        if (name == field) {
            return text;
        }
    }
    return {};
}

namespace {

std::string_view tableIn(const std::vector<RecordText::Part>& parts) {
    return parts.empty() ? std::string_view() : fieldOf(parts.front(), recordField::kFiles);
}

std::optional<std::vector<RecordFile>> filesIn(std::string_view table) {
    std::vector<RecordFile> files;
    constexpr std::size_t kShortLine = 80;
    files.reserve(table.size() / kShortLine);
    while (!table.empty()) {
        RecordFile& file = files.emplace_back();
        const char* const start = table.data();
        if (!takeStateLine(table, file.state, file.path)) {
            return std::nullopt;
        }
        file.line = {start, static_cast<std::size_t>(table.data() - start)};
    }
    return files;
}

}  // namespace

std::optional<std::vector<RecordFile>> filesOf(const std::vector<RecordText::Part>& parts) {
    return filesIn(tableIn(parts));
}

std::optional<std::vector<RecordFile>> filesOf(const RecordText& record) {
    return filesIn(tableOf(record));
}

std::string_view tableOf(const RecordText& record) {
    const auto known = record.stored().files;
    return known ? *known : tableIn(record.layout(1).parts);  // it is in the first part
}

std::optional<std::vector<std::size_t>> fileNumbers(const RecordText::Part& part,
                                                    std::string_view field, std::size_t limit) {
    std::vector<std::size_t> numbers;
    const std::string_view text = fieldOf(part, field);
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        std::size_t number = 0;
        const auto [stop, error] = std::from_chars(at, end, number);
        if (error != std::errc() || number >= limit || (stop != end && *stop != ' ')) {
            return std::nullopt;
        }
        numbers.push_back(number);
        at = stop == end ? end : stop + 1;
    }
    return numbers;
}

RecordContent::RecordContent(const RecordText& record)
    : storage_(record.storage()), layout_(record.layout()) {
    auto files = filesOf(layout_.parts);
    isFaulty_ = !files;
    files_ = std::move(files).value_or(std::vector<RecordFile>());
}

void RecordContent::findNumbers() const {
    std::call_once(numbersFound_, [this] {
        for (const RecordText::Part& part : layout_.parts) {
            reads_.push_back(fileNumbers(part, recordField::kReads, files_.size()));
            writes_.push_back(fileNumbers(part, recordField::kWrites, files_.size()));
        }
    });
}

const RecordContent::Numbers& RecordContent::reads(std::size_t part) const {
    findNumbers();
    return reads_[part];
}

const RecordContent::Numbers& RecordContent::writes(std::size_t part) const {
    findNumbers();
    return writes_[part];
}

std::shared_ptr<const RecordContent> contentOf(const RecordText& record) {
    return record.content() ? record.content() : std::make_shared<const RecordContent>(record);
}

double secondsIn(const RecordText::Part& part) {
    const std::string_view text = fieldOf(part, recordField::kMilliseconds);
    std::uint64_t milliseconds = 0;
    std::from_chars(text.data(), text.data() + text.size(), milliseconds);
    return static_cast<double>(milliseconds) / 1000;
}

KeptSteps stepsIn(const RecordText& record) {
    KeptSteps kept;
    const RecordText::Layout layout = record.layout();
    for (std::size_t i = kFirstRecipePart; i < layout.parts.size(); ++i) {
        ++kept.steps;
        kept.seconds += secondsIn(layout.parts[i]);
    }
    return kept;
}

RecordText withFiles(const RecordText& record, const std::vector<RecordFile>& files) {
    const std::string_view text = record.text();
    const auto parts = record.layout(kFirstRecipePart).parts;
    const std::string_view old =
        parts.empty() ? std::string_view() : fieldOf(parts.front(), recordField::kFiles);
    if (old.empty()) {
        return record;
    }
    std::string table;
    table.reserve(old.size());
    for (const RecordFile& file : files) {
        if (file.line.empty()) {
            appendStateLine(table, file.state, file.path);
        } else {
            table += file.line;
        }
    }
    // In the text, the line with the old table's length comes before it.
    const auto start = static_cast<std::size_t>(old.data() - text.data());
    const std::size_t lengthLine = text.rfind('\n', start - 2) + 1;
    std::string changed;
    changed.reserve(text.size() + table.size());
    changed += text.substr(0, lengthLine);
    appendText(changed, table);
    changed += text.substr(start + old.size() + 1);
    return RecordText(std::move(changed));
}

std::vector<RecordFile> recentFiles(const RecordText& record) {
    std::vector<RecordFile> files;
    std::string_view table = tableOf(record);
    while (!table.empty()) {
        RecordFile file;
        file.line = table.substr(0, table.find('\n') + 1);
        if (file.line.empty()) {
            return {};
        }
        table.remove_prefix(file.line.size());
        std::string_view line = file.line;
        if (line.front() == static_cast<char>(FileState::Kind::Recent) &&
            takeStateLine(line, file.state, file.path)) {
            files.push_back(file);
        }
    }
    return files;
}

/// Its kind is the first character of a file's line.
RecordText confirmed(const RecordText& record, const std::vector<RecordFile>& recent) {
    std::string text(record.text());
    for (const RecordFile& file : recent) {
        text[static_cast<std::size_t>(file.line.data() - record.text().data())] =
            static_cast<char>(FileState::Kind::File);
    }
    return RecordText(std::move(text));
}

std::string hashInstead(std::string_view text) {
    return std::string(kHashInstead) + digits(hashText(text));
}

const std::string& unfinishedInputs() {
    static const std::string inputs = [] {
        std::string text;
        appendInputs(text, {{textAssignment("build: unfinished", ""), std::nullopt}});
        return text;
    }();
    return inputs;
}

RecordText unfinished(const RecordText& record) {
    const auto parts = record.layout(kFirstRecipePart).parts;
    if (parts.size() <= kVariablesPart) {
        return record;
    }
    const std::string_view text = record.text();
    const std::string_view inputs = parts[kVariablesPart].inputs;
    const auto start = static_cast<std::size_t>(inputs.data() - text.data());
    std::string changed;
    changed.reserve(text.size() + unfinishedInputs().size());
    changed += text.substr(0, start);
    changed += unfinishedInputs();
    changed += text.substr(start + inputs.size());
    return RecordText(std::move(changed));
}

std::vector<Assignment> outputsOf(const RecordText& record, const std::filesystem::path& base) {
    const auto parts = record.layout(kFirstRecipePart).parts;
    std::vector<Assignment> outputs;
    if (parts.size() <= kVariablesPart) {
        return outputs;
    }
    CacheReader reader(parts[kVariablesPart].outputs);
    std::uint64_t count = 0;
    reader.number(count);
    for (; count > 0; --count) {
        auto output = reader.assignment(base);
        if (!output) {
            break;
        }
        if (output->name.str() != recordField::kReads &&
            output->name.str() != recordField::kWrites) {
            outputs.push_back(std::move(*output));
        }
    }
    return outputs;
}

std::string stampOf(const RecordText& record) {
    const auto parts = record.layout(kFirstRecipePart).parts;
    return parts.empty() ? std::string() : std::string(fieldOf(parts.front(), recordField::kStamp));
}

}  // namespace Vesk
