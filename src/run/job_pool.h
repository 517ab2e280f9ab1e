#pragma once
// Runs jobs at most N at a time, each on a thread of its own; a job's slot is
// free again as soon as it ends, whatever the others do. A pool of one runs
// each job at once on the caller's thread: work done one at a time needs no
// other thread. The caller tells jobs apart by the ticket start() gives, and
// reads a job's results once ended() says so. A cancel is a flag that the
// jobs poll through cancelCheck().
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <future>
#include <map>
#include <mutex>

namespace sb {

class job_pool {
public:
    using ticket = size_t;

    explicit job_pool(int slots);
    ~job_pool();  // waits for the jobs still running
    job_pool(const job_pool&) = delete;
    job_pool& operator=(const job_pool&) = delete;

    int slots() const { return slots_; }
    // Whether another job may start now (jobs that ended are let go first).
    bool hasFreeSlot();
    // Starts `job`; call it only when a slot is free. A pool of one has run
    // the job to its end on return.
    ticket start(std::function<void()> job);
    // Whether the job has ended; what it wrote may then be read.
    bool ended(ticket job);
    // Returns when a job has ended since the last call, or after `limit`.
    void waitForAnyEnd(std::chrono::milliseconds limit);

    void cancel() { cancelled_ = true; }
    bool cancelled() const { return cancelled_; }
    // What jobs ask, from any thread, to learn that they should end early.
    std::function<bool()> cancelCheck() const {
        return [this] { return cancelled_.load(); };
    }

    // Progress: jobs started, and jobs ended, so far.
    size_t startedCount() const { return started_; }
    size_t endedCount();

private:
    void letGoOfEnded();
    bool endedNow(std::future<void>& job);

    int slots_;
    std::map<ticket, std::future<void>> running_;
    ticket next_ = 0;
    size_t started_ = 0, ended_ = 0;
    std::atomic<bool> cancelled_{false};
    std::mutex mutex_;
    std::condition_variable changed_;
    long endings_ = 0, seen_ = 0;  // guarded by mutex_
};

}  // namespace sb
