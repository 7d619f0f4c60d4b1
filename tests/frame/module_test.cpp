// Versions and export context by the shared object.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <qzvest/module.h>

#include <filesystem>
#include <string>

namespace {

TEST(Module, ContextIsClearedAndOtherwiseLeftAlone)
{
    uint32_t context = 77;
    SMSetExportContext(&context, 5);
    SMResetExportContext(&context);
    EXPECT_EQ(context, 77u);
    SMGetExportContext(&context);
    EXPECT_EQ(context, 0u);
}

TEST(Module, VersionIsThatOfTheFileName)
{
    Dl_info info;
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&VESTGetMajorVersion), &info), 0);
    const auto number = [](uint32_t part) { return "." + std::to_string(part); };
    EXPECT_EQ(std::filesystem::canonical(info.dli_fname).filename(), "libqzvest.so" + number(VESTGetMajorVersion()) +
                                                                         number(VESTGetMinorVersion()) +
                                                                         number(VESTGetRevision()));
}

} // namespace
