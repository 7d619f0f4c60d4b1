#include <gtest/gtest.h>
#include <qzvest/parameter.h>

#include <string>
#include <vector>

namespace {

struct Vector {
    Vector(std::initializer_list<const char *> list) : texts(list.begin(), list.end())
    {
        for (std::string &text : texts)
            pointers.push_back(text.data());
    }

    std::vector<std::string> texts;
    std::vector<char *> pointers;
    const int32_t count = static_cast<int32_t>(texts.size());
};

TEST(Parameter, NameAndValue)
{
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"a=b=c", "a", "b=c"},      {"a=", "a", ""},        {"==", nullptr, nullptr}, {"=b", nullptr, nullptr},
        {"name", nullptr, nullptr}, {"", nullptr, nullptr}, {" =b", " ", "b"},
    };
    for (const auto &[givenText, givenName, givenValue] : cases) {
        std::string text = givenText;
        const char *value = SMNVPGetUTF8ParamValue(text.data());
        EXPECT_EQ(SMIsValidParam(text.c_str()), givenName != nullptr ? 1u : 0u) << givenText;
        EXPECT_STREQ(value, givenValue);
        EXPECT_STREQ(SMNVPGetUTF8ParamName(text.data()), givenName);
        EXPECT_STREQ(value, givenValue); // still there
        EXPECT_TRUE(givenName != nullptr || text == givenText);
    }
}

TEST(Parameter, SearchByName)
{
    const Vector vector = {"", "=x", "alone", "x=1", "x=2", "Long Name=a=b", "empty=", "xy=3", "\xC4=4"};
    const std::tuple<const char *, int16_t, int32_t> cases[] = {
        {"x", 0, 3},           {"X", 0, -1},    {"X", 1, 3},      {"X", 2, -1},     {"xy", 0, 7},
        {"", 0, -1},           {"=", 0, -1},    {"alone", 0, -1}, {"x=2", 0, 3},    {"LONG NAME=", 1, 5},
        {"Long Name=a", 0, 5}, {"Long", 0, -1}, {"=x", 0, -1},    {"empty=", 0, 6}, {"\xC4", 1, 8},
    };
    for (const auto &[name, ignoreCase, index] : cases) {
        EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(vector.count, vector.pointers.data(), name, ignoreCase), index) << name;
        const char *value = SMNVPGetUTF8ParamValueByUTF8Name(vector.count, vector.pointers.data(), name, ignoreCase);
        EXPECT_EQ(value, index < 0 ? nullptr : SMNVPGetUTF8ParamValue(vector.pointers[index])) << name;
    }
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(3, vector.pointers.data(), "x", 0), -1);
}

TEST(Parameter, TypedValue)
{
    const Vector vector = {"wide=65536", "empty="};
    const auto read = [&](const char *name, void *value, uint32_t type) {
        uint32_t size = 8;
        return SMNVPUTF8ToTypeValue(vector.count, vector.pointers.data(), name, 1, value, &size, type);
    };
    char text[8] = "#";
    EXPECT_EQ(read("WIDE", text, SMXLT_TYPE_UINT16), SM_STATUS_VALUE_TOO_LARGE);
    EXPECT_EQ(read("absent", text, SMXLT_TYPE_UINT16), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(read("wide", nullptr, SMXLT_TYPE_UINT32), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(read("empty", text, SMXLT_TYPE_UTF8), SM_STATUS_OK); // there, if empty
    EXPECT_STREQ(text, "");
}

const SMNVPEnumEntry kTable[] = {{nullptr, 99}, {"none", 1}, {"read", 2}, {"write", 4}, {"READ", 8}, {"a,b", 16}};
const int32_t kRows = 6;

TEST(ParameterEnum, WordsAndMasks)
{
    const Vector none = {"e=none"};
    for (const auto &[rows, value] : {std::pair{1, 0x80000000u}, {2, 1u}})
        EXPECT_EQ(SMNVPGetEnums32Value(1, none.pointers.data(), "e", 0, kTable, rows, 0), value);
    // Where there is a "|", only that splits; a trimmed blank counts as a split.
    const std::tuple<const char *, uint32_t, uint32_t> cases[] = {
        {"e=none", 1, 1},       {"e=READ", 2, 2},         {"e=writes", 99, 0},          {"e=", 99, 0},
        {"e= read", 99, 2},     {"f=read", 1, 1},         {"e= Read | WRITE ", 99, 6},  {"e=read,write|none", 99, 1},
        {"e=a,b|none", 99, 17}, {"e=read,write ", 99, 0}, {"e=|read||unknown|", 99, 2}, {"e=read,", 99, 2},
        {"e=,", 99, 0},
    };
    for (const auto &[parameter, word, mask] : cases) {
        const Vector vector = {parameter};
        for (const uint16_t mode : {uint16_t{0}, uint16_t{1}, uint16_t{2}})
            EXPECT_EQ(SMNVPGetEnums32Value(1, vector.pointers.data(), "e", 0, kTable, kRows, mode),
                      mode == 1 ? mask : word)
                << parameter;
    }
}

} // namespace
