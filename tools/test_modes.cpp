#include "test_modes.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace standin {
namespace {

[[noreturn]] void sleepForever() {
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

// Hang mode also starts a helper process that sleeps in a session of its
// own, outside the stand-in's process group, as a daemon would: ending the
// stand-in's group alone does not end it. (The Windows build has no fork: it
// hangs alone.)
[[noreturn]] void hang() {
#ifndef _WIN32
    pid_t helper = fork();
    if (helper == 0) {
        setsid();
        sleepForever();
    }
    std::printf("stand-in model: hang mode, process %d, helper process %d\n", static_cast<int>(getpid()),
                static_cast<int>(helper));
#else
    std::printf("stand-in model: hang mode\n");
#endif
    std::fflush(stdout);
    sleepForever();
}

[[noreturn]] void crash(int signal) {
    std::printf("stand-in model: crash mode\n");
    std::fflush(stdout);
    std::signal(signal, SIG_DFL);  // no sanitizer or runtime handler in between
    std::raise(signal);
    std::abort();
}

void printHuge() {
    const char* megabytes = std::getenv("SB_STANDIN_HUGE_MB");
    long bytes = (megabytes ? std::atol(megabytes) : 4) * 1024L * 1024L;
    long line = 0;
    for (long written = 0; written < bytes; ++line)
        written += std::printf("stand-in model console line %09ld of a huge output\n", line);
}

}  // namespace

bool parseMode(const std::string& text, test_mode& mode) {
    static const struct {
        const char* name;
        mode_kind kind;
    } kModes[] = {{"normal", mode_kind::normal},          {"hang", mode_kind::hang},     {"crash", mode_kind::crash},
                  {"crash=abort", mode_kind::crashAbort}, {"silent", mode_kind::silent}, {"error", mode_kind::error},
                  {"garbage", mode_kind::garbage},        {"huge", mode_kind::huge}};
    for (const auto& entry : kModes)
        if (text == entry.name) {
            mode.kind = entry.kind;
            return true;
        }
    if (text.rfind("slow=", 0) == 0) {
        mode.kind = mode_kind::slow;
        mode.slowSeconds = std::strtod(text.c_str() + 5, nullptr);
        return mode.slowSeconds >= 0;
    }
    return false;
}

void runModeBeforeWork(const test_mode& mode) {
    switch (mode.kind) {
        case mode_kind::hang:
            hang();
        case mode_kind::crash:
            crash(SIGSEGV);
        case mode_kind::crashAbort:
            crash(SIGABRT);
        case mode_kind::slow:
            std::this_thread::sleep_for(std::chrono::duration<double>(mode.slowSeconds));
            break;
        case mode_kind::huge:
            printHuge();
            break;
        default:
            break;
    }
}

void spoilFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    in.close();
    std::string content = bytes.str();
    content.resize(content.size() / 2);
    for (size_t i = 1; i < content.size(); i += 97) content[i] = static_cast<char>(~content[i]);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

}  // namespace standin
