// What the tests of the loaders share: files to load, and the model as text.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "base/exception.h"
#include "grammar/model.h"
#include "types/assignment.h"
#include "types/target.h"

namespace Vesk {

/// An empty directory, with a blank and a letter outside ASCII in its name, that goes away.
class LoaderTest : public testing::Test {
  protected:
    LoaderTest();
    ~LoaderTest() override;

    std::filesystem::path write(std::string_view name, std::string_view bytes) const;

    /// The error of a call, notes included, with this directory as DIR and slashes for backslashes;
    /// "no error" when there is none.
    template <class Call>
    std::string errorOf(Call&& call) const {
        try {
            std::forward<Call>(call)();
            return "no error";
        } catch (const VeskException& error) {
            return readable(error.report());
        } catch (const std::exception& error) {
            return "std: " + readable(error.what());
        }
    }

    std::string readable(std::string text) const;

    std::filesystem::path directory_;
};

/// Takes what is written to std::cerr while it lives.
class ErrorCapture {
  public:
    ErrorCapture() : before_(std::cerr.rdbuf(taken_.rdbuf())) {}
    ~ErrorCapture() { std::cerr.rdbuf(before_); }
    ErrorCapture(const ErrorCapture&) = delete;
    ErrorCapture& operator=(const ErrorCapture&) = delete;

    std::string text() const { return taken_.str(); }

  private:
    std::ostringstream taken_;
    std::streambuf* before_;
};

/// Texts that show every field: kinds of value as S"", R"", P"", numbers, ref(a.b), [..], {..}.
std::string describe(const VeskValue& value);
std::string describe(const Context& context);  ///< with the number of its conditions
std::string describe(const Assignment& assignment);
std::string describe(const ContextTemplate& context, std::size_t indent);
std::string describe(const DependencyRecord& record);
std::string describe(const Unit& unit);

}  // namespace Vesk
