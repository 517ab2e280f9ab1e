#pragma once
// Folders and moves for keeping the daily output files of chosen years,
// done with the file system API (never a shell). Messages go to `errors`.
#include <string>

#include "app/message_sink.h"

namespace sb {

class file_mover {
public:
    // Makes the folder and any missing parents; an existing folder is fine.
    static bool makeFolder(const std::string& path, message_sink& errors);
    // Moves a file, replacing an existing target. Across file systems the file
    // is copied and the original removed.
    static bool moveFile(const std::string& from, const std::string& to, message_sink& errors);
};

}  // namespace sb
