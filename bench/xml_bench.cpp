// A document of 1,000 nodes built in memory, and the escape of 4 KB, beside libxml2's writer and its escape.

#include <benchmark/benchmark.h>
#include <qzvest/qzvest.h>

#include <cstring>
#include <string>

#if defined(BENCH_LIBXML)
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlwriter.h>
#endif

namespace {

constexpr uint32_t kNodes = 1000;
constexpr uint32_t kFirstSize = 4096; // bytes, for either side

// What a node holds: an index, a flag and a text as attributes, a number or a text as its value.
struct Node {
    uint32_t index;
    int16_t enabled;
    const char *label;
    int64_t reading;
    const char *text;
};

Node NodeAt(uint32_t index)
{
    return {index, static_cast<int16_t>(index % 2), "probe \"A\"", int64_t{index} * 1000003 - 500000,
            "temperature < 75 & fan > 1200 rpm"};
}

uint32_t SizeOf(const char *text)
{
    return static_cast<uint32_t>(std::strlen(text)) + 1;
}

std::string DocumentOurs()
{
    const SMXGValueOptions escaped{0, 1};
    SMXGBuf *doc = SMXGBufAlloc(kFirstSize, 1);
    SMXGBuf *list = SMXGBufAlloc(0, 0);
    SMXGBufCatBeginNode(doc, "report", nullptr);
    for (uint32_t i = 0; i < kNodes; ++i) {
        const Node node = NodeAt(i);
        SMXGBufReAllocContent(list, 128, 0);
        SMXGBufCatAttribute(list, "index", &node.index, sizeof node.index, SMXLT_TYPE_UINT32, nullptr);
        SMXGBufCatAttribute(list, "enabled", &node.enabled, sizeof node.enabled, SMXLT_TYPE_BOOL, nullptr);
        SMXGBufCatAttribute(list, "label", node.label, SizeOf(node.label), SMXLT_TYPE_UTF8, &escaped);
        if (i % 2 != 0)
            SMXGBufCatNode(doc, "reading", list, &node.reading, sizeof node.reading, SMXLT_TYPE_INT64, nullptr);
        else
            SMXGBufCatNode(doc, "text", list, node.text, SizeOf(node.text), SMXLT_TYPE_UTF8, &escaped);
    }
    SMXGBufCatEndNode(doc, "report");
    std::string document(doc->text, doc->length);
    SMXGBufFree(list);
    SMXGBufFree(doc);
    return document;
}

std::string PlainText()
{
    std::string text;
    while (text.size() < 4096)
        text += "Temperature sensor of the second power supply is back in its range. ";
    text.resize(4096);
    return text;
}

std::string SpecialText()
{
    std::string text;
    while (text.size() < 4096)
        text += "<row id=\"5\">R&D's</row>";
    text.resize(4096);
    return text;
}

std::string EscapeOurs(const std::string &text)
{
    auto size = static_cast<uint32_t>(text.size());
    char *result = SMXGEscapeXMLUTF8Str(text.c_str(), &size, 1);
    std::string escaped(result, size);
    SMXGBufFreeContent(result);
    return escaped;
}

#if defined(BENCH_LIBXML)
const xmlChar *X(const char *text)
{
    return reinterpret_cast<const xmlChar *>(text);
}

std::string DocumentLibxml()
{
    xmlBuffer *buffer = xmlBufferCreateSize(kFirstSize);
    xmlTextWriter *writer = xmlNewTextWriterMemory(buffer, 0);
    xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElement(writer, X("report"));
    for (uint32_t i = 0; i < kNodes; ++i) {
        const Node node = NodeAt(i);
        xmlTextWriterStartElement(writer, X(i % 2 != 0 ? "reading" : "text"));
        xmlTextWriterWriteFormatAttribute(writer, X("index"), "%u", node.index);
        xmlTextWriterWriteAttribute(writer, X("enabled"), X(node.enabled == 1 ? "true" : "false"));
        xmlTextWriterWriteAttribute(writer, X("label"), X(node.label));
        if (i % 2 != 0)
            xmlTextWriterWriteFormatString(writer, "%lld", static_cast<long long>(node.reading));
        else
            xmlTextWriterWriteString(writer, X(node.text));
        xmlTextWriterEndElement(writer);
    }
    xmlTextWriterEndDocument(writer);
    xmlFreeTextWriter(writer);
    std::string document(reinterpret_cast<const char *>(xmlBufferContent(buffer)),
                         static_cast<size_t>(xmlBufferLength(buffer)));
    xmlBufferFree(buffer);
    return document;
}

std::string EscapeLibxml(const std::string &text)
{
    xmlChar *result = xmlEncodeSpecialChars(nullptr, X(text.c_str()));
    std::string escaped = reinterpret_cast<const char *>(result);
    xmlFree(result);
    return escaped;
}

// The same elements, attributes and texts, whatever stands between them.
std::string Canonical(const std::string &document)
{
    xmlDoc *doc = xmlReadMemory(document.data(), static_cast<int>(document.size()), "bench.xml", nullptr,
                                XML_PARSE_NOBLANKS | XML_PARSE_NONET);
    xmlChar *text = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(doc, &text, &size, "UTF-8");
    std::string canonical(reinterpret_cast<const char *>(text), static_cast<size_t>(size));
    xmlFree(text);
    xmlFreeDoc(doc);
    return canonical;
}
#endif

template <typename Make>
void DocumentRow(benchmark::State &state, Make make)
{
#if defined(BENCH_LIBXML)
    if (Canonical(make()) != Canonical(DocumentOurs()))
        return state.SkipWithError("another document");
#endif
    size_t size = 0;
    for (auto _ : state) {
        const std::string document = make();
        size = document.size();
        benchmark::DoNotOptimize(document.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kNodes);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
}

// The peer writes a quote and an apostrophe in another way or not at all, so only the plain text is compared.
template <typename Escape>
void EscapeRow(benchmark::State &state, Escape escape, const std::string &text)
{
    if (text == PlainText() && escape(text) != text)
        return state.SkipWithError("another text");
    for (auto _ : state) {
        const std::string escaped = escape(text);
        benchmark::DoNotOptimize(escaped.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

template <typename Make, typename Escape>
void Register(const std::string &who, Make make, Escape escape)
{
    benchmark::RegisterBenchmark(("xml_document/" + who + "/1000").c_str(),
                                 [make](benchmark::State &state) { DocumentRow(state, make); });
    benchmark::RegisterBenchmark(("xml_escape_plain/" + who + "/4096").c_str(),
                                 [escape](benchmark::State &state) { EscapeRow(state, escape, PlainText()); });
    benchmark::RegisterBenchmark(("xml_escape_specials/" + who + "/4096").c_str(),
                                 [escape](benchmark::State &state) { EscapeRow(state, escape, SpecialText()); });
}

bool RegisterAll()
{
    Register("ours", DocumentOurs, EscapeOurs);
#if defined(BENCH_LIBXML)
    Register("libxml2", DocumentLibxml, EscapeLibxml);
#endif
    return true;
}

[[maybe_unused]] const bool kRegistered = RegisterAll();

} // namespace
