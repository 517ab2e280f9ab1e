#pragma once
// Carries the run controller's progress out of the worker thread to the
// progress dialog, and the dialog's Cancel back in.
#include <string>

#include "app/message_sink.h"
#include "run/run_observer.h"
#include "ui/background_run.h"

namespace sb {

class progress_observer : public run_observer {
public:
    explicit progress_observer(run_feedback& feedback) : feedback_(feedback) {}

    void progressText(const std::string& text) override { feedback_.setText(text); }
    void statusText(const std::string& text) override { feedback_.setStatus(text); }
    void recordsDone(long done, long good, long failed, long total) override;
    // Cancel ends the running models at once, so the window answers within a second.
    cancel_request cancelRequested() override;
    void precheckStopped(const std::string& messages) override { precheckMessages_ = messages; }

    const std::string& precheckMessages() const { return precheckMessages_; }

private:
    run_feedback& feedback_;
    std::string precheckMessages_;
};

}  // namespace sb
