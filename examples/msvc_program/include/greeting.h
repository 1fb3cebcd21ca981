#ifndef GREETING_H
#define GREETING_H

/* Writes a greeting into the text, at most `size` characters with the zero at its end. */
void make_greeting(char* text, int size, const char* name);

#endif
