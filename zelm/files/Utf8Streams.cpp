#include <zelm/files/Utf8Streams.h>
#include <zelm/files/ZPath.h>
#include <zelm/files/platform/Platform.h>

namespace Zelm {

namespace {

template <class Stream>
void open(Stream& stream, const ZString& name, int mode) {
    if (details::platform::open(*stream.rdbuf(), ZPath(name), static_cast<std::ios_base::openmode>(mode))) {
        stream.clear();
    } else {
        stream.setstate(std::ios_base::failbit);
    }
}

} // namespace

void do_fstream_utf8_open(fstream_utf8* stream, const ZString& name, int mode) {
    open(*stream, name, mode);
}

void do_ifstream_utf8_open(ifstream_utf8* stream, const ZString& name, int mode) {
    open(*stream, name, mode | std::ios_base::in);
}

void do_ofstream_utf8_open(ofstream_utf8* stream, const ZString& name, int mode) {
    open(*stream, name, mode | std::ios_base::out);
}

} // namespace Zelm
