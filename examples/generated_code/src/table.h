#ifndef TABLE_H
#define TABLE_H

extern const int table[];

#endif
