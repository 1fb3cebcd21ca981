#include <stdio.h>

#include "count.h"

int main(int argc, char **argv) {
    printf("%d words, %u letters\n", argc - 1, count_letters(argc - 1, argv + 1));
    return 0;
}
