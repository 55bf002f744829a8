// Reads mutated documents on both roads, by scanning and by way of the parser, and holds the trees against
// each other: `json_reading_roads [COUNT [SEED]]`.

#include "RandomDocuments.h"

#include <zelm/json/JSONFormatter.h>
#include <zelm/json/JsonDocument.h>
#include <zelm/json/JsonTreeScanning.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

using namespace Zelm;

namespace {

std::string written(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, tree.getName(), tree);
    return out.str();
}

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

class Mutator {
public:
    explicit Mutator(RandomDocuments& random) : random_(random) {}

    /// Up to three tokens changed, and now and then a byte or the end.
    std::string mutated(const std::string& document) {
        cut(document);
        for (std::uint64_t changes = pick(4); changes > 0; --changes) {
            change(pick(12) ? anyValue() : tokens_[pick(tokens_.size())]);
        }
        std::string result;
        for (const std::string& token : tokens_) {
            result += token;
        }
        if (pick(16) == 0 && !result.empty()) {
            result[pick(result.size())] = static_cast<char>(pick(256));
        }
        return pick(32) ? result : result.substr(0, pick(result.size() + 1));
    }

private:
    std::uint64_t pick(std::uint64_t count) { return random_.pick(count); }

    const std::string& anyOf(const std::vector<std::string>& choices) {
        return choices[pick(choices.size())];
    }

    /// Into strings, words and numbers, and single characters.
    void cut(const std::string& document) {
        tokens_.clear();
        for (std::size_t start = 0, end = 0; start < document.size(); start = end) {
            end = start + 1;
            if (document[start] == '"') {
                for (; document[end] != '"'; ++end) {
                    end += document[end] == '\\';
                }
                ++end;
            } else if (isWord(document[start])) {
                end = std::min(document.find_first_of(",]}\n", start), document.size());
            }
            tokens_.push_back(document.substr(start, end - start));
        }
    }
    static bool isWord(char c) { return c == '-' || std::isalnum(static_cast<unsigned char>(c)); }

    /// A name or an element, if it finds one.
    std::string& anyValue() {
        std::size_t index = 0;
        for (int tries = 0; tries < 20; ++tries) {
            index = pick(tokens_.size());
            const bool isMember = index > 1 && tokens_[index - 1] == ":";
            const std::string key = isMember ? tokens_[index - 2] : "";
            const bool isKey = index + 1 < tokens_.size() && tokens_[index + 1] == ":";
            if (!isKey && (!isMember || key == "\"name\"" || key == "\"i\"" || key == "\"real\"") &&
                (tokens_[index][0] == '"' || isWord(tokens_[index][0]))) {
                break;
            }
        }
        return tokens_[index];
    }

    /// Mostly into another token of its kind, so that many documents stay readable.
    void change(std::string& token) {
        static const std::vector<std::string> kGaps{" ", "\n", "\t", "\r", "/* ] */", "//\n", "\v", ","};
        const bool isText = token[0] == '"';
        const std::string changes[] = {"", token + token, tokens_[pick(tokens_.size())], anyOf(kGaps) + token,
                                       std::string(pick(8) ? 1 + pick(3) : 1001, pick(2) ? '[' : ']') +
                                           token};
        const std::uint64_t choice = pick(isText || isWord(token[0]) ? 24 : std::size(changes));
        token = choice < std::size(changes) ? changes[choice] : isText ? text(token) : number(token);
    }

    std::string number(const std::string& before) {
        static const std::vector<std::string> kOdd = words(
            "0 1 2 -1 -0 -0.0 0.0 00 -01 1. 1.e5 .5 -.5 - +1 1e 1e+ 1e5 1E+5 -1e-5 5e-1 1.2.3 1-1 0x10 null "
            "true false inf -inf nan -nan 1e+9999 -1e+9999 1E+9999 1e9999 1e+99990 01e+9999 1e400 -1e400 "
            "1e-400 2e-324 4.9406564584124654e-324 2.2250738585072011e-308 1.7976931348623159e308 1e39 "
            "3.4028235677973366e38 300 65536 2147483647 2147483648 -2147483648 -2147483649 4294967295 "
            "4294967296 9223372036854775807 9223372036854775808 -9223372036854775808 -9223372036854775809 "
            "18446744073709551615 18446744073709551616 16777217 9007199254740993 9007199254740993.0 "
            "9007199791611905 45934339254383381");
        const bool isReal = pick(8) == 0 || before.find_first_of(".e") != std::string::npos;
        if (pick(3) == 0) {
            return anyOf(kOdd);
        }
        if (pick(8) != 0 && (before == "true" || before == "false")) {
            return pick(2) ? "true" : "false";
        }
        std::string result(pick(2), '-');
        digits(result, 1 + pick(pick(2) ? 20 : 4));
        if (isReal && pick(4) != 0) {
            result += '.';
            digits(result, pick(20));
        }
        if (isReal && pick(2) == 0) {
            result += pick(2) ? "e-" : "e";
            digits(result, 1 + pick(3));
        }
        return result;
    }
    void digits(std::string& result, std::uint64_t count) {
        std::generate_n(std::back_inserter(result), count,
                        [this] { return static_cast<char>('0' + pick(10)); });
    }

