#include "tools/android/signing_key.h"

#include <filesystem>
#include <fmt/format.h>
#include <system_error>

#include "base/exception.h"
#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/support/run_step.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFromVariable = "env:";
constexpr std::string_view kFromFile = "file:";

// The convention that all Android tools share.
constexpr const char* kDebugAlias = "androiddebugkey";
constexpr const char* kDebugPassword = "android";
constexpr const char* kDebugStore = "debug.keystore";
constexpr const char* kNewStore = "debug.keystore.new";

std::string debugKeystore() {
    const auto found = [](const char* variable, const char* below) -> std::string {
        const auto directory = platform::environmentVariable(variable);
        return directory && !directory->empty() ? normalPath(*directory) + below + kDebugStore
                                                : std::string();
    };
    for (const auto& [variable, below] :
         {std::pair{"ANDROID_USER_HOME", "/"}, std::pair{"ANDROID_SDK_HOME", "/.android/"},
          std::pair{"USERPROFILE", "/.android/"}, std::pair{"HOME", "/.android/"}}) {
        if (std::string path = found(variable, below); !path.empty()) {
            return path;
        }
    }
    throw VeskException(
        "There is no place for the debug key: neither ANDROID_USER_HOME nor the home directory is "
        "set. Set one of them, or give KEYSTORE.");
}

[[noreturn]] void throwPasswordGiven(const char* variable) {
    throw VeskException(fmt::format(
        "{} must say where the password is: 'env:NAME' for an environment variable, 'file:PATH' "
        "for the first line of a file. A password itself does not belong in a unit file or on a "
        "command line, where others can read it.",
        variable));
}

/// The signer's options also accept "pass:" and a password.
void refusePasswordsIn(const TargetContext& target, const char* flags) {
    for (const std::string& flag : entriesOf(target, flags)) {
        if (flag.find("pass:") != std::string::npos) {
            throwPasswordGiven(flags);
        }
    }
}

/// The setting in the form of the signer's option; a file by its absolute path.
std::string passwordSource(const TargetContext& target, const TargetPaths& paths,
                           const char* variable) {
    const std::string text = target.textOf(variable).value_or("");
    if (text.empty()) {
        return text;
    }
    if (text.starts_with(kFromVariable) && text.size() > kFromVariable.size()) {
        return text;
    }
    if (text.starts_with(kFromFile) && text.size() > kFromFile.size()) {
        return std::string(kFromFile) +
               paths.absolute(std::string_view(text).substr(kFromFile.size()));
    }
    throwPasswordGiven(variable);
}

void requireSource(const char* variable, std::string_view source) {
    if (source.starts_with(kFromVariable)) {
        const std::string name(source.substr(kFromVariable.size()));
        if (!platform::environmentVariable(name)) {
            throw VeskException(fmt::format(
                "The environment variable '{}', which {} names, is not set.", name, variable));
        }
    } else if (source.starts_with(kFromFile)) {
        const std::string file(source.substr(kFromFile.size()));
        if (!isFile(file)) {
            throw VeskException(
                fmt::format("There is no file '{}', which {} names.", file, variable));
        }
    }
}

}  // namespace

SigningKey signingKeyOf(const TargetContext& target, const TargetPaths& paths) {
    refusePasswordsIn(target, "SIGN_FLAGS");
    SigningKey key;
    const std::string keystore = target.textOf("KEYSTORE").value_or("");
    if (keystore.empty()) {
        key.keystore = debugKeystore();
        key.alias = kDebugAlias;
        key.storePassword = std::string("pass:") + kDebugPassword;
        key.keyPassword = key.storePassword;
        key.isDebugKey = true;
        return key;
    }
    key.keystore = paths.absolute(keystore);
    key.alias = target.textOf("KEY_ALIAS").value_or("");
    key.storePassword = passwordSource(target, paths, "KEYSTORE_PASS");
    key.keyPassword = passwordSource(target, paths, "KEY_PASS");
    if (key.storePassword.empty()) {
        throw VeskException(fmt::format(
            "KEYSTORE '{}' needs KEYSTORE_PASS, which says where its password is: 'env:NAME' or "
            "'file:PATH'.",
            keystore));
    }
    return key;
}

void requireSigningKey(const SigningKey& key) {
    if (!isFile(key.keystore)) {
        throw VeskException(fmt::format(
            "There is no keystore '{}'. Correct KEYSTORE, or leave it out to sign with the debug "
            "key.",
            key.keystore));
    }
    requireSource("KEYSTORE_PASS", key.storePassword);
    requireSource("KEY_PASS", key.keyPassword);
}

CommandText debugKeyCommand(const std::string& keytool) {
    CommandText command;
    command.add(nativePath(keytool));
    for (const char* argument :
         {"-genkeypair", "-keystore", kNewStore, "-storepass", kDebugPassword, "-alias",
          kDebugAlias, "-keypass", kDebugPassword, "-keyalg", "RSA", "-keysize", "2048",
          "-validity", "10950", "-dname", "CN=Android Debug,O=Android,C=US"}) {
        command.add(argument);
    }
    return command;
}

void makeDebugKey(const std::string& keystore, const CommandText& command) {
    const fs::path file = platform::pathFromUtf8(keystore);
    const fs::path fresh = file.parent_path() / kNewStore;
    const auto exists = [&keystore] { return isFile(keystore); };
    if (exists()) {
        return;
    }
    try {
        std::error_code error;
        platform::makeDirectories(file.parent_path(), error);
        if (error) {
            throw std::system_error(error);
        }
        const platform::FileLock lock(file.parent_path() / "debug.keystore.vesk-lock");
        // Another build may have made it while this one waited for the lock.
        if (exists()) {
            return;
        }
        platform::removeFile(fresh, error);
        Command keytool;
        keytool.command = command.text();
        keytool.workingDirectory = file.parent_path();
        runOrThrow(keytool);
        // Another program may have made it meanwhile, and keys in use must not be replaced.
        if (exists()) {
            platform::removeFile(fresh, error);
            return;
        }
        if (!platform::replaceFile(fresh, file, error)) {
            throw std::system_error(error);
        }
    } catch (const std::system_error& error) {
        throw VeskException(
            fmt::format("The debug key '{}' cannot be made: {}. Make its directory writable, set "
                        "ANDROID_USER_HOME to another one, or give KEYSTORE.",
                        keystore, error.code().message()));
    }
}

}  // namespace Vesk
