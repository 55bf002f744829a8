// Text beside std::string and, where Qt is installed, QString.

#include "Compare.h"

#include <zelm/text/ZString.h>
#include <zelm/text/ZStringFormatter.h>

#include <string>

#ifdef ZELM_BENCH_QT
#include <QString>
#endif

namespace Zelm::Bench {
namespace {

std::string letters(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += static_cast<char>('a' + i % 26);
    }
    return text;
}

#ifdef ZELM_BENCH_QT
bool sameText(const ZString& ours, const QString& peer) {
    return ours == peer.toStdString();
}

const Comparison copy(
    "copy of 100 bytes / QString", 0.75,
    [] {
        const ZString text(letters(100));
        return [=] { return ZString(text); };
    },
    [] {
        const QString text = QString::fromStdString(letters(100));
        return [=] { return QString(text); };
    },
    sameText);

const Comparison message(
    "%1 and %2 / QString::arg", 0.85,
    [] {
        const ZString a(letters(8)), b(letters(12));
        return [=] { return ZStringFormatter("%1 and %2").arg(a).arg(b).toString(); };
    },
    [] {
        const QString a = QString::fromStdString(letters(8)), b = QString::fromStdString(letters(12));
        return [=] { return QString("%1 and %2").arg(a).arg(b); };
    },
    sameText);
#endif

const Comparison cut(
    "middle half of 1 kB / std::string::substr", 0.75,
    [] {
        const ZString text(letters(1000));
        return [=] { return text.substr(250, 500); };
    },
    [] {
        const std::string text = letters(1000);
        return [=] { return text.substr(250, 500); };
    });

template <class Text>
auto appendSixteenBytes() {
    return [piece = letters(16)] {
        Text text;
        for (int i = 0; i < 1000; ++i) {
            text += piece;
        }
        return text;
    };
}

const Comparison append("1000 appends of 16 bytes / std::string", 1.1, appendSixteenBytes<ZString>,
                        appendSixteenBytes<std::string>);

} // namespace
} // namespace Zelm::Bench
