// What the files of log_bench have in common.
#ifndef BENCH_LOG_DATA_H
#define BENCH_LOG_DATA_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "bench/ipc_data.h"

namespace bench {

// One log that one of the rows writes.
struct Log {
    std::string path;
    std::string tail = {}; // what a log ends with that stands behind its last record
    std::string lockFile = {};
    off_t size = 0; // before the measurement
    std::vector<std::string> pieces = {};
};

using Logs = std::vector<Log>;

// The system calls of one record, with what is written ready made: all that the library makes, or with kMin those that
// the record cannot do without.
template <bool kMin>
void BareTextLog(const Logs &logs);
template <bool kMin>
void BareXMLLog(const Logs &logs);
template <bool kMin>
void BareBoth(const Logs &logs);
template <bool kPrefix>
void BareRotated(const Logs &logs);
void BareMinRotated(const Logs &logs);

} // namespace bench

#endif
