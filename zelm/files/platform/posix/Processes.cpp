#include <zelm/files/platform/Platform.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace Zelm::details::platform {

long long currentProcessId() {
    return ::getpid();
}

bool isProcessAlive(std::int32_t id) {
    // To the system an id below 1 means a group of processes.
    if (id <= 0) {
        return id == 0;
    }
    return ::kill(id, 0) == 0 || errno == EPERM;
}

FilesystemPath programFile() {
    // The system adds this to the name of a program that was replaced while it runs.
    constexpr std::string_view kDeleted = " (deleted)";
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    std::string name = error ? ::program_invocation_short_name : program.filename().native();
    const std::size_t length = name.size() - std::min(name.size(), kDeleted.size());
    if (name.compare(length, name.npos, kDeleted) == 0 && !std::filesystem::exists(program, error)) {
        name.resize(length);
    }
    return FilesystemPath::fromSystem(name);
}

} // namespace Zelm::details::platform
