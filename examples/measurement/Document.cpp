#include "Document.h"

#include <zelm/files/Utf8Files.h>
#include <zelm/files/Utf8Streams.h>
#include <zelm/json/JSONFormatter.h>

#include <cerrno>
#include <cstring>
#include <ios>
#include <random>
#include <stdexcept>
#include <system_error>

namespace measurement {

using Zelm::ZPath;

namespace {

/// A file beside another one, of a name of its own, that is gone in the end unless it was renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(const ZPath& target) : path_(target.parent_path()) {
        path_ /= "measurement.part" + std::to_string(std::random_device()());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { Zelm::unlink_utf8(path_); }

    const ZPath& path() const { return path_; }

private:
    ZPath path_;
};

[[noreturn]] void fail(const ZPath& file, const std::string& what) {
    throw std::runtime_error(file.generic().to_string() + ": " + what);
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

void saveDocument(const ZPath& file, const Measurement& measurement) {
    // Renaming over a device or a pipe would replace it.
    if (file.exists() && !file.is_regular_file()) {
        fail(file, "exists and is no regular file");
    }
    const TemporaryFile temporary(file);
    errno = 0;
    Zelm::ofstream_utf8 out(temporary.path(), std::ios::out | std::ios::binary);
    if (!out) {
        fail(file, "cannot be written: " + reason());
    }
    writeDocument(out, measurement);
    out.close();
    if (!out) {
        fail(file, "cannot be written: " + reason());
    }
    try {
        temporary.path().rename(file);
    } catch (const std::system_error& error) {
        fail(file, "cannot be written: " + error.code().message());
    }
}

Measurement loadDocument(const ZPath& file) {
    errno = 0;
    Zelm::ifstream_utf8 in(file, std::ios::in | std::ios::binary);
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
