#include <string>
#include <vector>

#include "app/entry.h"

int main(int argc, char** argv) {
    return Vesk::runProgram(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
