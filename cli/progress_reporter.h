#pragma once
// Progress of a run set on standard error: a live bar with the records done,
// good, failed and the time left when standard error is a terminal, plain
// progress lines otherwise. Ctrl-C once asks to finish the running records
// and start no more; twice (or SIGTERM) ends the running models too.
#include <atomic>
#include <chrono>

#include "app/message_sink.h"
#include "run/run_observer.h"

namespace sbcli {

class progress_reporter : public sb::run_observer {
public:
    progress_reporter();
    ~progress_reporter() override;

    void progressText(const std::string& text) override;
    void recordsDone(long done, long good, long failed, long total) override;
    sb::cancel_request cancelRequested() override;
    void precheckStopped(const std::string& messages) override;

    // Ctrl-C and SIGTERM are taken for the lifetime of the reporter.
    static std::atomic<int> interrupts;

private:
    void drawBar(long done, long good, long failed, long total);
    bool terminal_;
    std::chrono::steady_clock::time_point start_;
    long total_ = 0;
};

}  // namespace sbcli
