#include "platform/file_view.h"

namespace Vesk::platform {

/// A file that is mapped could not be replaced there.
std::optional<FileView> FileView::open(const std::filesystem::path& path, std::error_code& error) {
    return copy(path, error);
}

}  // namespace Vesk::platform
