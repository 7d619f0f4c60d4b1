/* Which language the process speaks. */
#ifndef QZVEST_LANGUAGE_H
#define QZVEST_LANGUAGE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMGetLocalLanguageID - the ID of the language that the environment variable "LANG" names.
 * Known names, which must match whole and in case:
 *   "es" 1034, "de" 1031, "en_US" 1033, "en_GB" 2057, "fr" 1036, "ja" 1041, "ko" 2066, "pt_BR" 1046,
 *   "zh" 2052, "zh_TW" 1028
 * Returns the ID; 1033 when "LANG" is unset or anything else, a character set behind a known name included.
 * Threads: reads the environment each time, as safe as getenv. */
SM_EXPORT uint32_t SMGetLocalLanguageID(void);

#ifdef __cplusplus
}
#endif

#endif
