#include "types/values/expansion.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

#include "base/ci_string.h"
#include "base/interruption.h"
#include "base/text.h"
#include "types/values/errors.h"
#include "types/values/identifier_path.h"
#include "types/values/value_size.h"

namespace Vesk {
namespace {

using Names = std::unordered_set<std::string>;

/// A "#" followed by digits where a cross reference was probably meant.
void checkPlaceholders(const std::string& text) {
    for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#', at + 1)) {
        std::size_t end = at + 1;
        while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])) != 0) {
            ++end;
        }
        if (end > at + 1) {
            throw VeskException("unresolved cross expansion reference '" +
                                text.substr(at, end - at) + "'");
        }
    }
}

/// A text split at its outermost cross references: piece, reference, piece, ..., piece.
struct CrossParts {
    std::vector<std::string> pieces;
    std::vector<std::string> references;
};

/// The values of one reference. Wherever it is written in the text, its elements move together.
struct CrossTerm {
    CiString name;
    std::vector<ValuePtr> elements;
    std::vector<std::size_t> places;  ///< indexes of the text's references
};

CrossParts cutAtCrossReferences(const std::string& text) {
    CrossParts parts;
    std::size_t from = 0;
    for (std::size_t at = text.find("#{"); at != std::string::npos; at = text.find("#{", from)) {
        std::size_t end = at + 2;
        for (std::size_t level = 1; level > 0; ++end) {
            if (end >= text.size()) {
                throw VeskException("missing '}'");
            }
            if (text[end] == '}') {
                --level;
            } else if (text.compare(end, 2, "#{") == 0) {
                ++level;
            }
        }
        parts.pieces.push_back(text.substr(from, at - from));
        parts.references.push_back(text.substr(at + 2, end - at - 3));
        from = end;
    }
    parts.pieces.push_back(text.substr(from));
    return parts;
}

/// One expansion with its limits.
class Expander {
  public:
    explicit Expander(Resolver& resolver) : resolver_(resolver) {}

    std::string variables(const std::string& text, Names& inProgress);
    void cross(const std::string& text, std::vector<std::string>& results, std::size_t depth);

  private:
    std::string reference(const std::string& name, Names& inProgress);
    std::vector<CrossTerm> termsOf(const CrossParts& parts);
    std::vector<std::string> product(const CrossParts& parts);

    Resolver& resolver_;
    std::size_t references_ = 0;
    ValueSize combined_;  ///< of all texts that cross references have produced so far
    ValueSize results_;
};

std::string Expander::reference(const std::string& name, Names& inProgress) {
    stopIfInterrupted();
    if (++references_ > kMaxExpansionReferences || inProgress.size() > kMaxReferenceDepth) {
        throw VeskException(fmt::format("Expanding '${{{}}}' follows too many references.", name));
    }
    const IdentifierPath path = identifierPathFrom(name);
    const ValuePtr value = valueOrReport(path, resolver_);
    if (!value) {
        return {};
    }
    const auto [position, inserted] = inProgress.insert(lowerCased(path.toDisplayString()));
    if (!inserted) {
        throw CircularReference("Circular reference to variable '" + path.toDisplayString() + "'.");
    }
    const std::string entry = *position;
    std::string expanded = variables(value->toString(), inProgress);
    inProgress.erase(entry);
    return expanded;
}

std::string Expander::variables(const std::string& text, Names& inProgress) {
    std::size_t at = text.find("${");
    if (at == std::string::npos) {
        return text;
    }
    std::string result;
    std::size_t from = 0;
    for (; at != std::string::npos; at = text.find("${", from)) {
        const std::size_t end = text.find('}', at);
        if (end == std::string::npos) {
            throw VeskException("missing '}'");
        }
        if (text.find("${", at + 2) < end) {
            throw VeskException("nested ${} is not allowed");
        }
        result.append(text, from, at - from);
        result += reference(text.substr(at + 2, end - at - 2), inProgress);
        checkTextSize(result.size());
        from = end + 1;
    }
    result.append(text, from);
    return result;
}

