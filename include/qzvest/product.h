/* Products: where each product of the suite is installed, and paths made from that.
 *
 * The places come from the registration file, lines of "product.pathword=path", and, for install directories,
 * from the environment. They stand in a table that is built when the library is loaded and anew by any look-up
 * that finds nothing. The registration file is /etc/vkreg.cfg, else /usr/lib/ext/brio/vkreg.cfg; which one is
 * chosen when the library is loaded, once, and where there is none then, later ones count for nothing.
 *
 * The products, with their numbers, and the path types, with their words in a key:
 *   "hmrq" SM_PRODUCT_ANY (0xFFFFFFFF), "tlvw" 33, "VKRecordBroker" 34, "zorb" 44, "mq7t" 88, "vestlib" 45,
 *   "Gaugework" SM_PRODUCT_DEFAULT (35)
 *   SM_PATH_INSTALL "installpath", SM_PATH_VARDATA "vardatapath", SM_PATH_LOG "logpath",
 *   SM_PATH_CONFIGTOOL "configtool", SM_PATH_INI "inipath", SM_PATH_BIN "binpath"
 *
 * - The install path of a product is the value of the environment variable "<product>installpath" in lower
 *   case, else of the same in upper case, else of its key. An empty variable counts as unset, and so does one of
 *   256 bytes or more.
 * - Any other path is the value of its key, or else the product's install path.
 * - SM_PRODUCT_ANY always has its paths: without a key of its own it takes hmrq.installpath, else the parent of
 *   VKRecordBroker.installpath, else the parent of Gaugework.installpath, else "/etc".
 * - One trailing "/" of a value in the file is left out, one in the environment stays. A value of 256 bytes or
 *   more counts as missing.
 *
 * In the file a line that starts with ";" or "#", blanks before it aside, and a line without "=" mean nothing. The
 * key goes from the first non-blank to the first "=", blanks before the "=" included; the first line with a key
 * counts. Blanks around the value are left out; a value may be empty.
 *
 * Threads: all calls may be made at the same time; none may be while the environment is changed. */
#ifndef QZVEST_PRODUCT_H
#define QZVEST_PRODUCT_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMGetPathByProductIDandType - a directory of a product, as far as it exists now.
 *   productId  number of the product
 *   pathType   one of enum SMPathType; 32 means the same as SM_PATH_INSTALL
 *   dest       gets the path; NULL to learn the size. It becomes the empty text first of all, whatever its
 *              size: it holds one byte at least
 *   destSize   bytes of dest in; out the bytes of the path with its terminator, or what a status says
 * Returns SM_STATUS_OK; SM_STATUS_BUFFER_TOO_SMALL, destSize the need;
 * SM_STATUS_INVALID_PARAMETER for a NULL destSize and, destSize 0, for an unknown type;
 * SM_STATUS_NOT_FOUND for an unknown product, destSize as it was, and for a path that is not recorded, destSize 0,
 * both after the table has been built anew; the latter also when there is no memory for that;
 * SM_STATUS_BAD_FORMAT when the path is recorded but does not exist, destSize 0.
 * A path that was recorded only since the table was built gives SM_STATUS_BUFFER_TOO_SMALL and its need, however
 * large dest is; the next call gives the path. */
SM_EXPORT uint32_t SMGetPathByProductIDandType(uint32_t productId, uint32_t pathType, char *dest, uint32_t *destSize);

/* SMGetInstallPath, SMGetInstallPathByProductID - the same for SM_PATH_INSTALL, of SM_PRODUCT_DEFAULT or any product,
 * with the same statuses. */
SM_EXPORT uint32_t SMGetInstallPath(char *dest, uint32_t *destSize);
SM_EXPORT uint32_t SMGetInstallPathByProductID(uint32_t productId, char *dest, uint32_t *destSize);

/* SMExpandVkInstallPathString - a text with the first "@vkinstallpath@" in it, in any case, replaced by the
 * install path of SM_PRODUCT_ANY.
 *   text      at most 254 bytes
 *   dest      gets the text
 *   destSize  bytes of dest in; out the bytes of the text with its terminator, or what a status says
 * Returns SM_STATUS_OK; SM_STATUS_BUFFER_TOO_SMALL, destSize the need, dest as it was;
 * SM_STATUS_INVALID_PARAMETER, destSize 0, for a NULL text or destSize, and for a NULL dest when destSize would do;
 * SM_STATUS_FAILED, destSize 0, for a text that is too long; destSize 0 and what SMGetPathByProductIDandType gives
 * when there is no path. */
SM_EXPORT uint32_t SMExpandVkInstallPathString(const char *text, char *dest, uint32_t *destSize);

/* SMProductSIDToID - the number of a product by its short name, in any case; 0 for NULL and for an unknown name. */
SM_EXPORT uint32_t SMProductSIDToID(const char *shortId);

/* SMProductIDToSID - the short name of a product, the caller's, for SMFreeGeneric. NULL for an unknown number and
 * when memory runs out. */
SM_EXPORT char *SMProductIDToSID(uint32_t productId);

/* SMMakePathFileNameByPID, SMMakePathFileNameByPIDAndType - "path/fileName" or "path/subDirectory/fileName". The
 * file need not exist.
 *   productId     number of the product
 *   pathType      one of enum SMPathType; SM_PATH_INSTALL in the first call
 *   subDirectory  NULL or empty for none
 *   fileName      may be empty: the result ends in "/"
 * Returns the text, the caller's, for SMFreeGeneric; NULL for a NULL fileName, when SMGetPathByProductIDandType has
 * no path, and when memory runs out. */
SM_EXPORT char *SMMakePathFileNameByPID(uint32_t productId, const char *subDirectory, const char *fileName);
SM_EXPORT char *SMMakePathFileNameByPIDAndType(uint32_t productId, uint32_t pathType, const char *subDirectory,
                                               const char *fileName);

/* SMGetLocalizedPathFileName - the file that suits a locale best. The first that exists of
 *   rootPath/directory/language/country/[subDirectory/]fileName   for a locale "language_country"
 *   rootPath/directory/language/[subDirectory/]fileName           or the whole locale, where it has no "_"
 *   rootPath/directory/[subDirectory/]fileName
 * A path of 256 bytes or more is passed over.
 *   rootPath      NULL: "."
 *   directory     required
 *   locale        at most 8 bytes; NULL: the language that "LANG" names, as in language.h
 *   subDirectory  NULL: none; an empty one brings its "/" all the same
 *   fileName      required
 * Returns the path, the caller's, for SMFreeGeneric; NULL when no file is found, for a missing argument or a locale
 * that is too long, and when memory runs out. */
SM_EXPORT char *SMGetLocalizedPathFileName(const char *rootPath, const char *directory, const char *locale,
                                           const char *subDirectory, const char *fileName);

#ifdef __cplusplus
}
#endif

#endif
