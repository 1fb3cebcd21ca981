#include "greeting.h"

#include <stdio.h>

void make_greeting(char* text, int size, const char* name) {
    snprintf(text, size, "Hello, %s!", name);
}
