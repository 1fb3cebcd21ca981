#include "base/exception.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <type_traits>

namespace Vesk {
namespace {

static_assert(!std::is_base_of_v<std::exception, VeskException>,
              "handlers of standard exceptions do not see vesk's own");

class OwnText : public VeskException {
  public:
    std::string message() const override { return "own text"; }
};

template <class Thrown>
void throwThroughTwoLayers(const Thrown& thrown) {
    try {
        try {
            throw Thrown(thrown);
        } catch (...) {
            rethrowWithNote("inner");
        }
    } catch (...) {
        rethrowWithNote("outer");
    }
}

TEST(VeskException, CollectsNotesOnTheWayUpAndKeepsItsClass) {
    try {
        throwThroughTwoLayers(OwnText());
        FAIL() << "swallowed";
    } catch (const OwnText& error) {
        EXPECT_EQ(error.message(), "own text");
        EXPECT_EQ(error.report(), "own text\n  inner\n  outer");
    }
    EXPECT_EQ(VeskException("plain").report(), "plain");
}

TEST(VeskException, NotesReachStandardExceptionsToo) {
    try {
        throwThroughTwoLayers(std::out_of_range("text"));
        FAIL() << "swallowed";
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "text\n  inner\n  outer");
    }
}

}  // namespace
}  // namespace Vesk
