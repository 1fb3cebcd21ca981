#include "base/exception.h"

#include <exception>
#include <sstream>

#include "base/text.h"

namespace Vesk {
namespace {

std::string withNotes(std::string text, const Noted& noted) {
    for (const std::string& note : noted.notes()) {
        text += "\n  " + note;
    }
    return text;
}

}  // namespace

void Noted::addNote(std::string note) {
    notes_.emplace_back([note = std::move(note)] { return note; });
}

void Noted::addNote(std::function<std::string()> makeNote) {
    notes_.push_back(std::move(makeNote));
}

std::vector<std::string> Noted::notes() const {
    std::vector<std::string> lines;
    for (const auto& makeNote : notes_) {
        std::istringstream note(makeNote());
        for (std::string line; std::getline(note, line);) {
            lines.push_back(line);
        }
    }
    return lines;
}

void Noted::addPlace(const SourcePlace& place) {
    if (!hasPlace_ && place.file != 0) {
        hasPlace_ = true;
        addNote([place] { return joined(placeLines(place), "\n"); });
    }
}

std::string VeskException::report() const {
    return withNotes(text(), *this);
}

std::string reportOf(const std::exception& error) {
    const auto* noted = dynamic_cast<const Noted*>(&error);
    return noted != nullptr ? withNotes(error.what(), *noted) : error.what();
}

void rethrowWithNote(const std::string& note) {
    rethrowWithNote(SourcePlace{}, note);
}

void rethrowWithNote(const SourcePlace& place, const std::string& note) {
    try {
        throw;
    } catch (Noted& error) {
        error.addPlace(place);
        error.addNote(note);
        throw;
    } catch (const std::exception& exception) {
        NotedError error(exception.what());
        error.addPlace(place);
        error.addNote(note);
        throw error;
    }
}

}  // namespace Vesk
