#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/project_catalog.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

/// The implicit context of project "p" with the profiles, as its dump shows it.
struct Layers {
    const char* what;
    const char* base;  ///< assignments, one a line
    const char* profiles;
    const char* selected;
    const char* overrides;
    const char* expected;  ///< of variable X, its dump line; empty: not there
};

class ImplicitContext : public Workspace, public ::testing::WithParamInterface<Layers> {
  protected:
    static std::shared_ptr<Context> contextOf(const std::string& lines) {
        auto context = std::make_shared<Context>();
        for (std::size_t from = 0; from < lines.size();) {
            const std::size_t end = std::min(lines.find('\n', from), lines.size());
            context->mergeAssignment(parseAssignment(lines.substr(from, end - from), {}));
            from = end + 1;
        }
        return context;
    }
};

TEST_P(ImplicitContext, LetsLaterLayersWin) {
    writeProject("p", "", GetParam().profiles);
    const Project& project = load("p", GetParam().selected);
    const auto context = buildImplicitContext(project, *contextOf(GetParam().base),
                                              *contextOf(GetParam().overrides));
    const Assignment* x = context->find("X");
    EXPECT_EQ(x == nullptr ? "" : x->toDisplayString(), GetParam().expected);
}

constexpr Layers kLayers[] = {
    {"DefaultProfileOverBase", "X = 1", "Default { X = 2 }", "", "", "X = 2"},
    {"SelectedOverDefault", "", "a { X = 3 } default { X = 2 }", "A", "", "X = 3"},
    {"DefaultSelectedAppliesOnce", "X = [0]", "default { X += [1] }", "default", "",
     "X = [ 0, 1 ]"},
    {"AppendStaysAnAppend", "", "a { X += [1] }", "a", "", "X += [ 1 ]"},
    {"AssignedAfterAnAppendReplaces", "", "default { X += [1] }", "", "X = [2]", "X = [ 2 ]"},
};

INSTANTIATE_TEST_SUITE_P(Layers, ImplicitContext, ::testing::ValuesIn(kLayers),
                         [](const auto& each) { return std::string(each.param.what); });

TEST_F(ImplicitContext, HasRootAndProfileAsFinalText) {
    writeProject("p", "", "Debug { if PROFILE = \"Debug\" { X = 1 } }");
    const Project& project = load("p", "debug");
    const auto base = contextOf("project_root = \"elsewhere\"");
    const auto context = buildImplicitContext(project, *base, Context());
    EXPECT_EQ(context->textOf("PROJECT_ROOT"), platform::pathToUtf8(project.root));
    EXPECT_EQ(context->textOf("PROFILE"), "Debug");
    EXPECT_EQ(context->find("X"), nullptr) << "conditions are evaluated for each target";
    context->evaluateConditions();
    EXPECT_EQ(context->textOf("X"), "1");
    EXPECT_EQ(base->textOf("project_root"), "elsewhere") << "the base is shared by all projects";
}

}  // namespace
}  // namespace Vesk::test
