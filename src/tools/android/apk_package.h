// What goes into an Android package, and putting it together.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// A shared library that the package carries.
struct NativeLibrary {
    std::string path;
    std::string abi;  ///< "arm64-v8a"; empty: what the library itself says
};

/// A file that goes into the package under a name of its own.
struct ExtraFile {
    std::string name;  ///< in the package
    std::string path;
};

/// Paths are absolute.
struct PackageContents {
    std::string base;        ///< the package with manifest, resources and assets
    std::string dexArchive;  ///< what the dex compiler made; empty: nothing
    std::vector<std::string> dexFiles;
    std::vector<NativeLibrary> libraries;
    std::vector<std::string> abis;  ///< the only ones that are allowed; empty: all
    std::vector<ExtraFile> extraFiles;

    /// Copies that are packed in place of the files that are told of, by these.
    std::map<std::string, std::string> staged;

    const std::string& packedFile(const std::string& path) const;
};

/// Writes the package, unsigned; everything in it is aligned as Android wants it. Nothing is packed
/// again: what `base` has packed stays so, all else is stored. Throws VeskException for a file that
/// is not what it should be and for two files of one name.
void writePackage(const PackageContents& contents, const std::filesystem::path& package);

/// The ABI of a shared library, told by the first bytes of the file: "arm64-v8a", "armeabi-v7a",
/// "x86", "x86_64", "riscv64". Empty for anything else.
std::string_view abiOf(std::string_view bytes) noexcept;

}  // namespace Vesk
