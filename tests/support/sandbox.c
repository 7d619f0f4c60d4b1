/* sandbox program [argument...] - run a program where the fixed places of the host are its own.
 *
 * In private user, mount, IPC and network name spaces the program finds an empty /run, an /etc and a /usr/lib
 * with the host's content that it may change, a /dev with the plain devices and no /dev/log, no System V objects,
 * and a loopback interface alone. It is root there, as far as its own user's rights go outside. All of it goes
 * with the last process inside; the host's files are never written.
 *
 * Exit status: the program's; 77, after the reason, where the kernel or its settings forbid a step; 1 for any
 * other failure; 127 when the program cannot be executed. */
#define _GNU_SOURCE

#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

enum { kForbidden = 77, kNotFound = 127, kPathRoom = 256 };

/* What the kernel says when it has no such name space or file system, or keeps it from this user. */
static int IsForbidden(int error)
{
    return error == EPERM || error == EACCES || error == ENOSYS || error == ENOSPC || error == ENODEV ||
           error == EINVAL || error == EUSERS;
}

static void Refuse(const char *step, const char *object)
{
    const int error = errno;
    fprintf(stderr, "sandbox: %s%s: %s\n", step, object, strerror(error));
    exit(IsForbidden(error) ? kForbidden : EXIT_FAILURE);
}

static void WriteText(const char *path, const char *text)
{
    const int descriptor = open(path, O_WRONLY | O_CLOEXEC);
    if (descriptor < 0 || write(descriptor, text, strlen(text)) < 0)
        Refuse("writing ", path);
    close(descriptor);
}

/* One user and one group alone are mapped: all that the kernel allows an ordinary user. */
static void EnterNamespaces(void)
{
    char users[kPathRoom], groups[kPathRoom];
    snprintf(users, sizeof users, "0 %ld 1", (long)geteuid());
    snprintf(groups, sizeof groups, "0 %ld 1", (long)getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWIPC | CLONE_NEWNET) != 0)
        Refuse("private name spaces", "");
    WriteText("/proc/self/setgroups", "deny");
    WriteText("/proc/self/uid_map", users);
    WriteText("/proc/self/gid_map", groups);
    if (mount(NULL, "/", NULL, MS_REC | MS_PRIVATE, NULL) != 0)
        Refuse("private mounts", "");
}

static void MountEmpty(const char *path, unsigned long flags)
{
    if (mount("tmpfs", path, "tmpfs", MS_NOSUID | flags, "mode=755") != 0)
        Refuse("tmpfs on ", path);
}

static void MakeFolder(const char *path, mode_t mode)
{
    if (mkdir(path, mode) != 0 || chmod(path, mode) != 0) /* whatever the mask is */
        Refuse("folder ", path);
}

static void MountOverlay(const char *path, const char *upper, const char *work)
{
    char options[4 * kPathRoom];
    MakeFolder(upper, 0755);
    MakeFolder(work, 0755);
    snprintf(options, sizeof options, "lowerdir=%s,upperdir=%s,workdir=%s", path, upper, work);
    if (mount("overlay", path, "overlay", 0, options) != 0)
        Refuse("overlay of ", path);
}

/* Shows what the host has at /dev/name at the same place of the new /dev. */
static void BindDevice(const char *newDev, const char *name)
{
    char from[kPathRoom], to[kPathRoom];
    struct stat status;
    snprintf(from, sizeof from, "/dev/%s", name);
    snprintf(to, sizeof to, "%s/%s", newDev, name);
    if (stat(from, &status) != 0)
        return; /* a host without it */
    if (S_ISDIR(status.st_mode)) {
        MakeFolder(to, 0755);
    } else {
        const int descriptor = open(to, O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
        if (descriptor < 0)
            Refuse("place for ", from);
        close(descriptor);
    }
    if (mount(from, to, NULL, MS_BIND, NULL) != 0)
        Refuse("device ", from);
}

static void MakeLink(const char *newDev, const char *name, const char *target)
{
    char path[kPathRoom];
    snprintf(path, sizeof path, "%s/%s", newDev, name);
    if (symlink(target, path) != 0)
        Refuse("link ", path);
}

static void BuildDev(const char *newDev)
{
    static const char *const kDevices[] = {"null", "zero", "full", "random", "urandom", "tty", "pts"};
    char shared[kPathRoom];
    MakeFolder(newDev, 0755);
    MountEmpty(newDev, 0);
    for (size_t i = 0; i < sizeof kDevices / sizeof kDevices[0]; ++i)
        BindDevice(newDev, kDevices[i]);
    MakeLink(newDev, "fd", "/proc/self/fd");
    MakeLink(newDev, "stdin", "/proc/self/fd/0");
    MakeLink(newDev, "stdout", "/proc/self/fd/1");
    MakeLink(newDev, "stderr", "/proc/self/fd/2");
    MakeLink(newDev, "ptmx", "pts/ptmx");
    snprintf(shared, sizeof shared, "%s/shm", newDev);
    MakeFolder(shared, 01777);
}

/* A first tmpfs on /run holds what the overlays write, and the new /dev while it is built. Detached afterwards,
 * it lives on below the overlays alone. */
static void LayMounts(void)
{
    struct stat status;
    MountEmpty("/run", MS_NODEV);
    MountOverlay("/etc", "/run/etc", "/run/etc.work");
    MountOverlay("/usr/lib", "/run/lib", "/run/lib.work"); /* a registration file may stand below it, too */
    BuildDev("/run/dev");
    if (mount("/run/dev", "/dev", NULL, MS_MOVE, NULL) != 0)
        Refuse("moving to ", "/dev");
    if (umount2("/run", MNT_DETACH) != 0)
        Refuse("detaching ", "/run");
    MountEmpty("/run", MS_NODEV);
    if (lstat("/var/run", &status) == 0 && S_ISDIR(status.st_mode) &&
        mount("/run", "/var/run", NULL, MS_BIND, NULL) != 0)
        Refuse("binding ", "/var/run");
}

static void RaiseLoopback(void)
{
    struct ifreq request = {.ifr_name = "lo"};
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || ioctl(descriptor, SIOCGIFFLAGS, &request) != 0)
        Refuse("flags of ", "lo");
    request.ifr_flags = (short)(request.ifr_flags | IFF_UP);
    if (ioctl(descriptor, SIOCSIFFLAGS, &request) != 0)
        Refuse("raising ", "lo");
    close(descriptor);
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: sandbox program [argument...]\n");
        return EXIT_FAILURE;
    }
    EnterNamespaces();
    LayMounts();
    RaiseLoopback();
    execvp(argv[1], argv + 1);
    fprintf(stderr, "sandbox: %s: %s\n", argv[1], strerror(errno));
    return kNotFound;
}
