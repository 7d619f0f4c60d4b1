// A private folder that goes with the test.
#ifndef TESTS_DIGEST_SCRATCH_H
#define TESTS_DIGEST_SCRATCH_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

struct ScratchFolder {
    std::string path = (std::filesystem::temp_directory_path() / "digestXXXXXX").string();

    ScratchFolder()
    {
        if (mkdtemp(path.data()) == nullptr)
            std::abort();
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;
    ~ScratchFolder()
    {
        std::filesystem::remove_all(path);
    }

    void Write(const std::string &name, const std::string &content) const
    {
        std::ofstream(path + "/" + name, std::ios::binary) << content;
    }
};

#endif
