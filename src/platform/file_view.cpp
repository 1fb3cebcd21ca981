#include "platform/file_view.h"

#include <string>
#include <utility>

#include "platform/files.h"

namespace Vesk::platform {

std::optional<FileView> FileView::copy(const std::filesystem::path& path, std::error_code& error) {
    auto content = readWholeFile(path, error);
    if (!content) {
        return std::nullopt;
    }
    const auto owner = std::make_shared<const std::string>(std::move(*content));
    return FileView(owner, *owner);
}

}  // namespace Vesk::platform
