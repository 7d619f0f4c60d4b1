// UCS-2 text as tests write and compare it.
#ifndef TESTS_TEXT_UNITS_H
#define TESTS_TEXT_UNITS_H

#include <cstdint>
#include <string>
#include <vector>

// The units of a literal, terminator included.
inline std::vector<uint16_t> Units(const std::u16string &text)
{
    std::vector<uint16_t> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

// The text before the terminator.
inline std::u16string Text(const uint16_t *units)
{
    std::u16string text;
    for (; *units != 0; ++units)
        text.push_back(static_cast<char16_t>(*units));
    return text;
}

#endif
