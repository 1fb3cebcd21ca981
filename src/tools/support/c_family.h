// What toolchains of the C family have in common: their variables, and the names that people bring
// for them from other tools.
#pragma once

#include "tools/tool_registry.h"
#include "tools/variables.h"

namespace Vesk {

extern const VariableGroup kSourceVariables;
extern const VariableGroup kCompileVariables;
extern const VariableGroup kTypeVariables;  ///< OUTPUT_TYPE
extern const VariableGroup kNameVariables;  ///< OUTPUT_NAME
extern const VariableGroup kLinkVariables;
extern const VariableGroup kPackageVariables;
extern const VariableGroup kPackageOutputs;
extern const VariableGroup kProductVariables;
extern const VariableGroup kOutputVariables;
extern const VariableGroup kDependencyFileVariables;
extern const VariableGroup kLanguageOutputs;   ///< LINK_LANGUAGE
extern const VariableGroup kChoiceVariables;   ///< by which a target asks for a toolchain
extern const VariableGroup kPlaceSettings;     ///< where a toolchain's programs are
extern const VariableGroup kIdentitySettings;  ///< how it is named

/// The names in Make, CMake, Meson and others.
inline constexpr Misnomer kCFamilyMisnomers[] = {
    {"SOURCES", "C_FILES"},
    {"SOURCES", "CPP_FILES"},
    {"SRCS", "C_FILES"},
    {"SRCS", "CPP_FILES"},
    {"SRC", "C_FILES"},
    {"SRC", "CPP_FILES"},
    {"SOURCE_FILES", "C_FILES"},
    {"SOURCE_FILES", "CPP_FILES"},
    {"C_SOURCES", "C_FILES"},
    {"CPP_SOURCES", "CPP_FILES"},
    {"CXX_SOURCES", "CPP_FILES"},
    {"CXX_FILES", "CPP_FILES"},
    {"CC_FILES", "CPP_FILES"},
    {"OBJS", "OBJ_FILES"},
    {"CFLAGS", "C_FLAGS"},
    {"CXXFLAGS", "CPP_FLAGS"},
    {"CXX_FLAGS", "CPP_FLAGS"},
    {"CPPFLAGS", "CPP_FLAGS"},
    {"ASFLAGS", "ASM_FLAGS"},
    {"DEFS", "DEFINES"},
    {"DEFINITIONS", "DEFINES"},
    {"MACROS", "DEFINES"},
    {"INCLUDES", "INCLUDE_DIRS"},
    {"INCLUDE", "INCLUDE_DIRS"},
    {"INCLUDE_PATH", "INCLUDE_DIRS"},
    {"INCLUDE_DIRECTORIES", "INCLUDE_DIRS"},
    {"LDFLAGS", "LINK_FLAGS"},
    {"LD_FLAGS", "LINK_FLAGS"},
    {"LINKFLAGS", "LINK_FLAGS"},
    {"LINKER_FLAGS", "LINK_FLAGS"},
    {"LDLIBS", "LIBS"},
    {"LINK_LIBS", "LIBS"},
    {"LIBRARIES", "LIBS"},
    {"LIBPATH", "LIB_DIRS"},
    {"LIBRARY_PATH", "LIB_DIRS"},
    {"LIBRARY_DIRS", "LIB_DIRS"},
    {"ARFLAGS", "AR_FLAGS"},
    {"TARGET_TYPE", "OUTPUT_TYPE"},
    {"TARGET_NAME", "OUTPUT_NAME"},
    {"CC", "toolchain_name"},
    {"CXX", "toolchain_name"},
};

}  // namespace Vesk
