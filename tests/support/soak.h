// What soak.sh asks of tests that can go on for longer: QZVEST_SOAK times their work, and with other random numbers.
#ifndef TESTS_SUPPORT_SOAK_H
#define TESTS_SUPPORT_SOAK_H

#include <cstdlib>

inline int FromEnvironment(const char *name, int usual)
{
    const char *text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : usual;
}

#endif
