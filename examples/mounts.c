/* Asks for the file systems that hold somebody's data: each once, by the mount point that came first. */
#include "service.h"

#include <mntent.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

/* The root, whatever it is: in a container an overlay, in a sandbox anything. Beside it, what lies on a
 * device, and the kinds that name theirs in another way. Not the kernel's own (proc, cgroup), not memory
 * (tmpfs), not packed images (squashfs), and not what a server far away holds (a dead one would hang us). */
static int IsReal(const struct mntent *mount)
{
    static const char *const deviceless[] = {"9p", "bcachefs", "virtiofs", "zfs"};
    if (strcmp(mount->mnt_dir, "/") == 0) {
        return 1;
    }
    for (size_t i = 0; i < sizeof deviceless / sizeof deviceless[0]; ++i) {
        if (strcmp(mount->mnt_type, deviceless[i]) == 0) {
            return 1;
        }
    }
    return mount->mnt_fsname[0] == '/' && mount->mnt_fsname[1] != '/' && strcmp(mount->mnt_type, "squashfs") != 0 &&
           strncmp(mount->mnt_type, "fuse.", 5) != 0;
}

/* A later mount on the same point hides the earlier one, and statvfs would tell its numbers for both. */
static void ForgetHidden(MachineFacts *facts, const char *point)
{
    FileSystemFacts *const table = facts->fileSystems;
    for (uint32_t i = 0; i < facts->fileSystemCount; ++i) {
        if (strcmp(table[i].point, point) == 0) {
            --facts->fileSystemCount;
            memmove(&table[i], &table[i + 1], (facts->fileSystemCount - i) * sizeof table[0]);
            return;
        }
    }
}

/* One file system mounted twice, or two parts of one device, whose sizes are the same. */
static int IsKnown(const MachineFacts *facts, const FileSystemFacts *candidate)
{
    for (uint32_t i = 0; i < facts->fileSystemCount; ++i) {
        const FileSystemFacts *known = &facts->fileSystems[i];
        if (known->device == candidate->device ||
            (candidate->source[0] == '/' && strcmp(known->source, candidate->source) == 0)) {
            return 1;
        }
    }
    return 0;
}

/* 1 when the mount is measured, 0 when it is no file system of its own with room in it, -1 when it is silent. */
static int Measure(const struct mntent *mount, FileSystemFacts *fileSystem)
{
    struct stat status;
    struct statvfs room;
    if (stat(mount->mnt_dir, &status) != 0) {
        return -1;
    }
    if (!S_ISDIR(status.st_mode)) { /* containers mount single files */
        return 0;
    }
    if (statvfs(mount->mnt_dir, &room) != 0) {
        return -1;
    }
    if (room.f_blocks == 0) {
        return 0;
    }
    const uint64_t unit = room.f_frsize != 0 ? room.f_frsize : room.f_bsize;
    fileSystem->device = status.st_dev;
    fileSystem->size = room.f_blocks * unit;
    fileSystem->used = room.f_bfree <= room.f_blocks ? (room.f_blocks - room.f_bfree) * unit : 0;
    fileSystem->available = room.f_bavail * unit;
    fileSystem->readOnly = (room.f_flag & ST_RDONLY) != 0;
    CopyFact(fileSystem->point, mount->mnt_dir);
    CopyFact(fileSystem->type, mount->mnt_type);
    CopyFact(fileSystem->source, mount->mnt_fsname);
    return 1;
}

static void Take(MachineFacts *facts, const struct mntent *mount)
{
    FileSystemFacts candidate;
    ForgetHidden(facts, mount->mnt_dir);
    if (!IsReal(mount)) {
        return;
    }
    const int measured = Measure(mount, &candidate);
    if (measured < 0) {
        ++facts->fileSystemsSilent;
    } else if (measured > 0 && !IsKnown(facts, &candidate)) {
        if (facts->fileSystemCount < FACT_FILE_SYSTEMS) {
            facts->fileSystems[facts->fileSystemCount++] = candidate;
        } else {
            ++facts->fileSystemsLeftOut;
        }
    }
}

int GatherFileSystems(MachineFacts *facts)
{
    FILE *mounts = setmntent("/proc/self/mounts", "r");
    if (mounts == NULL) {
        return 0;
    }
    for (const struct mntent *mount = getmntent(mounts); mount != NULL; mount = getmntent(mounts)) {
        Take(facts, mount);
    }
    (void)endmntent(mounts); /* nothing was written */
    return facts->fileSystemCount > 0;
}
