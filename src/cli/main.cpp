#include <iostream>

#include "cli/cli.h"

int main(int argc, char** argv) {
    using namespace regvex::cli;
    PrepareConsole();
    auto platform = MakeSystemPlatform();
    return RunCli(Utf8Arguments(argc, argv), std::cout, std::cerr, *platform);
}
