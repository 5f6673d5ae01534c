#pragma once
// Changes to the values of one of Wine's registry files, made in its text so that every
// line the changes do not touch stays byte for byte as Wine's server wrote it, and the
// check that an edited text says what the original said apart from those changes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/value_change.h"

namespace regvex::wine {

// Makes `changes`, in order, to the text of a Wine registry file. A deletion removes
// exactly the lines of that value in that key (its continued lines too; every line of that
// name when a hand-edited file repeats it) and leaves every other byte as it was. A set
// replaces the lines of the value of that name in its key (its name keeps its spelling, as
// in Wine), or adds the value's line among the values of the key's last section in Wine's
// order (after the key's "#" lines when it has no values), with the file's own line ends
// (LF or CR LF). `key_path` is below the file's root as its key lines name it
// ("Software\\Wine"; "" is the root, "[]"); key and value names compare as Wine compares
// them. Answers the edited text, or nullopt with `error` naming the first change that
// cannot be made (its key has no lines in the file; a deleted value is not in its key) or
// why the text is no Wine registry file.
std::optional<std::string> EditWineRegistryText(std::string_view text,
                                                const std::vector<ValueChange>& changes,
                                                std::string& error);

// Reads `before` and `after` and answers the first difference between them other than
// exactly `changes`: every key (names, link), every value (name, type, data, in Wine's
// order) and the count of lines Wine would skip must be the same, except the changed
// values. Empty when there is none; the message names the key and value that differ.
std::string CheckWineRegistryEdit(std::string_view before, std::string_view after,
                                  const std::vector<ValueChange>& changes);

// A value as Wine's server writes it in its files, without the final line end: a string
// for text types that end in their NUL (`"name"="text"`, `@=` for the default value,
// `str(2):` and `str(7):` before the others), `dword:%08x` for four-byte DWORDs, else
// `hex:` or `hex(N):` bytes, wrapped as the server wraps them with "\" and `line_end` and
// two spaces. Data is in the registry's form (text types as UTF-8 with their NULs).
std::string WineValueText(std::string_view name, std::uint32_t type,
                          const std::vector<std::uint8_t>& data, std::string_view line_end);

// How the edit and its check name a key and a value in their messages.
std::string WineKeyForMessage(std::string_view key_path);
std::string WineValueForMessage(std::string_view name);

}  // namespace regvex::wine
