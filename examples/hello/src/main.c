#include <stdio.h>

#include "greet.h"

int main(int argc, char** argv) {
    char text[80];
    greet(text, sizeof text, argc > 1 ? argv[1] : "world");
    puts(text);
    return 0;
}
