/* The client's own parts, besides its texts (messages.h): show.c turns values into text for people, tree.c walks a
 * block, xml.c writes one as an XML document, patch.c changes one, texts.c shows what a text of it looks like in
 * several forms, sums.c sums a file, watch.c reads what a service publishes. Calls that return int give 1 when all went
 * well and 0 after a message on standard error. */
#ifndef EXAMPLES_CLIENT_H
#define EXAMPLES_CLIENT_H

#include "options.h"

#include <qzvest/types.h>

/* A flat object in memory of its own. */
typedef struct Block {
    void *bytes;
    uint32_t room; /* bytes of memory, at least the block's size */
} Block;

enum { SHOWN = 512 }; /* room for a value as text */

/* Prints what failed, with the library's status; always 0. */
int ClientFailed(const char *what, uint32_t status);

/* Prints what failed, with the system's reason; always 0. */
int SystemFailed(const char *what, const char *why);

/* The message, underlined. */
void PrintHeading(uint32_t message);

/* A text and blanks after it, up to width characters in all. */
void PrintPadded(const char *text, uint32_t width);

/* The vocabulary's name of an ID, NULL for one that it lacks. */
const char *LabelOf(uint16_t id);

/* The name of a kind, the library's two included. */
const char *KindName(uint8_t kind, int isArray);

/* The library's type for a value, SMXLT_TYPE_BYTES for one that kind and size do not explain. */
uint8_t TypeOf(uint8_t kind, uint32_t size);

/* A value as a person reads it: text of at most SHOWN bytes. What kind and size do not explain becomes hex. */
void ShowValue(char *shown, uint8_t kind, const void *data, uint32_t size);

/* Prints the header and the first descriptors byte for byte, and what they mean. */
void PrintDump(const SMSDOBinary *block);

/* Prints every entry of the block, nested ones indented. */
int PrintTree(const SMSDOBinary *block);

/* Writes the block as one XML document. */
int PrintXML(const SMSDOBinary *block);

/* Changes two values of the block and sets them back, and compares what is rebuilt from the block each time with
 * the object as it was received. */
int PatchAndCompare(Block *block);

/* Prints host name and operating system in UTF-8, UCS-2, escaped, and as Base64. */
int PrintTexts(const SMSDOBinary *block);

/* Reads what a service publishes, as often as the options say or until there is no service any more. What the program
 * ends with. */
int Watch(const Options *options);

/* Prints the sums of this program's executable. */
int PrintSums(void);

#endif
