/* All of libqzvest.
 *
 * Each family has a header of its own, which opens with the family's conventions; status.h lists every status, types.h
 * has the records and callback types. What holds in all of them:
 *
 * - Sizes are in bytes and text is UTF-8, unless a comment says otherwise. A size word (sizeInOut, destSize) is read
 *   and written: it brings the room of a buffer and takes the bytes stored or needed.
 * - Argument rows name the first call that has them; a handle, record or list that a call works on has no row where
 *   nothing is to be said but that it is one of its family.
 * - Statuses are those of status.h. After a failure objects and buffers are as they were, unless a comment says
 *   otherwise.
 * - What a call hands out belongs to the caller if its comment names the call that frees it. */
#ifndef QZVEST_QZVEST_H
#define QZVEST_QZVEST_H

#include <qzvest/base64.h>
#include <qzvest/crc32.h>
#include <qzvest/critical.h>
#include <qzvest/delimited.h>
#include <qzvest/event.h>
#include <qzvest/eventlog.h>
#include <qzvest/file.h>
#include <qzvest/hashid.h>
#include <qzvest/ini.h>
#include <qzvest/language.h>
#include <qzvest/library.h>
#include <qzvest/list.h>
#include <qzvest/module.h>
#include <qzvest/mutex.h>
#include <qzvest/netaddress.h>
#include <qzvest/parameter.h>
#include <qzvest/print.h>
#include <qzvest/product.h>
#include <qzvest/property.h>
#include <qzvest/redblacktree.h>
#include <qzvest/rfc1321.h>
#include <qzvest/rotatedlog.h>
#include <qzvest/rwlock.h>
#include <qzvest/sdo.h>
#include <qzvest/semaphore.h>
#include <qzvest/sharedmem.h>
#include <qzvest/sizedstring.h>
#include <qzvest/status.h>
#include <qzvest/stringid.h>
#include <qzvest/system.h>
#include <qzvest/thread.h>
#include <qzvest/transcode.h>
#include <qzvest/typedvalue.h>
#include <qzvest/types.h>
#include <qzvest/ucs2.h>
#include <qzvest/utf8.h>
#include <qzvest/xml.h>
#include <qzvest/xmllog.h>

#endif
