#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>

/// The variables of this process and, behind them, values that hold for the whole machine. All calls may be
/// made by several threads at once.
///
/// Names are case-sensitive here. One that is empty or has a '=' or a NUL in it is never set; one that is no
/// UTF-8 throws the exceptions of `convertZStringToUtf16`. Values are handed over as the bytes that they are.
///
/// The machine's values are files of the directory /etc/zelm/registry/SOFTWARE/Tornvale/Orvane/4.70/tvenv,
/// each named as its variable: the text up to the first carriage return, newline or NUL is the value. Links,
/// anything but regular files and those with more than 1 MiB do not count, nor do names with a '/'. The
/// directory is opened at the first look at it, once for the life of the process, also if it is missing.
namespace Zelm::Environment {

/// The value of a variable, empty if it is not set.
ZELM_EXPORT ZString getenv_zstring(const ZString& name);
/// Whether the variable is set, if only to an empty text. `value` changes only if it is.
ZELM_EXPORT bool getenv_zstring_allow_empty(const ZString& name, ZString* value);

/// The same two, with the machine's value where the variable is not set.
ZELM_EXPORT ZString getenv_check_registry_zstring(const ZString& name);
ZELM_EXPORT bool getenv_check_registry_zstring_allow_empty(const ZString& name, ZString* value);

/// Sets a variable for this process and those that it will start, to an empty text too. Throws an exception
/// derived from `std::bad_alloc`, "bad allocation", if the system refuses for whatever reason.
ZELM_EXPORT void putenv_zstring(const ZString& name, const ZString& value);

} // namespace Zelm::Environment
