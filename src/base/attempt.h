// Work whose errors are part of the answer.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "base/exception.h"

namespace Vesk {

/// Whether the work succeeds. An error of either family means false and is not examined; anything
/// else passes through, such as Interrupted.
template <class Work>
bool succeeds(Work&& work) {
    try {
        std::forward<Work>(work)();
        return true;
    } catch (const VeskException&) {
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

/// The same, with the reason: the report of the error, or nothing on success.
template <class Work>
std::optional<std::string> failureOf(Work&& work) {
    try {
        std::forward<Work>(work)();
        return std::nullopt;
    } catch (const VeskException& error) {
        return error.report();
    } catch (const std::exception& error) {
        return reportOf(error);
    }
}

}  // namespace Vesk
