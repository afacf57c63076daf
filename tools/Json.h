#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Text in the form of JSON (RFC 8259), written as it is made: objects and lists are opened, filled and closed in turn.
class JsonWriter {
  public:
    /// With a key inside an object, without one inside a list.
    void beginObject(std::string_view key = {});
    void endObject();
    void beginList(std::string_view key = {});
    void endList();
    void add(std::string_view key, std::string_view value);
    void add(std::string_view key, const char* value) { add(key, std::string_view(value)); }
    void add(std::string_view key, const std::string& value) { add(key, std::string_view(value)); }
    void add(std::string_view key, std::uint64_t value);
    void add(std::string_view key, std::uint32_t value) { add(key, std::uint64_t{value}); }
    void add(std::string_view key, bool value);
    /// Null for a number that isn't finite, which JSON has no word for.
    void add(std::string_view key, double value);
    void addNull(std::string_view key);

    const std::string& getText() const { return text; }
    /// Returns what was written and starts again with nothing, so that long texts needn't be kept.
    std::string take();

  private:
    void begin(std::string_view key);
    void addQuoted(std::string_view value);

    std::string text;
    std::size_t depth = 0;
    bool first = true;
};

/// What a command reports of several files: an object with a schema and a list of objects, each with the path of its
/// file first. Printed file by file.
class JsonReport {
  public:
    JsonReport(std::string_view schema, std::string_view list);

    /// Where the rest of the file's object is added.
    JsonWriter* beginFile(std::string_view path);
    void endFile();
    void end();

  private:
    JsonWriter json;
};
