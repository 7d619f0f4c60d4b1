/* Ticks and timers, the environment, the system log, and what is left of older systems.
 *
 * Threads: any, at any time, where a call says nothing else. */
#ifndef QZVEST_SYSTEM_H
#define QZVEST_SYSTEM_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMRefTicksGet - milliseconds from an arbitrary start, by a clock that does not jump (CLOCK_MONOTONIC).
 * Returns them; -1 when there is no such clock. */
SM_EXPORT int64_t SMRefTicksGet(void);

/* SMRefTicksDiffCheckTimer - has a time-out passed between two values of SMRefTicksGet?
 *   timeout  milliseconds; -1 is without limit
 *   elapsed  takes the milliseconds from start to now, 0 when now is before start. May be NULL
 *   passed   takes 1 when more than timeout has elapsed; without limit, when anything has. Else 0. May be NULL
 *   expired  takes 1 when more than timeout has elapsed; without limit always 0. May be NULL
 * Returns 1; 0, with nothing stored, when start or now is -1. */
SM_EXPORT uint32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *elapsed,
                                            uint16_t *passed, uint16_t *expired);

/* SMOSTypeGet - the kind of operating system, by its own name (uname): 4 for "VMkernel" in any case, else 3. */
SM_EXPORT uint32_t SMOSTypeGet(void);

/* SMOSShutdown - does nothing.
 *   first, second  not looked at
 * Returns SM_STATUS_OK. */
SM_EXPORT uint32_t SMOSShutdown(uint16_t first, uint16_t second);

/* SMkbhit - is there something to read at descriptor 0, its end included? Nothing is read.
 * Returns 1; 0 when not, and when the descriptor is closed. */
SM_EXPORT uint32_t SMkbhit(void);

/* SMEnvDup - a copy of an environment variable's value.
 *   size  takes the bytes of the copy, terminator included; untouched in a failure. May be NULL
 * Returns the copy, the caller's, for SMFreeMem or free (C); NULL when the variable is not set, name is NULL, or
 * memory runs out.
 * Threads: as safe as getenv (C). */
SM_EXPORT char *SMEnvDup(const char *name, uint32_t *size);

/* SMLongFileNamesEnable, SMLongFileNamesDisable - do nothing. Return SM_STATUS_OK. */
SM_EXPORT uint32_t SMLongFileNamesEnable(void);
SM_EXPORT uint32_t SMLongFileNamesDisable(void);

/* SMAppendToOSSysLog - a line for the system log (syslog), facility "daemon":
 * the source, " EventID:", a blank, the event's number, two blanks, the message; carriage returns become blanks.
 *   severity  1 is an error, 2 a warning, anything else information
 *   source    1 "Record Broker", 2 "Gaugework Service", 3 "Volume Service", 4 "Bridge Link Service",
 *             5 "Host Agent Frame", 6 "Package Ledger"
 *   eventId   any
 *   identity  who the log says it is; NULL: the program
 *   message   a message that makes the line longer than 2047 bytes, or NULL, gives an empty line
 * Returns SM_STATUS_OK, whether or not anybody listens; SM_STATUS_FAILED for any other source, and when memory runs
 * out.
 * Threads: opens and closes the process's one connection to the log, without a lock: the identity and the options of
 * any other user of it are lost, and calls at the same time may take each other's. */
SM_EXPORT uint32_t SMAppendToOSSysLog(uint32_t severity, uint32_t source, uint32_t eventId, const char *identity,
                                      const char *message);

#ifdef __cplusplus
}
#endif

#endif
