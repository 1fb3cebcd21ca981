#ifndef COUNT_H
#define COUNT_H

/* The number of letters in all the words. */
unsigned count_letters(int words, char** word);

#endif
