#include "scan/finding_explanation.h"

#include <utility>

#include "engine/root_keys.h"
#include "engine/value_data_text.h"
#include "text/concat.h"
#include "text/upper_case.h"

namespace regvex::scan {

namespace {

// Labels and the texts after them start in these columns.
constexpr std::size_t kTextColumn = 13;

// Characters as a monospace font lays them out: one per code point.
std::size_t Columns(std::string_view text) {
    std::size_t columns = 0;
    for (const char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++columns;
        }
    }
    return columns;
}

std::vector<std::string> StringsOf(std::span<const std::uint8_t> data) {
    std::vector<std::string> strings;
    std::string current;
    for (const std::uint8_t byte : data) {
        if (byte != 0) {
            current.push_back(static_cast<char>(byte));
            continue;
        }
        // An empty string ends the list.
        if (current.empty()) {
            break;
        }
        strings.push_back(std::move(current));
        current.clear();
    }
    if (!current.empty()) {
        strings.push_back(std::move(current));
    }
    return strings;
}

std::string NearestExistingFolder(FileExistence& files, const std::string& path) {
    std::string folder = path;
    for (std::size_t slash = folder.rfind('\\'); slash != std::string::npos;
         slash = folder.rfind('\\')) {
        folder.erase(slash);
        // The root is asked for as "C:\", every other folder without its backslash.
        const bool root = folder.find('\\') == std::string::npos;
        const std::string asked = root ? folder + "\\" : folder;
        if (PathExists(files, asked)) {
            return root ? asked : folder + "\\";
        }
    }
    return {};
}

std::string ReadErrorText(RegStatus status) {
    switch (status) {
        case reg::kFileNotFound:
            return "error 2: it is no longer there";
        case reg::kAccessDenied:
            return "error 5: access is denied";
        default:
            return text::Concat({"error ", std::to_string(status)});
    }
}

class Lines {
  public:
    explicit Lines(const std::function<std::string(std::string_view)>& shown) : shown_(shown) {}

    std::string Shown(std::string_view text) const { return shown_(text); }
    std::string Quoted(std::string_view text) const {
        return text::Concat({"\"", shown_(text), "\""});
    }

    // A labelled line; further lines of the same item go under its text.
    void Add(std::string_view label, std::string_view text) {
        out_.append(label);
        out_.append(kTextColumn - label.size(), ' ');
        out_.append(text);
        out_.push_back('\n');
    }
    void More(std::string_view text) { Add("", text); }

    std::string Take() { return std::move(out_); }

