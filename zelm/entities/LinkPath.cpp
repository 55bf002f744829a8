#include <zelm/entities/LinkPath.h>

#include <algorithm>
#include <string>

namespace Zelm {

namespace Private {

std::vector<ZStringView> pathParts(ZStringView path) {
    std::vector<ZStringView> parts;
    const char* const end = path.data() + path.size();
    for (const char* at = path.data(); at != end;) {
        const char* const slash = std::find(at, end, '/');
        parts.emplace_back(at, static_cast<std::size_t>(slash - at));
        at = slash == end ? end : slash + 1;
    }
    return parts;
}

} // namespace Private

ZString GetRelativePath(const ZString& from, const ZString& to) {
    const std::vector<ZStringView> start = Private::pathParts(from);
    const std::vector<ZStringView> goal = Private::pathParts(to);
    const auto [up, down] = std::mismatch(start.begin(), start.end(), goal.begin(), goal.end());

    std::string rest;
    for (auto part = down; part != goal.end(); ++part) {
        if (part != down) {
            rest += '/';
        }
        rest.append(part->data(), part->size());
    }
    std::string path;
    for (auto part = up; part != start.end(); ++part) {
        path += path.empty() ? ".." : "/..";
    }
    if (!path.empty() && !rest.empty()) {
        path += '/';
    }
    return ZString(path + rest);
}

} // namespace Zelm
