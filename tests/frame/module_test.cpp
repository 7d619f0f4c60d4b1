// Versions, heap calls and export context, and the loader's part, by the shared object.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <qzvest/module.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

TEST(Module, HeapBlocksEndByEitherCall)
{
    char *block = static_cast<char *>(SMAllocMem(16));
    std::memcpy(block, "fifteen letters", 16);
    block = static_cast<char *>(SMReAllocMem(block, 1 << 20));
    EXPECT_STREQ(block, "fifteen letters");
    SMFreeMem(block);
    SMFreeGeneric(SMReAllocMem(nullptr, 8));
}

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
    const std::string name = "libqzvest.so." + std::to_string(VESTGetMajorVersion()) + "." +
                             std::to_string(VESTGetMinorVersion()) + "." + std::to_string(VESTGetRevision());
    char real[PATH_MAX];
    ASSERT_NE(realpath(info.dli_fname, real), nullptr);
    EXPECT_EQ(name, std::strrchr(real, '/') + 1);
}

} // namespace
