#include "program/children/arguments.h"

namespace Vesk::test {

std::string wholeCommandLine(const Arguments& arguments) {
    std::string text;
    for (const std::string& argument : arguments) {
        text += (text.empty() ? "<" : " <") + argument + ">";
    }
    return text;
}

}  // namespace Vesk::test

int main(int count, char** values) {
    return Vesk::test::run({values + 1, values + count});
}
