// Transcoding beside ICU, iconv and GLib. Sizes and throughput count the bytes of the UTF-8 side in both directions.
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <qzvest/transcode.h>

#include <string>
#include <vector>

#ifdef BENCH_ICU
#include <unicode/ustring.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif

namespace {

struct Kind {
    const char *name;
    std::vector<std::string> words;
};

const Kind kKinds[] = {
    {"ascii", {"server ", "temperature ", "probe ", "of ", "the ", "power ", "supply ", "is ", "critical, ", "fan "}},
    {"latin",
     {"Größe ", "der ", "Prüfung ", "für ", "température ", "d\u00E9j\u00E0 ", "le ", "élevée, ", "überall ", "señal ",
      "de ", "alimentação ", "à ", "naïve ", "server ", "grün ", "capacité "}},
    {"cjk", {"服务器", "的", "温度", "传感器", "电源", "を", "確認", "してください", "네트워크", "상태", "。", "風扇"}},
};

// Words in an order that no branch predictor learns, cut to whole characters and filled up with blanks.
std::string TextOf(const Kind &kind, size_t bytes)
{
    std::string text;
    for (uint32_t seed = 1; text.size() < bytes;) {
        seed = seed * 1664525 + 1013904223;
        text += kind.words[(seed >> 16) % kind.words.size()];
    }
    size_t whole = bytes;
    while ((text[whole] & 0xC0) == 0x80)
        --whole;
    return text.substr(0, whole) + std::string(bytes - whole, ' ');
}

std::vector<uint16_t> UnitsOf(const std::string &text)
{
    std::vector<uint16_t> units(text.size() + 1);
    auto size = static_cast<uint32_t>(units.size() * 2);
    (void)SMUTF8StrToUCS2Str(units.data(), &size, text.c_str());
    units.resize(size / 2);
    return units;
}

size_t ThroughIconv(iconv_t converter, const void *from, size_t fromSize, void *to, size_t toSize)
{
    char *in = static_cast<char *>(const_cast<void *>(from));
    char *out = static_cast<char *>(to);
    return iconv(converter, &in, &fromSize, &out, &toSize);
}

// Each row: the text in both encodings, terminated, and room for either result.
struct Row {
    std::string utf8;
    std::vector<uint16_t> ucs2 = UnitsOf(utf8);
    std::vector<uint16_t> unitRoom = std::vector<uint16_t>(utf8.size() + 1);
    std::vector<char> byteRoom = std::vector<char>(utf8.size() + 1);
};

template <typename Work>
void Register(const std::string &operation, const char *who, const Kind &kind, size_t bytes, Work work)
{
    const std::string name = operation + "_" + kind.name + "/" + who + "/" + std::to_string(bytes);
    benchmark::RegisterBenchmark(name.c_str(), [&kind, bytes, work](benchmark::State &state) {
        Row row{TextOf(kind, bytes)};
        for (auto _ : state) {
            if (!work(row))
                state.SkipWithError("conversion failed");
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    });
}

void RegisterToUCS2(const Kind &kind, size_t bytes)
{
    Register("utf8_to_ucs2", "ours", kind, bytes, [](Row &row) {
        auto size = static_cast<uint32_t>(row.unitRoom.size() * 2);
        return SMUTF8StrToUCS2Str(row.unitRoom.data(), &size, row.utf8.c_str()) == SM_STATUS_OK;
    });
#ifdef BENCH_ICU
    Register("utf8_to_ucs2", "icu", kind, bytes, [](Row &row) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length;
        u_strFromUTF8(reinterpret_cast<UChar *>(row.unitRoom.data()), static_cast<int32_t>(row.unitRoom.size()),
                      &length, row.utf8.c_str(), -1, &error);
        return error == U_ZERO_ERROR;
    });
#endif
    static const iconv_t converter = iconv_open("UTF-16LE", "UTF-8");
    Register("utf8_to_ucs2", "iconv", kind, bytes, [](Row &row) {
        return ThroughIconv(converter, row.utf8.data(), row.utf8.size() + 1, row.unitRoom.data(),
                            row.unitRoom.size() * 2) == 0;
    });
#ifdef BENCH_GLIB
    Register("utf8_to_ucs2", "glib", kind, bytes, [](Row &row) {
        gunichar2 *units = g_utf8_to_utf16(row.utf8.c_str(), -1, nullptr, nullptr, nullptr);
        g_free(units);
        return units != nullptr;
    });
#endif
}

void RegisterToUTF8(const Kind &kind, size_t bytes)
{
    Register("ucs2_to_utf8", "ours", kind, bytes, [](Row &row) {
        auto size = static_cast<uint32_t>(row.byteRoom.size());
        return SMUCS2StrToUTF8Str(row.byteRoom.data(), &size, row.ucs2.data()) == SM_STATUS_OK;
    });
#ifdef BENCH_ICU
    Register("ucs2_to_utf8", "icu", kind, bytes, [](Row &row) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length;
        u_strToUTF8(row.byteRoom.data(), static_cast<int32_t>(row.byteRoom.size()), &length,
                    reinterpret_cast<const UChar *>(row.ucs2.data()), -1, &error);
        return error == U_ZERO_ERROR;
    });
#endif
    static const iconv_t converter = iconv_open("UTF-8", "UTF-16LE");
    Register("ucs2_to_utf8", "iconv", kind, bytes, [](Row &row) {
        return ThroughIconv(converter, row.ucs2.data(), row.ucs2.size() * 2, row.byteRoom.data(),
                            row.byteRoom.size()) == 0;
    });
#ifdef BENCH_GLIB
    Register("ucs2_to_utf8", "glib", kind, bytes, [](Row &row) {
        gchar *text = g_utf16_to_utf8(row.ucs2.data(), -1, nullptr, nullptr, nullptr);
        g_free(text);
        return text != nullptr;
    });
#endif
}

} // namespace

int main(int argc, char **argv)
{
    for (const Kind &kind : kKinds) {
        for (const size_t bytes : {64, 4096, 1 << 20}) {
            RegisterToUCS2(kind, bytes);
            RegisterToUTF8(kind, bytes);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
