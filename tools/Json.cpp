#include "tools/Json.h"

#include "import/ValidText.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

void JsonWriter::begin(std::string_view key) {
    if (!first) text += ',';
    if (depth != 0) text.append("\n").append(2 * depth, ' ');
    first = false;
    if (key.empty()) return;
    addQuoted(key);
    text += ": ";
}

void JsonWriter::addQuoted(std::string_view value) {
    constexpr std::string_view hex = "0123456789abcdef";
    text += '"';
    for (const char c : Velmar::toValidText(value)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (text += '\\') += c;
        else if (byte < 0x20)
            text.append("\\u00").append({hex[byte >> 4U], hex[byte & 15U]});
        else
            text += c;
    }
    text += '"';
}

void JsonWriter::beginObject(std::string_view key) {
    begin(key);
    text += '{';
    ++depth;
    first = true;
}

void JsonWriter::endObject() {
    --depth;
    if (!first) text.append("\n").append(2 * depth, ' ');
    text += '}';
    first = false;
}

void JsonWriter::beginList(std::string_view key) {
    begin(key);
    text += '[';
    ++depth;
    first = true;
}

void JsonWriter::endList() {
    --depth;
    if (!first) text.append("\n").append(2 * depth, ' ');
    text += ']';
    first = false;
}

void JsonWriter::add(std::string_view key, std::string_view value) {
    begin(key);
    addQuoted(value);
}

void JsonWriter::add(std::string_view key, std::uint64_t value) {
    begin(key);
    text += std::to_string(value);
}

void JsonWriter::add(std::string_view key, bool value) {
    begin(key);
    text += value ? "true" : "false";
}

void JsonWriter::add(std::string_view key, double value) {
    if (!std::isfinite(value)) {
        addNull(key);
        return;
    }
    begin(key);
    char digits[48];
    const auto end = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, end.ptr);
}

void JsonWriter::addNull(std::string_view key) {
    begin(key);
    text += "null";
}

std::string JsonWriter::take() {
    return std::exchange(text, {});
}

JsonReport::JsonReport(std::string_view schema, std::string_view list) {
    json.beginObject();
    json.add("schema", schema);
    json.beginList(list);
}

JsonWriter* JsonReport::beginFile(std::string_view path) {
    json.beginObject();
    json.add("file", path);
    return &json;
}

void JsonReport::endFile() {
    json.endObject();
    std::printf("%s", json.take().c_str());
}

void JsonReport::end() {
    json.endList();
    json.endObject();
    std::printf("%s\n", json.take().c_str());
}
