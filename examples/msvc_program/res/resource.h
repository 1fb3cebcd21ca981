#define IDS_NAME 101
