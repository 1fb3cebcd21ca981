#include "app/modes/modes.h"
#include "base/console.h"

namespace Vesk::modes {
namespace {

constexpr const char* kHelpText =
    "vesk [options] target? [assignment]*\n"
    "Options: \n"
    "  -l <unit>  list targets from unit (1 = main unit)\n"
    "  -u         list units from project file\n"
    "  -p         list profiles from project file\n"
    "  -v <num>   verbosity level, default = 2\n"
    "  -j <num>   thread count\n"
    "  -f <file>  default vesk file override\n"
    "  -o <file>  main target outputs\n"
    "  -r         register current project\n"
    "  --find-compilers   detect and register default toolchains\n"
    "  --version\n"
    "  --create-project     initialise project file\n";

}  // namespace

int printHelp(const Settings& /*settings*/) {
    console::normal("{}", kHelpText);
    return 0;
}

}  // namespace Vesk::modes
