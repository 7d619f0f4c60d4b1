/* Reads the client's texts from the product's string table. */
#include "messages.h"
#include "client.h"

#include <qzvest/module.h>
#include <qzvest/product.h>
#include <qzvest/stringid.h>
#include <qzvest/typedvalue.h>

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

enum { COUNT = MESSAGE_END - MESSAGE_FIRST };

static char texts[COUNT][SHOWN]; /* those that were read; the others are empty */

const char *MessageText(uint32_t message)
{
    static const char *const builtIn[COUNT] = {
        "Single values, read where they lie",
        "host name",
        "operating system",
        "load over 5 minutes",
        "load over 15 minutes",
        "memory installed",
        "memory available",
        "room on",
        "What the block begins with",
        "The whole block, walked from front to back",
        "The object rebuilt",
        "Two values changed in the block",
        "The same two set back",
        "One text in two encodings",
        "Sums of a real file, this program",
        "That is all. Goodbye.",
    };
    const uint32_t place = message - MESSAGE_FIRST;
    return texts[place][0] != '\0' ? texts[place] : builtIn[place];
}

void ReadMessages(uint32_t languageId)
{
    uint32_t inLanguage = 0;
    uint32_t byDefault = 0;
    char name[32] = "?";
    uint32_t room = sizeof name;
    char *path = SMMakePathFileNameByPIDAndType(SM_PRODUCT_DEFAULT, SM_PATH_INI, "ini", "qzsdst64.ini");
    if (path == NULL) {
        return; /* no product is registered here */
    }
    for (uint32_t i = 0; i < COUNT; ++i) {
        uint32_t language = languageId;
        uint32_t size = sizeof texts[i];
        if (SMGetUTF8StrFromIDPathFile(MESSAGE_FIRST + i, &language, path, texts[i], &size) == 0) {
            continue;
        }
        if (language == languageId) {
            ++inLanguage;
        } else { /* the library says so: it has set the language to 0 */
            ++byDefault;
        }
    }
    (void)SMXLTTypeValueToUTF8(&languageId, sizeof languageId, name, &room, SMXLT_TYPE_LANGUAGE);
    printf("  texts for language %s, ID %" PRIu32 ", by %s:\n", name, languageId, path);
    printf("  %" PRIu32 " in this language, %" PRIu32 " by default (en_US), %" PRIu32 " built in\n", inLanguage,
           byDefault, COUNT - inLanguage - byDefault);
    SMFreeGeneric(path);
}
