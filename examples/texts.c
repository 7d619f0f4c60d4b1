/* A text of this machine in UTF-8 and UCS-2, escaped, and as Base64. */
#include "client.h"
#include "machine.h"
#include "messages.h"

#include <qzvest/base64.h>
#include <qzvest/language.h>
#include <qzvest/sdo.h>
#include <qzvest/sizedstring.h>
#include <qzvest/transcode.h>
#include <qzvest/ucs2.h>
#include <qzvest/utf8.h>

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum {
    FIRST_ROOM = 32, /* bytes of the joined text to begin with; it grows */
    PER_ROW = 16,    /* bytes or units in a row */
    ROWS = 4,        /* of one encoding, before the rest is only counted */
    COLUMNS = 79     /* for a text in a row */
};

/* One form of the text: name, bytes with the final 0, and the text itself, cut at a whole character. */
static void PrintForm(const char *name, uint32_t size, const char *text)
{
    char shown[SHOWN];
    ShowValue(shown, MACHINE_TEXT, text, (uint32_t)strlen(text));
    size_t length = strlen(shown);
    if (length > COLUMNS) {
        length = COLUMNS;
        while (length > 0 && ((unsigned char)shown[length] & 0xC0) == 0x80) {
            --length;
        }
    }
    printf("  %-9s %5" PRIu32 "  %.*s%s\n", name, size, (int)length, shown, shown[length] != '\0' ? " ..." : "");
}

/* The same with the form's units as hex numbers: bytes, or words of two bytes. */
static void PrintUnits(const char *name, uint32_t size, const void *data, uint32_t unitSize)
{
    const uint8_t *bytes = data;
    const uint16_t *words = data;
    const uint32_t count = size / unitSize;
    printf("  %-9s %5" PRIu32 " ", name, size);
    for (uint32_t i = 0; i < count && i < PER_ROW * ROWS; ++i) {
        if (i != 0 && i % PER_ROW == 0) {
            printf("\n%18s", "");
        }
        printf(" %0*x", (int)unitSize * 2, unitSize == 1 ? bytes[i] : words[i]);
    }
    if (count > PER_ROW * ROWS) {
        printf("\n%18s and %" PRIu32 " more", "", count - PER_ROW * ROWS);
    }
    putchar('\n');
}

/* Reads a text of at most SHOWN bytes; it is empty where the block lacks it. */
static int ReadText(const SMSDOBinary *block, uint16_t id, char *text)
{
    uint32_t size = SHOWN - 1;
    memset(text, 0, SHOWN);
    const uint32_t status = SMSDOBinaryGetDataByID(block, id, NULL, text, &size);
    return status == SM_STATUS_OK || status == SM_STATUS_NOT_FOUND || ClientFailed("reading a text", status);
}

/* An append tells of no failure but by the length. */
static int Append(SMSSUTF8Str *joined, const char *text)
{
    const size_t length = joined->length + strlen(text);
    (void)SMSSUTF8StrCatUTF8Str(joined, text);
    return joined->length == length || ClientFailed("SMSSUTF8StrCatUTF8Str", SM_STATUS_NO_MEMORY);
}

/* The dash between the two takes more than one byte in UTF-8, so that the encodings differ in more than width. */
static int Join(SMSSUTF8Str *joined, const char *host, const char *system)
{
    static const char dash[] = " \xE2\x80\x93 ";
    return Append(joined, host) && (host[0] == '\0' || system[0] == '\0' || Append(joined, dash)) &&
           Append(joined, system);
}

/* The UCS-2 form, which the caller frees. */
static uint32_t ToUCS2(const char *text, uint16_t **unitsOut, uint32_t *sizeOut)
{
    *unitsOut = NULL;
    uint32_t status = SMUTF8StrToUCS2Str(NULL, sizeOut, text);
    if (status == SM_STATUS_OK) {
        *unitsOut = malloc(*sizeOut);
        status = *unitsOut == NULL ? SM_STATUS_NO_MEMORY : SMUTF8StrToUCS2Str(*unitsOut, sizeOut, text);
    }
    return status;
}

/* Converts back. A character above U+FFFF comes as another one, so that a difference is said and is no failure. */
static int PrintBack(const uint16_t *units, const SMSSUTF8Str *text)
{
    uint32_t size = 0;
    uint32_t status = SMUCS2StrToUTF8Str(NULL, &size, units);
    char *back = status == SM_STATUS_OK ? malloc(size) : NULL;
    if (back != NULL) {
        status = SMUCS2StrToUTF8Str(back, &size, units);
    } else if (status == SM_STATUS_OK) {
        status = SM_STATUS_NO_MEMORY;
    }
    if (status == SM_STATUS_OK) {
        PrintForm("from it", size, strcmp(back, text->text) == 0 ? "the same text" : "not the same text");
    }
    free(back);
    return status == SM_STATUS_OK || ClientFailed("SMUCS2StrToUTF8Str", status);
}

