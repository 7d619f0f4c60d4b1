/* The client's texts for people, by ID: from the product's string table in the language chosen, in the table's default
 * language where it lacks that one, and built in where there is no product. */
#ifndef EXAMPLES_MESSAGES_H
#define EXAMPLES_MESSAGES_H

#include <qzvest/types.h>

/* IDs in the string table. */
enum {
    MESSAGE_FIRST = 0x900,
    MESSAGE_SINGLE_VALUES = MESSAGE_FIRST, /* a heading */
    MESSAGE_HOST,                          /* names of values, to 907 */
    MESSAGE_SYSTEM,
    MESSAGE_LOAD_5,
    MESSAGE_LOAD_15,
    MESSAGE_MEMORY_TOTAL,
    MESSAGE_MEMORY_AVAILABLE,
    MESSAGE_ROOM_ON, /* a mount point follows */
    MESSAGE_DUMP,    /* headings, to 90E */
    MESSAGE_TREE,
    MESSAGE_REBUILT,
    MESSAGE_CHANGED,
    MESSAGE_SET_BACK,
    MESSAGE_ENCODINGS,
    MESSAGE_SUMS,
    MESSAGE_GOODBYE,
    MESSAGE_END
};

/* Reads all texts, in the language with this ID of the library's. Prints where they are from if there is a product. */
void ReadMessages(uint32_t languageId);

/* The text of a message, built in until ReadMessages. */
const char *MessageText(uint32_t message);

#endif
