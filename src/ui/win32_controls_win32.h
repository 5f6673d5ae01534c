#pragma once
// The control interfaces over real windows.

#include <windows.h>

#include <string>
#include <vector>

#include "ui/controls.h"

namespace regvex::ui {

// The text of a window: labels, buttons, frames, the form itself.
class WindowText : public Captioned {
  public:
    explicit WindowText(HWND window = nullptr) : window_(window) {}
    void Attach(HWND window) { window_ = window; }
    HWND hwnd() const { return window_; }
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    HWND window_;
};

class FormWindow final : public Window {
  public:
    void Attach(HWND window) { text_.Attach(window); }
    std::string Caption() const override { return text_.Caption(); }
    void SetCaption(std::string_view caption) override { text_.SetCaption(caption); }
    bool IsMinimized() const override;
    void Activate() override;

  private:
    WindowText text_;
};

class MenuItemText final : public Captioned {
  public:
    void Attach(HMENU menu, UINT id) {
        menu_ = menu;
        id_ = id;
    }
    std::string Caption() const override;
    void SetCaption(std::string_view caption) override;

  private:
    HMENU menu_ = nullptr;
    UINT id_ = 0;
};

class RadioButton final : public OptionButton {
  public:
    void Attach(HWND window) { window_ = window; }
    bool Value() const override;
    void SetValue(bool selected) override;

  private:
    HWND window_ = nullptr;
};

class ProgressControl final : public ProgressBar {
  public:
    void Attach(HWND window) { window_ = window; }
    int Max() const override { return max_; }
    void SetMax(int max) override;
    int Value() const override { return value_; }
    void SetValue(int value) override;

  private:
    HWND window_ = nullptr;
    int max_ = 100;
    int value_ = 0;
};

// A report-style list view with check boxes, one tooltip per column header.
class CheckListControl final : public CheckListView {
  public:
    void Attach(HWND list, HWND tooltip);
    HWND hwnd() const { return list_; }

    void AddColumn(const ListColumn& column) override;
    int ColumnCount() const override { return static_cast<int>(columns_.size()); }
    int RowCount() const override;
    void AddRow(const std::vector<std::string>& texts) override;
    void Clear() override;
    std::string Text(int row, int column) const override;
    void SetText(int row, int column, std::string_view text) override;
    bool Checked(int row) const override;
    void SetChecked(int row, bool checked) override;
    int SelectedRow() const override;
    std::string Tag(int row) const override;
    void SetTag(int row, std::string_view tag) override;
    // The widest text so far, measured only for the rows added since the last call:
    // a scan sizes the columns after every row it adds.
    void AutoSizeColumn(int column) override;
    void Refresh() override;

    // The header tooltips follow the columns' places.
    void UpdateColumnTips();
    // Makes a column wide enough for `sample` and a check box, in the list's font.
    void FitColumnTo(int column, std::string_view sample);

  private:
    struct ColumnState {
        ListColumn column;
        int widest = 0;
        int measured_rows = 0;
    };

    HWND list_ = nullptr;
    HWND tooltip_ = nullptr;
    std::vector<ColumnState> columns_;
    std::vector<std::string> tags_;
};

// The drive selector: the system's drives as "c: [LABEL]".
class DriveCombo final : public DriveList {
  public:
    void Attach(HWND combo) { combo_ = combo; }
    // Fills the list and selects the system drive.
    void Fill();
    std::string Drive() const override;

  private:
    HWND combo_ = nullptr;
};

}  // namespace regvex::ui
