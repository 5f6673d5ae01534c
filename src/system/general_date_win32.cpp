#include <windows.h>

#include "system/general_date.h"
#include "text/wide_text_win32.h"

namespace regvex::system {

namespace {

template <typename Format>
std::wstring Formatted(Format format) {
    const int length = format(nullptr, 0);
    if (length <= 0) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    const int written = format(text.data(), length);
    text.resize(written > 0 ? static_cast<std::size_t>(written - 1) : 0);
    return text;
}

}  // namespace

std::string GeneralDateTextNow() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    std::wstring text = Formatted([&](wchar_t* out, int size) {
        return GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &now, nullptr, out, size);
    });
    if (now.wHour != 0 || now.wMinute != 0 || now.wSecond != 0) {
        text += L' ';
        text += Formatted([&](wchar_t* out, int size) {
            return GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &now, nullptr, out, size);
        });
    }
    return text::FromWide(text);
}

}  // namespace regvex::system
