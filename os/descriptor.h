// A file descriptor that closes itself, and the lock on a whole file.
#ifndef OS_DESCRIPTOR_H
#define OS_DESCRIPTOR_H

#include <fcntl.h>
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

// What a wait for a lock that others hold sleeps between two tries.
constexpr useconds_t kLockPollMicroseconds = 1000;

// type as in flock, command F_SETLK or F_SETLKW of fcntl.
inline bool SetWholeFileLock(int descriptor, short type, int command)
{
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET; // from 0, of length 0
    return fcntl(descriptor, command, &range) == 0;
}

} // namespace qzvest

#endif
