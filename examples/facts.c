/* Asks the machine: host, system, load and memory. Every source may be missing, as in a bare container. */
#include "service.h"

#include <inttypes.h>
#include <math.h>
#include <stdio.h>
#include <string.h>
#include <sys/utsname.h>
#include <unistd.h>

enum { LINE = 1024 };

void CopyFact(char *fact, const char *text)
{
    size_t length = strlen(text);
    if (length >= FACT_TEXT) {
        length = FACT_TEXT - 1;
        while (length > 0 && ((unsigned char)text[length] & 0xC0) == 0x80) {
            --length;
        }
    }
    memcpy(fact, text, length);
    fact[length] = '\0';
}

static int FirstLine(const char *path, char *line)
{
    FILE *file = fopen(path, "r");
    if (file == NULL) {
        return 0;
    }
    const int got = fgets(line, LINE, file) != NULL;
    (void)fclose(file); /* nothing was written */
    return got;
}

static int GatherHost(MachineFacts *facts)
{
    char name[LINE];
    if (gethostname(name, sizeof name - 1) != 0) {
        return 0;
    }
    name[sizeof name - 1] = '\0';
    CopyFact(facts->host, name);
    return name[0] != '\0';
}

static int GatherProcessors(MachineFacts *facts)
{
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    facts->processors = online > 0 ? (uint32_t)online : 0;
    return online > 0;
}

static int GatherKernel(MachineFacts *facts)
{
    struct utsname names;
    char text[sizeof names];
    if (uname(&names) != 0) {
        return 0;
    }
    (void)snprintf(text, sizeof text, "%s %s %s", names.sysname, names.release, names.machine);
    CopyFact(facts->kernel, text);
    return 1;
}

/* Takes the shell quotes and escapes off a value of os-release, where it lies. */
static void Unquote(char *value)
{
    value[strcspn(value, "\r\n")] = '\0';
    const char quote = value[0] == '"' || value[0] == '\'' ? value[0] : '\0';
    const char *from = quote != '\0' ? value + 1 : value;
    while (*from != '\0' && *from != quote) {
        if (*from == '\\' && from[1] != '\0' && quote != '\'') {
            ++from;
        }
        *value++ = *from++;
    }
    *value = '\0';
}

static int SystemFrom(const char *path, MachineFacts *facts)
{
    static const char key[] = "PRETTY_NAME=";
    char line[LINE];
    FILE *file = fopen(path, "r");
    if (file == NULL) {
        return 0;
    }
    while (facts->system[0] == '\0' && fgets(line, sizeof line, file) != NULL) {
        if (strncmp(line, key, sizeof key - 1) == 0) {
            Unquote(line + sizeof key - 1);
            CopyFact(facts->system, line + sizeof key - 1);
        }
    }
    (void)fclose(file); /* nothing was written */
    return facts->system[0] != '\0';
}

static int GatherSystem(MachineFacts *facts)
{
    return SystemFrom("/etc/os-release", facts) || SystemFrom("/usr/lib/os-release", facts);
}

static int GatherUptime(MachineFacts *facts)
{
    char line[LINE];
    facts->uptime.known = FirstLine("/proc/uptime", line) && sscanf(line, "%" SCNu64, &facts->uptime.seconds) == 1;
    return facts->uptime.known;
}

static int GatherLoad(MachineFacts *facts)
{
    char line[LINE];
    double load[3];
    if (!FirstLine("/proc/loadavg", line) || sscanf(line, "%lf %lf %lf %" SCNu32 "/%" SCNu32, &load[0], &load[1],
                                                    &load[2], &facts->load.runnable, &facts->load.tasks) != 5) {
        return 0;
    }
    for (int i = 0; i < 3; ++i) {
        facts->load.hundredths[i] = (uint32_t)lround(load[i] * 100);
    }
    facts->load.known = 1;
    return 1;
}

static int GatherMemory(MachineFacts *facts)
{
    const struct {
        const char *key;
        uint64_t *place;
    } rows[] = {{"MemTotal", &facts->memory.total},         {"MemFree", &facts->memory.available},
                {"MemAvailable", &facts->memory.available}, /* comes after MemFree where the kernel has it */
                {"Cached", &facts->memory.cached},          {"SwapTotal", &facts->memory.swapTotal},
                {"SwapFree", &facts->memory.swapFree}};
    char line[LINE];
    char key[LINE];
    uint64_t kibibytes;
    FILE *file = fopen("/proc/meminfo", "r");
    if (file == NULL) {
        return 0;
    }
    while (fgets(line, sizeof line, file) != NULL) {
        if (sscanf(line, "%[^:]: %" SCNu64, key, &kibibytes) != 2) {
            continue;
        }
        for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
            if (strcmp(key, rows[i].key) == 0) {
                *rows[i].place = kibibytes * 1024;
            }
        }
    }
    (void)fclose(file); /* nothing was written */
    facts->memory.known = facts->memory.total != 0;
    return facts->memory.known;
}

void GatherFacts(MachineFacts *facts, FILE *messages)
{
    static const struct {
        const char *what;
        const char *source;
        int (*gather)(MachineFacts *);
    } steps[] = {
        {"host name", "gethostname", GatherHost},
        {"processors", "sysconf", GatherProcessors},
        {"operating system", "/etc/os-release", GatherSystem},
        {"kernel", "uname", GatherKernel},
        {"uptime", "/proc/uptime", GatherUptime},
        {"load", "/proc/loadavg", GatherLoad},
        {"memory", "/proc/meminfo", GatherMemory},
        {"file systems", "/proc/self/mounts", GatherFileSystems},
    };
    memset(facts, 0, sizeof *facts);
    for (size_t i = 0; i < sizeof steps / sizeof steps[0]; ++i) {
        if (!steps[i].gather(facts) && messages != NULL) {
            (void)fprintf(messages, "  not told   %s (%s)\n", steps[i].what, steps[i].source);
        }
    }
    if (facts->fileSystemsLeftOut != 0 && messages != NULL) {
        (void)fprintf(messages, "  left out   file systems beyond the first %d: %" PRIu32 "\n", FACT_FILE_SYSTEMS,
                      facts->fileSystemsLeftOut);
    }
    if (facts->fileSystemsSilent != 0 && messages != NULL) {
        (void)fprintf(messages, "  left out   file systems that do not tell their size: %" PRIu32 "\n",
                      facts->fileSystemsSilent);
    }
}
