#include "wine/wine_file_edit.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <unordered_map>

#include "engine/registry.h"
#include "text/concat.h"
#include "text/utf8.h"
#include "wine/wine_key_tree.h"
#include "wine/wine_registry_file.h"
#include "wine/wine_text.h"

namespace regvex::wine {

namespace {

using text::Concat;

// Only files without a root line use it, and an edit keeps whatever root the file names.
constexpr std::string_view kAnyRoot = "Machine";

void AppendHex(std::string& out, std::uint32_t value, std::size_t width) {
    char digits[8];
    const auto written =
        static_cast<std::size_t>(std::to_chars(digits, digits + 8, value, 16).ptr - digits);
    out.append(width > written ? width - written : 0, '0');
    out.append(digits, written);
}

// The lines of a text as the reader counts them, each with its line end.
std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

// A name between quotes or brackets. Wine leaves out a last NUL as the terminator of
// string data; a name's last NUL is part of it, and kept.
void AppendEscapedName(std::string& out, std::string_view name) {
    const std::u16string units = text::Utf8ToUtf16(name);
    AppendEscapedText(out, units);
    if (!units.empty() && units.back() == u'\0') {
        out += "\\0";
    }
}

std::string CannotChange(const ValueChange& change, std::string_view why) {
    return Concat({change.remove ? "cannot delete " : "cannot set ",
                   WineValueForMessage(change.name), " in ", WineKeyForMessage(change.key_path),
                   ": ", why});
}

// One value's lines in the edited text: the original lines of a value read from the file,
// kept, replaced or dropped; or a line added before line `first`.
struct ValueSlot {
    std::size_t section = 0;
    std::string name;
    std::u16string form;
    std::size_t first = 0;
    std::size_t end = 0;
    bool added = false;
    bool live = true;
    std::optional<std::string> text;  // replaces the original lines
};

class FileEditor {
  public:
    explicit FileEditor(std::string_view text) : text_(text), lines_(SplitLines(text)) {
        const bool crlf =
            !lines_.empty() && lines_[0].size() >= 2 && lines_[0][lines_[0].size() - 2] == '\r';
        line_end_ = crlf ? "\r\n" : "\n";
    }

    std::optional<std::string> Load() {
        contents_.record_lines = true;
        if (auto refused = ReadWineRegistryText(text_, kAnyRoot, top_, contents_)) {
            return refused;
        }
        top_.Finish();
        root_ = FindWineSubkey(top_, contents_.root);
        for (std::size_t section = 0; section < contents_.sections.size(); ++section) {
            sections_of_[contents_.sections[section].key].push_back(section);
        }
        // Values come in file order, so each section's values are one run.
        first_value_.assign(contents_.sections.size() + 1, contents_.values.size());
        for (std::size_t i = contents_.values.size(); i-- > 0;) {
            first_value_[contents_.values[i].section] = i;
        }
        for (std::size_t section = contents_.sections.size(); section-- > 0;) {
            first_value_[section] = std::min(first_value_[section], first_value_[section + 1]);
        }
        return std::nullopt;
    }

    std::optional<std::string> Apply(const ValueChange& change) {
        const WineKey* key = root_ == nullptr ? nullptr : FindWineSubkey(*root_, change.key_path);
        if (key == nullptr) {
            return CannotChange(change, "the key is not in the file");
        }
        const auto sections = sections_of_.find(key);
        if (sections == sections_of_.end()) {
            // Wine writes no section for a key without values that has subkeys: the key is
            // there as part of their paths.
            if (change.remove) {
                return CannotChange(change, "the value is not in the key");
            }
            NewSectionFor(*key).values[WineOrderForm(change.name)] =
                WineValueText(change.name, change.type, change.data, line_end_);
            return std::nullopt;
        }
        std::vector<ValueSlot>& slots = SlotsOf(*key, sections->second);
        const std::u16string form = WineOrderForm(change.name);
        bool found = false;
        for (ValueSlot& slot : slots) {
            if (!slot.live || slot.form != form) {
                continue;
            }
            if (!found && !change.remove) {
                // As Wine's server sets a value: the name keeps the spelling it has.
                slot.text = WineValueText(slot.name, change.type, change.data, line_end_);
            } else {
                // Deleted; or, for a set, a later line of a name that a hand-edited file
                // repeats, whose data Wine would read instead of the new.
                slot.live = false;
            }
            found = true;
        }
        if (!found && change.remove) {
            return CannotChange(change, "the value is not in the key");
        }
        if (!found) {
            const std::size_t section = sections->second.back();
            const std::size_t place = PlaceOfNewValue(slots, section, form);
            slots.push_back(
                {.section = section,
                 .name = change.name,
                 .form = form,
                 .first = place,
                 .end = place,
                 .added = true,
                 .live = true,
                 .text = WineValueText(change.name, change.type, change.data, line_end_)});
        }
        return std::nullopt;
    }

