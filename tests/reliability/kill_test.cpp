// A save killed with SIGKILL at any moment leaves the model as it was before the
// save or as it is after it, never anything in between.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "reliability_support.h"
#include "support/test_support.h"

namespace tessmeta::test {
namespace {

using Clock = std::chrono::steady_clock;

// Runs the edit and save of `path` in a child, which writes one byte to the pipe
// when the save begins. With `killAfter` set, the child is killed that long after;
// returns how long the save took when it ran to its end.
std::chrono::microseconds SaveInChild(const std::string& path,
                                      std::optional<std::chrono::microseconds> killAfter) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(ready[0]);
        std::string error;
        auto model = CModelFile::Open(path, &error);
        if (!model) _exit(2);
        EditModel(*model, 1);
        const char go = 1;
        if (write(ready[1], &go, 1) != 1) _exit(3);
        _exit(SaveEdit(*model).empty() ? 0 : 4);
    }
    close(ready[1]);
    char go;
    EXPECT_EQ(read(ready[0], &go, 1), 1);
    close(ready[0]);
    const auto start = Clock::now();
    if (killAfter) {
        std::this_thread::sleep_for(*killAfter);
        kill(child, SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    if (!killAfter) {
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    return took;
}

TEST(KillDuringSave, LeavesTheModelBeforeOrAfterTheSave) {
    // The sanitizers slow every save about tenfold.
    const int kills = kSanitized ? 50 : 220;
    const std::uint64_t objects = kSanitized ? 600 : 2000;
    TempDir dir;
    const std::string before = dir.File("before.zmf"), after = dir.File("after.zmf"),
                      work = dir.File("work.zmf");
    WriteBaseModel(before, objects);
    CopyFile(before, after);
    const auto saveTime = SaveInChild(after, std::nullopt);
    ASSERT_EQ(SameAsOneOf(after, {after}), "");

    int sawBefore = 0, sawAfter = 0;
    for (int i = 0; i < kills; ++i) {
        CopyFile(before, work);
        unlink((work + "-journal").c_str());
        // Spread over the whole save and a little beyond it; the last kill comes
        // well after it, as a save under load can take longer than the one timed.
        SaveInChild(work, i + 1 == kills ? saveTime * 3 : saveTime * (i + 1) * 11 / (10 * kills));
        const std::string problem = SameAsOneOf(work, {before, after});
        ASSERT_EQ(problem, "") << "killed at " << i << " of " << kills;
        (SameAsOneOf(work, {before}).empty() ? sawBefore : sawAfter)++;
    }
    // Kills spread over the save see both outcomes.
    EXPECT_GT(sawBefore, 0);
    EXPECT_GT(sawAfter, 0);
    RecordProperty("save_us", static_cast<int>(saveTime.count()));
}

}  // namespace
}  // namespace tessmeta::test
