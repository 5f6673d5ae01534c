#include "ui/help/help_file.h"

#include <gtest/gtest.h>

#include <string>

namespace regvex::ui::help {
namespace {

TEST(HelpNotShownMessage, NamesTheFileAndTellsWhyItWasNotShown) {
    const std::string path = "C:\\Tools\\Vexlor\\regvexlor.chm";
    const std::string missing = HelpNotShownMessage(path, false);
    const std::string not_started = HelpNotShownMessage(path, true);

    EXPECT_NE(missing.find(path), std::string::npos);
    EXPECT_NE(missing.find("could not be found"), std::string::npos);
    EXPECT_NE(not_started.find(path), std::string::npos);
    EXPECT_EQ(not_started.find("could not be found"), std::string::npos);
}

}  // namespace
}  // namespace regvex::ui::help
