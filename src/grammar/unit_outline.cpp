#include "grammar/unit_outline.h"

#include <algorithm>

#include "base/bytes.h"

namespace Vesk {
namespace {

void append(Encoder& out, const KnownTarget& target) {
    out.number(target.slice.offset);
    out.number(target.slice.size);
    out.number(target.slice.line);
    out.number(target.slice.column);
    out.hash(target.hash);
    out.piece(target.name);
    out.number(target.parameters.size());
    for (const std::string_view parameter : target.parameters) {
        out.piece(parameter);
    }
}

KnownTarget takeTarget(Decoder& bytes) {
    KnownTarget target;
    target.slice.offset = bytes.number();
    target.slice.size = bytes.number();
    target.slice.line = static_cast<std::uint32_t>(bytes.number());
    target.slice.column = static_cast<std::uint32_t>(bytes.number());
    target.hash = bytes.hash();
    target.name = bytes.piece();
    for (std::uint64_t count = bytes.number(); count > 0 && bytes.good(); --count) {
        target.parameters.push_back(bytes.piece());
    }
    return target;
}

}  // namespace

std::string encoded(const UnitOutline& outline) {
    Encoder out;
    out.hash(outline.text);
    out.piece(outline.name);
    out.number(outline.nameDeclared ? 1 : 0);
    out.number(outline.targets.size());
    for (const KnownTarget& target : outline.targets) {
        append(out, target);
    }
    return std::move(out.bytes);
}

std::optional<UnitOutline> decodedOutline(std::string_view bytes) {
    Decoder decoder(bytes);
    UnitOutline outline;
    outline.text = decoder.hash();
    outline.name = decoder.piece();
    outline.nameDeclared = decoder.number() != 0;
    const std::uint64_t count = decoder.number();
    outline.targets.reserve(std::min<std::uint64_t>(count, bytes.size()));
    for (std::uint64_t i = 0; i < count && decoder.good(); ++i) {
        outline.targets.push_back(takeTarget(decoder));
    }
    return decoder.good() && decoder.atEnd() ? std::optional(std::move(outline)) : std::nullopt;
}

}  // namespace Vesk
