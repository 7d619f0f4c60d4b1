/* Reads the options. The library finds and reads a parameter that is right; what is wrong we tell ourselves. */
#include "options.h"

#include <qzvest/language.h>
#include <qzvest/parameter.h>
#include <qzvest/print.h>
#include <qzvest/typedvalue.h>

#include <stdio.h>
#include <string.h>

/* An option without a mode goes with those that have none either. */
static const struct {
    const char *name;
    uint32_t users; /* FOR_... */
    int32_t mode;   /* the option that it needs, for that one itself, too */
} rows[OPTION_COUNT] = {
    [OPTION_SHOW] = {"show", FOR_SERVICE | FOR_CLIENT, OPTION_COUNT},
    [OPTION_FORMAT] = {"format", FOR_SERVICE | FOR_CLIENT, OPTION_COUNT},
    [OPTION_LANGUAGE] = {"language", FOR_SERVICE | FOR_CLIENT, OPTION_COUNT},
    [OPTION_CLIENT] = {"client", FOR_SERVICE, OPTION_COUNT},
    [OPTION_SETTINGS] = {"settings", FOR_SERVICE, OPTION_COUNT},
    [OPTION_PUBLISH] = {"publish", FOR_SERVICE, OPTION_PUBLISH},
    [OPTION_EVERY] = {"every", FOR_SERVICE, OPTION_PUBLISH},
    [OPTION_HANG] = {"hang", FOR_SERVICE, OPTION_PUBLISH},
    [OPTION_WATCH] = {"watch", FOR_CLIENT, OPTION_WATCH},
    [OPTION_WAIT] = {"wait", FOR_CLIENT, OPTION_WATCH},
};

/* Row 0 answers for an unknown word, row 1 also for an absent option. */
static const SMNVPEnumEntry groups[] = {
    {NULL, 0},           {"all", SHOW_ALL},       {"host", SHOW_HOST},
    {"load", SHOW_LOAD}, {"memory", SHOW_MEMORY}, {"files", SHOW_FILES},
};
static const SMNVPEnumEntry formats[] = {{NULL, FORMAT_UNKNOWN}, {"text", FORMAT_TEXT}, {"xml", FORMAT_XML}};

enum { GROUP_ROWS = sizeof groups / sizeof groups[0], FORMAT_ROWS = sizeof formats / sizeof formats[0] };

static void PrintUsage(const char *program, uint32_t user)
{
    const int isService = user == FOR_SERVICE;
    (void)fprintf(stderr, "usage: %s [show=GROUPS] [format=FORMAT] [language=LANGUAGE]%s\n", program,
                  isService ? " [client=PATH] [settings=NAME]" : "");
    (void)fprintf(stderr, "       %s %s\n", program,
                  isService ? "publish=TIMES [every=MS] [hang=TIME]" : "watch=TIMES [wait=MS]");
    (void)fprintf(stderr, "  GROUPS    host, load, memory, files: only these values, several as 'memory|load' or\n"
                          "            memory,load; all: these and everything else, as without this option\n"
                          "  FORMAT    text, as without this option, or xml: the object as one XML document on\n"
                          "            standard output, always whole, and messages on standard error\n"
                          "  LANGUAGE  of headings and names, if a product is registered: one that the library\n"
                          "            knows, such as en_US, de, fr; without this option that of LANG\n");
    if (isService) {
        (void)fprintf(stderr,
                      "  PATH      the client's program; without this option the one beside the service\n"
                      "  NAME      of the service's INI file of settings, in the directory ini of the product:\n"
                      "            runs=NUMBER, show=GROUPS for when there is no such option, and\n"
                      "            mostload=HUNDREDTHS; start, end and a load above that go into the product's logs\n"
                      "  publish   no client is started: the object goes into a shared memory that clients find by\n"
                      "            name, so many TIMES, every so many MS, else 1000; in the TIME of hang the service\n"
                      "            does nothing but keep the mutex, until it is killed\n");
    } else {
        (void)fprintf(stderr,
                      "  watch     nothing is received: so many publications are read, or fewer when the service\n"
                      "            ends; after so many MS without one, else 3000, it looks whether that lives\n");
    }
}

/* The name's place in names; -1 for a text that is no parameter or of no known name. */
static int32_t OptionOf(char *text, uint32_t user)
{
    for (int32_t i = 0; i < OPTION_COUNT; ++i) {
        if ((rows[i].users & user) != 0 && SMNVPGetParamIndexByUTF8Name(1, &text, rows[i].name, 0) == 0) {
            return i;
        }
    }
    return -1;
}

/* Whether each text is an option, and none is given twice; the library would take the first and pass over the rest. */
static int SortOptions(const char *program, uint32_t user, int argc, char **argv, Options *options)
{
    for (int i = 0; i < argc; ++i) {
        const int32_t option = OptionOf(argv[i], user);
        if (!SMIsValidParam(argv[i])) {
            (void)fprintf(stderr, "%s: '%s' is not of the form name=value\n", program, argv[i]);
            return 0;
        }
        if (option < 0) {
            (void)fprintf(stderr, "%s: there is no option '%s'\n", program, SMNVPGetUTF8ParamName(argv[i]));
            return 0;
        }
        if (options->given[option] != NULL) {
            (void)fprintf(stderr, "%s: '%s' is given twice\n", program, rows[option].name);
            return 0;
        }
        options->given[option] = argv[i];
    }
    return 1;
}

