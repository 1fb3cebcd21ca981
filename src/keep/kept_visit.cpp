#include "keep/kept_visit.h"

#include <algorithm>

#include "base/bytes.h"

namespace Vesk {
namespace {

constexpr std::size_t kHashBytes = sizeof(std::uint64_t) * 2;

void append(Encoder& out, const KeptDependency& dependency) {
    out.piece(dependency.reference.ns);
    out.piece(dependency.reference.unit);
    out.piece(dependency.reference.target);
    out.piece(dependency.arguments);
    out.hash(dependency.outputs);
    out.piece(dependency.stamp);
    out.piece(dependency.said);
}

KeptDependency takeDependency(Decoder& bytes) {
    KeptDependency dependency;
    dependency.reference.ns = bytes.piece();
    dependency.reference.unit = bytes.piece();
    dependency.reference.target = bytes.piece();
    dependency.arguments = bytes.piece();
    dependency.outputs = bytes.hash();
    dependency.stamp = bytes.piece();
    dependency.said = bytes.piece();
    return dependency;
}

}  // namespace

bool KeptVisit::saysMore() const noexcept {
    return !saidFirst.empty() || !saidLast.empty() ||
           std::ranges::any_of(dependencies, [](const auto& each) { return !each.said.empty(); });
}

std::string encoded(const KeptVisit& visit) {
    Encoder out;
    out.hash(visit.record);
    out.hash(visit.digest);
    for (const std::string_view text :
         {visit.askedFirst, visit.askedLast, visit.saidFirst, visit.saidLast, visit.outputs,
          visit.stamp, visit.recordKey, visit.tool, visit.recipes}) {
        out.piece(text);
    }
    out.number(visit.coloured ? 1 : 0);
    out.number(visit.overlaps ? 1 : 0);
    out.number(visit.hasRecipes ? 1 : 0);
    out.number(visit.dependencies.size());
    for (const KeptDependency& dependency : visit.dependencies) {
        append(out, dependency);
    }
    return std::move(out.bytes);
}

std::string_view withoutRecord(std::string_view encodedVisit) noexcept {
    return encodedVisit.substr(std::min(kHashBytes, encodedVisit.size()));
}

std::optional<KeptVisit> decodedVisit(std::string_view bytes) {
    Decoder decoder(bytes);
    KeptVisit visit;
    visit.record = decoder.hash();
    visit.digest = decoder.hash();
    for (std::string_view* text :
         {&visit.askedFirst, &visit.askedLast, &visit.saidFirst, &visit.saidLast, &visit.outputs,
          &visit.stamp, &visit.recordKey, &visit.tool, &visit.recipes}) {
        *text = decoder.piece();
    }
    visit.coloured = decoder.number() != 0;
    visit.overlaps = decoder.number() != 0;
    visit.hasRecipes = decoder.number() != 0;
    const std::uint64_t count = decoder.number();
    visit.dependencies.reserve(std::min<std::uint64_t>(count, bytes.size()));
    for (std::uint64_t i = 0; i < count && decoder.good(); ++i) {
        visit.dependencies.push_back(takeDependency(decoder));
    }
    return decoder.good() && decoder.atEnd() ? std::optional(std::move(visit)) : std::nullopt;
}

}  // namespace Vesk
