// A file in a directory of its own, for the tests of INI and property files, and the IPC directory that its lock
// needs. For the sandbox.
#ifndef TESTS_CONFIG_INI_FIXTURE_H
#define TESTS_CONFIG_INI_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <qzvest/qzvest.h>

#include <cstring>
#include <vector>

#include "os/folder.h"

class IniFile : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(locks);
        std::filesystem::create_directory(folder);
    }
    void TearDown() override
    {
        std::filesystem::remove_all(folder);
    }

    static void Put(const std::string &where, const std::string &content)
    {
        std::ofstream(where, std::ios::binary | std::ios::trunc) << content;
    }
    void Put(const std::string &content) const
    {
        Put(path, content);
    }

    // The file's bytes, or a text that no test writes.
    static std::string Get(const std::string &where)
    {
        return Exists(where) ? Content(where) : "(missing)";
    }
    std::string Get() const
    {
        return Get(path);
    }

    // How many files stand beside the one under test: temporary files and backups.
    int64_t Others() const
    {
        return std::distance(std::filesystem::directory_iterator(folder), {}) - std::filesystem::exists(path);
    }

    uint32_t Set(const char *section, const char *key, const char *value) const
    {
        const auto size = static_cast<uint32_t>(value != nullptr ? std::strlen(value) + 1 : 0);
        return SMWriteINIPathFileValue(section, key, INI_TYPE_UTF8, value, size, path.c_str(), 1);
    }

    // The value, or the status in brackets.
    std::string Text(const char *section, const char *key) const
    {
        std::vector<char> dest(9000);
        auto size = static_cast<uint32_t>(dest.size());
        const uint32_t status =
            SMReadINIPathFileValue(section, key, INI_TYPE_UTF8, dest.data(), &size, nullptr, 0, path.c_str(), 1);
        return status == SM_STATUS_OK ? std::string(dest.data(), size - 1) : "<" + std::to_string(status) + ">";
    }

    static void SetIniPath()
    {
        setenv("gaugeworkinstallpath", folder.c_str(), 1);
        uint32_t none = 0; // a place that is new since the attach is refused once
        (void)SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_INI, nullptr, &none);
    }

    // The only lock there is, held by an open file description in place of another process.
    int Hold(int type) const
    {
        static const int holder = open(std::filesystem::directory_iterator(locks)->path().c_str(), O_RDWR | O_CLOEXEC);
        struct flock whole = {};
        whole.l_type = static_cast<short>(type);
        return fcntl(holder, F_OFD_SETLK, &whole);
    }

    static inline const std::string locks = "/var/run/qz/.ipc";
    static inline const std::string folder = "/run/store";
    std::string path = folder + "/file";
};

#endif
