#include <windows.h>

#include "platform/windows/wide.h"
#include "program/children/arguments.h"

namespace Vesk::test {

std::string wholeCommandLine(const Arguments&) {
    return platform::fromWide(::GetCommandLineW());
}

}  // namespace Vesk::test

// The wide arguments are the C runtime's own reading of the command line, whatever the code page.
extern "C" int wmain(int count, wchar_t** values);

int wmain(int count, wchar_t** values) {
    Vesk::test::Arguments arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(Vesk::platform::fromWide(values[i]));
    }
    return Vesk::test::run(arguments);
}
