// The files and folders that the sandboxed cases of this folder set up for themselves.
#ifndef TESTS_CONFIG_PLACES_H
#define TESTS_CONFIG_PLACES_H

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "frame/module.h"

constexpr const char *kRegistrationFile = "/etc/vkreg.cfg";
constexpr const char *kSecondRegistrationFile = "/usr/lib/ext/brio/vkreg.cfg";

inline void WriteText(const std::filesystem::path &path, const std::string &text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadText(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return file ? std::string{std::istreambuf_iterator<char>(file), {}} : "(missing)";
}

inline mode_t ModeOf(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// The library starts over, with what it finds by now.
inline void Reattach()
{
    qzvest::SMModuleStop();
    qzvest::SMModuleStart();
}

#endif
