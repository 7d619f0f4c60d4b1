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
public:
    explicit Guarded(size_t size) : size_(size)
    {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        mapped_ = (size + page - 1) / page * page + page;
        void *base = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED || mprotect(static_cast<char *>(base) + mapped_ - page, page, PROT_NONE) != 0)
            std::abort();
        base_ = static_cast<char *>(base);
        bytes_ = base_ + mapped_ - page - size;
    }
    explicit Guarded(const std::string &content) : Guarded(content.size())
    {
        memcpy(bytes_, content.data(), content.size());
    }
    Guarded(const Guarded &) = delete;
    ~Guarded()
    {
        munmap(base_, mapped_);
    }

    char *Bytes() const
    {
        return bytes_;
    }
    std::string Content() const
    {
        return {bytes_, size_};
    }

private:
    size_t size_, mapped_;
    char *base_, *bytes_;
};

inline std::string RandomBytes(std::mt19937 &random, size_t size)
{
    std::string bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

#endif
