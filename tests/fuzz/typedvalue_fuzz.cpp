// Text to a typed value for every type and format, and back. Destinations are exactly as large as they are said to be.

#include <qzvest/status.h>

#include <vector>

#include "tests/fuzz/input.h"
#include "values/typedvalue.h"

namespace {

uint32_t FromText(std::vector<char> text, void *value, uint32_t *size, uint32_t word) // a copy: it may be altered
{
    return qzvest::SMXLTUTF8ToTypeValue(text.data(), value, size, word);
}

// False where the text does not tell the value: a double is rounded and may be cut, an unknown language has the
// default's name, bytes behind a terminator and beyond 63 are not written, surrogates are not kept, and 64 bits are
// written in decimal always but not always read so.
bool ReadsBack(uint32_t word, uint32_t valueSize)
{
    const uint32_t type = word & 0xFF;
    const bool isLost = type == 9 || type == 10 || type == 13 || type == 14;
    return !isLost && (type != 8 || word == 8) && (type != 16 || valueSize <= 63);
}

void ToText(const std::vector<char> &value, uint32_t word)
{
    const bool isAddress = (word & 0xFF) == 15;
    const auto valueSize = static_cast<uint32_t>(value.size());
    uint32_t size = 0;
    uint32_t status = qzvest::SMXLTTypeValueToUTF8(value.data(), valueSize, nullptr, &size, word);
    if (status != SM_STATUS_BUFFER_TOO_SMALL && !isAddress)
        return;
    size = isAddress ? 16 : size;
    std::vector<char> text(size);
    if (!isAddress && (word & 0xFF) != 14) { // whose transcoder leaves the word
        uint32_t little = size - 1;
        Require(qzvest::SMXLTTypeValueToUTF8(value.data(), valueSize, text.data(), &little, word) ==
                SM_STATUS_BUFFER_TOO_SMALL);
        Require(little == size && text == std::vector<char>(size));
    }
    status = qzvest::SMXLTTypeValueToUTF8(value.data(), valueSize, text.data(), &size, word);
    if (status == SM_STATUS_FAILED)
        return; // a time
    Require(status == SM_STATUS_OK);
    if ((word & 0xFF) == 13 && size == text.size() + 1)
        return;
    Require(size <= text.size() && std::strlen(text.data()) + 1 == size);
    if (!ReadsBack(word, valueSize))
        return;
    std::vector<char> again(valueSize);
    uint32_t againSize = valueSize;
    text.resize(size);
    if (FromText(text, again.data(), &againSize, word) == SM_STATUS_OK)
        Require(againSize == valueSize && again == value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string given(reinterpret_cast<const char *>(data), size);
    const std::vector<char> text(given.c_str(), given.c_str() + std::strlen(given.c_str()) + 1);
    for (uint32_t type = 0; type <= 17; ++type) {
        for (uint32_t format = 0; format <= 0x0500; format += 0x0100) {
            const uint32_t word = type | format;
            uint32_t needed = 0;
            const uint32_t sizing = FromText(text, nullptr, &needed, word);
            if (sizing != SM_STATUS_BUFFER_TOO_SMALL && !(type == 14 && sizing == SM_STATUS_OK))
                continue;
            std::vector<char> value(needed);
            char none; // an empty vector has no address
            uint32_t valueSize = needed - 1;
            if (needed != 0) {
                Require(FromText(text, value.data(), &valueSize, word) == SM_STATUS_BUFFER_TOO_SMALL);
                Require(valueSize == (type == 14 ? needed - 1 : needed)); // which the transcoder leaves as it is
            }
            valueSize = needed;
            const uint32_t status = FromText(text, needed != 0 ? value.data() : &none, &valueSize, word);
            Require(status != SM_STATUS_BUFFER_TOO_SMALL && valueSize == needed);
            if (status == SM_STATUS_OK && needed != 0)
                ToText(value, word);
        }
    }
    // The bytes as a value, for what no text gives: times, unknown languages, doubles of all kinds.
    for (uint32_t word : {9u, 10u, 11u, 12u, 0x010Cu, 0x040Cu, 16u, 13u}) {
        if (size >= 8)
            ToText({data, data + size}, word);
    }
    return 0;
}
