// Keeping daily output files: folders and moves without a shell.
#include "app/file_mover.h"
#include "test_support.h"

#include <filesystem>
#include <sys/stat.h>

namespace {

TEST(FileMover, MoveReplacesTargetAndReportsAMissingSource) {
    sbtest::temp_dir dir;
    sb::message_sink errors;
    sbtest::writeFile(dir.file("daily.out"), "new daily");
    sbtest::writeFile(dir.file("old.out"), "old");
    EXPECT_TRUE(sb::file_mover::moveFile(dir.file("daily.out"), dir.file("old.out"), errors));
    EXPECT_EQ(sbtest::readFile(dir.file("old.out")), "new daily");
    EXPECT_FALSE(std::filesystem::exists(dir.file("daily.out")));

    EXPECT_FALSE(sb::file_mover::moveFile(dir.file("daily.out"), dir.file("x.out"), errors));
    EXPECT_EQ(errors.text(), "ERROR, unable to move \"" + dir.file("daily.out") + "\" to \"" + dir.file("x.out") +
                                 "\": no such file.\n");
}

TEST(FileMover, MoveIntoMissingFolderFailsWithItsReason) {
    sbtest::temp_dir dir;
    sb::message_sink errors;
    sbtest::writeFile(dir.file("summary.out"), "s");
    EXPECT_FALSE(sb::file_mover::moveFile(dir.file("summary.out"), dir.file("no/such/summary.out"), errors));
    EXPECT_EQ(errors.text().rfind("ERROR, unable to move \"" + dir.file("summary.out") + "\"", 0), 0u);
    EXPECT_TRUE(std::filesystem::exists(dir.file("summary.out")));  // nothing lost
}

TEST(FileMover, MoveAcrossFileSystemsCopiesAndRemoves) {
    sbtest::temp_dir dir;
    struct stat tmp {
    }, shm{};
    if (stat(dir.path().c_str(), &tmp) != 0 || stat("/dev/shm", &shm) != 0 || tmp.st_dev == shm.st_dev ||
        access("/dev/shm", W_OK) != 0)
        GTEST_SKIP() << "no second writable file system (/dev/shm) beside " << dir.path();
    std::string target = "/dev/shm/sbtest-move-" + std::to_string(getpid());
    sb::message_sink errors;
    sbtest::writeFile(dir.file("nflux.out"), "nflux rows");
    EXPECT_TRUE(sb::file_mover::moveFile(dir.file("nflux.out"), target, errors)) << errors;
    EXPECT_EQ(sbtest::readFile(target), "nflux rows");
    EXPECT_FALSE(std::filesystem::exists(dir.file("nflux.out")));
    std::filesystem::remove(target);
}

}  // namespace
