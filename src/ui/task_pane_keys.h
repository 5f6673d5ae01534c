#pragma once
// The keys of the main window's task pane. The window's code builds the pane and answers
// clicks by them; its Windows view picks each link's icon by them.

#include <string_view>

namespace regvex::ui {

// The groups.
inline constexpr std::string_view kTasksGroup = "TASKS";
inline constexpr std::string_view kInfoGroup = "INFO";
inline constexpr std::string_view kDetailsGroup = "DETAILS";

// The links of the Tasks group.
inline constexpr std::string_view kScanTask = "SCAN";
inline constexpr std::string_view kCheckAllTask = "CHECKALL";
inline constexpr std::string_view kUncheckTask = "UNCHECK";
inline constexpr std::string_view kDeleteTask = "DELETE";
inline constexpr std::string_view kRestoreTask = "RESTORE";
inline constexpr std::string_view kIgnoreTask = "IGNORE";

// The links of the Details group; only About and the maker's page do anything.
inline constexpr std::string_view kVersionTask = "VERSION";
inline constexpr std::string_view kCopyrightTask = "COPY";
inline constexpr std::string_view kCompanyTask = "COMPANY";
inline constexpr std::string_view kAboutTask = "ABOUT";
inline constexpr std::string_view kLikeTask = "FACEBOOK1";

}  // namespace regvex::ui