    std::string text(const std::string& before) {
        static const std::vector<std::string> kPieces = words(
            R"(\" \\ \/ \b \f \n \r \t \u0041 \u00E9 \u20ac \uffff \u0000 \ud83d\ude00 \ud83d \ude00 \ud83d\u0041 )"
            R"(\uD83d\n \u00g0 \u-041 \u+041 \u4 \x \ ], \"dataOrder\": " /* // 1e+9999 a rowMajor )"
            "\x80 \xff \xf5\x80\x80\x80 \x1f \x7f");
        std::string result = before;
        for (std::uint64_t pieces = 1 + pick(2) * pick(2); pieces > 0; --pieces) {
            const std::string piece = pick(16) ? anyOf(kPieces) : std::string(1, pick(2) ? '\0' : '\n');
            result.insert(1 + pick(result.size() - 1), piece);
        }
        return result;
    }

    RandomDocuments& random_;
    std::vector<std::string> tokens_;
};

struct Counts {
    std::uint64_t scanned = 0;
    std::uint64_t differences = 0;
};

/// What is not scanned goes down the parser's road, so that only trees can differ.
void read(const std::string& document, Counts& counts) {
    std::string expected;
    std::string found;
    try {
        const auto tree = details::scanJsonTree(document);
        if (!tree) {
            return;
        }
        ++counts.scanned;
        found = written(*tree);
        Json::Reader parser;
        expected = written(details::parseJsonTree(parser, document));
    } catch (const std::exception& error) {
        expected += error.what();
    }
    if (found != expected && ++counts.differences < 10) {
        std::printf("document: %s\nscanned:  %s\nparsed:   %s\n", document.c_str(), found.c_str(),
                    expected.c_str());
    }
}

/// Values below one another, around the depth that the parser takes.
void readNested(Counts& counts) {
    const auto value = [](const std::string& data, const std::string& type) {
        return "{\"data\":[" + data +
               R"(],"dataOrder":"rowMajor","dimensions":[1],"type":"Variant","wellKnownType":")" + type +
               "\"}";
    };
    for (const auto& innermost :
         {value("1", "int32"), value("{\"i\":1,\"real\":1}", "complexInt32"), value("[1]", "string16")}) {
        std::string node = R"({"name":"","value":)" + innermost + "}";
        std::string cell = innermost;
        std::string record = innermost;
        for (int level = 1; level < 503; ++level) {
            node = "{\"children\":[" + node + R"(],"name":""})";
            cell = value(cell, "cell");
            record = value(R"([{"name":"","value":[)" + record + "]}]", "struct");
            if (level % 100 == 0 || level > 494) {
                read(node, counts);
                read(R"({"name":"","value":)" + cell + "}", counts);
            }
            if (level > 194 && level < 203) {
                read(R"({"name":"","value":)" + record + "}", counts);
            }
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    constexpr int kMutationsOfEach = 16;
    const std::uint64_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 20000;
    RandomDocuments random(argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1);
    Mutator mutator(random);
    Counts counts;
    readNested(counts);
    std::string document;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (i % kMutationsOfEach == 0) {
            document = written(random.tree(static_cast<int>(random.pick(3))));
        }
        read(mutator.mutated(document), counts);
    }
    std::printf("%llu documents, %llu scanned, %llu differences\n", static_cast<unsigned long long>(count),
                static_cast<unsigned long long>(counts.scanned),
                static_cast<unsigned long long>(counts.differences));
    // A quarter at least has to pass the scanner, or little would be compared.
    return counts.differences != 0 || counts.scanned < count / 4;
}
