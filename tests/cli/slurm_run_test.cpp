// Runs through a real single-node Slurm cluster (tests/support/slurm-test-cluster,
// started once per test run), with the stand-in model: the same records stored
// as a local run stores them, a submitting program killed half-way, and the
// failures a user must be told about.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/text_file.h"
#include "app/text_format.h"
#include "cli_fixture.h"
#include "db/database.h"

extern char** environ;

namespace {

constexpr int kRecords = 4;
const char* const kIds = "101-104";

// "key=value" of the cluster's info file, "" when absent.
std::string infoValue(const std::string& info, const std::string& key) {
    for (const std::string& line : sb::splitLines(info))
        if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
    return "";
}

// Points this program, its children and `env` at the suite's Slurm cluster;
// false with the reason when there is none.
bool joinSlurmCluster(std::map<std::string, std::string>& env, std::string& why) {
    const char* infoPath = std::getenv("SB_TEST_SLURM");
    if (!infoPath) {
        why = "no Slurm test cluster (run through ctest, which starts one)";
        return false;
    }
    const std::string info = sbtest::readFile(infoPath);
    const std::string conf = infoValue(info, "conf");
    if (!infoValue(info, "unavailable").empty())
        why = "Slurm test cluster unavailable: " + infoValue(info, "unavailable");
    else if (conf.empty()) why = std::string("Slurm test cluster wrote no configuration to ") + infoPath;
    if (!why.empty()) return false;
    setenv("SLURM_CONF", conf.c_str(), 1);  // for the programs started here and their tasks
    env["SLURM_CONF"] = conf;
    return true;
}

// The states of the record's runs, oldest first.
std::vector<std::string> runStates(const std::string& path, int id) {
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    std::vector<std::pair<std::string, std::string>> runs;
    sb::db_status status;
    auto set = db ? db->openTable(sb::table_id::run_history, sb::strprintf("ID = %d", id), "", status) : nullptr;
    for (sb::db_status s = set ? set->moveFirst() : status; set && s.ok(); s = set->moveNext())
        runs.emplace_back(set->row().text("Started"), set->row().text("State"));
    std::sort(runs.begin(), runs.end());
    std::vector<std::string> states;
    for (const auto& run : runs) states.push_back(run.second);
    return states;
}

long countRows(const std::string& path, sb::table_id table) {
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    long long count = 0;
    if (!db || !db->countRows(table, count).ok()) return -1;
    return static_cast<long>(count);
}

// The Slurm job the project notes as out.
std::string submittedJob(const std::string& path) {
    sb::message_sink errors;
    auto db = sb::database::open(path, errors);
    sb::db_status status;
    auto set = db ? db->openTable(sb::table_id::slurm_submissions, "", "", status) : nullptr;
    if (!set || !set->moveFirst().ok()) return "";
    return sb::strprintf("%.0f", set->row().number("Job"));
}

// Runs a Slurm command of the test's own (scancel, squeue) and returns its standard output.
std::string slurmCommand(const std::vector<std::string>& args, const std::string& outFile) {
    std::vector<char*> argv;
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = -1;
    int status = -1;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) waitpid(pid, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    return sbtest::readFile(outFile);
}

class SlurmRuns : public CliTest {
public:
    void SetUp() override {
        CliTest::SetUp();
        std::string why;
        if (!joinSlurmCluster(env, why)) GTEST_SKIP() << why;
        shared = dir.file("shared");
        makeRunnableProject();
        addDemoCopies(project, kRecords, kRecords);
    }

    std::vector<std::string> slurmArgs(const std::string& path, const std::string& ids = kIds) const {
        return {"run", path, "--ids", ids, "--slurm", "--shared-dir", shared};
    }

    // What a local run of the records stores.
    std::vector<std::string> localOutputs() {
        const std::string local = dir.file("local.sbproj");
        fs::copy_file(project, local, fs::copy_options::overwrite_existing);
        auto ran = run({"run", local, "--ids", kIds, "--jobs", "2"});
        EXPECT_EQ(ran.exitCode, 0) << ran.err;
        return storedOutputs(local);
    }

