#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringView.h>

#include <vector>

namespace Zelm {

/// The way from one entity path to another: ".." for each part of `from` that `to` does not share, then the
/// rest of `to`. "/a/link" to "/a/x" is "../x". Parts are compared with case; nothing is normalised.
ZELM_EXPORT ZString GetRelativePath(const ZString& from, const ZString& to);

namespace Private {

/// The parts of a path between its slashes, as views of it. A slash at the very end is followed by no part;
/// the text before a leading slash is an empty one.
ZELM_EXPORT std::vector<ZStringView> pathParts(ZStringView path);

} // namespace Private

} // namespace Zelm