static int PrintEscaped(const uint16_t *units)
{
    uint32_t size = 0;
    uint32_t status = SMUCS2ToEscape(NULL, &size, units);
    if (status != SM_STATUS_BUFFER_TOO_SMALL) { /* the answer to the question for the size */
        return ClientFailed("asking SMUCS2ToEscape for the size", status);
    }
    char *escaped = malloc(size);
    status = escaped == NULL ? SM_STATUS_NO_MEMORY : SMUCS2ToEscape(escaped, &size, units);
    if (status == SM_STATUS_OK) {
        PrintForm("escaped", size, escaped);
    }
    free(escaped);
    return status == SM_STATUS_OK || ClientFailed("SMUCS2ToEscape", status);
}

static int PrintUCS2(const SMSSUTF8Str *text)
{
    uint16_t *units;
    uint32_t size = 0;
    const uint32_t status = ToUCS2(text->text, &units, &size);
    int printed = 0;
    if (status == SM_STATUS_OK) {
        PrintUnits("UCS-2", size, units, sizeof *units);
        printed = PrintBack(units, text) && PrintEscaped(units);
    } else if (status == SM_STATUS_BAD_FORMAT) {
        PrintForm("UCS-2", 0, "none, as what this machine tells is not UTF-8");
        printed = 1;
    } else {
        printed = ClientFailed("SMUTF8StrToUCS2Str", status);
    }
    free(units);
    return printed;
}

static int PrintBase64(const SMSSUTF8Str *text)
{
    const uint32_t length = (text->length + 2) / 3 * 4;
    char *encoded = malloc(length + 1);
    char *decoded = malloc(length / 4 * 3 + 1);
    uint32_t status = SM_STATUS_NO_MEMORY;
    if (encoded != NULL && decoded != NULL) {
        status = SMBase64Encode(encoded, text->text, (int32_t)text->length, NULL);
    }
    if (status == SM_STATUS_OK) {
        PrintForm("Base64", length + 1, encoded);
        status = SMBase64Decode(decoded, encoded, (int32_t)length);
    }
    if (status == SM_STATUS_OK && memcmp(decoded, text->text, text->length + 1) != 0) {
        status = SM_STATUS_FAILED;
    }
    if (status == SM_STATUS_OK) {
        PrintForm("from it", text->length + 1, "the same text");
    }
    free(encoded);
    free(decoded);
    return status == SM_STATUS_OK || ClientFailed("Base64 of a text", status);
}

static void PrintLanguage(void)
{
    const char *language = getenv("LANG");
    char shown[SHOWN] = "unset";
    if (language != NULL && language[0] != '\0') {
        ShowValue(shown, MACHINE_TEXT, language, (uint32_t)strlen(language));
    }
    printf("\n  Sizes count the final 0. Language of this process: ID %" PRIu32 ", by LANG (%.32s).\n",
           SMGetLocalLanguageID(), shown);
}

static int PrintForms(const SMSSUTF8Str *text)
{
    if (text->length == 0) {
        printf("  The block holds neither a host name nor an operating system.\n");
        return 1;
    }
    printf("  %-9s %5s  %s\n", "form", "bytes", "host name and operating system");
    PrintForm("text", text->length + 1, text->text);
    PrintUnits("UTF-8", text->length + 1, text->text, 1);
    if (!PrintUCS2(text) || !PrintBase64(text)) {
        return 0;
    }
    PrintLanguage();
    return 1;
}

int PrintTexts(const SMSDOBinary *block)
{
    char host[SHOWN];
    char system[SHOWN];
    SMSSUTF8Str text;
    PrintHeading(MESSAGE_ENCODINGS);
    if (!ReadText(block, MACHINE_ID_HOST, host) || !ReadText(block, MACHINE_ID_SYSTEM, system)) {
        return 0;
    }
    if (SMSSUTF8StrAlloc(&text, FIRST_ROOM) == NULL) {
        return ClientFailed("SMSSUTF8StrAlloc", SM_STATUS_NO_MEMORY);
    }
    const int printed = Join(&text, SMUTF8trim(host), SMUTF8trim(system)) && PrintForms(&text);
    SMSSUTF8StrFree(&text);
    return printed;
}
