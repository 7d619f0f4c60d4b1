/* The options of both programs, given as name=value. */
#ifndef EXAMPLES_OPTIONS_H
#define EXAMPLES_OPTIONS_H

#include <qzvest/types.h>

enum { EXIT_USAGE = 2 }; /* what a program ends with when its options are wrong */

/* The groups of single values, and what the client shows besides. */
enum { SHOW_HOST = 1, SHOW_LOAD = 2, SHOW_MEMORY = 4, SHOW_FILES = 8, SHOW_REST = 16, SHOW_ALL = 31 };

enum { FORMAT_UNKNOWN, FORMAT_TEXT, FORMAT_XML };

/* The client has those before OPTION_CLIENT, the service all. */
enum { OPTION_SHOW, OPTION_FORMAT, OPTION_LANGUAGE, OPTION_CLIENT, OPTION_SETTINGS, OPTION_COUNT };

typedef struct Options {
    uint32_t show;             /* SHOW_... */
    uint32_t format;           /* FORMAT_... */
    uint32_t language;         /* ID of the library's, that of LANG when not given */
    char *client;              /* path of the client's program, NULL when not given */
    char *settings;            /* bare name of the file of settings, NULL when not given */
    char *given[OPTION_COUNT]; /* each as it was given, NULL when not */
} Options;

/* Reads what follows argv[0]. count: how many of OPTION_... the program has. 1 when all is understood; 0 after a
 * message and the usage on standard error. The results point into argv. */
int ReadOptions(const char *program, int32_t count, int argc, char **argv, Options *options);

#endif
