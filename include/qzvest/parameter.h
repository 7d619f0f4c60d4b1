/* Parameters: the options of a command, given as a vector of texts of the form name=value.
 *
 * A text is a parameter when at least one character stands before its first "=". The name is all before that "=", the
 * value all behind it, further "=" included; a value may be empty. Nothing is copied: results point into the caller's
 * texts and live as long as these.
 *
 * What the calls that search have in common:
 *   argc        texts in argv; below 1 nothing is found
 *   argv        no element of it is NULL
 *   name        the name; given with its "=", it is found as well
 *   ignoreCase  1: compare the names through tolower, thus in the locale; any other value: byte by byte
 * The first parameter of the name is taken; texts that are no parameter are passed over.
 *
 * Threads: no shared state; the texts must not change during a call. SMNVPUTF8ToTypeValue may change one itself. */
#ifndef QZVEST_PARAMETER_H
#define QZVEST_PARAMETER_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMIsValidParam - 1 if text is a parameter, else 0. */
SM_EXPORT uint32_t SMIsValidParam(const char *text);

/* SMNVPGetUTF8ParamName - end the text behind its name, by writing NUL over the first "=". The text is then no
 * parameter any more: who needs the value asks for it first.
 * Returns text; NULL, with nothing changed, if it is no parameter. */
SM_EXPORT char *SMNVPGetUTF8ParamName(char *text);

/* SMNVPGetUTF8ParamValue - where the value begins; NULL if text is no parameter. */
SM_EXPORT char *SMNVPGetUTF8ParamValue(char *text);

/* SMNVPGetParamIndexByUTF8Name - the index in argv of the parameter of that name.
 * Returns -1 if there is none, and for a NULL argv or name. */
SM_EXPORT int32_t SMNVPGetParamIndexByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase);

/* SMNVPGetUTF8ParamValueByUTF8Name - the value of the parameter of that name.
 * Returns NULL if there is none, and for a NULL argv or name. */
SM_EXPORT char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase);

/* SMNVPUTF8ToTypeValue - the value of the parameter of that name, as a typed value.
 *   value, sizeInOut, typeAndFormat  as SMXLTUTF8ToTypeValue takes them, but value must not be NULL: there is no
 *                                    asking for the size here
 * A list of bytes loses its commas in argv itself, whatever the status: a second call sees the first byte alone. Give
 * room enough at once, bytes for half the characters of the value.
 * Status: SM_STATUS_INVALID_PARAMETER for a NULL argv or value; SM_STATUS_NOT_FOUND without such a parameter;
 *         else what SMXLTUTF8ToTypeValue makes of the value, an empty one included. */
SM_EXPORT uint32_t SMNVPUTF8ToTypeValue(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase,
                                        void *value, uint32_t *sizeInOut, uint32_t typeAndFormat);

/* SMNVPGetEnums32Value - the number that a table gives for the value of the parameter of that name.
 *   table       rows of words and numbers. Row 0 has no word, only the number for an unknown one; row 1 is the first
 *               with a word, and its number is also the default of an absent parameter
 *   tableCount  rows, at least 2
 *   maskMode    1: the value is a list of words, and the numbers of all are or'ed together; else it is one word
 * Words are compared with rows 1 and on, ignoring case; the first row that matches counts.
 * A list is split at "|", or where that changes nothing at ",". Tabs, line feeds, carriage returns and blanks around a
 * word are dropped, which is a change too: a list with any at its ends is not split at ",". A word of a list that
 * matches no row is skipped: row 0 plays no part, and a list without known words gives 0.
 * Returns the number; SM_ENUM_UNREADABLE for a NULL argv, name or table, for fewer than 2 rows, and when memory runs
 * out in splitting. */
SM_EXPORT uint32_t SMNVPGetEnums32Value(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase,
                                        const SMNVPEnumEntry *table, int32_t tableCount, uint16_t maskMode);

#ifdef __cplusplus
}
#endif

#endif
