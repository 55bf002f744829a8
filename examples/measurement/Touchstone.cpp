#include "Touchstone.h"

#include "Number.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

namespace measurement {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";
constexpr std::size_t kNoiseNumbers = 5;

enum class Format { MagnitudeAngle, DecibelAngle, RealImaginary };

struct FrequencyUnit {
    std::string_view option;
    std::string_view name;
    double hertz;
};

constexpr std::array<FrequencyUnit, 4> kUnits{
    {{"HZ", "Hz", 1.0}, {"KHZ", "kHz", 1e3}, {"MHZ", "MHz", 1e6}, {"GHZ", "GHz", 1e9}}};

/// Takes the next word off the front of `line`; empty at the end.
std::string_view nextWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line.remove_prefix(word.size());
    return word;
}

std::string upperCase(std::string_view word) {
    std::string upper(word);
    for (char& letter : upper) {
        if (letter >= 'a' && letter <= 'z') {
            letter = static_cast<char>(letter - 'a' + 'A');
        }
    }
    return upper;
}

/// `word` in quotes, fit for one line of a terminal.
std::string quoted(std::string_view word) {
    constexpr std::size_t kShown = 40;
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string text = "'";
    for (const char letter : word.substr(0, kShown)) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte >= 0x20 && byte < 0x7f) {
            text += letter;
        } else {
            text += {'\\', 'x', kHex[byte >> 4], kHex[byte & 15]};
        }
    }
    return text + (word.size() > kShown ? "...'" : "'");
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

/// Reads the text line by line. A point of an n-port is 1 + 2 n^2 numbers and begins on a new line.
class Parser {
public:
    Parser(std::string file, std::size_t ports) : file_(std::move(file)), pointSize_(1 + 2 * ports * ports) {
        result_.ports = ports;
        result_.parameters.resize(ports * ports);
    }

    Touchstone parse(std::string_view text);

private:
    void readLine(std::string_view line);
    void readOptions(std::string_view line);
    void readOption(const std::string& word, std::string_view shown, std::string_view& rest);
    void readReference(std::string_view word);
    void readNumbers(std::string_view line);

    void addNetworkLine();
    void addPoint();
    std::complex<double> parameterOf(double first, double second) const;
    bool beginsNoise() const;
    void addNoiseRow();
    void checkFrequency(double frequency, const std::vector<double>& before) const;

    template <class T>
    void setOnce(std::optional<T>& option, T value, const char* meaning);
    [[noreturn]] void fail(const std::string& what) const { fail(line_, what); }
    [[noreturn]] void fail(std::size_t line, const std::string& what) const {
        throw ReadError(file_, line, what);
    }
    [[noreturn]] void failCount(std::size_t line, std::size_t count) const;

    std::string file_;
    std::size_t pointSize_;
    std::size_t line_ = 0;
    std::size_t lastDataLine_ = 0;

    bool hasOptions_ = false;
    std::optional<FrequencyUnit> unit_;
    std::optional<char> parameter_;
    std::optional<Format> format_;
    std::optional<double> reference_;

    std::vector<double> numbers_;    ///< of the present line
    std::vector<double> point_;      ///< what is read of the present point
    std::size_t brokenPairLine_ = 0; ///< first line of the present point that breaks a pair of numbers, or 0
    Touchstone result_;
};

Touchstone Parser::parse(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    // Old systems closed a text with this byte.
    if (!text.empty() && text.back() == '\x1A') {
        text.remove_suffix(1);
    }
    while (!text.empty()) {
        ++line_;
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        readLine(text.substr(0, end));
        text.remove_prefix(end);
        text.remove_prefix(text.substr(0, 2) == "\r\n" ? 2 : std::min<std::size_t>(text.size(), 1));
    }
    if (!point_.empty()) {
        failCount(brokenPairLine_ != 0 ? brokenPairLine_ : lastDataLine_, point_.size());
    }
    if (result_.frequency.empty()) {
        fail(std::max<std::size_t>(line_, 1), "no network data");
    }
    return std::move(result_);
}

void Parser::readLine(std::string_view line) {
    if (line.find('\0') != line.npos) {
        fail("binary data, no text");
    }
    line = line.substr(0, line.find('!'));
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == line.npos) {
        return;
    }
    line.remove_prefix(first);
    if (line.front() == '#') {
        // Only the first option line counts.
        if (!hasOptions_) {
            readOptions(line.substr(1));
        }
        return;
    }
    readNumbers(line);
    if (!hasOptions_) {
        fail("data before the option line (# ...)");
    }
    if (!result_.noise.empty() || beginsNoise()) {
        addNoiseRow();
    } else {
        addNetworkLine();
    }
    lastDataLine_ = line_;
}

