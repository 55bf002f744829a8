#include <zelm/errors/StandardExceptions.h>

#include <zelm/errors/MoreInfoForException.h>

#include <functional>
#include <future>
#include <ios>
#include <memory>
#include <new>
#include <regex>
#include <stdexcept>
#include <system_error>
#include <typeinfo>

// The standard types below `std::exception` that are kept, in the order in which they are tried: each one
// precedes its bases.
// clang-format off
#define ZELM_FOR_EACH_STANDARD_EXCEPTION(apply) \
    apply(std::invalid_argument)                \
    apply(std::domain_error)                    \
    apply(std::length_error)                    \
    apply(std::out_of_range)                    \
    apply(std::future_error)                    \
    apply(std::logic_error)                     \
    apply(std::range_error)                     \
    apply(std::overflow_error)                  \
    apply(std::underflow_error)                 \
    apply(std::regex_error)                     \
    apply(std::ios_base::failure)               \
    apply(std::system_error)                    \
    apply(std::runtime_error)                   \
    apply(std::bad_typeid)                      \
    apply(std::bad_cast)                        \
    apply(std::bad_weak_ptr)                    \
    apply(std::bad_function_call)               \
    apply(std::bad_array_new_length)            \
    apply(std::bad_alloc)                       \
    apply(std::bad_exception)
// clang-format on

namespace Zelm {

#define ZELM_INSTANTIATE(T) template class ExceptionWithMoreInfo<T>;
ZELM_FOR_EACH_STANDARD_EXCEPTION(ZELM_INSTANTIATE)
ZELM_INSTANTIATE(std::exception)
#undef ZELM_INSTANTIATE

namespace {

template <class T>
void throwIfFits(const std::exception& caught, const std::string& info) {
    if (const auto* fitting = dynamic_cast<const T*>(&caught)) {
        throw ExceptionWithMoreInfo<T>(*fitting, info);
    }
}

} // namespace

void details::throwStandardWithMoreInfo(const std::exception& caught, const std::string& info) {
#define ZELM_THROW_IF_FITS(T) throwIfFits<T>(caught, info);
    ZELM_FOR_EACH_STANDARD_EXCEPTION(ZELM_THROW_IF_FITS)
#undef ZELM_THROW_IF_FITS
    throw ExceptionWithMoreInfo<std::exception>(caught, info);
}

} // namespace Zelm
