#include "tools/gnu_style/gnu_style_choice.h"

#include "base/text.h"
#include "tools/support/source_files.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

bool isType(const Context& target, const char* word) {
    return equalsIgnoringCase(target.textOf("OUTPUT_TYPE").value_or(""), word);
}

}  // namespace

GnuProgram gnuStyleStep(const Context& target) {
    if (target.find("OBJCOPY_INPUT") != nullptr) {
        return GnuProgram::ObjectCopier;
    }
    if (!hasSources(target)) {
        if (isType(target, "relocatable") || hasEntries(target, "LINKER_SCRIPT")) {
            return GnuProgram::Linker;
        }
        if (isType(target, "static")) {
            return GnuProgram::Archiver;
        }
    }
    const bool c = hasEntries(target, "C_FILES") || hasEntries(target, "ASM_FILES");
    return hasEntries(target, "CPP_FILES") || !c ? GnuProgram::CppCompiler : GnuProgram::CCompiler;
}

}  // namespace Vesk
