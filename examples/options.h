/* The options of both programs, given as name=value. */
#ifndef EXAMPLES_OPTIONS_H
#define EXAMPLES_OPTIONS_H

#include <qzvest/types.h>

/* What a program ends with when its options are wrong, and a client when the service that it watched has died. */
enum { EXIT_USAGE = 2, EXIT_DIED = 3 };

/* The groups of single values, and what the client shows besides. */
enum { SHOW_HOST = 1, SHOW_LOAD = 2, SHOW_MEMORY = 4, SHOW_FILES = 8, SHOW_REST = 16, SHOW_ALL = 31 };

enum { FORMAT_UNKNOWN, FORMAT_TEXT, FORMAT_XML };

enum { FOR_SERVICE = 1, FOR_CLIENT = 2 };

/* Those before OPTION_SHARED are both programs'. */
enum {
    OPTION_SHOW,
    OPTION_FORMAT,
    OPTION_LANGUAGE,
    OPTION_SHARED,
    OPTION_CLIENT = OPTION_SHARED,
    OPTION_SETTINGS,
    OPTION_PUBLISH,
    OPTION_EVERY,
    OPTION_HANG,
    OPTION_WATCH,
    OPTION_WAIT,
    OPTION_COUNT
};

typedef struct Options {
    uint32_t show;     /* SHOW_... */
    uint32_t format;   /* FORMAT_... */
    uint32_t language; /* ID of the library's, that of LANG when not given */
    char *client;      /* path of the client's program, NULL when not given */
    char *settings;    /* bare name of the file of settings, NULL when not given */
    uint32_t publish;  /* how often, 0 when not given; so is watch */
    uint32_t every;    /* milliseconds between publications */
    uint32_t hang;     /* the round in which the service hangs, 0 for none */
    uint32_t watch;
    uint32_t wait;             /* milliseconds without a publication before the client looks after the service */
    char *given[OPTION_COUNT]; /* each as it was given, NULL when not */
} Options;

/* Reads what follows argv[0]. user: FOR_... of the program. 1 when all is understood; 0 after a
 * message and the usage on standard error. The results point into argv. */
int ReadOptions(const char *program, uint32_t user, int argc, char **argv, Options *options);

#endif
