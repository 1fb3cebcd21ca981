#include "platform/child/verbs.h"

int main(int count, char** values) {
    return Vesk::test::runVerb(std::vector<std::string>(values + 1, values + count));
}
