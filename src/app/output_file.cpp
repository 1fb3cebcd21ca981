#include "app/output_file.h"

#include <system_error>

#include "base/exception.h"
#include "platform/files.h"

namespace Vesk {

void writeOutputFile(const std::string& path, const Context& outputs) {
    if (path.empty()) {
        return;
    }
    std::string text;
    for (const auto& [name, assignment] : outputs.assignments()) {
        text += name.str() + " = " + (assignment.value ? assignment.value->toString() : "") + "\n";
    }
    std::error_code error;
    if (!platform::writeWholeFile(platform::pathFromUtf8(path), text, platform::Append::no,
                                  error)) {
        throw VeskException("Unable to write output file '" + path + "': " + error.message() + ".");
    }
}

}  // namespace Vesk
