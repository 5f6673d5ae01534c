#pragma once
// Services of the platform, scripted for tests: message boxes answered from a queue and
// recorded, a clock that tests set, text files in memory, a shell that records what it
// was asked to open.

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

    std::vector<std::string> Prompts() const {
        std::vector<std::string> prompts;
        for (const auto& box : shown) {
            prompts.push_back(box.prompt);
        }
        return prompts;
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

// Counts writes, so that a rewrite changing nothing can be seen.
class MemoryTextFiles final : public ui::TextFiles {
  public:
    bool Exists(const std::string& path) override { return files.count(path) != 0; }
    std::optional<std::string> Read(const std::string& path) override {
        auto it = files.find(path);
        if (it == files.end() || unreadable) {
            return std::nullopt;
        }
        return it->second;
    }
    bool Write(const std::string& path, std::string_view bytes) override {
        ++writes;
        if (read_only.count(path) != 0) {
            return false;
        }
        files[path] = std::string(bytes);
        return true;
    }
    std::map<std::string, std::string> files;
    std::map<std::string, bool> read_only;
    int writes = 0;
    bool unreadable = false;
};

class RecordingShell final : public ui::Shell {
  public:
    void OpenUrl(std::string_view url) override { urls.emplace_back(url); }
    bool ShowHelp(std::string_view path) override {
        help.emplace_back(path);
        return help_available;
    }
    std::vector<std::string> urls;
    std::vector<std::string> help;
    bool help_available = true;
};

}  // namespace regvex::testing
