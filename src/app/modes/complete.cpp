#include <string>

#include "app/completion.h"
#include "app/modes/modes.h"
#include "platform/console.h"

namespace Vesk::modes {
namespace {

/// On one line, whatever is in it.
std::string flattened(std::string text) {
    for (char& c : text) {
        c = c >= '\0' && c < ' ' ? ' ' : c;
    }
    return text;
}

}  // namespace

int complete(const Settings& settings) {
    std::string answer;
    for (const Candidate& candidate : completions(settings.wordsToComplete, settings)) {
        answer += flattened(candidate.text) + '\t' + flattened(candidate.description) + '\n';
    }
    platform::writeBytes(platform::Stream::Output, answer);
    return 0;
}

}  // namespace Vesk::modes
