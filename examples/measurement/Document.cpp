#include "Document.h"

#include <zelm/json/JSONFormatter.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace measurement {
namespace {

namespace fs = std::filesystem;

/// A file of a name of its own that is gone in the end unless it was renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& target)
        : name_(target + ".part" + std::to_string(std::random_device()())) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::error_code ignored;
        fs::remove(name_, ignored);
    }

    const fs::path& name() const { return name_; }

private:
    fs::path name_;
};

[[noreturn]] void fail(const std::string& file, const std::string& what) {
    throw std::runtime_error(file + ": " + what);
}

std::string reason() {
    return errno != 0 ? std::strerror(errno) : "input or output error";
}

} // namespace

void writeDocument(std::ostream& out, const Measurement& measurement) {
    Zelm::JSONFormatter().serialize(out, "measurement", measurement.propertyHandle());
}

Measurement readDocument(std::istream& in) {
    return Measurement(Zelm::JSONFormatter().deserialize(in));
}

void saveDocument(const std::string& file, const Measurement& measurement) {
    // Renaming over a device or a pipe would replace it.
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        fail(file, "exists and is no regular file");
    }
    const TemporaryFile temporary(file);
    errno = 0;
    std::ofstream out(temporary.name(), std::ios::binary);
    if (!out) {
        fail(file, "cannot be written: " + reason());
    }
    writeDocument(out, measurement);
    out.close();
    if (!out) {
        fail(file, "cannot be written: " + reason());
    }
    std::error_code error;
    fs::rename(temporary.name(), file, error);
    if (error) {
        fail(file, "cannot be written: " + error.message());
    }
}

Measurement loadDocument(const std::string& file) {
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        fail(file, "cannot be read: " + reason());
    }
    return readDocument(in);
}

std::string differenceBetween(const Measurement& saved, const std::vector<NamedVariable>& variables,
                              const Measurement& loaded) {
    for (const NamedVariable& original : variables) {
        if (!original.variable.isEquivalentTo(loaded.variable(original.name))) {
            return original.name;
        }
    }
    return saved.propertyHandle().isEquivalentTo(loaded.propertyHandle()) ? "" : "the tree";
}

} // namespace measurement