/* Whether those that need a mode have it, and the others have none. */
static int FitTogether(const char *program, const Options *options)
{
    static const int32_t modes[] = {OPTION_PUBLISH, OPTION_WATCH};
    for (size_t i = 0; i < sizeof modes / sizeof modes[0]; ++i) {
        const int isOn = options->given[modes[i]] != NULL;
        for (int32_t option = 0; option < OPTION_COUNT; ++option) {
            if (options->given[option] != NULL && (rows[option].mode == modes[i]) != isOn) {
                (void)fprintf(stderr, "%s: '%s' does not go %s '%s'\n", program, rows[option].name,
                              isOn ? "with" : "without", rows[modes[i]].name);
                return 0;
            }
        }
    }
    return 1;
}

static int ReadNumbers(const char *program, int argc, char **argv, Options *options)
{
    enum { MOST_TIMES = 1000000, MOST_MILLISECONDS = 60000 };
    const struct {
        int32_t option;
        uint32_t *place;
        uint32_t most;
        uint32_t otherwise;
    } numbers[] = {{OPTION_PUBLISH, &options->publish, MOST_TIMES, 0},
                   {OPTION_EVERY, &options->every, MOST_MILLISECONDS, 1000},
                   {OPTION_HANG, &options->hang, MOST_TIMES, 0},
                   {OPTION_WATCH, &options->watch, MOST_TIMES, 0},
                   {OPTION_WAIT, &options->wait, MOST_MILLISECONDS, 3000}};
    for (size_t i = 0; i < sizeof numbers / sizeof numbers[0]; ++i) {
        const char *name = rows[numbers[i].option].name;
        uint32_t size = sizeof *numbers[i].place;
        *numbers[i].place = numbers[i].otherwise;
        if (options->given[numbers[i].option] == NULL) {
            continue;
        }
        if (SMNVPUTF8ToTypeValue(argc, argv, name, 0, numbers[i].place, &size, SMXLT_TYPE_UINT32) != SM_STATUS_OK ||
            *numbers[i].place == 0 || *numbers[i].place > numbers[i].most) {
            (void)fprintf(stderr, "%s: %s: a number from 1 to %u is wanted\n", program, name, numbers[i].most);
            return 0;
        }
    }
    return 1;
}

/* Whether all words of a list are known; the library would pass over the others. It splits at "|" or else at ",". */
static int KnowsGroups(const char *program, const char *list)
{
    const char *separator = strchr(list, '|') != NULL ? "|" : ",";
    for (const char *word = list;; ++word) {
        const int length = (int)strcspn(word, separator);
        char text[32]; /* a word that is cut here is none of ours */
        char *parameter = text;
        (void)SMsnprintf(text, sizeof text, "show=%.*s", length, word);
        if (SMNVPGetEnums32Value(1, &parameter, "show", 0, groups, GROUP_ROWS, 0) == groups[0].value) {
            (void)fprintf(stderr, "%s: show: there is no group '%.*s'\n", program, length, word);
            return 0;
        }
        word += length;
        if (*word == '\0') {
            return 1;
        }
    }
}

static int ReadLanguage(const char *program, int argc, char **argv, Options *options)
{
    char *name = SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, rows[OPTION_LANGUAGE].name, 0);
    uint32_t size = sizeof options->language;
    if (name == NULL) {
        options->language = SMGetLocalLanguageID();
        return 1;
    }
    if (SMXLTUTF8ToTypeValue(name, &options->language, &size, SMXLT_TYPE_LANGUAGE) == SM_STATUS_OK) {
        return 1;
    }
    (void)fprintf(stderr, "%s: language: the library knows no language '%s'\n", program, name);
    return 0;
}

static int ReadValues(const char *program, int argc, char **argv, Options *options)
{
    const char *list = SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, rows[OPTION_SHOW].name, 0);
    options->client = SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, rows[OPTION_CLIENT].name, 0);
    options->settings = SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, rows[OPTION_SETTINGS].name, 0);
    options->format = SMNVPGetEnums32Value(argc, argv, rows[OPTION_FORMAT].name, 0, formats, FORMAT_ROWS, 0);
    if (options->format == FORMAT_UNKNOWN) {
        (void)fprintf(stderr, "%s: format: there is no format '%s'\n", program,
                      SMNVPGetUTF8ParamValue(options->given[OPTION_FORMAT]));
        return 0;
    }
    if (list != NULL && !KnowsGroups(program, list)) {
        return 0;
    }
    options->show = SMNVPGetEnums32Value(argc, argv, rows[OPTION_SHOW].name, 0, groups, GROUP_ROWS, 1);
    if (options->show == SM_ENUM_UNREADABLE) {
        (void)fprintf(stderr, "%s: show: no memory to read it\n", program);
        return 0;
    }
    if (options->format == FORMAT_XML && options->show != SHOW_ALL) {
        (void)fprintf(stderr, "%s: format=xml writes the whole object, no groups of it can be chosen\n", program);
        return 0;
    }
    return ReadLanguage(program, argc, argv, options) && ReadNumbers(program, argc, argv, options);
}

int ReadOptions(const char *program, uint32_t user, int argc, char **argv, Options *options)
{
    char *none = NULL; /* a vector, where there is not even a program's name */
    const int given = argc > 0 ? argc - 1 : 0;
    char **first = given > 0 ? argv + 1 : &none;
    memset(options, 0, sizeof *options);
    if (SortOptions(program, user, given, first, options) && FitTogether(program, options) &&
        ReadValues(program, given, first, options)) {
        return 1;
    }
    PrintUsage(program, user);
    return 0;
}
