#pragma once
// The ignore-list window's controls as its code reaches them, over real windows.

#include <windows.h>

#include <string>
#include <string_view>

#include "ui/base/controls.h"

namespace regvex::ui::ignore {

// A label, button or frame.
class WinCaption final : public Captioned {
  public:
    explicit WinCaption(HWND window) : window_(window) {}
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    HWND window_;
};

class WinForm final : public Window {
  public:
    explicit WinForm(HWND window) : window_(window) {}
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;
    bool IsMinimized() const override;
    void Activate() override;

  private:
    HWND window_;
};

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

// A menu item, or the top-level menu by its position in the menu bar.
class WinMenuItem final : public MenuItem {
  public:
    WinMenuItem(HWND window, HMENU menu, UINT item, bool by_position)
        : window_(window), menu_(menu), item_(item), by_position_(by_position) {}
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    HWND window_;
    HMENU menu_;
    UINT item_;
    bool by_position_;
};

// The keys held with a mouse message as the list's handlers receive them: 1 shift,
// 2 ctrl, 4 alt.
int MouseShiftState(WPARAM wparam);

}  // namespace regvex::ui::ignore
