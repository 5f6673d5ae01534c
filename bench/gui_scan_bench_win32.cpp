// Runs one scan of drive C: in the program's real main window and prints how long it
// took and how many rows it listed. The window is the program's own, built by the same
// code as regvexlor.exe; only the click is made here.

#include <windows.h>

#include <chrono>
#include <cstdio>

#include "ui/program_win32.h"

int main() {
    regvex::ui::Program program;
    if (!program.Start(SW_SHOWNORMAL)) {
        std::fprintf(stderr, "the main window could not be created\n");
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    program.main_window().form().cmdStartStop_Click();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("rows %d\nscan seconds %.3f\n", program.main_window().results().RowCount(),
                seconds);
    return 0;
}
