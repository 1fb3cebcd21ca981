#include "app/report_file.h"

#include <utility>

#include "base/console.h"
#include "base/exception.h"

namespace Vesk {

ReportFile::ReportFile(std::string what, const std::string& path)
    : what_(std::move(what)), path_(path) {
    if (path_ == "-") {
        console::keepOutputFree();
        return;
    }
    writer_.emplace(platform::pathFromUtf8(path_));
    if (!writer_->isOpen()) {
        throwFault(writer_->error());
    }
}

void ReportFile::throwFault(const std::error_code& error) const {
    VeskException fault("Unable to write the " + what_ + " '" + path_ + "': " + error.message() +
                        ".");
    const std::filesystem::path directory = platform::pathFromUtf8(path_).parent_path();
    if (!directory.empty() && !platform::isDirectory(directory)) {
        fault.addNote("the directory '" + platform::pathToUtf8(directory) +
                      "' does not exist; create it first");
    }
    throw fault;
}

void ReportFile::write(std::string_view bytes) noexcept {
    if (!writer_) {
        console::writeData(bytes);
    } else if (!fault_ && !writer_->write(bytes)) {
        fault_ = writer_->error();
    }
}

void ReportFile::close() {
    if (writer_ && !writer_->close() && !fault_) {
        fault_ = writer_->error();
    }
    if (fault_) {
        throwFault(fault_);
    }
}

}  // namespace Vesk
