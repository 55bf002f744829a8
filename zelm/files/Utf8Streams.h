#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>

#include <fstream>
#include <ios>
#include <istream>
#include <ostream>
#include <utility>

namespace Zelm {

class fstream_utf8;
class ifstream_utf8;
class ofstream_utf8;

/// Opens a stream. `mode` is an `std::ios_base::openmode`. What fails sets `failbit`: a file that the system
/// does not open, a directory, a name that can name nothing here, a mode with no meaning such as 0; so does a
/// stream that is open already, and it stays at its file. Success clears the state. A name that is no UTF-8
/// throws the exceptions of `convertZStringToUtf16`.
ZELM_EXPORT void do_fstream_utf8_open(fstream_utf8* stream, const ZString& name, int mode);
/// The same, always with `std::ios_base::in`.
ZELM_EXPORT void do_ifstream_utf8_open(ifstream_utf8* stream, const ZString& name, int mode);
/// The same, always with `std::ios_base::out`.
ZELM_EXPORT void do_ofstream_utf8_open(ofstream_utf8* stream, const ZString& name, int mode);

namespace details {

/// Comes before the stream among the bases, so that the stream is given a buffer that lives.
struct FileBuffer {
    std::filebuf buffer;
};

/// What the file streams of all directions share.
template <class Stream>
class ZELM_EXPORT FileStream : private FileBuffer, public Stream {
public:
    FileStream() : Stream(&buffer) {}
    FileStream(FileStream&& other) : FileBuffer{std::move(other.buffer)}, Stream(std::move(other)) {
        this->set_rdbuf(&buffer);
    }
    FileStream& operator=(FileStream&& other) {
        Stream::operator=(std::move(other));
        buffer = std::move(other.buffer);
        return *this;
    }

    std::filebuf* rdbuf() const noexcept { return const_cast<std::filebuf*>(&buffer); }
    bool is_open() const { return buffer.is_open(); }
    /// Sets `failbit` if no file is open or what is left cannot be written.
    void close() {
        if (!buffer.close()) {
            this->setstate(std::ios_base::failbit);
        }
    }
};

} // namespace details

/// `std::fstream`, opened by a name in UTF-8; see `do_fstream_utf8_open`.
class ZELM_EXPORT fstream_utf8 : public details::FileStream<std::iostream> {
public:
    fstream_utf8() = default;
    fstream_utf8(fstream_utf8&& other) : FileStream(std::move(other)) {}
    fstream_utf8& operator=(fstream_utf8&& other) = default;
    explicit fstream_utf8(const ZString& name, int mode = std::ios_base::in | std::ios_base::out) {
        open(name, mode);
    }
    void open(const ZString& name, int mode = std::ios_base::in | std::ios_base::out) {
        do_fstream_utf8_open(this, name, mode);
    }
};

/// `std::ifstream`, opened by a name in UTF-8; see `do_ifstream_utf8_open`.
class ZELM_EXPORT ifstream_utf8 : public details::FileStream<std::istream> {
public:
    ifstream_utf8() = default;
    ifstream_utf8(ifstream_utf8&& other) : FileStream(std::move(other)) {}
    ifstream_utf8& operator=(ifstream_utf8&& other) = default;
    explicit ifstream_utf8(const ZString& name, int mode = std::ios_base::in) { open(name, mode); }
    void open(const ZString& name, int mode = std::ios_base::in) { do_ifstream_utf8_open(this, name, mode); }
};

/// `std::ofstream`, opened by a name in UTF-8; see `do_ofstream_utf8_open`.
class ZELM_EXPORT ofstream_utf8 : public details::FileStream<std::ostream> {
public:
    ofstream_utf8() = default;
    ofstream_utf8(ofstream_utf8&& other) : FileStream(std::move(other)) {}
    ofstream_utf8& operator=(ofstream_utf8&& other) = default;
    explicit ofstream_utf8(const ZString& name, int mode = std::ios_base::out) { open(name, mode); }
    void open(const ZString& name, int mode = std::ios_base::out) { do_ofstream_utf8_open(this, name, mode); }
};

} // namespace Zelm
