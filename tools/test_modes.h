#pragma once
// Misbehaviours on request, so that the workbench's handling of a model that
// hangs, crashes, prints nothing, prints an error or writes garbage is tested.
#include <string>

namespace standin {

enum class mode_kind { normal, hang, crash, crashAbort, silent, error, garbage, huge, slow };

struct test_mode {
    mode_kind kind = mode_kind::normal;
    double slowSeconds = 0;  // fractions allowed: slow=0.2
};

bool parseMode(const std::string& text, test_mode& mode);
// Runs the part of a mode that happens before any work: hang and crash never
// return; slow sleeps; huge prints megabytes.
void runModeBeforeWork(const test_mode& mode);
// Spoils an output file in place for the garbage mode: cuts it in half and
// flips bytes, so that a reader must notice.
void spoilFile(const std::string& path);

}  // namespace standin
