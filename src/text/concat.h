#pragma once
// Joins texts in one allocation. Also keeps clear of `"literal" + std::string`, which
// GCC 12 misreads as an overlapping copy (its bug 105329) when warnings are errors.

#include <initializer_list>
#include <string>
#include <string_view>

namespace regvex::text {

inline std::string Concat(std::initializer_list<std::string_view> parts) {
    std::size_t size = 0;
    for (const std::string_view part : parts) {
        size += part.size();
    }
    std::string joined;
    joined.reserve(size);
    for (const std::string_view part : parts) {
        joined.append(part);
    }
    return joined;
}

}  // namespace regvex::text