std::vector<CrossTerm> Expander::termsOf(const CrossParts& parts) {
    std::vector<CrossTerm> terms;
    for (std::size_t i = 0; i < parts.references.size(); ++i) {
        const IdentifierPath path = identifierPathFrom(parts.references[i]);
        const CiString name = path.toDisplayString();
        const auto known = std::find_if(terms.begin(), terms.end(), [&name](const CrossTerm& term) {
            return term.name == name;
        });
        if (known != terms.end()) {
            known->places.push_back(i);
        } else {
            terms.push_back({name, elementsOf(*resolver_.resolveIdentifier(path)), {i}});
        }
    }
    return terms;
}

/// Every combination of the terms' elements, inserted where their references stand.
std::vector<std::string> Expander::product(const CrossParts& parts) {
    const std::vector<CrossTerm> terms = termsOf(parts);
    std::vector<std::string> texts;
    std::vector<std::string> filling(parts.references.size());
    if (std::ranges::any_of(terms, [](const CrossTerm& term) { return term.elements.empty(); })) {
        return texts;  // nothing to combine: skip the walk over the rest
    }
    const auto combine = [&](const auto& self, std::size_t term) -> void {
        if (term == terms.size()) {
            std::string text = parts.pieces.front();
            for (std::size_t i = 0; i < filling.size(); ++i) {
                text += filling[i] + parts.pieces[i + 1];
            }
            stopIfInterrupted();
            combined_.addBytes(text.size() + kElementBytes);
            texts.push_back(std::move(text));
            return;
        }
        for (const ValuePtr& element : terms[term].elements) {
            for (const std::size_t place : terms[term].places) {
                filling[place] = element ? element->toString() : std::string{};
            }
            self(self, term + 1);
        }
    };
    combine(combine, 0);
    return texts;
}

void Expander::cross(const std::string& text, std::vector<std::string>& results,
                     std::size_t depth) {
    if (depth > kMaxReferenceDepth) {
        throw VeskException("Expanding '" + text.substr(0, 80) + "' follows too many references.");
    }
    const CrossParts parts = cutAtCrossReferences(text);
    if (parts.references.empty()) {
        checkPlaceholders(text);
        results_.addBytes(text.size() + kElementBytes);
        results.push_back(text);
        return;
    }
    for (const std::string& combined : product(parts)) {
        Names inProgress;
        cross(variables(combined, inProgress), results, depth + 1);
    }
}

}  // namespace

std::string expandVariables(const std::string& text, Resolver& resolver, Names& inProgress) {
    return Expander(resolver).variables(text, inProgress);
}

Expanded expandCross(const std::string& text, Resolver& resolver) {
    if (text.find('#') == std::string::npos) {
        return {{text}};
    }
    Expanded expanded;
    Expander(resolver).cross(text, expanded.texts, 0);
    expanded.isList = text.find("#{") != std::string::npos;
    return expanded;
}

Expanded expandText(const std::string& text, Resolver& resolver) {
    Names inProgress;
    return expandCross(expandVariables(text, resolver, inProgress), resolver);
}

ValuePtr valueOrReport(const IdentifierPath& path, Resolver& resolver) {
    try {
        return resolver.resolveIdentifier(path);
    } catch (const LoopFoundException& loop) {
        throw CircularReference("Circular reference to variable '" + path.toDisplayString() +
                                "': " + joined(loop.chain(), " <- "));
    } catch (const NotFoundException&) {
    } catch (const MissingVariable&) {
    } catch (const NotAContext&) {
    } catch (const IndexException&) {
    } catch (const IdentifierError&) {}
    resolver.reportMissing(path);
    return nullptr;
}

std::vector<TextReference> referencesIn(std::string_view text) {
    std::vector<TextReference> references;
    for (std::size_t at = text.find('{'); at != std::string_view::npos;
         at = text.find('{', at + 1)) {
        const bool opens = at > 0 && (text[at - 1] == '$' || text[at - 1] == '#');
        const std::size_t end = opens ? text.find('}', at) : std::string_view::npos;
        if (end != std::string_view::npos) {
            references.push_back({at + 1, end});
        }
    }
    return references;
}

bool isSingleReference(std::string_view text) noexcept {
    return text.starts_with("${") && text.find('}') == text.size() - 1;
}

}  // namespace Vesk
