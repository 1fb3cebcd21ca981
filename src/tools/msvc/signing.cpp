#include "tools/msvc/signing.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "base/text.h"
#include "platform/system.h"
#include "tools/support/command_text.h"
#include "tools/support/recipe_parts.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

std::string textOf(const TargetContext& target, const char* variable) {
    return target.textOf(variable).value_or("");
}

/// What is written into a command text must be nothing but a name.
void checkVariableName(const std::string& name) {
    const auto isAllowed = [](char c) {
        return (asciiLower(c) >= 'a' && asciiLower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_';
    };
    if (!std::ranges::all_of(name, isAllowed) || (name[0] >= '0' && name[0] <= '9')) {
        throw VeskException(fmt::format(
            "SIGN_PASSWORD_ENV is '{}', which is not the name of an environment variable. "
            "It names the variable that holds the password.",
            name));
    }
}

void refusePasswords(const TargetContext& target) {
    for (const char* variable : {"SIGN_PASSWORD", "SIGN_PASS"}) {
        if (hasEntries(target, variable)) {
            throw VeskException(
                fmt::format("{} would show the password in files and messages. Put it into an "
                            "environment variable, and name that in SIGN_PASSWORD_ENV.",
                            variable));
        }
    }
}

std::string referenceTo(const std::string& variable) {
    return platform::kWindows ? "\"%" + variable + "%\"" : "\"$" + variable + "\"";
}

}  // namespace

Signing::Signing(const TargetContext& target, const TargetPaths& paths) {
    refusePasswords(target);
    int given = 0;
    for (const char* variable : {"SIGN_CERT", "SIGN_NAME", "SIGN_THUMBPRINT"}) {
        given += hasEntries(target, variable) ? 1 : 0;
    }
    if (given == 0) {
        return;
    }
    if (given > 1) {
        throw VeskException(
            "A certificate is chosen by one of SIGN_CERT (a file), SIGN_NAME (its subject in a "
            "store) and SIGN_THUMBPRINT. This target has several of them.");
    }
    const std::string digest = textOf(target, "SIGN_DIGEST");
    const std::string& name = digest.empty() ? "SHA256" : digest;
    options_ = {"/fd", name};
    if (const std::string url = textOf(target, "TIMESTAMP_URL"); !url.empty()) {
        options_.insert(options_.end(), {"/tr", url, "/td", name});
    }
    if (hasEntries(target, "SIGN_CERT")) {
        useFile(target, paths);
    } else {
        useStore(target);
    }
    for (std::string& flag : entriesOf(target, "SIGN_FLAGS")) {
        options_.push_back(std::move(flag));
    }
}

void Signing::useStore(const TargetContext& target) {
    std::string thumbprint = textOf(target, "SIGN_THUMBPRINT");
    // Certificate viewers put blanks between the bytes.
    std::erase(thumbprint, ' ');
    if (thumbprint.empty()) {
        certificate_ = {"/n", textOf(target, "SIGN_NAME")};
    } else {
        certificate_ = {"/sha1", thumbprint};
    }
    const std::string store = textOf(target, "SIGN_STORE");
    if (!store.empty()) {
        certificate_.insert(certificate_.end(), {"/s", store});
    }
}

void Signing::useFile(const TargetContext& target, const TargetPaths& paths) {
    const std::vector<std::string> files = paths.files("SIGN_CERT");
    if (files.size() != 1) {
        throw VeskException(
            fmt::format("SIGN_CERT must name one file; it names {}. A name with "
                        "blanks is written P\"(my file.pfx)\".",
                        files.size()));
    }
    file_ = files.front();
    certificate_ = {"/f", paths.inCommand(file_)};
    passwordVariable_ = textOf(target, "SIGN_PASSWORD_ENV");
    if (!passwordVariable_.empty()) {
        checkVariableName(passwordVariable_);
    }
}

void Signing::addTo(Recipe& recipe, const std::string& program, const std::string& file) const {
    CommandText command;
    command.add(nativePath(program));
    command.add("sign");
    command.add({}, options_);
    command.add({}, certificate_);
    if (!passwordVariable_.empty()) {
        command.add("/p");
        command.addAsWritten(referenceTo(passwordVariable_));
        recipe.secretVariables.push_back(passwordVariable_);
    }
    command.add(file);
    recipe.furtherCommands.push_back(command.text());
    addInput(recipe, "program", program);
    if (!file_.empty()) {
        addInput(recipe, "SIGN_CERT", file_);
    }
}

}  // namespace Vesk