  private:
    const std::function<std::string(std::string_view)>& shown_;
    std::string out_;
};

void AddData(Lines& lines, const FindingExplanation& e) {
    const std::string_view data = e.data_text;
    lines.Add("Data:", lines.Shown(data));
    const PathExtraction& x = e.extraction;
    if (x.names_drive && x.length != 0) {
        const std::size_t before = Columns(lines.Shown(data.substr(0, x.start)));
        const std::size_t marked = Columns(lines.Shown(data.substr(x.start, x.length)));
        lines.More(std::string(before, ' ') + std::string(marked, '^'));
    }
    if (!e.unread_strings.empty()) {
        std::string rest;
        for (const std::string& string : e.unread_strings) {
            rest += rest.empty() ? "" : ", ";
            rest += lines.Quoted(string);
        }
        lines.More(
            text::Concat({"(only the first string is read; the value also holds ", rest, ")"}));
    }
    if (e.value.read_status == reg::kSuccess && e.data_text != e.value.listed_text) {
        lines.More(text::Concat({"(the data changed since the scan, which listed ",
                                 lines.Quoted(e.value.listed_text), ")"}));
    }
}

void AddFile(Lines& lines, const FindingExplanation& e, std::string_view drive) {
    const PathExtraction& x = e.extraction;
    if (x.path != kRejected) {
        lines.Add("File:", lines.Shown(x.path));
        const bool percent =
            text::UpperCase(std::string_view(e.data_text).substr(x.start, x.length)).find("%1") !=
            std::string::npos;
        lines.More(percent ? "read from the part of the data marked ^, upper-cased, \"%1\" dropped"
                           : "read from the part of the data marked ^, upper-cased");
        return;
    }
    if (!x.names_drive) {
        lines.Add("File:", text::Concat({"none: the data do not name the drive ", drive}));
        return;
    }
    lines.Add("File:", "none: no single plain file path is named. Cut after the first known");
    lines.More(text::Concat({"extension and before the first of / * ? < > | , ( ; : the data read ",
                             lines.Quoted(x.cut), ","}));
    lines.More(text::Concat({"but the folder, name and three-letter extension of all from ", drive,
                             " on make ", lines.Quoted(x.expected), "."}));
}

void AddExistence(Lines& lines, const FindingExplanation& e, std::string_view drive) {
    const std::string& path = e.extraction.path;
    if (path == kRejected) {
        lines.Add("Existence:", "not asked for: there is no file path");
    } else if (e.verdict.exists) {
        lines.Add("Existence:", text::Concat({lines.Shown(path), " exists"}));
    } else if (!e.nearest_folder.empty()) {
        lines.Add("Existence:", text::Concat({lines.Shown(path), " was not found;"}));
        lines.More(
            text::Concat({"the nearest folder that exists is ", lines.Shown(e.nearest_folder)}));
    } else {
        lines.Add("Existence:", text::Concat({lines.Shown(path), " was not found,"}));
        lines.More(text::Concat({"and not even the drive ", drive, " was found"}));
    }
}

void AddIgnore(Lines& lines, const FindingExplanation& e, std::size_t entries) {
    if (!e.ignore_entry.empty()) {
        lines.Add("Ignore list:",
                  text::Concat({"the entry ", lines.Quoted(e.ignore_entry), " occurs in the ",
                                e.ignore_entry_in_path ? "file path" : "key",
                                ", so the scan drops this value"}));
    } else if (entries == 0) {
        lines.Add("Ignore list:", "empty, so it hides nothing");
    } else {
        lines.Add("Ignore list:", text::Concat({"none of its ", std::to_string(entries),
                                                entries == 1 ? " entry" : " entries",
                                                " occurs in the file path or the key"}));
    }
    lines.More(text::Concat(
        {"\"Add Value To Ignore List\" would add ", lines.Quoted(e.value_entry), ","}));
    lines.More(e.value_entry_hides
                   ? "which would hide it"
                   : "which would not hide it: entries are looked for in the path and the key");
    lines.More(text::Concat(
        {"\"Add Subkey To Ignore List\" would add ", lines.Quoted(e.subkey_entry), ","}));
    lines.More("which would hide it and every value whose key or path holds that text");
}

std::string VerdictText(const FindingVerdict& verdict, const PathExtraction& extraction) {
    // A file called "Rejected" in the current folder answers the scan's look-up of a text
    // without a path; that it "exists" explains nothing.
    if (extraction.path == kRejected) {
        return "not listed: no file path could be read from the data";
    }
    if (verdict.exists) {
        return "not listed: the file exists";
    }
    if (verdict.ignored) {
        return "not listed: an ignore entry covers it";
    }
    return "listed as \"Invalid Entry\": the file is missing and no ignore entry covers it";
}

}  // namespace

ValueToExplain ReadValueToExplain(Registry& registry, AccessMask access, std::string root,
                                  std::string key_path, std::string value_name,
                                  std::string listed_text) {
    ValueToExplain value;
    value.root = std::move(root);
    value.key_path = std::move(key_path);
    value.value_name = std::move(value_name);
    value.listed_text = std::move(listed_text);
    ScopedKey key;
    value.read_status =
        ScopedKey::Open(registry, RootKeyFromName(value.root), value.key_path, access, key);
    if (value.read_status == reg::kSuccess) {
        value.read_status =
            registry.QueryValue(key.get(), value.value_name, value.type, value.data);
    }
    return value;
}

void SplitFoundKey(std::string_view found_key, std::string_view key_path, std::string& key,
                   std::string& name) {
    std::size_t slash = std::string_view::npos;
    if (!key_path.empty() && found_key.size() > key_path.size() &&
        found_key.starts_with(key_path) && found_key[key_path.size()] == '\\') {
        slash = key_path.size();
    } else {
        slash = found_key.rfind('\\');
    }
    key = std::string(found_key.substr(0, slash == std::string_view::npos ? 0 : slash));
    name = std::string(slash == std::string_view::npos ? found_key : found_key.substr(slash + 1));
}

