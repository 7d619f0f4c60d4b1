/* The service's events, in both log files of the product. They hold numbers and words of our own alone: the XML log
 * takes a text as it is, and a name from outside may have markup in it. */
#include "service.h"

#include <qzvest/eventlog.h>

#include <inttypes.h>
#include <stdio.h>
#include <unistd.h>

enum { EVENT_START = 1, EVENT_LOAD = 2, EVENT_END = 3 };

/* A log that cannot be written is told, and keeps the service from nothing. */
static int Append(uint16_t type, uint32_t event, const char *text, const void *data, uint32_t size)
{
    const uint32_t status = SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, type, SM_LOG_GAUGEWORK_SERVICE, event,
                                          "demo service", text, data, size);
    if (status != SM_STATUS_OK) {
        ServiceFailed("SMAppendToLog", status);
    }
    return status == SM_STATUS_OK;
}

static int AppendOfProcess(uint16_t type, uint32_t event, const char *what)
{
    char text[FACT_TEXT];
    (void)snprintf(text, sizeof text, "process %ld %s", (long)getpid(), what);
    return Append(type, event, text, NULL, 0);
}

void LogStart(void)
{
    (void)AppendOfProcess(SM_LOG_TYPE_INFORMATION, EVENT_START, "starts");
}

void LogEnd(int served)
{
    (void)AppendOfProcess(served ? SM_LOG_TYPE_INFORMATION : SM_LOG_TYPE_ERROR, EVENT_END,
                          served ? "ends" : "ends with a failure");
}

void LogSamples(const MachineFacts *facts, uint32_t mostLoad, FILE *messages)
{
    char text[FACT_TEXT];
    const uint32_t load = facts->load.hundredths[0];
    if (!facts->load.known || load <= mostLoad) {
        return;
    }
    (void)snprintf(text, sizeof text,
                   "load %" PRIu32 ".%02" PRIu32 " over one minute, above the limit of %" PRIu32 ".%02" PRIu32,
                   load / 100, load % 100, mostLoad / 100, mostLoad % 100);
    if (Append(SM_LOG_TYPE_WARNING, EVENT_LOAD, text, &load, sizeof load)) {
        (void)fprintf(messages, "  logged     %s\n", text);
    }
}
