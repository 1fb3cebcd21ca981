#include "tools/android/apk_package.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <system_error>

#include "base/exception.h"
#include "base/text.h"
#include "platform/files.h"
#include "tools/android/zip_file.h"

namespace Vesk {

namespace {

constexpr std::size_t kElfHeaderStart = 20;
constexpr std::string_view kDexMark = "dex\n";

/// The first bytes of the file, or fewer if it is shorter.
std::string firstBytes(const std::string& path, std::size_t count) {
    std::error_code error;
    auto bytes = platform::readStart(platform::pathFromUtf8(path), count, error);
    if (!bytes) {
        throw VeskException(
            fmt::format("Unable to read '{}': {}. Is it there?", path, error.message()));
    }
    return *bytes;
}

std::string fileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// An old name of one of them, for the same machine.
bool sameMachine(std::string_view told, std::string_view asked) noexcept {
    return told == asked || (told == "armeabi-v7a" && asked == "armeabi");
}

/// The directory of the package in which Android looks for the library.
std::string abiDirectory(const NativeLibrary& library, const PackageContents& contents) {
    const std::vector<std::string>& allowed = contents.abis;
    const std::string_view told =
        abiOf(firstBytes(contents.packedFile(library.path), kElfHeaderStart));
    if (told.empty()) {
        throw VeskException(fmt::format(
            "'{}' is not a shared library for Android, as the target's native libraries must be.",
            library.path));
    }
    if (!library.abi.empty()) {
        if (!sameMachine(told, library.abi)) {
            throw VeskException(fmt::format("'{}' is made for {}, but named for {}.", library.path,
                                            told, library.abi));
        }
        return library.abi;
    }
    if (allowed.empty()) {
        return std::string(told);
    }
    const auto fits = std::ranges::find_if(
        allowed, [told](const std::string& abi) { return sameMachine(told, abi); });
    if (fits == allowed.end()) {
        throw VeskException(fmt::format("'{}' is made for {}, but ABI allows {} only.",
                                        library.path, told, joined(allowed, ", ")));
    }
    return *fits;
}

std::string dexName(std::size_t number) {
    return number == 1 ? "classes.dex" : fmt::format("classes{}.dex", number);
}

void addDexFiles(ZipWriter& package, const PackageContents& contents) {
    std::size_t number = 0;
    if (!contents.dexArchive.empty()) {
        const ZipFile archive(platform::pathFromUtf8(contents.dexArchive));
        for (const ZipEntry& entry : archive.entries()) {
            if (entry.name.ends_with(".dex")) {
                package.copy(archive, entry);
                ++number;
            }
        }
    }
    for (const std::string& file : contents.dexFiles) {
        const std::string& packed = contents.packedFile(file);
        if (firstBytes(packed, kDexMark.size()) != kDexMark) {
            throw VeskException(fmt::format(
                "'{}' in DEX_FILES is not a DEX file. Class files belong in CLASS_FILES.", file));
        }
        package.add(dexName(++number), platform::pathFromUtf8(packed), file);
    }
}

}  // namespace

const std::string& PackageContents::packedFile(const std::string& path) const {
    const auto copy = staged.find(path);
    return copy == staged.end() ? path : copy->second;
}

std::string_view abiOf(std::string_view bytes) noexcept {
    constexpr std::string_view kMark =
        "\x7F"
        "ELF";
    constexpr char kLittleEndian = 1;
    constexpr unsigned kSharedObject = 3;
    struct Machine {
        unsigned number;
        char wordSize;  // 1: 32 bits, 2: 64 bits
        std::string_view abi;
    };
    static constexpr std::array<Machine, 5> kMachines = {{{40, 1, "armeabi-v7a"},
                                                          {183, 2, "arm64-v8a"},
                                                          {3, 1, "x86"},
                                                          {62, 2, "x86_64"},
                                                          {243, 2, "riscv64"}}};
    if (bytes.size() < kElfHeaderStart || !bytes.starts_with(kMark) || bytes[5] != kLittleEndian) {
        return {};
    }
    const auto number = [bytes](std::size_t at) {
        return static_cast<unsigned char>(bytes[at]) +
               256U * static_cast<unsigned char>(bytes[at + 1]);
    };
    const auto machine = std::ranges::find_if(kMachines, [&](const Machine& each) {
        return each.number == number(18) && each.wordSize == bytes[4];
    });
    return number(16) == kSharedObject && machine != kMachines.end() ? machine->abi
                                                                     : std::string_view();
}

void writePackage(const PackageContents& contents, const std::filesystem::path& package) {
    const ZipFile base(platform::pathFromUtf8(contents.base));
    ZipWriter writer(package);
    for (const ZipEntry& entry : base.entries()) {
        writer.copy(base, entry);
    }
    addDexFiles(writer, contents);
    for (const NativeLibrary& library : contents.libraries) {
        writer.add("lib/" + abiDirectory(library, contents) + "/" + fileName(library.path),
                   platform::pathFromUtf8(contents.packedFile(library.path)), library.path);
    }
    for (const ExtraFile& file : contents.extraFiles) {
        writer.add(file.name, platform::pathFromUtf8(contents.packedFile(file.path)), file.path);
    }
    writer.finish();
}

}  // namespace Vesk
