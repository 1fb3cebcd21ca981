// Why targets are built, from one to the next.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "cache/cache_record.h"
#include "cache/freshness.h"

namespace Vesk {

/// Follows the reasons back: a target is built because another one was, and that one because a file
/// has changed. Used on the driver's thread.
class BuildReasons {
  public:
    /// So many reasons of a target are shown, and so many targets of a chain.
    static constexpr std::size_t kMostReasons = 5;
    static constexpr std::size_t kMostLinks = 10;

    enum class Show : bool { no, yes };

    explicit BuildReasons(Show show) : show_(show) {}

    /// The target is built, or would be. Shows each reason on a line, if the target has commands.
    void add(const std::string& target, const std::vector<Reason>& reasons,
             const CacheRequest& request);

    /// In a dry run the target is up to date as things are, but one of these may change when it is
    /// built. Returns why that one is: "main::lib because src/a.h has changed"; empty when none of
    /// them would be built.
    std::string mayFollow(const std::string& target, const std::vector<std::string>& dependencies);

    /// Shows that line as one of the reasons.
    void showPossible(const std::string& target, const std::string& chain);

    bool shows() const noexcept { return show_ == Show::yes; }

    /// Whether any target with commands is built, or would be.
    bool any() const noexcept { return any_; }

  private:
    struct Link {
        std::string needed;  ///< the target for whose sake; empty: there is none
        std::string cause;   ///< where the chain ends: "src/a.h has changed"
    };

    Link linkFor(const Reason& reason) const;
    std::string chainOf(const std::string& target) const;
    std::string textOf(const Link& link) const;

    Show show_;
    bool any_ = false;
    std::unordered_map<std::string, Link> links_;          ///< by target
    std::unordered_map<std::string, std::string> makers_;  ///< by file: the target
};

}  // namespace Vesk
