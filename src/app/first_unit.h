// A first unit file for the sources that are there.
#pragma once

#include <string>
#include <string_view>

#include "app/first_sources.h"

namespace Vesk {

/// Whether the sources without main() are a library in any case, or only where several programs
/// share them.
enum class FirstUnit { Program, Library };

/// The text of a unit file that builds all of it: a program for each main(), a static library of
/// the others where there is one program or more of them to link it. `name`: an identifier, what a
/// single program or the library is called. There is at least one source.
std::string firstUnitText(const FirstSources& found, const std::string& name, FirstUnit kind);

}  // namespace Vesk
