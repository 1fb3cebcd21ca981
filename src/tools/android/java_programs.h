// The programs of a Java development kit.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

/// The path of "java", "keytool" or "javac". `declared` is the setting java_path: the kit's
/// directory or its `bin`. If it is empty, JAVA_HOME and PATH are searched. Throws VeskException if
/// the program is not there.
std::string requireJavaProgram(std::string_view name, const std::string& declared);

}  // namespace Vesk
