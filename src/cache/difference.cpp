#include "cache/difference.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <vector>

#include "cache/cache_text.h"
#include "cache/record_fields.h"

namespace Vesk {
namespace {

constexpr std::size_t kLongestShown = 160;
constexpr std::size_t kShownBeforeDifference = 30;

/// An input in comparable form: its name and the text of its value.
struct Named {
    std::string name;
    std::string value;
    std::string text;  ///< the value without quotes
    std::string_view intermediate;
};

bool isHash(std::string_view text) {
    return text.starts_with(kHashInstead);
}

Named named(const Assignment& assignment) {
    return {assignment.name.str(),
            assignment.value ? assignment.value->toDisplayString() : "",
            assignment.value ? assignment.value->toString() : "",
            {}};
}

/// The contents of a part's inputs or of an environment, in order.
std::vector<Named> assignmentsIn(std::string_view text, bool hasIntermediates) {
    std::vector<Named> result;
    CacheReader reader(text);
    std::uint64_t count = 0;
    reader.number(count);
    for (; count > 0; --count) {
        const auto assignment = reader.assignment({});
        std::string_view flag = "0";
        if (!assignment || (hasIntermediates && !reader.line(flag))) {
            break;
        }
        result.push_back(named(*assignment));
        if (flag == "1") {
            const char* const start = reader.position();
            reader.stepOverAssignment();
            result.back().intermediate = {start,
                                          static_cast<std::size_t>(reader.position() - start)};
        }
    }
    return result;
}

bool isHashOf(const Named& hash, const Named& plain) {
    return isHash(hash.text) && (hash.text == hashInstead(plain.text) ||  // of strings
                                 hash.text == hashInstead(plain.value));
}

bool sameValue(const Named& a, const Named& b) {
    return a.value == b.value || isHashOf(a, b) || isHashOf(b, a);
}

bool sameAssignments(std::string_view last, std::string_view now, bool hasIntermediates) {
    if (last == now) {
        return true;
    }
    const auto hides = [](std::string_view text) {
        return text.find(kHashInstead) != std::string_view::npos;
    };
    return (hides(last) || hides(now)) &&
           std::ranges::equal(
               assignmentsIn(last, hasIntermediates), assignmentsIn(now, hasIntermediates),
               [](const Named& a, const Named& b) {
                   return a.name == b.name && a.intermediate == b.intermediate && sameValue(a, b);
               });
}

/// Two long texts, cut to the part where they differ.
void shorten(std::string& a, std::string& b) {
    const auto difference = static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
    for (std::string* text : {&a, &b}) {
        if (text->size() > kLongestShown && difference > kShownBeforeDifference) {
            text->replace(0, difference - kShownBeforeDifference, "...");
        }
        if (text->size() > kLongestShown) {
            text->replace(kLongestShown, std::string::npos, "...");
        }
    }
}

Difference valueChanged(const std::string& name, std::string before, std::string now) {
    shorten(before, now);
    std::string text = fmt::format("{}: {} is now {}", name, before, now);
    return {std::move(text), name, std::move(before), std::move(now)};
}

Difference sentence(std::string text) {
    return {std::move(text), {}, {}, {}};
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::size_t start = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n', start)) {
        result.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return result;
}

/// Given two sorted lists of files, the first file that only one of them has.
std::string fileListChanged(const std::string& before, const std::string& now, bool written) {
    const std::vector<std::string> old = lines(before);
    for (const std::string& file : lines(now)) {
        if (!std::ranges::binary_search(old, file)) {
            return file + (written ? " is a new output" : " is a new input");
        }
    }
    const std::vector<std::string> current = lines(now);
    for (const std::string& file : old) {
        if (!std::ranges::binary_search(current, file)) {
            return file + (written ? " is no longer an output" : " is no longer an input");
        }
    }
    return {};
}

Difference changed(const Named& before, const Named& now) {
    if (now.name == requestField::kReads || now.name == requestField::kWrites) {
        return sentence(fileListChanged(before.text, now.text, now.name == requestField::kWrites));
    }
    if (now.name.starts_with(requestField::kDependency)) {
        return sentence(now.name + " has been built again");
    }
    if (isHash(before.text) || isHash(now.text)) {
        return {now.name + " has changed", now.name, {}, {}};
    }
    return valueChanged(now.name, before.value, now.value);
}

Difference onlyOne(const Named& item, bool isNew) {
    if (item.name.starts_with(requestField::kDependency) || isHash(item.text)) {
        return sentence(item.name + (isNew ? " is new" : " is gone"));
    }
    std::string value = item.value;
    std::string other;
    shorten(value, other);
    Difference difference{fmt::format("{}: {} {}", item.name, value, isNew ? "is new" : "is gone"),
                          item.name,
                          {},
                          {}};
    (isNew ? difference.now : difference.before) = std::move(value);
    return difference;
}

const Named* findNamed(const std::map<std::string_view, const Named*>& items,
                       const std::string& name) {
    const auto found = items.find(name);
    return found == items.end() ? nullptr : found->second;
}

/// Something that appeared or disappeared says more than what changed along with it.
Difference difference(const std::vector<Named>& before, const std::vector<Named>& now) {
    std::map<std::string_view, const Named*> old;
    std::map<std::string_view, const Named*> current;
    for (const Named& item : before) {
        old.emplace(item.name, &item);
    }
    for (const Named& item : now) {
        current.emplace(item.name, &item);
    }
    for (const Named& item : now) {
        if (findNamed(old, item.name) == nullptr) {
            return onlyOne(item, true);
        }
    }
    for (const Named& item : before) {
        if (findNamed(current, item.name) == nullptr) {
            return onlyOne(item, false);
        }
    }
    for (const Named& item : now) {
        const Named& earlier = *findNamed(old, item.name);
        if (!sameValue(earlier, item)) {
            return changed(earlier, item);
        }
    }
    return {};
}

}  // namespace

bool sameInputs(std::string_view last, std::string_view now) {
    return sameAssignments(last, now, true);
}

bool sameEnvironment(std::string_view last, std::string_view now) {
    return sameAssignments(last, now, false);
}

namespace {

Difference partDifference(const RecordText::Layout& last, const CacheRequest& now,
                          std::size_t part) {
    if (part >= last.parts.size() || sameInputs(last.parts[part].inputs, now.parts[part].inputs)) {
        return {};
    }
    return difference(assignmentsIn(last.parts[part].inputs, true),
                      assignmentsIn(now.parts[part].inputs, true));
}

}  // namespace

Difference firstDifference(const RecordText::Layout& last, const CacheRequest& now) {
    if (last.parts.size() > kVariablesPart &&
        last.parts[kVariablesPart].inputs == unfinishedInputs()) {
        return sentence("its last build did not finish");
    }
    Difference first = partDifference(last, now, kVariablesPart);
    if (first.text.empty()) {
        first = partDifference(last, now, kTargetPart);
    }
    if (first.text.empty() && !sameEnvironment(last.environment, now.environment)) {
        first = difference(assignmentsIn(last.environment, false),
                           assignmentsIn(now.environment, false));
    }
    for (std::size_t i = kFirstRecipePart; first.text.empty() && i < now.parts.size(); ++i) {
        first = partDifference(last, now, i);
    }
    if (first.text.empty() && last.parts.size() != now.parts.size()) {
        return sentence(last.parts.size() < now.parts.size() ? "it has more commands than before"
                                                             : "it has fewer commands than before");
    }
    return first;
}

}  // namespace Vesk
