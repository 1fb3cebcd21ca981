// What goes into an Android package, and how it is put together.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// A shared library in the package.
struct NativeLibrary {
    std::string path;
    std::string abi;  ///< "arm64-v8a"; empty: read it from the library
};

/// A file with the name that it gets in the package.
struct ExtraFile {
    std::string name;  ///< in the package
    std::string path;
};

/// Paths are absolute.
struct PackageContents {
    std::string base;        ///< the package with manifest, resources and assets
    std::string dexArchive;  ///< the output of the dex compiler; empty if there is none
    std::vector<std::string> dexFiles;
    std::vector<NativeLibrary> libraries;
    std::vector<std::string> abis;  ///< the only ones allowed; empty: all
    std::vector<ExtraFile> extraFiles;

    /// Copies to be packed in place of the named files, by the names of the originals.
    std::map<std::string, std::string> staged;

    const std::string& packedFile(const std::string& path) const;
};

/// Writes the package, unsigned and aligned as Android wants it. Nothing is compressed again: what
/// is compressed in `base` stays so, everything else is stored. Throws VeskException for a file
/// that is not what it should be and for two files of the same name.
void writePackage(const PackageContents& contents, const std::filesystem::path& package);

/// The ABI of a shared library, read from the first bytes of the file: "arm64-v8a", "armeabi-v7a",
/// "x86", "x86_64", "riscv64". Empty for anything else.
std::string_view abiOf(std::string_view bytes) noexcept;

}  // namespace Vesk
