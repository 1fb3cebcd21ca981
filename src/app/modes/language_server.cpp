#include "app/modes/modes.h"
#include "app/version.h"
#include "base/console.h"
#include "editor/protocol/server.h"
#include "platform/console.h"

namespace Vesk::modes {

int languageServer(const Settings& /*settings*/) {
    // Standard output belongs to the protocol, whatever else might be told.
    console::setThreshold(console::level::kError + 1);
    return editor::serve(
        platform::readInput,
        [](std::string_view bytes) { platform::writeBytes(platform::Stream::Output, bytes); },
        kVersion);
}

}  // namespace Vesk::modes
