#include "base/exception.h"

#include <exception>
#include <stdexcept>

namespace Vesk {

std::string VeskException::report() const {
    std::string text = message();
    for (const std::string& note : notes_) {
        text += "\n  " + note;
    }
    return text;
}

void rethrowWithNote(const std::string& note) {
    try {
        throw;
    } catch (VeskException& exception) {
        exception.addNote(note);
        throw;
    } catch (const std::exception& exception) {
        throw std::runtime_error(std::string(exception.what()) + "\n  " + note);
    }
}

}  // namespace Vesk
