#ifndef GREET_H
#define GREET_H

/* Writes "Hello, <name>!" into the buffer; returns the length. */
int greet(char* buffer, unsigned size, const char* name);

#endif
