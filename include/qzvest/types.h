/* Records and callback types of libqzvest; no functions.
 *
 * Text in UTF-8 is char, a UCS-2 unit is uint16_t, a status is uint32_t with the names of status.h.
 * Records that are only named here are opaque: each is a type of its own, so that a compiler catches one
 * given for another. Areas and blocks in the caller's memory are void. Records with members have a layout that
 * callers may rely on. */
#ifndef QZVEST_TYPES_H
#define QZVEST_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Red-black tree (redblacktree.h) ---- */

/* One element of a tree: a heap record of the library. A node's address may change hands when an element
 * is deleted, its data pointer does not. */
typedef struct SMRedBlackTreeNode SMRedBlackTreeNode;
struct SMRedBlackTreeNode {
    SMRedBlackTreeNode *left;   /* lower subtree, or NULL */
    SMRedBlackTreeNode *right;  /* higher subtree, or NULL */
    SMRedBlackTreeNode *parent; /* NULL at the root */
    void *data;                 /* the caller's, never NULL */
    uint32_t color;             /* SM_RBT_BLACK or SM_RBT_RED */
};

/* Colors of a node. */
enum { SM_RBT_BLACK = 0, SM_RBT_RED = 1 };

/* A tree is one slot, the root, in the caller's memory; NULL is an empty tree. */
typedef SMRedBlackTreeNode *SMRedBlackTree;

/* Orders a key against stored data: negative when the key sorts before data, 0 for equal, else positive. */
typedef int32_t (*SMCompareCallback)(void *key, void *data);

/* Looks at one element: 0 stops the walk and selects this data. For what other values do see
 * SM_RBT_WALK_SEARCH and SM_RBT_WALK_STEERED below. */
typedef int32_t (*SMVisitCallback)(void *context, void *data);

/* Told of an element that is going; the result is not looked at. */
typedef int32_t (*SMReleaseCallback)(void *context, void *data);

/* Values of walkType in SMRedBlackTreeDataWalk. */
enum {
    SM_RBT_WALK_ROOT = 0,       /* the root alone */
    SM_RBT_WALK_ASCENDING = 1,  /* in order, to the first 0 */
    SM_RBT_WALK_DESCENDING = 2, /* in reverse order, to the first 0 */
    SM_RBT_WALK_SEARCH = 3,     /* one path down: a negative result goes left, a positive one right */
    SM_RBT_WALK_STEERED = 4     /* all, a node before its subtrees: after a negative result the left one
                                   first, after a positive one the right one first */
};

/* ---- Self-describing objects (sdo.h) ---- */

/* An ordered set of entries in memory: an ID, a type byte and a value each. */
typedef struct SMSDOConfig SMSDOConfig;

/* Kinds that the library gives a meaning to, and the array flag. */
enum {
    SM_SDO_KIND_MASK = 0x0F, /* the bits of the kind in a type byte */
    SM_SDO_KIND_FLAT = 12,   /* the value is a flat block; in memory it turns into SM_SDO_KIND_OBJECT */
    SM_SDO_KIND_OBJECT = 13, /* the value is a pointer to an SMSDOConfig, with the array flag a table of them */
    SM_SDO_ARRAY = 0x10      /* flag beside the kind */
};

/* Bytes of an empty flat object or array. */
enum { SM_SDO_HEADER_SIZE = 8 };

/* A flat object ("BODS") or flat array ("BADS"): one block of bytes without pointers, which may lie at
 * any address. Its form is told in sdo.h. Where only an array will do, it is called SMSDOBinaryArray. */
typedef void SMSDOBinary;
typedef void SMSDOBinaryArray;

#define SM_SDO_NO_INDEX UINT32_C(0xFFFFFFFF) /* the arrayIndex of a block in no array */
#define SM_SDO_NO_COUNT UINT32_C(0xFFFFFFFF) /* the count of what has none: NULL, or no block */

/* Callbacks of SMSDOBinaryWalk. Each returns SM_STATUS_OK to go on. */

/* A block with at least one entry or element begins.
 *   cookie      what entry stored for this nested block, or the cookie of the array around it; 0 at the top
 *   isArray     1 for a flat array, 0 for a flat object
 *   count       entries or elements
 *   arrayIndex  place in the array around it, SM_SDO_NO_INDEX where there is none
 *   block       the block itself */
