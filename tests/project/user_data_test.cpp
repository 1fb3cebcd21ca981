#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "project/registry.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

constexpr const char* kVariables[] = {"APPDATA", "USERPROFILE", "XDG_CONFIG_HOME", "HOME"};

class UserData : public Workspace {
  protected:
    UserData() {
        for (const char* name : kVariables) {
            before_.emplace_back(name, platform::environmentVariable(name));
            platform::removeEnvironmentVariable(name);
        }
    }

    ~UserData() override {
        for (const auto& [name, value] : before_) {
            value ? platform::setEnvironmentVariable(name, *value)
                  : platform::removeEnvironmentVariable(name);
        }
    }

    void set(const std::string& name, const std::string& directory) {
        platform::setEnvironmentVariable(name, platform::pathToUtf8(path(directory)));
    }

  private:
    std::vector<std::pair<std::string, std::optional<std::string>>> before_;
};

TEST_F(UserData, ComesFromTheFirstVariableThatIsSet) {
    constexpr const char* kWithoutAny = "Unable to resolve %APPDATA% path.";
    EXPECT_EQ(failureOf([] { userDataDirectory(); }), kWithoutAny);
    set("HOME", "home");
    set("XDG_CONFIG_HOME", "config");
    if (platform::kWindows) {
        EXPECT_EQ(failureOf([] { userDataDirectory(); }), kWithoutAny);
    } else {
        EXPECT_EQ(userDataDirectory(), path("config/vesk"));
        platform::setEnvironmentVariable("XDG_CONFIG_HOME", "");
        EXPECT_EQ(userDataDirectory(), path("home/.config/vesk"));
    }
    set("USERPROFILE", "profile");
    EXPECT_EQ(userDataDirectory(), path("profile/AppData/Local/vesk"));
    set("APPDATA", "new/app data");
    EXPECT_EQ(userDataDirectory(), path("new/app data/vesk"));
    EXPECT_TRUE(std::filesystem::is_directory(path("new/app data/vesk")));
    write("file", "");
    set("APPDATA", "file");
    EXPECT_THROW(userDataDirectory(), std::filesystem::filesystem_error);
}

}  // namespace
}  // namespace Vesk::test
