// The key that a package is signed with.
#pragma once

#include <string>

#include "tools/support/command_text.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// Passwords are never here, but where the signer finds them: "env:NAME", "file:PATH". Only that of
/// debug keys is known to everybody.
struct SigningKey {
    std::string keystore;       ///< absolute
    std::string alias;          ///< empty: the only key of the store
    std::string storePassword;  ///< as the signer's options take it
    std::string keyPassword;    ///< empty: that of the store
    bool isDebugKey = false;
};

/// What KEYSTORE, KEY_ALIAS, KEYSTORE_PASS and KEY_PASS say; without KEYSTORE the user's debug key.
/// Throws VeskException when a password is missing or is given itself.
SigningKey signingKeyOf(const TargetContext& target, const TargetPaths& paths);

/// Throws VeskException when the store or a source of passwords is not there. Asked just before
/// signing: what is up to date needs no key.
void requireSigningKey(const SigningKey& key);

/// The command that makes a debug key, run in the directory where the store is to be.
CommandText debugKeyCommand(const std::string& keytool);

/// Makes the debug key unless there is one. Any number of builds may do so at once. Throws
/// VeskException when it cannot be made.
void makeDebugKey(const std::string& keystore, const CommandText& command);

}  // namespace Vesk