FindingExplanation ExplainFinding(ValueToExplain value, const ExplainContext& context) {
    FindingExplanation e;
    e.value = std::move(value);
    e.drive = context.scan_drive;
    e.drive_note = context.drive_note;
    e.ignore_entry_count = context.ignore_entries.size();
    const ValueToExplain& v = e.value;
    if (v.read_status == reg::kSuccess) {
        const std::string_view name = ValueTypeName(v.type);
        e.type_name = name.empty() ? std::to_string(v.type) : std::string(name);
        // The scan's buffer always holds at least one byte, zero when the value has none.
        const std::vector<std::uint8_t> data =
            v.data.empty() ? std::vector<std::uint8_t>{0} : v.data;
        e.data_text = ValueDataToText(v.type, data);
        if (v.type == reg::kMultiSz) {
            std::vector<std::string> strings = StringsOf(v.data);
            if (strings.size() > 1) {
                e.unread_strings.assign(strings.begin() + 1, strings.end());
            }
        }
    } else {
        e.data_text = v.listed_text;
    }

    // The scan reports a value by its key and name joined so.
    const std::string found_key = text::Concat({v.key_path, "\\", v.value_name});
    e.extraction = ExtractPath(e.data_text, context.scan_drive);
    const FindingRules rules{context.scan_drive, context.files,
                             FixedIgnoreEntries(context.ignore_entries), false};
    e.verdict = JudgeFinding(rules, found_key, e.data_text);
    if (e.extraction.path != kRejected && !e.verdict.exists) {
        e.nearest_folder = NearestExistingFolder(*context.files, e.extraction.path);
    }
    if (const std::string* entry =
            FindIgnoreEntry(context.ignore_entries, e.verdict.path, found_key)) {
        e.ignore_entry = *entry;
        e.ignore_entry_in_path = text::UpperCase(e.verdict.path).find(*entry) != std::string::npos;
    }
    // The results' commands add the value column or the subkey column, upper-cased.
    e.value_entry = text::UpperCase(v.listed_text);
    e.value_entry_hides =
        IsIgnored(std::span<const std::string>(&e.value_entry, 1), e.verdict.path, found_key);
    e.subkey_entry = text::UpperCase(found_key);
    return e;
}

std::string ExplanationText(const FindingExplanation& e,
                            const std::function<std::string(std::string_view)>& shown) {
    Lines lines(shown);
    const ValueToExplain& v = e.value;
    lines.Add("Root key:", lines.Shown(v.root));
    lines.Add("Key:", lines.Shown(v.key_path));
    lines.Add("Value:", v.value_name.empty() ? "(Default)" : lines.Shown(v.value_name));
    if (v.read_status == reg::kSuccess) {
        lines.Add("Type:", e.type_name);
    } else {
        lines.Add("Type:", text::Concat({"unknown: the value could not be read again (",
                                         ReadErrorText(v.read_status), ")"}));
    }
    AddData(lines, e);
    const std::string drive = lines.Shown(e.drive);
    AddFile(lines, e, drive);
    lines.Add("Drive:", e.drive_note.empty()
                            ? drive
                            : text::Concat({drive, " (", lines.Shown(e.drive_note), ")"}));
    AddExistence(lines, e, drive);
    AddIgnore(lines, e, e.ignore_entry_count);
    // A value that is gone (fixed, say) is judged by the data the scan saw.
    lines.Add("Verdict:", v.read_status == reg::kSuccess
                              ? VerdictText(e.verdict, e.extraction)
                              : text::Concat({"by the data the scan saw, ",
                                              VerdictText(e.verdict, e.extraction)}));
    return lines.Take();
}

std::string ControlsMadeVisible(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            constexpr char kHex[] = "0123456789abcdef";
            out += "\\x";
            out.push_back(kHex[byte >> 4]);
            out.push_back(kHex[byte & 0x0F]);
        } else {
            out.push_back(c);
        }
    }
    return out;
}

}  // namespace regvex::scan
