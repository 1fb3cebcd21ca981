#include "keep/kept_tree.h"

#include <algorithm>

#include "base/bytes.h"

namespace Vesk {
namespace {

constexpr unsigned kOverlaps = 1;
constexpr unsigned kOpen = 2;

/// Numbers that mostly grow, as what each adds to the one before. They wrap around where they do
/// not.
void append(Encoder& out, std::span<const std::uint32_t> numbers) {
    out.number(numbers.size());
    std::uint32_t last = 0;
    for (const std::uint32_t number : numbers) {
        out.number(static_cast<std::uint32_t>(number - last));
        last = number;
    }
}

void take(Decoder& in, std::vector<std::uint32_t>& numbers) {
    std::uint32_t last = 0;
    for (std::uint64_t count = in.number(); count > 0 && in.good(); --count) {
        last += static_cast<std::uint32_t>(in.number());
        numbers.push_back(last);
    }
}

}  // namespace

std::span<const KeptTree::Node> KeptTree::dependencies(Node visit) const noexcept {
    const Visit& of = visits_[visit];
    return std::span(numbers_).subspan(of.first, of.middle - of.first);
}

std::span<const KeptTree::Question> KeptTree::questions(Node visit) const noexcept {
    const Visit& of = visits_[visit];
    return std::span(numbers_).subspan(of.middle, of.last - of.middle);
}

KeptTree::Node KeptTree::begin(const Visit& visit) {
    visits_.push_back(visit);
    return static_cast<Node>(visits_.size() - 1);
}

void KeptTree::end(Node visit, std::size_t saidTo, std::span<const Node> dependencies,
                   std::span<const Question> questions) {
    Visit& ended = visits_[visit];
    ended.end = static_cast<Node>(visits_.size());
    ended.saidTo = saidTo;
    setNumbers(ended, dependencies, questions);
}

void KeptTree::add(const Visit& visit, std::span<const Node> dependencies,
                   std::span<const Question> questions) {
    setNumbers(visits_.emplace_back(visit), dependencies, questions);
}

void KeptTree::setNumbers(Visit& visit, std::span<const Node> dependencies,
                          std::span<const Question> questions) {
    visit.first = numbers_.size();
    numbers_.insert(numbers_.end(), dependencies.begin(), dependencies.end());
    visit.middle = numbers_.size();
    numbers_.insert(numbers_.end(), questions.begin(), questions.end());
    visit.last = numbers_.size();
}

std::string KeptTree::encoded() const {
    Encoder out;
    out.number(static_cast<std::uint64_t>(std::ranges::count_if(visits_, &Visit::isOpen)));
    out.number(firstQuestion);
    out.number(endOfQuestions);
    out.number(day);
    out.number(surroundings ? 1 : 0);
    out.hash(surroundings.value_or(ContentHash()));
    out.number(visits_.size());
    for (Node i = 0; i < visits_.size(); ++i) {
        const Visit& visit = visits_[i];
        out.hash(visit.key);
        out.hash(visit.kept);
        out.piece(visit.target);
        out.number((visit.overlaps ? kOverlaps : 0) | (visit.isOpen ? kOpen : 0));
        out.number(visit.end - i);
        out.number(visit.saidFrom);
        out.number(visit.saidTo - visit.saidFrom);
        append(out, dependencies(i));
        append(out, questions(i));
    }
    return std::move(out.bytes);
}

bool KeptTree::hasOpenVisits(std::string_view bytes) {
    return Decoder(bytes).number() != 0;
}

std::optional<KeptTree> KeptTree::decoded(std::string_view bytes) {
    Decoder in(bytes);
    KeptTree tree;
    in.number();  // of open visits
    tree.firstQuestion = static_cast<Question>(in.number());
    tree.endOfQuestions = static_cast<Question>(in.number());
    tree.day = static_cast<DayNumber>(in.number());
    const bool isKnown = in.number() != 0;
    const ContentHash surroundings = in.hash();
    tree.surroundings = isKnown ? std::optional(surroundings) : std::nullopt;
    const std::uint64_t count = std::min<std::uint64_t>(in.number(), bytes.size());
    tree.visits_.resize(count);
    for (Node i = 0; i < count && in.good(); ++i) {
        Visit& visit = tree.visits_[i];
        visit.key = in.hash();
        visit.kept = in.hash();
        visit.target = in.piece();
        const std::uint64_t flags = in.number();
        visit.overlaps = (flags & kOverlaps) != 0;
        visit.isOpen = (flags & kOpen) != 0;
        visit.end = i + static_cast<Node>(in.number());
        visit.saidFrom = in.number();
        visit.saidTo = visit.saidFrom + in.number();
        visit.first = tree.numbers_.size();
        take(in, tree.numbers_);
        visit.middle = tree.numbers_.size();
        take(in, tree.numbers_);
        visit.last = tree.numbers_.size();
    }
    return in.good() && in.atEnd() && tree.isWhole() ? std::optional(std::move(tree))
                                                     : std::nullopt;
}

/// Whether all numbers are those of visits and questions that there are.
bool KeptTree::isWhole() const {
    const auto isVisit = [this](Node node) { return node < visits_.size(); };
    const auto isQuestion = [this](Question number) { return number < endOfQuestions; };
    for (Node i = 0; i < visits_.size(); ++i) {
        if (visits_[i].end <= i || visits_[i].end > visits_.size() ||
            !std::ranges::all_of(dependencies(i), isVisit) ||
            !std::ranges::all_of(questions(i), isQuestion)) {
            return false;
        }
    }
    return !visits_.empty();
}

}  // namespace Vesk
