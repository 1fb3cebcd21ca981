#include "platform/windows/owner_only.h"

#include <cstddef>
#include <sddl.h>
#include <string>
#include <vector>

#include "platform/windows/handle.h"

namespace Vesk::platform {

namespace {

/// The identifier of the user whom this process works for; empty when the system does not tell.
std::wstring userIdentifier() {
    HANDLE opened = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened)) {
        return {};
    }
    const Handle token(opened);
    DWORD size = 0;
    ::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::byte> user(size);
    wchar_t* text = nullptr;
    if (size == 0 || !::GetTokenInformation(token.get(), TokenUser, user.data(), size, &size) ||
        !::ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid,
                                  &text)) {
        return {};
    }
    std::wstring identifier = text;
    ::LocalFree(text);
    return identifier;
}

}  // namespace

OwnerOnly::OwnerOnly() {
    const std::wstring user = userIdentifier();
    // All rights, nothing inherited from the directory.
    const std::wstring rights = L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;" + user + L")";
    if (!user.empty()) {
        ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
            rights.c_str(), SDDL_REVISION_1, &attributes_.lpSecurityDescriptor, nullptr);
    }
    attributes_.nLength = sizeof attributes_;
}

OwnerOnly::~OwnerOnly() {
    ::LocalFree(attributes_.lpSecurityDescriptor);
}

SECURITY_ATTRIBUTES* OwnerOnly::attributes() const noexcept {
    return attributes_.lpSecurityDescriptor == nullptr ? nullptr : &attributes_;
}

}  // namespace Vesk::platform
