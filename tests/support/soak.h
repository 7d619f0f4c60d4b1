// What soak.sh asks of a test that can go on for longer: so many times its work, and other random numbers.
#ifndef TESTS_SUPPORT_SOAK_H
#define TESTS_SUPPORT_SOAK_H

#include <algorithm>
#include <cstdlib>

inline int FromEnvironment(const char *name, int usual)
{
    const char *text = std::getenv(name);
    return text != nullptr ? std::max(std::atoi(text), 1) : usual;
}

inline int SoakFactor()
{
    static const int factor = FromEnvironment("QZVEST_SOAK", 1);
    return factor;
}

inline unsigned SoakSeed(int usual)
{
    return static_cast<unsigned>(FromEnvironment("QZVEST_SEED", usual));
}

#endif
