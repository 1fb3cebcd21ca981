#include "cache/cache_record.h"

#include "cache/cache_text.h"

namespace Vesk {
namespace {

enum class Check { all, lengths };

bool pass(CacheReader& reader, Check check) {
    return check == Check::all ? reader.skipAssignment() : reader.stepOverAssignment();
}

const char* passInputs(CacheReader& reader, Check check) {
    std::uint64_t count = 0;
    if (!reader.number(count)) {
        return "inputs count";
    }
    for (; count > 0; --count) {
        if (!pass(reader, check)) {
            return "input assignment";
        }
        std::string_view flag;
        if (!reader.line(flag) || (flag != "0" && flag != "1")) {
            return "input intermediate flag";
        }
        if (flag == "1" && !pass(reader, check)) {
            return "input intermediate assignment";
        }
    }
    return nullptr;
}

const char* passAssignments(CacheReader& reader, Check check, const char* countName,
                            const char* itemName) {
    std::uint64_t count = 0;
    if (!reader.number(count)) {
        return countName;
    }
    for (; count > 0; --count) {
        if (!pass(reader, check)) {
            return itemName;
        }
    }
    return nullptr;
}

const char* passOutputs(CacheReader& reader, Check check) {
    return passAssignments(reader, check, "outputs count", "output assignment");
}

const char* passEnvironment(CacheReader& reader, Check check) {
    return passAssignments(reader, check, "env/context count", "env/context assignment");
}

std::string_view textBetween(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

RecordText::RecordText(std::string text)
    : RecordText(std::make_shared<const std::string>(std::move(text))) {}

RecordText::Layout RecordText::layout(std::size_t atMost) const {
    Layout layout;
    CacheReader reader(text_);
    std::uint64_t count = 0;
    reader.number(count);
    for (; count > 0; --count) {
        if (layout.parts.size() == atMost) {
            return layout;
        }
        const char* const start = reader.position();
        passInputs(reader, Check::lengths);
        const char* const middle = reader.position();
        passOutputs(reader, Check::lengths);
        layout.parts.push_back(
            {textBetween(start, middle), textBetween(middle, reader.position())});
    }
    layout.environment = textBetween(reader.position(), text_.data() + text_.size());
    return layout;
}

const char* skipRecord(CacheReader& reader) {
    std::uint64_t count = 0;
    if (!reader.number(count)) {
        return "recipe count";
    }
    for (; count > 0; --count) {
        if (const char* fault = passInputs(reader, Check::all)) {
            return fault;
        }
        if (const char* fault = passOutputs(reader, Check::all)) {
            return fault;
        }
    }
    return passEnvironment(reader, Check::all);
}

void appendInputs(std::string& out, const std::vector<RecipeInput>& inputs) {
    appendNumber(out, inputs.size());
    for (const RecipeInput& input : inputs) {
        appendComparableAssignment(out, input.assignment);
        out += input.intermediate ? "1\n" : "0\n";
        if (input.intermediate) {
            appendComparableAssignment(out, *input.intermediate);
        }
    }
}

}  // namespace Vesk
