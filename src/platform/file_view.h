// The content of a file that is only read.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace Vesk::platform {

/// Nobody may write to the file meanwhile, except behind its end: on POSIX its pages are those of
/// the system. That another file takes its place is all right.
class FileView {
  public:
    /// On failure returns nothing and sets `error`, as `readWholeFile` does.
    static std::optional<FileView> open(const std::filesystem::path& path, std::error_code& error);

    std::string_view bytes() const noexcept { return bytes_; }

    /// What keeps the bytes alive. Copies share it.
    const std::shared_ptr<const void>& owner() const noexcept { return owner_; }

  private:
    /// The same with bytes of its own.
    static std::optional<FileView> copy(const std::filesystem::path& path, std::error_code& error);

    FileView(std::shared_ptr<const void> owner, std::string_view bytes)
        : owner_(std::move(owner)), bytes_(bytes) {}

    std::shared_ptr<const void> owner_;
    std::string_view bytes_;
};

}  // namespace Vesk::platform
