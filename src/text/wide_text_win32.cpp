#include "text/wide_text_win32.h"

#include "text/utf8.h"

namespace regvex::text {

// On Windows wchar_t is the UTF-16 code unit; the copies below rely on that.
static_assert(sizeof(wchar_t) == sizeof(char16_t));

std::wstring ToWide(std::string_view utf8) {
    const std::u16string utf16 = Utf8ToUtf16(utf8);
    return std::wstring(utf16.begin(), utf16.end());
}

std::string FromWide(std::wstring_view wide) {
    return Utf16ToUtf8(std::u16string(wide.begin(), wide.end()));
}

}  // namespace regvex::text
