// A file descriptor that closes itself.
#ifndef OS_DESCRIPTOR_H
#define OS_DESCRIPTOR_H

#include <unistd.h>

namespace qzvest {

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor()
    {
        (void)Close();
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    explicit operator bool() const
    {
        return descriptor_ != -1;
    }
    int Get() const
    {
        return descriptor_;
    }

    // Closes it now. False when that fails: what was written may be lost.
    bool Close()
    {
        const int descriptor = descriptor_;
        descriptor_ = -1;
        return descriptor == -1 || close(descriptor) == 0;
    }

private:
    int descriptor_;
};

} // namespace qzvest

#endif
