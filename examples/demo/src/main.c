#include <stdio.h>

#include "greeting.h"
#include "version.h"

int main(int count, char** values) {
    const char* who = count > 1 ? values[1] : "nobody";
    printf("%s (demo %s, made by %s)\n", greeting(who), DEMO_VERSION, DEMO_MADE_BY);
    return 0;
}
