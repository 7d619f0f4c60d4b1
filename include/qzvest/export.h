/* What every header of exported functions begins with. */
#ifndef QZVEST_EXPORT_H
#define QZVEST_EXPORT_H

#ifdef SM_INTERNAL
#error "include the folder's own header, not the exported calls"
#endif

#if defined(__GNUC__)
#define SM_EXPORT __attribute__((visibility("default")))
#else
#define SM_EXPORT
#endif

#endif