    std::string Result() const {
        struct Insertion {
            std::size_t before_line;
            const std::u16string* form;
            const std::string* text;
            bool section = false;  // after the values that end the section before it
        };
        std::vector<Insertion> insertions;
        std::vector<bool> dropped(lines_.size() + 2, false);
        for (const auto& [key, slots] : slots_) {
            for (const ValueSlot& slot : slots) {
                if (!slot.added && (!slot.live || slot.text)) {
                    std::fill(dropped.begin() + static_cast<std::ptrdiff_t>(slot.first),
                              dropped.begin() + static_cast<std::ptrdiff_t>(slot.end), true);
                }
                if (slot.live && slot.text) {
                    insertions.push_back({slot.first, &slot.form, &*slot.text});
                }
            }
        }
        std::vector<std::string> section_texts;
        section_texts.reserve(new_sections_.size());
        for (const NewSection& section : new_sections_) {
            std::string text = section.header;
            for (const auto& [form, value] : section.values) {
                text.append(line_end_).append(value);
            }
            // The blank line that parts sections, before the next one or at the end.
            section_texts.push_back(section.before_line > lines_.size() ? line_end_ + text
                                                                        : text + line_end_);
            insertions.push_back({section.before_line, &section.form, &section_texts.back(), true});
        }
        std::sort(insertions.begin(), insertions.end(), [](const auto& a, const auto& b) {
            return a.before_line != b.before_line ? a.before_line < b.before_line
                   : a.section != b.section       ? b.section
                                                  : *a.form < *b.form;
        });
        std::string out;
        out.reserve(text_.size() + insertions.size() * 64);
        auto next = insertions.begin();
        for (std::size_t line = 1; line <= lines_.size() + 1; ++line) {
            for (; next != insertions.end() && next->before_line == line; ++next) {
                // A file whose last line has no line end gets one before the new line.
                if (!out.empty() && out.back() != '\n') {
                    out += line_end_;
                }
                out.append(*next->text).append(line_end_);
            }
            if (line <= lines_.size() && !dropped[line]) {
                out += lines_[line - 1];
            }
        }
        return out;
    }

  private:
    // A section for a key that has none, with the values set in it in Wine's order.
    struct NewSection {
        const WineKey* key = nullptr;
        std::size_t before_line = 0;
        std::u16string form;  // orders sections added before one line
        std::string header;
        std::map<std::u16string, std::string> values;
    };

    // Before the first section of a key below it, where Wine would write it, else at the
    // end; stamped with the time of the section it goes before (or the last one).
    NewSection& NewSectionFor(const WineKey& key) {
        for (NewSection& section : new_sections_) {
            if (section.key == &key) {
                return section;
            }
        }
        NewSection added{&key, lines_.size() + 1, key.order_form, "[", {}};
        std::size_t stamped = contents_.sections.empty() ? 0 : contents_.sections.back().key_line;
        for (const WineSectionLines& section : contents_.sections) {
            const WineKey* above = section.key == nullptr ? nullptr : section.key->parent;
            while (above != nullptr && above != &key) {
                above = above->parent;
            }
            if (above == &key) {
                added.before_line = section.key_line;
                stamped = section.key_line;
                break;
            }
        }
        std::vector<const WineKey*> names;
        for (const WineKey* each = &key; each != root_ && each != nullptr; each = each->parent) {
            names.push_back(each);
        }
        for (auto each = names.rbegin(); each != names.rend(); ++each) {
            if (each != names.rbegin()) {
                added.header += "\\\\";
            }
            std::string name;
            AppendEscapedName(name, (*each)->name);
            for (const char c : name) {
                if (c == '[' || c == ']') {
                    added.header += '\\';
                }
                added.header += c;
            }
        }
        added.header += ']';
        added.header += Stamp(stamped);
        new_sections_.push_back(std::move(added));
        return new_sections_.back();
    }

    // " 1234567890", the modification time of the key line `line`, or "" when it has none.
    std::string Stamp(std::size_t line) const {
        if (line == 0 || line > lines_.size()) {
            return {};
        }
        std::string_view text = lines_[line - 1];
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
            text.remove_suffix(1);
        }
        const std::size_t close = text.rfind(']');
        const std::size_t digits = close == std::string_view::npos ? 0 : close + 1;
        std::string stamp(text.substr(digits));
        const bool number = stamp.size() > 1 && stamp[0] == ' ' &&
                            stamp.find_first_not_of("0123456789", 1) == std::string::npos;
        return number ? stamp : std::string();
    }

