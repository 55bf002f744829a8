#pragma once

#include <zelm/text/ZStringView.h>

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Zelm::details {

/// What a walk over trees and values writes to: two classes with the same members, one for text and one for
/// `Json::Value`. The walk names the keys of an object in byte order, which is the order of a document.

/// Appends compact JSON text: no blanks, strings as the bytes that they have, doubles with 17 significant
/// digits.
class JsonTextSink {
public:
    void beginObject() { open('{'); }
    void endObject() { text_ += '}'; }
    void beginArray() { open('['); }
    void endArray() { text_ += ']'; }

    /// A key that needs no escape.
    void key(const char* name) {
        separate();
        text_ += '"';
        text_ += name;
        text_ += "\":";
    }

    void null() { word("null"); }
    void boolean(bool value) { word(value ? "true" : "false"); }
    void integer(std::int64_t value);
    void unsignedInteger(std::uint64_t value);
    void real(double value);
    void string(ZStringView value);

    void endDocument() { text_ += '\n'; }
    const std::string& text() const noexcept { return text_; }

private:
    void open(char bracket) {
        separate();
        text_ += bracket;
    }
    void word(const char* text) {
        separate();
        text_ += text;
    }
    /// A value needs a comma before it unless a bracket or a key stands there.
    void separate() {
        if (!text_.empty()) {
            const char last = text_.back();
            if (last != '{' && last != '[' && last != ':') {
                text_ += ',';
            }
        }
    }
    void escaped(unsigned char character);

    std::string text_;
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
