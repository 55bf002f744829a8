// Context added to an exception beside the nested exceptions of the standard library.

#include "Compare.h"

#include <zelm/errors/MoreInfoForException.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace Zelm::Bench {
namespace {

const std::string contexts[] = {"while reading the point", "while reading the sweep",
                                "while reading the document"};

struct MoreInfo {
    [[noreturn]] static void add(const std::string& context) { rethrow_with_more_info(context); }
};

struct Nested {
    [[noreturn]] static void add(const std::string& context) {
        std::throw_with_nested(std::runtime_error(context));
    }
};

/// Calls itself once for each level, fails at the lowest and adds the context of each level on the way up.
template <class Context>
[[gnu::noinline]] void failBelow(int levels) {
    if (levels == 0) {
        throw std::runtime_error("not a number: abc");
    }
    try {
        failBelow<Context>(levels - 1);
    } catch (...) {
        Context::add(contexts[levels - 1]);
    }
}

template <class Context>
auto throwThroughThreeLevels() {
    return [=] {
        try {
            failBelow<Context>(3);
        } catch (const std::exception& caught) {
            return std::string(caught.what());
        }
        return std::string();
    };
}

const Comparison threeLevels("context at 3 levels / std::throw_with_nested", 2.7,
                             throwThroughThreeLevels<MoreInfo>, throwThroughThreeLevels<Nested>, Anything());

} // namespace
} // namespace Zelm::Bench
