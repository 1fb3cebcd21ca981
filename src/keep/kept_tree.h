// The visits of a run in their order, with what each of them asked and said: kept beside the run's
// questions and its transcript, to tell which visits a later run need not look at.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/content_hash.h"
#include "base/day_number.h"

namespace Vesk {

class KeptTree {
  public:
    /// A visit, by its place in the order in which visits began, counted from zero. The first one
    /// is the root.
    using Node = std::uint32_t;
    using Question = std::uint32_t;  ///< by its place among the run's questions

    struct Visit {
        ContentHash key;           ///< under which it is kept
        ContentHash kept;          ///< of what is kept of it (see VisitStore::hash)
        std::string_view target;   ///< its name in messages; empty: it has no recipes
        bool overlaps = false;     ///< it may be built while others are
        bool isOpen = false;       ///< what is kept of it does not stand
        Node end = 0;              ///< the first visit that began after this one had ended
        std::size_t saidFrom = 0;  ///< what it, and those until `end`, wrote to the transcript
        std::size_t saidTo = 0;

        std::size_t first = 0;  ///< the tree's own: where its dependencies are, then its questions
        std::size_t middle = 0;
        std::size_t last = 0;
    };

    /// All visits. Their texts belong to somebody else.
    const std::vector<Visit>& visits() const noexcept { return visits_; }

    std::span<const Node> dependencies(Node visit) const noexcept;
    std::span<const Question> questions(Node visit) const noexcept;

    /// A visit begins. Returns its place.
    Node begin(const Visit& visit);

    /// It ends. It has these dependencies, in their order, and has asked these questions.
    void end(Node visit, std::size_t saidTo, std::span<const Node> dependencies,
             std::span<const Question> questions);

    /// A whole visit, `end` included, with its dependencies and questions.
    void add(const Visit& visit, std::span<const Node> dependencies,
             std::span<const Question> questions);

    void setOpen(Node visit) { visits_[visit].isOpen = true; }

    /// Visits alone ask the questions from `firstQuestion` on up to `endOfQuestions`; others ask
    /// the rest.
    Question firstQuestion = 0;
    Question endOfQuestions = 0;

    DayNumber day = 0;  ///< when all visits were last looked at

    /// A hash of what they depend on besides their targets' texts. Nothing: the run that found it
    /// out had something to say meanwhile.
    std::optional<ContentHash> surroundings;

    std::string encoded() const;

    /// Refers to the bytes. Nothing for bytes that are no tree.
    static std::optional<KeptTree> decoded(std::string_view bytes);

    /// The same as asking each visit of `decoded`, only faster.
    static bool hasOpenVisits(std::string_view bytes);

  private:
    bool isWhole() const;
    void setNumbers(Visit& visit, std::span<const Node> dependencies,
                    std::span<const Question> questions);

    std::vector<Visit> visits_;
    std::vector<std::uint32_t> numbers_;
};

}  // namespace Vesk
