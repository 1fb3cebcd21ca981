#include <string.h>

#include "greet.h"

int main(void) {
    char text[80];
    greet(text, sizeof text, "you");
    return strcmp(text, "Hello, you!") == 0 ? 0 : 1;
}
