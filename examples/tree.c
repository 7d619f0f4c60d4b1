/* Walks a block and prints it as a tree. */
#include "client.h"
#include "machine.h"

#include <qzvest/print.h>
#include <qzvest/sdo.h>

#include <inttypes.h>
#include <stdio.h>

enum { LABEL_COLUMN = 24, INDENT = 2 };

typedef struct Tree {
    int depth; /* blocks around the present place */
    int deepest;
    uint32_t blocks;
    uint32_t entries;
    uint32_t entriesDone;
    uint32_t hasOpen; /* an entry that readers may change was met */
} Tree;

/* "3 entries" or "1 element". */
static void ShowCount(char *shown, uint32_t count, int isArray)
{
    const char *one = isArray ? "element" : "entry";
    const char *many = isArray ? "elements" : "entries";
    (void)SMsnprintf(shown, SHOWN, "%" PRIu32 " %s", count, count == 1 ? one : many);
}

/* The cookie of a nested block is the ID of the entry that holds it, which has been printed already. */
static uint32_t BeginBlock(void *context, uint64_t cookie, uint16_t isArray, uint32_t count, uint32_t arrayIndex,
                           const SMSDOBinary *block)
{
    Tree *tree = context;
    char shown[SHOWN];
    ShowCount(shown, count, isArray);
    if (cookie == 0 || arrayIndex != SM_SDO_NO_INDEX) {
        printf("  %5s  %-8s %6" PRIu32 "  %*s", "", isArray ? "array" : "object", SMSDOBinaryGetSize(block, NULL),
               tree->depth * INDENT, "");
        if (arrayIndex != SM_SDO_NO_INDEX) {
            printf("[%" PRIu32 "], %s\n", arrayIndex, shown);
        } else {
            printf("machine, %s\n", shown);
        }
    }
    ++tree->blocks;
    ++tree->depth;
    if (tree->depth > tree->deepest) {
        tree->deepest = tree->depth;
    }
    return SM_STATUS_OK;
}

static uint32_t PrintEntry(void *context, uint64_t *childCookieOut, uint16_t id, uint8_t typeBits6And7,
                           uint8_t typeBit5, uint8_t typeBit4, uint8_t kind, uint32_t size, const void *data)
{
    Tree *tree = context;
    const char *label = LabelOf(id);
    const char *mark = typeBit5 != 0 ? "*" : "";
    const int indent = tree->depth * INDENT;
    char shown[SHOWN];
    char column[16];
    (void)typeBits6And7; /* the vocabulary gives them no meaning */
    *childCookieOut = id;
    (void)SMsnprintf(column, sizeof column, "%s%s", KindName(kind, typeBit4), mark);
    printf("  %5u  %-8s %6" PRIu32 "  %*s", id, column, size, indent, "");
    if (kind == SM_SDO_KIND_FLAT) {
        ShowCount(shown, SMSDOBinaryGetCount(data, NULL), typeBit4);
        printf("%s, %s\n", label != NULL ? label : "unknown", shown);
    } else {
        ShowValue(shown, kind, data, size);
        printf("%-*s %s\n", LABEL_COLUMN - indent, label != NULL ? label : "unknown", shown);
    }
    ++tree->entries;
    tree->hasOpen |= typeBit5;
    return SM_STATUS_OK;
}

static uint32_t EndEntry(void *context, uint64_t childCookie)
{
    Tree *tree = context;
    (void)childCookie;
    ++tree->entriesDone;
    return SM_STATUS_OK;
}

static uint32_t EndBlock(void *context, uint64_t cookie, uint16_t isArray)
{
    Tree *tree = context;
    (void)cookie;
    (void)isArray;
    --tree->depth;
    return SM_STATUS_OK;
}

int PrintTree(const SMSDOBinary *block)
{
    Tree tree = {0};
    printf("  %5s  %-8s %6s  %-*s %s\n", "ID", "kind", "bytes", LABEL_COLUMN, "name", "value");
    const uint32_t status = SMSDOBinaryWalk(block, &tree, BeginBlock, PrintEntry, EndEntry, EndBlock, 1);
    if (status != SM_STATUS_OK) {
        return ClientFailed("SMSDOBinaryWalk", status);
    }
    if (tree.depth != 0 || tree.entries != tree.entriesDone) {
        return ClientFailed("the walk did not end what it began; it", SM_STATUS_FAILED);
    }
    printf("\n  %" PRIu32 " entries in %" PRIu32 " blocks, %d levels deep.%s\n", tree.entries, tree.blocks,
           tree.deepest, tree.hasOpen ? " A reader may change what has a *." : "");
    return 1;
}
