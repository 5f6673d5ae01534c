#pragma once
// The results and backups lists: report-style list views with check boxes.

#include <windows.h>

#include <array>
#include <string>
#include <vector>

#include "handles/unique_handle_win32.h"
#include "ui/base/controls.h"
#include "ui/base/pace.h"

namespace regvex::ui {

// A report-style list view with check boxes, one tooltip per column header.
class CheckListControl final : public CheckListView {
  public:
    CheckListControl() = default;
    CheckListControl(const CheckListControl&) = delete;
    CheckListControl& operator=(const CheckListControl&) = delete;

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
    // The widest text so far, measured as rows are added: a scan sizes the columns after
    // every row it adds, and the list view's own sizing measures every row again.
    void AutoSizeColumn(int column) override;
    void Refresh() override;

    // The header tooltips follow the columns' places.
    void UpdateColumnTips();
    // Makes a column wide enough for `sample` and a check box, in the list's font.
    void FitColumnTo(int column, std::string_view sample);
    // Shows the header's mouse moves to its tooltips; called for every queued message.
    void RelayToTips(const MSG& message) const;

    // The scan pauses: from now on the list is drawn at its pauses, at most once a
    // second and in no more than a fortieth of the scan's time, not for every row added.
    void AtPause(Pace::Clock::time_point now);
    // Draws the list now, and after every change from now on.
    void Release();

  private:
    struct ColumnState {
        ListColumn column;
        int widest = 0;
    };

    int TextWidth(const std::wstring& text);
    // Whether `text` is sure to be no wider than `width` in the list's font, without
    // measuring it.
    bool FitsWithoutMeasuring(const std::wstring& text, int width);
    HDC MeasuringDc();
    // A visible list view redraws itself for every row added, which a scan of thousands
    // of findings cannot afford: while a scan runs, drawing waits for its pauses.
    void HoldRedraw();
    void ResumeRedraw();

    HWND list_ = nullptr;
    HWND tooltip_ = nullptr;
    std::vector<ColumnState> columns_;
    std::vector<std::string> tags_;
    handles::UniqueDc measure_dc_;
    HFONT measured_font_ = nullptr;
    // The widths of that font's printable ASCII characters, ' ' to '~'; all 0 when unknown.
    std::array<INT, 95> ascii_widths_{};
    // Changes wait for the scan's pauses.
    bool held_ = false;
    bool redraw_held_ = false;
    Pace redraw_pace_{std::chrono::seconds(1), std::chrono::seconds(5), 39};
};

}  // namespace regvex::ui
