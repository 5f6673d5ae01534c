// The help as the user gets it: its sources hang together, need nothing from outside, and
// the compiled file holds every page.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "ui/help/help_file.h"

namespace regvex::ui::help {
namespace {

namespace fs = std::filesystem;

const fs::path kContent = REGVEX_HELP_CONTENT_DIR;
const std::string kCompiledHelp = REGVEX_HELP_CHM;
const std::string kProject = "regvexlor.hhp";
const std::string kContents = "regvexlor.hhc";
const std::string kIndex = "regvexlor.hhk";

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The names of the files in the help's source folder.
std::vector<std::string> SourceFiles() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(kContent)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> Pages() {
    std::vector<std::string> pages;
    for (const std::string& name : SourceFiles()) {
        if (EndsWith(name, ".htm")) {
            pages.push_back(name);
        }
    }
    return pages;
}

// The lines of one section of the project file, such as "FILES" or "OPTIONS".
std::vector<std::string> ProjectSection(const std::string& section) {
    std::vector<std::string> lines;
    std::ifstream in(kContent / kProject);
    bool inside = false;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty() && line.front() == '[') {
            inside = line == "[" + section + "]";
        } else if (inside && !line.empty()) {
            lines.push_back(line);
        }
    }
    return lines;
}

// Every address that a file refers to: links and pictures of the pages, the topics of the
// contents and of the index.
std::vector<std::string> References(const std::string& text) {
    static const std::regex reference(
        R"re((?:\b(?:href|src)\s*=\s*"([^"]*)")|(?:<param\s+name="Local"\s+value="([^"]*)"))re",
        std::regex::icase);
    std::vector<std::string> found;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), reference);
         match != std::sregex_iterator(); ++match) {
        found.push_back((*match)[1].matched ? (*match)[1].str() : (*match)[2].str());
    }
    return found;
}

std::vector<std::string> FilesWithReferences() {
    std::vector<std::string> files = Pages();
    files.push_back(kContents);
    files.push_back(kIndex);
    return files;
}

TEST(HelpSources, EveryPageAndTheStyleSheetAreCompiled) {
    const std::vector<std::string> listed = ProjectSection("FILES");
    for (const std::string& name : SourceFiles()) {
        if (EndsWith(name, ".htm") || EndsWith(name, ".css")) {
            EXPECT_NE(std::find(listed.begin(), listed.end(), name), listed.end())
                << name << " is missing from the [FILES] of " << kProject;
        }
    }
}

TEST(HelpSources, EveryPageIsInTheContents) {
    const std::vector<std::string> topics = References(ReadFile(kContent / kContents));
    for (const std::string& page : Pages()) {
        EXPECT_NE(std::find(topics.begin(), topics.end(), page), topics.end())
            << page << " cannot be reached from the contents";
    }
}

TEST(HelpSources, OpenAtThePageThatTheProgramAsksFor) {
    const std::string contents_page(kHelpContentsTopic);
    EXPECT_TRUE(fs::is_regular_file(kContent / contents_page));
    const std::vector<std::string> options = ProjectSection("OPTIONS");
    EXPECT_NE(std::find(options.begin(), options.end(), "Default topic=" + contents_page),
              options.end());
}

TEST(HelpSources, EveryLinkLeadsToAPageAndAPlaceThatExist) {
    for (const std::string& file : FilesWithReferences()) {
        for (const std::string& reference : References(ReadFile(kContent / file))) {
            const std::size_t hash = reference.find('#');
            const std::string page = reference.substr(0, hash);
            const std::string target = page.empty() ? file : page;
            if (!fs::is_regular_file(kContent / target)) {
                ADD_FAILURE() << file << " refers to " << reference << ", which is not there";
                continue;
            }
            if (hash != std::string::npos) {
                const std::string place = "id=\"" + reference.substr(hash + 1) + "\"";
                EXPECT_NE(ReadFile(kContent / target).find(place), std::string::npos)
                    << file << " refers to " << reference << ": no such place in " << target;
            }
        }
    }
}

TEST(HelpSources, NeedNothingFromOutside) {
    for (const std::string& file : FilesWithReferences()) {
        const std::string text = ReadFile(kContent / file);
        EXPECT_FALSE(std::regex_search(text, std::regex("<script", std::regex::icase)))
            << file << " holds a script";
        for (const std::string& reference : References(text)) {
            const bool outside =
                reference.find(':') != std::string::npos ||
                (!reference.empty() && (reference[0] == '/' || reference[0] == '\\'));
            EXPECT_FALSE(outside) << file << " refers to " << reference << " outside the help";
        }
    }
    const std::string style = ReadFile(kContent / "style.css");
    EXPECT_EQ(style.find("url("), std::string::npos);
    EXPECT_EQ(style.find("@import"), std::string::npos);
}

// The help engine reads its pages and its contents in the system's code page: anything
// but ASCII would show as the wrong letters somewhere. Other characters are written as
// entities (&ndash;).
TEST(HelpSources, AreAscii) {
    for (const std::string& file : SourceFiles()) {
        const std::string text = ReadFile(kContent / file);
        const auto other = std::find_if(
            text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; });
        EXPECT_EQ(other, text.end())
            << file << " holds a character beyond ASCII at offset " << (other - text.begin());
    }
}

class CompiledHelp : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kCompiledHelp.empty()) {
            GTEST_SKIP() << "chmcmd was not found when the build was set up: no help file";
        }
        bytes_ = ReadFile(kCompiledHelp);
        ASSERT_FALSE(bytes_.empty()) << kCompiledHelp << " is missing or empty";
    }

    std::string bytes_;
};

// The compiler keeps the names of the files in an uncompressed directory.
TEST_F(CompiledHelp, HoldsEveryPageAndCarriesTheProductsVersionInItsTitle) {
    EXPECT_EQ(bytes_.substr(0, 4), "ITSF");
    for (const std::string& name : SourceFiles()) {
        if (name != kProject) {
            EXPECT_NE(bytes_.find("/" + name), std::string::npos) << name << " is not in the help";
        }
    }
    EXPECT_NE(bytes_.find(REGVEX_HELP_TITLE), std::string::npos) << REGVEX_HELP_TITLE;
}

}  // namespace
}  // namespace regvex::ui::help
