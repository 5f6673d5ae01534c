#pragma once
// The ignore-list window's own kinds of control, over real windows; its captions, form and
// menus are the shared ones (win32_controls_win32).

#include <windows.h>

#include <string>
#include <string_view>

#include "ui/base/controls.h"

namespace regvex::ui::ignore {

class WinTextBox final : public TextBox {
  public:
    explicit WinTextBox(HWND edit) : edit_(edit) {}
    std::string Text() const override;
    void SetText(std::string_view text) override;
    // Throws when the text box cannot take the focus (its window is hidden).
    void SetFocus() override;
    void SetSelection(std::size_t start, std::size_t length) override;

  private:
    HWND edit_;
};

class WinListBox final : public ListBox {
  public:
    explicit WinListBox(HWND list) : list_(list) {}
    int ItemCount() const override;
    std::string Item(int index) const override;
    void AddItem(std::string_view text) override;
    void RemoveItem(int index) override;
    void Clear() override;
    int ListIndex() const override;
    void SetListIndex(int index) override;
    double TextWidthTwips(std::string_view text) const override;
    void SetHorizontalExtent(int pixels) override;
    void ScrollToBottom() override;

  private:
    HWND list_;
};

// The keys held with a mouse message as the list's handlers receive them: 1 shift,
// 2 ctrl, 4 alt.
int MouseShiftState(WPARAM wparam);

}  // namespace regvex::ui::ignore
