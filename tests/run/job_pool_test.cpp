// The job pool: never more jobs at once than its slots, a slot free again as
// soon as its job ends (while an earlier job still runs), a pool of one on
// the caller's own thread, and a cancel the running jobs see.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "run/job_pool.h"

namespace {

using sb::job_pool;

// Holds the jobs that wait on it until it is opened.
class gate {
public:
    void wait() {
        std::unique_lock<std::mutex> lock(mutex_);
        opened_.wait(lock, [this] { return open_; });
    }
    void open() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            open_ = true;
        }
        opened_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

void waitUntilEnded(job_pool& pool, job_pool::ticket job) {
    while (!pool.ended(job)) pool.waitForAnyEnd(std::chrono::milliseconds(50));
}

TEST(JobPool, SlotsAreFreedAsJobsEndWhateverTheOthersDo) {
    job_pool pool(2);
    gate slow;
    std::mutex count;
    int running = 0, most = 0;
    auto job = [&](bool waits) {
        return [&, waits] {
            {
                std::lock_guard<std::mutex> lock(count);
                most = std::max(most, ++running);
            }
            if (waits) slow.wait();
            std::lock_guard<std::mutex> lock(count);
            --running;
        };
    };
    const job_pool::ticket first = pool.start(job(true));
    const job_pool::ticket second = pool.start(job(false));
    waitUntilEnded(pool, second);
    EXPECT_FALSE(pool.ended(first));
    EXPECT_TRUE(pool.hasFreeSlot()) << "the second job's slot is free while the first still runs";
    const job_pool::ticket third = pool.start(job(true));
    EXPECT_FALSE(pool.hasFreeSlot());
    EXPECT_EQ(pool.endedCount(), 1u);
    slow.open();
    waitUntilEnded(pool, first);
    waitUntilEnded(pool, third);
    EXPECT_EQ(most, 2);
    EXPECT_EQ(pool.startedCount(), 3u);
    EXPECT_EQ(pool.endedCount(), 3u);
}

TEST(JobPool, OneSlotRunsOnTheCallersThreadAndCancelReachesRunningJobs) {
    job_pool one(1);
    std::thread::id ranOn;
    const job_pool::ticket inline_ = one.start([&] { ranOn = std::this_thread::get_id(); });
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(one.ended(inline_));

    job_pool pool(3);
    const auto cancelled = pool.cancelCheck();
    std::atomic<int> started{0};
    std::vector<job_pool::ticket> jobs;
    for (int i = 0; i < 3; ++i)
        jobs.push_back(pool.start([&] {
            ++started;
            while (!cancelled()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }));
    while (started < 3) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_FALSE(pool.ended(jobs[0]));
    pool.cancel();
    for (job_pool::ticket job : jobs) waitUntilEnded(pool, job);
    EXPECT_TRUE(pool.cancelled());
}

}  // namespace
