#pragma once
// Wall-clock time of a command, in seconds with millisecond resolution.
#include <chrono>

namespace sb {

class elapsed_timer {
public:
    elapsed_timer() : start_(std::chrono::steady_clock::now()) {}
    double seconds() const {
        auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_);
        return static_cast<double>(ms.count()) / 1000.0;
    }

private:
    std::chrono::steady_clock::time_point start_;
};

}  // namespace sb
