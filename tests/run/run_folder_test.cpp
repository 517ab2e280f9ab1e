// Run folders: one per run, found by name, removed with their owner only.
#include "run/run_folder.h"

#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

#include "run/run_history.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using sbtest::temp_dir;

// A process ID that no running process holds: a child that has ended and been reaped.
long endedProcess() {
    pid_t child = fork();
    if (child == 0) _exit(0);
    int status = 0;
    waitpid(child, &status, 0);
    return child;
}

// A folder made by `create` and then given another owner.
std::string folderOwnedBy(const std::string& root, int32_t id, long pid, const std::string& host,
                          const std::string& started) {
    sb::run_folder folder;
    sb::message_sink errors;
    EXPECT_TRUE(folder.create(root, "p", id, errors)) << errors;
    std::string path = folder.path();
    folder.keep();
    sbtest::writeFile(path + sb::run_folder::kOwnerFile, "Soilbench run folder in use\npid " + std::to_string(pid) +
                                                             "\nhost " + host + "\nstarted " + started + "\n");
    return path;
}

TEST(RunFolder, OnlyFoldersOfEndedProcessesOnThisHostAreRemovedAsStale) {
    temp_dir root;
    struct owner_case {
        const char* what;
        long pid;
        std::string host;
        std::string started;  // "" for our own start time
        bool removed;
    };
    std::string ourStart;
    {
        sb::run_folder ours;
        sb::message_sink errors;
        ASSERT_TRUE(ours.create(root.path(), "p", 0, errors));
        std::string text = sbtest::readFile(ours.path() + sb::run_folder::kOwnerFile);
        ourStart = text.substr(text.find("started ") + 8);
        ourStart.pop_back();
    }
    const owner_case cases[] = {
        {"an ended process", endedProcess(), sb::hostName(), "12345", true},
        {"our own process", getpid(), sb::hostName(), ourStart, false},
        {"our process ID, taken again by another program", getpid(), sb::hostName(), "1", true},
        {"a process on another host", endedProcess(), "elsewhere.example", "12345", false},
    };
    std::vector<std::string> folders;
    for (size_t i = 0; i < std::size(cases); ++i)
        folders.push_back(
            folderOwnedBy(root.path(), static_cast<int32_t>(i + 1), cases[i].pid, cases[i].host, cases[i].started));
    sb::run_folder keptFolder;  // a failed run's folder, kept for the user
    sb::message_sink errors;
    ASSERT_TRUE(keptFolder.create(root.path(), "p", 99, errors));
    keptFolder.keep();

    EXPECT_EQ(sb::run_folder::removeStale(root.path(), errors), 2) << errors;
    EXPECT_EQ(errors.text(), "");
    for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(!fs::exists(folders[i]), cases[i].removed) << cases[i].what;
    EXPECT_TRUE(fs::is_directory(keptFolder.path()));
}

}  // namespace
