#include <stdio.h>

#include "limits_of_table.h"
#include "table.h"

int main(void) {
    for (int i = 0; i < TABLE_SIZE; ++i) {
        printf("%d ", table[i]);
    }
    printf("\n");
    return 0;
}
