/* The demo's service: gathers what this machine tells of itself, puts it into an object, flattens that, and
 * sends the block to a client, a program of its own that it starts with one end of a socket pair as its
 * standard input.
 *
 * It takes options (options.c) and hands those that are the client's, too, on to it. Where a product is registered, it
 * can keep settings there (settings.c) and log what happens (events.c), or publish its object for clients that it knows
 * nothing of (publish.c). */
#include "service.h"
#include "machine.h"
#include "options.h"

#include <qzvest/module.h>
#include <qzvest/sdo.h>

#include <errno.h>
#include <inttypes.h>
#include <limits.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

void ServiceFailed(const char *what, uint32_t status)
{
    (void)fflush(stdout);
    (void)fprintf(stderr, "service: %s failed with status %" PRIu32 "\n", what, status);
}

static int SystemFailed(const char *what, int error)
{
    (void)fflush(stdout);
    (void)fprintf(stderr, "service: %s: %s\n", what, strerror(error));
    return 0;
}

void *Flatten(const SMSDOConfig *object, uint32_t *sizeOut)
{
    *sizeOut = SMSDOConfigGetBinarySize(object);
    void *block = malloc(*sizeOut);
    if (block == NULL) {
        ServiceFailed("getting memory for the block", SM_STATUS_NO_MEMORY);
        return NULL;
    }
    const uint32_t status = SMSDOConfigToBinary(object, block, sizeOut);
    if (status != SM_STATUS_OK) {
        ServiceFailed("SMSDOConfigToBinary", status);
        free(block);
        return NULL;
    }
    return block;
}

/* The client's path: as given, or in the folder of this program, so that the folder from which it was
 * started plays no part. */
static int FindClient(const char *given, char *path, size_t room)
{
    if (given != NULL) {
        return snprintf(path, room, "%s", given) < (int)room || SystemFailed(given, ENAMETOOLONG);
    }
    const ssize_t length = readlink("/proc/self/exe", path, room - sizeof "client");
    if (length < 0) {
        return SystemFailed("cannot tell where this program lies (/proc/self/exe)", errno);
    }
    path[length] = '\0';
    char *slash = strrchr(path, '/');
    strcpy(slash != NULL ? slash + 1 : path, "client");
    return 1;
}

/* Starts the client with socket as its standard input and its part of the options. No other end stays open in it. */
static int StartClient(const char *path, const Options *options, int socket, pid_t *clientOut)
{
    char name[] = "client";
    char *arguments[OPTION_SHARED + 2] = {name};
    for (int i = 0, count = 1; i < OPTION_SHARED; ++i) {
        if (options->given[i] != NULL) {
            arguments[count++] = options->given[i];
        }
    }
    posix_spawn_file_actions_t actions;
    int error = posix_spawn_file_actions_init(&actions);
    if (error != 0) {
        return SystemFailed("cannot prepare the client's start", error);
    }
    error = posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
    if (error == 0) {
        error = posix_spawn(clientOut, path, &actions, NULL, arguments, environ);
    }
    (void)posix_spawn_file_actions_destroy(&actions); /* cannot fail with a record that init has made */
    return error == 0 || SystemFailed(path, error);
}

static int Send(int socket, const void *block, size_t size)
{
    for (const char *next = block; size > 0;) {
        const ssize_t sent = send(socket, next, size, MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            return SystemFailed("sending the block", errno);
        }
        if (sent > 0) {
            next += sent;
            size -= (size_t)sent;
        }
    }
    return 1;
}

static int AwaitClient(pid_t client)
{
    int result;
    while (waitpid(client, &result, 0) < 0) {
        if (errno != EINTR) {
            return SystemFailed("waiting for the client", errno);
        }
    }
    if (!WIFEXITED(result) || WEXITSTATUS(result) != 0) {
        (void)fprintf(stderr, "service: the client ended with %s %d\n", WIFEXITED(result) ? "exit status" : "signal",
                      WIFEXITED(result) ? WEXITSTATUS(result) : WTERMSIG(result));
        return 0;
    }
    return 1;
}

