// A directory of a test's own, and what the tests do with files in it.
#ifndef TESTS_OS_FOLDER_H
#define TESTS_OS_FOLDER_H

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class Folder {
public:
    Folder()
    {
        if (mkdtemp(path_) == nullptr)
            std::abort();
    }
    Folder(const Folder &) = delete;
    ~Folder()
    {
        std::filesystem::remove_all(path_);
    }
    std::string operator/(const std::string &name) const
    {
        return path_ + ("/" + name);
    }
    const char *Path() const
    {
        return path_;
    }
    std::string Make(const std::string &name, const std::string &content, mode_t mode = 0644) const
    {
        const std::string path = *this / name;
        std::ofstream(path, std::ios::binary) << content;
        chmod(path.c_str(), mode);
        return path;
    }

private:
    char path_[32] = "/tmp/qzvest-test-XXXXXX";
};

inline bool Exists(const std::string &path)
{
    return access(path.c_str(), F_OK) == 0;
}

inline std::string Content(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline mode_t Mode(const std::string &path)
{
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

#endif
