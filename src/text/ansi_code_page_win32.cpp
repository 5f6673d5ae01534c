#include "text/ansi_code_page_win32.h"

#include <windows.h>

#include <climits>
#include <string>

#include "text/wide_text_win32.h"

namespace regvex::text {

namespace {

// The conversion calls count in int; texts beyond that are not the files this reads.
int CountAsInt(std::size_t count) {
    return count > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(count);
}

}  // namespace

std::string SystemAnsiCodePage::ToUtf8(std::string_view ansi) const {
    if (ansi.empty()) {
        return {};
    }
    const int length = CountAsInt(ansi.size());
    const int wide_length = MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, nullptr, 0);
    if (wide_length <= 0) {
        return {};
    }
    std::wstring wide(static_cast<std::size_t>(wide_length), L'\0');
    MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, wide.data(), wide_length);
    return FromWide(wide);
}

bool SystemAnsiCodePage::FromUtf8(std::string_view utf8, std::string& ansi) const {
    ansi.clear();
    if (utf8.empty()) {
        return true;
    }
    const std::wstring wide = ToWide(utf8);
    // A system set to UTF-8 as its ANSI code page refuses the used-default flag, and
    // loses nothing anyway.
    if (GetACP() == CP_UTF8) {
        ansi = FromWide(wide);
        return true;
    }
    const int wide_length = CountAsInt(wide.size());
    // Without WC_NO_BEST_FIT_CHARS "ā" would quietly become "a": a different text that
    // the flag below would not report.
    const DWORD flags = WC_NO_BEST_FIT_CHARS;
    const int length =
        WideCharToMultiByte(CP_ACP, flags, wide.data(), wide_length, nullptr, 0, "?", nullptr);
    if (length <= 0) {
        return false;
    }
    ansi.assign(static_cast<std::size_t>(length), '\0');
    BOOL used_default = FALSE;
    WideCharToMultiByte(CP_ACP, flags, wide.data(), wide_length, ansi.data(), length, "?",
                        &used_default);
    return used_default == FALSE;
}

std::size_t SystemAnsiCodePage::AnsiLength(std::string_view utf8) const {
    return AnsiLength(ToWide(utf8));
}

std::size_t SystemAnsiCodePage::AnsiLength(std::wstring_view wide) {
    if (wide.empty()) {
        return 0;
    }
    // No flags: the registry's own conversion counts every unmappable unit as the
    // default character, as this does.
    const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), CountAsInt(wide.size()), nullptr,
                                           0, nullptr, nullptr);
    return length > 0 ? static_cast<std::size_t>(length) : wide.size();
}

}  // namespace regvex::text
