#pragma once
// The platform as the windows' code-behind reaches it. Windows implements these for
// real; tests script them (answer message boxes, move the clock, count pumps).

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace regvex::ui {

// A colour as Windows keeps it: 0x00BBGGRR.
using ColorRef = std::uint32_t;

constexpr ColorRef Rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<ColorRef>(red) | static_cast<ColorRef>(green) << 8 |
           static_cast<ColorRef>(blue) << 16;
}

// Message box styles and answers: the platform's own numbers.
namespace mb {
inline constexpr int kOkOnly = 0;
inline constexpr int kYesNo = 4;
inline constexpr int kCritical = 16;
inline constexpr int kQuestion = 32;
inline constexpr int kExclamation = 48;
inline constexpr int kInformation = 64;

inline constexpr int kOk = 1;
inline constexpr int kYes = 6;
inline constexpr int kNo = 7;
}  // namespace mb

// One argument of the colour set-up of the next message box: missing, a colour, a
// picture (its bitmap), or a value of any other kind.
struct DialogColor {
    enum class Kind { kMissing, kColor, kPicture, kOther };
    Kind kind = Kind::kMissing;
    ColorRef color = 0;
    std::uintptr_t bitmap = 0;

    static DialogColor Missing() { return {}; }
    static DialogColor Color(ColorRef c) { return {Kind::kColor, c, 0}; }
    static DialogColor Picture(std::uintptr_t b) { return {Kind::kPicture, 0, b}; }
    static DialogColor Other() { return {Kind::kOther, 0, 0}; }
};

class MessageDialogs {
  public:
    virtual ~MessageDialogs() = default;
    // Colours the next message box (text, background, edit text, edit background).
    virtual void SetMessageBoxColors(DialogColor text, DialogColor back, DialogColor edit_text,
                                     DialogColor edit_back) = 0;
    // Shows a standard message box and answers the button chosen (mb::kOk, kYes, kNo).
    virtual int MsgBox(std::string_view prompt, int style, std::string_view title) = 0;
};

// The program's way of showing every message: black text on the theme colour.
int ShowMessage(MessageDialogs& dialogs, ColorRef theme, std::string_view prompt, int style,
                std::string_view title);

// A run-time error that no handler of the program catches, as the user sees it:
// "Run-time error '75':", an empty line and what went wrong.
std::string RunTimeErrorText(int number, std::string_view description);
// Shows such an error in a critical box titled with the program's name; the program goes
// on, with everything the user had.
void ShowRunTimeError(MessageDialogs& dialogs, ColorRef theme, const std::exception& error);

class Clock {
  public:
    virtual ~Clock() = default;
    // Seconds since midnight, local time, in single precision as the program keeps it.
    virtual float SecondsSinceMidnight() = 0;
    // Now, in the user's general date form ("6/3/2013 4:05:06 PM").
    virtual std::string GeneralDateText() = 0;
};

class MessagePump {
  public:
    virtual ~MessagePump() = default;
    // Lets the program's windows handle the messages waiting for them, then returns. Called
    // at every step of a long walk, it may leave them to a call a few milliseconds on.
    virtual void DoEvents() = 0;
    // Ends the process at once.
    virtual void EndProcess() = 0;
};

class Shell {
  public:
    virtual ~Shell() = default;
    // Opens a web address in the default browser.
    virtual void OpenUrl(std::string_view url) = 0;
    // Shows the compiled help file; false when it cannot be shown.
    virtual bool ShowHelp(std::string_view chm_path) = 0;
};

struct ScreenMetrics {
    int twips_per_pixel_x = 15;
    int twips_per_pixel_y = 15;
    int width_pixels = 1024;
    int height_pixels = 768;
};

class Screen {
  public:
    virtual ~Screen() = default;
    virtual ScreenMetrics Metrics() = 0;
};

// Text files beside the program.
class TextFiles {
  public:
    virtual ~TextFiles() = default;
    virtual bool Exists(const std::string& path) = 0;
    // The file's bytes, or nothing when it cannot be read.
    virtual std::optional<std::string> Read(const std::string& path) = 0;
    // Creates or truncates the file; false when it cannot be written.
    virtual bool Write(const std::string& path, std::string_view bytes) = 0;
};

}  // namespace regvex::ui
