// The registration file: a plain key=value file that records where the products of the suite are.
#ifndef CONFIG_REGISTRATION_H
#define CONFIG_REGISTRATION_H

#include <qzvest/status.h>

#include "frame/heap.h"

namespace qzvest {

// Attach: chooses the file, once for the life of the attachment. Always 1.
int RegistrationAttach();
void RegistrationDetach();

// A heap copy of the key's value, or else of defaultText; NULL where that is NULL, and when memory runs out.
char *SMRegistrationKeyRead(const char *key, const char *defaultText);

// The same for whoever must tell a key that is missing from a lack of memory: SM_STATUS_OK and the value,
// SM_STATUS_NOT_FOUND, SM_STATUS_NO_MEMORY.
uint32_t RegistrationKeyRead(const char *key, HeapPtr<char> &value);

// The same on a file of the caller's choice.
uint32_t RegistrationFileKeyRead(const char *path, const char *key, HeapPtr<char> &value);

} // namespace qzvest

#endif
