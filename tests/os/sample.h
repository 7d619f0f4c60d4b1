// The library of sample.c: where it is, what it has counted, and what is inside.
#ifndef TESTS_OS_SAMPLE_H
#define TESTS_OS_SAMPLE_H

#include <string>

inline const std::string kFolder = SAMPLE_FOLDER;
inline const std::string kSample = kFolder + "/" SAMPLE_NAME;

extern "C" {
[[gnu::used]] inline int sampleLoads, sampleUnloads;
}

inline bool IsLoaded()
{
    return sampleLoads != sampleUnloads;
}

inline int Answer(void *function)
{
    return function != nullptr ? reinterpret_cast<int (*)()>(function)() : -1;
}

#endif
