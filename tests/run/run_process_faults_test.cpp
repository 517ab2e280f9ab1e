// Soilbench processes under faults: two at once on one model folder, and one
// killed (kill -9) or terminated while a model runs.
#include "run_controller_fixture.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <filesystem>
#include <map>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "run/run_folder.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace sbtest;

// `soilbench run PROJECT --jobs 1` started with the project's settings as its
// profile, plus `extra` in its environment; its output goes to files.
class soilbench_run {
public:
    soilbench_run(run_project& project, const std::map<std::string, std::string>& extra = {}) {
        std::string errors;
        EXPECT_TRUE(project.settings().saveSettings(errors)) << errors;
        std::vector<std::string> args = {binDir() + "/soilbench", "run", project.db().path(), "--jobs", "1"};
        std::vector<std::string> env = {"SOILBENCH_PROFILE=" + project.settings().profilePath(),
                                        "QT_QPA_PLATFORM=offscreen"};
        for (char** e = environ; *e; ++e)
            if (std::string(*e).rfind("SB_STANDIN_MODE=", 0) != 0) env.push_back(*e);
        for (const auto& [name, value] : extra) env.push_back(name + "=" + value);
        std::vector<char*> argv, envp;
        for (auto& a : args) argv.push_back(a.data());
        for (auto& e : env) envp.push_back(e.data());
        argv.push_back(nullptr);
        envp.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, output_.file("out").c_str(), O_WRONLY | O_CREAT, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, output_.file("err").c_str(), O_WRONLY | O_CREAT, 0644);
        EXPECT_EQ(posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data()), 0);
        posix_spawn_file_actions_destroy(&actions);
    }
    ~soilbench_run() {
        if (pid_ > 0) kill(pid_, SIGKILL), finish();
    }
    // The exit status, or 128 + the signal that ended it.
    int finish() {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    void signal(int number) { kill(pid_, number); }
    std::string err() const { return readFile(output_.file("err")); }

private:
    temp_dir output_;
    pid_t pid_ = -1;
};

// Gone, or a zombie waiting to be reaped (no longer running).
bool processGone(pid_t pid) {
    std::string stat = readFile("/proc/" + std::to_string(pid) + "/stat");
    size_t state = stat.rfind(')');
    return stat.empty() || state == std::string::npos || stat[state + 2] == 'Z' || stat[state + 2] == 'X';
}

// A process group with no member left running.
bool groupGone(pid_t group) {
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::string stat = readFile(entry.path().string() + "/stat");
        size_t end = stat.rfind(')');
        if (end == std::string::npos) continue;
        std::istringstream fields(stat.substr(end + 2));
        std::string state;
        long parent = 0, pgrp = 0;
        fields >> state >> parent >> pgrp;
        if (pgrp == group && state != "Z" && state != "X") return false;
    }
    return true;
}

template <class Check>
bool within(double seconds, Check check) {
    for (double waited = 0; waited < seconds; waited += 0.02) {
        if (check()) return true;
        usleep(20000);
    }
    return check();
}

// The hanging stand-in's console in the one run folder: its own and its helper's process IDs.
bool hangingModel(const std::string& runs, std::string& folder, pid_t& model, pid_t& helper) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(runs, ec)) {
        std::string console = readFile(entry.path().string() + "/Soilbench.con");
        size_t at = console.find("hang mode, process ");
        if (at == std::string::npos || console.find("helper process ", at) == std::string::npos) continue;
        model = std::atoi(console.c_str() + at + 19);
        helper = std::atoi(console.c_str() + console.find("helper process ", at) + 15);
        folder = entry.path().string() + "/";
        return model > 0 && helper > 0;
    }
    return false;
}

// The stored rows (one text per row) of `project` that are not in `expected`, or missing.
long rowsDiffering(run_project& project, const std::vector<std::string>& expected) {
    std::vector<std::string> stored = project.storedOutputs(), only;
    std::set_symmetric_difference(stored.begin(), stored.end(), expected.begin(), expected.end(),
                                  std::back_inserter(only));
    return static_cast<long>(only.size());
}

TEST(ProcessFaults, TwoProcessesOnOneModelFolderStoreWhatOneAloneStores) {
    constexpr int kRecords = 12;
    run_project alone(kRecords, 10), first(kRecords, 10), second(kRecords, 10);
    soilbench_run reference(alone);
    ASSERT_EQ(reference.finish(), 0) << reference.err();
    const std::vector<std::string> expected = alone.storedOutputs();
    ASSERT_FALSE(expected.empty());

    // Two projects whose runs share one model folder, then one project run twice at once.
    second.settings().modelExecutables[3] = first.model();
    second.settings().list100Executables[3] = first.list100();
    {
        soilbench_run a(first), b(second);
        EXPECT_EQ(a.finish(), 0) << a.err();
        EXPECT_EQ(b.finish(), 0) << b.err();
    }
    EXPECT_EQ(rowsDiffering(first, expected), 0);
    EXPECT_EQ(rowsDiffering(second, expected), 0);
    {
        soilbench_run a(first), b(first);
        EXPECT_EQ(a.finish(), 0) << a.err();
        EXPECT_EQ(b.finish(), 0) << b.err();
    }
    EXPECT_EQ(rowsDiffering(first, expected), 0);
}

// However Soilbench ends while a model runs, the model and everything it
// started end too (the hanging stand-in's helper has left its process group).
TEST(ProcessFaults, EndingSoilbenchEndsTheModelAndEverythingItStarted) {
    struct ending {
        int signal;
        bool folderStays;  // kept for inspection (a cancelled run), or stale until the next start
    };
    for (ending e : {ending{SIGKILL, false}, ending{SIGTERM, true}}) {
        SCOPED_TRACE(strsignal(e.signal));
        run_project project(1, 10);
        const std::string runs = project.settings().runsFolder;
        soilbench_run run(project, {{"SB_STANDIN_MODE", "hang"}});
        std::string folder;
        pid_t model = 0, helper = 0;
        ASSERT_TRUE(within(30, [&] { return hangingModel(runs, folder, model, helper); })) << run.err();
        ASSERT_FALSE(processGone(model));
        ASSERT_FALSE(processGone(helper));
        run.signal(e.signal);
        EXPECT_EQ(run.finish(), e.signal == SIGKILL ? 128 + SIGKILL : 1);
        EXPECT_TRUE(within(5, [&] { return processGone(model) && processGone(helper); }));
        EXPECT_TRUE(within(5, [&] { return groupGone(model); }));
        EXPECT_EQ(fs::exists(folder + sb::run_folder::kOwnerFile), !e.folderStays) << folder;

        // The next run starts by clearing what a killed Soilbench left behind.
        soilbench_run next(project);
        EXPECT_EQ(next.finish(), 0) << next.err();
        EXPECT_EQ(fs::exists(folder), e.folderStays) << folder;
        if (e.folderStays) {
            EXPECT_NE(run.err().find("ERROR, the run of record 1 was cancelled"), std::string::npos) << run.err();
        }
    }
}

}  // namespace
