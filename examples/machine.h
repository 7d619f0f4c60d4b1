/* The names that service and client share, and all that they share: the IDs of the values, and what the kinds
 * mean to the two of them. The library carries both and looks at neither. */
#ifndef EXAMPLES_MACHINE_H
#define EXAMPLES_MACHINE_H

#include <qzvest/types.h>

/* Kinds, bits 0-3 of a type byte. Numbers are unsigned and in host byte order; the kind tells size and unit, so a
 * reader can show a value of an ID that it has never heard of. */
enum {
    MACHINE_NUMBER = 1,     /* a plain number of 32 bits */
    MACHINE_BYTES = 2,      /* a number of bytes, of 64 bits */
    MACHINE_SECONDS = 3,    /* a number of seconds, of 64 bits */
    MACHINE_HUNDREDTHS = 4, /* a number of hundredths, of 32 bits */
    MACHINE_BOOLEAN = 5,    /* 1 for true or 0 for false, of 16 bits, as the library has it */
    MACHINE_TEXT = 6        /* UTF-8 with its final 0 */
};

/* Bit 5 of a type byte: whoever reads the value may change it. */
#define MACHINE_OPEN 0x20

/* What the object is published by: a mutex, an event with automatic reset and a shared memory, all three of this name.
 * The event is set after each publication; all else is done by who holds the mutex. The memory begins with the object's
 * block, or with zeros while there is none. */
#define MACHINE_NAME "the demo's machine"

enum { MACHINE_ROOM = 65536 }; /* bytes of shared memory: no block is larger */

/* IDs. They are unique over all objects, so that one table of labels serves the whole tree. */
enum {
    MACHINE_ID_HOST = 1,         /* text */
    MACHINE_ID_PROCESSORS = 2,   /* number */
    MACHINE_ID_SYSTEM = 3,       /* text */
    MACHINE_ID_KERNEL = 4,       /* text */
    MACHINE_ID_UPTIME = 5,       /* seconds */
    MACHINE_ID_LOAD = 6,         /* object of the 60s */
    MACHINE_ID_MEMORY = 7,       /* object of the 70s */
    MACHINE_ID_FILE_SYSTEMS = 8, /* array of objects of the 80s */
    MACHINE_ID_READERS = 20,     /* number, open */
    MACHINE_ID_REMARK = 21,      /* text, open */
    MACHINE_ID_PUBLICATION = 22, /* number, only in shared memory */

    MACHINE_ID_LOAD_1 = 60, /* hundredths */
    MACHINE_ID_LOAD_5 = 61,
    MACHINE_ID_LOAD_15 = 62,
    MACHINE_ID_RUNNABLE = 63, /* numbers */
    MACHINE_ID_TASKS = 64,

    MACHINE_ID_MEMORY_TOTAL = 70, /* bytes */
    MACHINE_ID_MEMORY_AVAILABLE = 71,
    MACHINE_ID_MEMORY_CACHED = 72,
    MACHINE_ID_SWAP_TOTAL = 73,
    MACHINE_ID_SWAP_FREE = 74,

    MACHINE_ID_MOUNT_POINT = 80, /* texts */
    MACHINE_ID_MOUNT_TYPE = 81,
    MACHINE_ID_MOUNT_SOURCE = 82,
    MACHINE_ID_MOUNT_SIZE = 83, /* bytes */
    MACHINE_ID_MOUNT_USED = 84,
    MACHINE_ID_MOUNT_AVAILABLE = 85,
    MACHINE_ID_MOUNT_READ_ONLY = 86 /* boolean */
};

#endif
