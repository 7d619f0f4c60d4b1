// A file descriptor that closes itself, and the lock on a whole file.
#ifndef OS_DESCRIPTOR_H
#define OS_DESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace qzvest {

class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
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

inline Descriptor OpenToRead(const char *path)
{
    return Descriptor(open(path, O_RDONLY | O_CLOEXEC));
}

// type as in flock, command F_SETLK or F_SETLKW of fcntl.
inline bool SetWholeFileLock(int descriptor, short type, int command)
{
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET; // from 0, of length 0
    return fcntl(descriptor, command, &range) == 0;
}

inline void UnlockWholeFile(int descriptor)
{
    while (!SetWholeFileLock(descriptor, F_UNLCK, F_SETLKW) && errno == EINTR) {
    }
}

} // namespace qzvest

#endif
