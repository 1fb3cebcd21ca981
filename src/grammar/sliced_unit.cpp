#include "grammar/sliced_unit.h"

#include <unordered_map>
#include <utility>

#include "base/exception.h"
#include "grammar/tree_parts.h"
#include "platform/files.h"

namespace Vesk {
namespace {

using Parser = grammar::VeskTopParser;

struct HashOfHash {
    std::size_t operator()(const ContentHash& hash) const noexcept {
        return static_cast<std::size_t>(hash.low);
    }
};

using TargetsByHash = std::unordered_map<ContentHash, const KnownTarget*, HashOfHash>;

TargetsByHash byHash(const UnitOutline* outline) {
    TargetsByHash targets;
    if (outline != nullptr) {
        targets.reserve(outline->targets.size());
        for (const KnownTarget& target : outline->targets) {
            targets.emplace(target.hash, &target);
        }
    }
    return targets;
}

}  // namespace

SliceParser::SliceParser(std::string_view text, const std::string& name,
                         const std::shared_ptr<const std::filesystem::path>& file)
    : text_(text), visitor_(file, name, FileKind::Unit), trees_(name) {}

/// Null for one with errors. The tree lives until the next call.
Parser::VeskUnitContext* SliceParser::parse(const TextSlice& slice) {
    Parser::UnitFileContext* const tree =
        trees_.parse(slice.in(text_), slice.line, slice.column - 1);
    return tree == nullptr ? nullptr : tree->veskUnit();
}

std::shared_ptr<const Target> SliceParser::target(const TextSlice& slice) {
    Parser::VeskUnitContext* const tree = parse(slice);
    if (tree == nullptr || tree->children.size() != 1) {
        return nullptr;
    }
    auto* const target = partOf<Parser::TargetContext>(*tree);
    return target == nullptr ? nullptr
                             : taken<VeskVisitorImpl::TargetPtr>(visitor_.visitTarget(target));
}

std::optional<std::string> SliceParser::unitName(const TextSlice& slice) {
    Parser::VeskUnitContext* const tree = parse(slice);
    if (tree == nullptr || tree->unit_name() == nullptr || !tree->target().empty()) {
        return std::nullopt;
    }
    return tree->unit_name()->IDENTIFIER()->getText();
}

SlicedUnit::SlicedUnit(SourceFile file, std::filesystem::path canonical)
    : file_(std::move(file)),
      path_(std::make_shared<const std::filesystem::path>(std::move(canonical))),
      name_(platform::pathToUtf8(*path_)) {}

SliceParser& SlicedUnit::parser() {
    return parser_ ? *parser_ : parser_.emplace(file_.uncheckedText(), name_, path_);
}

std::shared_ptr<const TargetText> SlicedUnit::read(const Target& target, std::size_t number) {
    const auto parsed = parser().target(slices_.at(number));
    if (!parsed || parsed->hash != target.hash) {
        throw VeskException("The file of kept visits is damaged. Delete it.");
    }
    return parsed->text();
}

std::string_view SlicedUnit::written(std::size_t number) const {
    return slices_.at(number).in(file_.uncheckedText());
}

std::shared_ptr<const Target> SlicedUnit::outlined(const KnownTarget& target, std::size_t number) {
    auto made = std::make_shared<Target>();
    made->name = target.name;
    made->parameters.assign(target.parameters.begin(), target.parameters.end());
    made->file = path_;
    made->line = slices_[number].line;
    made->hash = target.hash;
    made->setSource(shared_from_this(), number);
    return made;
}

std::optional<Unit> SlicedUnit::asOutlined(const UnitOutline& outline) {
    if (outline.text != hashText(file_.bytes())) {
        return std::nullopt;
    }
    Unit unit;
    unit.name = outline.name;
    unit.nameDeclared = outline.nameDeclared;
    unit.files.push_back(*path_);
    unit.reserve(outline.targets.size());
    slices_.reserve(outline.targets.size());
    const std::size_t size = file_.uncheckedText().size();
    for (const KnownTarget& target : outline.targets) {
        if (target.slice.offset > size || target.slice.size > size - target.slice.offset) {
            return std::nullopt;
        }
        slices_.push_back(target.slice);
        unit.addTarget(outlined(target, slices_.size() - 1));
    }
    return unit;
}

/// Without its targets.
std::optional<Unit> SlicedUnit::newUnit(const UnitSlices& slices) {
    Unit unit;
    unit.files.push_back(*path_);
    if (slices.unitLine) {
        auto declared = parser().unitName(*slices.unitLine);
        if (!declared) {
            return std::nullopt;
        }
        unit.name = std::move(*declared);
        unit.nameDeclared = true;
    }
    return unit;
}

ContentHash SlicedUnit::hashOf(const TextSlice& slice) const {
    return targetHash(name_, slice.line, slice.column, slice.in(file_.uncheckedText()));
}

std::optional<Unit> SlicedUnit::read(const UnitOutline* earlier) {
    const std::string_view text = file_.text();
    auto slices = slicesOf(text);
    auto unit = slices ? newUnit(*slices) : std::nullopt;
    if (!unit) {
        return std::nullopt;
    }
    const TargetsByHash known = byHash(earlier);
    slices_ = std::move(slices->targets);
    for (std::size_t i = 0; i < slices_.size(); ++i) {
        const auto same = known.empty() ? known.end() : known.find(hashOf(slices_[i]));
        auto target =
            same != known.end() ? outlined(*same->second, i) : parser().target(slices_[i]);
        if (!target) {
            return std::nullopt;
        }
        unit->addTarget(std::move(target));
    }
    return unit;
}

UnitOutline SlicedUnit::outlineOf(const Unit& unit) const {
    UnitOutline outline;
    outline.text = hashText(file_.bytes());
    outline.name = unit.name;
    outline.nameDeclared = unit.nameDeclared;
    for (std::size_t i = 0; i < slices_.size(); ++i) {
        const Target& target = *unit.targets[i];
        outline.targets.push_back({slices_[i],
                                   *target.hash,
                                   target.name,
                                   {target.parameters.begin(), target.parameters.end()}});
    }
    return outline;
}

}  // namespace Vesk
