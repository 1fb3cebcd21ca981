#include "platform/child/verbs.h"
#include "platform/windows/wide.h"

// The wide arguments are the C runtime's own reading of the command line, whatever code page is
// set.
extern "C" int wmain(int count, wchar_t** values);

int wmain(int count, wchar_t** values) {
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(Vesk::platform::fromWide(values[i]));
    }
    return Vesk::test::runVerb(arguments);
}