void Parser::readOptions(std::string_view line) {
    hasOptions_ = true;
    for (std::string_view word = nextWord(line); !word.empty(); word = nextWord(line)) {
        readOption(upperCase(word), word, line);
    }
    unit_ = unit_.value_or(kUnits.back());
    format_ = format_.value_or(Format::MagnitudeAngle);
    result_.unit = unit_->name;
    result_.parameter = parameter_.value_or(result_.parameter);
    result_.reference = reference_.value_or(result_.reference);
}

void Parser::readOption(const std::string& word, std::string_view shown, std::string_view& rest) {
    const auto unit = std::find_if(kUnits.begin(), kUnits.end(),
                                   [&](const FrequencyUnit& known) { return known.option == word; });
    if (unit != kUnits.end()) {
        setOnce(unit_, *unit, "frequency unit");
    } else if (word == "S" || word == "Y" || word == "Z" || word == "G" || word == "H") {
        setOnce(parameter_, word.front(), "kind of parameter");
    } else if (word == "MA") {
        setOnce(format_, Format::MagnitudeAngle, "number format");
    } else if (word == "DB") {
        setOnce(format_, Format::DecibelAngle, "number format");
    } else if (word == "RI") {
        setOnce(format_, Format::RealImaginary, "number format");
    } else if (word == "R") {
        readReference(nextWord(rest));
    } else {
        fail("unknown option " + quoted(shown));
    }
}

void Parser::readReference(std::string_view word) {
    if (word.empty()) {
        fail("option R without a resistance");
    }
    const std::optional<double> value = parseNumber(word);
    if (!value || !(*value > 0.0)) {
        fail("option R needs a resistance above 0, not " + quoted(word));
    }
    setOnce(reference_, *value, "reference resistance");
}

template <class T>
void Parser::setOnce(std::optional<T>& option, T value, const char* meaning) {
    if (option) {
        fail(std::string("more than one ") + meaning + " in the option line");
    }
    option = value;
}

void Parser::readNumbers(std::string_view line) {
    numbers_.clear();
    for (std::string_view word = nextWord(line); !word.empty(); word = nextWord(line)) {
        const std::optional<double> number = parseNumber(word);
        if (!number) {
            fail(
                (word.front() == '[' ? "a keyword of Touchstone 2: " : "a finite number belongs here, not ") +
                quoted(word));
        }
        numbers_.push_back(*number);
    }
}

/// Takes a line of a point. Values are counted, not lines; but the points of 1- and 2-ports are written on
/// one line, so there a pair of numbers may not be torn apart: three lines of a 1-port are no point of a
/// 2-port.
void Parser::addNetworkLine() {
    const bool continues = !point_.empty();
    if (!continues) {
        checkFrequency(numbers_.front(), result_.frequency);
    }
    const bool isOdd = numbers_.size() % 2 == 1;
    const bool keepsPairs = isOdd != continues;
    if (!keepsPairs && brokenPairLine_ == 0) {
        brokenPairLine_ = line_;
    }
    const std::size_t before = point_.size();
    point_.insert(point_.end(), numbers_.begin(), numbers_.end());
    if (point_.size() > pointSize_ || (!keepsPairs && result_.ports <= 2)) {
        // A further line with an odd count looks like the first of the next point: then the one before was
        // short.
        const bool nextBegins = continues && isOdd;
        const bool brokeEarlier = brokenPairLine_ != 0 && brokenPairLine_ != line_;
        failCount(brokeEarlier ? brokenPairLine_
                  : nextBegins ? lastDataLine_
                               : line_,
                  nextBegins ? before : point_.size());
    }
    if (point_.size() == pointSize_) {
        addPoint();
        point_.clear();
        brokenPairLine_ = 0;
    }
}

void Parser::addPoint() {
    const std::size_t ports = result_.ports;
    result_.frequency.push_back(point_.front());
    for (std::size_t row = 0; row < ports; ++row) {
        for (std::size_t column = 0; column < ports; ++column) {
            // The four of a 2-port stand in the order 11, 21, 12, 22.
            const std::size_t place = ports == 2 ? column * 2 + row : row * ports + column;
            result_.parameters[row * ports + column].push_back(
                parameterOf(point_[1 + 2 * place], point_[2 + 2 * place]));
        }
    }
}

