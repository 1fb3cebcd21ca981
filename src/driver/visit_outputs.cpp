#include "driver/visit_outputs.h"

#include "base/exception.h"
#include "keep/encoding.h"

namespace Vesk {

VisitOutputs VisitOutputs::fromKept(std::string_view kept) {
    VisitOutputs outputs;
    outputs.kept_ = kept;
    return outputs;
}

const std::shared_ptr<Context>& VisitOutputs::context() const {
    if (!context_ && kept_) {
        context_ = decodedContext(*kept_);
        if (!context_) {
            throw VeskException("The file of kept visits is damaged. Delete it.");
        }
    }
    return context_;
}

const std::optional<std::string>& VisitOutputs::encoded() const {
    if (!encoded_) {
        encoded_ = kept_ ? std::string(*kept_) : Vesk::encoded(*context_);
    }
    return *encoded_;
}

std::optional<ContentHash> VisitOutputs::hash() const {
    if (!hash_ && kept_) {
        hash_ = hashText(*kept_);
    } else if (!hash_ && encoded()) {
        hash_ = hashText(*encoded());
    }
    return hash_;
}

}  // namespace Vesk
