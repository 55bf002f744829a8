#include <zelm/files/Environment.h>
#include <zelm/files/platform/Platform.h>
#include <zelm/text/TextConversions.h>

#include <algorithm>
#include <new>
#include <optional>

namespace Zelm::Environment {

namespace {

using namespace details;

constexpr const char* kStoreKey = "SOFTWARE\\Tornvale\\Orvane\\4.70\\tvenv";

class CannotSetVariable : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

const ZString& checkedName(const ZString& name) {
    if (std::any_of(name.begin(), name.end(), [](char c) { return static_cast<signed char>(c) < 0; })) {
        static_cast<void>(convertZStringToUtf16(name));
    }
    return name;
}

std::optional<ZString> machineValue(const ZString& name) {
    static const platform::MachineStore store(kStoreKey);
    std::optional<ZString> value = store.value(name);
    return value ? value->left(value->find_first_of("\r\n\0", 0, 3)) : value;
}

bool take(std::optional<ZString> found, ZString* value) {
    if (found) {
        *value = *std::move(found);
    }
    return found.has_value();
}

} // namespace

ZString getenv_zstring(const ZString& name) {
    return platform::environmentVariable(checkedName(name)).value_or(ZString());
}

bool getenv_zstring_allow_empty(const ZString& name, ZString* value) {
    return take(platform::environmentVariable(checkedName(name)), value);
}

ZString getenv_check_registry_zstring(const ZString& name) {
    ZString value;
    getenv_check_registry_zstring_allow_empty(name, &value);
    return value;
}

bool getenv_check_registry_zstring_allow_empty(const ZString& name, ZString* value) {
    return getenv_zstring_allow_empty(name, value) || take(machineValue(name), value);
}

void putenv_zstring(const ZString& name, const ZString& value) {
    if (!platform::setEnvironmentVariable(checkedName(name), value)) {
        throw CannotSetVariable();
    }
}

} // namespace Zelm::Environment
