// The registration file: a plain key=value file that records where the products of the suite are.
#ifndef CONFIG_REGISTRATION_H
#define CONFIG_REGISTRATION_H

#include <qzvest/status.h>

#include "config/linereader.h"
#include "frame/heap.h"
#include "os/descriptor.h"

namespace qzvest {

// Attach: chooses the file, once for the life of the attachment. Always 1.
int RegistrationAttach();
void RegistrationDetach();

// A registration file held open, for reads of several keys.
class RegistrationFile {
public:
    // NULL stands for the one chosen. A file that cannot be opened has no keys.
    explicit RegistrationFile(const char *path = nullptr);

    // SM_STATUS_OK and a copy of the key's value, SM_STATUS_NOT_FOUND, SM_STATUS_NO_MEMORY.
    uint32_t Read(const char *key, HeapPtr<char> &value);

private:
    Descriptor file_;
    LineReader lines_;
    bool ready_;
};

// A heap copy of the key's value, or else of defaultText; NULL where that is NULL, and when memory runs out.
char *SMRegistrationKeyRead(const char *key, const char *defaultText);

} // namespace qzvest

#endif
