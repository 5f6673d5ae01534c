#include "ui/base/platform_services_win32.h"

#include <shellapi.h>

#include "system/general_date.h"
#include "text/wide_text_win32.h"
#include "ui/base/gdi_win32.h"

namespace regvex::ui {

namespace {

// How long a scan walks before the queue is looked at again: a message waiting there is
// handled within this much walking.
constexpr std::chrono::milliseconds kQueueLookInterval{5};

}  // namespace

float Win32Clock::SecondsSinceMidnight() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return static_cast<float>(now.wHour * 3600 + now.wMinute * 60 + now.wSecond) +
           static_cast<float>(now.wMilliseconds) / 1000.0f;
}

std::string Win32Clock::GeneralDateText() {
    return system::GeneralDateTextNow();
}

void Win32MessagePump::Handle(MSG& message) {
    if (!pretranslate_ || !pretranslate_(message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

int Win32MessagePump::Run() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        Handle(message);
    }
    return static_cast<int>(message.wParam);
}

void Win32MessagePump::DoEvents() {
    const auto now = std::chrono::steady_clock::now();
    if (now - looked_at_ < kQueueLookInterval) {
        return;
    }
    looked_at_ = now;
    if (!unprompted_pumps_.Due(now) && HIWORD(GetQueueStatus(QS_ALLINPUT)) == 0) {
        return;
    }
    MSG message{};
    bool quit = false;
    while (!quit && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            // Left for the program's own message loop to end on.
            PostQuitMessage(static_cast<int>(message.wParam));
            quit = true;
        } else {
            Handle(message);
        }
    }
    unprompted_pumps_.Done(now, std::chrono::steady_clock::now());
}

void Win32MessagePump::EndProcess() {
    ExitProcess(0);
}

void Win32Shell::OpenUrl(std::string_view url) {
    ShellExecuteW(owner_, L"open", text::ToWide(url).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

bool Win32Shell::ShowHelp(std::string_view chm_path) {
    return show_help_ && show_help_(owner_, chm_path);
}

ScreenMetrics Win32Screen::Metrics() {
    ScreenMetrics metrics;
    metrics.twips_per_pixel_x = 1440 / ScreenDpi(LOGPIXELSX);
    metrics.twips_per_pixel_y = 1440 / ScreenDpi(LOGPIXELSY);
    metrics.width_pixels = GetSystemMetrics(SM_CXSCREEN);
    metrics.height_pixels = GetSystemMetrics(SM_CYSCREEN);
    return metrics;
}

}  // namespace regvex::ui
