#pragma once
// The ANSI code page that the running system is set to (CP_ACP).

#include "text/ansi_code_page.h"

namespace regvex::text {

class SystemAnsiCodePage final : public AnsiCodePage {
  public:
    std::string ToUtf8(std::string_view ansi) const override;
    bool FromUtf8(std::string_view utf8, std::string& ansi) const override;
    std::size_t AnsiLength(std::string_view utf8) const override;
    // The same for text already in UTF-16.
    static std::size_t AnsiLength(std::wstring_view wide);
};

}  // namespace regvex::text