typedef uint32_t (*SMSDOObjectBeginCallback)(void *context, uint64_t cookie, uint16_t isArray, uint32_t count,
                                             uint32_t arrayIndex, const SMSDOBinary *block);

/* One entry of a flat object. The type byte comes in its four pieces.
 *   childCookieOut  may take the cookie for the block in this entry; it is not cleared beforehand
 *   size            bytes at data, the true length of the value */
typedef uint32_t (*SMSDOEntryCallback)(void *context, uint64_t *childCookieOut, uint16_t id, uint8_t typeBits6And7,
                                       uint8_t typeBit5, uint8_t typeBit4, uint8_t kind, uint32_t size,
                                       const void *data);

/* An entry and all within it is done. */
typedef uint32_t (*SMSDOEntryEndCallback)(void *context, uint64_t childCookie);

/* A block is done; its objectBegin had the same cookie. */
typedef uint32_t (*SMSDOObjectEndCallback)(void *context, uint64_t cookie, uint16_t isArray);

/* ---- Lists (list.h) ---- */

/* An entry of a singly linked list; the caller's payload is at data or nowhere. */
typedef struct SMSLListEntry SMSLListEntry;
struct SMSLListEntry {
    SMSLListEntry *next; /* NULL at the tail */
    void *data;          /* the payload, or NULL */
};

/* A singly linked list. */
typedef struct SMSLList {
    SMSLListEntry *head; /* NULL when empty */
    SMSLListEntry *tail; /* the same */
} SMSLList;

/* An entry of a doubly linked list. */
typedef struct SMDLListEntry SMDLListEntry;
struct SMDLListEntry {
    SMDLListEntry *next; /* NULL at the tail */
    SMDLListEntry *prev; /* NULL at the head */
    void *data;          /* the payload, or NULL */
};

/* A doubly linked list. */
typedef struct SMDLList {
    SMDLListEntry *head; /* NULL when empty */
    SMDLListEntry *tail; /* the same */
} SMDLList;

/* Orders a key against an entry, of which it gets the whole: negative when the key sorts before it, 0 for a
 * match, else positive. */
typedef int32_t (*SMSLListCompareCallback)(void *key, SMSLListEntry *entry);
typedef int32_t (*SMDLListCompareCallback)(void *key, SMDLListEntry *entry);

/* ---- Hash IDs (hashid.h) ---- */

/* A bit table in the caller's memory, read as words of 32 bits: ID n is bit n % 32 of word n / 32. */
typedef void SMHashTable;

/* ---- Sized strings (sizedstring.h) ---- */

/* Growable text: the record is the caller's, the buffer the library's. */
typedef struct SMSSUCS2Str {
    uint16_t *text;    /* terminated; NULL when the record holds nothing */
    uint32_t capacity; /* bytes at text */
    uint32_t length;   /* units stored, without the terminator; zeros may be among them */
} SMSSUCS2Str;

/* The same in UTF-8. */
typedef struct SMSSUTF8Str {
    char *text;        /* terminated; NULL when the record holds nothing */
    uint32_t capacity; /* bytes at text */
    uint32_t length;   /* bytes stored, without the terminator; zeros may be among them */
} SMSSUTF8Str;

/* ---- Typed values (typedvalue.h) ---- */

/* A typeAndFormat word is a type in its low byte or'ed with a format; the upper half is ignored. */
enum SMXLTType {
    SMXLT_TYPE_BOOL = 0, /* signed 16: 1 is true, all else false */
    SMXLT_TYPE_INT8 = 1,
    SMXLT_TYPE_INT16 = 2,
    SMXLT_TYPE_INT32 = 3,
    SMXLT_TYPE_INT64 = 4,
    SMXLT_TYPE_UINT8 = 5,
    SMXLT_TYPE_UINT16 = 6,
    SMXLT_TYPE_UINT32 = 7,
    SMXLT_TYPE_UINT64 = 8,
    SMXLT_TYPE_DOUBLE = 9,
    SMXLT_TYPE_LANGUAGE = 10, /* unsigned 32, an ID of language.h */
    SMXLT_TYPE_TIME = 11,     /* time_t */
    SMXLT_TYPE_BYTES = 12,
    SMXLT_TYPE_UTF8 = 13, /* text with its terminator */
    SMXLT_TYPE_UCS2 = 14, /* text with its terminator */
    SMXLT_TYPE_IPV4 = 15, /* 4 bytes in network order */
    SMXLT_TYPE_HEX = 16   /* bytes, always as plain hexadecimal digits */
};