static int Deliver(const char *clientPath, const Options *options, const void *block, uint32_t size)
{
    int ends[2];
    pid_t client;
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return SystemFailed("socketpair", errno);
    }
    (void)fflush(stdout); /* what was printed so far stands above what the client prints; main looks for errors */
    const int started = StartClient(clientPath, options, ends[1], &client);
    (void)close(ends[1]);
    const int sent = started && Send(ends[0], block, size);
    (void)close(ends[0]); /* the client reads the end of its input, also when it did not get all */
    return started && AwaitClient(client) && sent;
}

/* Whether the block holds all that the object does, the nested objects included. */
static int Verify(const SMSDOConfig *object, const void *block)
{
    SMSDOConfig *rebuilt = SMSDOBinaryToConfig(block);
    if (rebuilt == NULL) {
        ServiceFailed("SMSDOBinaryToConfig", SM_STATUS_FAILED);
        return 0;
    }
    const int equal = SMSDOConfigCompareByValue(object, rebuilt) == 1;
    SMSDOConfigFree(rebuilt);
    if (!equal) {
        ServiceFailed("comparing the object with what its block holds", SM_STATUS_FAILED);
    }
    return equal;
}

static void PrintObject(FILE *messages, const MachineFacts *facts, const SMSDOConfig *object, uint32_t size)
{
    (void)fprintf(messages, "  gathered   what this machine tells of itself, %" PRIu32 " file system%s included\n",
                  facts->fileSystemCount, facts->fileSystemCount == 1 ? "" : "s");
    (void)fprintf(messages, "  built      one object of %" PRIu32 " entries, %" PRIu32 " more objects nested in it\n",
                  SMSDOConfigGetCount(object),
                  (uint32_t)(facts->load.known + facts->memory.known) + facts->fileSystemCount);
    (void)fprintf(messages, "  flattened  %" PRIu32 " bytes in one block, without a pointer in it\n", size);
    (void)fprintf(messages, "  verified   rebuilt from the block it equals the original\n");
    (void)fprintf(messages, "  sends      that block over a socket to the client, a program of its own\n");
}

/* Without settings there is no limit for what a sample may be, and nothing is logged. */
static int ServeMachine(const char *clientPath, const Options *options, const Settings *settings, FILE *messages)
{
    MachineFacts facts;
    uint32_t size;
    GatherFacts(&facts, messages);
    if (settings != NULL) {
        LogSamples(&facts, settings->mostLoad, messages);
    }
    SMSDOConfig *object = DescribeMachine(&facts);
    if (object == NULL) {
        return 0;
    }
    void *block = Flatten(object, &size);
    int served = 0;
    if (block != NULL && Verify(object, block)) {
        PrintObject(messages, &facts, object, size);
        served = Deliver(clientPath, options, block, size);
    }
    free(block);
    SMSDOConfigFree(object);
    return served;
}

static int Serve(const char *clientPath, Options *options)
{
    FILE *messages = options->format == FORMAT_XML ? stderr : stdout; /* the document stands alone */
    Settings settings;
    (void)fprintf(messages, "SERVICE, process %ld, with libqzvest %" PRIu32 ".%" PRIu32 ".%" PRIu32 "\n",
                  (long)getpid(), VESTGetMajorVersion(), VESTGetMinorVersion(), VESTGetRevision());
    if (options->settings == NULL) {
        return ServeMachine(clientPath, options, NULL, messages);
    }
    if (!UseSettings(options, messages, &settings)) {
        return 0;
    }
    LogStart();
    const int served = ServeMachine(clientPath, options, &settings, messages);
    LogEnd(served);
    return served;
}

int main(int argc, char **argv)
{
    char clientPath[PATH_MAX];
    Options options;
    if (!ReadOptions("service", FOR_SERVICE, argc, argv, &options)) {
        return EXIT_USAGE;
    }
    const int served = options.publish != 0
                           ? Publish(&options)
                           : FindClient(options.client, clientPath, sizeof clientPath) && Serve(clientPath, &options);
    if (!served) {
        return EXIT_FAILURE;
    }
    if (fflush(stdout) != 0 || ferror(stdout)) {
        (void)SystemFailed("writing to standard output", errno);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
