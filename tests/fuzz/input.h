// What the fuzz targets share that work on files in memory.
#ifndef TESTS_FUZZ_INPUT_H
#define TESTS_FUZZ_INPUT_H

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

inline void Require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

// The first line of the input, which loses it: up to a zero byte, and no longer than said.
inline std::string TakeLine(std::string &input, size_t longest)
{
    const size_t end = std::min(input.find('\n'), input.size());
    const std::string line = input.substr(0, std::min(end, longest)).c_str();
    input.erase(0, end + 1);
    return line;
}

struct MemoryFile {
    const int descriptor = memfd_create("input", MFD_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);

    explicit MemoryFile(const std::string &content)
    {
        Require(pwrite(descriptor, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));
    }
    ~MemoryFile()
    {
        close(descriptor);
    }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    std::string Content() const
    {
        std::string content(static_cast<size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
        Require(pread(descriptor, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));
        return content;
    }
    int Rewound() const
    {
        Require(lseek(descriptor, 0, SEEK_SET) == 0);
        return descriptor;
    }
};

#endif
