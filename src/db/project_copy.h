#pragma once
// Copies a whole project from one location to another: a file to a server and
// back, or like to like. Every table of the catalogue with every row, values as
// stored, in the source's table order; the target gets it all in one
// transaction, so a copy that fails leaves the target as it was (a target the
// copy made itself is removed again).
#include <functional>
#include <string>

#include "app/message_sink.h"

namespace sb {

struct copy_progress {
    const char* table = "";
    long long tableRows = 0, tableTotal = 0;  // in the table being copied
    long long rows = 0, total = 0;            // over the whole project
};
using copy_progress_callback = std::function<void(const copy_progress&)>;

struct copy_options {
    bool replace = false;  // an existing target that holds rows is replaced instead of refused
    copy_progress_callback progress;
};

// False with the messages appended when the copy did not happen. `rowsCopied`
// receives the number of rows copied.
bool copyProject(const std::string& source, const std::string& target, const copy_options& options,
                 long long& rowsCopied, message_sink& errors);

}  // namespace sb
