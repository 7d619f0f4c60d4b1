// A small vocabulary for tests of self-describing objects: blocks as text, objects that free themselves, and
// calls whose every output is one text.
#ifndef TESTS_SDO_OBJECTS_H
#define TESTS_SDO_OBJECTS_H

#include <qzvest/sdo.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// Copies are allocated to the byte, so that the address sanitizer sees any step beyond.
struct Bytes : std::vector<uint8_t> {
    using vector::vector;
};

std::string Text(const auto &...parts)
{
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

inline std::string Hex(const Bytes &bytes)
{
    std::string text;
    for (const uint8_t byte : bytes)
        text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    return text;
}

// "'BODS 0100 1000": words of hexadecimal bytes, and of characters behind an apostrophe.
inline Bytes Block(const std::string &text)
{
    Bytes bytes;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word[0] == '\'')
            bytes.insert(bytes.end(), word.begin() + 1, word.end());
        for (size_t i = 0; word[0] != '\'' && i < word.size(); i += 2)
            bytes.push_back(static_cast<uint8_t>(std::stoul(word.substr(i, 2), nullptr, 16)));
    }
    return Bytes(bytes.begin(), bytes.end());
}

using Object = std::unique_ptr<SMSDOConfig, std::integral_constant<decltype(&SMSDOConfigFree), SMSDOConfigFree>>;

inline uint32_t Add(const Object &object, uint16_t id, uint8_t type, const Bytes &value, int16_t replace = 0)
{
    return SMSDOConfigAddData(object.get(), id, type, value.data(), static_cast<uint32_t>(value.size()), replace);
}

// The nested objects as type says: the one, or a table of them. The object takes them over if the call succeeds;
// else they stay where they are.
inline uint32_t Adopt(const Object &object, uint16_t id, uint8_t type, const std::vector<Object *> &nested,
                      int16_t replace = 0)
{
    std::vector<SMSDOConfig *> table;
    for (const Object *one : nested)
        table.push_back(one->get());
    const void *data = (type & SM_SDO_ARRAY) != 0 ? static_cast<const void *>(table.data()) : table[0];
    const auto size = static_cast<uint32_t>(8 * table.size());
    const uint32_t status = SMSDOConfigAddData(object.get(), id, type, data, size, replace);
    for (Object *one : nested)
        (void)(status == SM_STATUS_OK ? one->release() : nullptr); // the object has it
    return status;
}

struct Value {
    uint16_t id;
    uint8_t type;
    const char *value; // as in Block
};

// Values in the order of adding. One that is refused leaves an object without it, which no test expects.
inline Object Make(std::initializer_list<Value> values = {})
{
    Object object(SMSDOConfigAlloc());
    for (const Value &value : values)
        (void)Add(object, value.id, value.type, Block(value.value));
    return object;
}

// Empty when the object cannot be flattened.
inline Bytes Flatten(const Object &object)
{
    uint32_t size = SMSDOConfigGetBinarySize(object.get());
    Bytes block(size);
    const uint32_t status = SMSDOConfigToBinary(object.get(), block.data(), &size);
    return status == SM_STATUS_OK && size == block.size() ? block : Bytes();
}

// What a read by ID gives: "status type size buffer", with EE in what the call left alone. No room: no buffer.
std::string ByID(auto call, const auto *from, unsigned id, uint32_t room)
{
    Bytes buffer(room, 0xEE);
    uint8_t type = 0xEE;
    uint32_t size = room;
    const uint32_t status = call(from, static_cast<uint16_t>(id), &type, room != 0 ? buffer.data() : nullptr, &size);
    return Text(status, ' ', Hex({type}), ' ', size, ' ', Hex(buffer));
}

// The same by index, with the ID as a number in front: "id status type size buffer".
std::string ByIndex(auto call, const auto *from, uint32_t index, uint32_t room)
{
    uint16_t id = 0;
    const auto read = [&](auto *source, uint16_t, auto... out) { return call(source, index, &id, out...); };
    const std::string text = ByID(read, from, 0, room);
    return Text(id, ' ', text);
}

// What call(memory, &size) does in room bytes of memory that begin with before: "status size block", with the
// block that is there afterwards.
std::string InRoom(const Bytes &before, uint32_t room, auto call)
{
    Bytes memory(std::max<size_t>(room, before.size()), 0xEE);
    std::copy(before.begin(), before.end(), memory.begin());
    uint32_t size = room;
    const uint32_t status = call(memory.data(), &size);
    memory.resize(std::max(SMSDOBinaryGetSize(memory.data(), nullptr), 8u));
    return Text(status, ' ', size, ' ', Hex(memory));
}

#endif
