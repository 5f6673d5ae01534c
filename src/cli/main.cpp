#include <iostream>

#include "cli/cli.h"

int main(int argc, char** argv) {
    using namespace regvex::cli;
    // The streams buffer for themselves instead of going through C's stdio one call at a
    // time; the command line does not mix the two.
    std::ios::sync_with_stdio(false);
    PrepareConsole();
    auto platform = MakeSystemPlatform();
    return RunCli(Utf8Arguments(argc, argv), std::cout, std::cerr, *platform);
}
