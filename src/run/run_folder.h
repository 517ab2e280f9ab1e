#pragma once
// The folder one record runs in: its input files, the data files the model
// reads beside them, and whatever the model writes. Every run has a folder of
// its own, however many records run at once and however many Soilbench
// processes share a model, so that no run can read another's files:
//
//   <runs>/<project>-<ID>-<YYYYMMDD-HHMMSS>[-N]/
//
// While a run uses it the folder holds an owner file naming this process and
// its host. The folder of a good run is removed once its outputs are stored;
// the folder of any other run is kept for the user to inspect (the owner file
// goes, and the folder is then the user's). A folder whose owner died without
// either (kill -9, a crash) is removed by the next Soilbench that starts a run.
#include <cstdint>
#include <string>

#include "app/message_sink.h"

namespace sb {

class run_folder {
public:
    run_folder() = default;
    ~run_folder();  // a folder still owned is removed: a run that never ended leaves nothing
    run_folder(const run_folder&) = delete;
    run_folder& operator=(const run_folder&) = delete;

    // Makes the record's folder under `root` (made too when missing) and marks it
    // as ours. `project` is the project file's name, reduced to safe characters.
    bool create(const std::string& root, const std::string& project, int32_t id, message_sink& errors);
    // Takes up a folder made earlier and kept (one a cluster task ran in): not
    // owned, but remove() removes it.
    void adopt(const std::string& path);
    // The folder with its trailing '/'; "" before create().
    const std::string& path() const { return path_; }

    // The folder stays for inspection and is no longer ours to remove.
    void keep();
    // Removes the folder with everything in it; false with a message when it cannot.
    bool remove(message_sink& errors);

    // "$XDG_DATA_HOME/soilbench/runs", else "~/.local/share/soilbench/runs".
    static std::string defaultRoot();
    // The runs folder a setting names: the default for "", else the path made usable on Linux.
    static std::string rootFor(const std::string& configured);
    // Removes every folder under `root` whose owner was a process on this host
    // that is gone. Folders of live processes, of other hosts and kept folders
    // stay. Returns how many were removed.
    static int removeStale(const std::string& root, message_sink& errors);
    // True while the folder is owned by a live process (on this host; a folder
    // of another host's process counts as in use, as removeStale leaves it).
    static bool inUse(const std::string& folder);

    static constexpr const char* kOwnerFile = ".soilbench-owner";

private:
    std::string path_;
    bool owned_ = false;
};

}  // namespace sb
