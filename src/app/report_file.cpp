#include "app/report_file.h"

#include <utility>

#include "base/console.h"
#include "base/exception.h"

namespace Vesk {

ReportFile::ReportFile(std::string what, Use use, const std::string& path)
    : what_(std::move(what)), path_(path) {
    if (path_ == "-") {
        console::keepOutputFree();
        return;
    }
    const std::filesystem::path file = platform::pathFromUtf8(path_);
    std::error_code ignored;
    onlyForTest_ = !platform::exists(file, ignored) && !ignored;
    // Who reads a pipe takes the end of the first writing for the end of all.
    untouched_ = use == Use::AtEnd && (onlyForTest_ || platform::isFile(file));
    open(untouched_ ? platform::Append::yes : platform::Append::no);
}

ReportFile::~ReportFile() {
    if (untouched_ && onlyForTest_) {
        writer_.reset();
        std::error_code ignored;
        platform::removeFile(platform::pathFromUtf8(path_), ignored);
    }
}

void ReportFile::open(platform::Append append) {
    writer_.emplace(platform::pathFromUtf8(path_), append);
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
    if (std::exchange(untouched_, false)) {
        writer_.emplace(platform::pathFromUtf8(path_));
    }
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
