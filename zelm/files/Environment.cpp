#include <zelm/files/Environment.h>
#include <zelm/files/platform/Platform.h>
#include <zelm/text/AsciiCase.h>
#include <zelm/text/TextConversions.h>

#include <new>

namespace Zelm::Environment {

namespace {

using namespace details;

constexpr const char* kStoreKey = "SOFTWARE\\Tornvale\\Orvane\\4.70\\tvenv";

class CannotSetVariable : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

const ZString& checkedName(const ZString& name) {
    if (!isAscii(name.data(), name.size())) {
        static_cast<void>(convertZStringToUtf16(name));
    }
    return name;
}

bool machineValue(const ZString& name, ZString* value) {
    static const platform::MachineStore store(kStoreKey);
    if (!store.value(name, value)) {
        return false;
    }
    *value = value->left(value->find_first_of("\r\n\0", 0, 3));
    return true;
}

} // namespace

ZString getenv_zstring(const ZString& name) {
    ZString value;
    getenv_zstring_allow_empty(name, &value);
    return value;
}

bool getenv_zstring_allow_empty(const ZString& name, ZString* value) {
    return platform::environmentVariable(checkedName(name), value);
}

ZString getenv_check_registry_zstring(const ZString& name) {
    ZString value;
    getenv_check_registry_zstring_allow_empty(name, &value);
    return value;
}

bool getenv_check_registry_zstring_allow_empty(const ZString& name, ZString* value) {
    return getenv_zstring_allow_empty(name, value) || machineValue(name, value);
}

void putenv_zstring(const ZString& name, const ZString& value) {
    if (!platform::setEnvironmentVariable(checkedName(name), value)) {
        throw CannotSetVariable();
    }
}

} // namespace Zelm::Environment