std::complex<double> Parser::parameterOf(double first, double second) const {
    std::complex<double> value(first, second);
    if (*format_ != Format::RealImaginary) {
        constexpr double kRadiansPerDegree = 0.017453292519943295;
        const double magnitude = *format_ == Format::DecibelAngle ? std::pow(10.0, first / 20.0) : first;
        const double angle = second * kRadiansPerDegree;
        value = {magnitude * std::cos(angle), magnitude * std::sin(angle)};
    }
    if (!std::isfinite(std::abs(value))) {
        fail("magnitude too large");
    }
    return value;
}

/// The noise block shows itself by a frequency that does not rise and by rows of five numbers.
bool Parser::beginsNoise() const {
    return result_.ports == 2 && point_.empty() && !result_.frequency.empty() &&
           numbers_.size() == kNoiseNumbers && numbers_.front() <= result_.frequency.back();
}

void Parser::addNoiseRow() {
    NoiseColumns& noise = result_.noise;
    if (numbers_.size() != kNoiseNumbers) {
        fail("a row of noise data has 5 numbers, not " + std::to_string(numbers_.size()));
    }
    checkFrequency(numbers_[0], noise.frequency);
    if (!std::isfinite(numbers_[4] * result_.reference)) {
        fail("noise resistance too large");
    }
    noise.frequency.push_back(numbers_[0]);
    noise.minimumFigure.push_back(numbers_[1]);
    noise.magnitude.push_back(numbers_[2]);
    noise.angle.push_back(numbers_[3]);
    noise.resistance.push_back(numbers_[4]);
}

void Parser::checkFrequency(double frequency, const std::vector<double>& before) const {
    const auto shown = [&](double value) { return shortestText(value) + " " + result_.unit; };
    if (frequency < 0.0) {
        fail("frequency below 0: " + shown(frequency));
    }
    if (!std::isfinite(frequency * unit_->hertz)) {
        fail("frequency too large: " + shown(frequency));
    }
    if (!before.empty() && frequency <= before.back()) {
        fail("frequency does not increase: " + shown(frequency) + " after " + shown(before.back()));
    }
}

void Parser::failCount(std::size_t line, std::size_t count) const {
    fail(line, "a point of " + counted(result_.ports, "port") + " has " + std::to_string(pointSize_) +
                   " numbers, this one " + std::to_string(count));
}

std::string readWhole(const std::string& file) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (!fs::exists(status)) {
        throw ReadError(file, 0, error ? error.message() : "no such file");
    }
    if (!fs::is_regular_file(status)) {
        throw ReadError(file, 0, fs::is_directory(status) ? "is a directory" : "is no regular file");
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw ReadError(file, 0, errno != 0 ? std::strerror(errno) : "cannot be opened");
    }
    std::string text;
    std::array<char, 65536> buffer;
    while (stream.read(buffer.data(), buffer.size()) || stream.gcount() > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad()) {
        throw ReadError(file, 0, "cannot be read");
    }
    return text;
}

} // namespace

ReadError::ReadError(const std::string& file, std::size_t line, const std::string& what)
    : std::runtime_error(file + ":" + std::to_string(line) + ": " + what), line_(line) {}

std::size_t portsOf(const std::string& file) {
    const std::string upper = upperCase(file);
    const std::size_t dot = upper.find_last_of("./");
    const std::string extension = dot == upper.npos ? "" : upper.substr(dot);
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    const std::size_t digits = extension.size() < 4 ? 0 : extension.size() - 3;
    const bool isKnown = (digits == 1 || digits == 2) && extension[0] == '.' && extension[1] == 'S' &&
                         extension.back() == 'P' && extension[2] != '0' &&
                         std::all_of(extension.begin() + 2, extension.end() - 1, isDigit);
    if (!isKnown) {
        throw ReadError(file, 0, "no Touchstone file by its name, which must end in .s1p to .s99p");
    }
    return std::stoul(extension.substr(2, digits));
}

Touchstone parseTouchstone(std::string_view text, std::size_t ports, const std::string& file) {
    return Parser(file, ports).parse(text);
}

Touchstone readTouchstone(const std::string& file) {
    const std::size_t ports = portsOf(file);
    return parseTouchstone(readWhole(file), ports, file);
}

} // namespace measurement
