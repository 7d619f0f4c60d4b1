// Blocks that end where memory does, so that one byte read or written behind them ends the test in any build.
#ifndef TESTS_DIGEST_GUARDED_H
#define TESTS_DIGEST_GUARDED_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

// As the block's end lies on a page, its beginning takes every alignment as sizes vary.
class Guarded {
    const size_t page_ = static_cast<size_t>(sysconf(_SC_PAGESIZE)), size_, mapped_ = (size_ / page_ + 2) * page_;
    char *const base_ =
        static_cast<char *>(mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));

public:
    char *const bytes = base_ + mapped_ - page_ - size_;

    explicit Guarded(size_t size) : size_(size)
    {
        if (base_ == MAP_FAILED || mprotect(bytes + size, page_, PROT_NONE) != 0)
            std::abort();
    }
    explicit Guarded(const std::string &content) : Guarded(content.size())
    {
        memcpy(bytes, content.data(), content.size());
    }
    Guarded(const Guarded &) = delete;
    ~Guarded()
    {
        munmap(base_, mapped_);
    }
    std::string Content() const
    {
        return {bytes, size_};
    }
};

inline std::string RandomBytes(std::mt19937 &random, size_t size)
{
    std::string bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

#endif
