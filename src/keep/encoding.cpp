#include "keep/encoding.h"

#include "platform/files.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

/// Of what lists may be nested in each other; deeper ones are not kept.
constexpr int kMaxNesting = 100;

bool appendValue(Encoder& out, const VeskValue* value, int depth);

bool appendList(Encoder& out, const VeskList& list, int depth) {
    out.number(list.items.size());
    for (const ValuePtr& item : list.items) {
        if (!appendValue(out, item.get(), depth + 1)) {
            return false;
        }
    }
    return true;
}

/// The kind, 0 for no value, and the content.
bool appendValue(Encoder& out, const VeskValue* value, int depth) {
    if (value == nullptr) {
        out.number(0);
        return true;
    }
    out.number(static_cast<std::uint64_t>(value->kind()) + 1);
    switch (value->kind()) {
        case ValueKind::CharSet:
            return true;
        case ValueKind::Int:
            out.number(static_cast<std::uint32_t>(valueAs<VeskInt>(value)->value));
            return true;
        case ValueKind::Path: {
            const auto* path = valueAs<VeskPathString>(value);
            out.piece(platform::pathToUtf8(path->baseDirectory));
            out.piece(path->text);
            return true;
        }
        case ValueKind::RawString:
        case ValueKind::String:
            out.piece(valueAs<VeskBaseString>(value)->text);
            return true;
        case ValueKind::List:
            return depth < kMaxNesting && appendList(out, *valueAs<VeskList>(value), depth);
        case ValueKind::Context:
        case ValueKind::Identifier:
            break;
    }
    return false;
}

bool appendAssignment(Encoder& out, const Assignment& assignment) {
    if (!assignment.written.empty()) {
        return false;
    }
    out.piece(assignment.name.str());
    out.number(static_cast<std::uint64_t>(assignment.state));
    out.number(static_cast<std::uint64_t>(assignment.op));
    out.number(static_cast<std::uint64_t>(assignment.modifier));
    out.piece(sourceFileName(assignment.place.file));
    out.number(assignment.place.line);
    out.number(assignment.place.column);
    return appendValue(out, assignment.value.get(), 0) &&
           appendValue(out, assignment.exported.get(), 0);
}

std::string takeText(Decoder& decoder) {
    return std::string(decoder.piece());
}

ValuePtr takeValue(Decoder& decoder, int depth);

ValuePtr takeList(Decoder& decoder, int depth) {
    auto list = std::make_shared<VeskList>();
    for (std::uint64_t count = decoder.number(); count > 0 && decoder.good(); --count) {
        list->items.push_back(takeValue(decoder, depth + 1));
    }
    return list;
}

ValuePtr takeValue(Decoder& decoder, int depth) {
    const std::uint64_t kind = decoder.number();
    if (kind == 0 || depth > kMaxNesting) {
        return nullptr;
    }
    switch (static_cast<ValueKind>(kind - 1)) {
        case ValueKind::CharSet:
            return std::make_shared<VeskCharSet>();
        case ValueKind::Int:
            return std::make_shared<VeskInt>(static_cast<std::int32_t>(decoder.number()));
        case ValueKind::Path: {
            std::filesystem::path base = platform::pathFromUtf8(decoder.piece());
            return std::make_shared<VeskPathString>(takeText(decoder), std::move(base));
        }
        case ValueKind::RawString:
            return std::make_shared<VeskRawString>(takeText(decoder));
        case ValueKind::String:
            return std::make_shared<VeskString>(takeText(decoder));
        case ValueKind::List:
            return takeList(decoder, depth);
        case ValueKind::Context:
        case ValueKind::Identifier:
            break;
    }
    return nullptr;
}

Assignment takeAssignment(Decoder& decoder) {
    Assignment assignment;
    assignment.name = takeText(decoder);
    assignment.state = static_cast<ResolveState>(decoder.number());
    assignment.op = static_cast<AssignOperator>(decoder.number());
    assignment.modifier = static_cast<AssignModifier>(decoder.number());
    const std::string file = takeText(decoder);
    assignment.place.file = file.empty() ? 0 : sourceFileNumber(file);
    assignment.place.line = static_cast<std::uint32_t>(decoder.number());
    assignment.place.column = static_cast<std::uint32_t>(decoder.number());
    assignment.value = takeValue(decoder, 0);
    assignment.exported = takeValue(decoder, 0);
    return assignment;
}

}  // namespace

std::optional<std::string> encoded(const std::vector<ValuePtr>& values) {
    Encoder out;
    out.number(values.size());
    for (const ValuePtr& value : values) {
        if (!appendValue(out, value.get(), 0)) {
            return std::nullopt;
        }
    }
    return std::move(out.bytes);
}

std::optional<std::string> encoded(const Context& resolved) {
    if (!resolved.conditions().empty()) {
        return std::nullopt;
    }
    Encoder out;
    out.number(resolved.assignments().size());
    for (const auto& [name, assignment] : resolved.assignments()) {
        if (resolved.hasHeldAppends(name) || !appendAssignment(out, assignment)) {
            return std::nullopt;
        }
    }
    return std::move(out.bytes);
}

std::optional<std::vector<ValuePtr>> decodedValues(std::string_view bytes) {
    Decoder decoder(bytes);
    std::vector<ValuePtr> values;
    for (std::uint64_t count = decoder.number(); count > 0 && decoder.good(); --count) {
        values.push_back(takeValue(decoder, 0));
    }
    return decoder.good() && decoder.atEnd() ? std::optional(std::move(values)) : std::nullopt;
}

std::shared_ptr<Context> decodedContext(std::string_view bytes) {
    Decoder decoder(bytes);
    auto context = std::make_shared<Context>();
    for (std::uint64_t count = decoder.number(); count > 0 && decoder.good(); --count) {
        const Assignment assignment = takeAssignment(decoder);
        context->addAssignment(assignment, ModifierMode::Copy);
        context->find(assignment.name)->state = assignment.state;
    }
    return decoder.good() && decoder.atEnd() ? context : nullptr;
}

}  // namespace Vesk
