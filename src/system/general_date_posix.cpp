#include <clocale>
#include <ctime>

#include "system/general_date.h"

namespace regvex::system {

std::string GeneralDateTextNow() {
    // The user's locale, as a Windows program would follow the user's settings.
    std::setlocale(LC_TIME, "");
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const bool midnight = local.tm_hour == 0 && local.tm_min == 0 && local.tm_sec == 0;
    char text[128] = {};
    const std::size_t length = std::strftime(text, sizeof text, midnight ? "%x" : "%x %X", &local);
    return std::string(text, length);
}

}  // namespace regvex::system
