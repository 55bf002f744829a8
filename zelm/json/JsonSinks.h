#pragma once

#include <zelm/json/ChunkedText.h>
#include <zelm/text/ZStringView.h>

#include <json/json.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Zelm::details {

/// What a walk over trees and values writes to: two classes with the same members, one for text and one for
/// `Json::Value`. The walk names the keys of an object in byte order, which is the order of a document.

/// Appends compact JSON text: no blanks, strings as the bytes that they have, doubles with 17 significant
/// digits.
class JsonTextSink {
public:
    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }

    /// A key that needs no escape.
    template <std::size_t N>
    void key(const char (&name)[N]) {
        writeQuoted(name, N - 1, ':');
    }

    void null() { word("null"); }
    void boolean(bool value) { value ? word("true") : word("false"); }
    void integer(std::int64_t value);
    void unsignedInteger(std::uint64_t value);
    void real(double value);
    void string(ZStringView value);
    /// A string that needs no escape.
    void plainString(ZStringView value) { writeQuoted(value.data(), value.size(), ','); }

    void endDocument() { text_.back() = '\n'; }
    const ChunkedText& text() const noexcept { return text_; }

private:
    // A comma follows each value, until the bracket that closes an array or object takes the place of the
    // last one.
    void open(char bracket) {
        char* const out = text_.room(1);
        *out = bracket;
        text_.endAt(out + 1);
    }
    void close(char bracket) {
        if (text_.back() == ',') {
            text_.back() = bracket;
            open(',');
        } else {
            const char both[] = {bracket, ','};
            append(both, sizeof both);
        }
    }
    template <std::size_t N>
    void word(const char (&text)[N]) {
        char* const end = std::copy_n(text, N - 1, text_.room(N));
        *end = ',';
        text_.endAt(end + 1);
    }
    void append(const char* bytes, std::size_t count) {
        text_.endAt(std::copy_n(bytes, count, text_.room(count)));
    }
    void writeQuoted(const char* text, std::size_t length, char follower) {
        char* out = text_.room(length + 3);
        *out++ = '"';
        out = std::copy_n(text, length, out);
        *out++ = '"';
        *out++ = follower;
        text_.endAt(out);
    }
    void writeEscaped(ZStringView text, const char* escape);

    ChunkedText text_;
};

/// Builds a `Json::Value`.
class JsonValueSink {
public:
    void beginObject() { open(Json::objectValue); }
    void endObject() { open_.pop_back(); }
    void beginArray() { open(Json::arrayValue); }
    void endArray() { open_.pop_back(); }

    /// A key of static lifetime.
    void key(const char* name) { key_ = name; }

    void null() { place(); }
    void boolean(bool value) { place() = Json::Value(value); }
    void integer(std::int64_t value) { place() = Json::Value(static_cast<Json::Int64>(value)); }
    void unsignedInteger(std::uint64_t value) { place() = Json::Value(static_cast<Json::UInt64>(value)); }
    void real(double value) { place() = Json::Value(value); }
    void string(ZStringView value) { place() = Json::Value(value.begin(), value.end()); }
    void plainString(ZStringView value) { string(value); }

    Json::Value& value() noexcept { return root_; }

private:
    Json::Value& place() {
        if (open_.empty()) {
            return root_;
        }
        Json::Value& parent = *open_.back();
        return parent.isArray() ? parent.append(Json::Value()) : parent[Json::StaticString(key_)];
    }
    void open(Json::ValueType type) {
        Json::Value& opened = place();
        opened = Json::Value(type);
        open_.push_back(&opened);
    }

    Json::Value root_;
    // Members of a Json::Value keep their address while others are added beside them.
    std::vector<Json::Value*> open_;
    const char* key_ = "";
};

} // namespace Zelm::details
