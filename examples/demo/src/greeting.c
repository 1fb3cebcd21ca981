#include "greeting.h"

#include <stdio.h>

const char* greeting(const char* who) {
    static char text[128];
    snprintf(text, sizeof(text), "Hello, %s!", who);
    return text;
}