    // The key's values in all its sections, in file order, once a change reaches the key.
    std::vector<ValueSlot>& SlotsOf(const WineKey& key, const std::vector<std::size_t>& sections) {
        const auto [found, made] = slots_.try_emplace(&key);
        if (made) {
            for (const std::size_t section : sections) {
                for (std::size_t i = first_value_[section]; i < first_value_[section + 1]; ++i) {
                    const WineValueLines& value = contents_.values[i];
                    found->second.push_back({.section = section,
                                             .name = value.name,
                                             .form = WineOrderForm(value.name),
                                             .first = value.first,
                                             .end = value.end,
                                             .added = false,
                                             .live = true,
                                             .text = std::nullopt});
                }
            }
        }
        return found->second;
    }

    // Among the section's values in Wine's order: before the first that sorts after the new
    // one, else after the last, else right below the key's "#" lines.
    std::size_t PlaceOfNewValue(const std::vector<ValueSlot>& slots, std::size_t section,
                                const std::u16string& form) const {
        std::size_t place = contents_.sections[section].values_line;
        for (const ValueSlot& slot : slots) {
            if (slot.added || slot.section != section) {
                continue;
            }
            if (slot.form > form) {
                return slot.first;
            }
            place = slot.end;
        }
        return place;
    }

    std::string_view text_;
    std::vector<std::string_view> lines_;
    std::string line_end_;
    WineKey top_;
    WineFileContents contents_;
    const WineKey* root_ = nullptr;
    std::unordered_map<const WineKey*, std::vector<std::size_t>> sections_of_;
    std::vector<std::size_t> first_value_;  // of each section, in contents_.values
    std::unordered_map<const WineKey*, std::vector<ValueSlot>> slots_;
    std::vector<NewSection> new_sections_;
};

}  // namespace

std::optional<std::string> EditWineRegistryText(std::string_view text,
                                                const std::vector<ValueChange>& changes,
                                                std::string& error) {
    FileEditor editor(text);
    if (auto refused = editor.Load()) {
        error = std::move(*refused);
        return std::nullopt;
    }
    for (const ValueChange& change : changes) {
        if (auto refused = editor.Apply(change)) {
            error = std::move(*refused);
            return std::nullopt;
        }
    }
    return editor.Result();
}

std::string WineValueText(std::string_view name, std::uint32_t type,
                          const std::vector<std::uint8_t>& data, std::string_view line_end) {
    std::string out;
    if (name.empty()) {
        out.append("@=");
    } else {
        out.push_back('"');
        AppendEscapedName(out, name);
        out.append("\"=");
    }
    std::string_view bytes(reinterpret_cast<const char*>(data.data()), data.size());
    std::string utf16;
    if (reg::IsTextType(type)) {
        const std::u16string units = text::Utf8ToUtf16(bytes);
        if (!units.empty() && units.back() == 0) {
            if (type != reg::kSz) {
                out += "str(";
                AppendHex(out, type, 1);
                out += "):";
            }
            out += '"';
            AppendEscapedText(out, units);
            out += '"';
            return out;
        }
        // The file holds the server's UTF-16 bytes.
        for (const char16_t unit : units) {
            utf16.push_back(static_cast<char>(unit & 0xFF));
            utf16.push_back(static_cast<char>(unit >> 8));
        }
        bytes = utf16;
    } else if (type == reg::kDword && data.size() == 4) {
        out += "dword:";
        AppendHex(out,
                  static_cast<std::uint32_t>(data[0]) | static_cast<std::uint32_t>(data[1]) << 8 |
                      static_cast<std::uint32_t>(data[2]) << 16 |
                      static_cast<std::uint32_t>(data[3]) << 24,
                  8);
        return out;
    }
    if (type == reg::kBinary) {
        out += "hex:";
    } else {
        out += "hex(";
        AppendHex(out, type, 1);
        out += "):";
    }
    // The server counts the name, the prefix, the digits and the commas of a line, and wraps
    // after the comma that takes the count past 76.
    std::size_t count = out.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        AppendHex(out, static_cast<unsigned char>(bytes[i]), 2);
        count += 2;
        if (i + 1 < bytes.size()) {
            out += ',';
            if (++count > 76) {
                out.append("\\").append(line_end).append("  ");
                count = 2;
            }
        }
    }
    return out;
}

std::string WineKeyForMessage(std::string_view key_path) {
    return Concat({"[", key_path, "]"});
}

std::string WineValueForMessage(std::string_view name) {
    return name.empty() ? std::string("the default value") : Concat({"value \"", name, "\""});
}

}  // namespace regvex::wine
