#include "count.h"

#include <string.h>

unsigned count_letters(int words, char **word) {
    unsigned letters = 0;
    for (int i = 0; i < words; ++i) {
        letters += (unsigned)strlen(word[i]);
    }
    return letters;
}
