#include "greet.h"

#include <stdio.h>

int greet(char* buffer, unsigned size, const char* name) {
    return snprintf(buffer, size, "Hello, %s!", name);
}
