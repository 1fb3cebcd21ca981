#include "cache/made_files.h"

#include <optional>
#include <system_error>

#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kMadeFilesHeader = "VESK_MADE_1\n";
constexpr std::string_view kKinds = "ofbpd";

/// Takes a field and the tab behind it off the line.
std::optional<std::string_view> takeField(std::string_view& line) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view field = line.substr(0, tab);
    line.remove_prefix(tab + 1);
    return field;
}

bool fitsInLine(std::string_view text) noexcept {
    return text.find_first_of("\t\n") == std::string_view::npos;
}

}  // namespace

MadeFiles::MadeFiles(const std::filesystem::path& directory) : file_(directory / kMadeFileName) {}

/// A line that vesk did not write is ignored: nothing is removed because of it.
void MadeFiles::readLine(std::string_view line) {
    const auto kind = takeField(line);
    const auto key = kind ? takeField(line) : std::nullopt;
    if (!key || kind->size() != 1 || kKinds.find(*kind) == std::string_view::npos) {
        return;
    }
    Entry entry{static_cast<Kind>(kind->front()), std::string(*key), {}};
    std::string path(line);
    if (entry.kind == Kind::Former) {
        std::string table = path + "\n";
        std::string_view rest = table;
        std::string_view stored;
        if (!takeStateLine(rest, entry.state, stored)) {
            return;
        }
        path = stored;
    }
    entries_.insert_or_assign(std::move(path), std::move(entry));
}

void MadeFiles::load() {
    if (loaded_) {
        return;
    }
    loaded_ = true;
    std::error_code ignored;
    const auto bytes = platform::readWholeFile(file_, ignored);
    if (!bytes || !bytes->starts_with(kMadeFilesHeader)) {
        return;
    }
    std::string_view rest = std::string_view(*bytes).substr(kMadeFilesHeader.size());
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        readLine(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
}

void MadeFiles::add(std::string_view path, Kind kind, std::string_view key) {
    load();
    if (!fitsInLine(path) || !fitsInLine(key)) {
        return;
    }
    const auto [entry, isNew] = entries_.try_emplace(std::string(path));
    if (isNew || entry->second.kind != kind || entry->second.key != key) {
        entry->second = {kind, std::string(key), {}};
        changed_ = true;
    }
}

void MadeFiles::noteFormer(std::string_view path, std::string_view key, const FileState& state) {
    load();
    const auto found = entries_.find(path);
    if (found != entries_.end() && found->second.kind == Kind::Output && found->second.key == key) {
        found->second = {Kind::Former, std::string(key), state};
        changed_ = true;
    }
}

void MadeFiles::keepByProducts(std::string_view key,
                               const std::unordered_set<std::string_view>& paths) {
    load();
    for (auto& [path, entry] : entries_) {
        if (entry.kind == Kind::ByProduct && entry.key == key && !paths.contains(path)) {
            entry.kind = Kind::FormerByProduct;
            changed_ = true;
        }
    }
}

bool MadeFiles::knows(std::string_view path) {
    load();
    return entries_.contains(path);
}

void MadeFiles::remove(std::string_view path) {
    load();
    const auto found = entries_.find(path);
    if (found != entries_.end()) {
        entries_.erase(found);
        changed_ = true;
    }
}

const std::map<std::string, MadeFiles::Entry, std::less<>>& MadeFiles::entries() {
    load();
    return entries_;
}

void MadeFiles::save() {
    if (!changed_) {
        return;
    }
    std::string text(kMadeFilesHeader);
    for (const auto& [path, entry] : entries_) {
        text.append(1, static_cast<char>(entry.kind)).append("\t").append(entry.key).append("\t");
        if (entry.kind == Kind::Former) {
            appendStateLine(text, entry.state, path);
        } else {
            text.append(path).append("\n");
        }
    }
    std::error_code error;
    changed_ = !platform::writePrivateFile(file_, text, platform::Append::no, error);
}

}  // namespace Vesk
