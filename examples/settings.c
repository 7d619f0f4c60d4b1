/* The service's settings: an INI file of the product. The file's lock covers each call, so that it is always whole; two
 * services that start at the same moment may still count as one run. */
#include "service.h"

#include <qzvest/ini.h>
#include <qzvest/module.h>
#include <qzvest/product.h>

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

static const char section[] = "service";

static int Failed(const char *what, const char *file, uint32_t status)
{
    char text[FACT_TEXT];
    (void)snprintf(text, sizeof text, "%s the settings, %s,", what, file);
    ServiceFailed(text, status);
    return 0;
}

/* A default that a person can find in the file, and change there. */
static uint32_t WriteDefaults(const char *file)
{
    static const char show[] = "host,memory";
    return SMWriteINIFileValue(section, "show", INI_TYPE_UTF8, show, sizeof show, file, 1);
}

/* Counts this run. A file that is not there yet counts none, and gets its default. */
static int CountRun(const char *file, uint32_t *runsOut, int *isNewOut)
{
    static const uint32_t none = 0;
    uint32_t runs = none;
    uint32_t size = sizeof runs;
    uint32_t status = SMReadINIFileValue(section, "runs", INI_TYPE_UINT32, &runs, &size, &none, sizeof none, file, 1);
    *isNewOut = status == SM_STATUS_INI_OPEN_FAILED;
    if (*isNewOut) {
        status = WriteDefaults(file);
        if (status != SM_STATUS_OK) {
            return Failed("making", file, status);
        }
    } else if (status != SM_STATUS_OK && status != SM_STATUS_INI_NO_SECTION && status != SM_STATUS_INI_NO_KEY) {
        return Failed("reading", file, status);
    }
    ++runs;
    *runsOut = runs;
    status = SMWriteINIFileValue(section, "runs", INI_TYPE_UINT32, &runs, sizeof runs, file, 1);
    return status == SM_STATUS_OK || Failed("writing", file, status);
}

/* Low enough that there is mostly something to log. A file that lacks the limit gets it. */
static int ReadMostLoad(const char *file, uint32_t *load)
{
    static const uint32_t otherwise = 10;
    uint32_t size = sizeof *load;
    uint32_t status =
        SMReadINIFileValue(section, "mostload", INI_TYPE_UINT32, load, &size, &otherwise, sizeof otherwise, file, 1);
    if (status == SM_STATUS_INI_NO_KEY) {
        status = SMWriteINIFileValue(section, "mostload", INI_TYPE_UINT32, &otherwise, sizeof otherwise, file, 1);
        return status == SM_STATUS_OK || Failed("writing", file, status);
    }
    return status == SM_STATUS_OK || Failed("reading", file, status);
}

/* The setting becomes the option that was not given. */
static int ReadShow(const char *file, Options *options, Settings *settings)
{
    static const char option[] = "show=";
    uint32_t size = (uint32_t)(sizeof settings->show - strlen(option));
    char *value = strcpy(settings->show, option) + strlen(option);
    const uint32_t status = SMReadINIFileValue(section, "show", INI_TYPE_UTF8, value, &size, NULL, 0, file, 1);
    if (status == SM_STATUS_OK) {
        options->given[OPTION_SHOW] = settings->show;
        return 1;
    }
    return status == SM_STATUS_INI_NO_KEY || Failed("reading", file, status);
}

static void PrintSettings(FILE *messages, const char *path, uint32_t runs, int isNew, const char *asked)
{
    (void)fprintf(messages, "  settings   %s%s\n", path, isNew ? ", made just now" : "");
    (void)fprintf(messages, "             this is run %" PRIu32 "%s%s\n", runs, asked != NULL ? "; they ask for " : "",
                  asked != NULL ? asked : "");
}

int UseSettings(Options *options, FILE *messages, Settings *settings)
{
    const char *file = options->settings;
    const int isAsked = options->given[OPTION_SHOW] == NULL && options->format == FORMAT_TEXT;
    uint32_t runs = 0;
    int isNew = 0;
    char *path = SMMakePathFileNameByPIDAndType(SM_PRODUCT_DEFAULT, SM_PATH_INI, "ini", file);
    if (path == NULL) {
        (void)fflush(stdout);
        (void)fprintf(stderr, "service: no product is registered here that could keep the settings\n");
        return 0;
    }
    const int isRead = CountRun(file, &runs, &isNew) && ReadMostLoad(file, &settings->mostLoad) &&
                       (!isAsked || ReadShow(file, options, settings));
    if (isRead) {
        PrintSettings(messages, path, runs, isNew, isAsked ? options->given[OPTION_SHOW] : NULL);
    }
    SMFreeGeneric(path);
    return isRead;
}
