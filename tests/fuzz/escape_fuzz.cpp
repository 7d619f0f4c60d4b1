// The escape beside a plain walk over the bytes. The input is a byte of passes, a byte of estimate and the text.

#include "frame/heap.h"
#include "tests/fuzz/input.h"
#include "text/xmlescape.h"

namespace {

std::string Model(const std::string &text)
{
    const std::string references[] = {"&amp;", "&quot;", "&apos;", "&lt;", "&gt;"};
    const std::string specials = "&\"'<>";
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        bool isKept = specials.find(text[i]) == std::string::npos;
        for (const std::string &reference : references)
            isKept |= text.compare(i, reference.size(), reference) == 0;
        result += isKept ? text.substr(i, 1) : references[specials.find(text[i])];
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const uint32_t passes = data[0];
    const uint32_t estimate = data[1];
    const std::string given(reinterpret_cast<const char *>(data + 2), size - 2);
    const qzvest::HeapPtr<char> text(strdup(given.c_str())); // just its bytes, to its first zero

    uint32_t length = estimate;
    const qzvest::HeapPtr<char> result(qzvest::SMXGEscapeXMLUTF8Str(text.get(), &length, passes));
    const std::string expected = Model(text.get());
    if (passes == 0) {
        Require(!result && length == estimate);
    } else if (estimate == 0 || (passes > 1 && expected.empty())) {
        Require(!result && length == 0);
    } else {
        Require(result && length == expected.size() && expected == result.get());
        Require(Model(expected) == expected);
    }
    return 0;
}
