// Which visits of a run that was kept still stand: neither they nor any below them have asked
// something whose answer differs now. A build passes over them, and visits the others.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/text_lookup.h"
#include "keep/kept_tree.h"

namespace Vesk {

class StandingVisits {
  public:
    using Node = KeptTree::Node;

    /// `transcript` and `recording` are those of the run. They, and the texts of the tree, outlive
    /// this. `differing`: the questions whose answers differ.
    StandingVisits(KeptTree tree, std::string_view transcript, std::string_view recording,
                   const std::vector<KeptTree::Question>& differing);

    const KeptTree& tree() const noexcept { return tree_; }

    /// The visit that is kept under this key.
    std::optional<Node> find(const ContentHash& key);

    /// Whether it has been passed over.
    bool isPassed(Node visit) const noexcept { return progress_[visit] == Progress::Passed; }

    /// Whether it can be passed over, with all visits that begin before it ends: they stand, and
    /// this is the first time that this run comes to them.
    bool mayPass(Node visit) const;

    /// The same, after what this run has begun meanwhile: whether all of them still find what they
    /// found. `isToBeMade`: tells whether a file is not made yet.
    bool stillStands(Node visit, const std::function<bool(const std::string&)>& isToBeMade);

    /// Whether what this visit alone asked has the same answers, whatever others found.
    /// `isToBeMade` as above.
    bool asksTheSame(Node visit, const std::function<bool(const std::string&)>& isToBeMade);

    /// Whether the files that the visit asked about are as it found them, except those that
    /// `mayDiffer`.
    bool knowsFilesOf(Node visit) const;
    bool mayDiffer(std::string_view file) const {
        return differing_.contains(file) || made_.contains(file);
    }

    /// Whether all of them may be built while others are.
    bool overlaps(Node visit) const;

    /// They are passed over. Returns what they said, as a transcript.
    std::string_view pass(Node visit);

    /// It is visited.
    void visit(Node visit) noexcept { progress_[visit] = Progress::Visited; }

    /// Commands begin to run that may change any file.
    void anythingChanges() noexcept { ++changes_; }

    /// Somebody makes this file.
    void isMade(const std::string& file) { made_.insert(file); }

    /// The names of the targets that have been passed over and have recipes.
    std::vector<std::string> targetsPassed() const;

    std::string_view transcript() const noexcept { return transcript_; }
    std::string_view recording() const noexcept { return recording_; }

    /// What the run asked, and wrote, before its first visit.
    std::string_view askedFirst();
    std::string_view saidFirst() const;

    /// What it asked after its last visit: about vesk's own files.
    std::string_view askedLast();

    std::string_view saidBy(Node visit) const;

    /// A question as it stands in the recording.
    std::string_view question(KeptTree::Question number);

    /// The tree for the next run after one that ended early: what does not stand is open.
    KeptTree treeOfFailure() const;

  private:
    enum class Progress : std::uint8_t { Ahead, Visited, Passed };

    bool isComplete(Node visit) const;
    bool isStillAnswered(KeptTree::Question number,
                         const std::function<bool(const std::string&)>& isToBeMade);
    void findAffected(const std::vector<bool>& differing);
    std::size_t bytesBefore(KeptTree::Question number);

    KeptTree tree_;
    std::string_view transcript_;
    std::string_view recording_;
    std::vector<bool> differs_;   ///< visits that found other answers
    std::vector<bool> affected_;  ///< those, and what depends on them
    std::vector<Progress> progress_;
    std::unordered_map<std::uint64_t, Node> byKey_;  ///< by half a key; made when it is needed
    std::vector<std::string_view> questions_;        ///< likewise
    TextSet made_;
    std::unordered_set<std::string_view> differing_;  ///< what the questions are about that differ
    unsigned changes_ = 0;                            ///< how often anything may have changed
    std::vector<unsigned> askedAfter_;                ///< so many changes, of each question
};

}  // namespace Vesk
