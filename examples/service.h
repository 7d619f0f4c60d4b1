/* The service's own parts: facts.c and mounts.c ask the machine, describe.c puts the answers into an object,
 * settings.c keeps the settings, events.c logs, publish.c publishes the object in shared memory. */
#ifndef EXAMPLES_SERVICE_H
#define EXAMPLES_SERVICE_H

#include "options.h"

#include <qzvest/types.h>

#include <stdio.h>

enum { FACT_TEXT = 256, FACT_FILE_SYSTEMS = 16 };

typedef struct FileSystemFacts {
    uint64_t device; /* what stat calls it; tells two mounts of one file system */
    uint64_t size;   /* bytes, as the three below */
    uint64_t used;
    uint64_t available;
    char point[FACT_TEXT];
    char type[FACT_TEXT];
    char source[FACT_TEXT];
    int16_t readOnly; /* 1 or 0 */
} FileSystemFacts;

/* What is known of this machine. A fact that the machine does not tell is an empty text, or a group with
 * known 0, and simply not in the object. */
typedef struct MachineFacts {
    char host[FACT_TEXT];
    char system[FACT_TEXT];
    char kernel[FACT_TEXT];
    uint32_t processors;
    struct {
        int known;
        uint64_t seconds;
    } uptime;
    struct {
        int known;
        uint32_t hundredths[3]; /* over 1, 5 and 15 minutes */
        uint32_t runnable;
        uint32_t tasks;
    } load;
    struct {
        int known;
        uint64_t total; /* bytes, all five */
        uint64_t available;
        uint64_t cached;
        uint64_t swapTotal;
        uint64_t swapFree;
    } memory;
    FileSystemFacts fileSystems[FACT_FILE_SYSTEMS];
    uint32_t fileSystemCount;
    uint32_t fileSystemsLeftOut; /* beyond the room above */
    uint32_t fileSystemsSilent;  /* mounted, but would not tell their size */
} MachineFacts;

/* Asks for everything, and writes to messages a line for each thing that this machine does not tell; messages may
 * be NULL. */
void GatherFacts(MachineFacts *facts, FILE *messages);

/* The file systems alone. 1 when at least one is known. */
int GatherFileSystems(MachineFacts *facts);

/* Copies text, cut at a whole UTF-8 character where it is too long. */
void CopyFact(char *fact, const char *text);

/* The facts as an object, which is the caller's. NULL after a message when it could not be built. */
SMSDOConfig *DescribeMachine(const MachineFacts *facts);

/* The flat form of object, which the caller frees. NULL after a message. */
void *Flatten(const SMSDOConfig *object, uint32_t *sizeOut);

/* Publishes the machine's object as often as the options say. 1 when all went well. */
int Publish(const Options *options);

typedef struct Settings {
    char show[FACT_TEXT]; /* as an option */
    uint32_t mostLoad;    /* hundredths, over 1 minute; more is logged */
} Settings;

/* Counts this run in the file of settings that the options name, and prints it to messages. What the settings say
 * to show is put into the options where they leave it open, and points into settings. 1 when all went well. */
int UseSettings(Options *options, FILE *messages, Settings *settings);

/* Log an event of the service in the log files of the registered product; the samples are those out of range, and
 * messages tells of them, too. */
void LogStart(void);
void LogSamples(const MachineFacts *facts, uint32_t mostLoad, FILE *messages);
void LogEnd(int served);

/* Prints what failed, with the library's status. */
void ServiceFailed(const char *what, uint32_t status);

#endif
