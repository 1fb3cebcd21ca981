#include <stdio.h>

int main(void) {
#ifdef _WIN32
    printf("Hello from Windows\n");
#else
    printf("Hello from here\n");
#endif
    return 0;
}
