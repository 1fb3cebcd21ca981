#include "platform/process.h"

#include <gtest/gtest.h>
#include <thread>

#include "platform/files.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk::platform {
namespace {

using test::childRequest;
using test::contentOf;
using test::TempDir;

TEST(RunProcess, HandsBackTheExitCode) {
    std::vector<int> codes{0, 1, 2, 255};
    if (kWindows) {
        codes.insert(codes.end(), {256, 300, -1});
    }
    for (const int code : codes) {
        const ProcessResult result = runProcess(childRequest({"exit", std::to_string(code)}));
        EXPECT_TRUE(result.started);
        EXPECT_EQ(result.status, code);
    }
}

TEST(RunProcess, TellsWhyNothingStarted) {
    ProcessRequest request;
    request.commandLine = "\"vesk-no-such-program\" x";
    request.arguments = {"vesk-no-such-program", "x"};
    const ProcessResult result = runProcess(request);
    EXPECT_FALSE(result.started);
    EXPECT_EQ(result.status, 2) << "no such file, on both systems";
    EXPECT_NE(systemErrorText(result.status).back(), '.');

    request = childRequest({"exit", "0"});
    request.workingDirectory = pathFromUtf8("no such directory");
    EXPECT_FALSE(runProcess(request).started);
}

TEST(RunProcess, GivesTheChildItsDirectoryAndEnvironment) {
    const TempDir dir;
    ProcessRequest request = childRequest({"cwd", dir.text("cwd")});
    request.workingDirectory = dir.path();
    EXPECT_EQ(runProcess(request).status, 0);
    EXPECT_TRUE(std::filesystem::equivalent(pathFromUtf8(contentOf(dir / "cwd")), dir.path()));

    request = childRequest({"env", dir.text("out")});
    // Windows programs do not start without SystemRoot.
    request.environment = {"SystemRoot=C:\\windows", "VESK_A=1 größe", "VESK_B="};
    EXPECT_EQ(runProcess(request).status, 0);
    const std::string seen = "\n" + contentOf(dir / "out");
    EXPECT_NE(seen.find("\nVESK_A=1 größe\n"), std::string::npos) << seen;
    EXPECT_NE(seen.find("\nVESK_B=\n"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("\nHOME="), std::string::npos) << seen;
}

TEST(RunProcess, RunsManyChildrenFromManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int code = i * 10; code < i * 10 + 5; ++code) {
                EXPECT_EQ(runProcess(childRequest({"exit", std::to_string(code)})).status, code);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(CaptureShellOutput, ReadsMoreThanAPipeHoldsAndTellsTheStatus) {
    constexpr int kLines = 32'768;  // 2 MiB
    int status = -1;
    const auto output =
        captureShellOutput(test::childCommand({"fill", std::to_string(kLines)}), &status);
    ASSERT_TRUE(output);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output->size(), 64U * kLines);
    EXPECT_NE(output->find("\n32767....."), std::string::npos);
    EXPECT_EQ(captureShellOutput(test::childCommand({"exit", "7"}), &status), "");
    EXPECT_EQ(status, 7);
}

}  // namespace
}  // namespace Vesk::platform
