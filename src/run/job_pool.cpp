#include "run/job_pool.h"

#include <algorithm>

namespace sb {

job_pool::job_pool(int slots) : slots_(std::max(1, slots)) {}

job_pool::~job_pool() {
    for (auto& [ticket, job] : running_) job.wait();
}

bool job_pool::endedNow(std::future<void>& job) {
    if (job.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready) return false;
    job.get();
    ++ended_;
    return true;
}

void job_pool::letGoOfEnded() {
    for (auto it = running_.begin(); it != running_.end();) {
        if (endedNow(it->second)) it = running_.erase(it);
        else ++it;
    }
}

bool job_pool::hasFreeSlot() {
    letGoOfEnded();
    return running_.size() < static_cast<size_t>(slots_);
}

job_pool::ticket job_pool::start(std::function<void()> job) {
    const ticket t = next_++;
    ++started_;
    if (slots_ == 1) {
        job();
        ++ended_;
        return t;
    }
    running_[t] = std::async(std::launch::async, [this, job = std::move(job)] {
        job();
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++endings_;
        }
        changed_.notify_one();
    });
    return t;
}

bool job_pool::ended(ticket job) {
    auto it = running_.find(job);
    if (it == running_.end()) return true;  // ran on the caller's thread, or let go of already
    if (!endedNow(it->second)) return false;
    running_.erase(it);
    return true;
}

void job_pool::waitForAnyEnd(std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, limit, [this] { return endings_ != seen_; });
    seen_ = endings_;
}

size_t job_pool::endedCount() {
    letGoOfEnded();
    return ended_;
}

}  // namespace sb
