#include "progress_reporter.h"

#include <csignal>
#include <cstdio>
#include <iostream>
#include <unistd.h>

#include "app/text_format.h"

namespace sbcli {

std::atomic<int> progress_reporter::interrupts{0};

namespace {
void onInterrupt(int) { progress_reporter::interrupts.fetch_add(1); }
// A request to terminate ends the running models at once, like Ctrl-C twice:
// the runs end as cancelled, their folders kept and named, and nothing is left running.
void onTerminate(int) { progress_reporter::interrupts.fetch_add(2); }

std::string clockText(double seconds) {
    long s = static_cast<long>(seconds + 0.5);
    return s >= 3600 ? sb::strprintf("%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60)
                     : sb::strprintf("%ld:%02ld", s / 60, s % 60);
}
}  // namespace

progress_reporter::progress_reporter()
    : terminal_(isatty(STDERR_FILENO) != 0), start_(std::chrono::steady_clock::now()) {
    interrupts = 0;
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    action.sa_handler = onTerminate;
    sigaction(SIGTERM, &action, nullptr);
}

progress_reporter::~progress_reporter() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (terminal_ && total_ > 0) std::cerr << "\n";
}

void progress_reporter::progressText(const std::string& text) {
    if (!terminal_) std::cerr << text << "\n";
}

void progress_reporter::recordsDone(long done, long good, long failed, long total) {
    total_ = total;
    if (terminal_) {
        drawBar(done, good, failed, total);
    } else {
        std::cerr << sb::strprintf("%ld of %ld records done, %ld good, %ld failed\n", done, total, good, failed);
    }
}

void progress_reporter::drawBar(long done, long good, long failed, long total) {
    constexpr int kWidth = 30;
    double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    int filled = total > 0 ? static_cast<int>(kWidth * done / total) : kWidth;
    std::string bar(static_cast<size_t>(filled), '#');
    bar.resize(kWidth, '.');
    std::string left = done > 0 && total > done ? clockText(elapsed / done * (total - done)) + " left" : "";
    std::cerr << sb::strprintf("\r[%s] %ld/%ld  good %ld  failed %ld  %s   ", bar.c_str(), done, total, good, failed,
                               left.c_str())
              << std::flush;
}

sb::cancel_request progress_reporter::cancelRequested() {
    int n = interrupts.load();
    if (n == 0) return sb::cancel_request::none;
    static int announced = 0;
    if (announced < n) {
        announced = n;
        std::cerr << (n == 1 ? "\nCancelling: the running records finish and are stored; press Ctrl-C again to "
                               "end them now.\n"
                             : "\nEnding the running models.\n");
    }
    return n == 1 ? sb::cancel_request::finish_running : sb::cancel_request::end_running;
}

void progress_reporter::precheckStopped(const std::string& messages) {
    std::cerr << "\nDon't run TELLURA til this is fixed\n" << messages;
}

}  // namespace sbcli
