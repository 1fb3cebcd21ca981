#include <stdio.h>
#include <windows.h>

#include "../res/resource.h"
#include "greeting.h"

int main(void) {
    char name[40];
    char greeting[80];
    LoadStringA(NULL, IDS_NAME, name, sizeof name);
    make_greeting(greeting, sizeof greeting, name);
    puts(greeting);
    return 0;
}