/* Formats. */
#define SMXLT_FORMAT_DEFAULT UINT32_C(0x0000) /* decimal numbers; plain hexadecimal digits for bytes */
#define SMXLT_FORMAT_BINARY UINT32_C(0x0100)  /* base 2, a dump for bytes; to text only */
#define SMXLT_FORMAT_OCTAL UINT32_C(0x0200)   /* base 8 */
#define SMXLT_FORMAT_DECIMAL UINT32_C(0x0300) /* base 10 */
#define SMXLT_FORMAT_HEX UINT32_C(0x0400)     /* base 16; a comma list for bytes */

/* ---- Parameters (parameter.h) ---- */

/* A row of a table of words. Row 0 has no word, its value answers for unknown words; the value of row 1 is also the
 * default of an absent parameter. */
typedef struct SMNVPEnumEntry {
    const char *name; /* the word */
    uint32_t value;   /* what it stands for */
} SMNVPEnumEntry;

/* ---- XML (xml.h) ---- */

/* A document, or a list of attributes, in the making: a growable string on the heap. */
typedef SMSSUTF8Str SMXGBuf;

/* How a value is written; optional everywhere. */
typedef struct SMXGValueOptions {
    uint16_t format;     /* or'ed into the type: one of SMXLT_FORMAT_... */
    uint8_t escapeDepth; /* for text: 0 leaves it as it is, else the passes of SMXGEscapeXMLUTF8Str */
} SMXGValueOptions;

/* ---- RFC 1321 digest (rfc1321.h) ---- */

/* A message in the making, and its digest. */
typedef struct SMRFC1321Ctx {
    uint64_t bitCount;    /* message bits taken in so far */
    uint32_t state[4];    /* the chaining values A, B, C, D */
    uint32_t bufferCount; /* bytes waiting in buffer */
    uint8_t digest[16];   /* the result, after SMRFC1321ComputeMsgDigest */
    uint8_t buffer[64];   /* the current partial block */
} SMRFC1321Ctx;

/* ---- Files (file.h) ---- */

/* A file whose changes are watched. */
typedef struct SMFileProp SMFileProp;

/* Names of a directory's files, one heap block; the strings belong to it. */
typedef struct SMFileList {
    uint32_t count;    /* entries in use */
    uint32_t capacity; /* entries that the block has room for */
    char *entries[1];  /* paths or bare names; as many as count says */
} SMFileList;

/* What SMFileListGet takes and how, or'ed; the last two exclude each other. */
enum {
    SM_FILE_LIST_NAMES = 1,     /* bare names, not paths */
    SM_FILE_LIST_LINKS = 2,     /* symbolic links too */
    SM_FILE_LIST_SPARING = 4,   /* the block grows by 1 entry, not by 100 */
    SM_FILE_LIST_ASCENDING = 8, /* sorted by strcmp (C) */
    SM_FILE_LIST_DESCENDING = 16
};

/* ---- Network addresses (netaddress.h) ---- */

/* Families of addresses: codes of this library, not the system's. */
enum { SM_FAMILY_IPV4 = 1, SM_FAMILY_IPV6 = 2 };

/* Which addresses of this machine are listed. */
enum { SM_SCOPE_BOTH = 0, SM_SCOPE_IPV4 = 1, SM_SCOPE_IPV6 = 2 };

/* An IPv4 address as text. */
typedef struct SMIPAddrSlot {
    char text[16]; /* dotted quad with its terminator */
} SMIPAddrSlot;

/* An address of either family as text. */
typedef struct SMInetAddrRecord {
    uint16_t family;   /* SM_FAMILY_IPV4 or SM_FAMILY_IPV6 */
    uint16_t reserved; /* 0 */
    char text[256];    /* with its terminator */
} SMInetAddrRecord;

/* ---- Event logs (eventlog.h) ---- */

/* Targets of an event, to be or'ed. */
enum { SM_LOG_SYSTEM = 2, SM_LOG_TEXT = 4, SM_LOG_XML = 8 };

/* Types of an event. */
enum SMLogType {
    SM_LOG_TYPE_NONE = 0,
    SM_LOG_TYPE_ERROR = 1,
    SM_LOG_TYPE_WARNING = 2,
    SM_LOG_TYPE_INFORMATION = 4,
    SM_LOG_TYPE_AUDIT_SUCCESS = 8,
    SM_LOG_TYPE_AUDIT_FAILURE = 16
};

