#pragma once
// The controls that the windows' code-behind classes reach. The Windows views implement
// them over real controls; tests implement them in memory. Texts are UTF-8.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace regvex::ui {

class Captioned {
  public:
    virtual ~Captioned() = default;
    virtual std::string Caption() const = 0;
    virtual void SetCaption(std::string_view caption) = 0;
};

// Labels, buttons, frames and menu items are captions and nothing more to the code.
using Label = Captioned;
using Button = Captioned;
using MenuItem = Captioned;

class OptionButton {
  public:
    virtual ~OptionButton() = default;
    virtual bool Value() const = 0;
    virtual void SetValue(bool selected) = 0;
};

class ProgressBar {
  public:
    virtual ~ProgressBar() = default;
    virtual int Max() const = 0;
    virtual void SetMax(int max) = 0;
    virtual int Value() const = 0;
    virtual void SetValue(int value) = 0;
};

class TextBox {
  public:
    virtual ~TextBox() = default;
    virtual std::string Text() const = 0;
    virtual void SetText(std::string_view text) = 0;
    virtual void SetFocus() = 0;
    // Selection in characters, as the caret sees them.
    virtual void SetSelection(std::size_t start, std::size_t length) = 0;
};

class ListBox {
  public:
    virtual ~ListBox() = default;
    virtual int ItemCount() const = 0;
    virtual std::string Item(int index) const = 0;
    virtual void AddItem(std::string_view text) = 0;
    virtual void RemoveItem(int index) = 0;
    virtual void Clear() = 0;
    // The selected item, or -1.
    virtual int ListIndex() const = 0;
    virtual void SetListIndex(int index) = 0;
    // Width of a text in twips, measured in the font of the list's parent window.
    virtual double TextWidthTwips(std::string_view text) const = 0;
    virtual void SetHorizontalExtent(int pixels) = 0;
    virtual void ScrollToBottom() = 0;
};

struct ListColumn {
    std::string caption;
    std::string key;
    std::string tooltip;
};

// A list view with a check box per row.
class CheckListView {
  public:
    virtual ~CheckListView() = default;
    virtual void AddColumn(const ListColumn& column) = 0;
    virtual int ColumnCount() const = 0;
    virtual int RowCount() const = 0;
    // The row's main text and its subitems, in column order; rows are added unchecked.
    virtual void AddRow(const std::vector<std::string>& texts) = 0;
    virtual void Clear() = 0;
    // Column 0 is the row's main text.
    virtual std::string Text(int row, int column) const = 0;
    virtual void SetText(int row, int column, std::string_view text) = 0;
    virtual bool Checked(int row) const = 0;
    virtual void SetChecked(int row, bool checked) = 0;
    // The selected row, or -1.
    virtual int SelectedRow() const = 0;
    // A hidden text carried by the row.
    virtual std::string Tag(int row) const = 0;
    virtual void SetTag(int row, std::string_view tag) = 0;
    // Sizes a column to its widest text.
    virtual void AutoSizeColumn(int column) = 0;
    virtual void Refresh() = 0;
};

// The drive selector: its text starts with the drive letter and a colon ("c: [SYSTEM]").
class DriveList {
  public:
    virtual ~DriveList() = default;
    virtual std::string Drive() const = 0;
};

// What the code of a window needs of the window itself.
class Window : public Captioned {
  public:
    virtual bool IsMinimized() const = 0;
    // Brings the window to the front and gives it the focus.
    virtual void Activate() = 0;
};

}  // namespace regvex::ui
