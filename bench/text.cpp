// Text beside std::string and, where they are installed, QString and the strings of Abseil.

#include "Compare.h"

#include <zelm/text/TextConversions.h>
#include <zelm/text/ZStringFormatter.h>

#include <algorithm>
#include <string>
#include <vector>

#ifdef ZELM_BENCH_QT
#include <QByteArray>
#include <QString>
#endif
#ifdef ZELM_BENCH_ABSL
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
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

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

std::string sized(const std::string& what, std::size_t size, const char* peer) {
    return what + ", " + std::to_string(size) + " bytes / " + peer;
}

#ifdef ZELM_BENCH_QT
struct SameText {
    bool operator()(const ZString& ours, const QString& peer) const { return ours == peer.toStdString(); }
    bool operator()(const ZString& ours, const QByteArray& peer) const { return ours == peer.toStdString(); }
    bool operator()(const std::u16string& ours, const QString& peer) const {
        return ours == peer.toStdU16String();
    }
};

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
    SameText());

void addCopy(std::size_t size) {
    Comparison(
        sized("copy", size, "QString"), 0.75,
        [=] { return [text = ZString(letters(size))] { return ZString(text); }; },
        [=] { return [text = QString::fromStdString(letters(size))] { return QString(text); }; }, SameText());
}

void addSum(std::size_t size) {
    Comparison(
        sized("a + b", 2 * size, "QString"), 1.0,
        [=] {
            const ZString a(letters(size)), b(std::string(size, 'b'));
            return [=] { return ZString(a + b); };
        },
        [=] {
            const QString a = QString::fromStdString(letters(size)), b(static_cast<int>(size), 'b');
            return [=] { return QString(a + b); };
        },
        SameText());
}

/// A needle in the other case at the end of words that have its letters.
void addSearch(std::size_t size) {
    const std::string words = "the quick brown fox jumps over the lazy dog ";
    const std::string text = repeated(words, size / words.size()) + "lady";
    Comparison(
        sized("find ignoring case", size, "QString"), 0.25,
        [=] { return [ours = ZString(text)] { return ours.find_ignore_case("LADY"); }; },
        [=] {
            const QString peer = QString::fromStdString(text), needle("LADY");
            return [=] { return static_cast<std::size_t>(peer.indexOf(needle, 0, Qt::CaseInsensitive)); };
        });
}

void addUtf(const char* what, const std::string& text, double goalTo, double goalBack) {
    Comparison(
        sized("UTF-8 to UTF-16", text.size(), "QString::fromUtf8") + what, goalTo,
        [=] { return [ours = ZString(text)] { return convertZStringToUtf16(ours); }; },
        [=] { return [=] { return QString::fromUtf8(text.data(), static_cast<int>(text.size())); }; },
        SameText());
    Comparison(
        sized("UTF-16 to UTF-8", text.size(), "QString::toUtf8") + what, goalBack,
        [=] { return [ours = convertZStringToUtf16(text)] { return convertUtf16ToZString(ours); }; },
        [=] { return [peer = QString::fromStdString(text)] { return peer.toUtf8(); }; }, SameText());
}

const bool addedQt = [] {
    for (const std::size_t size : {10, 100, 1000}) {
        addCopy(size);
    }
    for (const std::size_t size : {10, 50, 100, 1000}) {
        addSum(size);
    }
    for (const std::size_t size : {1000, 1000000}) {
        addSearch(size);
        addUtf(", ASCII", letters(size), 1.2, 1.2);
        addUtf(", two bytes a character", repeated("\xC3\xA9", size / 2), 1.5, 1.6);
    }
    return true;
}();
#endif

#ifdef ZELM_BENCH_ABSL
bool sameTokens(const std::vector<ZString>& ours, const std::vector<std::string>& peer) {
    return std::equal(ours.begin(), ours.end(), peer.begin(), peer.end());
}

const bool addedAbsl = [] {
    for (const std::size_t tokens : {100, 100000}) {
        const std::string text = repeated("ninebytes,", tokens);
        Comparison(
            sized("split into " + std::to_string(tokens) + " tokens", text.size(), "absl::StrSplit"), 1.0,
            [=] { return [ours = ZString(text)] { return tokenize(ours, ",", true); }; },
            [=] { return [=] { return std::vector<std::string>(absl::StrSplit(text, ',')); }; }, sameTokens);
        Comparison(
            sized("replace " + std::to_string(tokens) + " times", text.size(), "absl::StrReplaceAll"), 1.0,
            [=] { return [ours = ZString(text)] { return ours.replace(",", "; "); }; },
            [=] { return [=] {
                      return absl::StrReplaceAll(text, {{",", "; "}});
                  }; });
    }
    return true;
}();
#endif

void addCut(std::size_t size) {
    Comparison(
        sized("middle half", size, "std::string::substr"), 0.75,
        [=] { return [=, text = ZString(letters(size))] { return text.substr(size / 4, size / 2); }; },
        [=] { return [=, text = letters(size)] { return text.substr(size / 4, size / 2); }; });
}

template <class Text>
auto appended(int count) {
    return [=] {
        return [=, piece = letters(16)] {
            Text text;
            for (int i = 0; i < count; ++i) {
                text += piece;
            }
            return text;
        };
    };
}

const bool added = [] {
    for (const std::size_t size : {100, 1000, 100000}) {
        addCut(size);
    }
    for (const int count : {100, 1000, 100000}) {
        Comparison(std::to_string(count) + " appends of 16 bytes / std::string", 1.1,
                   appended<ZString>(count), appended<std::string>(count));
    }
    return true;
}();

} // namespace
} // namespace Zelm::Bench
