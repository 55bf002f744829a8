// Reads a Touchstone file, holds it as variables with units, saves them as a JSON document, loads the
// document again and shows that nothing changed. Then brings the document to life: a marker follows a
// parameter through a change, through saving and loading, and through another change.

#include "Csv.h"
#include "Document.h"
#include "LiveDocument.h"
#include "Report.h"
#include "Touchstone.h"

#include <zelm/files/ScratchDirectories.h>
#include <zelm/files/ZPath.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace measurement {

using Zelm::ZPath;

namespace {

constexpr const char* kUsage = "usage: measurement [--csv] [--output PATH] [FILE]";

struct Arguments {
    bool csv = false;
    bool help = false;
    ZPath output; ///< empty: the document goes to a scratch directory
    std::string file = MEASUREMENT_EXAMPLE_FILE;
};

ZPath outputOf(const std::string& word) {
    if (word.empty()) {
        throw std::invalid_argument("--output: an empty path");
    }
    try {
        return word;
    } catch (const std::exception& error) {
        throw std::invalid_argument(std::string("--output: ") + error.what());
    }
}

Arguments parseArguments(const std::vector<std::string>& words) {
    Arguments arguments;
    bool hasFile = false;
    bool mayBeOption = true;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (mayBeOption && word == "--") {
            mayBeOption = false;
        } else if (mayBeOption && word == "--csv") {
            arguments.csv = true;
        } else if (mayBeOption && word == "--help") {
            arguments.help = true;
        } else if (mayBeOption && word == "--output" && i + 1 < words.size()) {
            arguments.output = outputOf(words[++i]);
        } else if (hasFile || (mayBeOption && word.size() > 1 && word[0] == '-')) {
            throw std::invalid_argument(kUsage);
        } else {
            arguments.file = word;
            hasFile = true;
        }
    }
    return arguments;
}

/// Where the document goes.
ZPath documentOf(const Arguments& arguments) {
    if (!arguments.output.empty()) {
        return arguments.output;
    }
    ZPath document = ZPath::from_fs_path(Zelm::makeUniqueScratchDirectory("document"));
    document /= "measurement.json";
    return document;
}

/// Runs steps and notes how long each one took.
class Stopwatch {
public:
    template <class Step>
    auto time(const char* name, Step step) {
        const auto begin = std::chrono::steady_clock::now();
        auto result = step();
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - begin;
        times_.push_back({name, elapsed.count()});
        return result;
    }

    const std::vector<StepTime>& times() const { return times_; }

private:
    std::vector<StepTime> times_;
};

void run(const Arguments& arguments) {
    Stopwatch watch;
    const Touchstone file = watch.time("read", [&] { return readTouchstone(arguments.file); });
    const auto variables = watch.time("build", [&] { return variablesOf(file); });
    const Measurement measurement =
        watch.time("gather", [&] { return Measurement(file.parameter, file.ports, variables); });
    const Conversions conversions = watch.time("convert", [&] { return convert(measurement); });
    const ZPath document = documentOf(arguments);
    const std::uintmax_t bytes = watch.time("save", [&] {
        saveDocument(document, measurement);
        return document.file_size();
    });
    const Measurement loaded = watch.time("load", [&] { return loadDocument(document); });
    const std::string difference =
        watch.time("compare", [&] { return differenceBetween(measurement, variables, loaded); });
    if (!difference.empty()) {
        throw std::runtime_error(document.generic().to_string() +
                                 ": differs after reading it back: " + difference);
    }
    const LiveRoad road = watch.time("live", [&] { return walkLiveRoad(loaded); });
    if (arguments.csv) {
        writeCsv(std::cout, loaded);
        return;
    }
    const double changeTime = timeOfChange(loaded);
    printReport(std::cout, arguments.file, loaded, conversions);
    printDocument(std::cout, document.generic(), bytes, watch.times());
    std::cout << "read back  identical: the tree and all " << variables.size() << " variables\n";
    printLiveRoad(std::cout, road, changeTime);
}

int mainOf(const std::vector<std::string>& words) {
    try {
        const Arguments arguments = parseArguments(words);
        if (arguments.help) {
            std::cout << kUsage << '\n';
        } else {
            run(arguments);
        }
        if (!std::cout.flush()) {
            throw std::runtime_error("standard output cannot be written");
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}

} // namespace
} // namespace measurement

int main(int count, char** words) {
    std::ios::sync_with_stdio(false);
    return measurement::mainOf(std::vector<std::string>(words + std::min(count, 1), words + count));
}
