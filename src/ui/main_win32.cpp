// The program's entry point.

#include <windows.h>

#include <exception>

#include "ui/program_win32.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int show) {
    try {
        regvex::ui::Program program;
        if (!program.Start(show)) {
            return 1;
        }
        return program.Run();
    } catch (const std::exception&) {
        return 1;
    }
}
