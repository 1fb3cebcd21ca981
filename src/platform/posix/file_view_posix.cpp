#include "platform/file_view.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

#include "platform/files.h"
#include "platform/posix/descriptor.h"

namespace Vesk::platform {
namespace {

#ifdef MAP_POPULATE
constexpr int kMappingFlags = MAP_PRIVATE | MAP_POPULATE;
#else
constexpr int kMappingFlags = MAP_PRIVATE;
#endif

/// Its pages and their size; null if the file cannot be mapped, for whatever reason.
std::pair<std::shared_ptr<const void>, std::size_t> mapped(const std::filesystem::path& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size == 0) {
        return {};
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const pages = ::mmap(nullptr, size, PROT_READ, kMappingFlags, file.get(), 0);
    if (pages == MAP_FAILED) {
        return {};
    }
    return {std::shared_ptr<void>(pages, [size](void* start) { ::munmap(start, size); }), size};
}

}  // namespace

std::optional<FileView> FileView::open(const std::filesystem::path& path, std::error_code& error) {
    const auto status = fileStatus(pathToUtf8(path), error);
    if (status && status->regular) {
        if (auto [pages, size] = mapped(path); pages) {
            const std::string_view bytes(static_cast<const char*>(pages.get()), size);
            return FileView(std::move(pages), bytes);
        }
    }
    return copy(path, error);
}

}  // namespace Vesk::platform
