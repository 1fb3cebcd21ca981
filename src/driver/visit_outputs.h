// What a visit gives to its dependants.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/content_hash.h"
#include "types/context/context.h"

namespace Vesk {

/// The outputs as a context, or as the bytes that were kept of one. Either is made of the other
/// when it is asked for first.
class VisitOutputs {
  public:
    VisitOutputs() = default;
    VisitOutputs(std::shared_ptr<Context> context) : context_(std::move(context)) {}  // NOLINT

    /// `kept` belongs to somebody else and can be decoded.
    static VisitOutputs fromKept(std::string_view kept);

    const std::shared_ptr<Context>& context() const;

    /// Nothing for outputs that cannot be kept. To be called when the context is complete.
    const std::optional<std::string>& encoded() const;

    /// Of the encoded outputs; nothing likewise.
    std::optional<ContentHash> hash() const;

  private:
    mutable std::shared_ptr<Context> context_;
    mutable std::optional<std::optional<std::string>> encoded_;
    mutable std::optional<ContentHash> hash_;
    std::optional<std::string_view> kept_;
};

}  // namespace Vesk
