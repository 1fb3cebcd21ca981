#include "app/doubts.h"

#include "base/exception.h"
#include "base/report.h"

namespace Vesk {

void reportDoubt(Doubts doubts, const std::string& text, const std::vector<std::string>& notes) {
    if (doubts == Doubts::Warn) {
        reportWarning(text, notes);
        return;
    }
    VeskException error(text);
    for (const std::string& note : notes) {
        error.addNote(note);
    }
    throw error;
}

}  // namespace Vesk
