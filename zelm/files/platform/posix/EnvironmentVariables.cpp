#include <zelm/files/platform/Platform.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unistd.h>

namespace Zelm::details::platform {

namespace {

/// The system's own calls may not look for a variable while another thread sets one.
class Exclusion {
public:
    Exclusion() {
        if (!isOnlyThread()) {
            lock_.lock();
        }
    }

private:
    static inline std::mutex s_mutex;

    std::unique_lock<std::mutex> lock_{s_mutex, std::defer_lock};
};

bool contains(ZStringView text, char c) {
    return !text.empty() && std::memchr(text.data(), c, text.size()) != nullptr;
}

/// Null if there is none. The first '=' of an entry ends its name, so that a name with '=' or NUL in it has
/// no value, and not a piece of that of another one.
const char* findValue(ZStringView name) {
    if (name.empty() || !::environ) {
        return nullptr;
    }
    const char first = *name.data();
    for (char** entry = ::environ; *entry; ++entry) {
        if (**entry == first && std::strncmp(*entry, name.data(), name.size()) == 0 &&
            std::strchr(*entry, '=') == *entry + name.size()) {
            return *entry + name.size() + 1;
        }
    }
    return nullptr;
}

} // namespace

bool environmentVariable(ZStringView name, ZString* value) {
    const Exclusion exclusion;
    const char* const found = findValue(name);
    if (found) {
        *value = ZString(found, std::strlen(found));
    }
    return found != nullptr;
}

bool setEnvironmentVariable(ZStringView name, ZStringView value) {
    if (name.empty() || contains(name, '=') || contains(name, '\0') || contains(value, '\0')) {
        return false;
    }
    const std::string terminatedName(name.data(), name.size());
    const std::string terminatedValue(value.data(), value.size());
    const Exclusion exclusion;
    return ::setenv(terminatedName.c_str(), terminatedValue.c_str(), 1) == 0;
}

} // namespace Zelm::details::platform
