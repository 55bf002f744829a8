#include <zelm/files/platform/Platform.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unistd.h>

namespace Zelm::details::platform {

namespace {

/// The system's own calls may not look for a variable while another thread sets one.
std::mutex s_mutex;

bool contains(ZStringView text, char c) {
    return !text.empty() && std::memchr(text.data(), c, text.size()) != nullptr;
}

/// A name with '=' would find a piece of the value of a shorter one.
bool isName(ZStringView name) {
    return !name.empty() && !contains(name, '=') && !contains(name, '\0');
}

const char* findValue(ZStringView name) {
    for (char** entry = ::environ; entry && *entry; ++entry) {
        if (**entry == *name.data() && std::strncmp(*entry, name.data(), name.size()) == 0 &&
            (*entry)[name.size()] == '=') {
            return *entry + name.size() + 1;
        }
    }
    return nullptr;
}

} // namespace

std::optional<ZString> environmentVariable(ZStringView name) {
    if (!isName(name)) {
        return std::nullopt;
    }
    const std::lock_guard lock(s_mutex);
    const char* const value = findValue(name);
    return value ? std::optional(ZString::from_char_ptr(value)) : std::nullopt;
}

bool setEnvironmentVariable(ZStringView name, ZStringView value) {
    if (!isName(name) || contains(value, '\0')) {
        return false;
    }
    const std::string terminatedName(name.data(), name.size());
    const std::string terminatedValue(value.data(), value.size());
    const std::lock_guard lock(s_mutex);
    return ::setenv(terminatedName.c_str(), terminatedValue.c_str(), 1) == 0;
}

} // namespace Zelm::details::platform
