// Failing disks and files that cannot be written: every failure is reported with
// the file and the cause, and the last saved model stays as it was.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fault_vfs.h"
#include "model/model_check.h"
#include "reliability_support.h"
#include "support/test_support.h"

namespace tessmeta::test {
namespace {

class FaultTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        s_dir = new TempDir;
        WriteBaseModel(Before(), 120);
        CopyFile(Before(), After());
        ASSERT_EQ(EditAndSave(After(), 1), "");
    }
    static void TearDownTestSuite() { delete s_dir; }
    static std::string Before() { return s_dir->File("before.zmf"); }
    static std::string After() { return s_dir->File("after.zmf"); }
    static std::string Work() { return s_dir->File("work.zmf"); }
    static void Reset() {
        CopyFile(Before(), Work());
        unlink((Work() + "-journal").c_str());
    }
    static TempDir* s_dir;
};
TempDir* FaultTest::s_dir = nullptr;

std::string Load(const std::string& path) {
    std::string error;
    auto model = CModelFile::Open(path, &error);
    if (!model) return error;
    CheckModelFile(model->GetFile());
    return "";
}

// Every call of every kind fails in turn, over a save and over a load. The
// sanitizer build, ten times slower, fails every fifth call; the release build every one.
constexpr int kStep = kSanitized ? 5 : 1;

TEST_F(FaultTest, EveryFailingCallIsReportedAndLosesNothing) {
    for (const bool saving : {true, false}) {
        // A load writes nothing.
        const std::vector<EFault> kinds =
            saving ? std::vector{EFault::Read, EFault::Write, EFault::DiskFull,
                                 EFault::Sync, EFault::Lock,  EFault::Open}
                   : std::vector{EFault::Read, EFault::Lock, EFault::Open};
        for (const EFault kind : kinds) {
            int fired = 0;
            for (int n = 1;; n += kStep) {
                Reset();
                std::string error;
                {
                    CFaultVfs vfs;
                    vfs.Arm(kind, n);
                    error = saving ? EditAndSave(Work(), 1) : Load(Work());
                    if (!vfs.Fired()) break;
                }
                ++fired;
                const std::string where = std::string(saving ? "save" : "load") + ", " +
                                          FaultName(kind) + " " + std::to_string(n);
                if (!error.empty()) {
                    EXPECT_NE(error.find(Work()), std::string::npos) << where << ": " << error;
                    EXPECT_GT(error.size(), Work().size() + 2) << where;
                    if (kind == EFault::DiskFull) {
                        EXPECT_NE(error.find("full"), std::string::npos) << where << ": " << error;
                    }
                }
                // A save that failed left the model as it was; one that got past
                // the fault wrote the new one. A load changes nothing.
                const std::vector<std::string> allowed =
                    !saving || !error.empty() ? std::vector{Before()} : std::vector{After()};
                ASSERT_EQ(SameAsOneOf(Work(), allowed), "") << where << ": " << error;
            }
            EXPECT_GT(fired, 0) << (saving ? "save " : "load ") << FaultName(kind);
        }
    }
}

TEST_F(FaultTest, ReadOnlyFileLoadsButRefusesToSave) {
    Reset();
    ASSERT_EQ(chmod(Work().c_str(), 0444), 0);
    EXPECT_EQ(Load(Work()), "");
    const std::string error = EditAndSave(Work(), 1);
    EXPECT_NE(error.find(Work() + ": cannot save: the file is read-only"), std::string::npos)
        << error;
    chmod(Work().c_str(), 0644);
    EXPECT_EQ(SameAsOneOf(Work(), {Before()}), "");
}

// Two processes save the same file at once: each save is whole (the last one wins,
// or the other is refused with a clear error), the file is never a mixture.
TEST_F(FaultTest, TwoProcessesSavingOneFile) {
    const std::string other = s_dir->File("other.zmf");
    CopyFile(Before(), other);
    ASSERT_EQ(EditAndSave(other, 2), "");
    for (int round = 0; round < 6; ++round) {
        Reset();
        int start[2], report[2], ready[2];
        ASSERT_EQ(pipe(start), 0);
        ASSERT_EQ(pipe(report), 0);
        ASSERT_EQ(pipe(ready), 0);
        pid_t children[2];
        for (int variant : {1, 2}) {
            children[variant - 1] = fork();
            if (children[variant - 1] == 0) {
                close(start[1]);
                std::string error;
                auto model = CModelFile::Open(Work(), &error);
                if (model) EditModel(*model, variant);
                // Both hold the model as it was before either saves.
                if (write(ready[1], "r", 1) != 1) _exit(3);
                char go;
                if (read(start[0], &go, 1) != 1) _exit(3);
                if (model) error = SaveEdit(*model);
                error += '\n';
                if (write(report[1], error.data(), error.size()) < 0) _exit(3);
                _exit(0);
            }
        }
        close(start[0]);
        close(report[1]);
        close(ready[1]);
        char both[2];
        for (ssize_t got = 0, n; got < 2 && (n = read(ready[0], both + got, 2 - got)) > 0;)
            got += n;
        close(ready[0]);
        const char go[2] = {1, 1};
        ASSERT_EQ(write(start[1], go, 2), 2);
        close(start[1]);
        std::string reports;
        char buffer[512];
        for (ssize_t got; (got = read(report[0], buffer, sizeof buffer)) > 0;)
            reports.append(buffer, static_cast<std::size_t>(got));
        close(report[0]);
        for (pid_t child : children)
            waitpid(child, nullptr, 0);
        int saved = 0;
        for (std::size_t at = 0, end; (end = reports.find('\n', at)) != reports.npos;
             at = end + 1) {
            const std::string error = reports.substr(at, end - at);
            if (error.empty())
                ++saved;
            else
                EXPECT_NE(error.find(Work() + ": "), std::string::npos) << error;
        }
        EXPECT_GE(saved, 1) << reports;
        ASSERT_EQ(SameAsOneOf(Work(), {After(), other}), "")
            << "round " << round << ": " << reports;
    }
}

}  // namespace
}  // namespace tessmeta::test
