#include "ui/info/clipboard_win32.h"

#include <cstring>
#include <string>

#include "handles/unique_handle_win32.h"
#include "text/wide_text_win32.h"

namespace regvex::ui {

namespace {

struct GlobalFreeCloser {
    void operator()(HGLOBAL memory) const { GlobalFree(memory); }
};
using UniqueGlobal = handles::Unique<HGLOBAL, GlobalFreeCloser>;

// The clipboard is the whole system's: it is open for one window at a time, and is
// closed again whatever happens.
class OpenedClipboard {
  public:
    explicit OpenedClipboard(HWND owner) : open_(OpenClipboard(owner) != FALSE) {}
    ~OpenedClipboard() {
        if (open_) {
            CloseClipboard();
        }
    }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;
    explicit operator bool() const { return open_; }

  private:
    bool open_;
};

}  // namespace

std::wstring WithCrLf(std::string_view text) {
    std::wstring out;
    const std::wstring wide = text::ToWide(text);
    out.reserve(wide.size() + wide.size() / 16);
    for (const wchar_t c : wide) {
        if (c == L'\n') {
            out.push_back(L'\r');
        }
        out.push_back(c);
    }
    return out;
}

bool Win32Clipboard::SetText(std::string_view text) {
    const std::wstring wide = WithCrLf(text);
    const std::size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    UniqueGlobal memory(GlobalAlloc(GMEM_MOVEABLE, bytes));
    if (!memory) {
        return false;
    }
    void* target = GlobalLock(memory.get());
    if (target == nullptr) {
        return false;
    }
    std::memcpy(target, wide.c_str(), bytes);
    GlobalUnlock(memory.get());

    const OpenedClipboard clipboard(owner_);
    if (!clipboard || EmptyClipboard() == FALSE) {
        return false;
    }
    if (SetClipboardData(CF_UNICODETEXT, memory.get()) == nullptr) {
        return false;
    }
    // The system's now.
    memory.Release();
    return true;
}

}  // namespace regvex::ui
