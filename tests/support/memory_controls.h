#pragma once
// The controls of a window, held in memory, for testing code-behind classes natively.

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "ui/base/controls.h"

namespace regvex::testing {

class MemoryCaption : public ui::Captioned {
  public:
    explicit MemoryCaption(std::string caption = {}) : caption_(std::move(caption)) {}
    std::string Caption() const override { return caption_; }
    void SetCaption(std::string_view caption) override {
        caption_ = std::string(caption);
        history.push_back(caption_);
    }
    std::vector<std::string> history;  // every caption set, in order

  private:
    std::string caption_;
};

class MemoryWindow final : public ui::Window {
  public:
    explicit MemoryWindow(std::string caption = {}) : caption_(std::move(caption)) {}
    std::string Caption() const override { return caption_; }
    void SetCaption(std::string_view caption) override {
        caption_ = std::string(caption);
        history.push_back(caption_);
    }
    bool IsMinimized() const override { return minimized; }
    void Activate() override { ++activations; }

    bool minimized = false;
    int activations = 0;
    std::vector<std::string> history;

  private:
    std::string caption_;
};

class MemoryOption final : public ui::OptionButton {
  public:
    bool Value() const override { return value_; }
    void SetValue(bool selected) override { value_ = selected; }

  private:
    bool value_ = false;
};

class MemoryProgressBar final : public ui::ProgressBar {
  public:
    int Max() const override { return max_; }
    void SetMax(int max) override { max_ = max; }
    int Value() const override { return value_; }
    void SetValue(int value) override {
        value_ = value;
        history.push_back(value);
    }
    std::vector<int> history;

  private:
    int max_ = 100;
    int value_ = 0;
};

class MemoryTextBox final : public ui::TextBox {
  public:
    std::string Text() const override { return text_; }
    void SetText(std::string_view text) override { text_ = std::string(text); }
    void SetFocus() override { ++focused; }
    void SetSelection(std::size_t start, std::size_t length) override {
        selection_start = start;
        selection_length = length;
    }
    int focused = 0;
    std::size_t selection_start = 0;
    std::size_t selection_length = 0;

  private:
    std::string text_;
};

class MemoryListBox final : public ui::ListBox {
  public:
    int ItemCount() const override { return static_cast<int>(items.size()); }
    std::string Item(int index) const override { return items.at(static_cast<std::size_t>(index)); }
    void AddItem(std::string_view text) override { items.emplace_back(text); }
    void RemoveItem(int index) override {
        items.erase(items.begin() + index);
        if (list_index >= ItemCount()) {
            list_index = -1;
        }
    }
    void Clear() override {
        items.clear();
        list_index = -1;
    }
    int ListIndex() const override { return list_index; }
    void SetListIndex(int index) override { list_index = index; }
    // Every character is 100 twips wide, unless the text's width is in the table.
    double TextWidthTwips(std::string_view text) const override {
        const auto it = widths.find(std::string(text));
        return it != widths.end() ? it->second : 100.0 * static_cast<double>(text.size());
    }
    void SetHorizontalExtent(int pixels) override {
        horizontal_extent = pixels;
        extents.push_back(pixels);
    }
    void ScrollToBottom() override { ++scrolled_to_bottom; }

    std::vector<std::string> items;
    int list_index = -1;
    int horizontal_extent = 0;
    std::vector<int> extents;  // every extent set, in order
    int scrolled_to_bottom = 0;
    std::map<std::string, double> widths;
};

class MemoryListView final : public ui::CheckListView {
  public:
    void AddColumn(const ui::ListColumn& column) override { columns.push_back(column); }
    int ColumnCount() const override { return static_cast<int>(columns.size()); }
    int RowCount() const override { return static_cast<int>(rows.size()); }
    void AddRow(const std::vector<std::string>& texts) override {
        Row row;
        row.texts = texts;
        row.texts.resize(std::max<std::size_t>(texts.size(), columns.size()));
        rows.push_back(std::move(row));
    }
    void Clear() override {
        rows.clear();
        selected = -1;
    }
    std::string Text(int row, int column) const override {
        return rows.at(static_cast<std::size_t>(row)).texts.at(static_cast<std::size_t>(column));
    }
    void SetText(int row, int column, std::string_view text) override {
        rows.at(static_cast<std::size_t>(row)).texts.at(static_cast<std::size_t>(column)) = text;
    }
    bool Checked(int row) const override { return rows.at(static_cast<std::size_t>(row)).checked; }
    void SetChecked(int row, bool checked) override {
        rows.at(static_cast<std::size_t>(row)).checked = checked;
    }
    int SelectedRow() const override { return selected; }
    std::string Tag(int row) const override { return rows.at(static_cast<std::size_t>(row)).tag; }
    void SetTag(int row, std::string_view tag) override {
        rows.at(static_cast<std::size_t>(row)).tag = std::string(tag);
    }
    void AutoSizeColumn(int column) override { autosized.push_back(column); }
    void Refresh() override { ++refreshed; }

    struct Row {
        std::vector<std::string> texts;
        bool checked = false;
        std::string tag;
    };
    std::vector<ui::ListColumn> columns;
    std::vector<Row> rows;
    int selected = -1;
    std::vector<int> autosized;
    int refreshed = 0;
};

class MemoryDriveList final : public ui::DriveList {
  public:
    explicit MemoryDriveList(std::string text = "c: [SYSTEM]") : drive(std::move(text)) {}
    std::string Drive() const override { return drive; }
    std::string drive;
};

}  // namespace regvex::testing
