#include "app/file_mover.h"

#include "app/text_format.h"

#include <cerrno>
#include <filesystem>

namespace fs = std::filesystem;

namespace sb {

bool file_mover::makeFolder(const std::string& path, message_sink& errors) {
    std::error_code ec;
    fs::create_directories(path, ec);
    if (!ec && fs::is_directory(path, ec)) return true;
    if (!ec) ec = std::make_error_code(std::errc::not_a_directory);
    errors.errorf("ERROR, unable to make folder \"%s\": %s.\n", path.c_str(), ec.message().c_str());
    return false;
}

bool file_mover::moveFile(const std::string& from, const std::string& to, message_sink& errors) {
    std::error_code ec;
    if (!fs::is_regular_file(from, ec)) {
        errors.errorf("ERROR, unable to move \"%s\" to \"%s\": %s.\n", from.c_str(), to.c_str(), "no such file");
        return false;
    }
    fs::rename(from, to, ec);
    if (ec == std::errc::cross_device_link) {
        ec.clear();
        if (fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec)) fs::remove(from, ec);
    }
    if (!ec) return true;
    errors.errorf("ERROR, unable to move \"%s\" to \"%s\": %s.\n", from.c_str(), to.c_str(), ec.message().c_str());
    return false;
}

}  // namespace sb
