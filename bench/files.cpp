// File calls by names in UTF-8 beside those of the system.

#include "Compare.h"

#include <zelm/files/Utf8Files.h>

#include <filesystem>
#include <string>

#include <unistd.h>

namespace Zelm::Bench {
namespace {

/// A directory that is there on every machine where the benchmarks are built.
std::string existingFile() {
    return std::filesystem::current_path().string();
}

const Comparison accessByName(
    "access_utf8 / access", 1.3,
    [] {
        const ZString name(existingFile());
        return [=] { return access_utf8(name, R_OK); };
    },
    [] {
        const std::string name = existingFile();
        return [=] { return ::access(name.c_str(), R_OK); };
    });

} // namespace
} // namespace Zelm::Bench