    std::string shared;
};

// The submitting program is killed while the array runs and the rest of the
// array is cancelled: collect stores every record whose task ended, marks the
// cancelled ones as failed, and a run of the failed ones alone completes the project.
TEST_F(SlurmRuns, CollectBringsInWhatEndedAfterTheSubmitterWasKilled) {
    const std::vector<std::string> expected = localOutputs();
    sbtest::temp_dir output;
    std::vector<std::string> args = slurmArgs(project);
    args.insert(args.end(), {"--max-parallel", "1"});
    started_program submitter(args, env);
    auto resultCount = [&] {
        long results = 0;
        std::error_code ec;
        for (const auto& entry : fs::recursive_directory_iterator(shared, ec))
            results += entry.path().filename() == "soilbench-result.txt" ? 1 : 0;
        return results;
    };
    const bool oneEnded = sbtest::within(60, [&] { return resultCount() >= 1; });
    submitter.signal(SIGKILL);
    submitter.finish();
    ASSERT_TRUE(oneEnded) << submitter.err();
    ASSERT_EQ(countRows(project, sb::table_id::slurm_submissions), kRecords);
    // The rest of this job (only: other tests' jobs run beside it) is cancelled.
    const std::string job = submittedJob(project);
    ASSERT_FALSE(job.empty());
    slurmCommand({"scancel", job}, output.file("scancel"));
    ASSERT_TRUE(sbtest::within(60, [&] {
        return slurmCommand({"squeue", "--noheader", "--jobs", job}, output.file("squeue")).empty();
    }));
    const long ended = resultCount();

    auto collected = run({"collect", project});
    EXPECT_EQ(collected.exitCode, ended == kRecords ? 0 : 1) << collected.err;
    EXPECT_THAT(collected.out, HasSubstr(sb::strprintf("%d records collected: %ld good, %ld failed; 0 still running.",
                                                       kRecords, ended, kRecords - ended)))
        << collected.out << collected.err;
    EXPECT_EQ(countRows(project, sb::table_id::slurm_submissions), 0);
    std::string rest;
    for (int id = 101; id < 101 + kRecords; ++id) {
        const std::vector<std::string> states = runStates(project, id);
        ASSERT_EQ(states.size(), 1u) << id;
        if (states.back() != "good") {
            EXPECT_EQ(states.back(), "cancelled") << id;
            rest += (rest.empty() ? "" : ",") + std::to_string(id);
        }
    }
    EXPECT_EQ(rest.empty(), ended == kRecords);
    if (!rest.empty()) {
        auto reran = run({"run", project, "--only", "failed", "--slurm", "--shared-dir", shared});
        EXPECT_EQ(reran.exitCode, 0) << reran.err;
        EXPECT_THAT(reran.out, HasSubstr(sb::strprintf("%ld records run: %ld good, 0 failed.", kRecords - ended,
                                                       kRecords - ended)));
    }
    EXPECT_EQ(storedOutputs(project), expected);
}

// The same fifty records run locally (two at once), through Slurm and on a
// PostgreSQL project store the same value in every output table and the same
// run outcomes.
class SameRunEverywhere : public CliTest, public ::testing::WithParamInterface<std::string> {};

TEST_P(SameRunEverywhere, StoresWhatALocalRunStores) {
    constexpr int kCompared = 50;
    const char* const kComparedIds = "101-150";
    const std::string local = dir.file("local.sbproj");
    std::string where = dir.file("compared.sbproj");
    std::vector<std::string> how = {"--jobs", "2"};
    std::string why;
    if (GetParam() == "slurm" && joinSlurmCluster(env, why))
        how = {"--slurm", "--shared-dir", dir.file("shared"), "--max-parallel", "2"};
    const sbtest::postgresql_server* server = sbtest::postgresqlServer();
    if (GetParam() == "postgresql") {
        why = !server             ? "no PostgreSQL test server (run through ctest, which starts one)"
              : server->available ? ""
                                  : "PostgreSQL test server unavailable: " + server->why;
        where = sbtest::projectLocation(where);
    }
    if (!why.empty()) GTEST_SKIP() << why;
    makeRunnableProject(local);
    addDemoCopies(local, kCompared, 7, {"N45", "N90", "N135"});
    ASSERT_EQ(run({"copy-project", local, where}).exitCode, 0);
    auto ranLocally = run({"run", local, "--ids", kComparedIds, "--jobs", "2"});
    ASSERT_EQ(ranLocally.exitCode, 0) << ranLocally.err;
    std::vector<std::string> args = {"run", where, "--ids", kComparedIds};
    args.insert(args.end(), how.begin(), how.end());
    auto ran = run(args);
    ASSERT_EQ(ran.exitCode, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("50 records run: 50 good, 0 failed."));
    const std::vector<std::string> expected = storedOutputs(local);
    ASSERT_GT(expected.size(), 1000u);
    EXPECT_EQ(storedOutputs(where), expected);
    for (int id = 101; id < 101 + kCompared; ++id) EXPECT_EQ(runStates(where, id), runStates(local, id)) << id;
    EXPECT_EQ(runStates(local, 150), std::vector<std::string>{"good"});
    // Nothing is left out on the cluster.
    EXPECT_EQ(countRows(where, sb::table_id::slurm_submissions), 0);
}

// The Slurm leg runs among the slurm.* tests, with the cluster; the server leg
// among the others, with the PostgreSQL server.
INSTANTIATE_TEST_SUITE_P(SlurmRuns, SameRunEverywhere, ::testing::Values("slurm"),
                         [](const auto& leg) { return leg.param; });
INSTANTIATE_TEST_SUITE_P(ServerRuns, SameRunEverywhere, ::testing::Values("postgresql"),
                         [](const auto& leg) { return leg.param; });

// The submitting program in a mount namespace of its own, where the shared
// folder is a private memory file system: the nodes cannot see what it writes.
int runWithPrivateFolder(const std::vector<std::string>& args, const std::map<std::string, std::string>& env,
                         const std::string& folder, const std::string& errFile) {
    pid_t child = fork();
    if (child == 0) {
        for (const auto& [name, value] : env) setenv(name.c_str(), value.c_str(), 1);
        int err = open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (err < 0 || dup2(err, 2) < 0 || unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64m") != 0)
            _exit(99);
        std::vector<char*> argv;
        const std::string program = sbtest::soilbenchProgram();
        argv.push_back(const_cast<char*>(program.c_str()));
        for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(98);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(SlurmRuns, AFolderTheNodesDoNotSeeIsNamed) {
    fs::create_directories(shared);
    sbtest::temp_dir output;
    const int status = runWithPrivateFolder(slurmArgs(project, "101"), env, shared, output.file("err"));
    if (status == 99) GTEST_SKIP() << "no private mount namespace here (needs root)";
    const std::string err = sbtest::readFile(output.file("err"));
    EXPECT_EQ(status, 1) << err;
    EXPECT_THAT(err, HasSubstr("\" is not shared with the Slurm nodes: task 0 of job "));
    EXPECT_THAT(err, HasSubstr("Give --shared-dir a folder every node sees (a network file system)."));
    EXPECT_EQ(runStates(project, 101), std::vector<std::string>{"failed"});
    EXPECT_EQ(countRows(project, sb::table_id::output_annual), 0);
    EXPECT_EQ(countRows(project, sb::table_id::slurm_submissions), 0);
}

// Without a cluster: what is refused before anything runs, each with its
// message, every record marked failed and nothing stored.
TEST_F(CliTest, SlurmRunsRefusedBeforeAnythingRuns) {
    makeRunnableProject();
    struct refusal {
        const char* name;
        std::vector<std::string> extra;
        std::map<std::string, std::string> env;
        const char* message;
        int exitCode;
        bool markedFailed;
    };
    const std::string emptyBin = dir.file("empty-bin");
    fs::create_directories(emptyBin);
    // The last case marks the record failed; the others leave no trace.
    const refusal cases[] = {
        {"no shared folder",
         {},
         {},
         "ERROR, no shared folder for Slurm runs: give --shared-dir, or set Files/SlurmFolder to a folder every node "
         "sees. Nothing was run.\n",
         1,
         false},
        {"a shared folder that is a file",
         {"--shared-dir", project},
         {},
         "ERROR, unable to make the shared folder \"",
         1,
         false},
        {"--partition without --slurm", {}, {}, "--partition requires --slurm", 2, false},
        {"sbatch not on the PATH",
         {"--shared-dir", dir.file("shared")},
         {{"PATH", emptyBin}},
         "ERROR, \"sbatch\" was not found on the PATH: Slurm's commands must be installed on this host.\n",
         1,
         true},
    };
    for (const refusal& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> args = {"run", project, "--ids", "2"};
        if (std::string(c.name).find("without") == std::string::npos) args.push_back("--slurm");
        else args.insert(args.end(), {"--partition", "debug"});
        args.insert(args.end(), c.extra.begin(), c.extra.end());
        std::map<std::string, std::string> caseEnv = env;
        for (const auto& [name, value] : c.env) caseEnv[name] = value;
        auto ran = runSoilbench(args, caseEnv);
        EXPECT_EQ(ran.exitCode, c.exitCode) << ran.err;
        EXPECT_THAT(ran.err, HasSubstr(c.message));
        EXPECT_EQ(runStates(project, 2),
                  c.markedFailed ? std::vector<std::string>{"failed"} : std::vector<std::string>{});
        EXPECT_EQ(countRows(project, sb::table_id::output_annual), 0);
    }
    EXPECT_TRUE(fs::is_empty(dir.file("shared")));
}

// Slurm's own commands stood in for by scripts: sbatch takes job 4242, squeue
// no longer knows it (it ended longer ago than MinJobAge), and sacct tells how
// each task ended, or that the cluster keeps no accounting.
TEST_F(CliTest, ATaskGoneFromTheQueueEndsAsTheAccountingTells) {
    makeRunnableProject();
    addDemoCopies(project, 3, 1);
    const std::string bin = dir.file("slurm-bin");
    fs::create_directories(bin);
    auto script = [&](const std::string& name, const std::string& body) {
        sbtest::writeFile(bin + "/" + name, "#!/bin/sh\n" + body);
        fs::permissions(bin + "/" + name, fs::perms::owner_all);
    };
    script("sbatch", "echo 4242\n");
    script("squeue", "echo 'slurm_load_jobs error: Invalid job id specified' >&2\nexit 1\n");
    env["PATH"] = bin + ":/usr/bin:/bin";
    const struct {
        const char* sacct;
        std::vector<std::string> states;  // of records 101-103
        const char* message;
    } cases[] = {
        {"echo '4242_0|TIMEOUT|0:0'; echo '4242_1|OUT_OF_MEMORY|0:125'; echo '4242_[2]|CANCELLED by 0|0:0'\n",
         {"timed out", "failed", "cancelled"},
         "ERROR, task 1 of Slurm job 4242 ended (OUT_OF_MEMORY, exit status 0) without a result in \""},
        {"echo 'Slurm accounting storage is disabled' >&2\nexit 1\n",
         {"failed", "failed", "failed"},
         "Slurm no longer lists job 4242 and its accounting cannot be read (Slurm accounting storage is disabled): "
         "its tasks without a result are taken as ended.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sacct);
        script("sacct", c.sacct);
        auto ran = run({"run", project, "--ids", "101-103", "--slurm", "--shared-dir", dir.file("shared")});
        EXPECT_EQ(ran.exitCode, 1) << ran.err;
        EXPECT_THAT(ran.out, HasSubstr("3 records run: 0 good, 3 failed."));
        EXPECT_THAT(ran.err, HasSubstr(c.message));
        for (int id = 101; id <= 103; ++id) EXPECT_EQ(runStates(project, id).back(), c.states[id - 101]) << id;
    }
    EXPECT_EQ(countRows(project, sb::table_id::slurm_submissions), 0);
}

}  // namespace