/* Categories of an event: the parts of the suite. */
enum SMLogCategory {
    SM_LOG_RECORD_BROKER = 1,
    SM_LOG_GAUGEWORK_SERVICE = 2,
    SM_LOG_VOLUME_SERVICE = 3,
    SM_LOG_BRIDGE_LINK_SERVICE = 4,
    SM_LOG_HOST_AGENT_FRAME = 5,
    SM_LOG_PACKAGE_LEDGER = 6
};

/* ---- Rotated logs (rotatedlog.h) ---- */

/* Flags of a message, to be or'ed. */
enum {
    SM_ROTATED_TIME = 1,     /* the local time in front */
    SM_ROTATED_THREAD = 2,   /* process and thread number in front, behind the time */
    SM_ROTATED_LINE_FEED = 4 /* a line feed behind */
};

/* ---- INI files (ini.h) ---- */

/* What a value is in memory, and how its text in the file is formed. */
enum INIValueType {
    INI_TYPE_UTF8 = 1,   /* text: itself */
    INI_TYPE_UCS2 = 2,   /* UCS-2 text with its terminator: like INI_TYPE_BINARY over all its bytes */
    INI_TYPE_BINARY = 3, /* bytes: "0x%02X," each, without the last comma */
    INI_TYPE_BOOL = 4,   /* 16 bits, 1 is true: TRUE or FALSE */
    INI_TYPE_UINT32 = 5,
    INI_TYPE_INT32 = 6,
    INI_TYPE_UINT64 = 7,
    INI_TYPE_INT64 = 8,
    INI_TYPE_DOUBLE = 9 /* "%.8f" */
};

/* A row of a table of words, as in parameter.h: row 0 answers for unknown words, row 1 is also the default. */
typedef SMNVPEnumEntry SMINIEnumEntry;

/* ---- Products (product.h) ---- */

/* Products of the suite, by number. */
#define SM_PRODUCT_ANY UINT32_C(0xFFFFFFFF) /* hmrq: the one with a chain of fallbacks */
#define SM_PRODUCT_DEFAULT UINT32_C(35)     /* Gaugework: whose paths the library itself uses */

/* Directories of a product; a call takes one. */
enum SMPathType {
    SM_PATH_INSTALL = 2,
    SM_PATH_VARDATA = 4,
    SM_PATH_LOG = 8,
    SM_PATH_CONFIGTOOL = 16,
    SM_PATH_INI = 64,
    SM_PATH_BIN = 128
};

/* ---- Locks and shared objects (mutex.h, semaphore.h, event.h, sharedmem.h, rwlock.h) ---- */

/* Handles: each of its own kind, ended by the call of that kind. */
typedef struct SMMutex SMMutex;
typedef struct SMSemaphore SMSemaphore;
typedef struct SMEvent SMEvent;
typedef struct SMSharedMem SMSharedMem;
typedef struct SMRWL SMRWL;

#define SM_WAIT_FOREVER UINT32_C(0xFFFFFFFF) /* a time-out without limit */

/* Access masks of the creators that end in _s: who else may open the object. Any other value has a nibble of rights for
 * each class: others at bit 8, the group at bit 16, the owner at bit 24. To open takes reading and writing together, and
 * the creator's own class needs both, too, or else the object it gets is of no use. */
#define SM_ACCESS_GROUP UINT32_C(0xFFFFFFFF) /* mode 0664, what the plain creators give */
#define SM_ACCESS_OWNER UINT32_C(0)          /* mode 0600 */
enum SMAccessRight {
    SM_ACCESS_ALL = 1, /* the other three are not looked at then */
    SM_ACCESS_READ = 2,
    SM_ACCESS_WRITE = 4,
    SM_ACCESS_EXECUTE = 8
};

/* ---- Critical sections (critical.h) ---- */

/* What runs under its own address as a lock; its result is dropped. */
typedef uint64_t (*SMCriticalSectionFunction)(uint64_t argument);

/* ---- Threads (thread.h) ---- */

/* A thread that SMThreadStart began. */
typedef struct SMThreadHandle SMThreadHandle;

/* What a thread runs; the result is dropped. */
typedef void *(*SMThreadRoutine)(void *argument);

/* ---- Dynamic libraries (library.h) ---- */

/* A library that SMLibLoad or the cache loaded. */
typedef struct SMLibHandle SMLibHandle;

#ifdef __cplusplus
}
#endif

#endif
