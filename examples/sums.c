/* CRC-32 and RFC 1321 digest of a real file: the executable of this program. */
#include "client.h"
#include "messages.h"

#include <qzvest/crc32.h>
#include <qzvest/rfc1321.h>
#include <qzvest/status.h>

#include <errno.h>
#include <fcntl.h>
#include <inttypes.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { PIECE = 4096 }; /* bytes asked for in one read */

typedef struct Sums {
    uint32_t size; /* bytes of the file */
    uint32_t pieces;
    uint32_t crc;
    SMRFC1321Ctx message;
} Sums;

/* Gives each piece to the digest as it is read, and keeps it for the CRC-32, which takes all bytes in one call. */
static int SumPieces(int file, uint8_t *bytes, Sums *sums)
{
    for (uint32_t done = 0; done < sums->size;) {
        const uint32_t left = sums->size - done;
        const ssize_t got = read(file, bytes + done, left < PIECE ? left : PIECE);
        if (got == 0) {
            return SystemFailed("reading the file", "it ended too soon");
        }
        if (got < 0 && errno != EINTR) {
            return SystemFailed("reading the file", strerror(errno));
        }
        if (got > 0) {
            SMRFC1321AddMsg(&sums->message, bytes + done, (uint32_t)got);
            done += (uint32_t)got;
            ++sums->pieces;
        }
    }
    sums->crc = SMCRC32Compute_vn(bytes, sums->size);
    return 1;
}

static int SumFile(int file, Sums *sums)
{
    struct stat status;
    if (fstat(file, &status) != 0) {
        return SystemFailed("asking for the size of the file", strerror(errno));
    }
    if (status.st_size <= 0 || status.st_size > INT32_MAX) {
        return SystemFailed("summing the file", "it is empty or too large");
    }
    sums->size = (uint32_t)status.st_size;
    uint8_t *bytes = malloc(sums->size);
    if (bytes == NULL) {
        return ClientFailed("getting memory for the file", SM_STATUS_NO_MEMORY);
    }
    SMRFC1321Load(&sums->message);
    const int done = SumPieces(file, bytes, sums);
    SMRFC1321ComputeMsgDigest(&sums->message);
    free(bytes);
    return done;
}

static void PrintSumsOf(const char *path, const Sums *sums)
{
    printf("  %-9s %s\n", "file", path);
    printf("  %-9s %" PRIu32 " bytes, %" PRIu32 " pieces given to the digest as they were read\n", "size", sums->size,
           sums->pieces);
    printf("  %-9s %08" PRIx32 "\n", "CRC-32", sums->crc);
    printf("  %-9s ", "RFC 1321");
    for (size_t i = 0; i < sizeof sums->message.digest; ++i) {
        printf("%02x", sums->message.digest[i]);
    }
    putchar('\n');
}

int PrintSums(void)
{
    Sums sums = {0};
    char path[PATH_MAX];
    PrintHeading(MESSAGE_SUMS);
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length < 0) {
        return SystemFailed("cannot tell where this program lies (/proc/self/exe)", strerror(errno));
    }
    path[length] = '\0';
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return SystemFailed(path, strerror(errno));
    }
    const int done = SumFile(file, &sums);
    (void)close(file); /* nothing was written */
    if (done) {
        PrintSumsOf(path, &sums);
    }
    SMRFC1321UnLoad(&sums.message);
    return done;
}
