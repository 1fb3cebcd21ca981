/* make_table COUNT FILE: writes a table of the first COUNT primes as C source. */
#include <stdio.h>
#include <stdlib.h>

static int is_prime(int number) {
    for (int divisor = 2; divisor * divisor <= number; ++divisor) {
        if (number % divisor == 0) {
            return 0;
        }
    }
    return number > 1;
}

int main(int argc, char **argv) {
    FILE *file = argc == 3 ? fopen(argv[2], "w") : NULL;
    if (file == NULL) {
        fprintf(stderr, "make_table: cannot write\n");
        return 1;
    }
    fprintf(file, "#include \"table.h\"\n\nconst int table[] = {");
    int left = atoi(argv[1]);
    for (int number = 2; left > 0; ++number) {
        if (is_prime(number)) {
            fprintf(file, "%d, ", number);
            --left;
        }
    }
    fprintf(file, "};\n");
    return fclose(file) == 0 ? 0 : 1;
}
