#pragma once
// The current local date and time as the user's locale writes it in its general date
// form: the short date, a blank and the long time ("6/3/2013 4:05:06 PM"); exactly
// midnight gives the date alone. Backup file names are made from it.

#include <string>

namespace regvex::system {

std::string GeneralDateTextNow();

}  // namespace regvex::system
