#pragma once
// Services of the platform, scripted for tests: message boxes answered from a queue and
// recorded, a clock that tests set, text files in memory.

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ui/base/services.h"

namespace regvex::testing {

class ScriptedDialogs final : public ui::MessageDialogs {
  public:
    struct Shown {
        std::string prompt;
        int style = 0;
        std::string title;
        bool coloured = false;  // a colour set-up came before it
    };

    void SetMessageBoxColors(ui::DialogColor text, ui::DialogColor back, ui::DialogColor edit_text,
                             ui::DialogColor edit_back) override {
        colours_pending_ = true;
        last_colors = {text, back, edit_text, edit_back};
    }
    int MsgBox(std::string_view prompt, int style, std::string_view title) override {
        shown.push_back({std::string(prompt), style, std::string(title), colours_pending_});
        colours_pending_ = false;
        if (on_show) {
            on_show(shown.back());
        }
        if (answers.empty()) {
            return (style & ui::mb::kYesNo) == ui::mb::kYesNo ? ui::mb::kYes : ui::mb::kOk;
        }
        const int answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::vector<Shown> shown;
    std::deque<int> answers;  // answered in order; when empty: Yes, or OK
    std::vector<ui::DialogColor> last_colors;
    std::function<void(const Shown&)> on_show;

  private:
    bool colours_pending_ = false;
};

class ScriptedClock final : public ui::Clock {
  public:
    float SecondsSinceMidnight() override { return now; }
    std::string GeneralDateText() override { return date_text; }
    float now = 12 * 3600.0f;
    std::string date_text = "6/3/2013 4:05:06 PM";
};

class MemoryTextFiles final : public ui::TextFiles {
  public:
    bool Exists(const std::string& path) override { return files.count(path) != 0; }
    std::optional<std::string> Read(const std::string& path) override {
        auto it = files.find(path);
        if (it == files.end()) {
            return std::nullopt;
        }
        return it->second;
    }
    bool Write(const std::string& path, std::string_view bytes) override {
        if (read_only.count(path) != 0) {
            return false;
        }
        files[path] = std::string(bytes);
        return true;
    }
    std::map<std::string, std::string> files;
    std::map<std::string, bool> read_only;
};

}  // namespace regvex::testing
