#include "tools/msvc/msvc_builders.h"

#include "tools/msvc/msvc_build.h"

namespace Vesk {

namespace {

AssignmentMap msvcSubjects() {
    static const AssignmentMap own = makeTable({
        {"RC_FILES"},        {"RC_FLAGS"},       {"MC_FILES"},
        {"MC_FLAGS"},        {"RUNTIME"},        {"PDB"},
        {"REPRODUCIBLE"},    {"SUBSYSTEM"},      {"ENTRY"},
        {"MANIFEST"},        {"IMPORT_LIBRARY"}, {"DRIVER"},
        {"KMDF_VERSION"},    {"UMDF_VERSION"},   {"INF_FILE"},
        {"PACKAGE_FILES"},   {"CAT_FILE"},       {"CAT_OS"},
        {"INF2CAT_FLAGS"},   {"SIGN_CERT"},      {"SIGN_NAME"},
        {"SIGN_THUMBPRINT"}, {"SIGN_STORE"},     {"SIGN_PASSWORD_ENV"},
        {"SIGN_DIGEST"},     {"SIGN_FLAGS"},     {"TIMESTAMP_URL"},
        {"winsdk_path"},     {"winsdk_version"}, {"wdk_version"},
    });
    AssignmentMap all = cFamilySubjects();
    all.insert(own.begin(), own.end());
    return all;
}

}  // namespace

MSVCTool::MSVCTool(std::string name, DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
    : CBuilder(std::move(name), msvcSubjects()),
      place_(std::move(place)),
      programs_(std::move(programs)) {}

CBuilder::Created MSVCTool::doCreateRecipes(TargetContext& target,
                                            const BuildEnv& environment) const {
    MsvcBuild build(target, environment, place_, *programs_);
    build.make();
    return {std::move(build.recipes), std::move(build.outputs)};
}

}  // namespace Vesk
