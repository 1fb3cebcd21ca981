#include "tools/gnu_style/gnu_style_detection.h"

namespace Vesk {

std::vector<DetectedTool> detectGnuStyle(const GnuToolchain& toolchain,
                                         const std::vector<std::string>& directories,
                                         bool defaultForEachTriple,
                                         CompilerAnswer (*ask)(const FoundCompiler& compiler)) {
    const std::string_view word = toolchain.of(GnuProgram::CCompiler).name;
    const ProgramNames& archiver = toolchain.of(GnuProgram::Archiver);
    std::vector<DetectedTool> tools;
    for (const Toolchain& found : answeringCompilers(
             {toolchain.traits.toolType, toolchain.family, word, ask, defaultForEachTriple},
             directories)) {
        warnIfMissing(found, {toolchain.of(GnuProgram::CppCompiler).name}, "it compiles C only");
        warnIfMissing(found, {archiver.name, archiver.otherwise}, "it makes no static libraries");
        tools.push_back(detectedTool(found, word));
    }
    return tools;
}

}  // namespace Vesk
