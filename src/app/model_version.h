#pragma once
// The six model releases the workbench drives. The code decides which
// executable runs, which input files are written and which outputs are read.
#include <cstdint>

namespace sb {

constexpr int kVersionCount = 6;

enum model_version : int16_t {
    kTellura4Agricultural = 1,
    kTellura4Original = 2,
    kTellura45 = 3,
    kDiurna45 = 4,  // the daily-step release
    kTellura46 = 5,
    kTellura5 = 6,
};

struct model_version_info {
    int16_t code;
    const char* displayName;        // also the profile key of its executable
    const char* modelExecutable;    // default, Windows-style as the releases ship
    const char* list100Executable;  // default; empty when the release has none
};

// nullptr for codes outside 1..6.
const model_version_info* findModelVersion(int code);
bool isValidVersion(int code);
// "" for codes outside 1..6.
const char* versionDisplayName(int code);

}  // namespace sb
