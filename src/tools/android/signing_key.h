// The key that signs a package.
#pragma once

#include <string>

#include "tools/support/command_text.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// Holds no passwords, but where the signer finds them: "env:NAME", "file:PATH". Only the password
/// of debug keys is public.
struct SigningKey {
    std::string keystore;       ///< absolute
    std::string alias;          ///< empty: the only key in the store
    std::string storePassword;  ///< in the form of the signer's options
    std::string keyPassword;    ///< empty: that of the store
    bool isDebugKey = false;
};

/// The key that KEYSTORE, KEY_ALIAS, KEYSTORE_PASS and KEY_PASS describe; without KEYSTORE, the
/// user's debug key. Throws VeskException if a password is missing or is given directly.
SigningKey signingKeyOf(const TargetContext& target, const TargetPaths& paths);

/// Throws VeskException if the store or the source of a password does not exist. Called just before
/// signing, since an up-to-date package needs no key.
void requireSigningKey(const SigningKey& key);

/// The command that makes a debug key, run in the directory of the future store.
CommandText debugKeyCommand(const std::string& keytool);

/// Makes the debug key unless it exists. Any number of builds may do so at once. Throws
/// VeskException if it cannot be made.
void makeDebugKey(const std::string& keystore, const CommandText& command);

}  // namespace Vesk
