#pragma once
// A record's run handed to another machine (a cluster node): the submitting
// Soilbench writes the run folder and a task order beside the inputs; the node
// runs "soilbench run-task FOLDER", which runs the model and the list utility
// there and leaves a result file; the submitting Soilbench (or a later
// "soilbench collect") reads the outputs and the result back and stores them
// as any local run's.
//
// Both files are plain "key=value" lines. The result file appears whole or
// not at all (written aside, then renamed), so a result that is there is a
// finished task's. After its lines and an empty one come the run log and the
// messages, byte for byte; its "messages" line lists each message's severity
// and length ("warning:61,error:40").
#include <cstdint>
#include <string>
#include <vector>

#include "app/app_soilbench.h"
#include "app/message_sink.h"
#include "run/run_state.h"

namespace sb {

// What a task runs and how its outputs are read back afterwards.
struct task_order {
    int32_t id = 0;
    int version = 0;
    std::string model, listUtility;
    uint32_t runTimeoutMs = 0;
    bool readBinaryOutput = false;
    std::string wineCommand, winePrefix;
    int32_t saveDailyFirstYear = 1, saveDailyLastYear = 1;
    std::vector<int> blockOrder;
    std::string inputsDigest;
    // The folder shared with the nodes holds this file with this text: a task
    // that does not find it is on a machine that does not share the folder.
    std::string marker, markerText;

    // The settings the programs run with (the user's others are kept).
    app_soilbench runSettings(const app_soilbench& base) const;
};

struct task_result {
    run_state state = run_state::failed;
    std::string started, ended, host;
    std::string runLog;
    message_sink messages;  // with their severities, as the run told them
};

inline constexpr const char* kTaskOrderFile = "soilbench-task.txt";
inline constexpr const char* kTaskResultFile = "soilbench-result.txt";
// A task that cannot see the shared folder's marker ends with this status.
inline constexpr int kTaskNotSharedStatus = 3;

bool writeTaskOrder(const std::string& folder, const task_order& order, message_sink& errors);
bool readTaskOrder(const std::string& folder, task_order& order, message_sink& errors);
bool writeTaskResult(const std::string& folder, const task_result& result, message_sink& errors);
// False when there is no result yet (nothing appended) or it cannot be read (a message).
bool readTaskResult(const std::string& folder, task_result& result, message_sink& errors);
bool hasTaskResult(const std::string& folder);

// The node's side: checks the marker, runs the programs and writes the
// result. Returns the process's exit status: 0 when a result was written
// (whatever the run's end), kTaskNotSharedStatus when the marker is not
// there, 1 when no result could be written.
int runTask(const std::string& folder, message_sink& errors);

}  // namespace sb
