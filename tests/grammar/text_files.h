// What the tests of the loaders share: files to load, and the model as text.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

#include "base/exception.h"
#include "platform/support.h"
#include "types/context/context_template.h"
#include "types/model/target.h"

namespace Vesk {

class LoaderTest : public testing::Test {
  protected:
    std::filesystem::path write(std::string_view name, std::string_view bytes) const;

    /// What `call` gives, or its error with the notes; readable.
    template <class Call>
    std::string outcome(Call&& call) const {
        try {
            return readable(std::forward<Call>(call)());
        } catch (const VeskException& error) {
            return readable(error.report());
        }
    }

    /// With the test's directory as DIR and slashes for backslashes.
    std::string readable(std::string text) const;

    test::TempDir directory_;
};

/// Every assignment and condition, a line each, with its line in the file.
std::string describe(const ContextTemplate& context, std::size_t indent);
std::string describe(const Unit& unit);

}  // namespace Vesk
